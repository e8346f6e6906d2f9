// log/tests/log_test.cpp
// The logger: summaries, filtering, serialised output from many threads.
#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <stdexcept>
#include <thread>

#include "log/tests/log_test_support.h"

namespace {

using osl::test::LoggerTest;

// A channel with a given level and category that counts what reaches it.
class CountingChannel : public CChannel {
public:
    CountingChannel(LogSeverity level, std::string category, bool fail = false)
        : CChannel(level, std::move(category)), fail_(fail) {}
    void Write(CLogMsg& msg) override {
        if (!IsHiger(msg)) return;
        ++written;
        if (fail_) throw std::runtime_error("channel failure");
    }
    int written = 0;

private:
    bool fail_;
};

TEST_F(LoggerTest, SummariesFollowTheChannels) {
    log_->AddChannel(new CountingChannel(SevError, "db, net"));
    log_->AddChannel(new CountingChannel(SevWarning, "io"));
    EXPECT_TRUE(log_->HasSeverity(SevWarning));
    EXPECT_FALSE(log_->HasSeverity(SevInfo));
    EXPECT_TRUE(log_->HasCategory("db"));
    EXPECT_TRUE(log_->HasCategory("net"));
    EXPECT_TRUE(log_->HasCategory("io"));
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

TEST_F(LoggerTest, FunctionChannelIsCreatedOnceAndReconfigured) {
    log_->SetFunctionChannel(osl::test::captureLine, SevError, "a", false);
    CChannel* first = log_->GetFunctionChannel();
    log_->SetFunctionChannel(osl::test::captureLine, SevInfo, false);
    EXPECT_EQ(log_->GetFunctionChannel(), first);
    EXPECT_EQ(first->GetSeverity(), SevInfo);
    EXPECT_EQ(first->GetCategory(), "");
    CLogMsg("at") << "once" << flush;
    EXPECT_EQ(lines().size(), 1u);
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
    for (const std::string& line : lines()) {
        ASSERT_NE(line.find("-INFO  worker : thread "), std::string::npos) << line;
    }
}

TEST_F(LoggerTest, DestroyingTheSingletonClosesTheGate) {
    log_->AddChannel(new CountingChannel(SevInfo, ""));
    EXPECT_TRUE(osl::detail::logWanted(SevInfo, ""));
    delete log_;
    EXPECT_FALSE(CLogMsg::HasSeverity(SevFatal));
    EXPECT_EQ(osl::detail::logGate.load(), INT_MAX);
    log_ = CLog::Instance();  // a fresh singleton, unconfigured: it takes nothing
    EXPECT_FALSE(osl::detail::logWanted(SevFatal, ""));
    EXPECT_FALSE(CLogMsg("at", "", SevSystem).IsEnable());
}

}  // namespace
