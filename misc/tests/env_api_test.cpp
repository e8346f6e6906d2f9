// misc/tests/env_api_test.cpp
// Against the shared library: dynamic libraries, environment and directories are exported.
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/dloadlib.h>
#include <vum-qib-osl/misc/install_dir.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/wenv.h>

#include <gtest/gtest.h>

TEST(EnvApiTest, ExportedFromTheSharedLibrary) {
    OslLoadlibrary lib;
    EXPECT_THROW(lib.getProcAddress("x"), QIBError);
    lib.freeLibrary();
    EXPECT_EQ(WEnv::WPutEnv("OSL_API_VAR", "v"), 0);
    std::string value;
    EXPECT_EQ(WEnv::WGetEnv("OSL_API_VAR", value), WEnv::EnvSet);
    WEnv::WClearEnv("OSL_API_VAR");
    std::vector<std::pair<std::string, std::string>> list;
    WEnv::WGetEnvList(list);
    EXPECT_FALSE(list.empty());
    EXPECT_EQ(SetDECOLLATOR_DIRFromRegesistry(), -1);
    GetBinDir();
    EXPECT_TRUE(bGetTempPath(value));
    EXPECT_EQ(GeneralConfiguration::GetFixedDirectoryPath("a"), "a/");
    try {
        GeneralConfiguration::Init("OSL_API_UNSET_VARIABLE");
        ADD_FAILURE() << "no throw";
    } catch (int e) {
        EXPECT_EQ(e, 2);
    }
}
