// platform/append_file.h
// Files that several processes append to and rotate: an append-only file kept open between
// writes, file identity, hard links and renames, and the lock file through which the writers
// agree on rotations (an flock and a small record read with pread, never a shared mapping:
// someone may truncate the lock file at any time).
#pragma once

#include "platform/fs.h"  // removeFile, renameFile, DirectoryReader

#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

namespace osl::platform {

struct FileInfo {
    bool exists = false;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    unsigned mode = 0;  // permission bits
    unsigned group = 0;
    bool sameFile(const FileInfo& other) const {
        return exists && other.exists && device == other.device && inode == other.inode;
    }
};

/// Status of a path. A missing file gives exists = false and no error.
std::error_code statFile(const std::string& path, FileInfo& info);

/// A file opened for appending (and reading), closed by the destructor. Every write goes to the
/// end of the file as one write call, so lines of several writers do not interleave.
class AppendFile {
public:
    AppendFile() = default;
    ~AppendFile();
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    /// Opens an existing file; a missing one gives std::errc::no_such_file_or_directory.
    std::error_code open(const std::string& path);
    void close();
    bool isOpen() const { return fd_ >= 0; }
    /// Takes over the other's file, closing its own.
    void swap(AppendFile& other) noexcept;

    /// Appends the bytes with a single write call; a short write is an error.
    std::error_code append(const char* data, std::size_t size);
    /// Reads up to size bytes at offset; got receives the count (0 at the end of the file).
    std::error_code readAt(char* buffer, std::size_t size, std::uint64_t offset, std::size_t& got);
    std::error_code info(FileInfo& info) const;

private:
    int fd_ = -1;
};

/// Creates path (which must not exist; a symbolic link there is not followed) with content and
/// the permissions and group of like, as far as the caller may give them.
std::error_code writeNewFile(const std::string& path, const std::string& content, const FileInfo& like);
/// A second name for an existing file; an existing target gives std::errc::file_exists.
std::error_code linkFile(const std::string& from, const std::string& to);

/// The lock file of a log file that several processes write: an exclusive lock between processes
/// (flock) and a record that every writer reads with pread: the generation, which every rotation
/// raises, and the names of the backups that rotations of this log made. Any content is valid: a
/// truncated or foreign file reads as generation 0 with no backups.
class RotationLock {
public:
    RotationLock() = default;
    ~RotationLock();
    RotationLock(const RotationLock&) = delete;
    RotationLock& operator=(const RotationLock&) = delete;

    /// Opens the lock file, or creates it with the group of the log file and its read and write
    /// permissions, so that every user who may write the log may coordinate. One that may only be
    /// read still locks, but cannot publish (writable() is false). On failure the lock file open
    /// before, if any, stays open.
    std::error_code open(const std::string& lockPath, const FileInfo& logFile);
    bool isOpen() const { return fd_ >= 0; }
    bool writable() const { return writable_; }
    /// Whether lockPath still names the file open here (someone may have removed or replaced it).
    bool isAt(const std::string& lockPath) const;
    void close();

    /// Blocks until this open lock file holds the exclusive lock. Not re-entrant. The lock belongs
    /// to the open file: a child process must open the lock file again to be excluded from its
    /// parent.
    std::error_code lock();
    void unlock();

    /// 0 when the record cannot be read.
    std::uint64_t generation() const;
    /// Under the lock.
    void bumpGeneration();
    /// The backups recorded under the lock, oldest first.
    std::vector<std::string> backups() const;
    void setBackups(const std::vector<std::string>& names);

private:
    int fd_ = -1;
    bool writable_ = false;
};

}  // namespace osl::platform
