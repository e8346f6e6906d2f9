// ini/src/qib_fds_ini.cpp
// The installation settings file: where it is, its "default" group, and its errors.
#include <vum-qib-osl/ini/qib_fds_ini.h>

#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/misc/qib_error.h>

#include "misc/src/install_root.h"

#include <cstdio>

namespace {

constexpr char kWhere[] = "ini/src/qib_fds_ini";
constexpr char kSettingsFile[] = "config/qib_fds.ini";

// Callers' own readers may report a parse error by its bare number; it leaves here as a QIBError.
[[noreturn]] void throwWrapped(const std::string& operation, int number, long line) {
    throw QIBError(operation + " : " + Ini::ExceptionNumberToString(number), 99, 12, kWhere, line);
}

}  // namespace

QibFDSIni::QibFDSIni(bool readOnly) : Ini("", readOnly) {
    const std::string base = osl::detail::installationRoot();
    if (base.empty()) throw QIBError("GetModuleFileName for qib_fds_ini failed ", 12, 99, kWhere, __LINE__);
    LoadFrom(base + kSettingsFile, readOnly);
}

QibFDSIni::QibFDSIni(const std::string& installDir, bool readOnly) : Ini("", readOnly) {
    if (installDir.empty()) {
        *this = QibFDSIni(readOnly);
        return;
    }
    LoadFrom(installDir + "/" + kSettingsFile, readOnly);
}

QibFDSIni::~QibFDSIni() = default;

void QibFDSIni::LoadFrom(const std::string& path, bool readOnly) {
    if (!Osl_File_System::exists(path)) {
        char text[2048];
        std::snprintf(text, sizeof text, "QibFDSIni::QibFDSIni file %s does not exist.", path.c_str());
        throw QIBError(text, 12, 99, kWhere, __LINE__);
    }
    try {
        Ini::operator=(Ini(path, readOnly));  // a move: the table is not copied
    } catch (const QIBError& e) {
        throw QIBError("Error read qib_fds file " + path + " : " + e.What(), 99, 12, kWhere, __LINE__);
    }
    location_ = path;
}

std::string QibFDSIni::GetProperty(const std::string& section, const std::string& key,
                                   const std::string& defaultValue) const {
    try {
        return GetKeyValue(section, key, defaultValue, true);
    } catch (int number) {
        throwWrapped("QibFDSIni::GetProperty(" + section + "," + key + "," + defaultValue + ")", number, __LINE__);
    }
}

std::string QibFDSIni::GetProperty(const std::string& section, const std::string& key) const {
    try {
        const std::string fallback = GetKeyValue("default", key, "", true);
        return GetKeyValue(section, key, fallback, true);
    } catch (int number) {
        throwWrapped("QibFDSIni::GetProperty(" + section + "," + key + ")", number, __LINE__);
    }
}

void QibFDSIni::SetProperty(const std::string& section, const std::string& key, const std::string& value) {
    try {
        if (!isGroupExist(section)) InsertNewGroup(section);
        SetKeyValue(section, key, value);
    } catch (int number) {
        throwWrapped("QibFDSIni::SetProperty(" + section + "," + key + "," + value + ")", number, __LINE__);
    }
}

void QibFDSIni::DeleteSection(const std::string& section) {
    try {
        EraseGroup(section);
    } catch (int number) {
        // Published under the name SetProperty; log readers match it.
        throwWrapped("QibFDSIni::SetProperty(" + section + ")", number, __LINE__);
    }
}

void QibFDSIni::Flush() {
    try {
        FlushIniDataToFile(location_);
    } catch (int number) {
        throw QIBError("QibFDSIni::Flush : " + Ini::ExceptionNumberToString(number), 99, 12, kWhere, __LINE__);
    }
}
