// strings/tests/unicode_converter_test.cpp
#include <vum-qib-osl/strings/unicode_converter.h>

#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/strings/unicode_configuration.h>

#include "platform/icu_text.h"
#include "tests/support/scoped_unicode_mode.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <string>
#include <tuple>
#include <vector>

namespace {

// glibc's iconv, the reference for the EBCDIC code pages.
std::string iconvConvert(const char* to, const char* from, const std::string& in) {
    iconv_t cd = iconv_open(to, from);
    if (cd == reinterpret_cast<iconv_t>(-1)) return "<no iconv " + std::string(from) + ">";
    std::string out(in.size() * 4 + 16, '\0');
    char *src = const_cast<char*>(in.data()), *dst = out.data();
    size_t srcLeft = in.size(), dstLeft = out.size();
    const bool ok = iconv(cd, &src, &srcLeft, &dst, &dstLeft) != static_cast<size_t>(-1) &&
                    iconv(cd, nullptr, nullptr, &dst, &dstLeft) != static_cast<size_t>(-1);
    iconv_close(cd);
    return ok ? out.substr(0, out.size() - dstLeft) : "<iconv failed>";
}

std::vector<std::string> logLines;

}  // namespace

TEST(UnicodeConverterTest, Utf8AndUcs2RoundTripIncludingLoneSurrogates) {
    const std::u16string texts[] = {u"", u"plain ascii text", u"a\u00E9\u20AC", u"\u65E5\u672C\u8A9E",
                                    u"x\U0001F600y", std::u16string(u"a\xD800" u"b"), std::u16string(u"\xDC00")};
    for (const auto& text : texts) {
        SCOPED_TRACE(text.size());
        Osl_UnicodeConverter converter;
        std::string utf8;
        EXPECT_EQ(converter.ConvertUCS2toUTF8(text, utf8), ConversionOK);
        EXPECT_EQ(converter.GetHandledLength(), static_cast<int>(text.size()));
        std::u16string back;
        EXPECT_EQ(converter.ConvertUTF8toUCS2(utf8, back), ConversionOK);
        EXPECT_EQ(back, text);
    }
    std::string utf8;
    Osl_UnicodeConverter().ConvertUCS2toUTF8(u"\u00E9\u20AC\U0001F600", utf8);
    EXPECT_EQ(utf8, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(UnicodeConverterTest, Utf8AndUcs2ReportCutIllegalAndFullDestination) {
    const struct { std::string in; size_t capacity; ConversionRC rc; int handled; size_t written; } cases[] = {
        {"a\xE2\x82", 10, ConversionSourceCut, 1, 1},      // cut 3-byte character
        {"a\x80z", 10, ConversionIllegal, 1, 1},            // stray continuation byte
        {"\xC0\x80", 10, ConversionIllegal, 0, 0},          // overlong
        {"\xE2\x41\x41", 10, ConversionIllegal, 0, 0},      // lead without continuation
        {"\xF8\x88\x80\x80\x80", 10, ConversionIllegal, 0, 0},
        {"\xF4\x90\x80\x80", 10, ConversionIllegal, 0, 0},  // above U+10FFFF
        {"abcdefghij", 4, ConversionNoSpace, 4, 4},
        {"a\xF0\x9F\x98\x80", 2, ConversionNoSpace, 1, 1},  // a pair does not fit in one unit
        {"", 0, ConversionOK, 0, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.in));
        Osl_UnicodeConverter converter;
        std::vector<char16_t> out(c.capacity + 1);
        size_t len = c.capacity;
        EXPECT_EQ(converter.ConvertUTF8toUCS2(c.in.data(), c.in.size(), out.data(), len), c.rc);
        EXPECT_EQ(converter.GetHandledLength(), c.handled);
        EXPECT_EQ(len, c.written);
    }
    const char16_t text[] = {u'a', 0x20AC, 0xD83D};  // the other way: stops before a half pair
    for (auto [n, capacity, rc] : {std::tuple{size_t{3}, size_t{16}, ConversionSourceCut},
                                   std::tuple{size_t{2}, size_t{3}, ConversionNoSpace}}) {
        Osl_UnicodeConverter converter;
        char out[16];
        size_t len = capacity;
        EXPECT_EQ(converter.ConvertUCS2toUTF8(text, n, out, len), rc);
        EXPECT_EQ(converter.GetHandledLength(), static_cast<int>(n) - 1);
        EXPECT_EQ(len, n == 3 ? 4u : 1u);
    }
}

// The single-byte tables must give exactly what ICU gives for every byte and every BMP code point.
TEST(UnicodeConverterTest, SingleByteTablesAgreeWithIcuEverywhere) {
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    for (const char* encoding : {"MS1252", "ISO-8859-5", "IBM-037"}) {
        SCOPED_TRACE(encoding);
        std::string converterName = Osl_UnicodeConfiguration::Instance()->GetConverterName(encoding);
        osl::platform::IcuConversion icuToUtf8, icuFromUtf8;
        ASSERT_TRUE(icuToUtf8.open(converterName, "UTF-8"));
        ASSERT_TRUE(icuFromUtf8.open("UTF-8", converterName));
        Osl_UnicodeConverter converter;
        converter.SetCurrentEncoding(encoding);
        const auto agree = [&](bool toUtf8, const std::string& in, uint32_t what) {
            char out[32], ref[32];
            size_t len = sizeof out, consumed = 0, written = 0;
            ConversionRC rc = toUtf8 ? converter.ConvertCurrentEncodingtoUTF8(in.data(), in.size(), out, len)
                                     : converter.ConvertUTF8toCurrentEncoding(in.data(), in.size(), out, len);
            auto status = (toUtf8 ? icuToUtf8 : icuFromUtf8).convert(in.data(), in.size(), ref, sizeof ref, consumed, written);
            ASSERT_EQ(rc == ConversionOK, status == osl::platform::IcuStatus::ok) << std::hex << what;
            ASSERT_EQ(std::string(out, len), std::string(ref, written)) << std::hex << what;
        };
        for (uint32_t b = 0; b < 256 && !HasFatalFailure(); ++b) agree(true, std::string(1, static_cast<char>(b)), b);
        for (uint32_t c = 1; c < 0x10000 && !HasFatalFailure(); ++c) {
            std::string utf8;  // lone surrogates aside, with enough text around for the block paths
            Osl_UnicodeConverter().ConvertUCS2toUTF8(std::u16string(1, static_cast<char16_t>(c)), utf8);
            if (c < 0xD800 || c > 0xDFFF) agree(false, "long enough for blocks " + utf8 + "!", c);
        }
    }
}

TEST(UnicodeConverterTest, BadInputToLegacyKeepsWhatWentBefore) {
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("MS1252");
    std::string out;
    EXPECT_EQ(converter.ConvertUTF8toCurrentEncoding(std::string("ab\xE6\x97\xA5"), out), ConversionIllegal);
    EXPECT_EQ(out, "ab");  // what was converted before the unmappable character
    EXPECT_EQ(converter.ConvertUTF8toCurrentEncoding(std::string("ab\xFF"), out), ConversionIllegal);
    EXPECT_EQ(converter.ConvertUTF8toCurrentEncoding(std::string("ab\xE2\x82"), out), ConversionIllegal);
    Osl_UnicodeConverter unknown;  // an unknown encoding converts as Latin1
    unknown.SetCurrentEncoding("no-such-encoding");
    EXPECT_EQ(unknown.ConvertCurrentEncodingtoUTF8(std::string("\x80\xE9"), out), ConversionOK);
    EXPECT_EQ(out, "\xC2\x80\xC3\xA9");
}

// Resuming at the handled length after -3 gives what one call gives, on the table and ICU paths
// alike; a piece of double-byte EBCDIC that ends inside a run closes it (SI), the next opens it.
TEST(UnicodeConverterTest, ResumingAtTheHandledLengthLosesNothing) {
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    std::string text;
    while (text.size() < 3000) text += "ab\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E" "12";
    for (const char* encoding : {"MS932", "IBM-939", "MS1252"}) {
        SCOPED_TRACE(encoding);
        Osl_UnicodeConverter c;
        c.SetCurrentEncoding(encoding);
        const std::string utf8 = encoding == std::string("MS1252") ? std::string(3000, 'x') + "\xC3\xA9" : text;
        std::string whole, wholeBack, legacy, back;
        ASSERT_EQ(c.ConvertUTF8toCurrentEncoding(utf8, whole), ConversionOK);
        ASSERT_EQ(c.ConvertCurrentEncodingtoUTF8(whole, wholeBack), ConversionOK);
        for (bool toUtf8 : {false, true}) {
            const std::string& src = toUtf8 ? whole : utf8;
            for (size_t at = 0; at < src.size(); at += static_cast<size_t>(c.GetHandledLength())) {
                char buffer[100];
                size_t len = sizeof buffer;
                ConversionRC rc = toUtf8 ? c.ConvertCurrentEncodingtoUTF8(src.data() + at, src.size() - at, buffer, len)
                                         : c.ConvertUTF8toCurrentEncoding(src.data() + at, src.size() - at, buffer, len);
                ASSERT_TRUE((rc == ConversionOK || rc == ConversionNoSpace) && c.GetHandledLength() > 0) << rc;
                (toUtf8 ? back : legacy).append(buffer, len);
            }
        }
        for (size_t pair; (pair = legacy.find("\x0F\x0E")) != std::string::npos;) legacy.erase(pair, 2);
        EXPECT_TRUE(legacy == whole);
        EXPECT_TRUE(back == wholeBack);
    }
}

TEST(UnicodeConverterTest, SmallCallerBufferGivesNoSpaceAndOneLogLine) {
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    CLog* log = CLog::Instance();
    log->DeleteChannels();
    logLines.clear();
    log->SetFunctionChannel([](const char* line) { logLines.push_back(line); }, SevInfo, false);
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("MS1252");
    char out[4];
    size_t len = sizeof out;
    EXPECT_EQ(converter.ConvertCurrentEncodingtoUTF8("\xE9\xE9\xE9", 3, out, len), ConversionNoSpace);
    EXPECT_EQ(std::string(out, len), "\xC3\xA9\xC3\xA9");
    log->DeleteChannels();
    ASSERT_EQ(logLines.size(), 1u);
    EXPECT_NE(logLines[0].find("Osl_UnicodeConverter::BufferConverter"), std::string::npos);
    EXPECT_NE(logLines[0].find("No space in the destination buffer ; slen: 3 dlen: 4. DO Destination buffer "
                                 "length = 4* length of source buffer"), std::string::npos);
}

// Double-byte EBCDIC: each shift byte shows as a blank, the rest as glibc's iconv reads it.
TEST(UnicodeConverterTest, DoubleByteEbcdicKeepsAColumnForEachShiftByte) {
    osl::test::ScopedUnicodeMode mode(false, "IBM-939");
    for (auto [encoding, iconvName] : {std::pair{"IBM-939", "IBM939"}, std::pair{"IBM-930", "IBM930"}}) {
        SCOPED_TRACE(encoding);
        const std::string kanji = "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", text = "ABC" + kanji + "XYZ";
        const std::string shown = "ABC " + kanji + " XYZ", ebcdic = iconvConvert(iconvName, "UTF-8", text);
        ASSERT_EQ(ebcdic.find('<'), std::string::npos) << ebcdic;
        ASSERT_NE(ebcdic.find('\x0E'), std::string::npos);
        Osl_UnicodeConverter converter;
        converter.SetCurrentEncoding(encoding);
        std::string utf8;
        EXPECT_EQ(converter.ConvertCurrentEncodingtoUTF8(ebcdic, utf8), ConversionOK);
        EXPECT_EQ(utf8, shown);
        EXPECT_EQ(converter.GetHandledLength(), static_cast<int>(ebcdic.size()));
        // The other way the shift bytes are the converter's own, as iconv makes them.
        std::string back;
        EXPECT_EQ(converter.ConvertUTF8toCurrentEncoding(text, back), ConversionOK);
        EXPECT_EQ(back, ebcdic);
        // Pieces ending inside a character: the caller hands the unconsumed rest over again.
        for (size_t piece = 1; piece <= 4; ++piece) {
            Osl_UnicodeConverter pieces;
            pieces.SetCurrentEncoding(encoding);
            std::string pending, joined, out;
            for (size_t at = 0; at < ebcdic.size(); at += piece) {
                pending += ebcdic.substr(at, piece);
                ConversionRC rc = pieces.ConvertCurrentEncodingtoUTF8(pending, out);
                ASSERT_TRUE(rc == ConversionOK || rc == ConversionIllegal);
                joined += out;
                pending.erase(0, static_cast<size_t>(pieces.GetHandledLength()));
            }
            EXPECT_EQ(pending, "") << piece;
            EXPECT_EQ(joined, shown) << piece;
        }
        std::string empty;  // an empty run gives two blanks
        EXPECT_EQ(converter.ConvertCurrentEncodingtoUTF8(ebcdic.substr(0, 1) + "\x0E\x0F" + ebcdic.substr(0, 1), empty),
                  ConversionOK);
        EXPECT_EQ(empty, "A  A");
    }
}

TEST(UnicodeConverterTest, CaseMappingAndCharacterTypes) {
    Osl_UnicodeConverter converter;
    char out[32];
    size_t len = sizeof out;
    EXPECT_EQ(converter.ToLowerUTF8("\xC3\x89T\xC3\x89", 5, out, len), ConversionOK);
    EXPECT_EQ(std::string(out, len), "\xC3\xA9t\xC3\xA9");
    len = sizeof out;  // long s (2 bytes) upper-cases to S (1 byte)
    EXPECT_EQ(converter.ToUpperUTF8("\xC5\xBF", 2, out, len), ConversionIllegal);
    EXPECT_EQ(std::string(out, len), "S");
    len = 2;  // U+023F (2 bytes) upper-cases to U+2C7E (3 bytes), more than the capacity
    EXPECT_EQ(converter.ToUpperUTF8("\xC8\xBF", 2, out, len), ConversionIllegal);
    EXPECT_LE(len, 2u);
    {
        osl::test::ScopedUnicodeMode mode(true);
        for (auto [ch, bits] : {std::pair{"A", 0x101}, {"\xC3\xA9", 0x102}, {"7", 0x4}, {" ", 0x48}})
            EXPECT_EQ(converter.GetCharType(CharTypeClass, ch) & bits, bits) << ch;
        EXPECT_EQ(converter.GetCharType(CharTypeClass, "\xFF"), 0);  // illegal: no class
    }
    osl::test::ScopedUnicodeMode mode(false, "MS1252");
    EXPECT_EQ(converter.GetCharType(CharTypeClass, "\xC9") & 0x101, 0x101);  // É in windows-1252
}
