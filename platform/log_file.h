// platform/log_file.h
// What the log file channels need from the file system: an append-only file kept open between
// lines, file identity, hard links and renames for rotation, and a lock file holding a small
// record that every process writing the same log file shares through memory.
#pragma once

#include "platform/fs.h"  // removeFile, renameFile

#include <cstddef>
#include <cstdint>
#include <string>
#include <system_error>

namespace osl::platform {

struct FileInfo {
    bool exists = false;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
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

    /// Opens an existing file; a missing one gives std::errc::no_such_file_or_directory. With
    /// create, a missing file is created (mode 0644 less the umask).
    std::error_code open(const std::string& path, bool create);
    void close();
    bool isOpen() const { return fd_ >= 0; }

    /// Appends the bytes with a single write call; a short write is an error.
    std::error_code append(const char* data, std::size_t size);
    /// Reads up to size bytes at offset; got receives the count (0 at the end of the file).
    std::error_code readAt(char* buffer, std::size_t size, std::uint64_t offset, std::size_t& got);
    std::error_code info(FileInfo& info) const;

private:
    int fd_ = -1;
};

/// Creates or truncates path and writes content into it.
std::error_code writeNewFile(const std::string& path, const std::string& content);
/// A second name for an existing file; an existing target gives std::errc::file_exists.
std::error_code linkFile(const std::string& from, const std::string& to);

/// The lock file of a shared log file: an exclusive lock between processes (flock on the lock
/// file) and a record in shared memory that every process maps. The record names the file that
/// is current under the log path (its identity and a generation that every rotation raises) and
/// the size of that file as the writers know it.
class SharedLogState {
public:
    SharedLogState() = default;
    ~SharedLogState();
    SharedLogState(const SharedLogState&) = delete;
    SharedLogState& operator=(const SharedLogState&) = delete;

    /// Opens or creates the lock file and maps its record.
    std::error_code open(const std::string& lockPath);
    bool isOpen() const { return record_ != nullptr; }
    void close();

    /// Blocks until this open lock file holds the exclusive lock. Not re-entrant. The lock belongs
    /// to the open file: a child process must open the lock file again to be excluded from its
    /// parent.
    std::error_code lock();
    void unlock();

    std::uint64_t generation() const;
    void bumpGeneration();
    std::uint64_t size() const;
    void setSize(std::uint64_t size);
    void addSize(std::uint64_t bytes);
    /// Raises the size to at least this many bytes.
    void raiseSize(std::uint64_t size);
    /// Identity of the file that size() counts.
    bool counts(const FileInfo& info) const;
    void setCounted(const FileInfo& info);

private:
    struct Record;
    int fd_ = -1;
    Record* record_ = nullptr;
};


}  // namespace osl::platform
