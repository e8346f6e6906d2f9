// The file channels: the common log file that several processes share, rotated by size and by
// age, and the private log file of one process.
#pragma once

#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/osl_api.h>

#include <cstdint>
#include <memory>
#include <string>

namespace osl::detail {
class LogFile;
}

/// A text file that every process of the product may append to (INI type "text-file"). Each line
/// ends in CR LF; the first line of every file is an 81-character header record
/// ("LOG 1 00 YYYYMMDDhhmmss" and blanks) giving its creation time. Before a line is written the
/// file is rotated when it is larger than maxsize bytes or when period whole days have passed
/// since its creation: it becomes "<stem>_YYYY_MM_DD_hh_mm_ss_uuuuuu.bak" in its directory and a
/// new file with a header takes its place. Backups are kept for ever unless purgecount or
/// purgeage say otherwise.
///
/// Safe for several processes: lines never interleave, each lands in the file or in exactly one
/// backup, one crossing of a limit rotates once. The channel keeps the file open between lines
/// and coordinates through "<path>.lock" next to it (flock and a small record, which also lists
/// the backups that this log made: retention deletes only those). When the lock file cannot be
/// opened or a rotation fails, lines still go into the file and the failure is said once on
/// standard error. Only a line that cannot be written throws QIBError; the logger drops it.
class OSL_API CChannelCommonFile : public CChannel {
public:
    /// Path "run.log", level none, no limits.
    CChannelCommonFile();
    /// The channel of CLog::SetFileChannel: no age and no size limit.
    CChannelCommonFile(const std::string& fileName, LogSeverity level, std::string category);
    /// Configured from the group of the INI (see Configure).
    CChannelCommonFile(Ini& ini, const std::string& group);
    ~CChannelCommonFile() override;

    /// Reads "path" (default "run.log"), "level" and "category", "period" (days) and "maxsize"
    /// (bytes), then "purgecount" and "purgeage" (days); a missing, empty or non-numeric number
    /// is 0, that is no limit. A number is read as "%lu" reads it ("10k" is 10) cut to 32 bits;
    /// such mistakes and an empty path (nothing is written then) are said on standard error.
    void Configure(Ini& ini, const std::string& group) override;
    void Write(CLogMsg& msg) override;

    const std::string& GetPath() const { return path_; }
    std::uint32_t GetPeriod() const { return period_; }
    std::uint32_t GetMaxSize() const { return maxsize_; }
    std::uint32_t GetPurgeCount() const { return purgeCount_; }
    std::uint32_t GetPurgeAge() const { return purgeAge_; }
    /// Age limit in whole days; 0: none. Takes effect with the next line.
    void SetPeriod(std::uint32_t days);
    /// Size limit in bytes; 0: none.
    void SetMaxSize(std::uint32_t bytes);
    /// Keep only the newest count backups after a rotation; 0: no limit.
    void SetPurgeCount(std::uint32_t count);
    /// Delete backups older than days after a rotation; 0: no limit.
    void SetPurgeAge(std::uint32_t days);
    /// Another file from the next line on.
    void SetPath(const std::string& path);

protected:
    /// The file's name as the channel writes it (the private channel adds its process id).
    virtual std::string FileName() const { return path_; }
    /// Whether other processes may write the same file.
    virtual bool Shared() const { return true; }
    void Reset();

    std::string path_;
    std::uint32_t period_ = 0;
    std::uint32_t maxsize_ = 0;
    std::uint32_t purgeCount_ = 0;
    std::uint32_t purgeAge_ = 0;

private:
    std::unique_ptr<osl::detail::LogFile> file_;
};

/// A log file that only this process writes (INI type "private-file"): the configured path with
/// "_<process id>" before its extension ("run.log" gives "run_4242.log"), the id of the process
/// that writes the line, so that a forked child writes a file of its own. Same keys, header,
/// rotation and retention as the common file; no lock file.
class OSL_API CChannelPrivateFile : public CChannelCommonFile {
public:
    CChannelPrivateFile();
    CChannelPrivateFile(const std::string& fileName, LogSeverity level, std::string category);
    CChannelPrivateFile(Ini& ini, const std::string& group);
    ~CChannelPrivateFile() override;

    /// The path with the process id, as written.
    std::string GetFileName() const { return FileName(); }

protected:
    std::string FileName() const override;
    bool Shared() const override { return false; }
};
