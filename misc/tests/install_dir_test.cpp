// misc/tests/install_dir_test.cpp
#include <vum-qib-osl/misc/install_dir.h>

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "misc/src/install_root.h"

namespace {

class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        const char* old = getenv(name);
        if (old != nullptr) old_ = old;
        had_ = old != nullptr;
        if (value != nullptr) {
            setenv(name, value, 1);
        } else {
            unsetenv(name);
        }
    }
    ~ScopedEnv() {
        if (had_) {
            setenv(name_, old_.c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }

private:
    const char* name_;
    std::string old_;
    bool had_ = false;
};

TEST(GetBinDirTest, ReadsTheVariableAtEveryCall) {
    {
        ScopedEnv env("DECOLLATOR_DIR", "/opt/decollator");
        EXPECT_EQ(GetBinDir(), "/opt/decollator");
        setenv("DECOLLATOR_DIR", "/srv/other", 1);
        EXPECT_EQ(GetBinDir(), "/srv/other");
    }
    ScopedEnv unset("DECOLLATOR_DIR", nullptr);
    EXPECT_EQ(GetBinDir(), "");
}

TEST(SetDecollatorDirTest, WithoutARegistryTheKeyCannotBeOpened) {
    ScopedEnv env("DECOLLATOR_DIR", "/from/environment");
    EXPECT_EQ(SetDECOLLATOR_DIRFromRegesistry(), -1);
    EXPECT_EQ(GetBinDir(), "/from/environment");
}

TEST(BGetTempPathTest, GivesTmpdirWithAFinalSlashElseTmp) {
    std::string path;
    {
        ScopedEnv env("TMPDIR", "/var/tmp/osl");
        EXPECT_TRUE(bGetTempPath(path));
        EXPECT_EQ(path, "/var/tmp/osl/");
    }
    {
        ScopedEnv env("TMPDIR", "");
        EXPECT_TRUE(bGetTempPath(path));
        EXPECT_EQ(path, "/tmp/");
    }
    ScopedEnv env("TMPDIR", nullptr);
    EXPECT_TRUE(bGetTempPath(path));
    EXPECT_EQ(path, "/tmp/");
}

TEST(InstallationRootTest, CutAtTheLastBinElseTheParentOfTheModuleDirectory) {
    struct Case {
        const char* modulePath;
        const char* root;
    };
    const Case cases[] = {
        {"/opt/app/bin/libvum-qib-osl.so", "/opt/app/"},
        {"/opt/bin/app/bin/libvum-qib-osl.so.0", "/opt/bin/app/"},
        {"/opt/app/lib/libvum-qib-osl.so", "/opt/app/"},
        {"/usr/lib/x86_64-linux-gnu/libvum-qib-osl.so.0", "/usr/lib/"},
        {"/srv/robin/lib/libvum-qib-osl.so", "/srv/ro"},  // the cut is by text
        {"/lib/libvum-qib-osl.so", "/"},
        {"/libvum-qib-osl.so", "/"},
        {"lib/libvum-qib-osl.so", "./"},
        {"libvum-qib-osl.so", "../"},
        {"", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.modulePath);
        EXPECT_EQ(osl::detail::installationRootFromModulePath(c.modulePath), c.root);
    }
}

TEST(InstallationRootTest, TheModulePathIsTheFileHoldingTheLibrary) {
    // Linked statically here, so the module is this test program.
    const std::string path = osl::detail::libraryModulePath();
    ASSERT_FALSE(path.empty());
    EXPECT_TRUE(std::filesystem::equivalent(path, "/proc/self/exe")) << path;
    EXPECT_EQ(osl::detail::installationRoot(), osl::detail::installationRootFromModulePath(path));
}

}  // namespace
