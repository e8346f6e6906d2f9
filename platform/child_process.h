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

/// One started program. Its end sends no SIGCHLD and stays invisible to waitpid(-1) without
/// __WALL, so a caller that ignores SIGCHLD or reaps in its own handler neither loses nor takes
/// its exit status. Not copyable; one object belongs to one thread.
class ChildProcess {
public:
    ChildProcess() = default;
    /// A program still running is handed to `detach`.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Starts args[0] with the arguments args[1...], found the way posix_spawnp finds it (PATH when
    /// the name has no "/", else the path itself; no shell for a file that is not a program),
    /// with the caller's environment, directory, signal mask, ignored signals and descriptors
    /// that are not close-on-exec. Costs the same whatever memory the caller holds (no page
    /// tables are copied). Returns the errno of the failure (ENOENT for a program that is not
    /// there), and then nothing runs.
    std::error_code start(const std::vector<std::string>& args, ChildGroup group);

    /// Waits until the program ends, at most `limit` (no limit when empty) and without polling.
    /// The result: the exit code, 128 + the signal number for a program ended by a signal, -1
    /// when the status cannot be read. Empty when the limit passed first; the program runs on.
    std::optional<int> wait(std::optional<std::chrono::milliseconds> limit);

    /// Sends SIGKILL to the program's process group (it must have been started with OwnGroup),
    /// reaps the program, and waits (a few seconds at most) until every other member of the
    /// group has ended too. A descendant that left the group (setsid, a daemon) is not followed.
    void killGroup();

    /// Lets the program run on; it is reaped in the background when it ends, so no zombie stays.
    void detach();

private:
    int pid_ = -1;
    int pidfd_ = -1;  // -1 where the kernel has no process descriptors
};

/// Runs the command line through /bin/sh -c (system(3)) and returns system's result unchanged:
/// the wait status (exit code × 256 for a normal end), -1 when no process could be created or
/// its status read, and for a null command whether a shell is available.
int runShellCommand(const char* command);

}  // namespace osl::platform
