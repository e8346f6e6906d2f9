// log/tests/api_test.cpp
// Against the shared library: the logging calls a product program makes, including the macro.
#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::string>& seen() {
    static std::vector<std::string> lines;
    return lines;
}

TEST(LogApiTest, ExportedFromTheSharedLibrary) {
    CLog* log = CLog::Instance();
    log->SetProcessName("api");
    log->SetFunctionChannel([](const char* line) { seen().push_back(line); }, SevWarning, "*", false);
    OSL_LOG(SevInfo, "", "at") << "dropped";
    OSL_LOG(SevError, "db", "at") << "kept " << 1;
    CLogMsg("at", "", SevFatal) << "flushed" << flush;
    OslLogPrint(SevWarning, "", "at", "printed");
    ASSERT_EQ(seen().size(), 3u);
    EXPECT_EQ(seen()[0].substr(0, 12), "A api       ");
    EXPECT_NE(seen()[0].find("-ERROR at : kept 1"), std::string::npos);
    EXPECT_EQ(StringToSev("fatal"), SevFatal);
    EXPECT_TRUE(CLogMsg::HasCategory("x"));
}

}  // namespace
