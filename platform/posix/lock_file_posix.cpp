// platform/posix/lock_file_posix.cpp
// Lock files in shared directories: created O_EXCL with mode 0666, never through a link.
#include "platform/lock_file.h"

#include <cerrno>

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

constexpr mode_t kFileMode = 0666;
constexpr mode_t kDirectoryMode = 01777;

std::error_code openIn(int dirFd, const std::string& name, int& fd) {
    // Open an existing file first: O_CREAT on a file that another user owns in a sticky directory
    // is refused where fs.protected_regular is set, while a plain open is not. Create only with
    // O_EXCL, and start over when someone else created the file in between.
    for (int attempt = 0; attempt < 100; ++attempt) {
        int opened = ::openat(dirFd, name.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
        bool created = false;
        if (opened < 0 && errno == ENOENT) {
            opened = ::openat(dirFd, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK,
                              kFileMode);
            if (opened < 0 && errno == EEXIST) continue;
            created = opened >= 0;
        }
        if (opened < 0) {
            if (errno == ELOOP) return std::make_error_code(std::errc::too_many_symbolic_link_levels);
            return lastError();
        }
        struct stat st {};
        if (::fstat(opened, &st) != 0 || !S_ISREG(st.st_mode)) {
            ::close(opened);
            return std::make_error_code(std::errc::invalid_argument);
        }
        // The umask must not keep other users out of a lock file we created.
        if (created && ::fchmod(opened, kFileMode) != 0) {
            const std::error_code ec = lastError();
            ::close(opened);
            return ec;
        }
        fd = opened;
        return {};
    }
    return std::make_error_code(std::errc::resource_unavailable_try_again);
}

}  // namespace

std::error_code openLockFile(const std::string& path, bool noFollowDirectory, int& fd) {
    fd = -1;
    if (!noFollowDirectory) return openIn(AT_FDCWD, path, fd);
    const std::size_t slash = path.find_last_of('/');
    const std::string dir = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    const int dirFd = ::open(dir.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (dirFd < 0) {
        if (errno == ELOOP || errno == ENOTDIR) return std::make_error_code(std::errc::too_many_symbolic_link_levels);
        return lastError();
    }
    const std::error_code ec = openIn(dirFd, slash == std::string::npos ? path : path.substr(slash + 1), fd);
    ::close(dirFd);
    return ec;
}

bool isFileAtPath(int fd, const std::string& path) {
    struct stat open {};
    struct stat named {};
    if (fd < 0 || ::fstat(fd, &open) != 0) return false;
    if (::fstatat(AT_FDCWD, path.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0) return false;
    return open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

std::error_code ensureSharedDirectory(const std::string& path) {
    if (::mkdir(path.c_str(), kDirectoryMode) == 0) {
        // mkdir applies the umask; a lock directory must let every user create files.
        if (::chmod(path.c_str(), kDirectoryMode) != 0) return lastError();
        return {};
    }
    if (errno != EEXIST) return lastError();
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return lastError();
    if (!S_ISDIR(st.st_mode)) return std::make_error_code(std::errc::not_a_directory);
    return {};
}

}  // namespace osl::platform
