// ini/tests/general_configuration_test.cpp
#include <vum-qib-osl/ini/general_configuration.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <functional>

namespace {

// The integer a call threw, or -1 when it threw nothing.
int thrownInt(const std::function<void()>& f) {
    try {
        f();
    } catch (int e) {
        return e;
    }
    return -1;
}

class ReadAgain : public GeneralConfiguration {
public:
    static void read() { ReadEnviroment(); }
};

class GeneralConfigurationTest : public ::testing::Test {
protected:
    void TearDown() override {
        for (const char* name : {"OSL_ROOT_A", "OSL_ROOT_B", "OSL_ROOT_C"}) unsetenv(name);
    }
};

// Runs first: before any Init in this process the root is empty.
TEST_F(GeneralConfigurationTest, BeforeInitTheGettersGiveTheBareNames) {
    if (!GeneralConfiguration::GetRootDirectory().empty()) GTEST_SKIP() << "Init ran already";
    EXPECT_EQ(GeneralConfiguration::GetLogDirectory(), "log/");
    EXPECT_EQ(GeneralConfiguration::GetDBDirectory(), "db/");
}

TEST_F(GeneralConfigurationTest, TheFirstSetVariableGivesTheRoot) {
    setenv("OSL_ROOT_B", "/prod", 1);
    setenv("OSL_ROOT_C", "/other", 1);
    GeneralConfiguration::Init(std::vector<std::string>{"OSL_ROOT_A", "OSL_ROOT_B", "OSL_ROOT_C"});
    EXPECT_EQ(GeneralConfiguration::GetRootDirectory(), "/prod/");
    EXPECT_EQ(GeneralConfiguration::GetLogDirectory(), "/prod/log/");

    const std::pair<std::string (*)(), const char*> getters[] = {
        {GeneralConfiguration::GetBannersDirectory, "/prod/banners/"},
        {GeneralConfiguration::GetBinDirectory, "/prod/bin/"},
        {GeneralConfiguration::GetConfigurationDirectory, "/prod/configuration/"},
        {GeneralConfiguration::GetDBDirectory, "/prod/db/"},
        {GeneralConfiguration::GetDdfpageDirectory, "/prod/ddfpage/"},
        {GeneralConfiguration::GetDefinitionsDirectory, "/prod/definitions/"},
        {GeneralConfiguration::GetDocumentationDirectory, "/prod/documentation/"},
        {GeneralConfiguration::GetDriversDirectory, "/prod/drivers/"},
        {GeneralConfiguration::GetExamplesDirectory, "/prod/examples/"},
        {GeneralConfiguration::GetLogDirectory, "/prod/log/"},
        {GeneralConfiguration::GetMessagesDirectory, "/prod/messages/"},
        {GeneralConfiguration::GetMonitorDirectory, "/prod/monitor/"},
        {GeneralConfiguration::GetRecipientDirectory, "/prod/recipient/"},
        {GeneralConfiguration::GetTmpDirectory, "/prod/tmp/"},
    };
    for (const auto& [getter, expected] : getters) EXPECT_EQ(getter(), expected);

    // A value that already ends in "/" gets no second one.
    GeneralConfiguration::Init("OSL_ROOT_C");
    setenv("OSL_ROOT_C", "/opt/app/", 1);
    ReadAgain::read();
    EXPECT_EQ(GeneralConfiguration::GetRootDirectory(), "/opt/app/");
    EXPECT_EQ(GeneralConfiguration::GetTmpDirectory(), "/opt/app/tmp/");
}

TEST_F(GeneralConfigurationTest, NoUsableVariableThrowsTwoAndKeepsTheRoot) {
    setenv("OSL_ROOT_A", "/kept", 1);
    GeneralConfiguration::Init("OSL_ROOT_A");
    struct Case {
        const char* trace;
        std::vector<std::string> names;
    };
    setenv("OSL_ROOT_B", "", 1);
    setenv("OSL_ROOT_C", "/never", 1);
    const Case cases[] = {
        {"none set", {"OSL_ROOT_X", "OSL_ROOT_Y"}},
        {"empty list", {}},
        {"first set one is empty", {"OSL_ROOT_X", "OSL_ROOT_B", "OSL_ROOT_C"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        EXPECT_EQ(thrownInt([&] { GeneralConfiguration::Init(c.names); }), 2);
        EXPECT_EQ(GeneralConfiguration::GetRootDirectory(), "/kept/");
    }
    EXPECT_EQ(thrownInt([] { GeneralConfiguration::Init("OSL_ROOT_X"); }), 2);
}

TEST_F(GeneralConfigurationTest, FixedDirectoryPathEndsInOneSlash) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "/"}, {"/", "/"}, {"a", "a/"}, {"/a/b/", "/a/b/"}, {"a\\", "a\\/"}, {"a//", "a//"},
    };
    for (const auto& [path, fixed] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(GeneralConfiguration::GetFixedDirectoryPath(path), fixed);
    }
}

}  // namespace
