// misc/tests/api_test.cpp
// Against the shared library: every call here fails to link when its OSL_API is missing.
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/dloadlib.h>
#include <vum-qib-osl/misc/install_dir.h>
#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/versions.h>
#include <vum-qib-osl/misc/wenv.h>

#include <gtest/gtest.h>

#include <sstream>

TEST(MiscApiTest, ExportedFromTheSharedLibrary) {
    InitOSL();
    EndSession();
    std::ostringstream out;
    out << QIBLogicalError("x", "m", 1);
    EXPECT_EQ(out.str(), "Logical Error: x, code 1, severity 12, programm m 1");
    EXPECT_STREQ(ExceptionToConstChar(100), "Command Line Error");
    QibVr_AutoRegister("api", "api 1");
    EXPECT_EQ(QibVr_Versions::Instance().ToStringMe("api"), "api 1\r\n");
    EXPECT_EQ(QibVr_VersionSpecHelper::parseVersion("1.2").getMinor(), 2);

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
