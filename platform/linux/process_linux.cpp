// platform/linux/process_linux.cpp
// Process and thread ids, cached: every log line asks for both, and getpid(2) is a real system
// call. A fork handler makes the child ask the kernel again.
#include "platform/process.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

namespace osl::platform {
namespace {

std::atomic<unsigned> forkGeneration{1};
std::atomic<int> cachedPid{0};

void afterFork() {
    cachedPid.store(0, std::memory_order_relaxed);
    forkGeneration.fetch_add(1, std::memory_order_relaxed);
}

void watchForks() {
    static const bool registered = pthread_atfork(nullptr, nullptr, afterFork) == 0;
    (void)registered;
}

}  // namespace

int currentProcessId() {
    int pid = cachedPid.load(std::memory_order_relaxed);
    if (pid == 0) {
        watchForks();
        pid = static_cast<int>(getpid());
        cachedPid.store(pid, std::memory_order_relaxed);
    }
    return pid;
}

long currentThreadId() {
    thread_local unsigned generation = 0;
    thread_local long id = 0;
    const unsigned now = forkGeneration.load(std::memory_order_relaxed);
    if (generation != now) {
        watchForks();
        id = static_cast<long>(syscall(SYS_gettid));
        generation = now;
    }
    return id;
}

}  // namespace osl::platform
