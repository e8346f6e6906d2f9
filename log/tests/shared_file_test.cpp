// log/tests/shared_file_test.cpp
// Processes that share log files: four writers rotating one file, writers whose files an operator
// damaged or who dropped their privileges, and children forked while another thread logs. No
// process may crash, and every line must come out once, whole, in the file or in one backup.
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "log/src/log_file.h"
#include "log/tests/log_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr int kProcesses = 4;
constexpr int kLinesEach = 3000;
constexpr std::uint32_t kMaxSize = 8000;

// Leaves the logger one common file channel, with that size limit.
void logInto(const std::string& path, std::uint32_t maxSize) {
    CLog::Instance()->DeleteChannels();
    auto* channel = new CChannelCommonFile(path, SevInfo, "");
    channel->SetMaxSize(maxSize);
    CLog::Instance()->AddChannel(channel);
}

// Waits for a child, which must have ended with status 0.
testing::AssertionResult exitedNormally(pid_t pid) {
    int status = 0;
    const bool ok = waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return ok ? testing::AssertionSuccess() : testing::AssertionFailure() << "child status " << status;
}

// The body of line n of process p, padded so that lines differ in length.
std::string bodyOf(int p, int n) { return "p" + std::to_string(p) + " n" + std::to_string(n) + " " + std::string(static_cast<std::size_t>(n % 40), '.'); }

// Writers 0 and 1 keep the channel they inherited from the parent, open files included; the
// others make their own.
[[noreturn]] void writeLines(const std::string& path, int p, int startPipe) {
    char go = 0;
    if (read(startPipe, &go, 1) != 1) _exit(3);
    CLog::Instance()->SetProcessName("writer" + std::to_string(p));
    if (p >= 2) logInto(path, kMaxSize);
    CLogMsg msg("shared", "", SevInfo);
    for (int n = 0; n < kLinesEach; ++n) msg.Log(bodyOf(p, n));
    _exit(0);
}

TEST(SharedFileTest, FourProcessesRotatingOneFileLoseNoLine) {
    osl::test::TempDir dir;
    const std::string path = dir.file("shared.log");
    CLog::Instance()->SetProcessName("writer");
    logInto(path, kMaxSize);
    OslLogPrint(SevInfo, "", "shared", "p9 n0 ");  // opens the file and its lock before the fork
    int startPipe[2];
    ASSERT_EQ(pipe(startPipe), 0);
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            close(startPipe[1]);
            writeLines(path, p, startPipe[0]);
        }
        children.push_back(pid);
    }
    close(startPipe[0]);
    CLog::Instance()->DeleteChannels();
    ASSERT_EQ(write(startPipe[1], "gogo", kProcesses), kProcesses);  // all start at once
    close(startPipe[1]);
    for (pid_t pid : children) ASSERT_TRUE(exitedNormally(pid));

    std::vector<std::string> files = osl::test::backupsOf(path);
    ASSERT_GT(files.size(), 20u) << "the limit should have been crossed many times";
    files.push_back(path);
    std::map<std::string, int> seen;
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const std::string content = osl::test::readFile(file);
        // One crossing rotates once: a second rotation would leave a backup of a fresh file.
        if (file != path) { EXPECT_GT(content.size(), kMaxSize); }
        ASSERT_GE(content.size(), 83u);
        std::int64_t created = 0;
        EXPECT_TRUE(osl::detail::LogFile::parseHeader(content.c_str(), created));
        ASSERT_EQ(content.substr(content.size() - 2), "\r\n");
        std::vector<std::string> all = osl::test::fileLines(file);
        all.erase(all.begin());  // the header
        for (const std::string& line : all) {
            const std::size_t at = line.find("-INFO  shared : ");
            ASSERT_NE(at, std::string::npos) << "torn line: " << line;
            ASSERT_EQ(line.compare(0, 8, "A writer"), 0) << "torn line: " << line;
            const std::string body = line.substr(at + 16);
            int p = -1, n = -1;
            ASSERT_EQ(std::sscanf(body.c_str(), "p%d n%d", &p, &n), 2) << line;
            ASSERT_EQ(body, bodyOf(p, n)) << "torn line: " << line;
            ++seen[body];
        }
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kProcesses * kLinesEach) + 1);
    for (const auto& [body, count] : seen) EXPECT_EQ(count, 1) << body;
}

// Whoever logs in the damaged directory: nobody when the tests run as root, which permissions do
// not stop, else the test's own user.
constexpr uid_t kNobody = 65534;

void writableLog(const std::string& log) {
    osl::test::writeFile(log, "");
    EXPECT_TRUE(geteuid() != 0 || chown(log.c_str(), kNobody, static_cast<gid_t>(-1)) == 0);
}

struct DamageCase {
    const char* name;
    std::function<void(const std::string& dir, const std::string& log)> prepare;
    bool parentLogsFirst;  // before the fork: the file and its lock are open in the child
    bool childDropsToWriter;
    std::function<void(const std::string& dir)> damage;  // in the child, after its first line
};

