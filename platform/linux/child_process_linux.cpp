// platform/linux/child_process_linux.cpp
// Programs started the way posix_spawn starts them (a child sharing our memory until it has
// called execve, so nothing is copied however large the caller is), but with clone(2) and no
// exit signal: posix_spawn's children end with SIGCHLD, which a caller's SIG_IGN turns into
// automatic reaping (the status is lost) and which a caller's own handler may reap first. A child
// without exit signal is only seen by waitpid with __WALL, i.e. by us.
#include "platform/child_process.h"

#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <thread>

extern char** environ;

namespace osl::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kChildStack = 64 * 1024;
constexpr std::size_t kReaperStack = 64 * 1024;
constexpr auto kGroupEndLimit = std::chrono::seconds(5);

// What the child needs, prepared by the parent: between clone and execve the child may only make
// system calls (it runs on the parent thread's memory and thread-local storage).
struct StartRequest {
    char* const* args;
    char* const* paths;  // the candidates for args[0], in search order
    char* const* environment;
    sigset_t callerMask;
    ChildGroup group;
    std::atomic<int> error{0};
};

// The kernel's own sigaction layout (x86-64, arm64): the C library's differs and its sigaction()
// is intercepted by sanitizers, whose bookkeeping the child must not touch.
struct KernelSigaction {
    void (*handler)(int);
    unsigned long flags;
    void (*restorer)();
    unsigned long mask;
};
constexpr unsigned long kKernelSigsetSize = sizeof(unsigned long);
constexpr int kSignals = 64;

bool searchGoesOn(int error) {
    // As execvp: these mean "not in this directory"; anything else ends the search.
    return error == ENOENT || error == ENOTDIR || error == ESTALE || error == ENODEV || error == ETIMEDOUT;
}

__attribute__((no_sanitize("address", "thread", "undefined"))) int startInChild(void* arg) {
    auto* request = static_cast<StartRequest*>(arg);
    // Our handlers must not run in the child: a signal arriving before execve gets the default
    // action. Ignored signals stay ignored, as execve keeps them.
    for (int sig = 1; sig <= kSignals; ++sig) {
        KernelSigaction action{};
        if (syscall(SYS_rt_sigaction, sig, nullptr, &action, kKernelSigsetSize) != 0) continue;
        if (action.handler == SIG_DFL || action.handler == SIG_IGN) continue;
        KernelSigaction byDefault{};
        syscall(SYS_rt_sigaction, sig, &byDefault, nullptr, kKernelSigsetSize);
    }
    int error = 0;
    if (request->group == ChildGroup::OwnSession && syscall(SYS_setsid) < 0) error = errno;
    if (request->group == ChildGroup::OwnGroup && syscall(SYS_setpgid, 0, 0) != 0) error = errno;
    if (error == 0) {
        syscall(SYS_rt_sigprocmask, SIG_SETMASK, &request->callerMask, nullptr, kKernelSigsetSize);
        bool denied = false;
        error = ENOENT;
        for (char* const* path = request->paths; *path != nullptr; ++path) {
            syscall(SYS_execve, *path, request->args, request->environment);
            error = errno;
            if (error == EACCES) {
                denied = true;
            } else if (!searchGoesOn(error)) {
                denied = false;
                break;
            }
        }
        if (denied) error = EACCES;
    }
    request->error.store(error);
    syscall(SYS_exit, 127);
    return 127;
}

std::vector<std::string> programPaths(const std::string& name) {
    if (name.find('/') != std::string::npos) return {name};
    const char* path = getenv("PATH");  // NOLINT(concurrency-mt-unsafe): read once, as execvp does
    const std::string dirs = path != nullptr ? path : "/bin:/usr/bin";
    std::vector<std::string> paths;
    std::size_t begin = 0;
    for (;;) {
        const std::size_t end = dirs.find(':', begin);
        const std::string dir = dirs.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
        paths.push_back((dir.empty() ? "." : dir) + "/" + name);
        if (end == std::string::npos) return paths;
        begin = end + 1;
    }
}

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (const std::string& text : texts) result.push_back(const_cast<char*>(text.c_str()));
    result.push_back(nullptr);
    return result;
}

int resultOf(int status) {
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
}

int reap(int pid) {
    int status = 0;
    for (;;) {
        if (waitpid(pid, &status, __WALL) == pid) return resultOf(status);
        if (errno != EINTR) return -1;
    }
}

int openProcess(int pid) {
#ifdef SYS_pidfd_open
    return static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
#else
    (void)pid;
    errno = ENOSYS;
    return -1;
#endif
}

int pollMilliseconds(Clock::duration left) {
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return ms > INT_MAX ? INT_MAX : static_cast<int>(ms);
}

void* reapInBackground(void* pid) {
    reap(static_cast<int>(reinterpret_cast<std::intptr_t>(pid)));
    return nullptr;
}

// A small detached thread with every signal blocked, so that the caller's process-directed
// signals never land on it.
bool startReaper(int pid) {
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0) return false;
    sigset_t all;
    sigfillset(&all);
    pthread_attr_setstacksize(&attr, kReaperStack);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_attr_setsigmask_np(&attr, &all);
    pthread_t thread;
    const bool started = pthread_create(&thread, &attr, reapInBackground,
                                        reinterpret_cast<void*>(static_cast<std::intptr_t>(pid))) == 0;
    pthread_attr_destroy(&attr);
    return started;
}

