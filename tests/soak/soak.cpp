// tests/soak/soak.cpp
// Long runs of several processes on shared files, for `make soak` (ctest label "slow"). Each mode
// forks its workers, lets them run for the given time, checks what they left and ends with one
// verdict line, "soak MODE: ... PASS" or "... FAIL: reason"; the exit status follows the verdict.
//
//   osl_soak log DIR SECONDS PROCESSES     rotating common log file: no line lost, torn or doubled
//   osl_soak ini DIR SECONDS WRITERS       BackupIni flushes while a reader loads: always one table
//   osl_soak remote DIR SECONDS CLIENTS    RemoteIni clients load and store through lighttpd and
//                                          the endpoint (OSL_HTTP_FILE_CGI): every load one table
//   osl_soak locks DIR SECONDS PROCESSES   counters under computer-scope locks of four names
//                                          (the collector deleting idle lock files): exact counts
//   osl_soak stats DIR DAYS THREADS        the statistics thread on a fake clock stepped 30 s at a
//                                          time through DAYS days while THREADS threads report
//                                          events: every report there, every event in each total
#include <sys/wait.h>
#include <unistd.h>
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/ini/remote_ini.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/statistics/statistics_thread.h>
#include <vum-qib-osl/sync/osl_lock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ini/tests/http_file_server.h"
#include "statistics/src/statistics_state.h"
#include "tests/support/fake_clock.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

// Prints "soak MODE: <the summary parts>: PASS" (or ": FAIL: reason") and gives the exit status.
template <class... Parts>
int verdict(const std::string& mode, const std::string& failure, const Parts&... summary) {
    std::ostringstream line;
    (line << ... << summary);
    std::cout << "soak " << mode << ": " << line.str() << (failure.empty() ? ": PASS" : ": FAIL: " + failure)
              << std::endl;
    return failure.empty() ? 0 : 1;
}

struct Tally {
    long rounds = 0;
    long bad = 0;
};

// The sum of the first `count` tallies.
Tally sum(const std::vector<Tally>& tallies, size_t count = SIZE_MAX) {
    Tally all;
    for (size_t i = 0; i < std::min(count, tallies.size()); ++i) {
        all.rounds += tallies[i].rounds;
        all.bad += tallies[i].bad;
    }
    return all;
}

// Runs round(process, n) in `count` children over and over for the given time; a round that
// returns false or throws is bad. The tallies come back through DIR/count.P; ran is false when
// a child could not be run or did not exit with 0 (a bad round).
std::vector<Tally> inRounds(const fs::path& dir, int seconds, int count, bool& ran,
                            const std::function<bool(int, long)>& round,
                            const std::function<void(int)>& finish = {}) {
    const auto until = Clock::now() + std::chrono::seconds(seconds);
    std::vector<pid_t> children;
    for (int p = 0; p < count; ++p) {
        const pid_t pid = fork();
        if (pid == 0) {
            Tally t;
            for (; Clock::now() < until; ++t.rounds) {
                try {
                    t.bad += !round(p, t.rounds);
                } catch (const QIBError& e) {
                    if (t.bad++ == 0) std::cerr << "process " << p << ", first failure: " << e << "\n";
                }
            }
            std::ofstream(dir / ("count." + std::to_string(p))) << t.rounds << " " << t.bad;
            if (finish) finish(p);
            _exit(t.bad == 0 ? 0 : 1);
        }
        children.push_back(pid);
    }
    ran = true;
    for (pid_t pid : children) {
        int status = 0;
        ran = pid > 0 && waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0 && ran;
    }
    std::vector<Tally> tallies(static_cast<size_t>(count));
    for (int p = 0; p < count; ++p) {
        Tally& t = tallies[static_cast<size_t>(p)];
        std::ifstream(dir / ("count." + std::to_string(p))) >> t.rounds >> t.bad;
    }
    return tallies;
}

std::string bodyOf(int process, long n) {
    return "p" + std::to_string(process) + " n" + std::to_string(n) + " " +
           std::string(static_cast<size_t>(n % 50), '.');
}

