// platform/posix/lock_file_posix.cpp
// Lock files on flock(2), so that shell scripts can take the same locks with flock(1).
#include "platform/lock_file.h"

#include <cerrno>

#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

constexpr mode_t kFileMode = 0666;
constexpr mode_t kDirectoryMode = 01777;

}  // namespace

LockFile::~LockFile() { close(); }

std::error_code LockFile::open(const std::string& path, bool noFollowDirectory) {
    close();
    int dirFd = AT_FDCWD;
    std::string name = path;
    if (noFollowDirectory) {
        const std::size_t slash = path.find_last_of('/');
        const std::string dir = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
        if (slash != std::string::npos) name = path.substr(slash + 1);
        dirFd = ::open(dir.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (dirFd < 0) {
            if (errno == ELOOP || errno == ENOTDIR) return std::make_error_code(std::errc::too_many_symbolic_link_levels);
            return lastError();
        }
    }
    const std::error_code ec = openIn(dirFd, name);
    if (dirFd != AT_FDCWD) ::close(dirFd);
    return ec;
}

std::error_code LockFile::openIn(int dirFd, const std::string& name) {
    // Open an existing file first: O_CREAT on a file that another user owns in a sticky directory
    // is refused where fs.protected_regular is set, while a plain open is not. Create only with
    // O_EXCL, and start over when someone else created it in between.
    for (int attempt = 0; attempt < 100; ++attempt) {
        int fd = ::openat(dirFd, name.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK);
        bool created = false;
        if (fd < 0 && errno == ENOENT) {
            fd = ::openat(dirFd, name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK,
                        kFileMode);
            if (fd < 0 && errno == EEXIST) continue;
            created = fd >= 0;
        }
        if (fd < 0) {
            if (errno == ELOOP) return std::make_error_code(std::errc::too_many_symbolic_link_levels);
            return lastError();
        }
        struct stat st {};
        if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
            ::close(fd);
            return std::make_error_code(std::errc::invalid_argument);
        }
        // The umask must not keep other users out of a lock file we created.
        if (created && ::fchmod(fd, kFileMode) != 0) {
            const std::error_code ec = lastError();
            ::close(fd);
            return ec;
        }
        fd_ = fd;
        return {};
    }
    return std::make_error_code(std::errc::resource_unavailable_try_again);
}

void LockFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

std::error_code LockFile::lock(bool shared, bool wait) {
    if (fd_ < 0) return std::make_error_code(std::errc::bad_file_descriptor);
    const int operation = (shared ? LOCK_SH : LOCK_EX) | (wait ? 0 : LOCK_NB);
    while (::flock(fd_, operation) != 0) {
        if (errno == EINTR) continue;
        if (errno == EWOULDBLOCK) return std::make_error_code(std::errc::resource_unavailable_try_again);
        return lastError();
    }
    return {};
}

std::error_code LockFile::unlock() {
    if (fd_ < 0) return std::make_error_code(std::errc::bad_file_descriptor);
    if (::flock(fd_, LOCK_UN) != 0) return lastError();
    return {};
}

bool LockFile::isAtPath(const std::string& path) const {
    struct stat open {};
    struct stat named {};
    if (fd_ < 0 || ::fstat(fd_, &open) != 0) return false;
    if (::fstatat(AT_FDCWD, path.c_str(), &named, AT_SYMLINK_NOFOLLOW) != 0) return false;
    return open.st_dev == named.st_dev && open.st_ino == named.st_ino;
}

std::error_code LockFile::removeIfAtPath(const std::string& path) {
    if (!isAtPath(path)) return {};
    if (::unlink(path.c_str()) != 0 && errno != ENOENT) return lastError();
    return {};
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

void registerForkHandlers(void (*prepare)(), void (*parent)(), void (*child)()) {
    ::pthread_atfork(prepare, parent, child);
}

}  // namespace osl::platform
