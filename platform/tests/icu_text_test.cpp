// platform/tests/icu_text_test.cpp
// What the strings subsystem relies on from ICU: converter names, the single-byte
// tables and stopping at bad input. The locale data is checked through Osl_UnicodeConfiguration.
#include "platform/icu_text.h"

#include <gtest/gtest.h>

using namespace osl::platform;

TEST(IcuTextTest, ConverterNames) {
    EXPECT_EQ(icuStart(""), 0);
    EXPECT_EQ(icuCanonicalConverterName("cp1252"), icuCanonicalConverterName("windows-1252"));
    EXPECT_EQ(icuCanonicalConverterName("IBM-939"), "ibm-939_P120-1999");
    EXPECT_EQ(icuCanonicalConverterName("utf8"), "UTF-8");
    EXPECT_EQ(icuCanonicalConverterName("MS1252"), "");  // our record names are not ICU's
    EXPECT_TRUE(icuIsSingleByte("windows-1252"));
    EXPECT_TRUE(icuIsSingleByte("ibm-37"));
    EXPECT_FALSE(icuIsSingleByte("ibm-939"));
    EXPECT_FALSE(icuIsSingleByte("UTF-8"));
    auto table = icuSingleByteToUnicode("windows-1252");
    ASSERT_EQ(table.size(), 256u);
    EXPECT_EQ(table[0x80], 0x20AC);
    EXPECT_EQ(icuSingleByteFromUnicode("windows-1252")[0x20AC], 0x80);
}

TEST(IcuTextTest, ConversionStopsAtBadInputAndFullDestination) {
    IcuConversion conversion;
    ASSERT_TRUE(conversion.open("UTF-8", "windows-1252"));
    char out[16];
    size_t consumed = 0, written = 0;
    EXPECT_EQ(conversion.convert("ab\xE6\x97\xA5z", 6, out, sizeof out, consumed, written), IcuStatus::illegal);
    EXPECT_EQ(written, 2u);
    EXPECT_EQ(conversion.convert("ab\xE2\x82", 4, out, sizeof out, consumed, written), IcuStatus::truncated);
    EXPECT_EQ(conversion.convert("abcdef", 6, out, 3, consumed, written), IcuStatus::noSpace);
    EXPECT_EQ(written, 3u);
    EXPECT_FALSE(IcuConversion().open("no-such-converter", "UTF-8"));
}
