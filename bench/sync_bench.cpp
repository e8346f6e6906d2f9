// bench/sync_bench.cpp
// An uncontended Lock+Unlock pair of a named lock against the primitives a user would take
// instead: in process scope a bare std::shared_mutex and POCO's RWLock, in computer scope a bare
// flock(2) pair on a file kept open and POCO's NamedMutex. The lock is taken exclusively.
#include <vum-qib-osl/sync/osl_lock.h>

#include <Poco/NamedMutex.h>
#include <Poco/RWLock.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <shared_mutex>
#include <string>

namespace {

// A directory of its own for the lock files, removed at the end of the run.
const std::string& lockDirectory() {
    static const std::string dir = [] {
        char name[] = "/tmp/osl_sync_bench_XXXXXX";
        const char* made = mkdtemp(name);
        std::string path = made != nullptr ? made : "/tmp";
        std::atexit([] { std::filesystem::remove_all(lockDirectory()); });
        return path;
    }();
    return dir;
}

void BM_ProcessPair_osl(benchmark::State& state) {
    OslLock lock("bench", OslLockScopeProcess);
    for (auto _ : state) {
        lock.Lock(OslLockShareExclusive);
        lock.Unlock(OslLockShareExclusive);
    }
}
BENCHMARK(BM_ProcessPair_osl)->Name("process_pair/osl");

void BM_ProcessPair_sharedMutex(benchmark::State& state) {
    std::shared_mutex mutex;
    for (auto _ : state) {
        mutex.lock();
        benchmark::ClobberMemory();
        mutex.unlock();
    }
}
BENCHMARK(BM_ProcessPair_sharedMutex)->Name("process_pair/shared_mutex");

void BM_ProcessPair_poco(benchmark::State& state) {
    Poco::RWLock lock;
    for (auto _ : state) {
        lock.writeLock();
        benchmark::ClobberMemory();
        lock.unlock();
    }
}
BENCHMARK(BM_ProcessPair_poco)->Name("process_pair/poco");

void BM_ComputerPair_osl(benchmark::State& state) {
    OslLock lock(lockDirectory(), "bench");
    for (auto _ : state) {
        if (!lock.Lock(OslLockShareExclusive)) state.SkipWithError("Lock failed");
        lock.Unlock(OslLockShareExclusive);
    }
}
BENCHMARK(BM_ComputerPair_osl)->Name("computer_pair/osl");

void BM_ComputerPair_flock(benchmark::State& state) {
    const std::string path = lockDirectory() + "/bare";
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    for (auto _ : state) {
        if (::flock(fd, LOCK_EX) != 0) state.SkipWithError("flock failed");
        ::flock(fd, LOCK_UN);
    }
    ::close(fd);
}
BENCHMARK(BM_ComputerPair_flock)->Name("computer_pair/flock");

void BM_ComputerPair_poco(benchmark::State& state) {
    Poco::NamedMutex mutex("osl_sync_bench");
    for (auto _ : state) {
        mutex.lock();
        mutex.unlock();
    }
}
BENCHMARK(BM_ComputerPair_poco)->Name("computer_pair/poco");

}  // namespace

BENCHMARK_MAIN();
