// log/tests/system_channels_test.cpp
// The system, debugger and SNMP trap channels, without a daemon.
#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "log/src/snmp_trap.h"
#include "log/tests/log_test_support.h"
#include "platform/system_log.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::LoggerTest;

// A datagram socket of the test that the system log is routed to.
class SyslogSocket {
public:
    explicit SyslogSocket(const std::string& path) {
        fd_ = socket(AF_UNIX, SOCK_DGRAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        bound_ = bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
        osl::platform::setSystemLogSocket(path);
    }
    ~SyslogSocket() {
        osl::platform::setSystemLogSocket("");
        close(fd_);
    }
    bool bound() const { return bound_; }
    // The next datagram, or empty when none is waiting.
    std::string next() {
        char buffer[4096];
        ssize_t n = recv(fd_, buffer, sizeof buffer, MSG_DONTWAIT);
        return n > 0 ? std::string(buffer, static_cast<std::size_t>(n)) : std::string();
    }

private:
    int fd_ = -1;
    bool bound_ = false;
};

TEST_F(LoggerTest, SyslogChannelMapsSeveritiesToPriorities) {
    osl::test::TempDir dir;
    SyslogSocket sink(dir.file("log.sock"));
    ASSERT_TRUE(sink.bound());
    auto* channel = new CChannelSyslog(SevInfo, "");
    log_->AddChannel(channel);
    log_->SetProcessName("sys");
    struct Case {
        LogSeverity sev;
        const char* priority;  // facility user (8) plus the level
    };
    const Case cases[] = {{SevInfo, "<14>"}, {SevWarning, "<12>"}, {SevError, "<11>"},
                          {SevFatal, "<11>"}, {SevSystem, "<14>"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.priority);
        OslLogPrint(c.sev, "", "Sys", "entry");
        const std::string entry = sink.next();
        EXPECT_EQ(entry.substr(0, 4), c.priority);
        EXPECT_NE(entry.find(" VELMARION[" + std::to_string(getpid()) + "]: A sys "), std::string::npos) << entry;
        EXPECT_EQ(entry.substr(entry.size() - 11), "Sys : entry") << entry;
    }
    // Severities outside 1..5 write nothing, even when the level lets them through.
    channel->SetSeverity(static_cast<LogSeverity>(0));
    log_->InitOptimisationVariable();
    CLogMsg msg("Sys", "", static_cast<LogSeverity>(0));
    msg.Log("severity zero");
    msg.Log(SevNone, nullptr, nullptr, "severity seven");
    EXPECT_EQ(sink.next(), "");
    EXPECT_FALSE(RegisterThisDllAsMsgDll());
    char file[] = "/usr/lib/libvum-qib-osl.so";
    EXPECT_FALSE(SubscribeSyslogEvents("SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\VELMARION", file));
}

// Runs the debugger channel in a child whose output is captured; traced makes the parent its
// tracer first.
std::string debugChannelOutput(bool traced) {
    int out[2];
    if (pipe(out) != 0) return "pipe failed";
    pid_t pid = fork();
    if (pid == 0) {
        close(out[0]);
        dup2(out[1], 2);
        if (traced && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(3);
        CLog log;
        log.SetProcessName("debugged");
        CLog* logger = &log;
        CLogMsg real(&logger, "Dbg", "", SevError);
        log.AddChannel(new CChannelDebug(SevInfo, ""));
        real.Log("to the debugger");
        _exit(0);
    }
    close(out[1]);
    std::string text;
    char buffer[512];
    ssize_t n;
    while ((n = read(out[0], buffer, sizeof buffer)) > 0) text.append(buffer, static_cast<std::size_t>(n));
    close(out[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    return text;
}

TEST(DebugChannelTest, WritesOnlyWhileADebuggerIsAttached) {
    const std::string traced = debugChannelOutput(true);
    EXPECT_EQ(traced.substr(0, 12), "A debugged  ");
    EXPECT_EQ(traced.substr(traced.size() - 22), "Dbg : to the debugger\n");
    EXPECT_EQ(debugChannelOutput(false), "");
}

TEST(SnmpTrapTest, BerEncoding) {
    using osl::detail::berInteger;
    using osl::detail::berLength;
    using osl::detail::berOid;
    struct Case {
        std::string encoded;
        std::string expected;
    };
    const Case cases[] = {
        {berLength(127), "\x7f"},
        {berLength(128), "\x81\x80"},
        {berLength(300), std::string("\x82\x01\x2c", 3)},
        {berInteger(0), std::string("\x02\x01\x00", 3)},
        {berInteger(127), "\x02\x01\x7f"},
        {berInteger(128), std::string("\x02\x02\x00\x80", 4)},
        {berInteger(-1), "\x02\x01\xff"},
        {berInteger(-129), "\x02\x02\xff\x7f"},
        {berInteger(4294967295LL, 0x43), std::string("\x43\x05\x00\xff\xff\xff\xff", 7)},
        {berOid("1.3.6.1.2.1.1.3.0"), std::string("\x06\x08\x2b\x06\x01\x02\x01\x01\x03\x00", 10)},
        {berOid("1.3.6.1.4.1.32473.2"), "\x06\x09\x2b\x06\x01\x04\x01\x81\xfd\x59\x02"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.expected));
        EXPECT_EQ(c.encoded, c.expected);
    }
}

TEST(SnmpTrapTest, TrapMessageLayout) {
    osl::detail::LogTrap trap;
    trap.community = "public";
    trap.requestId = 7;
    trap.upTime = 100;
    trap.line = "L";
    trap.severity = 3;
    trap.category = "db";
    trap.at = "Open";
    const std::string message = osl::detail::encodeTrap(trap);
    // SEQUENCE { INTEGER 1, OCTET STRING "public", [7] { INTEGER 7, INTEGER 0, INTEGER 0, ... } }
    ASSERT_GE(message.size(), 20u);
    // (both lengths above 127 take the long form 0x81 n)
    EXPECT_EQ(message.substr(0, 2), "\x30\x81");
    EXPECT_EQ(static_cast<std::size_t>(static_cast<unsigned char>(message[2])) + 3, message.size());
    EXPECT_EQ(message.substr(3, 11), std::string("\x02\x01\x01\x04\x06public", 11));
    EXPECT_EQ(message.substr(14, 2), "\xa7\x81");
    EXPECT_EQ(static_cast<std::size_t>(static_cast<unsigned char>(message[16])) + 17, message.size());
    EXPECT_EQ(message.substr(17, 9), std::string("\x02\x01\x07\x02\x01\x00\x02\x01\x00", 9));
    EXPECT_NE(message.find(osl::detail::berOid(osl::detail::kLogTrapOid)), std::string::npos);
    EXPECT_NE(message.find(osl::detail::berOid(osl::detail::kLogLineOid) + "\x04\x01L"), std::string::npos);
    trap.line.assign(70000, 'x');
    const std::string big = osl::detail::encodeTrap(trap);
    EXPECT_LT(big.size(), osl::detail::kMaxTrapLine + 200);
}

// The host is resolved on a thread of its own: the first lines wait for it instead of being lost,
// and a host that cannot be resolved loses the lines after that.
TEST_F(LoggerTest, SnmpChannelSendsTheLinesThatWaitedForTheResolution) {
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length), 0);
    timeval wait{5, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    CLog* none = nullptr;
    CLogMsg msg(&none, "t", "", SevInfo);
    CChannelSnmp channel("localhost", ntohs(address.sin_port), "public", SevInfo, "");
    for (int i = 0; i < 3; ++i) channel.Write(msg);
    char datagram[512];
    for (int i = 0; i < 3; ++i) EXPECT_GT(recv(fd, datagram, sizeof datagram, 0), 0) << "trap " << i;
    close(fd);

    CChannelSnmp lost("no-such-host.invalid", 162, "public", SevInfo, "");
    bool threw = false;
    for (int i = 0; i < 500 && !threw; ++i) {
        try {
            lost.Write(msg);
            usleep(10000);
        } catch (const QIBError&) {
            threw = true;
        }
    }
    EXPECT_TRUE(threw);
}

}  // namespace
