// Whole files and paths by UTF-8 name, and the crash-safe replacement of a file's content.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

class Osl_File;

// As in osl_directory.h: names are UTF-8 and converted with Osl_FileSystemName, failures throw
// QIBError with severity 8 and the errno as code; thread-safe.

/// Whole files and paths.
class OSL_API Osl_File_System {
public:
    using time_point = std::chrono::system_clock::time_point;

    /// True when something exists at path (a symlink counts when its target exists). Never throws.
    static bool exists(const std::string& path);
    /// Osl_Directory::exists(path).
    static bool is_directory(const std::string& path);
    /// Removes a file or symlink (not its target); a missing path throws (ENOENT).
    static void remove(const std::string& path);
    /// Removes a file or symlink when it exists; returns whether one was removed.
    static bool remove_if_exists(const std::string& path);
    /// Renames in one step, replacing an existing target file; both must be on one file system
    /// (else EXDEV, see MoveFileA).
    static void rename(const std::string& from, const std::string& to);
    /// Copies the content of from to to through replace(): a reader of to sees the old file or
    /// the whole copy. A new to gets from's permission bits; an existing one keeps its own.
    static void copy(const std::string& from, const std::string& to);
    /// Size of a file in bytes (symlinks followed).
    static std::uint64_t size(const std::string& path);
    /// Time of the last modification of the content (symlinks followed).
    static time_point modification_time(const std::string& path);

    /// Gives path a new content in one step, crash-safe: the content goes to a temporary file
    /// "<file>.tmpN" created beside the file (O_CREAT|O_EXCL|O_NOFOLLOW, so a planted name is
    /// never followed and several writers never share one), written, synced and renamed over the
    /// file, then the directory is synced. Readers and a crash see the old or the new content,
    /// never a mix. The old file's mode, owner and group carry over (owner as far as the process
    /// may give it: root may); a symlinked path updates the file it points to and stays a link;
    /// other hard links to the file keep the old content. A new file gets 0666 less the umask.
    /// When the directory takes no new file (EACCES) but the file is writable, the file is
    /// rewritten in place instead, and that is said once per process on stderr. On failure the
    /// old content is untouched and no temporary file remains.
    static void replace(const std::string& path, const std::string& content);
    /// The same with the content written by writer into the open temporary file; whatever writer
    /// throws is passed on after the clean-up.
    static void replace(const std::string& path, const std::function<void(Osl_File&)>& writer);
};
