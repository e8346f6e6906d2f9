// log/tests/log_load_test.cpp
// Configuring the logger and its channels from an INI file.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/misc/versions.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <unistd.h>

#include "log/tests/log_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::captureLine;

class LogLoadTest : public osl::test::LoggerTest {
protected:
    bool load(const std::string& text, const std::string& process = "srv") {
        osl::test::writeFile(ini_, text);
        return log_->Load(ini_, process);
    }

    osl::test::TempDir dir_;
    std::string ini_ = dir_.file("log.ini");
};

TEST_F(LogLoadTest, BuildsOneChannelPerNameInTheLoggerGroup) {
    ASSERT_TRUE(load("[logging]\n"
                     "channels = file1, ,private  weird,snmp1 sys dbg\n"
                     "[file1]\ntype=Text-File\nlevel=warning\ncategory=db, net\npath=" + dir_.file("common.log") +
                     "\nmaxsize=1000\nperiod=2\npurgecount=3\npurgeage=x\n"
                     "[private]\ntype=private-file\nlevel=error\npath=" + dir_.file("own.log") + "\n"
                     "[weird]\ntype=carrier-pigeon\nlevel=info\n"
                     "[snmp1]\ntype=SNMP\nlevel=fatal\nhost=127.0.0.1\nport=99999\n"
                     "[sys]\ntype=system\n"
                     "[dbg]\ntype=debug\nlevel=system\ncategory=*\n"));
    // The unknown type is skipped; the levels of the others make the lowest severity warning.
    EXPECT_TRUE(log_->HasSeverity(SevWarning));
    EXPECT_FALSE(log_->HasSeverity(SevInfo));
    EXPECT_TRUE(log_->HasCategory("anything"));  // "*" of dbg
    OslLogPrint(SevWarning, "db", "Load", "to the common file");
    OslLogPrint(SevError, "", "Load", "to the private file");
    const std::string common = osl::test::readFile(dir_.file("common.log"));
    EXPECT_NE(common.find("-WARN  Load : to the common file\r\n"), std::string::npos) << common;
    EXPECT_EQ(common.find("private"), std::string::npos);
    const std::string own = osl::test::readFile(dir_.file("own_" + std::to_string(getpid()) + ".log"));
    EXPECT_NE(own.find("-ERROR Load : to the private file\r\n"), std::string::npos) << own;
}

// Mistakes in a channel's keys read as they always have, and are said once on standard error.
TEST_F(LogLoadTest, KeyMistakesReadAsDocumentedAndAreSaid) {
    struct Row {
        const char* keys;
        std::uint32_t (*read)(Ini&);
        std::uint32_t value;
        const char* said;  // empty: nothing
    };
    auto maxsize = [](Ini& ini) { return CChannelCommonFile(ini, "c").GetMaxSize(); };
    auto period = [](Ini& ini) { return CChannelCommonFile(ini, "c").GetPeriod(); };
    auto purgeage = [](Ini& ini) { return CChannelCommonFile(ini, "c").GetPurgeAge(); };
    auto level = [](Ini& ini) { return static_cast<std::uint32_t>(CChannelCommonFile(ini, "c").GetSeverity()); };
    auto port = [](Ini& ini) { return static_cast<std::uint32_t>(CChannelSnmp(ini, "c").GetPort()); };
    const Row rows[] = {
        {"maxsize=1000", maxsize, 1000, ""},
        {"maxsize=", maxsize, 0, ""},
        {"maxsize=10k", maxsize, 10, "[c] maxsize=10k: text after the number, reads as 10\n"},
        {"maxsize=5000000000", maxsize, 705032704, "[c] maxsize=5000000000: larger than 4294967295"},
        {"period=-1", period, 4294967295u, "[c] period=-1: negative, reads as 4294967295\n"},
        {"purgeage=x", purgeage, 0, "[c] purgeage=x: not a number"},
        {"level=Warning", level, SevNone, "[c] level=Warning: not info, warning, error, fatal, system or none"},
        {"level=warning", level, SevWarning, ""},
        {"port=99999", port, 162, "[c] port=99999: not a port number, reads as 162\n"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.keys);
        osl::test::writeFile(ini_, std::string("[c]\n") + row.keys + "\n");
        Ini ini(ini_, true);
        testing::internal::CaptureStderr();
        EXPECT_EQ(row.read(ini), row.value);
        const std::string said = testing::internal::GetCapturedStderr();
        EXPECT_NE(said.find(row.said), std::string::npos) << said;  // once, as one line
        EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), *row.said == '\0' ? 0 : 1) << said;
        EXPECT_TRUE(said.empty() || said.back() == '\n') << said;
    }
    testing::internal::CaptureStderr();
    ASSERT_TRUE(load("[logging]\nchannels=e\n[e]\ntype=text-file\nlevel=info\npath=\n"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "vum-qib-osl: [e] path= is empty: the channel is not made\n");
    EXPECT_FALSE(log_->HasSeverity(SevSystem));
    EXPECT_EQ(osl::detail::logGate.load(), SevNone);
}

