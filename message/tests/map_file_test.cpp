// message/tests/map_file_test.cpp
#include <vum-qib-osl/message/map_file.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "message/src/catalog_format.h"
#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;
using osl::test::writeFile;

std::string u32(std::uint32_t v) {
    return {static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF), static_cast<char>((v >> 16) & 0xFF),
            static_cast<char>(v >> 24)};
}
std::string str(const std::string& s) { return u32(static_cast<std::uint32_t>(s.size())) + s; }
const std::string kHeader = str("(map_string*)") + u32(1002);

class MapFileTest : public ::testing::Test {
protected:
    osl::test::TempDir dir_;
};

TEST_F(MapFileTest, FileLayoutIsHeaderCountThenKeyTextPairsInKeyOrder) {
    MapFile map;
    map.Insert("b", "second");
    map.Insert("a", "");
    ASSERT_TRUE(map.StoreMap(dir_.file("c.cat")));
    EXPECT_EQ(readFile(dir_.file("c.cat")), kHeader + u32(2) + str("a") + str("") + str("b") + str("second"));
}

TEST_F(MapFileTest, StoredCatalogLoadsBackWithAnyBytes) {
    MapFile map;
    map.Insert("K", "A %1 B %2");
    map.Insert(std::string("\0\xff", 2), std::string(70000, '\n'));
    map.Insert("", "empty key");
    ASSERT_TRUE(map.StoreMap(dir_.file("c.cat")));
    MapFile loaded;
    loaded.Insert("stale", "x");
    ASSERT_TRUE(loaded.LoadMap(dir_.file("c.cat")));
    EXPECT_EQ(std::vector(loaded.begin(), loaded.end()), std::vector(map.begin(), map.end()));
}

TEST_F(MapFileTest, MalformedFilesAreRefusedWithoutChange) {
    const std::string good = kHeader + u32(1) + str("k") + str("v");
    struct Case {
        const char* what;
        std::string bytes;
    };
    const Case cases[] = {
        {"empty", ""},
        {"truncated header", good.substr(0, 10)},
        {"truncated text", good.substr(0, good.size() - 1)},
        {"other class name", str("(map_strinG*)") + u32(1002) + u32(0)},
        {"other class number", str("(map_string*)") + u32(1003) + u32(0)},
        {"count past the end", kHeader + u32(2) + str("k") + str("v")},
        {"huge count", kHeader + u32(0xFFFFFFFF) + str("k") + str("v")},
        {"length past the end", kHeader + u32(1) + str("k") + u32(0xFFFFFFF0) + "v"},
        {"trailing bytes", good + "x"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        writeFile(dir_.file("bad.cat"), c.bytes);
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

TEST_F(MapFileTest, AppendKeepsKnownKeysAndFirstOfDuplicates) {
    writeFile(dir_.file("dup.cat"), kHeader + u32(3) + str("a") + str("1") + str("a") + str("2") + str("b") + str("3"));
    MapFile map;
    map.Insert("b", "mine");
    ASSERT_TRUE(map.AppendMap(dir_.file("dup.cat")));
    EXPECT_EQ(map["a"], "1");
    EXPECT_EQ(map["b"], "mine");
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
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i) EXPECT_TRUE(shared.LoadMap(dir_.file("c.cat")));
        });
        threads.emplace_back([&] {
            for (int i = 0; i < 500; ++i) {
                const std::string text = shared["key199"];
                EXPECT_TRUE(text == "text199" || text == "Message key199 not found") << text;
            }
        });
    }
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(shared["key199"], "text199");
    MTMapFile copy(shared);
    EXPECT_TRUE(copy.HasEntry("key42"));
}

TEST(SingleMapFileMTTest, OneInstanceForAllThreads) {
    SingleMapFileMT* seen[4] = {};
    std::vector<std::thread> threads;
    for (auto& s : seen) threads.emplace_back([&s] { s = SingleMapFileMT::Instance(); });
    for (std::thread& t : threads) t.join();
    for (auto* s : seen) EXPECT_EQ(s, SingleMapFileMT::Instance());
}

}  // namespace
