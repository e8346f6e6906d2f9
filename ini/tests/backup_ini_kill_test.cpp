// ini/tests/backup_ini_kill_test.cpp
// A process that flushes a BackupIni in a loop is killed (SIGKILL) at random moments; the file
// must always load and hold one of the two tables the process writes, never a mixture.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <string>
#include <thread>

#include "ini/tests/flush_tables.h"
#include "tests/support/temp_dir.h"

namespace {

constexpr int kKeys = 100;  // ten groups of them: about 75 KB per flush

std::string canonicalText(const osl::test::TempDir& dir, int generation) {
    Ini ini("", false);
    osl::test::fillTable(ini, kKeys, generation);
    const std::string path = dir.file("expected" + std::to_string(generation) + ".ini");
    ini.FlushIniDataToFile(path);
    return osl::test::readFile(path);
}

TEST(BackupIniKillTest, KilledFlushLeavesOldOrNewTable) {
    osl::test::TempDir dir;
    const std::string generation0 = canonicalText(dir, 0);
    const std::string generation1 = canonicalText(dir, 1);
    const std::string file = dir.file("config.ini");
    osl::test::writeFile(file, generation0);

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> delayMicroseconds(0, 200000);
    int sawNew = 0;
    for (int round = 0; round < 50; ++round) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            execl(OSL_INI_FLUSH_CHILD, OSL_INI_FLUSH_CHILD, file.c_str(), std::to_string(kKeys).c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
        ASSERT_EQ(kill(child, SIGKILL), 0);
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself with status " << WEXITSTATUS(status);

        const std::string text = osl::test::readFile(file);
        ASSERT_TRUE(text == generation0 || text == generation1)
            << "round " << round << ": file of " << text.size() << " bytes holds neither table";
        Ini loaded;
        ASSERT_NO_THROW(loaded.Load(file, true));
        if (text == generation1) ++sawNew;
    }
    // Without flushes that completed, the test would prove nothing about replacement.
    EXPECT_GT(sawNew, 0);
}

}  // namespace