TEST_F(LogLoadTest, TheProcessGroupWinsOverLogging) {
    const std::string text = "[logging]\nscreen-level=info\n[srv]\nscreen-level=error\nscreen-category=db\n";
    ASSERT_TRUE(load(text, "srv"));
    ASSERT_NE(log_->GetFunctionChannel(), nullptr);
    EXPECT_EQ(log_->GetFunctionChannel()->GetSeverity(), SevError);
    EXPECT_EQ(log_->GetFunctionChannel()->GetCategory(), "db");
    ASSERT_TRUE(load(text, "other"));
    EXPECT_EQ(log_->GetFunctionChannel()->GetSeverity(), SevInfo);
    EXPECT_EQ(log_->GetFunctionChannel()->GetCategory(), "");
    ASSERT_TRUE(load("[logging]\nscreen-level=\n"));
    EXPECT_EQ(log_->GetFunctionChannel(), nullptr);
}

TEST_F(LogLoadTest, AnUnreadableFileIsReportedAndLeavesNoChannels) {
    log_->SetFunctionChannel(captureLine, SevInfo, "", false);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(log_->Load(dir_.file("missing.ini"), "srv"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), dir_.file("missing.ini") + ":" + Ini::ExceptionNumberToString(1) + "\n");
    EXPECT_EQ(log_->GetFunctionChannel(), nullptr);
    EXPECT_FALSE(log_->HasSeverity(SevSystem));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load("[logging\n"));
    const std::string error = testing::internal::GetCapturedStderr();
    EXPECT_EQ(error.substr(0, ini_.size() + 1), ini_ + ":");
    EXPECT_GT(error.size(), ini_.size() + 2);
}

TEST_F(LogLoadTest, LoadFromAnIniObjectCopiesIt) {
    osl::test::writeFile(ini_, "[logging]\nscreen-level=warning\nfile-level=error\nfile-category=db\n");
    Ini ini(ini_, true);
    ASSERT_TRUE(log_->Load(ini, "a-very-long-process-name"));
    EXPECT_EQ(log_->GetProcessName(), "a-very-lon");
    std::string file = dir_.file("set.log");
    log_->SetFileChannel(file, SevInfo, "net", true);  // the INI's level and category win
    OslLogPrint(SevError, "net", "t", "not taken");
    OslLogPrint(SevError, "db", "t", "taken");
    log_->SetFileChannel(file, SevWarning, "net", false);  // the same channel, the caller's filter
    OslLogPrint(SevWarning, "net", "t", "now taken");
    // Without the keys, the caller's level and category stay.
    ASSERT_TRUE(load("[logging]\nchannels=\n"));
    log_->SetFileChannel(file, SevInfo, "io", true);
    OslLogPrint(SevInfo, "io", "t", "caller's filter");
    const std::vector<std::string> all = osl::test::fileLines(file);
    ASSERT_EQ(all.size(), 4u) << osl::test::readFile(file);  // the header and three lines
    EXPECT_NE(all[1].find("-ERROR t : taken"), std::string::npos);
    EXPECT_NE(all[2].find("-WARN  t : now taken"), std::string::npos);
    EXPECT_NE(all[3].find("-INFO  t : caller's filter"), std::string::npos);
}

TEST_F(LogLoadTest, PrintVersionsLogsTheApplicationThenTheRest) {
    log_->SetFunctionChannel(captureLine, SevInfo, "", false);
    QibVr_Versions& versions = QibVr_Versions::Instance();
    versions.Register("myapp", "myapp 1.2");
    CLog::PrintVersions(versions, "myapp");
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_NE(lines()[0].find("-SYS    : \nApplication's version:\nmyapp 1.2\r\n"), std::string::npos) << lines()[0];
    EXPECT_NE(lines()[1].find("-INFO  PrintVersions : \nDLL's versions:\nmyapp 1.2\r\n"), std::string::npos)
        << lines()[1];
}

}  // namespace
