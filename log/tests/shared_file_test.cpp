// log/tests/shared_file_test.cpp
// Four processes append to one common file with a small size limit, so that it rotates many
// times while they write. Every line must come out once, whole, in the file or in one backup.
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/log.h>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "log/src/log_file.h"
#include "log/tests/log_test_support.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr int kProcesses = 4;
constexpr int kLinesEach = 3000;
constexpr std::uint32_t kMaxSize = 8000;

// The body of line n of process p, padded so that lines differ in length.
std::string bodyOf(int p, int n) { return "p" + std::to_string(p) + " n" + std::to_string(n) + " " + std::string(static_cast<std::size_t>(n % 40), '.'); }

// Writers 0 and 1 keep the channel they inherited from the parent, open files included; the
// others make their own.
[[noreturn]] void writeLines(const std::string& path, int p, int startPipe) {
    char go = 0;
    if (read(startPipe, &go, 1) != 1) _exit(3);
    CLog* log = CLog::Instance();
    log->SetProcessName("writer" + std::to_string(p));
    if (p >= 2) {
        log->DeleteChannels();
        auto* channel = new CChannelCommonFile(path, SevInfo, "");
        channel->SetMaxSize(kMaxSize);
        log->AddChannel(channel);
    }
    CLogMsg msg("shared", "", SevInfo);
    for (int n = 0; n < kLinesEach; ++n) msg.Log(bodyOf(p, n));
    _exit(0);
}

TEST(SharedFileTest, FourProcessesRotatingOneFileLoseNoLine) {
    osl::test::TempDir dir;
    const std::string path = dir.file("shared.log");
    CLog* log = CLog::Instance();
    log->DeleteChannels();
    log->SetProcessName("writer");
    auto* channel = new CChannelCommonFile(path, SevInfo, "");
    channel->SetMaxSize(kMaxSize);
    log->AddChannel(channel);
    OslLogPrint(SevInfo, "", "shared", "p9 n0 ");  // opens the file and its lock before the fork
    int startPipe[2];
    ASSERT_EQ(pipe(startPipe), 0);
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            close(startPipe[1]);
            writeLines(path, p, startPipe[0]);
        }
        children.push_back(pid);
    }
    close(startPipe[0]);
    log->DeleteChannels();
    ASSERT_EQ(write(startPipe[1], "gogo", kProcesses), kProcesses);  // all start at once
    close(startPipe[1]);
    for (pid_t pid : children) {
        int status = 0;
        ASSERT_EQ(waitpid(pid, &status, 0), pid);
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "writer status " << status;
    }

    std::vector<std::string> files = osl::test::backupsOf(path);
    ASSERT_GT(files.size(), 20u) << "the limit should have been crossed many times";
    std::map<std::string, int> seen;
    for (const std::string& file : files) {
        // One crossing rotates once: a second rotation would leave a backup of a fresh file.
        EXPECT_GT(std::filesystem::file_size(file), kMaxSize) << file;
    }
    files.push_back(path);
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const std::string content = osl::test::readFile(file);
        ASSERT_GE(content.size(), 83u);
        std::int64_t created = 0;
        EXPECT_TRUE(osl::detail::LogFile::parseHeader(content.c_str(), created));
        EXPECT_EQ(content.substr(81, 2), "\r\n");
        ASSERT_EQ(content.substr(content.size() - 2), "\r\n");
        std::size_t start = 83;
        while (start < content.size()) {
            const std::size_t end = content.find("\r\n", start);
            const std::string line = content.substr(start, end - start);
            start = end + 2;
            const std::size_t at = line.find("-INFO  shared : ");
            ASSERT_NE(at, std::string::npos) << "torn line: " << line;
            ASSERT_EQ(line.compare(0, 8, "A writer"), 0) << "torn line: " << line;
            const std::string body = line.substr(at + 16);
            int p = -1, n = -1;
            ASSERT_EQ(std::sscanf(body.c_str(), "p%d n%d", &p, &n), 2) << line;
            ASSERT_EQ(body, bodyOf(p, n)) << "torn line: " << line;
            ++seen[body];
        }
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kProcesses * kLinesEach) + 1);
    for (const auto& [body, count] : seen) EXPECT_EQ(count, 1) << body;
}

}  // namespace
