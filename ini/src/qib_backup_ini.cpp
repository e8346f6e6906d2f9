// ini/src/qib_backup_ini.cpp
// Flushing through a temporary file and an atomic rename.
#include <vum-qib-osl/ini/qib_backup_ini.h>

#include <vum-qib-osl/misc/qib_error.h>

#include "platform/file_replace.h"

#include <atomic>
#include <cstdio>
#include <filesystem>

namespace {

constexpr char kWhere[] = "ini/src/qib_backup_ini";

// Numbers the temporary files of every BackupIni in the process.
std::atomic<int> flushCounter{0};

[[noreturn]] void throwFlushError(const std::string& text, long line) { throw QIBError(text, 12, 12, kWhere, line); }

}  // namespace

BackupIni::BackupIni(const std::string& fileName) : Ini(fileName, false) {}

BackupIni::~BackupIni() = default;

void BackupIni::FlushIniDataToFile(const std::string& /*fileName*/) {
    const std::string target = GetFileName();
    char number[16];
    std::snprintf(number, sizeof number, "%i", ++flushCounter);
    const std::string temporary = target + ".tmp" + number;
    namespace fs = std::filesystem;
    try {
        SetFileName(temporary);
        try {
            Ini::FlushIniDataToFile("");
        } catch (...) {
            std::error_code ignored;
            fs::remove(temporary, ignored);
            throw;
        }
        std::error_code ec;
        const fs::file_status old = fs::status(target, ec);
        if (!ec && fs::exists(old)) fs::permissions(temporary, old.permissions(), ec);
        if (osl::platform::syncFile(temporary) || osl::platform::replaceFile(temporary, target)) {
            fs::remove(temporary, ec);
            throwFlushError("Cannot copy file: " + temporary + " to: " + target, __LINE__);
        }
        // The rename took the temporary name away, unless both names were links to one file.
        if (fs::exists(fs::symlink_status(temporary, ec)) && !fs::remove(temporary, ec)) {
            throwFlushError("Cannot delete file: " + temporary + " ", __LINE__);
        }
        SetFileName(target);
    } catch (...) {
        SetFileName(target);
        throw;
    }
}
