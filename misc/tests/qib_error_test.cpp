// misc/tests/qib_error_test.cpp
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <sstream>
#include <utility>

namespace {

std::string oneLine(const QIBError& e) {
    std::ostringstream out;
    out << e;
    return out.str();
}

TEST(QIBErrorTest, ConstructionRulesForTextAndWhereAndTheDefault) {
    struct Case {
        std::string text; long code, severity; std::string where; long line;  // what is given
        std::string wantText, wantWhere; bool infoOnly;                       // what comes out
    };
    const Case cases[] = {
        {"", 5, 0, "m", 0, "", "m", false},      // empty text survives a non-zero code
        {"", 0, 3, "m", 0, "", "m", true},       // ... and a non-zero severity
        {"", 0, 0, "m", 9, "No error", "m 9", true},
        {"x", 3, 0, "m", 0, "x", "m", true},     // no trailing blank without a line
        {"x", 3, 5, "m", 0, "x", "m", false},
        {"x", -7, 0, "m", 12, "x", "m 12", true},  // negative codes count as information
        {"x", 4, 0, "m", -2, "x", "m -2", true},
        {"x", 99, 4, "", 38, "x", "unknown", true},  // line ignored without where
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.wantWhere + " code " + std::to_string(c.code) + " sev " + std::to_string(c.severity));
        QIBError e(c.text, c.code, c.severity, c.where, c.line);
        EXPECT_EQ(e.What(), c.wantText);
        EXPECT_EQ(e.Where(), c.wantWhere);
        EXPECT_EQ(e.Code(), c.code);
        EXPECT_EQ(e.Severity(), c.severity);
        EXPECT_EQ(e.isInfoOnly(), c.infoOnly);
    }
    QIBError none;
    EXPECT_EQ(oneLine(none), "No error, code 0, severity 0, programm unknown");
    EXPECT_TRUE(none.isInfoOnly());
}

TEST(QIBErrorTest, EqualityIgnoresWhere) {
    const QIBError e("t", 1, 12, "a", 1);
    EXPECT_TRUE(e == QIBError("t", 1, 12, "b", 2));
    for (const QIBError& other :
         {QIBError("t", 2, 12, "a", 1), QIBError("t", 1, 8, "a", 1), QIBError("u", 1, 12, "a", 1)})
        EXPECT_FALSE(e == other) << other.What() << other.Code() << other.Severity();
}

TEST(QIBErrorTest, LogicalErrorIsCaughtAsQIBErrorWithItsForm) {
    try {
        throw QIBLogicalError("bad index", "m", 412);
    } catch (const QIBError& e) {
        EXPECT_EQ(oneLine(e), "Logical Error: bad index, code 1, severity 12, programm m 412");
    }
}

TEST(ExceptionToConstCharTest, KnownAndUnknownNumbers) {
    const std::pair<int, const char*> known[] = {{1, "Memory allocation failure"}, {710, "Syntax Error in User File"},
                                                  {1453, "File name exceeds maximal length"},
                                                  {1500, "KvlSock: Socket error"}};
    for (const auto& [n, text] : known) EXPECT_STREQ(ExceptionToConstChar(n), text) << n;
    for (int n : {0, -1, 2, 1454, 1499, 100000}) EXPECT_STREQ(ExceptionToConstChar(n), "Unknown Exception") << n;
}

}  // namespace
