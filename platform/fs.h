// platform/fs.h
// Files, directories and path status on descriptors and byte-string names. Every call returns a
// std::error_code (the errno) and never throws; names are already in the file-system encoding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <system_error>

namespace osl::platform {

// Open flags: the same bit values as Osl_File's modes.
constexpr unsigned kOpenRead = 1;
constexpr unsigned kOpenWrite = 2;
constexpr unsigned kOpenCreate = 4;
constexpr unsigned kOpenTruncate = 8;
constexpr unsigned kOpenAppend = 16;
constexpr unsigned kOpenExclusive = 32;  // with create: fail when the name exists, never follow a link

/// Opens a descriptor (close-on-exec) with the flags above and the permission bits for a new file
/// (the umask applies). fd is -1 on failure.
std::error_code openFile(const std::string& path, unsigned flags, unsigned permissions, int& fd);
/// Closes; the descriptor is released even when an error (a deferred write error) is reported.
std::error_code closeFile(int fd);
/// Reads up to size bytes; got is 0 only at the end of the file. Retries on EINTR.
std::error_code readFile(int fd, void* buffer, std::size_t size, std::size_t& got);
/// Writes all bytes, retrying short writes and EINTR.
std::error_code writeFile(int fd, const void* data, std::size_t size);
/// whence: 0 from the start, 1 from the current position, 2 from the end.
std::error_code seekFile(int fd, std::int64_t offset, int whence, std::uint64_t& position);
std::error_code fileSize(int fd, std::uint64_t& size);
/// dataOnly: fdatasync, else fsync.
std::error_code syncFile(int fd, bool dataOnly);
/// Whole-file flock(2) lock. With wait = false a lock held elsewhere gives
/// std::errc::resource_unavailable_try_again.
std::error_code lockFile(int fd, bool shared, bool wait);
std::error_code unlockFile(int fd);

enum class PathType { none, regular, directory, symlink, character, block, fifo, socket };

struct PathStatus {
    PathType type = PathType::none;
    std::uint64_t size = 0;
    std::int64_t modifiedNs = 0;  // nanoseconds since 1970-01-01 UTC
    std::int64_t accessedNs = 0;
    std::int64_t changedNs = 0;
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    std::uint32_t permissions = 0;  // the 07777 bits
    std::uint64_t links = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

/// stat(2) or, without followLinks, lstat(2). A missing path gives type none and
/// std::errc::no_such_file_or_directory.
std::error_code pathStatus(const std::string& path, bool followLinks, PathStatus& status);
/// The name of a user id; empty when the system has none.
std::string userName(std::uint32_t uid);
std::uint32_t effectiveUser();

/// mkdir(2) of one directory with the permission bits (the umask applies).
std::error_code makeDirectory(const std::string& path, unsigned permissions);
std::error_code removeDirectory(const std::string& path);
/// unlink(2): a symlink is removed, not its target.
std::error_code removeFile(const std::string& path);
/// rename(2): replaces to atomically; across file systems gives std::errc::cross_device_link.
std::error_code renameFile(const std::string& from, const std::string& to);

/// An open directory stream that yields the names of its entries, without "." and "..".
class DirectoryReader {
public:
    DirectoryReader() = default;
    ~DirectoryReader();
    DirectoryReader(const DirectoryReader&) = delete;
    DirectoryReader& operator=(const DirectoryReader&) = delete;

    std::error_code open(const std::string& path);
    /// The next name; false at the end (or on a read error, then error is set).
    bool next(std::string& name, std::error_code& error);
    void close();

private:
    void* dir_ = nullptr;
};

/// Creates a file with mkstemp(3) from a template ending in "XXXXXX" (replaced in place):
/// mode 0600, close-on-exec.
std::error_code makeTemporaryFile(std::string& pathTemplate, int& fd);

/// Replaces the content of target in one step: the new content goes into a temporary file beside
/// the file that target finally names (symlinks are followed, so a link keeps pointing at the
/// updated file), created O_CREAT|O_EXCL|O_NOFOLLOW as "<file>.tmpN" with the old file's mode,
/// owner and group (as far as the process may give them; a new file gets newPermissions less the
/// umask), written by writer, synced, renamed over
/// the file, and the directory synced. Readers see the old or the new file, never a mix. Any
/// failure removes the temporary file and leaves the old one. The writer returns its own error.
/// inPlace reports that the directory did not take a temporary file and the file was rewritten
/// where it is instead (not crash-safe), so that the caller can say so.
std::error_code replaceFile(const std::string& target, unsigned newPermissions,
                            const std::function<std::error_code(int fd)>& writer, bool& inPlace);

}  // namespace osl::platform
