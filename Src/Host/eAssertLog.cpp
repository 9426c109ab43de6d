// The host's record of the reports made through Eassert: the last 256 in order, and one
// assertion record each for the call recorder. Installed as Eassert's handler when the host
// library loads, so the value types need know nothing of the host.
#include "eAssertLog.h"
#include "eBase.h"
#include "eRecorder.h"
#include <deque>
#include <mutex>

namespace KYR
{
namespace Host
{

namespace
{

size_t const kMaxReports = 256;

// Never destroyed, so that a report made while the process exits still finds them.
std::mutex& ReportMutex()
{
    static std::mutex* s_mutex = new std::mutex();
    return *s_mutex;
}

std::deque<eAssertReport>& Reports()
{
    static std::deque<eAssertReport>* s_reports = new std::deque<eAssertReport>();
    return *s_reports;
}

void KeepReport(char const* expression, char const* file, unsigned int line)
{
    std::lock_guard<std::mutex> lock(ReportMutex());
    std::deque<eAssertReport>& reports = Reports();
    reports.push_back(eAssertReport{expression, file, line});
    while (reports.size() > kMaxReports)
        reports.pop_front();

    eRecord r;
    r.kind = eRecord::Assert;
    r.op = expression;
    r.uniform = file;
    r.first = line;
    eRecorder::Get().Add(r);
}

struct eInstallHandler
{
    eInstallHandler() { SetAssertHandler(&KeepReport); }
} const s_install;

} // namespace

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
