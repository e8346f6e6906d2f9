// strings/tests/api_test.cpp
// The strings and pattern interfaces through the shared library: every class is exported.
#include <vum-qib-osl/osl.h>

#include <gtest/gtest.h>

#include <string>

TEST(StringsApiTest, ConvertsAndMatchesThroughTheSharedLibrary) {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    Osl_UTF8String s(u"a\u00E9\u20AC");
    EXPECT_EQ(s.LengthInChars(), 3u);
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("windows-1252");
    std::string legacy;
    EXPECT_EQ(converter.ConvertUTF8toCurrentEncoding(s, legacy), ConversionOK);
    EXPECT_EQ(legacy, "a\xE9\x80");
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
    Osl_RegularExpression re("(b+)", true);
    EXPECT_EQ(re.search("aBbc", 0, Osl_RegularExpression::npos), Osl_RegularExpression::range(1, 3));
    EXPECT_THROW(re.pattern("("), QIBError);
    EXPECT_TRUE(WildcardString("*.ini", false).Match("QIB_FDS.INI"));
    Osl_UTF8String regexp;
    WStringAsRegexp("?", regexp);
    EXPECT_EQ(regexp.ToString(), "^.$");
    QIBAutoEditString text("log_%%job.%%Part");
    text.AddVariable("JOB", "run");
    text.AddVariable("part", "7");
    EXPECT_EQ(text.Resolve(false), "log_run7");
}
