// statistics/tests/statistics_thread_test.cpp
// The statistics thread on a fake clock, and the report files it writes.
#include <vum-qib-osl/statistics/statistics_thread.h>

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "statistics/src/statistics_state.h"
#include "tests/support/fake_clock.h"
#include "tests/support/temp_dir.h"

namespace {

std::vector<std::string> lines(const std::string& path) {
    std::istringstream in(osl::test::readFile(path));
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

class StatisticsThreadTest : public ::testing::Test {
protected:
    void TearDown() override { osl::detail::resetStatistics(); }

    // Starts the thread with every switch on at the given local time; it is then in its first sleep.
    void startAt(int year, int month, int day, int hour, int minute, int second) {
        clock_ = std::make_unique<osl::test::FakeClock>(year, month, day, hour, minute, second);
        CQibOsl_Statistics_Thread thread(&files_);
        thread.Start();
        for (auto enable : {&CQibOsl_Statistics_Thread::EnableStatistics, &CQibOsl_Statistics_Thread::EnableHourReport,
                            &CQibOsl_Statistics_Thread::EnableDayReport, &CQibOsl_Statistics_Thread::EnableMonthReport}) {
            enable();
        }
        ASSERT_TRUE(clock_->waitForSleeps(1));
    }
    void step(int seconds) { ASSERT_TRUE(clock_->step(seconds)); }

    osl::test::TempDir dir_;
    std::string hour_ = dir_.file("hour.csv"), day_ = dir_.file("day.csv"), month_ = dir_.file("month.csv");
    CQibOsl_Statistics_OutputReportToFiles files_{hour_, day_, month_};
    std::unique_ptr<osl::test::FakeClock> clock_;
};

TEST_F(StatisticsThreadTest, MidnightReportsTheLastHourAndTheDayThatEnded) {
    startAt(2024, 3, 7, 23, 58, 30);
    CQibOsl_Statistics_EventPerMinuteCounter events("E");
    CQibOsl_Statistics_UpDownCounter level("L");
    for (long v : {10, 20, 30}) events.ReportEventA(v);
    level.Inc();
    level.Inc();
    level.Dec();
    step(60);  // 23:59:30
    events.ReportEventA(5);
    step(30);  // 00:00:00
    const std::vector<std::string> hour = lines(hour_), day = lines(day_);
    ASSERT_EQ(hour.size(), 61u);
    EXPECT_EQ(hour[0], "\"Time\",\"E(Count)\",\"E(Duration)\",\"L(Count)\",\"L(Duration)\"");
    EXPECT_EQ(hour[1], "2024/3/7 23:0,0,0,0,0");
    EXPECT_EQ(hour[59], "2024/3/7 23:58,3,60,1,0");
    EXPECT_EQ(hour[60], "2024/3/7 23:59,1,5,1,0");
    ASSERT_EQ(day.size(), 25u);
    EXPECT_EQ(day[1], "2024/3/7 0:00,0,0,0,0");
    EXPECT_EQ(day[24], "2024/3/7 23:00,4,65,1,0");
    EXPECT_FALSE(std::filesystem::exists(month_));
}

TEST_F(StatisticsThreadTest, MonthReportHasThirtyOneRowsForEveryMonth) {
    startAt(2023, 1, 31, 23, 59, 0);
    CQibOsl_Statistics_EventPerMinuteCounter events("E");
    events.ReportEventA(7);
    step(60);               // 2023-02-01 00:00
    step(27 * 86400 - 60);  // 2023-02-27 23:59
    events.ReportEventA(9);
    step(60);               // 2023-02-28 00:00
    step(86400 - 60);
    step(60);               // 2023-03-01 00:00
    const std::vector<std::string> month = lines(month_);
    ASSERT_EQ(month.size(), 63u);
    EXPECT_EQ(month[0], "\"Time\",\"E(Count)\",\"E(Duration)\"");
    EXPECT_EQ(month[31], "2023/1/31,1,7");
    EXPECT_EQ(month[58], "2023/2/27,1,9");
    EXPECT_EQ(month[62], "2023/2/31,0,0");
}

TEST_F(StatisticsThreadTest, CounterRegisteredDuringARunAddsColumnsWithANewHeader) {
    startAt(2024, 5, 1, 10, 59, 0);
    CQibOsl_Statistics_EventPerMinuteCounter a("A"), b("B");
    a.ReportEventA(1);
    step(60);  // 11:00
    b.ReportEventA(2);
    step(3570);
    step(30);  // 12:00
    const std::vector<std::string> hour = lines(hour_);
    ASSERT_EQ(hour.size(), 122u);
    EXPECT_EQ(hour[0], "\"Time\",\"A(Count)\",\"A(Duration)\"");
    EXPECT_EQ(hour[61], "\"Time\",\"A(Count)\",\"A(Duration)\",\"B(Count)\",\"B(Duration)\"");
    EXPECT_EQ(hour[62], "2024/5/1 11:0,0,0,1,2");
}

// Paused, the thread sleeps a minute at a time and keeps the time of its last pass; counting
// again, it sleeps half a minute and closes the periods that passed meanwhile.
TEST_F(StatisticsThreadTest, PausedStatisticsCloseThePeriodsThatPassedWhenBackOn) {
    startAt(2024, 5, 1, 8, 58, 0);
    CQibOsl_Statistics_EventPerMinuteCounter events("E");
    events.ReportEventA(1);
    CQibOsl_Statistics_Thread::DisableStatistics();
    step(60);  // 8:59, not counting: the time of the last pass (8:58) stays
    EXPECT_EQ(clock_->lastSleepSeconds(), 60);
    CQibOsl_Statistics_Thread::EnableStatistics();
    step(60);  // 9:00 closes 8:58 and the hour 8
    EXPECT_EQ(clock_->lastSleepSeconds(), 30);
    const std::vector<std::string> hour = lines(hour_);
    ASSERT_EQ(hour.size(), 61u);
    EXPECT_EQ(hour[59], "2024/5/1 8:58,1,1");
}

TEST_F(StatisticsThreadTest, HeaderRulesOfTheReportFiles) {
    osl::test::writeFile(hour_, "earlier run\n");
    CQibOsl_Statistics_SampleCollection ring(60);
    const CQibOsl_Statistics_RingList none, one{{"A", ring}}, two{{"A", ring}, {"B", ring}};
    const struct {
        const char* what;
        const CQibOsl_Statistics_RingList& rings;
        bool header;
    } cases[] = {
        {"first report of the process, existing file", one, true},
        {"same counters", one, false},
        {"a counter added", two, true},
        {"fewer counters", one, false},
    };
    std::size_t expected = 1;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        files_.HourReport(c.rings, 2024, 1, 2, 3);
        expected += 60 + (c.header ? 1 : 0);
        EXPECT_EQ(lines(hour_).size(), expected);
    }
    files_.DayReport(none, 2024, 1, 2, 3);  // a new file: a header naming no counter
    files_.DayReport(none, 2024, 1, 3, 3);
    const std::vector<std::string> day = lines(day_);
    ASSERT_EQ(day.size(), 49u);
    EXPECT_EQ(day[0], "\"Time\"");
    EXPECT_EQ(day[25], "2024/1/3 0:00");
}

}  // namespace
