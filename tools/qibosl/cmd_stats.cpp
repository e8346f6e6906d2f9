// tools/qibosl/cmd_stats.cpp
// qibosl stats: events into counters under a clock that runs 120 times as fast, across an hour, a
// day and a month end, so that operators see the report files without waiting. Also the demo's
// statistics: it counts its own steps.
#include <vum-qib-osl/statistics/statistics_thread.h>
#include <vum-qib-osl/statistics/statistics_trial.h>

#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <memory>
#include <thread>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

constexpr double kSpeed = 120;

std::vector<std::string> split(const std::string& list) {
    std::vector<std::string> names;
    std::string::size_type start = 0;
    for (std::string::size_type comma; (comma = list.find(',', start)) != std::string::npos; start = comma + 1) {
        names.push_back(list.substr(start, comma - start));
    }
    names.push_back(list.substr(start));
    return names;
}

std::uintmax_t sizeOf(const std::filesystem::path& path) {
    std::error_code ec;
    const std::uintmax_t size = std::filesystem::file_size(path, ec);
    return ec ? 0 : size;
}

// Simulated seconds as real time.
void sleepSimulated(double seconds) {
    std::this_thread::sleep_for(std::chrono::duration<double>(seconds / kSpeed));
}

CQibOsl_Statistics_EventPerMinuteCounter& demoCounter() {
    static auto* counter = new CQibOsl_Statistics_EventPerMinuteCounter("demo_steps");
    return *counter;
}

}  // namespace

int cmdStats(const Args& args) {
    if (!args.operands({"-counters", "-events", "-dir", "-prometheus"}).empty()) {
        throw UsageError("stats takes options only");
    }
    const QIBCommandLine options = args.options();
    const std::string list = options.HasOption("-counters") ? options.GetOptionValue("-counters") : "requests";
    const std::vector<std::string> names = split(list);
    for (const std::string& name : names) {
        if (name.empty()) throw UsageError("empty counter name in '" + list + "'");
    }
    const std::string eventsText = options.HasOption("-events") ? options.GetOptionValue("-events") : "100";
    if (eventsText.empty() || eventsText.size() > 9 || eventsText.find_first_not_of("0123456789") != std::string::npos) {
        throw UsageError("-events takes a number of events, not '" + eventsText + "'");
    }
    const long events = std::stol(eventsText);
    std::filesystem::path dir = options.GetOptionValue("-dir");
    if (dir.empty()) dir = std::filesystem::temp_directory_path() / ("qibosl-stats-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string prometheus = options.GetOptionValue("-prometheus");
    if (!prometheus.empty() && !CQibOsl_Statistics_PrometheusExport::Enable(prometheus, "qibosl")) {
        throw UsageError("-prometheus takes a directory");
    }

    // From 23:58 on the last day of this month: the run closes an hour, a day and a month.
    const auto today = std::chrono::year_month_day(std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now()));
    const std::chrono::year_month_day_last last(today.year(), std::chrono::month_day_last(today.month()));
    const int year = static_cast<int>(last.year());
    const int month = static_cast<int>(static_cast<unsigned>(last.month()));
    const int day = static_cast<int>(static_cast<unsigned>(last.day()));
    if (!OslStatistics_SimulateClock(year, month, day, 23, 58, 0, kSpeed)) {
        std::cerr << "qibosl stats: cannot simulate the clock\n";
        return 1;
    }
    const std::filesystem::path hour = dir / "statistics_hour.csv", dayFile = dir / "statistics_day.csv",
                                monthFile = dir / "statistics_month.csv";
    const std::uintmax_t monthSize = sizeOf(monthFile);
    auto* files = new CQibOsl_Statistics_OutputReportToFiles(hour.string(), dayFile.string(), monthFile.string());
    CQibOsl_Statistics_Thread thread(files);
    thread.Start();
    CQibOsl_Statistics_Thread::EnableStatistics();
    CQibOsl_Statistics_Thread::EnableHourReport();
    CQibOsl_Statistics_Thread::EnableDayReport();
    CQibOsl_Statistics_Thread::EnableMonthReport();

    // Counters live as long as the process: the thread keeps them.
    std::vector<CQibOsl_Statistics_EventPerMinuteCounter*> counters;
    for (const std::string& name : names) counters.push_back(new CQibOsl_Statistics_EventPerMinuteCounter(name));
    if (!prometheus.empty()) (new CQibOsl_Statistics_UpDownCounter("stats_runs"))->Inc();  // a level: this run
    // Half the events in minute 58, half in minute 59, round-robin over the counters.
    for (long i = 0; i < events; ++i) {
        if (i == events / 2) sleepSimulated(65);
        counters[static_cast<std::size_t>(i) % counters.size()]->ReportEventA((i * 37) % 1000);
    }
    // The thread wakes every 30 simulated seconds; the month report is the last one written.
    for (int waited = 0; sizeOf(monthFile) == monthSize; ++waited) {
        if (waited == 1000) {
            std::cerr << "qibosl stats: no month report after 20 seconds\n";
            return 1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    std::cout << events << " events into " << names.size() << " counters from " << year << "/" << month << "/" << day
              << " 23:58 to the next month (the clock ran " << kSpeed << " times as fast)\n"
              << "hour report:  " << hour.string() << "\nday report:   " << dayFile.string()
              << "\nmonth report: " << monthFile.string() << "\n";
    if (!prometheus.empty()) std::cout << "Prometheus:   " << prometheus << "/qibosl.prom\n";
    return 0;
}

void demoStep() {
    static CQibOsl_Statistics_EventDuration* step = nullptr;
    if (step == nullptr) {
        CQibOsl_Statistics_Thread().Start();
        CQibOsl_Statistics_Thread::EnableStatistics();
        step = new CQibOsl_Statistics_EventDuration(demoCounter());
    } else {
        step->Ended();  // the step before this one
    }
    step->Started();
}

void demoStatistics(const std::filesystem::path& installation) {
    const std::filesystem::path log = installation / "log";
    std::error_code ec;
    std::filesystem::create_directories(log, ec);
    CQibOsl_Statistics_OutputReportToFiles files((log / "demo_hour.csv").string(), (log / "demo_day.csv").string(),
                                                 (log / "demo_month.csv").string());
    const auto now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    CQibOsl_Statistics_EventPerMinuteCounter& counter = demoCounter();
    const CQibOsl_Statistics_Sample steps = counter.Current();
    counter.SampleMinute(local.tm_min);
    CQibOsl_Statistics_RingList rings;
    counter.ReportMinutes(rings);
    files.HourReport(rings, local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour);
    noteDemoFile(log / "demo_hour.csv", "the statistics report of this hour");
    std::cout << "\n== statistics\nthe demo took " << steps.count << " steps (" << steps.sum
              << " ms between them); the report of this hour went to " << (log / "demo_hour.csv").string() << "\n";
}

}  // namespace qibosl
