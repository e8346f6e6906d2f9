// sync/tests/osl_lock_test.cpp
// Named locks within one process, in both scopes: shares, counts, surplus unlocks, log lines,
// the lock files and their collector.
#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/log/log.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/sync/osl_lock.h>
#include <vum-qib-osl/sync/osl_lock_computer_storage.h>
#include <vum-qib-osl/sync/osl_lock_process_storage.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <semaphore>
#include <sstream>
#include <thread>

#include "log/tests/daemon.h"
#include "tests/support/temp_dir.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using osl::test::waitFor;

std::mutex capturedGuard;  // guards capturedLines: the collector thread logs too
std::vector<std::string> capturedLines;
void capture(const char* line) {
    std::lock_guard guard(capturedGuard);
    capturedLines.emplace_back(line);
}
// The logged lines from the severity tag on ("-INFO  OslLock::Lock : ..."), and forgets them.
std::vector<std::string> takeLines() {
    std::lock_guard guard(capturedGuard);
    std::vector<std::string> tails;
    for (const std::string& line : capturedLines) tails.push_back(line.substr(line.find(" -") + 1));
    capturedLines.clear();
    return tails;
}
bool logged(const std::string& tail) { return std::ranges::count(takeLines(), tail) > 0; }

// A thread that takes a lock and holds it until released (or destroyed).
struct Holder {
    Holder(OslLock lock, OslLockShare share)
        : thread_([this, lock, share]() mutable {
              lock.Lock(share);
              locked_.release();
              release_.acquire();
              lock.Unlock(share);
          }) {}
    ~Holder() { release(); }
    void waitLocked() { locked_.acquire(); }
    void release() {
        if (!thread_.joinable()) return;
        release_.release();
        thread_.join();
    }

    std::binary_semaphore locked_{0}, release_{0};  // before thread_, which uses them
    std::thread thread_;
};

class OslLockTest : public ::testing::TestWithParam<OslLockScope> {
protected:
    void SetUp() override {
        CLog::Instance()->SetFunctionChannel(capture, SevInfo, "*", false);
        OslLockComputerStorage::Instance()->SetLockPath(dir_.path().string());
        takeLines();
    }
    void TearDown() override {
        OslLockComputerStorage::Instance()->Destroy();
        OslLockProcessStorage::Instance()->Destroy();
        CLog::Instance()->SetFunctionChannel(capture, SevNone, "", false);
    }
    OslLock lock(const std::string& name) const { return OslLock(name, GetParam()); }

    osl::test::TempDir dir_;
};

TEST_P(OslLockTest, ShareTwoIsExclusiveInProcessScopeAndSharedInComputerScope) {
    OslLock a = lock("s");
    Holder holder(a, static_cast<OslLockShare>(2));
    holder.waitLocked();
    OslLock b = lock("s");
    const bool sharedTaken = b.TryLock(OslLockShareShared);
    EXPECT_EQ(sharedTaken, GetParam() == OslLockScopeComputer);
    if (sharedTaken) b.Unlock(OslLockShareShared);
    holder.release();
    EXPECT_EQ(a.GetNumCount(), 0);
    EXPECT_EQ(OslLockStorage::GetStorage(static_cast<OslLockScope>(2)), nullptr);
}

// The count is of holders and waiters alike.
TEST_P(OslLockTest, SharedHoldersKeepAWriterWaitingUntilBothUnlock) {
    OslLock a = lock("r");
    Holder first(a, OslLockShareShared);
    Holder second(a, OslLockShareShared);
    first.waitLocked();
    second.waitLocked();
    EXPECT_FALSE(a.TryLock(OslLockShareExclusive));
    EXPECT_EQ(a.GetNumCount(), 2);
    Holder writer(a, OslLockShareExclusive);
    EXPECT_TRUE(waitFor([&] { return a.GetNumCount() == 3; }));
    first.release();
    EXPECT_FALSE(a.TryLock(OslLockShareExclusive));
    second.release();
    writer.waitLocked();
    EXPECT_EQ(a.GetNumCount(), 1);
    writer.release();
    EXPECT_EQ(a.GetNumCount(), 0);
}

