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

#include "tests/support/temp_dir.h"

namespace {

constexpr int kKeys = 100;  // ten groups of them: about 65 KB per flush

pid_t startWriter(const std::string& file, int firstGeneration, int flushes) {
    const pid_t child = fork();
    if (child == 0) {
        execl(OSL_INI_FLUSH_CHILD, OSL_INI_FLUSH_CHILD, file.c_str(), std::to_string(kKeys).c_str(),
              std::to_string(firstGeneration).c_str(), std::to_string(flushes).c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    return child;
}

bool exitedCleanly(pid_t child) {
    int status = 0;
    return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(BackupIniKillTest, TwoWritersFinishedOrKilledLeaveOneWholeTable) {
    osl::test::TempDir dir;
    // Generations 0 and 1 come from the first writer, 2 and 3 from the second.
    std::set<std::string> tables;
    for (int generation = 0; generation < 4; ++generation) {
        const std::string path = dir.file("expected" + std::to_string(generation) + ".ini");
        osl::test::writeFile(path, "[group0]\n");
        ASSERT_TRUE(exitedCleanly(startWriter(path, generation - 1, 1)));  // one flush: generation FIRST + 1
        tables.insert(osl::test::readFile(path));
    }
    ASSERT_EQ(tables.size(), 4u);
    const std::string file = dir.file("config.ini");
    osl::test::writeFile(file, *tables.begin());

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_int_distribution<int> delayMicroseconds(0, 200000);
    for (int round = 0; round <= 30; ++round) {
        const int flushes = round == 0 ? 100 : 0;  // first 100 flushes each to the end, then killed at random
        const pid_t writers[] = {startWriter(file, 0, flushes), startWriter(file, 2, flushes)};
        if (flushes == 0) std::this_thread::sleep_for(std::chrono::microseconds(delayMicroseconds(random)));
        for (const pid_t child : writers) {
            ASSERT_GT(child, 0);
            if (flushes == 0) kill(child, SIGKILL);
            ASSERT_TRUE(flushes == 0 ? waitpid(child, nullptr, 0) == child : exitedCleanly(child)) << "a writer failed";
        }
        const std::string text = osl::test::readFile(file);
        ASSERT_EQ(tables.count(text), 1u) << "round " << round << ": " << text.size() << " bytes, no whole table";
        Ini loaded;
        ASSERT_NO_THROW(loaded.Load(file, true));
    }
}

}  // namespace