// Writers log as fast as a thousand lines a second each, through a 2 MB limit; every line must
// then be found exactly once in the log or one backup.
int soakLog(const fs::path& dir, int seconds, int processes) {
    const fs::path log = dir / "soak.log";
    std::unique_ptr<CLogMsg> msg;  // each child's own, made at its first line
    bool ran = false;
    const auto tallies = inRounds(dir, seconds, processes, ran, [&](int p, long n) {
        if (n == 0) {
            CLog* logger = CLog::Instance();
            logger->DeleteChannels();
            logger->SetProcessName("soak");
            auto* channel = new CChannelCommonFile(log.string(), SevInfo, "");
            channel->SetMaxSize(2 * 1024 * 1024);
            logger->AddChannel(channel);
            msg = std::make_unique<CLogMsg>("soak", "", SevInfo);
        }
        msg->Log(bodyOf(p, n));
        if (n % 8 == 7) std::this_thread::sleep_for(std::chrono::milliseconds(8));
        return true;
    });
    std::vector<std::vector<char>> seen;  // per writer, per line: how often found
    for (const Tally& t : tallies) seen.emplace_back(static_cast<size_t>(t.rounds), 0);
    long lines = 0, torn = 0, doubled = 0, files = 0;
    for (const auto& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        if (name != "soak.log" && !(name.starts_with("soak_") && name.ends_with(".bak"))) continue;
        ++files;
        std::ifstream in(entry.path(), std::ios::binary);
        std::string line;
        std::getline(in, line);  // the header record
        while (std::getline(in, line)) {
            const size_t at = line.find("-INFO  soak : ");
            int p = -1;
            long n = -1;
            if (line.empty() || line.back() != '\r' || at == std::string::npos ||
                std::sscanf(line.c_str() + at + 14, "p%d n%ld", &p, &n) != 2 || p < 0 || p >= processes ||
                n < 0 || static_cast<size_t>(n) >= seen[static_cast<size_t>(p)].size() ||
                line.substr(at + 14, line.size() - at - 15) != bodyOf(p, n)) {
                ++torn;
                continue;
            }
            doubled += seen[static_cast<size_t>(p)][static_cast<size_t>(n)]++ != 0;
            ++lines;
        }
    }
    long lost = 0;
    for (const auto& marks : seen) lost += std::count(marks.begin(), marks.end(), 0);
    const char* failure = !ran                                ? "a writer failed"
                          : lost != 0 || torn != 0 || doubled != 0 ? "lines differ"
                          : files < 2                              ? "the file never rotated"
                                                                   : "";
    return verdict("log", failure, processes, " processes, ", seconds,
                   " s, ", lines, " lines in ", files, " files, ", lost, " lost, ", torn, " torn, ", doubled,
                   " doubled");
}

// Every table written has keys k0..k49 all holding one stamp ("W-N": writer and round): a load
// that sees two values, or missing keys, has seen a mix of two tables or half a file.
constexpr int kKeys = 50;

void stamp(Ini& ini, const std::string& value) {
    for (int k = 0; k < kKeys; ++k) ini.SetKeyValue("table", "k" + std::to_string(k), value);
}

bool oneTable(const Ini& ini) {
    const IniProperties* table = ini.GetGroupProperty("table");
    if (table == nullptr || table->size() != kKeys) return false;
    for (const auto& [key, value] : *table) {
        if (value != table->begin()->second) return false;
    }
    return true;
}

std::string firstTable() {
    std::string text = "[table]\n";
    for (int k = 0; k < kKeys; ++k) text += "k" + std::to_string(k) + "=start\n";
    return text;
}

// Writers flush BackupIni tables while one more process loads the file in a loop.
int soakIni(const fs::path& dir, int seconds, int writers) {
    const std::string file = (dir / "shared.ini").string();
    std::ofstream(file) << firstTable();
    bool ran = false;
    const auto tallies = inRounds(dir, seconds, writers + 1, ran, [&](int w, long n) {
        if (w == writers) return oneTable(Ini(file, true));
        BackupIni ini(file);
        stamp(ini, std::to_string(w) + "-" + std::to_string(n));
        ini.FlushIniDataToFile(file);
        return true;
    });
    const long reads = tallies.back().rounds;
    return verdict("ini", ran && reads > 0 ? "" : "a read saw no single table", writers, " writers, ",
                   sum(tallies, static_cast<size_t>(writers)).rounds, " flushes, ", reads, " reads, ",
                   sum(tallies).bad, " bad");
}