TEST_P(OslLockTest, SurplusUnlockReleasesNothing) {
    OslLock a = lock("u");
    a.Unlock(OslLockShareExclusive);
    EXPECT_EQ(a.GetNumCount(), 0);
    const bool computer = GetParam() == OslLockScopeComputer;
    EXPECT_EQ(logged("-WARN  FLock::Unlock : the Object was already unlocked! (" + dir_.file("u") + ")"), computer);
    // With a holder of the other kind, the count is above 0 but there is still nothing to release.
    Holder holder(a, OslLockShareExclusive);
    holder.waitLocked();
    a.Unlock(OslLockShareShared);
    EXPECT_EQ(a.GetNumCount(), 1);
    EXPECT_FALSE(a.TryLock(OslLockShareShared));
    holder.release();
    EXPECT_TRUE(a.TryLock(OslLockShareExclusive));
    a.Unlock(OslLockShareExclusive);
}

INSTANTIATE_TEST_SUITE_P(BothScopes, OslLockTest, ::testing::Values(OslLockScopeProcess, OslLockScopeComputer),
                         [](const auto& p) { return p.param == OslLockScopeProcess ? "Process" : "Computer"; });

using OslLockLogTest = OslLockTest;
INSTANTIATE_TEST_SUITE_P(Process, OslLockLogTest, ::testing::Values(OslLockScopeProcess));

TEST_P(OslLockLogTest, LogsEachOperationWithItsDetails) {
    OslLock a = lock("n");
    a.Lock(OslLockShareShared);
    a.TryLock(OslLockShareExclusive);
    a.Unlock(OslLockShareShared);
    const std::vector<std::string> expected = {
        "-INFO  OslLock::Lock : locking...  path:  name: n scope: 0 share: 1",
        "-INFO  OslLock::Lock : locked path:  name: n scope: 0 share: 1",
        "-INFO  OslLock::TryLock : try...  path:  name: n scope: 0 share: 0",
        "-INFO  OslLock::TryLock : FALSE path:  name: n scope: 0 share: 0",
        "-INFO  OslLock::Unlock : unlock path:  name: n scope: 0 share: 1",
    };
    std::vector<std::string> lines = takeLines();
    std::erase_if(lines, [](const std::string& l) { return l.find(" OslLock::") == std::string::npos; });
    EXPECT_EQ(lines, expected);  // the collector thread may log its start in between
}

TEST_P(OslLockLogTest, PrintListsEveryEntryInNameOrder) {
    OslLock b = lock("b");
    b.Lock(OslLockShareExclusive);
    EXPECT_EQ(lock("a").GetNumCount(), 0);
    EXPECT_EQ(OslLock("c", OslLockScopeComputer).GetNumCount(), 0);
    std::ostringstream out;
    OslLockStorage::Print(out);
    EXPECT_EQ(out.str(), "OslLockProcessStorage\na\t0\t\nb\t1\t\nOslLockComputerStorage\nc\t0\t\n");
    b.Unlock(OslLockShareExclusive);
}

using ComputerLockTest = OslLockTest;
INSTANTIATE_TEST_SUITE_P(Computer, ComputerLockTest, ::testing::Values(OslLockScopeComputer));

TEST_P(ComputerLockTest, CollectorDeletesTheFilesOfUnusedLocksOnly) {
    OslLock x = lock("x");
    OslLock y = lock("y");
    x.Lock(OslLockShareExclusive);
    y.Lock(OslLockShareExclusive);
    ASSERT_TRUE(fs::exists(dir_.file("x")));
    x.Unlock(OslLockShareExclusive);  // wakes the collector thread
    EXPECT_TRUE(waitFor([&] { return !fs::exists(dir_.file("x")); }));
    EXPECT_TRUE(fs::exists(dir_.file("y")));
    EXPECT_TRUE(waitFor([] {
        return logged("-INFO  OslLockComputerStorage::GarbageCollector : Garbage collector is finished, 1 items "
                      "were removed, 1 items were kept ");
    }));
    EXPECT_EQ(x.GetNumCount(), 0);
    EXPECT_TRUE(fs::exists(dir_.file("x")));
    y.Unlock(OslLockShareExclusive);

    // A file that another open holds stays: only the entry goes.
    Osl_File other(dir_.file("z"), Osl_File::mode_read_write | Osl_File::mode_create);
    other.lock(Osl_File::LockKind::shared);
    EXPECT_EQ(lock("z").GetNumCount(), 0);
    OslLockComputerStorage::Instance()->GarbageCollector();
    EXPECT_TRUE(fs::exists(dir_.file("z")));
    std::ostringstream out;
    OslLockComputerStorage::Instance()->Print(out);
    EXPECT_EQ(out.str().find("z\t"), std::string::npos);
}