// A child writes lines into a file with a small size limit under each damage; it must end
// normally, keep every line, and say each trouble once on standard error.
TEST(DamagedLogFileTest, WritersNeitherCrashNorLoseLines) {
    const bool root = geteuid() == 0;
    const std::vector<DamageCase> cases = {
        {"setuid child", nullptr, true, true, nullptr},
        {"truncated lock file", nullptr, true, false,
         [](const std::string& dir) {
             for (const auto& entry : std::filesystem::directory_iterator(dir))
                 std::filesystem::resize_file(entry.path(), 0);
         }},
        {"read-only directory",
         [](const std::string& dir, const std::string& log) {
             writableLog(log);
             chmod(dir.c_str(), 0555);
         },
         false, true, nullptr},
        {"foreign lock file",
         [](const std::string&, const std::string& log) {
             writableLog(log);
             osl::test::writeFile(log + ".lock", "");
             chmod((log + ".lock").c_str(), geteuid() == 0 ? 0600 : 0);
         },
         false, true, nullptr},
    };
    constexpr int kLines = 60;
    for (const DamageCase& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.prepare == nullptr && c.damage == nullptr && !root) continue;  // setuid needs root
        osl::test::TempDir dir;
        osl::test::TempDir errors;
        chmod(dir.path().c_str(), 0755);
        const std::string log = dir.file("app.log");
        if (c.prepare) c.prepare(dir.path().string(), log);
        logInto(log, 600);
        int first = 0;
        if (c.parentLogsFirst) OslLogPrint(SevInfo, "", "t", "line " + std::to_string(first++));
        const std::string errorFile = errors.file("stderr");
        const pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            if (std::freopen(errorFile.c_str(), "w", stderr) == nullptr) _exit(3);
            if (c.childDropsToWriter && root && setuid(kNobody) != 0) _exit(4);
            if (first == 0) OslLogPrint(SevInfo, "", "t", "line " + std::to_string(first++));
            if (c.damage) c.damage(dir.path().string());
            for (int n = first; n < kLines; ++n) OslLogPrint(SevInfo, "", "t", "line " + std::to_string(n));
            _exit(0);
        }
        const testing::AssertionResult exited = exitedNormally(pid);
        CLog::Instance()->DeleteChannels();
        chmod(dir.path().c_str(), 0755);
        ASSERT_TRUE(exited);
        std::map<int, int> seen;  // the count of each "line N" in the log and its backups
        std::vector<std::string> files = osl::test::backupsOf(log);
        files.push_back(log);
        for (const std::string& file : files) {
            const std::string content = osl::test::readFile(file);
            for (auto at = content.find(" : line "); at != std::string::npos; at = content.find(" : line ", at + 1))
                ++seen[std::atoi(content.c_str() + at + 8)];
        }
        // A truncation empties the lines written before it; every later one is there.
        for (int n = c.damage ? 1 : 0; n < kLines; ++n) EXPECT_EQ(seen[n], 1) << "line " << n;
        std::istringstream said(osl::test::readFile(errorFile));
        std::set<std::string> distinct;
        for (std::string text; std::getline(said, text);) EXPECT_TRUE(distinct.insert(text).second) << "twice: " << text;
    }
}

// Children forked while another thread logs can log at once (no mutex inherited locked), and a
// child's private file is its own, named after its process id.
TEST(ForkedLoggerTest, ChildrenLogIntoFilesOfTheirOwn) {
    osl::test::TempDir dir;
    logInto(dir.file("common.log"), 2000);
    CLog::Instance()->AddChannel(new CChannelPrivateFile(dir.file("run.log"), SevInfo, ""));
    OslLogPrint(SevInfo, "", "t", "parent");  // the logger is in use before the fork, as in a host
    std::atomic<bool> stop{false};
    std::thread busy([&stop] {
        CLogMsg msg("busy", "", SevInfo);
        while (!stop.load()) msg << "parent" << flush;
    });
    std::vector<pid_t> children;
    for (int i = 0; i < 20; ++i) {
        const pid_t pid = fork();
        if (pid == 0) {
            alarm(10);  // a child that deadlocks dies of SIGALRM
            OslLogPrint(SevInfo, "", "t", "child");
            _exit(0);
        }
        children.push_back(pid);
    }
    stop = true;
    busy.join();
    CLog::Instance()->DeleteChannels();
    for (pid_t pid : children) {
        SCOPED_TRACE(pid);
        EXPECT_TRUE(exitedNormally(pid));
        const std::string own = osl::test::readFile(dir.file("run_" + std::to_string(pid) + ".log"));
        EXPECT_NE(own.find(" : child\r\n"), std::string::npos);
        EXPECT_EQ(own.find(" : parent"), std::string::npos);
    }
    const std::string parent = osl::test::readFile(dir.file("run_" + std::to_string(getpid()) + ".log"));
    EXPECT_EQ(parent.find(" : child"), std::string::npos);
}

}  // namespace
