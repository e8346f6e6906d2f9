// log/tests/daemons_test.cpp
// The SNMP trap channel against snmptrapd and the system channel against rsyslogd, each daemon
// started by the test on a loopback port or a socket of its own, with a configuration of its own.
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "log/tests/daemon.h"
#include "log/tests/log_test_support.h"
#include "platform/system_log.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;
using osl::test::waitFor;

class DaemonTest : public osl::test::LoggerTest {
protected:
    osl::test::TempDir dir_;
};

TEST_F(DaemonTest, SnmptrapdReceivesAndDecodesTheTrap) {
    const std::string snmptrapd = osl::test::findProgram("snmptrapd");
    if (snmptrapd.empty()) GTEST_SKIP() << "snmptrapd is not installed (Debian package snmptrapd)";
    const int port = osl::test::freePort();
    ASSERT_GT(port, 0);
    const std::string config = dir_.file("snmptrapd.conf");
    osl::test::writeFile(config, "authCommunity log secret\n");
    const std::string received = dir_.file("traps.log");
    osl::test::Daemon daemon({snmptrapd, "-f", "-C", "-c", config, "-Lf", received, "-On", "-m", "",
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
    ASSERT_EQ(lines().size(), 1u);
    const std::string line = lines()[0];

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
    const std::string rsyslogd = osl::test::findProgram("rsyslogd");
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
    osl::test::Daemon daemon({rsyslogd, "-n", "-f", config, "-i", dir_.file("rsyslogd.pid")}, {},
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
    for (const std::string priority : {"info", "warning", "err"}) {
        EXPECT_NE(log.find(priority + "|user|VELMARION| A syslogged"), std::string::npos) << priority << "\n" << log;
    }
    const std::string info = "info|user|VELMARION| A syslogged";
    EXPECT_NE(log.find(info), log.rfind(info)) << "system messages are information";
    EXPECT_NE(log.find("-FATAL Sys : a fatal error"), std::string::npos) << log;
    EXPECT_EQ(log.find("refused"), std::string::npos) << log;
}

}  // namespace
