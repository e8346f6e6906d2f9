// log/tests/log_test_support.h
// A logger singleton reset per test, a function channel that records its lines, and readers of
// log files.
#pragma once

#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

namespace osl::test {

inline std::vector<std::string>& capturedLines() {
    static std::vector<std::string> lines;
    return lines;
}

inline void captureLine(const char* line) { capturedLines().push_back(line); }

/// The text of a log line after its header.
inline std::string body(const std::string& line) { return line.substr(line.find(" : ") + 3); }

/// The lines of a log file, without their CR LF.
inline std::vector<std::string> fileLines(const std::string& path) {
    std::vector<std::string> result;
    const std::string content = readFile(path);
    for (std::size_t start = 0, end = 0; start < content.size(); start = end + 2) {
        end = std::min(content.find("\r\n", start), content.size());
        result.push_back(content.substr(start, end - start));
    }
    return result;
}

/// The names "<stem>_YYYY_MM_DD_hh_mm_ss_uuuuuu.bak" beside path, oldest first.
inline std::vector<std::string> backupsOf(const std::string& path) {
    const std::filesystem::path p(path);
    const std::string prefix = p.stem().string() + "_";
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(p.parent_path())) {
        const std::string name = entry.path().filename().string();
        if (name.size() == prefix.size() + 30 && name.starts_with(prefix) && name.ends_with(".bak")) {
            names.push_back(entry.path().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

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