// Each client loads the remote file, checks it and stores its own table, round after round.
int soakRemote(const fs::path& dir, int seconds, int clients) {
    const char* cgi = std::getenv("OSL_HTTP_FILE_CGI");
    if (cgi == nullptr)
        return verdict("remote", "OSL_HTTP_FILE_CGI is not set", "no endpoint program");
    const std::string d = dir.string();
    fs::create_directories(dir / "www/qib");
    fs::create_symlink(cgi, dir / "www/qib/vum-qib-http-file-cgi.exe");
    std::ofstream(dir / "endpoint.ini") << "[http_file]\nfile=" << d << "/remote.ini\n";
    std::ofstream(dir / "remote.ini") << firstTable();
    setenv("no_proxy", "*", 1);
    const osl::test::HttpFileServer server(d);
    if (!server.failure().empty()) return verdict("remote", server.failure(), "no web server");
    bool ran = false;
    const auto tallies = inRounds(dir, seconds, clients, ran, [&](int c, long n) {
        RemoteIni ini(server.address(), "/qib", "", "");
        const bool whole = oneTable(ini);
        stamp(ini, std::to_string(c) + "-" + std::to_string(n));
        ini.FlushIniDataToFile("");
        return whole;
    });
    const Tally all = sum(tallies);
    return verdict("remote", ran && all.rounds > 0 ? "" : "a load saw no single table", clients, " clients, ",
                   all.rounds, " loads and stores, ", all.bad, " bad");
}

// Each round takes one of four computer-scope locks: exclusive (or by TryLock) to add one to the
// counter file the name guards, rewriting it in place, or shared to read it, when it must hold a
// whole number. Each process leaves how often it added to each counter in DIR/done.P; the
// counters must end at the sums. The short rounds let the lock collector delete idle lock files
// while others open them.
int soakLocks(const fs::path& dir, int seconds, int processes) {
    constexpr int kNames = 4;
    const auto counter = [&](int k) { return dir / ("counter." + std::to_string(k)); };
    for (int k = 0; k < kNames; ++k) std::ofstream(counter(k)) << 0;
    std::array<long, kNames> done{};
    const auto addOne = [&](int k) {
        long value = -1;
        std::ifstream(counter(k)) >> value;
        std::ofstream(counter(k)) << value + 1;
        ++done[static_cast<size_t>(k)];
        return value >= 0;
    };
    bool ran = false;
    const auto tallies = inRounds(
        dir, seconds, processes, ran,
        [&](int p, long n) {
            const int k = static_cast<int>((n + p) % kNames);
            OslLock lock(dir.string(), "soak" + std::to_string(k));
            if (n % 8 == 3) {
                if (!lock.Lock(OslLockShareShared)) return false;
                long value = -1;
                std::ifstream(counter(k)) >> value;
                lock.Unlock(OslLockShareShared);
                return value >= 0;
            }
            if (n % 8 == 5) {
                if (!lock.TryLock(OslLockShareExclusive)) return true;
            } else if (!lock.Lock(OslLockShareExclusive)) {
                return false;
            }
            const bool whole = addOne(k);
            lock.Unlock(OslLockShareExclusive);
            return whole;
        },
        [&](int p) {
            std::ofstream out(dir / ("done." + std::to_string(p)));
            for (long d : done) out << d << " ";
        });
    std::array<long, kNames> expected{};
    for (int p = 0; p < processes; ++p) {
        std::ifstream in(dir / ("done." + std::to_string(p)));
        for (long& e : expected) {
            long d = 0;
            in >> d;
            e += d;
        }
    }
    long wrong = 0, total = 0;
    for (int k = 0; k < kNames; ++k) {
        long value = -1;
        std::ifstream(counter(k)) >> value;
        wrong += value != expected[static_cast<size_t>(k)];
        total += value;
    }
    return verdict("locks", ran && wrong == 0 && total > 0 ? "" : "a counter lost or gained an addition", processes,
                   " processes, ", sum(tallies).rounds, " rounds, ", total, " additions, ", wrong, " counters off, ",
                   sum(tallies).bad, " bad rounds");
}

// Sums of the first counter's count and sum columns over the data rows of a report file, and the
// number of rows.
struct Totals {
    long rows = 0;
    long count = 0;
    long sum = 0;
};

Totals totalsOf(const fs::path& file) {
    Totals t;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with("\"Time\"")) continue;
        long count = 0, sum = 0;
        const size_t comma = line.find(',');
        if (comma == std::string::npos || std::sscanf(line.c_str() + comma, ",%ld,%ld", &count, &sum) != 2)
            return {-1, -1, -1};
        ++t.rows;
        t.count += count;
        t.sum += sum;
    }
    return t;
}

