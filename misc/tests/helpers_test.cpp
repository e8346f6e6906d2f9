// misc/tests/helpers_test.cpp
#include <vum-qib-osl/misc/helpers.h>

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <set>

#include "tests/support/temp_dir.h"

namespace {

TEST(HelpersTest, TextAndPathHelpers) {
    const struct { std::string got, expected; } cases[] = {
        {GetDirName("/a/b/c.txt"), "/a/b"}, {GetDirName("c.txt"), "."}, {GetDirName("/c"), "/"},
        {GetDirName("a//b//"), "a"},        {GetDirName("///"), "/"},   {GetDirName(""), "."},
        {ItoA(255, 16), "ff"},              {ItoA(-10), "-10"},         {ItoA(LONG_MIN, 10), std::to_string(LONG_MIN)},
        {ItoA(5, 1), ""},                   {trimBlanks("\t a b \t"), "a b"}, {trimBlanks(" \t "), ""},
        {GetLogFilePath("/var/log/x.log"), "/var/log/x.log"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.got, c.expected);
    EXPECT_EQ(tokenize(" a, b,,c ", ","), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(tokenize("  one\ttwo  "), (std::vector<std::string>{"one", "two"}));
    std::string value = "unchanged";
    EXPECT_FALSE(GetKeyword("path: x", "path", value));
    EXPECT_FALSE(GetKeyword("paths = x", "path", value));
    EXPECT_EQ(value, "unchanged");
    EXPECT_TRUE(GetKeyword("  Path = /a=b ", "PATH", value));
    EXPECT_EQ(value, "/a=b");
    std::set<int> seen;
    for (int i = 0; i < 1000; ++i) seen.insert(RandomNumber(7, 3));
    EXPECT_EQ(seen, (std::set<int>{3, 4, 5, 6, 7}));
}

TEST(HelpersTest, FileHelpersCopyMoveAndName) {
    osl::test::TempDir dir;
    osl::test::writeFile(dir.file("a"), "content");
    EXPECT_TRUE(bCopyFile(dir.file("a"), dir.file("b")));
    EXPECT_FALSE(bCopyFile(dir.file("missing"), dir.file("c")));
    EXPECT_TRUE(MoveFileA(dir.file("b"), dir.file("c")));
    EXPECT_FALSE(std::filesystem::exists(dir.file("b")));
    EXPECT_TRUE(IsDir(dir.path().string()));
    EXPECT_FALSE(IsDir(dir.file("c")));
    // Across file systems when /dev/shm is another one: copy and remove.
    struct stat here {}, shm {};
    if (::stat(dir.path().c_str(), &here) == 0 && ::stat("/dev/shm", &shm) == 0 && here.st_dev != shm.st_dev) {
        const std::string away = "/dev/shm/osl-helpers-" + std::to_string(::getpid());
        EXPECT_TRUE(MoveFileA(dir.file("c"), away));
        EXPECT_EQ(osl::test::readFile(away), "content");
        EXPECT_FALSE(std::filesystem::exists(dir.file("c")));
        std::filesystem::remove(away);
    }
    const passwd* user = ::getpwuid(::geteuid());
    ASSERT_NE(user, nullptr);
    EXPECT_EQ(GetUserNameA(), user->pw_name);
}

}  // namespace
