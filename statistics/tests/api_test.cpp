// statistics/tests/api_test.cpp
// Against the shared library: the statistics calls a product program makes.
#include <vum-qib-osl/osl.h>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

TEST(StatisticsApiTest, ExportedFromTheSharedLibrary) {
    osl::test::TempDir dir;
    CQibOsl_Statistics_OutputReportToFiles files(dir.file("h.csv"), dir.file("d.csv"), dir.file("m.csv"));
    CQibOsl_Statistics_Thread(&files).Start();
    CQibOsl_Statistics_Thread::EnableStatistics();
    static auto* counter = new CQibOsl_Statistics_EventPerMinuteCounter("jobs");
    {
        CQibOsl_Statistics_AutoEventDuration duration(*counter);
    }
    EXPECT_EQ(counter->Current().count, 1);
    counter->SampleMinute(0);
    CQibOsl_Statistics_RingList rings;
    counter->ReportMinutes(rings);
    files.HourReport(rings, 2024, 1, 1, 0);
    const std::string start = "\"Time\",\"jobs(Count)\",\"jobs(Duration)\"\n2024/1/1 0:0,1,";
    EXPECT_EQ(osl::test::readFile(dir.file("h.csv")).substr(0, start.size()), start);
}
