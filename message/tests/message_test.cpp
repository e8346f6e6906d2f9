// message/tests/message_test.cpp
// Message catalogs: the catalog file, the locked and process-wide maps, FormatString and Message.
#include <vum-qib-osl/message/format_string.h>
#include <vum-qib-osl/message/map_file.h>
#include <vum-qib-osl/message/message.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile, osl::test::writeFile;

std::string u32(std::uint32_t v) { return {char(v & 0xFF), char(v >> 8 & 0xFF), char(v >> 16 & 0xFF), char(v >> 24)}; }
std::string str(const std::string& s) { return u32(static_cast<std::uint32_t>(s.size())) + s; }
const std::string kHeader = str("(map_string*)") + u32(1002);

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
using MapFileTest = MessageTest;

TEST_F(MapFileTest, StoredCatalogHasItsLayoutAndLoadsBackWithAnyBytes) {
    MapFile map;
    map.Insert("b", "second");
    map.Insert("a", "");
    ASSERT_TRUE(map.StoreMap(dir_.file("c.cat")));
    // The header, the count, then key and text pairs in key order.
    EXPECT_EQ(readFile(dir_.file("c.cat")), kHeader + u32(2) + str("a") + str("") + str("b") + str("second"));

    map.Insert("K", "A %1 B %2");
    map.Insert(std::string("\0\xff", 2), std::string(70000, '\n'));
    map.Insert("", "empty key");
    ASSERT_TRUE(map.StoreMap(dir_.file("c.cat")));  // replaces the file
    MapFile loaded;
    loaded.Insert("stale", "x");
    ASSERT_TRUE(loaded.LoadMap(dir_.file("c.cat")));
    EXPECT_EQ(std::vector(loaded.begin(), loaded.end()), std::vector(map.begin(), map.end()));

    // Appending keeps known keys and the first of duplicates.
    writeFile(dir_.file("dup.cat"), kHeader + u32(3) + str("b") + str("1") + str("d") + str("2") + str("d") + str("3"));
    loaded.Insert("b", "mine");
    ASSERT_TRUE(loaded.AppendMap(dir_.file("dup.cat")));
    EXPECT_EQ(loaded["b"], "mine");
    EXPECT_EQ(loaded["d"], "2");
}

TEST_F(MapFileTest, MalformedFilesAreRefusedWithoutChange) {
    const std::string good = kHeader + u32(1) + str("k") + str("v");
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""}, {"truncated header", good.substr(0, 10)}, {"truncated text", good.substr(0, good.size() - 1)},
        {"other class name", str("(map_strinG*)") + u32(1002) + u32(0)},
        {"other class number", str("(map_string*)") + u32(1003) + u32(0)},
        {"count past the end", kHeader + u32(2) + str("k") + str("v")},
        {"huge count", kHeader + u32(0xFFFFFFFF) + str("k") + str("v")},
        {"length past the end", kHeader + u32(1) + str("k") + u32(0xFFFFFFF0) + "v"}, {"trailing bytes", good + "x"},
    };
    for (const auto& [what, bytes] : cases) {
        SCOPED_TRACE(what);
        writeFile(dir_.file("bad.cat"), bytes);
        MapFile map;
        map.Insert("k", "kept");
        EXPECT_FALSE(map.AppendMap(dir_.file("bad.cat")));
        EXPECT_EQ(map["k"], "kept");
        EXPECT_FALSE(map.LoadMap(dir_.file("bad.cat")));
        EXPECT_EQ(map.begin(), map.end());
    }
    MapFile map;
    EXPECT_FALSE(map.LoadMap(dir_.file("missing.cat")));
    EXPECT_FALSE(map.LoadMap(dir_.path().string()));  // a directory
    writeFile(dir_.file("huge.cat"), good);
    std::filesystem::resize_file(dir_.file("huge.cat"), std::uintmax_t{1} << 40);  // sparse: no disk used
    EXPECT_FALSE(map.LoadMap(dir_.file("huge.cat")));
    EXPECT_FALSE(map.StoreMap(dir_.file("no/such/dir.cat")));
}

TEST_F(MapFileTest, UnicodeModeNamesFilesInTheFileSystemEncoding) {
    osl::test::ScopedUnicodeMode mode(true, "Latin1", "Latin1");
    MapFile map;
    map.Insert("k", "v");
    const std::string utf8Name = dir_.file("caf\xC3\xA9.cat");
    ASSERT_TRUE(map.StoreMap(utf8Name));
    EXPECT_TRUE(std::filesystem::is_regular_file(dir_.file("caf\xE9.cat")));  // Latin-1 on disk
    MapFile loaded;
    ASSERT_TRUE(loaded.LoadMap(utf8Name));
    EXPECT_EQ(loaded["k"], "v");
    // A name without Latin-1 form is refused, not shortened to "report_".
    EXPECT_FALSE(map.StoreMap(dir_.file("report_\xE2\x82\xAC")));
    EXPECT_FALSE(std::filesystem::exists(dir_.file("report_")));
}