// The statistics thread writes hour, day and month reports on a fake clock that the main thread
// moves 30 seconds at a time from 1 January 2025, 00:00 (UTC), through `days` days and into the
// next month, while `threads` threads report events until the last day begins. Every hour, day
// and month that ended must have its report, and each file's totals must equal what was reported.
int soakStats(const fs::path& dir, int days, int threads) {
    const osl::test::ScopedTimeZone utc("UTC");
    osl::test::FakeClock clock(2025, 1, 1, 0, 0, 0);
    CQibOsl_Statistics_OutputReportToFiles files((dir / "hour.csv").string(), (dir / "day.csv").string(),
                                                 (dir / "month.csv").string());
    CQibOsl_Statistics_Thread thread(&files);
    thread.Start();
    for (auto enable : {&CQibOsl_Statistics_Thread::EnableStatistics, &CQibOsl_Statistics_Thread::EnableHourReport,
                        &CQibOsl_Statistics_Thread::EnableDayReport, &CQibOsl_Statistics_Thread::EnableMonthReport}) {
        enable();
    }
    CQibOsl_Statistics_EventPerMinuteCounter events("E");
    CQibOsl_Statistics_UpDownCounter level("L");
    if (!clock.waitForSleeps(1)) {
        osl::detail::resetStatistics();
        return verdict("stats", "the statistics thread never slept", "no thread");
    }
    std::atomic<bool> reporting{true};
    std::atomic<long> reported{0}, reportedSum{0};
    std::vector<std::thread> reporters;
    for (int r = 0; r < threads; ++r) {
        reporters.emplace_back([&, r] {
            for (long i = r; reporting.load(); i += threads) {
                const long value = i % 7 + 1;
                events.ReportEventA(value);
                level.Inc();
                level.Dec();
                reported += 1;
                reportedSum += value;
                if (i % 64 == 0) std::this_thread::sleep_for(std::chrono::microseconds(50));
            }
        });
    }
    // The run ends 30 s into the month after the last day, whose report is then written too.
    using namespace std::chrono;
    const sys_days first{2025y / January / 1};
    const year_month_day last{first + std::chrono::days(days - 1)};
    const sys_days next{(last.year() / last.month() + months(1)) / 1};
    const long end = duration_cast<seconds>(next - first).count() + 30;
    const long stopAt = static_cast<long>(days - 1) * 86400;
    long stalls = !clock.step(60);  // the thread's first sleep is a minute long
    for (long t = 60; t < end; t += 30) {
        if (t >= stopAt && reporting) {
            reporting = false;
            for (std::thread& r : reporters) r.join();
        }
        stalls += !clock.step(30);
    }
    osl::detail::resetStatistics();  // stops the thread before the clock goes
    const Totals hour = totalsOf(dir / "hour.csv"), day = totalsOf(dir / "day.csv"),
                 month = totalsOf(dir / "month.csv");
    const long closedDays = (end - 30) / 86400;
    const long closedMonths = (year_month_day{next}.year() - 2025y).count() * 12 +
                              static_cast<long>(static_cast<unsigned>(year_month_day{next}.month())) - 1;
    std::string failure;
    for (const auto& [name, t] : {std::pair{"hour", hour}, {"day", day}, {"month", month}}) {
        if (t.count != reported || t.sum != reportedSum) failure += std::string(name) + " totals differ; ";
    }
    if (hour.rows != closedDays * 24 * 60 || day.rows != closedDays * 24 || month.rows != closedMonths * 31)
        failure += "reports missing; ";
    if (stalls != 0) failure += "the thread stalled; ";
    return verdict("stats", failure, closedDays, " days, ", reported.load(), " events, ", hour.rows / 60, " hour, ",
                   day.rows / 24, " day and ", month.rows / 31, " month reports, ", stalls, " stalls");
}

}  // namespace

int main(int argc, char** argv) {
    InitOSL();
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() != 4) {
        std::cerr << "usage: osl_soak log|ini|remote|locks DIR SECONDS PROCESSES\n"
                     "       osl_soak stats DIR DAYS THREADS\n";
        return 2;
    }
    const fs::path dir = args[1];
    fs::remove_all(dir);
    fs::create_directories(dir);
    const int seconds = std::atoi(args[2].c_str());
    const int processes = std::atoi(args[3].c_str());
    int status = 2;
    if (args[0] == "log") status = soakLog(dir, seconds, processes);
    if (args[0] == "ini") status = soakIni(dir, seconds, processes);
    if (args[0] == "remote") status = soakRemote(dir, seconds, processes);
    if (args[0] == "locks") status = soakLocks(dir, seconds, processes);
    if (args[0] == "stats") status = soakStats(dir, seconds, processes);
    if (status == 0) fs::remove_all(dir);  // a failed run leaves its files to look at
    return status;
}
