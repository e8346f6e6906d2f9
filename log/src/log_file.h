// log/src/log_file.h
// One log file as the file channels write it: the header record, the reading of the creation
// time, rotation by size and by age, backup names, retention, and the protocol that lets several
// processes append to one file and rotate it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/log_file.h"

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

    /// Appends text and CR LF as one line, rotating first when the file is due. Throws QIBError
    /// when the file cannot be opened, rotated or written.
    void writeLine(const char* text, std::size_t size);

    const LogFileSettings& settings() const { return settings_; }

    /// The 81-character header record of a file created at that local time, with its CR LF.
    static std::string headerRecord(const osl::platform::LocalTime& created);
    /// Parses the first 80 bytes of a file: true with the creation time (seconds since the epoch)
    /// when they hold a header record.
    static bool parseHeader(const char* first80, std::int64_t& created);
    /// The backup name of path for a rotation at that local time.
    static std::string backupName(const std::string& path, const osl::platform::LocalTime& at);
    /// The backups of path in its directory, oldest first.
    static std::vector<std::string> backups(const std::string& path);

private:
    class Guard;
    /// Opens the file under the path; true when it had to be created.
    bool openLocked(osl::platform::WallTime now);
    void createLocked(osl::platform::WallTime now);
    bool due(osl::platform::WallTime now) const;
    void rotate(osl::platform::WallTime now);
    void purgeLocked(osl::platform::WallTime now);
    std::uint64_t knownSize() const;

    LogFileSettings settings_;
    std::string lockPath_;
    osl::platform::AppendFile file_;
    osl::platform::FileInfo identity_;
    osl::platform::SharedLogState shared_;
    int sharedOwner_ = 0;  // the process that opened shared_
    std::uint64_t generation_ = 0;
    std::uint64_t localSize_ = 0;
    bool createdKnown_ = false;
    std::int64_t created_ = 0;
    std::int64_t nextIdentityCheck_ = 0;
    std::string buffer_;  // the line being written, with its CR LF
};

}  // namespace osl::detail
