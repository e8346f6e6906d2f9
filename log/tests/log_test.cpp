// log/tests/log_test.cpp
// The logger and its channels: the per-channel filter, summaries, serialised output from many threads.
#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "log/tests/log_test_support.h"

namespace {

using osl::test::LoggerTest;

// A channel with a given level and category that counts what reaches it.
struct CountingChannel : CChannel {
    CountingChannel(LogSeverity level, std::string category, bool failing = false)
        : CChannel(level, std::move(category)), fail(failing) {}
    void Write(CLogMsg& msg) override {
        if (!IsHiger(msg)) return;
        ++written;
        if (fail) throw std::runtime_error("channel failure");
    }
    int written = 0;
    bool fail;
};

TEST(ChannelTest, IsHigerRules) {
    struct Case {
        LogSeverity level, sev;
        std::string channel, message;
        bool taken;
    };
    const Case cases[] = {
        {SevWarning, SevInfo, "", "", false},       // below the level
        {SevWarning, SevWarning, "", "", true},     // both empty
        {SevInfo, SevInfo, "db", "db", true},       // equal
        {SevInfo, SevInfo, "db", "", false},        // channel db, no category
        {SevInfo, SevInfo, "db", "DB", false},      // case-sensitive
        {SevInfo, SevInfo, "*", "net", true},       // exactly "*"
        {SevInfo, SevInfo, "", "db", false},
        {SevInfo, SevInfo, "db, net", "net", true},
        {SevInfo, SevInfo, "db, net", "", false},   // "NONE" not listed
        {SevInfo, SevInfo, "db, NONE", "", true},
        {SevInfo, SevInfo, "*, ~db", "db", false},  // all but db
        {SevInfo, SevInfo, "*, ~db", "net", true},
        {SevInfo, SevInfo, "*x", "net", false},     // no comma: only exact "*" takes all
        {SevInfo, SevInfo, "db,net", "net", false}, // split at ", " only
        {SevNone, SevSystem, "*", "db", false},     // level 7 takes nothing
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("channel '" + c.channel + "' message '" + c.message + "'");
        CountingChannel channel(c.level, c.channel);
        CLog* none = nullptr;
        CLogMsg msg(&none, "at", c.message.c_str(), c.sev);
        EXPECT_EQ(channel.IsHiger(msg), c.taken);
        channel.SetCategory("io");  // a new category replaces the old list: no row's message is io
        EXPECT_FALSE(channel.IsHiger(msg));
    }
}

TEST_F(LoggerTest, SummariesFollowTheChannels) {
    log_->AddChannel(new CountingChannel(SevError, "db, net"));
    log_->AddChannel(new CountingChannel(SevWarning, "io"));
    EXPECT_TRUE(log_->HasSeverity(SevWarning));
    EXPECT_FALSE(log_->HasSeverity(SevInfo));
    for (const char* category : {"db", "net", "io"}) EXPECT_TRUE(log_->HasCategory(category)) << category;
    EXPECT_FALSE(log_->HasCategory("DB"));  // exact, case-sensitive
    EXPECT_EQ(osl::detail::logGate.load(), SevWarning);
    // A message with a category needs a channel that names it.
    log_->AddChannel(new CountingChannel(SevInfo, ""));
    EXPECT_TRUE(CLogMsg("at", "", SevInfo).IsEnable());
    EXPECT_FALSE(CLogMsg("at", "dev", SevInfo).IsEnable());
    log_->AddChannel(new CountingChannel(SevInfo, "*"));
    EXPECT_TRUE(CLogMsg("at", "anything", SevInfo).IsEnable());
    EXPECT_TRUE(log_->HasCategory("whatever"));
}

TEST_F(LoggerTest, FailingChannelDoesNotStopTheOthers) {
    auto* failing = new CountingChannel(SevInfo, "", true);
    auto* healthy = new CountingChannel(SevInfo, "");
    log_->AddChannel(failing);
    log_->AddChannel(healthy);
    EXPECT_NO_THROW(CLogMsg("at") << "x" << flush);
    EXPECT_EQ(failing->written, 1);
    EXPECT_EQ(healthy->written, 1);
}

// The function channel filters what reaches it directly too, and is reconfigured in place.
TEST_F(LoggerTest, FunctionChannelFiltersAndIsCreatedOnce) {
    log_->SetFunctionChannel(osl::test::captureLine, SevError, "a", false);
    CChannel* first = log_->GetFunctionChannel();
    CLog* none = nullptr;
    CLogMsg info(&none, "at", "a", SevInfo);
    CLogMsg error(&none, "at", "a", SevError);
    first->Write(info);
    first->Write(error);
    EXPECT_EQ(lines().size(), 1u);
    log_->SetFunctionChannel(osl::test::captureLine, SevInfo, false);
    EXPECT_EQ(log_->GetFunctionChannel(), first);
    EXPECT_EQ(first->GetSeverity(), SevInfo);
    EXPECT_EQ(first->GetCategory(), "");
    CLogMsg("at") << "once" << flush;
    EXPECT_EQ(lines().size(), 2u);
    EXPECT_NO_THROW(CChannelFunc().Write(error));  // no function
}

TEST_F(LoggerTest, LinesFromManyThreadsAreWholeAndCounted) {
    auto* channel = new CountingChannel(SevInfo, "");
    log_->AddChannel(channel);
    log_->SetFunctionChannel(osl::test::captureLine, SevInfo, false);
    constexpr int kThreads = 4;
    constexpr int kLines = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            CLogMsg msg("worker");
            for (int i = 0; i < kLines; ++i) msg << "thread " << t << " line " << i << flush;
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(channel->written, kThreads * kLines);
    ASSERT_EQ(lines().size(), static_cast<std::size_t>(kThreads * kLines));
    for (const std::string& line : lines()) ASSERT_NE(line.find("-INFO  worker : thread "), std::string::npos) << line;
}

TEST_F(LoggerTest, DestroyingTheSingletonClosesTheGate) {
    log_->AddChannel(new CountingChannel(SevInfo, ""));
    EXPECT_TRUE(osl::detail::logWanted(SevInfo, ""));
    delete log_;
    EXPECT_FALSE(CLogMsg::HasSeverity(SevFatal));
    log_ = CLog::Instance();  // a fresh singleton, unconfigured: it takes nothing
    EXPECT_FALSE(CLogMsg("at", "", SevSystem).IsEnable());
}

}  // namespace
