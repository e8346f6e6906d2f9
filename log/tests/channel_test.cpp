// log/tests/channel_test.cpp
// The per-channel filter and the function channel.
#include <vum-qib-osl/log/channel.h>

#include <gtest/gtest.h>

namespace {

class TestChannel : public CChannel {
public:
    TestChannel(LogSeverity level, std::string category) : CChannel(level, std::move(category)) {}
    void Write(CLogMsg&) override {}
};

TEST(ChannelTest, IsHigerRules) {
    struct Case {
        LogSeverity level;
        std::string channel;
        LogSeverity sev;
        std::string message;
        bool taken;
    };
    const Case cases[] = {
        {SevWarning, "", SevInfo, "", false},       // below the level
        {SevWarning, "", SevWarning, "", true},     // both empty
        {SevInfo, "db", SevInfo, "db", true},       // equal
        {SevInfo, "db", SevInfo, "", false},        // channel db, no category
        {SevInfo, "db", SevInfo, "DB", false},      // case-sensitive
        {SevInfo, "*", SevInfo, "net", true},       // exactly "*"
        {SevInfo, "", SevInfo, "db", false},
        {SevInfo, "db, net", SevInfo, "net", true},
        {SevInfo, "db, net", SevInfo, "", false},   // "NONE" not listed
        {SevInfo, "db, NONE", SevInfo, "", true},
        {SevInfo, "*, ~db", SevInfo, "db", false},  // all but db
        {SevInfo, "*, ~db", SevInfo, "net", true},
        {SevInfo, "*x", SevInfo, "net", false},     // no comma: only exact "*" takes all
        {SevInfo, "db,net", SevInfo, "net", false}, // split at ", " only
        {SevNone, "*", SevSystem, "db", false},     // level 7 takes nothing
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("channel '" + c.channel + "' message '" + c.message + "'");
        TestChannel channel(c.level, c.channel);
        CLog* none = nullptr;
        CLogMsg msg(&none, "at", c.message.c_str(), c.sev);
        EXPECT_EQ(channel.IsHiger(msg), c.taken);
        channel.SetCategory("io");  // a new category replaces the old list
        EXPECT_EQ(channel.IsHiger(msg), c.sev >= c.level && c.message == "io");
    }
}

TEST(ChannelTest, FunctionChannelFiltersBeforeCalling) {
    static int calls = 0;
    CChannelFunc channel([](const char*) { ++calls; }, SevError, "");
    CLog* none = nullptr;
    CLogMsg info(&none, "at", "", SevInfo);
    CLogMsg error(&none, "at", "", SevError);
    channel.Write(info);
    channel.Write(error);
    EXPECT_EQ(calls, 1);
    CChannelFunc nothing;
    EXPECT_NO_THROW(nothing.Write(error));
}

}  // namespace
