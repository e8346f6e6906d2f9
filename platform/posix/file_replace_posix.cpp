// platform/posix/file_replace_posix.cpp
// rename(2) replaces a directory entry atomically; fsync of the data before and of the directory
// after makes the replacement survive a power loss as well as a crash.
#include "platform/file_replace.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

std::string directoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace

std::error_code syncFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return lastError();
    std::error_code ec;
    if (::fsync(fd) != 0) ec = lastError();
    ::close(fd);
    return ec;
}

std::error_code replaceFile(const std::string& source, const std::string& target) {
    if (::rename(source.c_str(), target.c_str()) != 0) return lastError();
    // The rename is done; a directory that cannot be synced (some file systems refuse) only
    // loses durability across a power loss, so it is not reported.
    const int dir = ::open(directoryOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir >= 0) {
        ::fsync(dir);
        ::close(dir);
    }
    return {};
}

}  // namespace osl::platform
