// log/tests/system_channels_test.cpp
// The system, debugger and SNMP trap channels, without a daemon.
#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "log/src/snmp_trap.h"
#include "log/tests/daemon.h"
#include "log/tests/log_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::LoggerTest;

// Runs the debugger channel in a child whose output is captured; traced makes the parent its
// tracer first.
std::string debugChannelOutput(bool traced) {
    osl::test::TempDir dir;
    const std::string out = dir.file("stderr");
    const pid_t pid = fork();
    if (pid == 0) {
        if (std::freopen(out.c_str(), "w", stderr) == nullptr) _exit(2);
        if (traced && ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(3);
        CLog log;
        log.SetProcessName("debugged");
        CLog* logger = &log;
        CLogMsg real(&logger, "Dbg", "", SevError);
        log.AddChannel(new CChannelDebug(SevInfo, ""));
        real.Log("to the debugger");
        _exit(0);
    }
    waitpid(pid, nullptr, 0);
    return osl::test::readFile(out);
}

TEST(DebugChannelTest, WritesOnlyWhileADebuggerIsAttached) {
    const std::string traced = debugChannelOutput(true);
    EXPECT_EQ(traced.substr(0, 12), "A debugged  ");
    EXPECT_EQ(traced.substr(traced.size() - 22), "Dbg : to the debugger\n");
    EXPECT_EQ(debugChannelOutput(false), "");
}

// The layout itself is what snmptrapd decodes in the daemon test; here, the cut of a long line.
TEST(SnmpTrapTest, LongLinesAreCutToFitADatagram) {
    osl::detail::LogTrap trap;
    trap.line.assign(70000, 'x');
    EXPECT_LT(osl::detail::encodeTrap(trap).size(), osl::detail::kMaxTrapLine + 200);
}

// The host is resolved on a thread of its own, so a line never waits for it; once the name is
// known not to resolve, lines are lost. (The daemon test sees the lines that waited arrive.)
TEST_F(LoggerTest, SnmpChannelWithAnUnknownHostLosesLinesWithoutWaiting) {
    CLog* none = nullptr;
    CLogMsg msg(&none, "t", "", SevInfo);
    CChannelSnmp lost("no-such-host.invalid", 162, "public", SevInfo, "");
    EXPECT_TRUE(osl::test::waitFor([&] {
        try {
            lost.Write(msg);
            return false;
        } catch (const QIBError&) {
            return true;
        }
    }));
}

}  // namespace
