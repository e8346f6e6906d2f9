// tools/qibosl/tests/catalog_text_test.cpp
#include "tools/qibosl/catalog_text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace qibosl {
namespace {

using Entries = std::map<std::string, std::string>;

TEST(CatalogTextTest, ParsesEntriesCommentsAndEscapes) {
    const Entries entries = parseCatalogSource(
        "\xEF\xBB\xBF# comment\n"
        "\n"
        "  \t\n"
        "plain=A %1 B %2\r\n"
        "spaced = kept as is \n"
        "esc=line\\nbreak\\ttab\\\\ \\x00\\xfF\\r\\=\\#\n"
        "a\\=b\\#=x=y\n"
        "\\#hash=\n"
        "=empty key\n"
        "utf8=\xC3\xA9t\xC3\xA9\tliteral tab");
    const Entries expected = {
        {"plain", "A %1 B %2"},
        {"spaced ", " kept as is "},
        {"esc", std::string("line\nbreak\ttab\\ \0\xff\r=#", 21)},
        {"a=b#", "x=y"},
        {"#hash", ""},
        {"", "empty key"},
        {"utf8", "\xC3\xA9t\xC3\xA9\tliteral tab"},
    };
    EXPECT_EQ(entries, expected);
}

TEST(CatalogTextTest, ErrorsNameTheLine) {
    struct Case { const char* source; const char* error; };
    const Case cases[] = {
        {"ok=1\nno separator\n", "2: no '=' between key and text"},
        {"k=\\q", "1: unknown escape \\q"},
        {"k=\\x4", "1: \\x needs two hexadecimal digits"},
        {"k=\\xg0", "1: \\x needs two hexadecimal digits"},
        {"k=trailing\\", "1: a backslash ends the line (write \\\\)"},
        {"#c\nk=\xC3(", "2: not UTF-8 (write other bytes as \\xHH)"},
        {"k=\xED\xA0\x80", "1: not UTF-8 (write other bytes as \\xHH)"},  // a surrogate
        {"k=1\n\nk=2\n", "3: key 'k' already defined on line 1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.source);
        EXPECT_THAT([&] { parseCatalogSource(c.source); }, ::testing::ThrowsMessage<SourceError>(c.error));
    }
}

TEST(CatalogTextTest, EveryEntryComesBackFromItsLine) {
    std::string allBytes;
    for (int b = 0; b < 256; ++b) allBytes += static_cast<char>(b);
    const Entries entries = {
        {allBytes, allBytes},
        {"#lead", "#not a comment in a text"},
        {" ", ""},
        {"", " "},
        {"x=\\", "\\x41"},
        {"\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA9\xC0\xAF"},  // valid UTF-8 and an overlong form
    };
    std::string source;
    for (const auto& [key, text] : entries) source += formatCatalogEntry(key, text) + "\n";
    EXPECT_EQ(parseCatalogSource(source), entries);
    EXPECT_EQ(formatCatalogEntry("a\tb", "\xC3\xA9\x01\x7F"), "a\\tb=\xC3\xA9\\x01\\x7F");
}

}  // namespace
}  // namespace qibosl
