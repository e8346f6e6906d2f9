// log/src/log_file.h
// One log file as the file channels write it: the header record, the reading of the creation
// time, rotation by size and by age, backup names, retention, and the protocol that lets several
// processes append to one file and rotate it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/append_file.h"
#include "platform/clock.h"

namespace osl::detail {

struct LogFileSettings {
    std::string path;
    std::uint32_t period = 0;      // whole days; 0: no age limit
    std::uint32_t maxsize = 0;     // bytes; 0: no size limit
    std::uint32_t purgeCount = 0;  // backups kept; 0: no limit
    std::uint32_t purgeAge = 0;    // days a backup is kept; 0: no limit
    bool shared = true;            // other processes may write the same file
};

class LogFile {
public:
    explicit LogFile(LogFileSettings settings);
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;

    /// Appends text and CR LF as one line, rotating first when the file is due. When the lock file
    /// or a rotation fails, the line still goes into the file; the failure is said once on
    /// standard error and tried again later. Throws QIBError only when the line could not be
    /// written.
    void writeLine(const char* text, std::size_t size);

    /// The process that made this object.
    int owner() const { return owner_; }

    /// The 81-character header record of a file created at that local time, with its CR LF.
    static std::string headerRecord(const osl::platform::LocalTime& created);
    /// Parses the first 80 bytes of a file: true with the creation time (seconds since the epoch)
    /// when they hold a header record.
    static bool parseHeader(const char* first80, std::int64_t& created);
    /// The backup name of path for a rotation at that local time.
    static std::string backupName(const std::string& path, const osl::platform::LocalTime& at);

private:
    class Guard;
    enum Problem : unsigned { kNoLock = 1, kNoRotation = 2, kNoReopen = 4 };

    bool lockUsable() const;
    void tryLock(std::int64_t now);
    bool reopen(osl::platform::WallTime now);
    void create(osl::platform::WallTime now);
    bool due(std::int64_t now) const;
    void rotate(osl::platform::WallTime now);
    std::string linkBackup(osl::platform::WallTime now, bool& linked);
    void retain(const std::string& backup, std::int64_t now);
    void report(Problem problem, const std::string& text);

    LogFileSettings settings_;
    std::string lockPath_;
    int owner_;
    osl::platform::AppendFile file_;
    osl::platform::FileInfo identity_;
    osl::platform::RotationLock lock_;
    int lockOwner_ = 0;          // the process that opened lock_
    std::int64_t lockRetryAt_ = 0;
    std::int64_t rotateRetryAt_ = 0;
    std::uint64_t generation_ = 0;
    std::uint64_t seenRotations_ = 0;        // of this process, when generation_ was last compared
    std::int64_t lastGenerationCheck_ = 0;   // microseconds
    std::int64_t nextGenerationCheck_ = 0;
    std::uint64_t size_ = 0;     // this process's count, refreshed from the file once a second
    bool createdKnown_ = false;
    std::int64_t created_ = 0;
    std::int64_t nextCheck_ = 0;
    unsigned reported_ = 0;
    std::vector<std::string> ownBackups_;  // of a private file, which has no lock file
    std::string buffer_;  // the line being written, with its CR LF
};

}  // namespace osl::detail
