// file/tests/osl_fstream_test.cpp
#include <vum-qib-osl/file/osl_fstream.h>

#include <vum-qib-osl/file/unicode_signature.h>

#include <vum-qib-osl/strings/unicode_configuration.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;

class OslFstreamTest : public ::testing::Test {
protected:
    void TearDown() override {
        Osl_UnicodeConfiguration::SetUnicodeMode(false);
        Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(savedFsEncoding_);
    }
    osl::test::TempDir dir_;
    std::string savedFsEncoding_ = Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding();
};

TEST_F(OslFstreamTest, OpenFormsAndModes) {
    const std::string path = dir_.file("a.txt");
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
}

TEST_F(OslFstreamTest, TheOutputStreamIsFlushedOnDestruction) {
    const std::string path = dir_.file("d.txt");
    auto out = std::make_unique<Osl_Ofstream>(path.c_str(), std::ios::binary);
    *out << "kept";
    EXPECT_EQ(readFile(path), "");
    out.reset();
    EXPECT_EQ(readFile(path), "kept");
}

TEST_F(OslFstreamTest, TwoWritersHoldTheSameFileAtOnce) {
    const std::string path = dir_.file("shared.log");
    Osl_Ofstream first(path, std::ios::app);  // nothing is locked against the second
    Osl_Ofstream second(path, std::ios::app);
    ASSERT_TRUE(first.is_open());
    ASSERT_TRUE(second.is_open());
    first << "first\n" << std::flush;
    second << "second\n" << std::flush;
    Osl_Ifstream reader(path);
    ASSERT_TRUE(reader.is_open());
    EXPECT_EQ(readFile(path), "first\nsecond\n");
}

TEST_F(OslFstreamTest, FailuresShowInTheStreamState) {
    Osl_Ifstream missing(dir_.file("missing.txt"));
    EXPECT_TRUE(missing.fail());
    Osl_Ifstream null(static_cast<const char*>(nullptr));
    EXPECT_TRUE(null.fail());
    Osl_Ofstream noDirectory(dir_.file("no/such/dir.txt"));
    EXPECT_TRUE(noDirectory.fail());
    Osl_Fstream nullToo;
    nullToo.open(static_cast<const char*>(nullptr), std::ios::in);
    EXPECT_TRUE(nullToo.fail());
}

TEST_F(OslFstreamTest, UnicodeNamesGoToTheFileSystemEncoding) {
    const std::string utf8Name = dir_.file("r\xC3\xA9sum\xC3\xA9.txt");
    const std::string latin1Name = dir_.file("r\xE9sum\xE9.txt");
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding("Latin1");
    {
        Osl_Ofstream out(utf8Name);
        out << "latin";
    }
    EXPECT_EQ(readFile(latin1Name), "latin");
    Osl_Ifstream in(utf8Name);
    std::string word;
    in >> word;
    EXPECT_EQ(word, "latin");

    Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding("UTF-8");
    {
        Osl_Ofstream out(utf8Name);
        out << "utf8";
    }
    EXPECT_EQ(readFile(utf8Name), "utf8");
}

}  // namespace
