// message/tests/message_test.cpp
#include <vum-qib-osl/message/message.h>

#include <vum-qib-osl/message/map_file.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/temp_dir.h"

namespace {

// Every test of this binary shares the process-wide catalog, so each uses keys of its own.
class MessageTest : public ::testing::Test {
protected:
    std::string store(const std::string& name, const MapFile::Entries& entries) {
        MapFile map;
        for (const auto& [key, text] : entries) map.Insert(key, text);
        EXPECT_TRUE(map.StoreMap(dir_.file(name)));
        return dir_.file(name);
    }
    void TearDown() override { unsetenv("MESSAGE_PATH"); }
    osl::test::TempDir dir_;
};

TEST_F(MessageTest, LooksUpAndFillsWithOrWithoutCode) {
    Message message(store("a.cat", {{"M1", "A %1 B %2"}}));
    EXPECT_EQ((message["M1"] << "x" << 5).Text(), "M1 A x B 5");
    message.PrintCode(false);
    EXPECT_EQ(static_cast<std::string&>(message["M1"] << "x" << 5), "A x B 5");
    EXPECT_EQ(message["M1-missing"].Text(), "Message M1-missing not found");
    EXPECT_EQ(message.GetArgumentsNumber("M1"), 2);
    EXPECT_EQ(message.GetArgumentsNumber("M1-missing"), 0);
}

TEST_F(MessageTest, ErrorFillsFourPlaceholders) {
    Message message(store("e.cat", {{"M2", "%1 (code %2, severity %3, at %4)"}}));
    message.PrintCode(false);
    message["M2"] << QIBError("disk full", 28, 8, "file/src/osl_file", 12);
    EXPECT_EQ(message.Text(), "disk full (code 28, severity 8, at file/src/osl_file 12)");
}

TEST_F(MessageTest, FirstCatalogWins) {
    Message message(store("first.cat", {{"M3", "first"}}));
    EXPECT_TRUE(message.Append(store("second.cat", {{"M3", "second"}, {"M3b", "only second"}})));
    message.PrintCode(false);
    EXPECT_EQ(message["M3"].Text(), "first");
    EXPECT_EQ(message["M3b"].Text(), "only second");
    EXPECT_TRUE(Message().HasEntry("M3b"));  // another message sees the same catalog
}

TEST_F(MessageTest, MessagePathIsTheCatalogDirectory) {
    std::filesystem::create_directory(dir_.file("sub"));
    store("sub/p.cat", {{"M4", "found in the path"}});
    setenv("MESSAGE_PATH", dir_.file("sub").c_str(), 1);
    Message message;
    EXPECT_TRUE(message.Append("p.cat"));
    EXPECT_TRUE(message.HasEntry("M4"));
    EXPECT_FALSE(message.Append(dir_.file("sub/p.cat")));  // the path is always prefixed
    unsetenv("MESSAGE_PATH");
    EXPECT_FALSE(message.Append("p.cat"));
    EXPECT_TRUE(message.Append(""));
}

TEST_F(MessageTest, UnreadableCatalogIsReportedOnStandardError) {
    ::testing::internal::CaptureStderr();
    Message message(dir_.file("missing.cat"));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Message file " + dir_.file("missing.cat") + " is invalid\n");
}

}  // namespace
