// tests/soak/soak.cpp
// Long runs of several processes on shared files, for `make soak` (ctest label "slow"). Each mode
// forks its workers, lets them run for the given time, checks what they left and ends with one
// verdict line, "soak MODE: ... PASS" or "... FAIL: reason"; the exit status follows the verdict.
//
//   osl_soak log DIR SECONDS PROCESSES     rotating common log file: no line lost, torn or doubled
//   osl_soak ini DIR SECONDS WRITERS       BackupIni flushes while a reader loads: always one table
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <sys/wait.h>
#include <unistd.h>

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

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

int verdict(const std::string& mode, const std::string& summary, const std::string& failure) {
    std::cout << "soak " << mode << ": " << summary << (failure.empty() ? ": PASS" : ": FAIL: " + failure) << std::endl;
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
    return "p" + std::to_string(process) + " n" + std::to_string(n) + " " + std::string(static_cast<size_t>(n % 50), '.');
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
        if (n < 0) return verdict("log", "no count from writer " + std::to_string(p), "a writer failed");
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
    summary << processes << " processes, " << seconds << " s, " << lines << " lines in " << files << " files, "
            << lost << " lost, " << torn << " torn, " << doubled << " doubled";
    const bool ok = ran && lost == 0 && torn == 0 && doubled == 0 && files > 1;
    return verdict("log", summary.str(), ok ? "" : (ran ? "lines differ" : "a writer failed"));
}

// Every table a writer flushes has keys k0..k49 all holding "W-N" of that writer and flush: a
// reader that ever sees two values in one load has seen a mix of two tables or half a file.
int soakIni(const fs::path& dir, int seconds, int writers) {
    const std::string file = (dir / "shared.ini").string();
    std::ofstream(file) << "[table]\nk0=start\n";
    const auto until = Clock::now() + std::chrono::seconds(seconds);
    const bool ran = inChildren(writers + 1, [&](int w) {
        long count = 0, bad = 0;
        while (Clock::now() < until) {
            try {
                if (w == writers) {  // the reader
                    Ini ini(file, true);
                    const IniProperties* table = ini.GetGroupProperty("table");
                    std::string first;
                    if (table == nullptr) {
                        ++bad;
                    } else {
                        for (const auto& [key, value] : *table) {
                            if (first.empty()) first = value;
                            bad += value != first;
                        }
                    }
                } else {
                    BackupIni ini(file);
                    const std::string stamp = std::to_string(w) + "-" + std::to_string(count);
                    for (int k = 0; k < 50; ++k) ini.SetKeyValue("table", "k" + std::to_string(k), stamp);
                    ini.FlushIniDataToFile(file);
                }
                ++count;
            } catch (const QIBError& e) {
                if (bad++ == 0) std::cerr << "process " << w << ", first failure: " << e << "\n";
            }
        }
        std::ofstream(dir / ("count." + std::to_string(w))) << count << " " << bad;
        return bad == 0 ? 0 : 1;
    });
    long flushes = 0, reads = 0, badReads = 0;
    for (int w = 0; w <= writers; ++w) {
        long count = 0, bad = 0;
        std::ifstream(dir / ("count." + std::to_string(w))) >> count >> bad;
        (w == writers ? reads : flushes) += count;
        badReads += bad;
    }
    std::ostringstream summary;
    summary << writers << " writers, " << flushes << " flushes, " << reads << " reads, " << badReads << " bad";
    return verdict("ini", summary.str(), ran && badReads == 0 && reads > 0 ? "" : "a read saw no single table");
}

}  // namespace

int main(int argc, char** argv) {
    InitOSL();
    const std::vector<std::string> args(argv + 1, argv + argc);
    if (args.size() != 4) {
        std::cerr << "usage: osl_soak log|ini DIR SECONDS PROCESSES\n";
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
    if (status == 0) fs::remove_all(dir);  // a failed run leaves its files to look at
    return status;
}
