// Strings, arrays, assertion reports, tolerant comparison, locks and time.
#include "Base.h"
#include "eAssertLog.h"
#include "eRecorder.h"
#include <gtest/gtest.h>
#include <atomic>
#include <string>
#include <thread>

using namespace KYR;

TEST(String, Format)
{
    eString s("old text");
    s.Format("%d-%s-%.2f", 42, "abc", 1.5);
    EXPECT_EQ(s, "42-abc-1.50");
    EXPECT_EQ(s.GetLength(), 11);

    std::string big(5000, 'x');
    s.Format("<%s|%05d>", big.c_str(), 7);
    ASSERT_EQ(s.GetLength(), 5008);
    EXPECT_EQ(s.GetAt(0), '<');
    EXPECT_EQ(s.GetAt(5000), 'x');
    EXPECT_EQ(std::string(s.Cstr() + 5001), "|00007>");
    EXPECT_EQ(s.GetAt(5008), '\0');

    // Formatting from its own text replaces it safely.
    eString t("abc");
    t.Format("%s%s", t.Cstr(), t.Cstr());
    EXPECT_EQ(t, "abcabc");
    t.Format("%s", "");
    EXPECT_TRUE(t.IsEmpty());
}

TEST(Array, OutOfRangeGoesThroughEassert)
{
    Host::ClearAssertReports();
    Host::eRecorder::Get().Start();
    eArray<int> a;
    a.Add(1);
    a.Add(2);
    EXPECT_EQ(a[1], 2);
    EXPECT_TRUE(Host::GetAssertReports().empty());

    a[5] = 99;                 // lands in a spare element
    EXPECT_EQ(a.GetAt(-1), 0); // which does not keep the stray value
    a.RemoveAt(2);
    eArray<int> const& ca = a;
    EXPECT_EQ(ca[2], 0);
    EXPECT_EQ(a.GetSize(), 2);
    EXPECT_EQ(a[0], 1);
    Host::eRecorder::Get().Stop();

    std::vector<Host::eAssertReport> reports = Host::GetAssertReports();
    ASSERT_EQ(reports.size(), 4u);
    EXPECT_EQ(reports[0].expression, "index out of range");
    EXPECT_NE(reports[0].file.find("eArray.h"), std::string::npos);
    EXPECT_GT(reports[0].line, 0u);
    std::vector<Host::eRecord> recs = Host::eRecorder::Get().Of(Host::eRecord::Assert);
    ASSERT_EQ(recs.size(), 4u);
    EXPECT_EQ(recs[0].op, "index out of range");
    EXPECT_EQ(recs[0].first, (long long)reports[0].line);
}

TEST(Assert, KeepsTheLastReportsAcrossThreads)
{
    Host::ClearAssertReports();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back(
            [t]
            {
                for (unsigned i = 0; i < 100; ++i)
                    Eassert("threaded", "worker", (unsigned)t * 1000 + i);
            });
    for (auto& th : threads)
        th.join();
    EXPECT_EQ(Host::GetAssertReports().size(), 256u);

    Eassert("last", nullptr, 7);
    std::vector<Host::eAssertReport> reports = Host::GetAssertReports();
    ASSERT_EQ(reports.size(), 256u);
    EXPECT_EQ(reports.back().expression, "last");
    EXPECT_EQ(reports.back().file, "(null)");
    EXPECT_EQ(reports.back().line, 7u);
    Host::ClearAssertReports();
    EXPECT_TRUE(Host::GetAssertReports().empty());
}

TEST(Equal, RelativeTolerance)
{
    EXPECT_TRUE(Eequal(0.0, 5e-11));
    EXPECT_FALSE(Eequal(0.0, 1e-9));
    EXPECT_TRUE(Eequal(1e12, 1e12 + 50.0));
    EXPECT_FALSE(Eequal(1e12, 1e12 + 500.0));
    EXPECT_FALSE(Eequal(1.0, -1.0));
}

TEST(Mutex, CopiesAreFreshAndUnlocked)
{
    eMutex m;
    m.Lock();
    eMutex copy(m);
    EXPECT_TRUE(copy.TryLock());
    copy.UnLock();
    std::atomic<bool> taken{true};
    std::thread([&] { taken = m.TryLock(); }).join();
    EXPECT_FALSE(taken); // the original stays locked
    m.UnLock();

    eMutex r(1);
    r.Lock();
    EXPECT_TRUE(r.TryLock()); // the owner may lock again
    r.UnLock();
    eMutex assigned;
    assigned = r;
    EXPECT_FALSE(assigned.IsRecursive());
    std::thread([&] { taken = r.TryLock(); }).join();
    EXPECT_FALSE(taken);
    r.UnLock();
    std::thread(
        [&]
        {
            taken = r.TryLock();
            if (taken)
                r.UnLock();
        })
        .join();
    EXPECT_TRUE(taken);
}

TEST(Time, RunningMillisecondCount)
{
    unsigned int t0 = eTime::GetMillisecond();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    unsigned int dt = eTime::GetMillisecond() - t0;
    EXPECT_GE(dt, 25u);
    EXPECT_LT(dt, 5000u);

    eTime t;
    t = (__int64)123456789012LL;
    EXPECT_EQ(t.GetTime(), 123456789012LL);
}
