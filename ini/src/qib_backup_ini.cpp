// ini/src/qib_backup_ini.cpp
// Flushing through a numbered temporary file and an atomic rename.
#include <vum-qib-osl/ini/qib_backup_ini.h>

#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/misc/qib_error.h>

#include "file/src/file_errors.h"
#include "ini/src/ini_internal.h"

#include <atomic>
#include <sstream>

namespace {

constexpr char kWhere[] = "ini/src/qib_backup_ini";

// Numbers the temporary files of every BackupIni in the process; other writers are kept apart
// by the exclusive creation of each name.
std::atomic<unsigned> flushCounter{0};

}  // namespace

BackupIni::BackupIni(const std::string& fileName) : Ini(fileName, false) {}

BackupIni::~BackupIni() = default;

void BackupIni::FlushIniDataToFile(const std::string& /*fileName*/) {
    if (IsReadOnly()) osl::detail::logAndThrowIniError("Ini::FlushIniDataToFile", 2, __LINE__);
    const std::string& target = GetFileName();
    std::ostringstream text;
    WriteGroups(text);
    const std::string bytes = text.str();
    std::error_code ec;
    osl::platform::ReplaceReport report;
    try {
        report = osl::detail::replaceContent(target, [&bytes](Osl_File& file) { file.write(bytes); }, 0666,
                                             [] { return ++flushCounter; }, ec);
    } catch (const QIBError&) {
        ec = std::make_error_code(std::errc::io_error);  // the write failed (a full disk)
    }
    if (!ec) return;
    if (report.failed == osl::platform::ReplaceStep::commit) {
        throw QIBError("Cannot copy file: " + report.temporary + " to: " + target, 12, 12, kWhere, __LINE__);
    }
    osl::detail::logAndThrowIniError("Ini::FlushIniDataToFile", 3, __LINE__);
}
