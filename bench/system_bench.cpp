// bench/system_bench.cpp
// Running /bin/true and waiting for it: Osl_System with a time-out beside bare posix_spawn +
// waitpid and POCO's Process::launch; then the same from a parent holding 1 GiB of touched memory,
// where fork+exec pays for copying the page tables and posix_spawn does not.
#include <vum-qib-osl/misc/osl_system.h>

#include <Poco/Process.h>
#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

extern char** environ;

namespace {

constexpr std::size_t kLargeParent = std::size_t{1} << 30;

int spawnAndWait() {
    char program[] = "/bin/true";
    char* argv[] = {program, nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, program, nullptr, nullptr, argv, environ) != 0) return -1;
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

int forkExecAndWait() {
    const pid_t pid = fork();
    if (pid == 0) {
        execl("/bin/true", "/bin/true", static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return status;
}

// 1 GiB that the parent has written to, so that each page is mapped; kept for the rest of the run.
void holdLargeMemory() {
    static void* memory = nullptr;
    if (memory != nullptr) return;
    memory =
        mmap(nullptr, kLargeParent, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    std::memset(memory, 1, kLargeParent);
}

template <bool kLarge>
void BM_Osl(benchmark::State& state) {
    if (kLarge) holdLargeMemory();
    for (auto _ : state) benchmark::DoNotOptimize(Osl_System("/bin/true", 10));
}

template <bool kLarge>
void BM_PosixSpawn(benchmark::State& state) {
    if (kLarge) holdLargeMemory();
    for (auto _ : state) benchmark::DoNotOptimize(spawnAndWait());
}

void BM_Poco(benchmark::State& state) {
    for (auto _ : state) {
        Poco::ProcessHandle handle = Poco::Process::launch("/bin/true", {});
        benchmark::DoNotOptimize(handle.wait());
    }
}

void BM_ForkExec(benchmark::State& state) {
    holdLargeMemory();
    for (auto _ : state) benchmark::DoNotOptimize(forkExecAndWait());
}

}  // namespace

// The small parent first: the large memory, once taken, stays.
BENCHMARK_TEMPLATE(BM_Osl, false)->Name("run_true/osl")->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_PosixSpawn, false)
    ->Name("run_true/posix_spawn")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Poco)->Name("run_true/poco")->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_Osl, true)->Name("run_true_1GiB_parent/osl")->Unit(benchmark::kMicrosecond);
BENCHMARK_TEMPLATE(BM_PosixSpawn, true)
    ->Name("run_true_1GiB_parent/posix_spawn")
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_ForkExec)->Name("run_true_1GiB_parent/fork_exec")->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
