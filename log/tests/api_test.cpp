// log/tests/api_test.cpp
// Against the shared library: the logging calls a product program makes, including the macro.
#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/misc/versions.h>

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

#include <string>
#include <vector>

namespace {

TEST(LogApiTest, ExportedFromTheSharedLibrary) {
    static std::vector<std::string> seen;
    CLog* log = CLog::Instance();
    log->SetProcessName("api");
    log->SetFunctionChannel([](const char* line) { seen.push_back(line); }, SevWarning, "*", false);
    OSL_LOG(SevInfo, "", "at") << "dropped";
    OSL_LOG(SevError, "db", "at") << "kept " << 1;
    CLogMsg("at", "", SevFatal) << "flushed" << flush;
    OslLogPrint(SevWarning, "", "at", "printed");
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_NE(seen[0].find("-ERROR at : kept 1"), std::string::npos);
    EXPECT_EQ(StringToSev("fatal"), SevFatal);
    EXPECT_TRUE(CLogMsg::HasCategory("x"));

    osl::test::TempDir dir;
    const std::string ini = dir.file("log.ini");
    osl::test::writeFile(ini, "[logging]\nchannels=f\n[f]\ntype=text-file\nlevel=info\npath=" + dir.file("c.log") + "\n");
    ASSERT_TRUE(log->Load(ini, "api"));
    CLog::PrintVersions(QibVr_Versions::Instance(), "api");
    std::string file = dir.file("set.log");
    log->SetFileChannel(file, SevInfo, false);
    OslLogPrint(SevInfo, "", "at", "to every file");
    EXPECT_NE(osl::test::readFile(file).find("to every file"), std::string::npos);
    EXPECT_NE(osl::test::readFile(dir.file("c.log")).find("to every file"), std::string::npos);
    // Every channel type, made by the caller.
    CChannelCommonFile common(dir.file("x.log"), SevInfo, "");
    CChannelPrivateFile own(dir.file("x.log"), SevInfo, "");
    EXPECT_NE(own.GetFileName(), common.GetPath());
    EXPECT_EQ(CChannelSnmp().GetPort(), 162);
    CChannelDebug debug(SevInfo, "");
    CChannelSyslog system(SevNone, "");
    EXPECT_FALSE(RegisterThisDllAsMsgDll());
    log->DeleteChannels();
    log->InitOptimisationVariable();
}

}  // namespace
