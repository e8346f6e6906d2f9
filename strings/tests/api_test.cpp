// strings/tests/api_test.cpp
// The strings interface through the shared library: every class is exported.
#include <vum-qib-osl/osl.h>

#include <gtest/gtest.h>

TEST(StringsApiTest, ConvertsThroughTheSharedLibrary) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    Osl_UTF8String s(u"a\u00E9\u20AC");
    EXPECT_EQ(s.LengthInChars(), 3u);
    EXPECT_EQ(s.ToWString(), u"a\u00E9\u20AC");
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("windows-1252");
    std::string legacy;
    EXPECT_EQ(converter.ConvertUTF8toCurrentEncoding(s, legacy), ConversionOK);
    EXPECT_EQ(legacy, "a\xE9\x80");
    EXPECT_EQ(Osl_UnicodeConfiguration::Instance()->GetEncodingDescription("cp1252"),
              "Windows Latin 1, Western European");
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
}
