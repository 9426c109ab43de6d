#include "eBase.h"
#include "eString.h"
#include "../Host/eAssertLog.h"
#include "../Host/eRecorder.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <deque>
#include <mutex>

namespace KYR
{

namespace
{

size_t const kMaxReports = 256;

std::mutex& ReportMutex()
{
    static std::mutex s_mutex;
    return s_mutex;
}

std::deque<Host::eAssertReport>& Reports()
{
    static std::deque<Host::eAssertReport> s_reports;
    return s_reports;
}

} // namespace

void Eassert(char const* expression, char const* file, unsigned int line)
{
    char const* expr = expression ? expression : "(null)";
    char const* where = file ? file : "(null)";
    std::lock_guard<std::mutex> lock(ReportMutex());
    std::fprintf(stderr, "Eassert: %s (%s:%u)\n", expr, where, line);
    std::deque<Host::eAssertReport>& reports = Reports();
    reports.push_back(Host::eAssertReport{expr, where, line});
    while (reports.size() > kMaxReports)
        reports.pop_front();

    // The recorder itself has no lock; the report lock keeps concurrent asserts apart.
    Host::eRecord r;
    r.kind = Host::eRecord::Assert;
    r.op = expr;
    r.uniform = where;
    r.first = line;
    Host::eRecorder::Get().Add(r);
}

unsigned char Eequal(double a, double b)
{
    double tolerance = 1e-10 * std::max(1.0, std::max(std::fabs(a), std::fabs(b)));
    return std::fabs(a - b) <= tolerance ? 1 : 0;
}

void eString::Format(char const* fmt, ...)
{
    if (!fmt)
    {
        m_str.clear();
        return;
    }
    char buffer[256];
    va_list args;
    va_start(args, fmt);
    va_list again;
    va_copy(again, args);
    int n = std::vsnprintf(buffer, sizeof(buffer), fmt, args);
    va_end(args);
    if (n < 0)
    {
        // A bad conversion: leave an empty string rather than partial text.
        m_str.clear();
    }
    else if ((size_t)n < sizeof(buffer))
    {
        m_str.assign(buffer, (size_t)n);
    }
    else
    {
        std::string text((size_t)n + 1, '\0');
        std::vsnprintf(&text[0], text.size(), fmt, again);
        text.resize((size_t)n);
        m_str.swap(text);
    }
    va_end(again);
}

namespace Host
{

std::vector<eAssertReport> GetAssertReports()
{
    std::lock_guard<std::mutex> lock(ReportMutex());
    return std::vector<eAssertReport>(Reports().begin(), Reports().end());
}

void ClearAssertReports()
{
    std::lock_guard<std::mutex> lock(ReportMutex());
    Reports().clear();
}

} // namespace Host
} // namespace KYR
