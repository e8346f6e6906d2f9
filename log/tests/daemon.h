// log/tests/daemon.h
// A daemon started by a test (in the foreground, with its own configuration) and stopped with it.
#pragma once

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temp_dir.h"

namespace osl::test {

/// The first of the directories that holds an executable of that name, or empty.
inline std::string findProgram(const std::string& name) {
    for (const char* dir : {"/usr/sbin", "/usr/bin", "/sbin", "/bin"}) {
        std::string path = std::string(dir) + "/" + name;
        if (access(path.c_str(), X_OK) == 0) return path;
    }
    return {};
}

/// A port on 127.0.0.1 that was free a moment ago, for UDP or (SOCK_STREAM) TCP.
inline int freePort(int type = SOCK_DGRAM) {
    int fd = socket(AF_INET, type, 0);
    sockaddr_in address{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t length = sizeof address;
    int port = -1;
    if (fd >= 0 && bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0 &&
        getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0) {
        port = ntohs(address.sin_port);
    }
    if (fd >= 0) close(fd);
    return port;
}

/// Polls until the condition holds or the seconds have passed.
inline bool waitFor(const std::function<bool()>& condition, double seconds = 10) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return condition();
}

class Daemon {
public:
    /// Starts argv[0] with the arguments and extra environment ("NAME=value"); output to logFile.
    Daemon(const std::vector<std::string>& argv, const std::vector<std::string>& environment,
           const std::string& logFile) {
        pid_ = fork();
        if (pid_ == 0) {
            if (std::freopen(logFile.c_str(), "a", stdout) != nullptr) dup2(fileno(stdout), 2);
            for (const std::string& setting : environment) putenv(const_cast<char*>(setting.c_str()));
            std::vector<char*> args;
            for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
            args.push_back(nullptr);
            execv(args[0], args.data());
            _exit(127);
        }
    }
    ~Daemon() {
        if (pid_ <= 0) return;
        kill(pid_, SIGTERM);
        if (!waitFor([this] { return waitpid(pid_, nullptr, WNOHANG) != 0; }, 5)) {
            kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
    }
    Daemon(const Daemon&) = delete;
    Daemon& operator=(const Daemon&) = delete;

private:
    pid_t pid_ = -1;
};

}  // namespace osl::test
