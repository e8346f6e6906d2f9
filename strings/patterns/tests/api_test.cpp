// strings/patterns/tests/api_test.cpp
// Against the shared library: every exported entry point of the pattern classes.
#include <vum-qib-osl/osl.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

TEST(PatternsApiTest, ExportedFromTheSharedLibrary) {
    Osl_RegularExpression re("(b+)", true);
    EXPECT_EQ(re.search("aBbc", 0, Osl_RegularExpression::npos), Osl_RegularExpression::range(1, 3));
    EXPECT_EQ(re.group(re.groups()), Osl_RegularExpression::range(1, 3));
    std::string s = "abba";
    EXPECT_EQ(re.replace(s, 0, std::string::npos, "-", true), 1u);
    EXPECT_THROW(re.pattern("("), QIBError);

    WildcardString w("*.ini", false);
    EXPECT_TRUE(w.Match("QIB_FDS.INI"));
    Osl_UTF8String regexp;
    WStringAsRegexp("?", regexp);
    EXPECT_EQ(regexp.ToString(), "^.$");

    QIBAutoEditString text("log_%%job.%%Part");
    text.AddVariable("JOB", "run");
    text.AddVariable("part", "7");
    EXPECT_EQ(text.Resolve(false), "log_run7");
    std::ostringstream out;
    out << text;
    EXPECT_EQ(out.str(), "log_%%job.%%Part\nJOB=run\npart=7\n");
}

}  // namespace
