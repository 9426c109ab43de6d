// Test-side view of the assertion reports made through Eassert. The most recent
// reports are kept in order, oldest first; the list is shared by all threads.
#pragma once
#include <string>
#include <vector>

namespace KYR
{
namespace Host
{

struct eAssertReport
{
    std::string expression, file;
    unsigned line;
};

// A copy of the kept reports (at most the last 256).
std::vector<eAssertReport> GetAssertReports();
void ClearAssertReports();

} // namespace Host
} // namespace KYR
