// platform/posix/fs_posix.cpp
// Files, directories and status on POSIX calls.
#include "platform/fs.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <vector>

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

std::string directoryOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::int64_t nanoseconds(const struct timespec& t) {
    return static_cast<std::int64_t>(t.tv_sec) * 1000000000 + t.tv_nsec;
}

PathType typeOf(mode_t mode) {
    if (S_ISREG(mode)) return PathType::regular;
    if (S_ISDIR(mode)) return PathType::directory;
    if (S_ISLNK(mode)) return PathType::symlink;
    if (S_ISCHR(mode)) return PathType::character;
    if (S_ISBLK(mode)) return PathType::block;
    if (S_ISFIFO(mode)) return PathType::fifo;
    return PathType::socket;
}

// The file that a chain of symlinks finally names, existing or not. Too many links (a loop) give
// ELOOP, as open(2) would.
std::error_code resolveLinks(const std::string& path, std::string& resolved) {
    resolved = path;
    for (int hops = 0; hops < 40; ++hops) {
        struct stat st {};
        if (::lstat(resolved.c_str(), &st) != 0) return errno == ENOENT ? std::error_code{} : lastError();
        if (!S_ISLNK(st.st_mode)) return {};
        std::vector<char> buffer(static_cast<std::size_t>(st.st_size > 0 ? st.st_size : 255) + 1);
        const ssize_t n = ::readlink(resolved.c_str(), buffer.data(), buffer.size());
        if (n < 0) return lastError();
        std::string target(buffer.data(), static_cast<std::size_t>(n));
        if (target.empty() || target[0] != '/') target = directoryOf(resolved) + "/" + target;
        resolved = std::move(target);
    }
    return std::make_error_code(std::errc::too_many_symbolic_link_levels);
}

void syncDirectoryOf(const std::string& path) {
    // Some file systems refuse to sync a directory; that only costs durability on power loss.
    const int dir = ::open(directoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dir < 0) return;
    ::fsync(dir);
    ::close(dir);
}

std::error_code writeInPlace(const std::string& path, const std::function<std::error_code(int)>& writer) {
    int fd = -1;
    if (auto ec = openFile(path, kOpenWrite | kOpenTruncate, 0, fd)) return ec;
    std::error_code ec = writer(fd);
    if (!ec) ec = syncFile(fd, false);
    closeFile(fd);
    return ec;
}

}  // namespace

std::error_code openFile(const std::string& path, unsigned flags, unsigned permissions, int& fd) {
    int native = O_CLOEXEC;
    const unsigned access = flags & (kOpenRead | kOpenWrite);
    native |= access == (kOpenRead | kOpenWrite) ? O_RDWR : access == kOpenWrite ? O_WRONLY : O_RDONLY;
    if (flags & kOpenCreate) native |= O_CREAT;
    if (flags & kOpenTruncate) native |= O_TRUNC;
    if (flags & kOpenAppend) native |= O_APPEND;
    if ((flags & kOpenExclusive) && (flags & kOpenCreate)) native |= O_EXCL | O_NOFOLLOW;
    do {
        fd = ::open(path.c_str(), native, static_cast<mode_t>(permissions));
    } while (fd < 0 && errno == EINTR);
    return fd < 0 ? lastError() : std::error_code{};
}

std::error_code closeFile(int fd) {
    // Linux releases the descriptor even when close fails: retrying could close another one.
    if (fd >= 0 && ::close(fd) != 0 && errno != EINTR) return lastError();
    return {};
}

std::error_code readFile(int fd, void* buffer, std::size_t size, std::size_t& got) {
    got = 0;
    char* out = static_cast<char*>(buffer);
    while (got < size) {
        const ssize_t n = ::read(fd, out + got, size - got);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return lastError();
        if (n == 0) break;
        got += static_cast<std::size_t>(n);
    }
    return {};
}

std::error_code writeFile(int fd, const void* data, std::size_t size) {
    const char* in = static_cast<const char*>(data);
    while (size > 0) {
        const ssize_t n = ::write(fd, in, size);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return lastError();
        if (n == 0) return std::make_error_code(std::errc::no_space_on_device);
        in += n;
        size -= static_cast<std::size_t>(n);
    }
    return {};
}

std::error_code seekFile(int fd, std::int64_t offset, int whence, std::uint64_t& position) {
    const int native = whence == 1 ? SEEK_CUR : whence == 2 ? SEEK_END : SEEK_SET;
    const off_t at = ::lseek(fd, static_cast<off_t>(offset), native);
    if (at < 0) return lastError();
    position = static_cast<std::uint64_t>(at);
    return {};
}

std::error_code fileSize(int fd, std::uint64_t& size) {
    struct stat st {};
    if (::fstat(fd, &st) != 0) return lastError();
    size = static_cast<std::uint64_t>(st.st_size);
    return {};
}

std::error_code syncFile(int fd, bool dataOnly) {
    return (dataOnly ? ::fdatasync(fd) : ::fsync(fd)) != 0 ? lastError() : std::error_code{};
}

std::error_code lockFile(int fd, bool shared, bool wait) {
    const int operation = (shared ? LOCK_SH : LOCK_EX) | (wait ? 0 : LOCK_NB);
    while (::flock(fd, operation) != 0) {
        if (errno == EINTR) continue;
        if (errno == EWOULDBLOCK) return std::make_error_code(std::errc::resource_unavailable_try_again);
        return lastError();
    }
    return {};
}

std::error_code unlockFile(int fd) { return ::flock(fd, LOCK_UN) != 0 ? lastError() : std::error_code{}; }

