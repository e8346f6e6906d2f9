// platform/posix/system_log_posix.cpp
// syslog(3), or a datagram socket chosen by a test. syslog(3) always writes to /dev/log, so a
// test that runs its own syslog daemon needs the second path; it sends what glibc's syslog(3)
// sends: "<PRI>Mmm dd hh:mm:ss IDENT[PID]: text".
#include "platform/system_log.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

namespace osl::platform {
namespace {

struct Route {
    std::mutex mutex;  // guards the fields below
    std::string socketPath;
    const char* identity = "";
};

Route& route() {
    static Route* r = new Route;
    return *r;
}

int priority(SystemLogLevel level) {
    switch (level) {
        case SystemLogLevel::Warning: return LOG_WARNING;
        case SystemLogLevel::Error: return LOG_ERR;
        case SystemLogLevel::Info: break;
    }
    return LOG_INFO;
}

void sendToSocket(const std::string& path, const char* identity, int prio, const std::string& text) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    time_t now = time(nullptr);
    tm parts{};
    localtime_r(&now, &parts);
    static const char* const kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    char head[128];
    std::snprintf(head, sizeof head, "<%d>%s %2d %02d:%02d:%02d %s[%d]: ", LOG_USER | prio, kMonths[parts.tm_mon],
                  parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec, identity, static_cast<int>(getpid()));
    const std::string datagram = head + text;
    int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return;
    (void)!sendto(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(fd);
}

}  // namespace

void openSystemLog(const char* identity) {
    Route& r = route();
    std::lock_guard<std::mutex> guard(r.mutex);
    r.identity = identity;
    openlog(identity, LOG_PID, LOG_USER);
}

void writeSystemLog(SystemLogLevel level, const std::string& text) {
    Route& r = route();
    std::unique_lock<std::mutex> guard(r.mutex);
    if (!r.socketPath.empty()) {
        sendToSocket(r.socketPath, r.identity, priority(level), text);
        return;
    }
    guard.unlock();
    syslog(priority(level), "%s", text.c_str());
}

void setSystemLogSocket(const std::string& path) {
    Route& r = route();
    std::lock_guard<std::mutex> guard(r.mutex);
    r.socketPath = path;
}

}  // namespace osl::platform
