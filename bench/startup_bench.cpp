// bench/startup_bench.cpp
// The whole start of qibosl (`qibosl version`: load the library, register the versions, print
// them, exit) against `iconv --version`, a small program of the base system: the floor of
// starting any process here. Both are spawned the same way, their output to /dev/null.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

extern char** environ;

namespace {

void spawnAndWait(benchmark::State& state, std::vector<std::string> words) {
    std::vector<char*> argv;
    for (std::string& w : words) argv.push_back(w.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
            state.SkipWithError("cannot start the program");
            break;
        }
        int status = 0;
        waitpid(pid, &status, 0);
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
            state.SkipWithError("the program failed");
            break;
        }
    }
    posix_spawn_file_actions_destroy(&actions);
}

void osl(benchmark::State& state) { spawnAndWait(state, {OSL_QIBOSL_PATH, "version"}); }
void iconvVersion(benchmark::State& state) { spawnAndWait(state, {"iconv", "--version"}); }

BENCHMARK(osl)->Name("process_start_version/osl")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(iconvVersion)->Name("process_start_version/iconv")->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