std::error_code pathStatus(const std::string& path, bool followLinks, PathStatus& status) {
    status = PathStatus{};
    struct stat st {};
    if ((followLinks ? ::stat(path.c_str(), &st) : ::lstat(path.c_str(), &st)) != 0) return lastError();
    status.type = typeOf(st.st_mode);
    status.size = static_cast<std::uint64_t>(st.st_size);
    status.modifiedNs = nanoseconds(st.st_mtim);
    status.accessedNs = nanoseconds(st.st_atim);
    status.changedNs = nanoseconds(st.st_ctim);
    status.owner = st.st_uid;
    status.group = st.st_gid;
    status.permissions = st.st_mode & 07777;
    status.links = static_cast<std::uint64_t>(st.st_nlink);
    status.device = static_cast<std::uint64_t>(st.st_dev);
    status.inode = static_cast<std::uint64_t>(st.st_ino);
    return {};
}

std::string userName(std::uint32_t uid) {
    std::vector<char> buffer(1024);
    struct passwd entry {};
    struct passwd* found = nullptr;
    while (::getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) == ERANGE && buffer.size() < 65536)
        buffer.resize(buffer.size() * 4);
    return found != nullptr ? std::string(found->pw_name) : std::string();
}

std::uint32_t effectiveUser() { return ::geteuid(); }

std::error_code makeDirectory(const std::string& path, unsigned permissions) {
    return ::mkdir(path.c_str(), static_cast<mode_t>(permissions)) != 0 ? lastError() : std::error_code{};
}

std::error_code removeDirectory(const std::string& path) {
    return ::rmdir(path.c_str()) != 0 ? lastError() : std::error_code{};
}

std::error_code removeFile(const std::string& path) {
    return ::unlink(path.c_str()) != 0 ? lastError() : std::error_code{};
}

std::error_code renameFile(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) != 0 ? lastError() : std::error_code{};
}

DirectoryReader::~DirectoryReader() { close(); }

std::error_code DirectoryReader::open(const std::string& path) {
    close();
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return lastError();
    DIR* dir = ::fdopendir(fd);
    if (dir == nullptr) {
        const std::error_code ec = lastError();
        ::close(fd);
        return ec;
    }
    dir_ = dir;
    return {};
}

bool DirectoryReader::next(std::string& name, std::error_code& error) {
    error.clear();
    if (dir_ == nullptr) return false;
    while (true) {
        errno = 0;
        const struct dirent* entry = ::readdir(static_cast<DIR*>(dir_));
        if (entry == nullptr) {
            if (errno != 0) error = lastError();
            return false;
        }
        const char* n = entry->d_name;
        if (n[0] == '.' && (n[1] == '\0' || (n[1] == '.' && n[2] == '\0'))) continue;
        name.assign(n);
        return true;
    }
}

void DirectoryReader::close() {
    if (dir_ != nullptr) ::closedir(static_cast<DIR*>(dir_));
    dir_ = nullptr;
}

std::error_code makeTemporaryFile(std::string& pathTemplate, int& fd) {
    fd = ::mkostemp(pathTemplate.data(), O_CLOEXEC);
    return fd < 0 ? lastError() : std::error_code{};
}

std::error_code replaceFile(const std::string& target, unsigned newPermissions,
                            const std::function<std::error_code(int fd)>& writer, bool& inPlace) {
    inPlace = false;
    std::string file;
    if (auto ec = resolveLinks(target, file)) return ec;
    struct stat old {};
    const bool existed = ::stat(file.c_str(), &old) == 0;
    if (existed && S_ISDIR(old.st_mode)) return std::make_error_code(std::errc::is_a_directory);
    const mode_t mode = existed ? (old.st_mode & 07777) : static_cast<mode_t>(newPermissions & 0777);

    std::string temporary;
    int fd = -1;
    // Every writer counts from 1; O_EXCL moves a writer past the names that others (or a crashed
    // writer, or someone planting a link) hold.
    for (unsigned attempt = 1; fd < 0; ++attempt) {
        char number[16];
        std::snprintf(number, sizeof number, "%u", attempt);
        temporary = file + ".tmp" + number;
        // Never more open than the final mode, even for the moment before fchmod.
        fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode & 0777);
        if (fd >= 0) break;
        if (errno == EINTR || (errno == EEXIST && attempt < 10000)) continue;
        if ((errno == EACCES || errno == EPERM) && existed) {
            // The directory takes no new file but the file itself may be writable.
            if (auto ec = writeInPlace(file, writer)) return ec;
            inPlace = true;
            return {};
        }
        return lastError();
    }
    auto fail = [&](std::error_code ec) {
        ::close(fd);
        ::unlink(temporary.c_str());
        return ec;
    };
    if (existed) {
        // Another owner can be given by root only; a group by its members. What cannot be given
        // stays the writer's, which is what a plain rewrite by this user would leave too.
        if (::fchown(fd, old.st_uid, old.st_gid) != 0) (void)::fchown(fd, static_cast<uid_t>(-1), old.st_gid);
    }
    // After fchown, which clears set-user-id bits, and past the umask.
    if (existed && ::fchmod(fd, mode) != 0) return fail(lastError());
    if (auto ec = writer(fd)) return fail(ec);
    if (::fsync(fd) != 0) return fail(lastError());
    if (::close(fd) != 0) {
        const std::error_code ec = lastError();
        ::unlink(temporary.c_str());
        return ec;
    }
    if (::rename(temporary.c_str(), file.c_str()) != 0) {
        const std::error_code ec = lastError();
        ::unlink(temporary.c_str());
        return ec;
    }
    syncDirectoryOf(file);
    return {};
}

}  // namespace osl::platform
