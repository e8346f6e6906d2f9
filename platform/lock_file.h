// platform/lock_file.h
// Lock files of named locks shared by the processes and users of one computer: whole-file flock(2)
// locks on files in a shared, sticky directory, opened without following symbolic links.
#pragma once

#include <string>
#include <system_error>

namespace osl::platform {

/// One open lock file. The lock belongs to the open file: every holder in this process shares it,
/// and a process that opens the file again is excluded from the first open.
class LockFile {
public:
    LockFile() = default;
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    /// Opens the file for reading and writing, creating it readable and writable by every user
    /// when missing (O_EXCL, so a name planted by someone else is never taken over). A symbolic
    /// link gives std::errc::too_many_symbolic_link_levels, anything but a regular file
    /// std::errc::invalid_argument; those two are not worth retrying. With
    /// noFollowDirectory, a symbolic link in place of the file's directory is refused as well.
    std::error_code open(const std::string& path, bool noFollowDirectory);
    /// Closes the descriptor. A lock goes with it only when no other descriptor shares the open
    /// file: a forked child closing its copy leaves the parent's lock alone.
    void close();
    bool isOpen() const { return fd_ >= 0; }

    /// flock(2) on the whole file. Without wait, a lock held elsewhere gives
    /// std::errc::resource_unavailable_try_again.
    std::error_code lock(bool shared, bool wait);
    std::error_code unlock();

    /// Whether the path still names the open file (same device and inode, not followed). False
    /// once someone deleted or replaced the file after it was opened.
    bool isAtPath(const std::string& path) const;

    /// Deletes the file at the path if it is still this open file. Call it only while holding
    /// the exclusive lock, so no other process can be holding or taking this file's lock.
    std::error_code removeIfAtPath(const std::string& path);

private:
    std::error_code openIn(int dirFd, const std::string& name);
    int fd_ = -1;
};

/// Creates a directory that every user may create lock files in (mode 1777, like /tmp), unless
/// it exists. An existing symbolic link or non-directory is std::errc::not_a_directory.
std::error_code ensureSharedDirectory(const std::string& path);

/// Registers functions run around fork(): prepare in the parent before it, parent in the parent
/// after it, child in the child. Each is registered once per process.
void registerForkHandlers(void (*prepare)(), void (*parent)(), void (*child)());

}  // namespace osl::platform
