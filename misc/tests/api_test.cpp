// misc/tests/api_test.cpp
// Against the shared library: every call here fails to link when its OSL_API is missing.
#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/versions.h>

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
}
