// log/tests/daemons_test.cpp
// The SNMP trap channel against snmptrapd and the system channel against rsyslogd, each daemon
// started by the test on a loopback port or a socket of its own, with a configuration of its own.
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "log/tests/log_test_support.h"
#include "platform/system_log.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;

std::string findProgram(const std::string& name) {
    for (const char* dir : {"/usr/sbin", "/usr/bin", "/sbin", "/bin"}) {
        if (access((std::string(dir) + "/" + name).c_str(), X_OK) == 0) return std::string(dir) + "/" + name;
    }
    return {};
}

// A UDP port on 127.0.0.1 that was free a moment ago.
int freeUdpPort() {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    const bool ok = fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
                    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    if (fd >= 0) close(fd);
    return ok ? ntohs(address.sin_port) : -1;
}

bool waitFor(const std::function<bool()>& condition, double seconds = 10) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end && !condition()) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return condition();
}

// A daemon in the foreground with extra environment ("NAME=value") and its output in logFile,
// stopped with the test.
class Daemon {
public:
    Daemon(const std::vector<std::string>& argv, const std::vector<std::string>& environment,
           const std::string& logFile) {
        pid_ = fork();
        if (pid_ != 0) return;
        if (std::freopen(logFile.c_str(), "a", stdout) != nullptr) dup2(fileno(stdout), 2);
        for (const std::string& setting : environment) putenv(const_cast<char*>(setting.c_str()));
        std::vector<char*> args;
        for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    ~Daemon() {
        if (pid_ <= 0) return;
        kill(pid_, SIGTERM);
        if (!waitFor([this] { return waitpid(pid_, nullptr, WNOHANG) != 0; }, 5)) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

private:
    pid_t pid_ = -1;
};

class DaemonTest : public osl::test::LoggerTest {
protected:
    osl::test::TempDir dir_;
};

TEST_F(DaemonTest, SnmptrapdReceivesAndDecodesTheTrap) {
    const std::string snmptrapd = findProgram("snmptrapd");
    if (snmptrapd.empty()) GTEST_SKIP() << "snmptrapd is not installed (Debian package snmptrapd)";
    const int port = freeUdpPort();
    ASSERT_GT(port, 0);
    const std::string config = dir_.file("snmptrapd.conf");
    osl::test::writeFile(config, "authCommunity log secret\n");
    const std::string received = dir_.file("traps.log");
    Daemon daemon({snmptrapd, "-f", "-C", "-c", config, "-Lf", received, "-On", "-m", "",
                              "udp:127.0.0.1:" + std::to_string(port)},
                             {"SNMP_PERSISTENT_DIR=" + dir_.file("state"), "MIBS="}, dir_.file("daemon.out"));
    ASSERT_TRUE(waitFor([&] { return readFile(received).find("NET-SNMP version") != std::string::npos; }))
        << "snmptrapd did not start: " << readFile(dir_.file("daemon.out"));

    log_->SetProcessName("trapper");
    log_->AddChannel(new CChannelSnmp("127.0.0.1", port, "secret", SevWarning, "*"));
    log_->AddChannel(new CChannelSnmp("127.0.0.1", port, "wrong", SevWarning, "*"));
    log_->AddChannel(new CChannelFunc(osl::test::captureLine, SevWarning, "*"));
    OslLogPrint(SevInfo, "db", "Open", "below the level");
    OslLogPrint(SevError, "db", "Open", "cannot open \"report\" now");
    ASSERT_EQ(osl::test::capturedLines().size(), 1u);
    const std::string line = osl::test::capturedLines()[0];

    ASSERT_TRUE(waitFor([&] { return readFile(received).find("1.3.6.1.4.1.32473.2.1.4.0") != std::string::npos; }))
        << readFile(received);
    waitFor([] { return false; }, 0.3);  // a trap of the wrong community would have arrived by now
    const std::string log = readFile(received);
    EXPECT_NE(log.find(".1.3.6.1.6.3.1.1.4.1.0 = OID: .1.3.6.1.4.1.32473.2.0.1"), std::string::npos) << log;
    std::string quoted;
    for (char c : line) quoted += c == '"' ? std::string("\\\"") : std::string(1, c);
    EXPECT_NE(log.find(".1.3.6.1.4.1.32473.2.1.1.0 = STRING: \"" + quoted + "\""), std::string::npos) << log;
    EXPECT_NE(log.find(".1.3.6.1.4.1.32473.2.1.2.0 = INTEGER: 3"), std::string::npos) << log;
    EXPECT_NE(log.find(".1.3.6.1.4.1.32473.2.1.3.0 = STRING: \"db\""), std::string::npos) << log;
    EXPECT_NE(log.find(".1.3.6.1.4.1.32473.2.1.4.0 = STRING: \"Open\""), std::string::npos) << log;
    EXPECT_EQ(log.find("below the level"), std::string::npos);
    // Only the trap of the configured community is accepted, once.
    EXPECT_EQ(log.find("32473.2.1.1.0", log.find("32473.2.1.1.0") + 1), std::string::npos) << log;
}

TEST_F(DaemonTest, RsyslogdReceivesTheEntriesWithTheirPriorities) {
    if (geteuid() != 0) GTEST_SKIP() << "needs root: the test starts its own rsyslogd";
    const std::string rsyslogd = findProgram("rsyslogd");
    if (rsyslogd.empty()) GTEST_SKIP() << "rsyslogd is not installed (Debian package rsyslog)";
    const std::string socket = dir_.file("log.sock");
    const std::string received = dir_.file("syslog.out");
    const std::string config = dir_.file("rsyslog.conf");
    osl::test::writeFile(config,
                         "global(workDirectory=\"" + dir_.path().string() + "\")\n"
                         "module(load=\"imuxsock\" SysSock.Use=\"off\")\n"
                         "input(type=\"imuxsock\" Socket=\"" + socket + "\" CreatePath=\"on\")\n"
                         "template(name=\"line\" type=\"string\" "
                         "string=\"%syslogseverity-text%|%syslogfacility-text%|%programname%|%msg%\\n\")\n"
                         "*.* action(type=\"omfile\" file=\"" + received + "\" template=\"line\")\n");
    Daemon daemon({rsyslogd, "-n", "-f", config, "-i", dir_.file("rsyslogd.pid")}, {},
                             dir_.file("daemon.out"));
    ASSERT_TRUE(waitFor([&] { return access(socket.c_str(), F_OK) == 0; }))
        << "rsyslogd did not start: " << readFile(dir_.file("daemon.out"));
    osl::platform::setSystemLogSocket(socket);

    log_->SetProcessName("syslogged");
    log_->AddChannel(new CChannelSyslog(SevInfo, "*, ~noise"));
    OslLogPrint(SevInfo, "", "Sys", "an information");
    OslLogPrint(SevWarning, "disk", "Sys", "a warning");
    OslLogPrint(SevFatal, "", "Sys", "a fatal error");
    OslLogPrint(SevSystem, "", "Sys", "a system message");
    OslLogPrint(SevError, "noise", "Sys", "refused by the category");
    osl::platform::setSystemLogSocket("");

    ASSERT_TRUE(waitFor([&] { return readFile(received).find("a system message") != std::string::npos; }))
        << readFile(received) << readFile(dir_.file("daemon.out"));
    const std::string log = readFile(received);
    for (const char* expected : {"info|user|VELMARION| A syslogged", "warning|user|VELMARION| A syslogged",
                                 "err|user|VELMARION| A syslogged"}) {
        EXPECT_NE(log.find(expected), std::string::npos) << expected << "\n" << log;
    }
    EXPECT_NE(log.find("info|user|VELMARION| A syslogged"), log.rfind("info|user|VELMARION| A syslogged"))
        << "system messages are information";
    EXPECT_NE(log.find("-FATAL Sys : a fatal error"), std::string::npos) << log;
    EXPECT_EQ(log.find("refused"), std::string::npos) << log;
}

}  // namespace
