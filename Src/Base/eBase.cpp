#include "eBase.h"
#include "eString.h"
#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>

namespace KYR
{

namespace
{
std::atomic<eAssertHandler> s_assertHandler{nullptr};
} // namespace

eAssertHandler SetAssertHandler(eAssertHandler handler)
{
    return s_assertHandler.exchange(handler);
}

void Eassert(char const* expression, char const* file, unsigned int line)
{
    char const* expr = expression ? expression : "(null)";
    char const* where = file ? file : "(null)";
    std::fprintf(stderr, "Eassert: %s (%s:%u)\n", expr, where, line);
    if (eAssertHandler handler = s_assertHandler.load())
        handler(expr, where, line);
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

} // namespace KYR
