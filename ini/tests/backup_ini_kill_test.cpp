// ini/tests/backup_ini_kill_test.cpp
// Two processes flush the same BackupIni file, each switching between two tables of its own;
// they finish or are killed (SIGKILL) at random moments. The file must always load and hold one
// of the four tables whole.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <set>
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

pid_t startWriter(const std::string& file, int firstGeneration, int flushes) {
    const pid_t child = fork();
    if (child == 0) {
        execl(OSL_INI_FLUSH_CHILD, OSL_INI_FLUSH_CHILD, file.c_str(), std::to_string(kKeys).c_str(),
              std::to_string(firstGeneration).c_str(), std::to_string(flushes).c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    return child;
}

TEST(BackupIniKillTest, TwoWritersFinishedOrKilledLeaveOneWholeTable) {
    osl::test::TempDir dir;
    std::set<std::string> tables;
    for (int generation = 0; generation < 4; ++generation) tables.insert(canonicalText(dir, generation));
    const std::string file = dir.file("config.ini");
    osl::test::writeFile(file, *tables.begin());

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> delayMicroseconds(0, 200000);
    const struct {
        const char* trace;
        int rounds;
        int flushes;  // 0: until killed
    } cases[] = {{"100 flushes each, to the end", 1, 100}, {"killed at random", 30, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.trace);
        for (int round = 0; round < c.rounds; ++round) {
            const pid_t writers[] = {startWriter(file, 0, c.flushes), startWriter(file, 2, c.flushes)};
            if (c.flushes == 0) std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
            for (const pid_t child : writers) {
                ASSERT_GT(child, 0);
                if (c.flushes == 0) kill(child, SIGKILL);
                int status = 0;
                ASSERT_EQ(waitpid(child, &status, 0), child);
                if (c.flushes != 0) {
                    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a writer failed";
                }
            }
            const std::string text = osl::test::readFile(file);
            ASSERT_EQ(tables.count(text), 1u) << "round " << round << ": " << text.size() << " bytes, no whole table";
            Ini loaded;
            ASSERT_NO_THROW(loaded.Load(file, true));
        }
    }
}

}  // namespace
