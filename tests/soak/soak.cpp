// tests/soak/soak.cpp
// Long runs of several processes on shared files, for `make soak` (ctest label "slow"). Each mode
// forks its workers, lets them run for the given time, checks what they left and ends with one
// verdict line, "soak MODE: ... PASS" or "... FAIL: reason"; the exit status follows the verdict.
//
//   osl_soak log DIR SECONDS PROCESSES     rotating common log file: no line lost, torn or doubled
//   osl_soak ini DIR SECONDS WRITERS       BackupIni flushes while a reader loads: always one table
//   osl_soak remote DIR SECONDS CLIENTS    RemoteIni clients load and store through lighttpd and
//                                          the endpoint (OSL_HTTP_FILE_CGI): every load one table
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

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "ini/tests/http_file_server.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

int verdict(const std::string& mode, const std::string& summary, const std::string& failure) {
    std::cout << "soak " << mode << ": " << summary
              << (failure.empty() ? ": PASS" : ": FAIL: " + failure) << std::endl;
    return failure.empty() ? 0 : 1;
}

// Runs `work(index)` in `count` children and waits for them; false when one did not exit with 0.
bool inChildren(int count, const std::function<int(int)>& work) {
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t pid = fork();
        if (pid < 0) return false;
        if (pid == 0) _exit(work(i));
        children.push_back(pid);
    }
    bool ok = true;
    for (pid_t pid : children) {
        int status = 0;
        ok = waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0 && ok;
    }
    return ok;
}

std::string bodyOf(int process, long n) {
    return "p" + std::to_string(process) + " n" + std::to_string(n) + " " +
           std::string(static_cast<size_t>(n % 50), '.');
}

// Writers log as fast as a thousand lines a second each, through a 2 MB limit, and leave their
// count in DIR/count.P; every line must then be found exactly once in the log or one backup.
int soakLog(const fs::path& dir, int seconds, int processes) {
    const fs::path log = dir / "soak.log";
    const auto until = Clock::now() + std::chrono::seconds(seconds);
    const bool ran = inChildren(processes, [&](int p) {
        CLog* logger = CLog::Instance();
        logger->DeleteChannels();
        logger->SetProcessName("soak");
        auto* channel = new CChannelCommonFile(log.string(), SevInfo, "");
        channel->SetMaxSize(2 * 1024 * 1024);
        logger->AddChannel(channel);
        CLogMsg msg("soak", "", SevInfo);
        long n = 0;
        while (Clock::now() < until) {
            msg.Log(bodyOf(p, n++));
            if (n % 8 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(8));
        }
        std::ofstream(dir / ("count." + std::to_string(p))) << n;
        return 0;
    });
    std::map<int, std::vector<char>> seen;
    for (int p = 0; p < processes; ++p) {
        long n = -1;
        std::ifstream(dir / ("count." + std::to_string(p))) >> n;
        if (n < 0)
            return verdict("log", "no count from writer " + std::to_string(p), "a writer failed");
        seen[p].assign(static_cast<size_t>(n), 0);
    }
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
                std::sscanf(line.c_str() + at + 14, "p%d n%ld", &p, &n) != 2 || !seen.count(p) ||
                n < 0 || static_cast<size_t>(n) >= seen[p].size() ||
                line.substr(at + 14, line.size() - at - 15) != bodyOf(p, n)) {
                ++torn;
                continue;
            }
            doubled += seen[p][static_cast<size_t>(n)]++ != 0;
            ++lines;
        }
    }
    long lost = 0;
    for (const auto& [p, marks] : seen) {
        for (char mark : marks) lost += mark == 0;
    }
    std::ostringstream summary;
    summary << processes << " processes, " << seconds << " s, " << lines << " lines in " << files
            << " files, " << lost << " lost, " << torn << " torn, " << doubled << " doubled";
    const bool ok = ran && lost == 0 && torn == 0 && doubled == 0 && files > 1;
    return verdict("log", summary.str(), ok ? "" : (ran ? "lines differ" : "a writer failed"));
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

struct Tally {
    long rounds = 0;
    long bad = 0;
};

// Runs round(process, n) in `count` children over and over for the given time; a round that
// returns false or throws is bad. The tallies come back through DIR/count.P; ran is false when
// a child could not be run or had a bad round.
std::vector<Tally> inRounds(const fs::path& dir, int seconds, int count, bool& ran,
                            const std::function<bool(int, long)>& round) {
    const auto until = Clock::now() + std::chrono::seconds(seconds);
    ran = inChildren(count, [&](int p) {
        Tally t;
        for (; Clock::now() < until; ++t.rounds) {
            try {
                t.bad += !round(p, t.rounds);
            } catch (const QIBError& e) {
                if (t.bad++ == 0) std::cerr << "process " << p << ", first failure: " << e << "\n";
            }
        }
        std::ofstream(dir / ("count." + std::to_string(p))) << t.rounds << " " << t.bad;
        return t.bad == 0 ? 0 : 1;
    });
    std::vector<Tally> tallies(static_cast<size_t>(count));
    for (int p = 0; p < count; ++p) {
        Tally& t = tallies[static_cast<size_t>(p)];
        std::ifstream(dir / ("count." + std::to_string(p))) >> t.rounds >> t.bad;
    }
    return tallies;
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
    long flushes = 0, bad = 0;
    for (int w = 0; w < writers; ++w) flushes += tallies[static_cast<size_t>(w)].rounds;
    for (const Tally& t : tallies) bad += t.bad;
    const long reads = tallies.back().rounds;
    std::ostringstream summary;
    summary << writers << " writers, " << flushes << " flushes, " << reads << " reads, " << bad
            << " bad";
    return verdict("ini", summary.str(), ran && reads > 0 ? "" : "a read saw no single table");
}

// Each client loads the remote file, checks it and stores its own table, round after round.
int soakRemote(const fs::path& dir, int seconds, int clients) {
    const char* cgi = std::getenv("OSL_HTTP_FILE_CGI");
    if (cgi == nullptr)
        return verdict("remote", "no endpoint program", "OSL_HTTP_FILE_CGI is not set");
    const std::string d = dir.string();
    fs::create_directories(dir / "www/qib");
    fs::create_symlink(cgi, dir / "www/qib/vum-qib-http-file-cgi.exe");
    std::ofstream(dir / "endpoint.ini") << "[http_file]\nfile=" << d << "/remote.ini\n";
    std::ofstream(dir / "remote.ini") << firstTable();
    setenv("no_proxy", "*", 1);
    const osl::test::HttpFileServer server(d);
    if (!server.failure().empty()) return verdict("remote", "no web server", server.failure());
    bool ran = false;
    const auto tallies = inRounds(dir, seconds, clients, ran, [&](int c, long n) {
        RemoteIni ini(server.address(), "/qib", "", "");
        const bool whole = oneTable(ini);
        stamp(ini, std::to_string(c) + "-" + std::to_string(n));
        ini.FlushIniDataToFile("");
        return whole;
    });
    long rounds = 0, bad = 0;
    for (const Tally& t : tallies) {
        rounds += t.rounds;
        bad += t.bad;
    }
    std::ostringstream summary;
    summary << clients << " clients, " << rounds << " loads and stores, " << bad << " bad";
    return verdict("remote", summary.str(), ran && rounds > 0 ? "" : "a load saw no single table");
}

}  // namespace

int main(int argc, char** argv) {
    InitOSL();
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() != 4) {
        std::cerr << "usage: osl_soak log|ini|remote DIR SECONDS PROCESSES\n";
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
    if (status == 0) fs::remove_all(dir);  // a failed run leaves its files to look at
    return status;
}
