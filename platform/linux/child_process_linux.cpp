// platform/linux/child_process_linux.cpp
// posix_spawnp, a process descriptor to wait on, and the caller's SIGCHLD set aside while we wait.
// Every exec makes a child's end raise SIGCHLD; a caller's SIG_IGN turns that into automatic
// reaping (the status is lost) and a caller's handler may reap our child first. So while any of
// our waits runs, SIGCHLD has its default action; afterwards the caller's action comes back and
// learns what ended meanwhile.
#include "platform/child_process.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <thread>

extern char** environ;

namespace osl::platform {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kReaperStack = 64 * 1024;
constexpr auto kGroupEndLimit = std::chrono::seconds(5);

// SIGCHLD with its default action while at least one wait runs.
struct SigchldWindow {
    std::mutex lock;  // guards the rest
    int waits = 0;
    bool setAside = false;
    struct sigaction callers {};
};

SigchldWindow& window() {
    static SigchldWindow* instance = new SigchldWindow;
    return *instance;
}

bool discardsStatus(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == SIG_IGN;
}

void openWindow() {
    SigchldWindow& w = window();
    std::lock_guard<std::mutex> guard(w.lock);
    if (w.waits++ > 0) return;
    sigaction(SIGCHLD, nullptr, &w.callers);
    const bool byDefault =
        (w.callers.sa_flags & (SA_SIGINFO | SA_NOCLDWAIT)) == 0 && w.callers.sa_handler == SIG_DFL;
    if (byDefault) return;
    struct sigaction plain {};
    plain.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &plain, nullptr);
    w.setAside = true;
}

void closeWindow() {
    SigchldWindow& w = window();
    std::lock_guard<std::mutex> guard(w.lock);
    if (--w.waits > 0 || !w.setAside) return;
    w.setAside = false;
    sigaction(SIGCHLD, &w.callers, nullptr);
    if (discardsStatus(w.callers) || (w.callers.sa_flags & SA_NOCLDWAIT) != 0) {
        // Children that ended meanwhile would have left no zombie: take them now.
        while (waitpid(-1, nullptr, WNOHANG | __WALL) > 0) {
        }
    } else {
        kill(getpid(), SIGCHLD);  // the caller's handler looks at what ended meanwhile
    }
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

struct Detached {
    int pid;
    int pidfd;
};

void* reapInBackground(void* arg) {
    const Detached child = *static_cast<Detached*>(arg);
    delete static_cast<Detached*>(arg);
    if (child.pidfd < 0) {
        reap(child.pid);
        return nullptr;
    }
    // Through the descriptor: should the caller's SIG_IGN have reaped it already, its pid may
    // belong to someone else by now.
    siginfo_t info;
    while (waitid(P_PIDFD, static_cast<id_t>(child.pidfd), &info, WEXITED | __WALL) != 0 &&
           errno == EINTR) {
    }
    close(child.pidfd);
    return nullptr;
}

// A small detached thread with every signal blocked, so that the caller's process-directed
// signals never land on it.
bool startReaper(const Detached& child) {
    pthread_attr_t attr;
    if (pthread_attr_init(&attr) != 0) return false;
    sigset_t all;
    sigfillset(&all);
    pthread_attr_setstacksize(&attr, kReaperStack);
    pthread_attr_setdetachstate(&attr, PTHREAD_CREATE_DETACHED);
    pthread_attr_setsigmask_np(&attr, &all);
    auto* arg = new Detached(child);
    pthread_t thread;
    const bool started = pthread_create(&thread, &attr, reapInBackground, arg) == 0;
    pthread_attr_destroy(&attr);
    if (!started) delete arg;
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
        if (std::sscanf(line.c_str() + close + 1, " %c %d %d", &state, &parent, &pgrp) != 3)
            continue;
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

class SpawnAttributes {
public:
    explicit SpawnAttributes(ChildGroup group) {
        posix_spawnattr_init(&attr_);
        // SIGCHLD and SIGPIPE start with their default actions even where the caller ignores them.
        sigset_t reset;
        sigemptyset(&reset);
        sigaddset(&reset, SIGCHLD);
        sigaddset(&reset, SIGPIPE);
        posix_spawnattr_setsigdefault(&attr_, &reset);
        short flags = POSIX_SPAWN_SETSIGDEF;
        if (group == ChildGroup::OwnSession) flags |= POSIX_SPAWN_SETSID;
        if (group == ChildGroup::OwnGroup)
            flags |= POSIX_SPAWN_SETPGROUP;  // process group 0: its own
        posix_spawnattr_setflags(&attr_, flags);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&attr_); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* get() const { return &attr_; }

private:
    posix_spawnattr_t attr_;
};

}  // namespace

ChildProcess::~ChildProcess() { detach(); }

std::error_code ChildProcess::start(const std::vector<std::string>& args, ChildGroup group) {
    if (args.empty() || args[0].empty()) return {ENOENT, std::generic_category()};
    std::vector<char*> argv;
    argv.reserve(args.size() + 1);
    for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    const SpawnAttributes attributes(group);
    openWindow();
    pid_t pid = -1;
    if (const int error =
            posix_spawnp(&pid, argv[0], nullptr, attributes.get(), argv.data(), environ)) {
        closeWindow();
        return {error, std::generic_category()};
    }
    pid_ = pid;
    waiting_ = true;
    // Race-free: with SIGCHLD at its default nobody but a waitpid(-1) of the caller reaps it.
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
                const int ready =
                    poll(&end, 1, left > Clock::duration::zero() ? pollMilliseconds(left) : 0);
                if (ready > 0) break;
                if (ready < 0 && errno != EINTR) break;  // cannot wait with a limit: reap below
                if (ready == 0 && Clock::now() >= deadline) return std::nullopt;
            } else {
                // Kernels before 5.3 have no process descriptors: look with growing pauses.
                int status = 0;
                const int found = waitpid(pid_, &status, WNOHANG | __WALL);
                if (found == pid_ || (found < 0 && errno != EINTR)) {
                    const int result = found == pid_ ? resultOf(status) : -1;
                    forget();
                    return result;
                }
                if (left <= Clock::duration::zero()) return std::nullopt;
                std::this_thread::sleep_for(
                    std::min<Clock::duration>(std::chrono::milliseconds(pause), left));
            }
        }
    }
    const int result = reap(pid_);
    forget();
    return result;
}

void ChildProcess::killGroup() {
    if (pid_ < 0) return;
    const int group = pid_;
    kill(-group, SIGKILL);
    kill(pid_, SIGKILL);  // should it have left its group; the pid stays ours until reaped
    wait(std::nullopt);
    waitForGroupEnd(group);
}

void ChildProcess::detach() {
    if (pid_ < 0) return;
    // Should no thread be available, the program ends as a zombie that stays until we exit.
    if (!startReaper({pid_, pidfd_}) && pidfd_ >= 0) close(pidfd_);
    pidfd_ = -1;
    forget();
}

void ChildProcess::forget() {
    if (pidfd_ >= 0) close(pidfd_);
    pidfd_ = -1;
    pid_ = -1;
    if (waiting_) closeWindow();
    waiting_ = false;
}

int runShellCommand(const char* command) {
    return system(command);  // NOLINT(concurrency-mt-unsafe, cert-env33-c): the shell is the point
}

}  // namespace osl::platform