TEST_P(ComputerLockTest, AnotherOpenOfTheFileExcludesAndItsWaiterCounts) {
    Osl_File other(dir_.file("f"), Osl_File::mode_read_write | Osl_File::mode_create);
    other.lock(Osl_File::LockKind::exclusive);
    OslLock f = lock("f");
    EXPECT_FALSE(f.TryLock(OslLockShareShared));
    Holder waiter(f, OslLockShareShared);
    EXPECT_TRUE(waitFor([&] { return f.GetNumCount() == 1; }));
    other.unlock();
    waiter.waitLocked();
    EXPECT_FALSE(other.try_lock(Osl_File::LockKind::exclusive));
}

TEST_P(ComputerLockTest, FirstPathWinsForAName) {
    const std::string a = dir_.file("a");
    const std::string b = dir_.file("b");
    fs::create_directory(a);
    fs::create_directory(b);
    OslLock first(a, "n");
    ASSERT_TRUE(first.Lock(OslLockShareExclusive));
    EXPECT_FALSE(OslLock(b, "n").TryLock(OslLockShareShared));
    EXPECT_FALSE(OslLock("n", OslLockScopeComputer).TryLock(OslLockShareShared));
    EXPECT_FALSE(fs::exists(b + "/n"));
    first.Unlock(OslLockShareExclusive);
    OslLockComputerStorage::Instance()->GarbageCollector();
    OslLock second(b, "n");
    ASSERT_TRUE(second.TryLock(OslLockShareExclusive));
    EXPECT_TRUE(fs::exists(b + "/n"));
    second.Unlock(OslLockShareExclusive);
}

TEST_P(ComputerLockTest, RefusesSymbolicLinks) {
    fs::create_directory(dir_.file("real"));
    fs::create_symlink(dir_.file("target"), dir_.file("planted"));
    fs::create_directory_symlink(dir_.file("real"), dir_.file("linked"));
    struct Case { std::string path, name, defaultDirectory, file; };  // path empty: the default directory
    const Case cases[] = {
        {dir_.path().string(), "planted", "", dir_.file("planted")},
        {"", "n", dir_.file("linked"), dir_.file("linked") + "/n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.file);
        if (!c.defaultDirectory.empty()) OslLockComputerStorage::Instance()->SetLockPath(c.defaultDirectory);
        OslLock l(c.path, c.name);
        try {
            l.Lock(OslLockShareExclusive);
            ADD_FAILURE() << "no error";
        } catch (const QIBError& e) {
            EXPECT_EQ(e, QIBError("OslLock: FLock::Init: Failed to open/create file" + c.file, 1, 8, "", 0));
            EXPECT_EQ(e.Where(), "sync\\src\\osl_lock_computer_storage 373");
        }
        l.Unlock(OslLockShareExclusive);  // logged, not thrown
    }
    EXPECT_FALSE(fs::exists(dir_.file("target")));
    EXPECT_FALSE(fs::exists(dir_.file("real/n")));
    EXPECT_TRUE(logged("-ERROR OslLock::Unlock : cannot unlock path:  name: n scope: 1 share: 0"));
    // A link the caller names as the lock's own directory is the caller's choice.
    OslLock chosen(dir_.file("linked"), "m");
    EXPECT_TRUE(chosen.TryLock(OslLockShareExclusive));
    EXPECT_TRUE(fs::exists(dir_.file("real/m")));
    chosen.Unlock(OslLockShareExclusive);
}

TEST_P(ComputerLockTest, RetriesOpeningUntilTheDirectoryAppears) {
    const std::string late = dir_.file("late");
    std::thread maker([&] {
        std::this_thread::sleep_for(1500ms);
        fs::create_directory(late);
    });
    OslLock l(late, "n");
    EXPECT_TRUE(l.Lock(OslLockShareExclusive));
    maker.join();
    l.Unlock(OslLockShareExclusive);
}

}  // namespace
