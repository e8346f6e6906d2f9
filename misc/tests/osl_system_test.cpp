// misc/tests/osl_system_test.cpp
#include <vum-qib-osl/misc/osl_system.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <fstream>
#include <thread>

#include "log/tests/log_test_support.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

using ::testing::EndsWith;

// A process that has not ended: its /proc entry is there and it is no zombie.
bool running(int pid) {
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string line;
    return std::getline(stat, line) && line[line.rfind(')') + 2] != 'Z';
}

// The words the program wrote into `file`, once it is there (the program may still be starting).
std::vector<int> numbersIn(const std::string& file) {
    for (int i = 0; i < 1000 && !std::filesystem::exists(file); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::ifstream in(file);
    std::vector<int> numbers;
    for (int n = 0; in >> n;) numbers.push_back(n);
    return numbers;
}

class OslSystemTest : public osl::test::LoggerTest {
protected:
    osl::test::TempDir dir_;
};

TEST_F(OslSystemTest, TimedFormGivesExitCodeSignalOrStartError) {
    const struct { std::string command; int timeout; int result; } cases[] = {
        {"/bin/true", 5, 0},
        {"sh -c \"exit 3\"", 0, 3},
        {"sh -c \"kill -TERM $$\"", 5, 128 + SIGTERM},
        // Quoted words, an escaped quote, backslashes before a quote and elsewhere, a tab.
        {R"(sh -c "[ \"$0\" = 'x \"y' ] && [ $1 = 'a\\b' ] && [ \"$2\" = '\\c d' ]" "x \"y")"
         "\t"
         R"(a\\b \\\\"c d")",
         5, 0},
        {"no-such-program-here", 5, 2},
        {dir_.path().string(), 5, 13},
        {"true " + std::string(2043, 'x'), 5, 7},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.command.substr(0, 80));
        EXPECT_EQ(Osl_System(c.command, c.timeout), c.result);
    }
    EXPECT_EQ(Osl_System("true " + std::string(2042, 'x'), 5), 0);
    std::string wide = "true ";  // 2205 bytes, 1105 UTF-16 units
    for (int i = 0; i < 1100; ++i) wide += "\xC3\xA9";
    EXPECT_EQ(Osl_System(wide, 5), 7);
    osl::test::ScopedUnicodeMode unicode(true);
    EXPECT_EQ(Osl_System(wide, 5), 0);
}

TEST_F(OslSystemTest, TimeOutKillsTheProgramAndWhatItStarted) {
    log_->SetFunctionChannel(osl::test::captureLine, SevError, false);
    const std::string command = "sh -c \"sleep 60 & echo $! > " + dir_.file("pid") + "; wait\"";
    EXPECT_EQ(Osl_System(command, 1), -666);
    const std::vector<int> grandchild = numbersIn(dir_.file("pid"));
    ASSERT_EQ(grandchild.size(), 1u);
    EXPECT_FALSE(running(grandchild[0]));
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_THAT(lines()[0], EndsWith("Time out elapced for extern program executing (" + command +
                                     ")  Because timeout: 1 sec"));
}

TEST_F(OslSystemTest, NegativeTimeOutLeavesTheProgramRunning) {
    for (int timeout : {-1, -2}) {
        SCOPED_TRACE(timeout);
        const std::string file = dir_.file("ids" + std::to_string(timeout));
        // Writes its pid and session id, then sleeps: still running if we did not wait for it.
        EXPECT_EQ(Osl_System("sh -c \"echo $$ $(cut -d' ' -f6 /proc/$$/stat) > " + file +
                                 ".t; mv " + file + ".t " + file + "; exec sleep 60\"",
                             timeout),
                  0);
        const std::vector<int> ids = numbersIn(file);
        ASSERT_EQ(ids.size(), 2u);
        EXPECT_TRUE(running(ids[0]));
        EXPECT_EQ(ids[1] == getsid(0), timeout == -1);
        kill(ids[0], SIGKILL);
        // Reaped in the background: no zombie stays.
        const std::string proc = "/proc/" + std::to_string(ids[0]);
        for (int i = 0; i < 1000 && std::filesystem::exists(proc); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_FALSE(std::filesystem::exists(proc));
    }
}

void reapAll(int) {
    const int saved = errno;
    while (waitpid(-1, nullptr, WNOHANG) > 0) {
    }
    errno = saved;
}

TEST_F(OslSystemTest, EachThreadGetsItsExitCodeWhateverTheCallerDoesWithSigchld) {
    struct sigaction original {};
    sigaction(SIGCHLD, nullptr, &original);
    for (void (*handler)(int) : {SIG_DFL, SIG_IGN, &reapAll}) {
        SCOPED_TRACE(handler == SIG_DFL ? "default" : handler == SIG_IGN ? "ignored" : "reaping");
        struct sigaction action {};
        action.sa_handler = handler;
        sigaction(SIGCHLD, &action, nullptr);
        std::vector<int> results(6, -100);
        std::vector<std::thread> threads;
        for (int i = 0; i < 6; ++i)
            threads.emplace_back(
                [&results, i] { results[i] = Osl_System("sh -c \"exit " + std::to_string(i + 10) + "\"", 10); });
        for (std::thread& t : threads) t.join();
        for (int i = 0; i < 6; ++i) EXPECT_EQ(results[i], i + 10) << "thread " << i;
    }
    sigaction(SIGCHLD, &original, nullptr);
}

TEST_F(OslSystemTest, ShellFormsLogNothingAndStartFailureIsLoggedWithTheSystemText) {
    log_->SetFunctionChannel(osl::test::captureLine, SevInfo, false);
    EXPECT_EQ(Osl_System("exit 3"), 3 << 8);
    EXPECT_EQ(Osl_System(std::string("[ \"$(echo a b | tr ' ' _)\" = a_b ] && exit 4")), 4 << 8);
    EXPECT_NE(Osl_System(nullptr), 0);
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(Osl_System("no-such-program-here -x", 0), 2);
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_THAT(lines()[0], EndsWith("FullCommand: no-such-program-here -x"));
    EXPECT_THAT(lines()[1], EndsWith("Failed to invoke extern program (no-such-program-here -x)  "
                                     "Because Error(2) No such file or directory"));
}

}  // namespace
