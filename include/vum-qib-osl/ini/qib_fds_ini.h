// The installation settings file, config/qib_fds.ini.
#pragma once

#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/osl_api.h>

#include <string>

/// The installation-wide settings file "config/qib_fds.ini", loaded at construction, with
/// property accessors and a "default" group that supplies every section's fallback values.
///
/// Without an installation directory the file is found from the library's own path: the path of
/// libvum-qib-osl.so (of the program, when the library is linked statically) cut at its last
/// "bin" ("/opt/app/bin/libvum-qib-osl.so" gives "/opt/app/config/qib_fds.ini"), or, when it holds
/// no "bin", the parent of the library's directory ("/opt/app/lib/..." gives the same file).
class OSL_API QibFDSIni : public Ini {
public:
    /// Finds the file from the library's path and loads it. Throws QIBError "GetModuleFileName
    /// for qib_fds_ini failed " when the library's path cannot be had and "QibFDSIni::QibFDSIni
    /// file PATH does not exist." (both code 12, severity 99) when there is no file; "Error read
    /// qib_fds file PATH : TEXT" (code 99, severity 12) when it does not load.
    explicit QibFDSIni(bool readOnly = true);
    /// Loads INSTALLDIR/config/qib_fds.ini, with the same errors.
    QibFDSIni(const std::string& installDir, bool readOnly = true);
    QibFDSIni(const char* installDir, bool readOnly = true) : QibFDSIni(std::string(installDir), readOnly) {}
    QibFDSIni(const QibFDSIni&) = default;
    QibFDSIni& operator=(const QibFDSIni&) = default;
    QibFDSIni(QibFDSIni&&) noexcept = default;
    QibFDSIni& operator=(QibFDSIni&&) noexcept = default;
    ~QibFDSIni() override;

    /// The value with %NAME% references expanded, or defaultValue.
    std::string GetProperty(const std::string& section, const std::string& key, const std::string& defaultValue) const;
    /// The value with %NAME% references expanded; when the section lacks the key, the "default"
    /// group's value of the key (expanded), else "".
    std::string GetProperty(const std::string& section, const std::string& key) const;
    /// Sets the value in memory, creating the section when needed. Flush writes it.
    void SetProperty(const std::string& section, const std::string& key, const std::string& value);
    /// Removes the section in memory.
    void DeleteSection(const std::string& section);
    /// Writes the table to the file (in canonical form), crash-safe as Ini::FlushIniDataToFile.
    /// Throws Ini's errors 2 (read-only) and 3.
    void Flush();
    /// The full path of the settings file.
    std::string GetLocation() const { return location_; }

private:
    void LoadFrom(const std::string& path, bool readOnly);

    std::string location_;
};
