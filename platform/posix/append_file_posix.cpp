// platform/posix/append_file_posix.cpp
// Append-only files and their lock file on POSIX calls. The lock file's record is read and written
// with pread/pwrite: a mapping of it would kill the process with SIGBUS once someone truncated it.
#include "platform/append_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

void fill(const struct stat& st, FileInfo& info) {
    info.exists = true;
    info.device = static_cast<std::uint64_t>(st.st_dev);
    info.inode = static_cast<std::uint64_t>(st.st_ino);
    info.size = static_cast<std::uint64_t>(st.st_size);
    info.mode = static_cast<unsigned>(st.st_mode & 07777);
    info.group = static_cast<unsigned>(st.st_gid);
}

// The permissions and group of like, given to a file just created. Either may fail (a group the
// process is not in): the file then keeps what the process could give it.
void carryOver(int fd, const FileInfo& like, unsigned mode) {
    if (!like.exists) return;
    if (::fchown(fd, static_cast<uid_t>(-1), static_cast<gid_t>(like.group)) != 0) {
        // deliberate: not a member of that group; the file keeps the process's group
    }
    ::fchmod(fd, static_cast<mode_t>(mode));
}

std::error_code writeAll(int fd, const char* data, std::size_t size, off_t offset) {
    std::size_t done = 0;
    while (done < size) {
        ssize_t n = ::pwrite(fd, data + done, size - done, offset + static_cast<off_t>(done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return n < 0 ? lastError() : std::make_error_code(std::errc::no_space_on_device);
        done += static_cast<std::size_t>(n);
    }
    return {};
}

std::string readFrom(int fd, off_t offset) {
    std::string text;
    char buffer[4096];
    while (true) {
        ssize_t n = ::pread(fd, buffer, sizeof buffer, offset);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) break;
        text.append(buffer, static_cast<std::size_t>(n));
        offset += n;
    }
    return text;
}

}  // namespace

std::error_code statFile(const std::string& path, FileInfo& info) {
    info = FileInfo{};
    struct stat st {};
    if (::stat(path.c_str(), &st) != 0) {
        if (errno == ENOENT) return {};
        return lastError();
    }
    fill(st, info);
    return {};
}

AppendFile::~AppendFile() { close(); }

std::error_code AppendFile::open(const std::string& path) {
    close();
    int fd = ::open(path.c_str(), O_RDWR | O_APPEND | O_CLOEXEC);
    if (fd < 0 && errno == EACCES) fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    if (fd < 0) return lastError();
    fd_ = fd;
    return {};
}

void AppendFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

void AppendFile::swap(AppendFile& other) noexcept { std::swap(fd_, other.fd_); }

std::error_code AppendFile::append(const char* data, std::size_t size) {
    while (true) {
        ssize_t n = ::write(fd_, data, size);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return lastError();
        // A partial write of a regular file means the disk is full or a limit was reached.
        if (static_cast<std::size_t>(n) != size) return std::make_error_code(std::errc::no_space_on_device);
        return {};
    }
}

std::error_code AppendFile::readAt(char* buffer, std::size_t size, std::uint64_t offset, std::size_t& got) {
    got = 0;
    while (got < size) {
        ssize_t n = ::pread(fd_, buffer + got, size - got, static_cast<off_t>(offset + got));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return lastError();
        if (n == 0) break;
        got += static_cast<std::size_t>(n);
    }
    return {};
}

std::error_code AppendFile::info(FileInfo& info) const {
    info = FileInfo{};
    struct stat st {};
    if (::fstat(fd_, &st) != 0) return lastError();
    fill(st, info);
    return {};
}

std::error_code writeNewFile(const std::string& path, const std::string& content, const FileInfo& like) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (fd < 0) return lastError();
    carryOver(fd, like, like.mode);
    std::error_code ec = writeAll(fd, content.data(), content.size(), 0);
    if (::close(fd) != 0 && !ec) ec = lastError();
    if (ec) ::unlink(path.c_str());
    return ec;
}

std::error_code linkFile(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) != 0) return lastError();
    return {};
}

// The record: the generation as 8 bytes in the machine's order, then one backup name per line.
constexpr off_t kNamesAt = 8;

RotationLock::~RotationLock() { close(); }

void RotationLock::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
    writable_ = false;
}

std::error_code RotationLock::open(const std::string& lockPath, const FileInfo& logFile) {
    const int flags = O_NOFOLLOW | O_CLOEXEC;
    bool writable = true;
    int fd = ::open(lockPath.c_str(), O_RDWR | flags);
    if (fd < 0 && errno == ENOENT) {
        fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_EXCL | flags, 0644);
        // Read and write for whoever may write the log: its owner, its group, the others.
        if (fd >= 0) carryOver(fd, logFile, (logFile.mode & 0222) | ((logFile.mode & 0222) << 1) | 0600);
        if (fd < 0 && errno == EEXIST) fd = ::open(lockPath.c_str(), O_RDWR | flags);
    }
    if (fd < 0 && errno == EACCES) {
        // flock needs no write permission: a lock file of another user still serialises.
        fd = ::open(lockPath.c_str(), O_RDONLY | flags);
        writable = false;
    }
    if (fd < 0) return lastError();
    struct stat st {};
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return std::make_error_code(std::errc::invalid_argument);
    }
    close();
    fd_ = fd;
    writable_ = writable;
    return {};
}

bool RotationLock::isAt(const std::string& lockPath) const {
    struct stat mine {};
    struct stat named {};
    return ::fstat(fd_, &mine) == 0 && ::lstat(lockPath.c_str(), &named) == 0 && mine.st_dev == named.st_dev &&
           mine.st_ino == named.st_ino;
}

std::error_code RotationLock::lock() {
    while (::flock(fd_, LOCK_EX) != 0) {
        if (errno != EINTR) return lastError();
    }
    return {};
}

void RotationLock::unlock() { ::flock(fd_, LOCK_UN); }

std::uint64_t RotationLock::generation() const {
    std::uint64_t value = 0;
    if (::pread(fd_, &value, sizeof value, 0) != static_cast<ssize_t>(sizeof value)) return 0;
    return value;
}

void RotationLock::bumpGeneration() {
    if (!writable_) return;
    const std::uint64_t next = generation() + 1;
    writeAll(fd_, reinterpret_cast<const char*>(&next), sizeof next, 0);
}

std::vector<std::string> RotationLock::backups() const {
    std::vector<std::string> names;
    const std::string text = readFrom(fd_, kNamesAt);
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) break;  // a name cut short by a truncation
        if (end > start) names.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return names;
}

void RotationLock::setBackups(const std::vector<std::string>& names) {
    if (!writable_) return;
    std::string text;
    for (const std::string& name : names) text += name + "\n";
    if (!writeAll(fd_, text.data(), text.size(), kNamesAt)) {
        if (::ftruncate(fd_, kNamesAt + static_cast<off_t>(text.size())) != 0) {
            // deliberate: a longer tail only repeats names that no longer exist
        }
    }
}

}  // namespace osl::platform
