// platform/lock_file.h
// Lock files of named locks shared by the processes and users of one computer: files in a
// shared, sticky directory, opened without following symbolic links, whose identity a holder
// checks after its flock(2) lock is granted.
#pragma once

#include <string>
#include <system_error>

namespace osl::platform {

/// Opens a lock file for reading and writing (close-on-exec), creating it readable and writable
/// by every user when missing. It is created only with O_EXCL, so a name that someone else
/// planted is never taken over. A symbolic link gives std::errc::too_many_symbolic_link_levels,
/// anything but a regular file std::errc::invalid_argument. With noFollowDirectory, a symbolic
/// link in place of the file's directory is refused as well.
std::error_code openLockFile(const std::string& path, bool noFollowDirectory, int& fd);

/// Whether the path (not followed) still names the open file fd: same device and inode. False
/// once someone deleted or replaced the file after it was opened.
bool isFileAtPath(int fd, const std::string& path);

/// Creates a directory that every user may create lock files in (mode 1777, like /tmp), unless
/// it exists. An existing symbolic link or non-directory is std::errc::not_a_directory.
std::error_code ensureSharedDirectory(const std::string& path);

}  // namespace osl::platform
