// log/src/log_file.cpp
// Several processes append to one log file and rotate it. The rules that keep every line:
// - a line is one write(2) to a file opened with O_APPEND, so lines never tear or interleave;
// - a file under the log path always starts with its header: a new file is written complete
//   under a temporary name and renamed into place;
// - rotation gives the current file a second name (the backup) with link(2), which never
//   replaces an existing backup, then renames the new file over the log path: the path always
//   names a complete file, and a writer still holding the old file writes into the backup;
// - rotation and creation run under an exclusive flock(2) on "<path>.lock"; the decision is
//   taken again under the lock on the file then current, so one crossing rotates once;
// - the lock file also holds a shared record (generation, identity and size of the current
//   file), so the file stays open between lines and a writer learns of another process's
//   rotation from one memory load; once a second it also checks the path itself, for files
//   removed or moved by other programs.
#include "log/src/log_file.h"

#include <vum-qib-osl/misc/qib_error.h>

#include "platform/process.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>

namespace osl::detail {
namespace {

constexpr char kWhere[] = "log\\src\\channel";
constexpr std::size_t kRecordLength = 81;
constexpr std::int64_t kSecondsPerDay = 86400;

[[noreturn]] void throwFileError(const std::string& what, const std::string& path, std::error_code ec, long line) {
    throw QIBError("Log file: " + what + " " + path + ": " + ec.message(), ec.value(), 8, kWhere, line);
}

// Rotation and creation of every file channel in the process; the flock serialises processes.
std::mutex& rotationMutex() {
    static std::mutex* mutex = new std::mutex;
    return *mutex;
}

std::int64_t seconds(const osl::platform::LocalTime& t) {
    return osl::platform::fromLocal(t.year, t.month, t.day, t.hour, t.minute, t.second);
}

// "<stem>_YYYY_MM_DD_hh_mm_ss_uuuuuu.bak": the timestamp of a backup of stem, or false.
bool backupTime(const std::string& name, const std::string& stem, osl::platform::LocalTime& t) {
    if (name.size() != stem.size() + 31 || name.compare(0, stem.size(), stem) != 0) return false;
    const char* p = name.c_str() + stem.size();
    static const char kShape[] = "_dddd_dd_dd_dd_dd_dd_dddddd.bak";
    for (std::size_t i = 0; i < 31; ++i) {
        if (kShape[i] == 'd' ? (p[i] < '0' || p[i] > '9') : p[i] != kShape[i]) return false;
    }
    return std::sscanf(p, "_%4d_%2d_%2d_%2d_%2d_%2d_%6d", &t.year, &t.month, &t.day, &t.hour, &t.minute,
                       &t.second, &t.micros) == 7;
}

}  // namespace

// The in-process mutex and, for a shared file, the lock file's flock.
class LogFile::Guard {
public:
    explicit Guard(LogFile& file) : file_(file), lock_(rotationMutex()) {
        if (!file_.settings_.shared) return;
        // A flock belongs to the open file, which a child shares with its parent after fork:
        // the child opens the lock file anew, or the two would not exclude each other.
        const int pid = osl::platform::currentProcessId();
        if (file_.shared_.isOpen() && file_.sharedOwner_ != pid) file_.shared_.close();
        if (!file_.shared_.isOpen()) {
            if (std::error_code ec = file_.shared_.open(file_.lockPath_)) {
                throwFileError("cannot open the lock file", file_.lockPath_, ec, __LINE__);
            }
            file_.sharedOwner_ = pid;
        }
        if (std::error_code ec = file_.shared_.lock()) throwFileError("cannot lock", file_.lockPath_, ec, __LINE__);
    }
    ~Guard() {
        if (file_.settings_.shared) file_.shared_.unlock();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    LogFile& file_;
    std::lock_guard<std::mutex> lock_;
};

LogFile::LogFile(LogFileSettings settings) : settings_(std::move(settings)), lockPath_(settings_.path + ".lock") {}

std::string LogFile::headerRecord(const osl::platform::LocalTime& t) {
    char record[kRecordLength + 64];
    int n = std::snprintf(record, sizeof record, "%3.3s %01d %02d %04d%02d%02d%02d%02d%02d", "LOG", 1, 0, t.year,
                          t.month, t.day, t.hour, t.minute, t.second);
    std::string header(record, n > 0 ? static_cast<std::size_t>(n) : 0);
    header.resize(kRecordLength, ' ');
    return header + "\r\n";
}

bool LogFile::parseHeader(const char* first80, std::int64_t& created) {
    if (std::strncmp(first80, "LOG", 3) != 0) return false;
    char text[81];
    std::memcpy(text, first80, 80);
    text[80] = '\0';
    char tag[81];
    int version = 0, reserved = 0;
    osl::platform::LocalTime t;
    int fields = std::sscanf(text, "%3s %1d %2d %4d%02d%2d%2d%2d%d", tag, &version, &reserved, &t.year, &t.month,
                             &t.day, &t.hour, &t.minute, &t.second);
    if (fields != 9) return false;
    created = seconds(t);
    return created != -1;
}

std::string LogFile::backupName(const std::string& path, const osl::platform::LocalTime& t) {
    const std::filesystem::path p(path);
    char name[64];
    std::snprintf(name, sizeof name, "_%d_%02d_%02d_%02d_%02d_%02d_%06d", t.year, t.month, t.day, t.hour, t.minute,
                  t.second, t.micros);
    return (p.parent_path() / (p.stem().string() + name + ".bak")).string();
}

std::vector<std::string> LogFile::backups(const std::string& path) {
    const std::filesystem::path p(path);
    const std::filesystem::path dir = p.parent_path().empty() ? std::filesystem::path(".") : p.parent_path();
    const std::string stem = p.stem().string();
    std::vector<std::string> names;
    std::error_code ec;
    for (std::filesystem::directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        osl::platform::LocalTime t;
        std::string name = it->path().filename().string();
        if (backupTime(name, stem, t)) names.push_back(name);
    }
    // Zero-padded fields (years of four digits) sort by time.
    std::sort(names.begin(), names.end());
    for (std::string& name : names) name = (p.parent_path() / name).string();
    return names;
}

std::uint64_t LogFile::knownSize() const { return settings_.shared ? shared_.size() : localSize_; }

void LogFile::writeLine(const char* text, std::size_t size) {
    const osl::platform::WallTime now = osl::platform::clock().now();
    bool created = false;  // a file that did not exist is not rotated before its first line
    if (!file_.isOpen() || (settings_.shared && shared_.generation() != generation_)) {
        Guard guard(*this);
        created = openLocked(now);
    } else if (now.seconds >= nextIdentityCheck_) {
        osl::platform::FileInfo current;
        std::error_code ec = osl::platform::statFile(settings_.path, current);
        nextIdentityCheck_ = now.seconds + 1;
        if (ec || !current.sameFile(identity_)) {
            Guard guard(*this);
            created = openLocked(now);
        } else if (settings_.shared) {
            shared_.raiseSize(current.size);  // counts what other programs appended too
        } else if (current.size > localSize_) {
            localSize_ = current.size;
        }
    }
    if (!created && due(now)) rotate(now);
    // One write(2) per line: appends of several processes then never interleave.
    buffer_.assign(text, size);
    buffer_.append("\r\n", 2);
    if (std::error_code ec = file_.append(buffer_.data(), buffer_.size())) {
        throwFileError("cannot write", settings_.path, ec, __LINE__);
    }
    if (settings_.shared) {
        shared_.addSize(buffer_.size());
    } else {
        localSize_ += buffer_.size();
    }
}

bool LogFile::due(osl::platform::WallTime now) const {
    if (settings_.maxsize != 0 && knownSize() > settings_.maxsize) return true;
    return settings_.period != 0 && createdKnown_ &&
           (now.seconds - created_) / kSecondsPerDay >= static_cast<std::int64_t>(settings_.period);
}

void LogFile::createLocked(osl::platform::WallTime now) {
    // Complete under a temporary name first: no writer ever sees the file without its header.
    const std::string fresh = settings_.path + ".new";
    if (std::error_code ec = osl::platform::writeNewFile(fresh, headerRecord(osl::platform::toLocal(now)))) {
        throwFileError("cannot create", fresh, ec, __LINE__);
    }
    std::error_code ec = osl::platform::linkFile(fresh, settings_.path);
    osl::platform::removeFile(fresh);
    // Another program may have created the file meanwhile: then that file is the log.
    if (ec && ec != std::errc::file_exists) throwFileError("cannot create", settings_.path, ec, __LINE__);
}

bool LogFile::openLocked(osl::platform::WallTime now) {
    file_.close();
    createdKnown_ = false;
    if (settings_.shared) generation_ = shared_.generation();
    bool created = false;
    std::error_code ec = file_.open(settings_.path, false);
    if (ec == std::errc::no_such_file_or_directory) {
        createLocked(now);
        created = true;
        ec = file_.open(settings_.path, false);
    }
    if (ec) throwFileError("cannot open", settings_.path, ec, __LINE__);
    if ((ec = file_.info(identity_))) throwFileError("cannot read the status of", settings_.path, ec, __LINE__);
    nextIdentityCheck_ = now.seconds + 1;

    char first[80];
    std::size_t got = 0;
    if ((ec = file_.readAt(first, sizeof first, 0, got))) throwFileError("cannot read", settings_.path, ec, __LINE__);
    if (got == 0) {
        const std::string header = headerRecord(osl::platform::toLocal(now));
        if ((ec = file_.append(header.data(), header.size()))) {
            throwFileError("cannot write", settings_.path, ec, __LINE__);
        }
        identity_.size = header.size();
        created_ = seconds(osl::platform::toLocal(now));
        createdKnown_ = created_ != -1;
    } else if (got == sizeof first) {
        createdKnown_ = parseHeader(first, created_);
    }
    if (settings_.shared) {
        shared_.setCounted(identity_);
    } else {
        localSize_ = identity_.size;
    }
    return created;
}

void LogFile::rotate(osl::platform::WallTime now) {
    Guard guard(*this);
    // Decide again on the file now under the path: another process may have rotated it already.
    if (openLocked(now) || !due(now)) return;

    const std::string fresh = settings_.path + ".new";
    const osl::platform::LocalTime local = osl::platform::toLocal(now);
    if (std::error_code ec = osl::platform::writeNewFile(fresh, headerRecord(local))) {
        throwFileError("cannot create", fresh, ec, __LINE__);
    }
    // A backup name already taken (two rotations within one microsecond, or a clock set back)
    // moves on by a microsecond: an existing backup is never replaced.
    osl::platform::WallTime stamp = now;
    std::error_code ec;
    std::string backup;
    bool linked = true;
    for (int attempt = 0; attempt < 1000; ++attempt) {
        backup = backupName(settings_.path, osl::platform::toLocal(stamp));
        ec = osl::platform::linkFile(settings_.path, backup);
        if (ec && ec != std::errc::file_exists) {
            // A file system without hard links: rename, after making sure the name is free.
            osl::platform::FileInfo existing;
            if ((ec = osl::platform::statFile(backup, existing))) break;
            if (existing.exists) {
                ec = std::make_error_code(std::errc::file_exists);
            } else {
                ec = osl::platform::renameFile(settings_.path, backup);
                linked = false;
            }
        }
        if (ec != std::errc::file_exists) break;
        if (++stamp.micros == 1000000) {
            stamp.micros = 0;
            ++stamp.seconds;
        }
    }
    if (ec) {
        osl::platform::removeFile(fresh);
        throwFileError("cannot rename to its backup", settings_.path, ec, __LINE__);
    }
    if ((ec = osl::platform::renameFile(fresh, settings_.path))) {
        // Undo the backup name: the file stays the log, and its lines stay in one file only.
        if (linked) {
            osl::platform::removeFile(backup);
        } else {
            osl::platform::renameFile(backup, settings_.path);
        }
        osl::platform::removeFile(fresh);
        throwFileError("cannot create", settings_.path, ec, __LINE__);
    }
    if (settings_.shared) shared_.bumpGeneration();
    openLocked(now);
    if (settings_.purgeCount != 0 || settings_.purgeAge != 0) purgeLocked(now);
}

void LogFile::purgeLocked(osl::platform::WallTime now) {
    const std::vector<std::string> names = backups(settings_.path);
    const std::string stem = std::filesystem::path(settings_.path).stem().string();
    std::size_t excess = settings_.purgeCount != 0 && names.size() > settings_.purgeCount
                             ? names.size() - settings_.purgeCount
                             : 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        bool expired = false;
        if (settings_.purgeAge != 0) {
            osl::platform::LocalTime t;
            backupTime(std::filesystem::path(names[i]).filename().string(), stem, t);
            std::int64_t at = seconds(t);
            expired = at != -1 && (now.seconds - at) / kSecondsPerDay >= static_cast<std::int64_t>(settings_.purgeAge);
        }
        if (i < excess || expired) osl::platform::removeFile(names[i]);
    }
}

}  // namespace osl::detail
