// ini/tests/ini_real_files_test.cpp
// Files in INI syntax that other people wrote: copies from Debian packages (tests/data/README).
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <string>

#include "tests/support/temp_dir.h"

namespace {

std::string data(const std::string& name) { return std::string(OSL_TEST_DATA_DIR) + "/" + name; }

// Flushes the table, reads it back and flushes again: the tables and both texts must agree.
void expectRoundTrip(const Ini& original, const osl::test::TempDir& dir) {
    const std::string first = dir.file("first.ini");
    const std::string second = dir.file("second.ini");
    Ini writable(original);
    writable.LoadAdd("", false);  // keeps the table, makes it writable
    writable.FlushIniDataToFile(first);
    Ini back(first, false);
    back.FlushIniDataToFile(second);
    EXPECT_EQ(osl::test::readFile(first), osl::test::readFile(second));
    IniGroupIterator a = original.begin();
    IniGroupIterator b = back.begin();
    for (; a != original.end() && b != back.end(); ++a, ++b) {
        EXPECT_EQ((*a).name, (*b).name);
        EXPECT_EQ(*(*a).properties, *(*b).properties) << (*a).name;
    }
    EXPECT_TRUE(a == original.end() && b == back.end());
}

TEST(IniRealFilesTest, PackagedFiles) {
    osl::test::TempDir dir;
    const Ini desktop(data("xdg-user-dirs.desktop"));
    EXPECT_EQ(desktop.GetKeyValue("desktop entry", "Exec", "", false), "xdg-user-dirs-update");
    EXPECT_EQ(desktop.GetKeyValue("Desktop Entry", "X-KDE-autostart-phase", "", false), "1");
    expectRoundTrip(desktop, dir);

    const Ini unit(data("snmpd.service"));
    EXPECT_EQ(unit.GetKeyValue("Service", "ExecStart", "", false),
              "/usr/sbin/snmpd -LOw -u Debian-snmp -g Debian-snmp -I -smux,mteTrigger,mteTriggerConf -f");
    EXPECT_EQ(unit.GetKeyValue("Service", "ExecReload", "", false), "/bin/kill -HUP $MAINPID");
    EXPECT_EQ(unit.GetKeyValue("Install", "WantedBy", "", false), "multi-user.target");
    expectRoundTrip(unit, dir);

    // Only comments under its group, and no line feed at the end.
    const Ini options(data("wcetemu.ini"));
    ASSERT_NE(options.GetGroupProperty("Options"), nullptr);
    EXPECT_TRUE(options.GetGroupProperty("Options")->empty());

    Ini hashComments;
    try {
        hashComments.Load(data("PackageKit.conf"), true);
        FAIL() << "'#' comments were accepted";
    } catch (const QIBError& e) {
        EXPECT_EQ(e.Code(), 7);
        EXPECT_EQ(hashComments.GetErrorLine(), 1);
    }
}

}  // namespace
