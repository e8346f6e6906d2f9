// misc/tests/install_dir_test.cpp
#include <vum-qib-osl/misc/install_dir.h>

#include <vum-qib-osl/misc/dloadlib.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "misc/src/install_root.h"
#include "platform/dynamic_library.h"

namespace {

// Each test runs in a process of its own under ctest: the variables need not be put back.
TEST(InstallDirTest, BinDirIsReadAtEveryCallAndNoRegistryChangesIt) {
    setenv("DECOLLATOR_DIR", "/opt/decollator", 1);
    EXPECT_EQ(GetBinDir(), "/opt/decollator");
    setenv("DECOLLATOR_DIR", "/srv/other", 1);
    EXPECT_EQ(SetDECOLLATOR_DIRFromRegesistry(), -1);
    EXPECT_EQ(GetBinDir(), "/srv/other");
    unsetenv("DECOLLATOR_DIR");
    EXPECT_EQ(GetBinDir(), "");
}

TEST(InstallDirTest, TempPathIsTmpdirWithAFinalSlashElseTmp) {
    const std::pair<const char*, const char*> cases[] = {
        {"/var/tmp/osl", "/var/tmp/osl/"}, {"/var/tmp/", "/var/tmp/"}, {"", "/tmp/"}, {nullptr, "/tmp/"}};
    for (const auto& [tmpdir, expected] : cases) {
        SCOPED_TRACE(tmpdir != nullptr ? tmpdir : "unset");
        tmpdir != nullptr ? setenv("TMPDIR", tmpdir, 1) : unsetenv("TMPDIR");
        std::string path;
        EXPECT_TRUE(bGetTempPath(path));
        EXPECT_EQ(path, expected);
    }
}

TEST(InstallationRootTest, CutAtTheLastBinElseTheParentOfTheModuleDirectory) {
    const std::pair<const char*, const char*> cases[] = {
        {"/opt/app/bin/libvum-qib-osl.so", "/opt/app/"},
        {"/opt/bin/app/bin/libvum-qib-osl.so.0", "/opt/bin/app/"},
        {"/srv/robin/lib/libvum-qib-osl.so", "/srv/ro"},  // the cut is by text
        {"/lib/libvum-qib-osl.so", "/"},
        {"lib/libvum-qib-osl.so", "./"}, {"libvum-qib-osl.so", "../"}, {"", ""},
    };
    for (const auto& [modulePath, root] : cases)
        EXPECT_EQ(osl::detail::installationRootFromModulePath(modulePath), root) << modulePath;
}

TEST(InstallationRootTest, TheModulePathIsTheFileHoldingTheLibrary) {
    // Linked statically here, so the module is this test program.
    const std::string path = osl::detail::libraryModulePath();
    EXPECT_TRUE(std::filesystem::equivalent(path, "/proc/self/exe")) << path;

    // Code in a shared library is found in the library's file, not the program's.
    OslLoadlibrary plugin;
    plugin.loadLibrary(OSL_TEST_PLUGIN_PATH);
    EXPECT_EQ(osl::platform::modulePathOf(plugin.getProcAddress("osl_test_plugin_answer")),
              OSL_TEST_PLUGIN_PATH);
}

}  // namespace
