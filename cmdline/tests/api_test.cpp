// cmdline/tests/api_test.cpp
// The command-line classes through the shared library: every symbol used here must be exported.
#include <vum-qib-osl/osl.h>

#include <gtest/gtest.h>

#include <sstream>

TEST(CmdlineApiTest, ClassesAreReachableThroughTheSharedLibrary) {
    char prog[] = "prog", out[] = "-out=", file[] = "f";
    char* argv[] = {prog, out, file};
    QIBCommandLine line;
    line.Init(3, argv);
    EXPECT_EQ(line.GetOptionValue("-OUT"), "f");
    std::ostringstream text;
    text << line;
    EXPECT_EQ(text.str(), "-out=f, ");

    CmdLine scanner("-a");
    EXPECT_EQ(scanner.NextToken(false), CmdLine::tkOption);
    EXPECT_STREQ(scanner.CurrentToken(), "A");

    std::ostringstream usage;
    EXPECT_TRUE(DisplayUsage(usage, "prog", ""));
}
