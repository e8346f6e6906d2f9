// platform/posix/shared_file_posix.cpp
// Appends and one-step replacements with open(2), write(2), fsync(2) and rename(2).
#include "platform/shared_file.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "platform/file_replace.h"

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

std::error_code writeAll(int fd, const std::string& data) {
    std::size_t done = 0;
    while (done < data.size()) {
        const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
        if (n < 0) {
            if (errno == EINTR) continue;
            return lastError();
        }
        done += static_cast<std::size_t>(n);
    }
    return {};
}

}  // namespace

std::error_code appendToSharedFile(const std::string& path, const std::string& data) {
    int fd = -1;
    // Between the two opens another process may create the file: then append to its file.
    for (int attempt = 0; attempt < 3 && fd < 0; ++attempt) {
        fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        if (fd >= 0 || errno != ENOENT) break;
        fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (fd < 0 && errno != EEXIST) break;
    }
    if (fd < 0) return lastError();
    const std::error_code ec = writeAll(fd, data);
    ::close(fd);
    return ec;
}

std::error_code replaceSharedFile(const std::string& path, const std::string& content) {
    static std::atomic<unsigned> serial{0};
    const std::string::size_type slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::string temp = dir + "." + base + "." + std::to_string(::getpid()) + "." +
                             std::to_string(serial.fetch_add(1)) + ".tmp";
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0) return lastError();
    std::error_code ec = writeAll(fd, content);
    if (!ec && ::fsync(fd) != 0) ec = lastError();
    if (::close(fd) != 0 && !ec) ec = lastError();
    if (!ec) ec = replaceFile(temp, path);
    if (ec) ::unlink(temp.c_str());
    return ec;
}

}  // namespace osl::platform