// The members of process group `group` that have not ended (zombies have).
std::vector<int> liveMembers(int group) {
    std::vector<int> members;
    std::error_code ec;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ec)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream stat(entry.path() / "stat");
        std::string line;
        if (!std::getline(stat, line)) continue;
        // "pid (comm) state ppid pgrp ...": comm may hold blanks and parentheses.
        const std::size_t close = line.rfind(')');
        if (close == std::string::npos) continue;
        char state = 0;
        int parent = 0;
        int pgrp = 0;
        if (std::sscanf(line.c_str() + close + 1, " %c %d %d", &state, &parent, &pgrp) != 3) continue;
        if (pgrp == group && state != 'Z' && state != 'X') members.push_back(std::stoi(name));
    }
    return members;
}

void waitForGroupEnd(int group) {
    const Clock::time_point deadline = Clock::now() + kGroupEndLimit;
    for (;;) {
        const std::vector<int> members = liveMembers(group);
        if (members.empty() || Clock::now() >= deadline) return;
        std::vector<pollfd> ends;
        for (int pid : members) {
            const int fd = openProcess(pid);
            if (fd >= 0) ends.push_back({fd, POLLIN, 0});
        }
        if (ends.empty()) {
            // No process descriptors here (or the members ended meanwhile): look again shortly.
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
            continue;
        }
        poll(ends.data(), ends.size(), pollMilliseconds(deadline - Clock::now()));
        for (const pollfd& end : ends) close(end.fd);
    }
}

}  // namespace

ChildProcess::~ChildProcess() { detach(); }

std::error_code ChildProcess::start(const std::vector<std::string>& args, ChildGroup group) {
    if (args.empty() || args[0].empty()) return {ENOENT, std::generic_category()};
    const std::vector<char*> argv = pointers(args);
    const std::vector<std::string> paths = programPaths(args[0]);
    const std::vector<char*> pathv = pointers(paths);
    StartRequest request{argv.data(), pathv.data(), environ, {}, group};

    void* stack = mmap(nullptr, kChildStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (stack == MAP_FAILED) return {errno, std::generic_category()};
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &request.callerMask);
    // CLONE_VFORK: we go on once the child has called execve or ended.
    const int pid = clone(startInChild, static_cast<char*>(stack) + kChildStack, CLONE_VM | CLONE_VFORK, &request);
    const int cloneError = errno;
    pthread_sigmask(SIG_SETMASK, &request.callerMask, nullptr);
    munmap(stack, kChildStack);
    if (pid < 0) return {cloneError, std::generic_category()};
    if (const int error = request.error.load(); error != 0) {
        reap(pid);
        return {error, std::generic_category()};
    }
    pid_ = pid;
    // Race-free: a child without exit signal stays ours (at worst a zombie) until we reap it.
    pidfd_ = openProcess(pid);
    return {};
}

std::optional<int> ChildProcess::wait(std::optional<std::chrono::milliseconds> limit) {
    if (pid_ < 0) return -1;
    if (limit) {
        const Clock::time_point deadline = Clock::now() + *limit;
        for (int pause = 1;; pause = std::min(pause * 2, 50)) {
            const Clock::duration left = deadline - Clock::now();
            if (pidfd_ >= 0) {
                pollfd end{pidfd_, POLLIN, 0};
                const int ready = poll(&end, 1, left > Clock::duration::zero() ? pollMilliseconds(left) : 0);
                if (ready > 0) break;
                if (ready < 0 && errno != EINTR) return -1;
                if (ready == 0 && Clock::now() >= deadline) return std::nullopt;
            } else {
                // Kernels before 5.3 have no process descriptors: look with growing pauses.
                int status = 0;
                const int found = waitpid(pid_, &status, WNOHANG | __WALL);
                if (found == pid_) {
                    pid_ = -1;
                    return resultOf(status);
                }
                if (found < 0 && errno != EINTR) return -1;
                if (left <= Clock::duration::zero()) return std::nullopt;
                std::this_thread::sleep_for(std::min<Clock::duration>(std::chrono::milliseconds(pause), left));
            }
        }
    }
    const int result = reap(pid_);
    pid_ = -1;
    if (pidfd_ >= 0) close(pidfd_);
    pidfd_ = -1;
    return result;
}

void ChildProcess::killGroup() {
    if (pid_ < 0) return;
    const int group = pid_;
    kill(-group, SIGKILL);
    wait(std::nullopt);
    waitForGroupEnd(group);
}

void ChildProcess::detach() {
    if (pidfd_ >= 0) close(pidfd_);
    pidfd_ = -1;
    // Should no thread be available, the program ends as a zombie that stays until we exit.
    if (pid_ >= 0) startReaper(pid_);
    pid_ = -1;
}

int runShellCommand(const char* command) {
    return system(command);  // NOLINT(concurrency-mt-unsafe, cert-env33-c): the shell is the point
}

}  // namespace osl::platform
