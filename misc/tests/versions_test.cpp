// misc/tests/versions_test.cpp
#include <vum-qib-osl/misc/versions.h>

#include <gtest/gtest.h>

#include <sstream>

namespace {

// The registry is a process-wide singleton that the library fills at load; these tests use
// names that sort before and after the library's own and look at what they add.
TEST(QibVrVersionsTest, ApplicationLineFirstThenOthersInNameOrder) {
    QibVr_Versions& v = QibVr_Versions::Instance();
    v.Register("AAA", "AAA 1.0");
    v.Register("zzz", "zzz 2.0");
    const std::string text = v.ToString("zzz");
    EXPECT_EQ(text.rfind("zzz 2.0\r\nAAA 1.0\r\n", 0), 0u) << text;
    EXPECT_EQ(text.find("zzz 2.0", 1), std::string::npos);  // listed once
    const std::string all = v.ToString("");
    EXPECT_EQ(all.rfind("AAA 1.0\r\n", 0), 0u);
    EXPECT_LT(all.find("vum-qib-osl OSL"), all.find("zzz 2.0"));
    std::istringstream lines(all);
    for (std::string line; std::getline(lines, line);) EXPECT_EQ(line.back(), '\r');
}

TEST(QibVrVersionsTest, UnknownAppLeavesAnEmptyEntryAndLaterRegistrationReplaces) {
    QibVr_Versions& v = QibVr_Versions::Instance();
    EXPECT_EQ(v.ToStringMe("unknown-X"), "\r\n");
    EXPECT_NE(v.ToString("").find("\r\n\r\n"), std::string::npos);  // it is kept: one empty line
    EXPECT_EQ(v.ToString("never-registered").rfind("\r\n", 0), 0u);
    v.Register("repl", "repl 1");
    QibVr_AutoRegister reg("repl", "repl 2");  // a later registration replaces
    EXPECT_EQ(v.ToStringMe("repl"), "repl 2\r\n");
}

TEST(QibVrVersionsTest, LibraryRegistersItsComponentsAndOldInterfaceChangesNothing) {
    QibVr_Versions::Map copy = QibVr_Versions::Instance();
    for (const char* c : {"OSL", "misc", "strings", "ini", "message", "statistics", "log", "sync", "http_file"}) {
        SCOPED_TRACE(c);
        ASSERT_EQ(copy.count(c), 1u);
        EXPECT_NE(copy[c].find(c), std::string::npos);
    }
    std::map<std::string, std::string> old;
    testing::internal::CaptureStderr();
    GetVersionsList_log(old);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "used old GetVersions interface!!!\n");
    EXPECT_TRUE(old.empty());
}

TEST(VersionSpecHelperTest, ParsesNumbersAndExtra) {
    struct Case { std::string text; std::vector<int> numbers; std::string extra; };
    const Case cases[] = {
        {"4.1.7.12-fix", {4, 1, 7, 12}, "-fix"},
        {"1.2.3.4.5", {1, 2, 3, 4}, ".5"},
        {"ver2.x.5", {2, 5}, ""},
        {"", {}, ""}, {"release", {}, ""}, {"007", {7}, ""},
        {"99999999999.1", {2147483647, 1}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        auto v = QibVr_VersionSpecHelper::parseVersion(c.text);
        const int got[] = {v.getMajor(), v.getMinor(), v.getRevision(), v.getBuild()};
        const bool has[] = {v.hasMajor(), v.hasMinor(), v.hasRevision(), v.hasBuild()};
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(has[i], i < c.numbers.size());
            EXPECT_EQ(got[i], i < c.numbers.size() ? c.numbers[i] : -1);
        }
        EXPECT_EQ(v.getExtra(), c.extra);
        EXPECT_EQ(v.hasExtra(), !c.extra.empty());
    }
}

}  // namespace
