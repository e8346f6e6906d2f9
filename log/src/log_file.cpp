// log/src/log_file.cpp
// Several processes append to one log file and rotate it. The rules that keep every line:
// - a line is one write(2) to a file opened with O_APPEND, so lines never tear or interleave;
// - a file under the log path always starts with its header: a new file is written complete
//   under a temporary name and linked into place;
// - rotation gives the current file a second name (the backup) with link(2), which never
//   replaces an existing backup, then renames the new file over the log path: the path always
//   names a complete file, and a writer still holding the old file writes into the backup;
// - rotation and creation run under an exclusive flock(2) on "<path>.lock"; the decision is
//   taken again under the lock on the file then current, so one crossing rotates once;
// - the lock file's record holds a generation that every rotation raises, so the file stays open
//   between lines. A system call costs as much as the write of a line, so the record is read at
//   most once a millisecond; a rotation in this process is seen at the next line through a
//   counter in memory. Until then a line lands in the backup, which is still one file of the
//   log. Once a second a writer also checks the path itself, for files removed or moved by other
//   programs, and the size that others appended;
// - when the lock file cannot be had, or a rotation or a reopening fails, the line still goes
//   into the file open (or the one under the path), and the failure is tried again later.
#include "log/src/log_file.h"

#include <vum-qib-osl/misc/qib_error.h>

#include "log/src/log_locks.h"
#include "platform/process.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <mutex>

