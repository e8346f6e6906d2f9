// platform/tests/icu_text_test.cpp
// What the strings subsystem relies on from ICU: where a conversion stops. Converter names, the
// single-byte tables and the locale data are checked through Osl_UnicodeConfiguration and
// Osl_UnicodeConverter.
#include "platform/icu_text.h"

#include <gtest/gtest.h>

using namespace osl::platform;

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
