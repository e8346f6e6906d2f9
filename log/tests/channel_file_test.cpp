// log/tests/channel_file_test.cpp
// The common and private file channels: header, rotation by size and age, files changed by
// other programs, backup names and retention.
#include <vum-qib-osl/log/channel_file.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "log/src/log_file.h"
#include "log/tests/log_test_support.h"
#include "platform/process.h"
#include "tests/support/fake_clock.h"
#include "tests/support/temp_dir.h"

namespace {

using osl::detail::LogFile;
using osl::test::readFile;
using osl::test::writeFile;
using osl::test::backupsOf;
using osl::test::body;
using osl::test::fileLines;

class FileChannelTest : public osl::test::LoggerTest {
protected:
    void SetUp() override {
        LoggerTest::SetUp();
        path_ = dir_.file("run.log");
    }
    template <class Channel = CChannelCommonFile>
    Channel* add(const std::string& path, std::uint32_t maxSize = 0, const std::string& category = "") {
        auto* channel = new Channel(path, SevInfo, category);
        if (maxSize != 0) channel->SetMaxSize(maxSize);
        log_->AddChannel(channel);
        return channel;
    }
    static void line(const std::string& text) { OslLogPrint(SevInfo, "", "t", text); }

    osl::test::ScopedTimeZone tz_{"UTC"};
    osl::test::FakeClock clock_{2024, 3, 5, 14, 7, 9};
    osl::test::TempDir dir_;
    std::string path_;
};

// The header written and read back, and the backup names, show in the channel tests below.
TEST(LogFileFormatTest, MalformedHeadersAreNotRead) {
    std::int64_t created = 0;
    for (const char* bad : {"LOX 1 00 20240305140709", "LOG 1 00 202403051407", "LOG x", "A header that is not"}) {
        SCOPED_TRACE(bad);
        EXPECT_FALSE(LogFile::parseHeader((std::string(bad) + std::string(80, ' ')).c_str(), created));
    }
}

// A new file, and an empty one that exists, start with the header.
TEST_F(FileChannelTest, FilesStartWithTheHeaderAndLinesEndInCrLf) {
    writeFile(dir_.file("empty.log"), "");
    add(path_);
    add(dir_.file("empty.log"));
    line("first");
    line("second");
    for (const std::string& file : {path_, dir_.file("empty.log")}) {
        ASSERT_EQ(readFile(file).substr(0, 83), "LOG 1 00 20240305140709" + std::string(81 - 23, ' ') + "\r\n");
        const std::vector<std::string> all = fileLines(file);
        ASSERT_EQ(all.size(), 3u);
        EXPECT_EQ(body(all[1]), "first");
        EXPECT_EQ(body(all[2]), "second");
    }
}

// Backup names never collide: a name taken moves on by a microsecond.
TEST_F(FileChannelTest, RotatesBySizeBeforeTheNextLine) {
    clock_.advance(0, 999999);
    CChannelCommonFile* channel = add(path_, 1000);
    int n = 0;
    while (n == 0 || std::filesystem::file_size(path_) <= 1000) {
        line("line " + std::to_string(n++));
        ASSERT_TRUE(backupsOf(path_).empty());
    }
    const std::string full = readFile(path_);
    line("after");
    std::vector<std::string> backups = backupsOf(path_);
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(backups[0], dir_.file("run_2024_03_05_14_07_09_999999.bak"));
    EXPECT_EQ(readFile(backups[0]), full);
    const std::vector<std::string> now = fileLines(path_);
    ASSERT_EQ(now.size(), 2u);
    EXPECT_EQ(body(now[1]), "after");
    channel->SetMaxSize(10);
    line("rotates");
    line("rotates again");
    backups = backupsOf(path_);
    ASSERT_EQ(backups.size(), 3u);
    EXPECT_EQ(backups[1], dir_.file("run_2024_03_05_14_07_10_000000.bak"));
    EXPECT_EQ(backups[2], dir_.file("run_2024_03_05_14_07_10_000001.bak"));
}

// A file without a header has no known age: it rotates only by size.
TEST_F(FileChannelTest, RotatesByAgeAfterWholeDaysIfTheHeaderTellsTheAge) {
    const std::string headerless = dir_.file("old.log");
    writeFile(headerless, std::string(48, 'x') + "\r\n");
    CChannelCommonFile* channel = add(path_);
    CChannelCommonFile* old = add(headerless);
    channel->SetPeriod(1);
    old->SetPeriod(1);
    line("day one");
    clock_.advance(86399);
    line("still day one");
    EXPECT_TRUE(backupsOf(path_).empty());
    clock_.advance(1);
    line("day two");
    const std::vector<std::string> backups = backupsOf(path_);
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(backups[0], dir_.file("run_2024_03_06_14_07_09_000000.bak"));
    EXPECT_EQ(fileLines(backups[0]).size(), 3u);
    const std::vector<std::string> now = fileLines(path_);
    ASSERT_EQ(now.size(), 2u);
    EXPECT_EQ(now[0].substr(0, 23), "LOG 1 00 20240306140709");
    EXPECT_TRUE(backupsOf(headerless).empty());
    old->SetMaxSize(100);
    line("now too big");
    EXPECT_EQ(backupsOf(headerless).size(), 1u);
}

TEST_F(FileChannelTest, RotationByAnotherWriterIsNoticed) {
    CChannelCommonFile* rotating = add(path_, 0, "a");
    add(path_, 0, "b");
    OslLogPrint(SevInfo, "b", "t", "b before");
    rotating->SetMaxSize(10);
    OslLogPrint(SevInfo, "a", "t", "a rotates");
    OslLogPrint(SevInfo, "b", "t", "b after");
    const std::vector<std::string> backups = backupsOf(path_);
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_EQ(fileLines(backups[0]).size(), 2u);
    const std::vector<std::string> now = fileLines(path_);
    ASSERT_EQ(now.size(), 3u);
    EXPECT_EQ(body(now[1]), "a rotates");
    EXPECT_EQ(body(now[2]), "b after");
}

// Within a second the channel sees what other programs did to the file: removed it (created
// again, with its header), or appended to it (counted towards the size limit).
TEST_F(FileChannelTest, ChangesByOtherProgramsShowWithinASecond) {
    CChannelCommonFile* channel = add(path_);
    line("first");
    std::filesystem::remove(path_);
    clock_.advance(2);
    line("second");
    std::vector<std::string> now = fileLines(path_);
    ASSERT_EQ(now.size(), 2u);
    EXPECT_EQ(now[0].substr(0, 23), "LOG 1 00 20240305140711");
    channel->SetMaxSize(1000);
    line("third");
    std::ofstream(path_, std::ios::app) << std::string(2000, 'x') << "\r\n";
    clock_.advance(2);
    line("fourth");
    EXPECT_EQ(backupsOf(path_).size(), 1u);
    EXPECT_EQ(fileLines(path_).size(), 2u);
}

TEST_F(FileChannelTest, RetentionByCountAndByAgeSparesAnotherLogsBackups) {
    // "run.txt" backs up to "run_*.bak" too: its backup must outlive our retention.
    add(dir_.file("run.txt"), 10, "txt");
    OslLogPrint(SevInfo, "txt", "t", "first");
    OslLogPrint(SevInfo, "txt", "t", "rotates");
    const std::string othersBackup = dir_.file("run_2024_03_05_14_07_09_000000.bak");
    CChannelCommonFile* channel = add(path_, 10);
    for (int i = 0; i < 5; ++i) {
        clock_.advance(86400);
        line("line " + std::to_string(i));
    }
    EXPECT_EQ(backupsOf(path_).size(), 5u);  // backups stay unless asked otherwise
    channel->SetPurgeCount(2);
    line("purge by count");
    EXPECT_EQ(backupsOf(path_), (std::vector<std::string>{othersBackup, dir_.file("run_2024_03_10_14_07_09_000000.bak"),
                                                           dir_.file("run_2024_03_10_14_07_09_000001.bak")}));
    channel->SetPurgeCount(0);
    channel->SetPurgeAge(1);
    clock_.advance(86400);
    line("purge by age");
    EXPECT_EQ(backupsOf(path_), (std::vector<std::string>{othersBackup, dir_.file("run_2024_03_11_14_07_09_000000.bak")}));
}

TEST_F(FileChannelTest, PrivateFileCarriesTheProcessId) {
    auto* channel = add<CChannelPrivateFile>(path_, 100);
    const std::string mine = dir_.file("run_" + std::to_string(osl::platform::currentProcessId()) + ".log");
    EXPECT_EQ(channel->GetFileName(), mine);
    line("one");
    line("two");
    EXPECT_EQ(fileLines(mine).size(), 2u);
    EXPECT_EQ(backupsOf(mine).size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(path_));
    EXPECT_FALSE(std::filesystem::exists(mine + ".lock"));
}

TEST_F(FileChannelTest, ALineThatCannotBeWrittenThrows) {
    CChannelCommonFile channel(dir_.file("missing/run.log"), SevInfo, "");
    log_->AddChannel(new CChannelFunc(osl::test::captureLine, SevInfo, ""));
    line("builds the line");
    CLogMsg msg("t", "", SevInfo);
    msg.Log("unused");
    EXPECT_THROW(channel.Write(msg), QIBError);
}

}  // namespace
