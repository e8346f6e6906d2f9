// misc/tests/wenv_test.cpp
#include <vum-qib-osl/misc/wenv.h>

#include <gtest/gtest.h>

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <map>

namespace {

using EnvList = std::vector<std::pair<std::string, std::string>>;

struct Family {
    const char* name;
    WEnv::EnvStatus (*get)(const std::string&, std::string&);
    int (*put)(const std::string&, const std::string&);
    void (*clear)(const std::string&);
    void (*list)(EnvList&);
};

const Family kFamilies[] = {
    {"plain", WEnv::WGetEnv, WEnv::WPutEnv, WEnv::WClearEnv, WEnv::WGetEnvList},
    {"L", WEnv::WGetEnvL, WEnv::WPutEnvL, WEnv::WClearEnvL, WEnv::WGetEnvListL},
    {"U", WEnv::WGetEnvU, WEnv::WPutEnvU, WEnv::WClearEnvU, WEnv::WGetEnvListU},
};

class WEnvTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (const char* name : {"OSL_WENV_A", "OSL_WENV_B", "OSL_WENV_C"}) unsetenv(name);
    }
};

TEST_F(WEnvTest, EveryFamilyReadsWritesRemovesAndListsTheSameVariables) {
    for (const Family& f : kFamilies) {
        SCOPED_TRACE(f.name);
        std::string value = "stale";
        EXPECT_EQ(f.get("OSL_WENV_A", value), WEnv::EnvNotSet);
        EXPECT_EQ(value, "");

        setenv("OSL_WENV_A", "", 1);
        value = "stale";
        EXPECT_EQ(f.get("OSL_WENV_A", value), WEnv::EnvEmpty);
        EXPECT_EQ(value, "");

        EXPECT_EQ(f.put("OSL_WENV_A", "caf\xC3\xA9 = x"), 0);
        EXPECT_EQ(f.get("OSL_WENV_A", value), WEnv::EnvSet);
        EXPECT_EQ(value, "caf\xC3\xA9 = x");
        EXPECT_STREQ(std::getenv("OSL_WENV_A"), "caf\xC3\xA9 = x");

        EXPECT_EQ(f.put("OSL_WENV_A", ""), 0);
        EXPECT_EQ(f.get("OSL_WENV_A", value), WEnv::EnvNotSet);
        EXPECT_EQ(std::getenv("OSL_WENV_A"), nullptr);

        f.put("OSL_WENV_A", "1");
        f.clear("OSL_WENV_A");
        EXPECT_EQ(f.get("OSL_WENV_A", value), WEnv::EnvNotSet);
        f.clear("OSL_WENV_A");  // clearing an unset variable is harmless

        // The list appends every entry, split at the first equals.
        setenv("OSL_WENV_B", "x=y=z", 1);
        setenv("OSL_WENV_C", "", 1);
        EnvList list = {{"kept", "first"}};
        f.list(list);
        ASSERT_GE(list.size(), 3u);
        EXPECT_EQ(list.front(), (std::pair<std::string, std::string>("kept", "first")));
        const std::map<std::string, std::string> byName(list.begin() + 1, list.end());
        EXPECT_EQ(byName.at("OSL_WENV_B"), "x=y=z");
        EXPECT_EQ(byName.at("OSL_WENV_C"), "");
        std::size_t entries = 0;
        for (char** e = environ; *e != nullptr; ++e) ++entries;
        EXPECT_EQ(list.size(), entries + 1);
    }
}

TEST_F(WEnvTest, RefusedEntriesChangeNothingAndTheNameEndsAtTheFirstEquals) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "x"}, {"=x", "y"}, {std::string("OSL_WENV_C\0D", 12), "x"}, {"OSL_WENV_C", std::string("a\0b", 3)}};
    for (const auto& [name, value] : cases) {
        SCOPED_TRACE(name + "=" + value);
        EXPECT_EQ(WEnv::WPutEnv(name, value), -1);
        EXPECT_EQ(std::getenv("OSL_WENV_C"), nullptr);
    }
    std::string value = "stale";
    EXPECT_EQ(WEnv::WGetEnv("", value), WEnv::EnvNotSet);
    EXPECT_EQ(WEnv::WGetEnv("A=B", value), WEnv::EnvNotSet);
    // The entry name ends at the first equals; "OSL_WENV_B==" sets "=", it removes nothing.
    EXPECT_EQ(WEnv::WPutEnv("OSL_WENV_B=in", "value"), 0);
    EXPECT_EQ(WEnv::WGetEnv("OSL_WENV_B", value), WEnv::EnvSet);
    EXPECT_EQ(value, "in=value");
    EXPECT_EQ(WEnv::WPutEnv("OSL_WENV_B=", ""), 0);
    EXPECT_EQ(WEnv::WGetEnv("OSL_WENV_B", value), WEnv::EnvSet);
    EXPECT_EQ(value, "=");
}

}  // namespace
