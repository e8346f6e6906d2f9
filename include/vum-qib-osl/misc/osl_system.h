// External programs: a command line through the shell, or a program started directly with a
// time-out.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>

/// Runs the command line through /bin/sh -c (system(3)), waits for it without limit and returns
/// system's result unchanged: the wait status, so the command's exit code is the result / 256
/// (WEXITSTATUS); -1 when no shell could be started or its status read (for instance while the
/// process ignores SIGCHLD). A null command asks whether a shell is there (non-zero: yes).
/// Logs nothing. The text is bytes (UTF-8 in Unicode mode).
OSL_API int Osl_System(const char* command);
/// The same with the string's text.
OSL_API int Osl_System(const std::string& command);

/// Starts a program without a shell and waits for it at most `timeout` seconds:
/// - the command line is split into words at blanks and tabs; double quotes group words with
///   blanks ("a b" is one word) and are removed; a backslash escapes a double quote (\"), and
///   2n backslashes before a quote give n backslashes. The first word names the program, searched
///   in PATH when it holds no "/". Pipes, redirections and variables are not interpreted.
/// - the program gets the caller's environment, directory and standard descriptors.
/// - `timeout` > 0: the program runs in a process group of its own; when it outlives the time-out
///   it and everything it started in that group are killed (SIGKILL), and have ended when the call
///   returns; the result is -666. 0: no limit (and the program stays in the
///   caller's process group). < 0: the call returns 0 once the program has started, and the
///   program runs on (-2: in a session of its own); it is reaped when it ends.
/// Result: the exit code; 128 + the signal number for a program ended by a signal; -1 when the
/// status cannot be read; -666 after a time-out; when the program cannot be started, the errno
/// value (2: not found, 13: not executable, 7: a command longer than 2047 characters - UTF-16
/// units in Unicode mode, bytes otherwise - which is refused rather than cut).
/// Logs "FullCommand: " + the command (info, at "System") first; a start failure and a time-out
/// as errors: "Failed to invoke extern program (CMD)  Because Error(N) TEXT" and "Time out elapced
/// for extern program executing (CMD)  Because timeout: T sec". Never throws for a failure of the
/// command. Safe to call from several threads at once; each call blocks its thread for the wait.
/// While a call waits, SIGCHLD has its default action in the process, so that a caller's SIG_IGN
/// or own SIGCHLD handler can neither discard nor reap the program's status; then the caller's
/// action returns, and a handler gets one SIGCHLD for the children that ended meanwhile.
OSL_API int Osl_System(const std::string& command, int timeout);
