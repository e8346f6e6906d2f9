// platform/posix/log_file_posix.cpp
// Log file primitives on POSIX calls. The shared record lives in the lock file itself, mapped
// with MAP_SHARED, so that a writer learns of another process's rotation by one memory load
// instead of a stat(2) per line.
#include "platform/log_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>

namespace osl::platform {
namespace {

std::error_code lastError() { return {errno, std::generic_category()}; }

void fill(const struct stat& st, FileInfo& info) {
    info.exists = true;
    info.device = static_cast<std::uint64_t>(st.st_dev);
    info.inode = static_cast<std::uint64_t>(st.st_ino);
    info.size = static_cast<std::uint64_t>(st.st_size);
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

std::error_code AppendFile::open(const std::string& path, bool create) {
    close();
    int flags = O_RDWR | O_APPEND | O_CLOEXEC | (create ? O_CREAT : 0);
    int fd = ::open(path.c_str(), flags, 0644);
    if (fd < 0) return lastError();
    fd_ = fd;
    return {};
}

void AppendFile::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

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

std::error_code writeNewFile(const std::string& path, const std::string& content) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) return lastError();
    std::size_t done = 0;
    while (done < content.size()) {
        ssize_t n = ::write(fd, content.data() + done, content.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) {
            std::error_code ec = n < 0 ? lastError() : std::make_error_code(std::errc::no_space_on_device);
            ::close(fd);
            return ec;
        }
        done += static_cast<std::size_t>(n);
    }
    if (::close(fd) != 0) return lastError();
    return {};
}

std::error_code linkFile(const std::string& from, const std::string& to) {
    if (::link(from.c_str(), to.c_str()) != 0) return lastError();
    return {};
}

struct SharedLogState::Record {
    std::atomic<std::uint64_t> generation;
    std::atomic<std::uint64_t> device;
    std::atomic<std::uint64_t> inode;
    std::atomic<std::uint64_t> size;
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "the shared record needs lock-free atomics");

SharedLogState::~SharedLogState() { close(); }

void SharedLogState::close() {
    if (record_ != nullptr) ::munmap(record_, sizeof(Record));
    if (fd_ >= 0) ::close(fd_);
    record_ = nullptr;
    fd_ = -1;
}

std::error_code SharedLogState::open(const std::string& lockPath) {
    int fd = ::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) return lastError();
    // Grow a new lock file under the lock, so that no process maps it while it is shorter than
    // the record (a mapping past the end of a file faults).
    struct stat st {};
    if (::flock(fd, LOCK_EX) != 0 || ::fstat(fd, &st) != 0 ||
        (static_cast<std::size_t>(st.st_size) < sizeof(Record) && ::ftruncate(fd, sizeof(Record)) != 0)) {
        std::error_code ec = lastError();
        ::close(fd);
        return ec;
    }
    void* map = ::mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    std::error_code ec = map == MAP_FAILED ? lastError() : std::error_code{};
    ::flock(fd, LOCK_UN);
    if (ec) {
        ::close(fd);
        return ec;
    }
    fd_ = fd;
    record_ = static_cast<Record*>(map);
    return {};
}

std::error_code SharedLogState::lock() {
    while (::flock(fd_, LOCK_EX) != 0) {
        if (errno != EINTR) return lastError();
    }
    return {};
}

void SharedLogState::unlock() { ::flock(fd_, LOCK_UN); }

std::uint64_t SharedLogState::generation() const { return record_->generation.load(std::memory_order_acquire); }
void SharedLogState::bumpGeneration() { record_->generation.fetch_add(1, std::memory_order_acq_rel); }
std::uint64_t SharedLogState::size() const { return record_->size.load(std::memory_order_relaxed); }
void SharedLogState::setSize(std::uint64_t size) { record_->size.store(size, std::memory_order_relaxed); }
void SharedLogState::addSize(std::uint64_t bytes) { record_->size.fetch_add(bytes, std::memory_order_relaxed); }

void SharedLogState::raiseSize(std::uint64_t size) {
    std::uint64_t known = record_->size.load(std::memory_order_relaxed);
    while (known < size && !record_->size.compare_exchange_weak(known, size, std::memory_order_relaxed)) {
    }
}

bool SharedLogState::counts(const FileInfo& info) const {
    return record_->device.load(std::memory_order_relaxed) == info.device &&
           record_->inode.load(std::memory_order_relaxed) == info.inode;
}

void SharedLogState::setCounted(const FileInfo& info) {
    record_->device.store(info.device, std::memory_order_relaxed);
    record_->inode.store(info.inode, std::memory_order_relaxed);
    record_->size.store(info.size, std::memory_order_relaxed);
}

}  // namespace osl::platform
