// ini/tests/api_test.cpp
// Against the shared library: the INI classes a product program uses.
#include <vum-qib-osl/ini/http_file.h>
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/ini/qib_fds_ini.h>
#include <vum-qib-osl/ini/remote_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

namespace {

TEST(IniApiTest, ExportedFromTheSharedLibrary) {
    osl::test::TempDir dir;
    std::filesystem::create_directories(dir.path() / "config");
    const std::string file = dir.file("config/qib_fds.ini");
    osl::test::writeFile(file, "[default]\nk=d\n");
    BackupIni backup(file);
    EXPECT_TRUE(backup.SetKeyValue("new", "x", "v"));
    backup.FlushIniDataToFile("");
    const QibFDSIni settings(dir.path().string(), true);
    EXPECT_EQ(settings.GetProperty("new", "k"), "d");
    EXPECT_EQ(settings.GetProperty("new", "x"), "v");
    const Ini ini(file);
    IniGroupIterator it = ini.begin();
    EXPECT_EQ((*++it).name, "new");
    EXPECT_TRUE(StrCmpInSensitive()("a", "B"));
    EXPECT_EQ(Ini::ExceptionNumberToString(5), "Ini file is empty");

    std::string content = "a&b&";  // escaped in place, even when no server is named
    EXPECT_THROW(HTTP_PutFile("", "/qib", true, content, "", ""), QIBError);
    EXPECT_EQ(content, "a%26b%26");
    EXPECT_THROW(HTTP_GetFile("", "/qib", true, content, "", ""), QIBError);
    EXPECT_THROW(RemoteIni("", "/qib", "", ""), QIBError);
}

}  // namespace
