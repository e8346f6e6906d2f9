// log/tests/log_test_support.h
// A logger singleton reset per test, and a function channel that records its lines.
#pragma once

#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace osl::test {

inline std::vector<std::string>& capturedLines() {
    static std::vector<std::string> lines;
    return lines;
}

inline void captureLine(const char* line) { capturedLines().push_back(line); }

class LoggerTest : public ::testing::Test {
protected:
    void SetUp() override {
        capturedLines().clear();
        log_ = CLog::Instance();
        log_->DeleteChannels();
        log_->Init();
        log_->SetProcessName("");
    }
    void TearDown() override {
        log_->DeleteChannels();
        log_->InitOptimisationVariable();
    }
    static std::vector<std::string>& lines() { return capturedLines(); }

    CLog* log_ = nullptr;
};

}  // namespace osl::test
