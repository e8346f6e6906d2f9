// platform/child_process.h
// Starting a program without a shell, waiting for it with a time-out, and killing it with
// everything it started. Also the shell-run of a command line.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace osl::platform {

/// Where a started program lives among the process groups.
enum class ChildGroup {
    Caller,      ///< the caller's process group and session (a terminal's interrupt reaches it)
    OwnGroup,    ///< a process group of its own, so that killGroup reaches all it starts
    OwnSession,  ///< a session of its own (setsid): detached from the caller's terminal
};

/// One started program. From `start` until the program is reaped or detached, SIGCHLD has its
/// default action in the whole process: a caller's SIG_IGN or own handler can neither discard nor
/// take the exit status. Then the caller's action returns; a handler is invoked once (SIGCHLD
/// sent to the process) to see what ended meanwhile, and under SIG_IGN the children that ended
/// meanwhile are reaped. Only a waitpid(-1) on another thread can still take the status.
/// Not copyable; one object belongs to one thread.
class ChildProcess {
public:
    ChildProcess() = default;
    /// A program still running is handed to `detach`.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Starts args[0] with the arguments args[1...] through posix_spawnp (PATH when the name has no
    /// "/"), with the caller's environment, directory, signal mask and descriptors that are not
    /// close-on-exec; SIGCHLD and SIGPIPE start with their default actions. Costs the same
    /// whatever memory the caller holds. Returns the errno of the failure (ENOENT for a program
    /// that is not there), and then nothing runs.
    std::error_code start(const std::vector<std::string>& args, ChildGroup group);

    /// Waits until the program ends, at most `limit` (no limit when empty), asleep on a process
    /// descriptor (kernels before 5.3 have none: there it looks with short pauses).
    /// The result: the exit code, 128 + the signal number for a program ended by a signal, -1
    /// when the status cannot be read. Empty when the limit passed first; the program runs on.
    std::optional<int> wait(std::optional<std::chrono::milliseconds> limit);

    /// Sends SIGKILL to the program and its process group (started with OwnGroup),
    /// reaps the program, and waits (a few seconds at most) until every other member of the
    /// group has ended too. A descendant that left the group (setsid, a daemon) is not followed.
    void killGroup();

    /// Lets the program run on; it is reaped in the background when it ends, so no zombie stays.
    void detach();

private:
    void forget();

    int pid_ = -1;
    int pidfd_ = -1;        // -1 where the kernel has no process descriptors
    bool waiting_ = false;  // holds the SIGCHLD default
};

/// Runs the command line through /bin/sh -c (system(3)) and returns system's result unchanged:
/// the wait status (exit code × 256 for a normal end), -1 when no process could be created or
/// its status read, and for a null command whether a shell is available.
int runShellCommand(const char* command);

}  // namespace osl::platform
