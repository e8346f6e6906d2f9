// statistics/tests/statistics_counter_test.cpp
#include <vum-qib-osl/statistics/statistics_counter.h>
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "statistics/src/statistics_state.h"
#include "tests/support/fake_clock.h"

namespace {

class StatisticsCounterTest : public ::testing::Test {
protected:
    // Counting without a thread, which would sample when the clock moves.
    void startCounting() {
        osl::detail::statisticsState().registryExists.store(true);
        CQibOsl_Statistics_Thread::EnableStatistics();
    }
    void TearDown() override { osl::detail::resetStatistics(); }

    osl::test::FakeClock clock_{2024, 3, 7, 9, 5, 0};
};

void expectSample(const CQibOsl_Statistics_Sample& s, int count, int sum) {
    EXPECT_EQ(s.count, count);
    EXPECT_EQ(s.sum, sum);
}

TEST_F(StatisticsCounterTest, EventsCountOnlyAfterStartAndWhileEnabled) {
    CQibOsl_Statistics_EventPerMinuteCounter events("E");
    CQibOsl_Statistics_UpDownCounter level("L");
    CQibOsl_Statistics_Thread::EnableStatistics();
    events.ReportEventA(5);  // no registry before Start
    level.Inc();
    CQibOsl_Statistics_Thread().Start();
    CQibOsl_Statistics_Thread::DisableStatistics();
    events.ReportEventA(5);
    level.Inc();
    expectSample(events.Current(), 0, 0);
    expectSample(level.Current(), 0, 0);
    CQibOsl_Statistics_Thread::EnableStatistics();
    events.ReportEventA(5);
    level.Dec();
    expectSample(events.Current(), 1, 5);
    expectSample(level.Current(), -1, 0);
}

TEST_F(StatisticsCounterTest, EventCounterAddsMinutesIntoHoursDaysAndMonthsAcrossYears) {
    startCounting();
    CQibOsl_Statistics_EventPerMinuteCounter c("E");
    for (int year = 0; year < 2; ++year) {  // two Januaries
        for (long v : {10, 20, 30}) c.ReportEventA(v);
        c.SampleMinute(5);
        expectSample(c.Current(), 0, 0);
        c.SampleHour(7);
        c.SampleDay(2);
        c.SampleMonth(0);
    }
    CQibOsl_Statistics_RingList rings;
    c.ReportMinutes(rings);
    c.ReportMonths(rings);
    expectSample(rings.front().second[5], 0, 0);   // emptied by the hour
    expectSample(rings.back().second[0], 6, 120);  // never emptied
}

TEST_F(StatisticsCounterTest, UpDownCounterHoldsItsLevelAtEveryBoundary) {
    startCounting();
    CQibOsl_Statistics_UpDownCounter c("L");
    c.Inc();
    c.Inc();
    c.Dec();
    c.SampleMinute(0);
    c.SampleHour(4);
    c.SampleMinute(2);
    CQibOsl_Statistics_RingList rings;
    c.ReportMinutes(rings);
    c.ReportHours(rings);
    expectSample(rings.front().second[0], 0, 0);  // reset by the hour
    expectSample(rings.front().second[2], 1, 0);
    expectSample(rings.back().second[4], 1, 0);
}

TEST(StatisticsCollectionTest, EqualOnlyToItselfAndNeverLess) {
    CQibOsl_Statistics_SampleCollection a(3);
    a[1].count = 4;
    const CQibOsl_Statistics_SampleCollection copy(a);
    EXPECT_EQ(copy[1].count, 4);
    EXPECT_TRUE(a == a);
    EXPECT_FALSE(a == copy || a < copy || copy < a || a < a);
}

TEST_F(StatisticsCounterTest, DurationsInMillisecondsWrapPastThirtyTwoBitMicroseconds) {
    startCounting();
    CQibOsl_Statistics_EventPerMinuteCounter c("D");
    {
        CQibOsl_Statistics_AutoEventDuration scope(c);
        clock_.advance(1, 500999);
    }
    expectSample(c.Current(), 1, 1500);
    CQibOsl_Statistics_EventDuration long40(c);
    long40.Started();
    clock_.advance(40 * 60);  // 2.4e9 microseconds, read as -1894967296
    long40.Ended();
    expectSample(c.Current(), 2, 1500 - 1894967);
}

TEST_F(StatisticsCounterTest, EventsFromManyThreadsAreAllCounted) {
    startCounting();
    CQibOsl_Statistics_EventPerMinuteCounter c("T");
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&c] {
            for (int i = 0; i < 20000; ++i) c.ReportEventA(2);
        });
    }
    for (std::thread& t : threads) t.join();
    expectSample(c.Current(), 80000, 160000);
}

}  // namespace