TEST_F(MapFileTest, InsertReplaceAndLookup) {
    MapFile map;
    EXPECT_FALSE(map.Insert("K", "one"));
    EXPECT_TRUE(map.Insert("K", "two"));
    EXPECT_EQ(map["K"], "two");
    EXPECT_FALSE(map.Replace("K", "three"));
    EXPECT_EQ(map["K"], "three");
    EXPECT_FALSE(map.Replace("new", "x"));
    EXPECT_TRUE(map.HasEntry("new"));
    EXPECT_FALSE(map.HasEntry("k"));  // keys are case-sensitive
    EXPECT_EQ(map["k"], "Message k not found");
    EXPECT_FALSE(map.HasEntry("k"));  // a lookup adds nothing
}

TEST_F(MapFileTest, LockedCatalogServesReadersWhileWritersLoad) {
    MapFile source;
    for (int i = 0; i < 200; ++i) source.Insert("key" + std::to_string(i), "text" + std::to_string(i));
    ASSERT_TRUE(source.StoreMap(dir_.file("c.cat")));
    MTMapFile shared;
    shared.Insert("key0", "text0");
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&] { for (int i = 0; i < 20; ++i) EXPECT_TRUE(shared.LoadMap(dir_.file("c.cat"))); });
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                const std::string text = shared["key199"];
                EXPECT_TRUE(text == "text199" || text == "Message key199 not found") << text;
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(shared["key199"], "text199");
    EXPECT_TRUE(MTMapFile(shared).HasEntry("key42"));
}

TEST(FormatStringTest, FillsPlaceholdersByPosition) {
    FormatString f("A %1 B %2");
    EXPECT_EQ((f << "x" << 5 << "extra").Get(), "A x B 5");  // an argument past the last placeholder is dropped
    EXPECT_EQ((FormatString("%2 then %1 and %1") << std::string("one") << 'c').Get(), "c then one and %1");
    EXPECT_EQ((FormatString("only %2") << "lost" << -7L).Get(), "only -7");
    // The placeholder of the first argument matches the front of %10 when that comes first.
    EXPECT_EQ((FormatString("%10 %1") << "a").Get(), "a0 %1");
    // Arguments go in unchanged: a placeholder inside one is filled by the next argument.
    EXPECT_EQ((FormatString("%1") << "<%2>" << "in").Get(), "<in>");
    f.Assign("again %1");
    EXPECT_EQ((f << static_cast<const char*>(nullptr)).Get(), "again ");
}

TEST(FormatStringTest, CountsPlaceholdersUpToTheFirstGap) {
    const std::pair<const char*, int> cases[] = {
        {"%1 %3", 1}, {"%2", 0}, {"100% %1", 1}, {"%1 %2 %3", 3}, {"%1%1", 1}, {"%", 0}, {"%10", 1}, {"", 0}};
    for (const auto& [text, expected] : cases) EXPECT_EQ(FormatString(text).GetArgumentsNumber(), expected) << text;
}

TEST_F(MessageTest, LooksUpFillsAndPrefersTheFirstCatalog) {
    Message message(store("a.cat", {{"M1", "A %1 B %2"}, {"M2", "%1 (code %2, severity %3, at %4)"}}));
    EXPECT_EQ((message["M1"] << "x" << 5).Text(), "M1 A x B 5");
    EXPECT_TRUE(message.Append(store("second.cat", {{"M1", "second"}, {"M3", "only second"}})));
    message.PrintCode(false);
    EXPECT_EQ(static_cast<std::string&>(message["M1"] << "x" << 5), "A x B 5");
    EXPECT_EQ(message["M3"].Text(), "only second");
    EXPECT_EQ(message["M1-missing"].Text(), "Message M1-missing not found");
    EXPECT_EQ(message.GetArgumentsNumber("M1"), 2);
    EXPECT_EQ(message.GetArgumentsNumber("M1-missing"), 0);
    message["M2"] << QIBError("disk full", 28, 8, "file/src/osl_file", 12);  // an error fills four
    EXPECT_EQ(message.Text(), "disk full (code 28, severity 8, at file/src/osl_file 12)");
    EXPECT_TRUE(Message().HasEntry("M3"));  // another message sees the same catalog
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
