// log/tests/log_msg_test.cpp
// Log messages: the line layout, insertion of every printable type, the Log forms and OSL_LOG.
#include <vum-qib-osl/log/log_msg.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <locale>
#include <thread>

#include "log/tests/log_test_support.h"
#include "platform/process.h"
#include "tests/support/fake_clock.h"

namespace {

using osl::test::body;
using osl::test::LoggerTest;

class LogMsgTest : public LoggerTest {
protected:
    void SetUp() override {
        LoggerTest::SetUp();
        log_->SetFunctionChannel(osl::test::captureLine, SevInfo, "*", false);
    }
    // The text after the time.
    static std::string tail(const std::string& line) { return line.substr(line.find(" 14:07:09 ") + 10); }

    osl::test::ScopedTimeZone utc_{"UTC"};
    osl::test::FakeClock clock_{2024, 3, 5, 14, 7, 9};
};

TEST_F(LogMsgTest, HeaderLayoutMatchesTheProductFormat) {
    log_->SetProcessName("srv");
    CLogMsg msg("Open", "db", SevError);
    msg << "done" << flush;
    ASSERT_EQ(lines().size(), 1u);
    char expected[256];
    std::snprintf(expected, sizeof expected, "A srv       %5d/%5ld    db 03-05-2024 14:07:09 -ERROR Open : done",
                  osl::platform::currentProcessId(), osl::platform::currentThreadId());
    EXPECT_EQ(lines()[0], expected);
    EXPECT_EQ(std::string(msg.c_str()), expected);
    EXPECT_EQ(msg.size(), std::string(expected).size());
    // Another thread's line carries that thread's id; a long category is written whole.
    const std::string huge(400, 'c');
    long other = 0;
    std::thread([&] {
        CLogMsg("at", huge.c_str(), SevInfo) << "tail" << flush;
        other = osl::platform::currentThreadId();
    }).join();
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_NE(other, osl::platform::currentThreadId());
    std::snprintf(expected, sizeof expected, "A srv       %5d/%5ld ", osl::platform::currentProcessId(), other);
    EXPECT_EQ(lines()[1].substr(0, std::strlen(expected)), expected);
    EXPECT_NE(lines()[1].find(" " + huge + " 03-05-2024 14:07:09 -INFO  at : tail"), std::string::npos);
}

TEST_F(LogMsgTest, ProcessNameIsPaddedOrCutToTen) {
    const std::pair<std::string, std::string> cases[] = {
        {"abc", "abc       "}, {"fourteen-chars", "fourteen-c"}, {"", "          "}, {"exactly-10", "exactly-10"}};
    for (const auto& [name, shown] : cases) {
        SCOPED_TRACE(name);
        log_->SetProcessName(name);
        EXPECT_EQ(log_->GetProcessName(), shown);
        lines().clear();
        CLogMsg("at") << "x" << flush;
        ASSERT_EQ(lines().size(), 1u);
        EXPECT_EQ(lines()[0].substr(0, 12), "A " + shown);
    }
}

TEST_F(LogMsgTest, SeverityTagsAndNames) {
    struct Case {
        LogSeverity sev;
        std::string tag, name;  // the name StringToSev reads; "none" and "Info" read as SevNone
    };
    const Case cases[] = {{SevInfo, "-INFO  ", "info"}, {SevWarning, "-WARN  ", "warning"},
                          {SevError, "-ERROR ", "error"}, {SevFatal, "-FATAL ", "fatal"},
                          {SevSystem, "-SYS   ", "system"}, {static_cast<LogSeverity>(6), "-------", ""},
                          {SevNone, "-------", "none"}, {SevNone, "-------", "Info"}};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.tag + c.name);
        lines().clear();
        CLogMsg("at", "", c.sev) << "b" << flush;
        ASSERT_EQ(lines().size(), 1u);
        EXPECT_EQ(tail(lines()[0]), c.tag + "at : b");
        if (c.sev != 6) { EXPECT_EQ(StringToSev(c.name), c.sev); }
    }
    EXPECT_EQ(StringToSev(""), SevNone);
}

// A message is reusable, a shorter body cuts the longer one; assignment copies the attributes only.
TEST_F(LogMsgTest, ReuseAndAssignmentKeepNoOldBody) {
    CLogMsg msg("first", "cat", SevWarning);
    msg.Sev(SevError).At("second") << "a long first body" << flush;
    msg << "short" << flush;
    CLogMsg a("at-a", "cat", SevFatal);
    a << "pending body";
    CLogMsg b;
    b = a;
    EXPECT_EQ(b.GetSevirity(), SevFatal);
    EXPECT_EQ(b.GetCategory(), "cat");
    b << "own" << flush;
    ASSERT_EQ(lines().size(), 3u);
    EXPECT_EQ(tail(lines()[0]), "-ERROR second : a long first body");
    EXPECT_EQ(tail(lines()[1]), "-WARN  first : short");  // defaults restored
    EXPECT_EQ(tail(lines()[2]), "-FATAL at-a : own");
}

