// file/tests/unicode_signature_test.cpp
#include <vum-qib-osl/file/unicode_signature.h>

#include <vum-qib-osl/file/osl_fstream.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <sstream>

#include "tests/support/scoped_unicode_mode.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::test::readFile;
using osl::test::TempDir;

TEST(SignatureTest, DetectionOnRealFilesThroughBothForms) {
    struct Case {
        const char* trace;
        std::string bytes;
        int fileKind, streamKind;  // Osl_FILE_SkipSignature, Osl_Ifstream_SkipSignature
        int nextByte;              // read after the FILE* skip; EOF at the end
        bool streamFailed;
    };
    const Case cases[] = {
        {"UTF-8 then text", "\xEF\xBB\xBF" "A", 1, 1, 'A', false},
        {"UTF-8 signature alone", "\xEF\xBB\xBF", 1, 1, EOF, false},
        {"UTF-16LE", std::string("\xFF\xFE" "A\0", 4), 2, 2, 'A', false},
        {"UTF-16BE, three bytes", "\xFE\xFF\xFE", 3, 3, 0xFE, false},
        {"incomplete UTF-8 signature", "\xEF\xBB" "A", 0, 0, 0xEF, false},
        {"no signature", "plain text", 0, 0, 'p', false},
        {"UTF-16LE signature alone: the deliberate difference", "\xFF\xFE", 2, 0, EOF, true},
        {"one byte", "\xFF", 0, 0, 0xFF, true},
        {"empty file", "", 0, 0, EOF, true},
    };
    TempDir dir;
    const std::string path = dir.file("f.txt");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.trace);
        osl::test::writeFile(path, c.bytes);
        FILE* file = std::fopen(path.c_str(), "rb");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(Osl_FILE_SkipSignature(file), c.fileKind);
        EXPECT_EQ(std::fgetc(file), c.nextByte);
        std::fclose(file);

        std::ifstream in(path, std::ios::binary);
        EXPECT_EQ(Osl_Ifstream_SkipSignature(in), c.streamKind);
        EXPECT_EQ(in.fail(), c.streamFailed);
        if (!c.streamFailed) { EXPECT_EQ(in.get(), c.nextByte); }
    }
}

TEST(SignatureTest, DetectionStartsAtTheCurrentPosition) {
    TempDir dir;
    osl::test::writeFile(dir.file("f"), "xy\xEF\xBB\xBFz");
    FILE* file = std::fopen(dir.file("f").c_str(), "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Osl_FILE_SkipSignature(file), 0);  // at "xy"
    EXPECT_EQ(std::ftell(file), 0);
    std::fseek(file, 2, SEEK_SET);
    EXPECT_EQ(Osl_FILE_SkipSignature(file), 1);
    EXPECT_EQ(std::fgetc(file), 'z');
    std::fclose(file);

    std::istringstream in("xy\xFE\xFFz");
    in.seekg(2);
    EXPECT_EQ(Osl_Ifstream_SkipSignature(in), 3);
    EXPECT_EQ(in.get(), 'z');
}

TEST(SignatureTest, AnUnseekableFileLosesNoBytes) {
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    ASSERT_EQ(write(fds[1], "\xEF\xBB\xBF" "A", 4), 4);
    close(fds[1]);
    FILE* file = fdopen(fds[0], "rb");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Osl_FILE_SkipSignature(file), 0);
    EXPECT_EQ(std::fgetc(file), 0xEF);
    std::fclose(file);
}

// Osl_Fopen and the streams name files alike.
TEST(FileNameTest, FileNamesByModeAndFileSystemEncodingAndFailures) {
    TempDir dir;
    const std::string utf8Name = dir.file("caf\xC3\xA9.txt"), latin1Name = dir.file("caf\xE9.txt");
    struct Case { bool unicode; const char* fsEncoding; std::string given, created; };
    const Case cases[] = {
        {false, "UTF-8", latin1Name, latin1Name},  // legacy: bytes unchanged
        {false, "Latin1", utf8Name, utf8Name},     // legacy ignores the file-system encoding
        {true, "UTF-8", utf8Name, utf8Name},
        {true, "Latin1", utf8Name, latin1Name},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.unicode ? "Unicode, " : "legacy, ") + c.fsEncoding);
        osl::test::ScopedUnicodeMode mode(c.unicode, "MS1252", c.fsEncoding);
        FILE* file = Osl_Fopen(c.given.c_str(), "wb");
        ASSERT_NE(file, nullptr);
        std::fputs("x", file);
        std::fclose(file);
        EXPECT_EQ(readFile(c.created), "x");
        Osl_Ofstream(c.given) << "y";
        EXPECT_EQ(readFile(c.created), "y");
        std::string word;
        Osl_Ifstream(c.given) >> word;
        EXPECT_EQ(word, "y");
        std::remove(c.created.c_str());
    }
    errno = 0;
    EXPECT_EQ(Osl_Fopen(dir.file("missing").c_str(), "rb"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    errno = 0;
    EXPECT_EQ(Osl_Fopen(nullptr, "rb"), nullptr);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(Osl_Fopen(dir.file("x").c_str(), nullptr), nullptr);
}

}  // namespace