namespace osl::detail {
namespace {

constexpr char kWhere[] = "log\\src\\channel";
constexpr std::size_t kRecordLength = 81;
constexpr std::int64_t kSecondsPerDay = 86400;
constexpr std::int64_t kRetrySeconds = 10;
constexpr std::int64_t kGenerationCheckMicros = 1000;

// Rotations made by any file channel of this process.
std::atomic<std::uint64_t> localRotations{0};

[[noreturn]] void throwFileError(const std::string& what, const std::string& path, std::error_code ec, long line) {
    throw QIBError("Log file: " + what + " " + path + ": " + ec.message(), ec.value(), 8, kWhere, line);
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

std::string inDirectoryOf(const std::string& path, const std::string& name) {
    return (std::filesystem::path(path).parent_path() / name).string();
}

}  // namespace

// The in-process mutex and, for a shared file whose lock file could be opened, its flock.
class LogFile::Guard {
public:
    explicit Guard(LogFile& file) : file_(file), lock_(rotationMutex()) {
        locked_ = file_.lockUsable() && !file_.lock_.lock();
    }
    ~Guard() {
        if (locked_) file_.lock_.unlock();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    bool locked() const { return locked_; }

private:
    LogFile& file_;
    std::lock_guard<std::mutex> lock_;
    bool locked_ = false;
};

LogFile::LogFile(LogFileSettings settings)
    : settings_(std::move(settings)), lockPath_(settings_.path + ".lock"), owner_(osl::platform::currentProcessId()) {}

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
    char name[64];
    std::snprintf(name, sizeof name, "_%d_%02d_%02d_%02d_%02d_%02d_%06d", t.year, t.month, t.day, t.hour, t.minute,
                  t.second, t.micros);
    return inDirectoryOf(path, std::filesystem::path(path).stem().string() + name + ".bak");
}

void LogFile::report(Problem problem, const std::string& text) {
    if (reported_ & problem) return;
    reported_ |= problem;
    std::fprintf(stderr, "vum-qib-osl: log file %s: %s\n", settings_.path.c_str(), text.c_str());
}

// A flock taken through a descriptor inherited over fork would not exclude the parent: the lock
// file counts only in the process that opened it.
bool LogFile::lockUsable() const { return lock_.isOpen() && lockOwner_ == osl::platform::currentProcessId(); }

void LogFile::tryLock(std::int64_t now) {
    if (!settings_.shared || lockUsable() || now < lockRetryAt_) return;
    osl::platform::FileInfo logFile = identity_;
    if (!logFile.exists) osl::platform::statFile(settings_.path, logFile);
    if (std::error_code ec = lock_.open(lockPath_, logFile)) {
        lockRetryAt_ = now + kRetrySeconds;
        report(kNoLock, "cannot open " + lockPath_ + " (" + ec.message() +
                            "): lines are appended without rotation until it can");
        return;
    }
    lockOwner_ = osl::platform::currentProcessId();
    if ((reported_ & kNoLock) && lock_.writable()) reported_ &= ~kNoLock;
    if (!lock_.writable()) report(kNoLock, "cannot write " + lockPath_ + ": other writers see its rotations late");
}

void LogFile::writeLine(const char* text, std::size_t size) {
    const osl::platform::WallTime now = osl::platform::clock().now();
    tryLock(now.seconds);
    const std::int64_t micros = now.seconds * 1000000 + now.micros;
    const std::uint64_t rotations = localRotations.load(std::memory_order_acquire);
    bool recheck = false;
    if (rotations != seenRotations_ || micros >= nextGenerationCheck_ || micros < lastGenerationCheck_) {
        seenRotations_ = rotations;
        lastGenerationCheck_ = micros;
        nextGenerationCheck_ = micros + kGenerationCheckMicros;
        recheck = lockUsable() && lock_.generation() != generation_;
    }
    bool created = false;  // a file that did not exist is not rotated before its first line
    if (!file_.isOpen() || recheck) {
        Guard guard(*this);
        created = reopen(now);
    } else if (now.seconds >= nextCheck_) {
        osl::platform::FileInfo current;
        std::error_code ec = osl::platform::statFile(settings_.path, current);
        nextCheck_ = now.seconds + 1;
        if (ec || !current.sameFile(identity_)) {
            Guard guard(*this);
            created = reopen(now);
        } else if (current.size > size_) {
            size_ = current.size;  // counts what other processes appended too
        }
        if (lockUsable() && !lock_.isAt(lockPath_)) {
            // Removed or replaced: processes that open it from now on must be excluded too.
            lockOwner_ = 0;
            lockRetryAt_ = 0;
            tryLock(now.seconds);
        }
    }
    if (!created && now.seconds >= rotateRetryAt_ && due(now.seconds)) rotate(now);
    // One write(2) per line: appends of several processes then never interleave.
    buffer_.assign(text, size);
    buffer_.append("\r\n", 2);
    if (std::error_code ec = file_.append(buffer_.data(), buffer_.size())) {
        throwFileError("cannot write", settings_.path, ec, __LINE__);
    }
    size_ += buffer_.size();
}

bool LogFile::due(std::int64_t now) const {
    if (settings_.maxsize != 0 && size_ > settings_.maxsize) return true;
    return settings_.period != 0 && createdKnown_ &&
           (now - created_) / kSecondsPerDay >= static_cast<std::int64_t>(settings_.period);
}

void LogFile::create(osl::platform::WallTime now) {
    // Complete under a temporary name first: no writer ever sees the file without its header. The
    // name carries the process id: without the lock file, other processes may create at once.
    const std::string fresh = settings_.path + ".new" + std::to_string(osl::platform::currentProcessId());
    osl::platform::removeFile(fresh);
    if (std::error_code ec =
            osl::platform::writeNewFile(fresh, headerRecord(osl::platform::toLocal(now)), identity_)) {
        throwFileError("cannot create", fresh, ec, __LINE__);
    }
    std::error_code ec = osl::platform::linkFile(fresh, settings_.path);
    osl::platform::removeFile(fresh);
    // Another program may have created the file meanwhile: then that file is the log.
    if (ec && ec != std::errc::file_exists) throwFileError("cannot create", settings_.path, ec, __LINE__);
}

bool LogFile::reopen(osl::platform::WallTime now) {
    nextCheck_ = now.seconds + 1;
    const std::uint64_t generation = lockUsable() ? lock_.generation() : generation_;
    osl::platform::AppendFile fresh;
    bool created = false;
    std::error_code ec = fresh.open(settings_.path);
    if (ec == std::errc::no_such_file_or_directory) {
        try {
            create(now);
            created = true;
            ec = fresh.open(settings_.path);
        } catch (const QIBError&) {
            if (!file_.isOpen()) throw;
            report(kNoReopen, "cannot create it again: lines go to the file open before");
            return false;
        }
    }
    if (ec) {
        // The file open before stays in use: its lines are kept, only in another file.
        if (!file_.isOpen()) throwFileError("cannot open", settings_.path, ec, __LINE__);
        report(kNoReopen, "cannot open it again (" + ec.message() + "): lines go to the file open before");
        return false;
    }
    osl::platform::FileInfo info;
    if ((ec = fresh.info(info))) throwFileError("cannot read the status of", settings_.path, ec, __LINE__);
    file_.swap(fresh);
    identity_ = info;
    generation_ = generation;
    createdKnown_ = false;

    char first[80];
    std::size_t got = 0;
    if ((ec = file_.readAt(first, sizeof first, 0, got)) == std::errc::bad_file_descriptor) {
        got = sizeof first + 1;  // opened write-only: the creation time stays unknown
    } else if (ec) {
        throwFileError("cannot read", settings_.path, ec, __LINE__);
    }
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
    size_ = identity_.size;
    return created;
}

void LogFile::rotate(osl::platform::WallTime now) {
    Guard guard(*this);
    // Without the lock file two processes could rotate one crossing twice: then the file grows.
    if (settings_.shared && !guard.locked()) {
        rotateRetryAt_ = now.seconds + kRetrySeconds;
        return;
    }
    // Decide again on the file now under the path: another process may have rotated it already.
    if (reopen(now) || !due(now.seconds)) return;
    bool linked = true;
    std::string backup;
    try {
        backup = linkBackup(now, linked);
    } catch (const QIBError& e) {
        rotateRetryAt_ = now.seconds + kRetrySeconds;
        report(kNoRotation, "cannot rotate (" + e.What() + "): lines go on into the file");
        return;
    }
    reported_ &= ~kNoRotation;
    if (guard.locked()) lock_.bumpGeneration();
    localRotations.fetch_add(1, std::memory_order_acq_rel);
    reopen(now);
    retain(backup, now.seconds);
}

// Gives the file its backup name and puts a new one under the path; throws when it cannot, with
// everything as it was.
std::string LogFile::linkBackup(osl::platform::WallTime now, bool& linked) {
    const std::string fresh = settings_.path + ".new" + std::to_string(osl::platform::currentProcessId());
    osl::platform::removeFile(fresh);
    if (std::error_code ec = osl::platform::writeNewFile(fresh, headerRecord(osl::platform::toLocal(now)), identity_)) {
        throwFileError("cannot create", fresh, ec, __LINE__);
    }
    // A backup name already taken (two rotations within one microsecond, or a clock set back)
    // moves on by a microsecond: an existing backup is never replaced.
    osl::platform::WallTime stamp = now;
    std::error_code ec;
    std::string backup;
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
    return backup;
}

// Retention deletes only backups that rotations of this log made, as recorded in its lock file
// (in memory for a private file): "app.log" and "app.txt" in one directory both back up to
// "app_*.bak", and neither may delete the other's.
void LogFile::retain(const std::string& backup, std::int64_t now) {
    const bool recorded = settings_.shared && lockUsable() && lock_.writable();
    std::vector<std::string> names = recorded ? lock_.backups() : ownBackups_;
    names.push_back(std::filesystem::path(backup).filename().string());
    std::vector<std::string> present;
    const std::string dir = std::filesystem::path(settings_.path).parent_path().string();
    osl::platform::DirectoryReader reader;
    std::error_code ec = reader.open(dir.empty() ? "." : dir);
    for (std::string name; !ec && reader.next(name, ec);) present.push_back(name);
    if (ec) {  // an unreadable directory: keep the record, delete nothing
        if (recorded) lock_.setBackups(names);
        if (!recorded) ownBackups_ = std::move(names);
        return;
    }
    std::sort(present.begin(), present.end());
    const std::string stem = std::filesystem::path(settings_.path).stem().string();
    std::vector<std::string> kept;
    for (const std::string& name : names) {
        osl::platform::LocalTime t;
        if (backupTime(name, stem, t) && std::binary_search(present.begin(), present.end(), name)) kept.push_back(name);
    }
    std::sort(kept.begin(), kept.end());  // zero-padded fields sort by time
    kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
    const std::size_t excess =
        settings_.purgeCount != 0 && kept.size() > settings_.purgeCount ? kept.size() - settings_.purgeCount : 0;
    std::vector<std::string> remaining;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        bool expired = false;
        if (settings_.purgeAge != 0) {
            osl::platform::LocalTime t;
            backupTime(kept[i], stem, t);
            const std::int64_t at = seconds(t);
            expired = at != -1 && (now - at) / kSecondsPerDay >= static_cast<std::int64_t>(settings_.purgeAge);
        }
        if ((i < excess || expired) && !osl::platform::removeFile(inDirectoryOf(settings_.path, kept[i]))) continue;
        remaining.push_back(kept[i]);
    }
    if (recorded) {
        lock_.setBackups(remaining);
    } else {
        ownBackups_ = std::move(remaining);
    }
}

}  // namespace osl::detail