TEST_F(LogMsgTest, BodyInsertionOfEveryType) {
    CLogMsg msg("at");
    const char* null = nullptr;
    std::ostringstream other("stream", std::ios::ate);
    msg << null << 'c' << static_cast<short>(-2) << static_cast<unsigned short>(3) << -4 << 5u << -6L
        << 7UL << 1.5f << 2.25 << " " << std::string("str") << " " << other << " "
        << QIBError("e", 2, 8, "m", 1) << flush;
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_EQ(body(lines()[0]), "c-23-45-671.52.25 str stream e, code 2, severity 8, programm m 1");
    // Width, sign and locale of the stream still apply to every type.
    msg << std::setw(4) << 42 << std::showpos << 7 << std::noshowpos << -3 << std::setw(3) << "ab" << std::setw(3)
        << std::string("s") << std::setfill('0') << std::setw(3) << 5L << std::hex << std::uppercase << 255 << 254ULL
        << std::dec << (-9223372036854775807LL - 1) << flush;
    EXPECT_EQ(body(lines()[1]), "  42+7-3 ab  s005FFFE-9223372036854775808");
    struct Thousands : std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    msg.imbue(std::locale(std::locale::classic(), new Thousands));
    msg << 1234567 << flush;
    EXPECT_EQ(body(lines()[2]), "1.234.567");
    // Whatever a std::ostream prints keeps the chain a message, so that flush ends the line.
    msg.imbue(std::locale::classic());
    msg << std::setfill(' ') << true << std::string_view(" view ") << 0.5L << std::setw(3) << 'x' << flush;
    EXPECT_EQ(body(lines().at(3)), "1 view 0.5  x");
    msg << "before" << '\0' << "after" << flush;  // an embedded NUL ends the body
    EXPECT_EQ(body(lines().at(4)), "before");
}

TEST_F(LogMsgTest, LogFormsAndTheirResetRules) {
    CLogMsg msg("at", "", SevInfo);
    msg.Log(SevWarning, nullptr, "other", "explicit text");
    EXPECT_EQ(tail(lines().at(0)), "-WARN  other : explicit text");
    std::string text = "string form";
    msg.Log(text);
    EXPECT_EQ(tail(lines().at(1)), "-INFO  at : string form");
    std::ostringstream s("from a stream", std::ios::ate);
    msg.Log(s);
    EXPECT_EQ(tail(lines().at(2)), "-INFO  at : from a stream");
    msg.Log(static_cast<LogSeverity>(0), nullptr, nullptr, "sev zero keeps info");
    EXPECT_EQ(tail(lines().at(3)), "-INFO  at : sev zero keeps info");
    // Not taken, the string form keeps the attributes it was given; the char form restores them.
    log_->SetFunctionChannel(osl::test::captureLine, SevError, "", false);
    msg.Log(SevWarning, "c", "x", text);
    EXPECT_EQ(msg.GetSevirity(), SevWarning);
    EXPECT_EQ(msg.GetCategory(), "c");
    msg.Log(SevWarning, "c", "x", "dropped too");
    EXPECT_EQ(msg.GetSevirity(), SevInfo);
    EXPECT_EQ(msg.GetCategory(), "");
    EXPECT_EQ(lines().size(), 4u);
}

// The body is not evaluated when nothing takes the line, and the macro is one statement.
TEST_F(LoggerTest, OslLogMacro) {
    int evaluated = 0;
    auto costly = [&evaluated] { return ++evaluated, "costly"; };
    OSL_LOG(SevFatal, "", "at") << costly();  // no channel at all
    EXPECT_EQ(evaluated, 0);

    log_->SetFunctionChannel(osl::test::captureLine, SevWarning, "db", false);
    OSL_LOG(SevInfo, "", "at") << costly();    // below the level
    OSL_LOG(SevError, "net", "at") << costly();  // category nobody takes
    EXPECT_EQ(evaluated, 0);
    OSL_LOG(SevError, "db", "at") << costly();
    EXPECT_EQ(evaluated, 1);
    ASSERT_EQ(lines().size(), 1u);
    EXPECT_NE(lines()[0].find("   db "), std::string::npos);
    EXPECT_NE(lines()[0].find("-ERROR at : costly"), std::string::npos);
    bool flag = false;
    if (flag)
        OSL_LOG(SevError, "db", "a") << "then";
    else
        OSL_LOG(SevError, "db", "b") << "else";
    ASSERT_EQ(lines().size(), 2u);
    EXPECT_NE(lines()[1].find("b : else"), std::string::npos);
}

}  // namespace
