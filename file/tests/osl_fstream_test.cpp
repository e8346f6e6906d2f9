// file/tests/osl_fstream_test.cpp
#include <vum-qib-osl/file/osl_fstream.h>

#include <vum-qib-osl/file/unicode_signature.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;

TEST(OslFstreamTest, OpenFormsModesAndFailures) {
    osl::test::TempDir dir;
    const std::string path = dir.file("a.txt");
    {
        Osl_Ofstream out(path, std::ios::binary);  // out is added: the file is created
        out << UTF8_Header << "line";
    }
    Osl_Ifstream byChars(path.c_str(), std::ios::binary);
    std::string word;
    EXPECT_EQ(byChars.SkipSignature(), 1);
    byChars >> word;
    EXPECT_EQ(word, "line");
    Osl_Ifstream byPath;
    byPath.open(std::filesystem::path(path), std::ios::binary);
    EXPECT_TRUE(byPath.is_open());

    Osl_Fstream both(path, std::ios::in | std::ios::out | std::ios::binary);
    EXPECT_EQ(both.SkipSignature(), 1);
    both << "LINE";
    both.close();
    EXPECT_EQ(readFile(path), "\xEF\xBB\xBF" "LINE");

    Osl_Fstream readOnly(path, std::ios::in);  // the caller's mode exactly: no writing
    readOnly << "x";
    EXPECT_TRUE(readOnly.fail());
    EXPECT_EQ(readFile(path), "\xEF\xBB\xBF" "LINE");

    EXPECT_TRUE(Osl_Ifstream(static_cast<const char*>(nullptr)).fail());
}

TEST(OslFstreamTest, TwoWritersHoldTheSameFileAndFlushOnDestruction) {
    osl::test::TempDir dir;
    const std::string path = dir.file("shared.log");
    Osl_Ofstream first(path, std::ios::app);  // nothing is locked against the second
    auto second = std::make_unique<Osl_Ofstream>(path, std::ios::app);
    ASSERT_TRUE(first.is_open());
    ASSERT_TRUE(second->is_open());
    first << "first\n" << std::flush;
    *second << "second\n";
    EXPECT_EQ(readFile(path), "first\n");
    second.reset();
    EXPECT_EQ(readFile(path), "first\nsecond\n");
}

}  // namespace
