// An INI file that is never written in place.
#pragma once

#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/osl_api.h>

#include <string>

/// An Ini whose flush writes a numbered temporary file next to its file F (F.tmp1, F.tmp2 ...,
/// one counter for the whole process), syncs it to the disk and then renames it over F in one
/// step: a crash or a kill at any moment leaves F either with its old or with its new content,
/// never half-written. F keeps its permission bits.
class OSL_API BackupIni : public Ini {
public:
    /// Reads the file at once, writable. Throws as Ini::LoadAdd.
    explicit BackupIni(const std::string& fileName);
    BackupIni(const BackupIni&) = default;
    BackupIni& operator=(const BackupIni&) = default;
    ~BackupIni() override;

    /// Writes the table to the object's own file; the argument is ignored. Throws Ini's errors 2
    /// and 3 for the temporary file, QIBError "Cannot copy file: TMP to: F" when the replacement
    /// fails and "Cannot delete file: TMP " when the temporary file cannot be removed afterwards
    /// (code and severity 12). The object's file name is F again whatever happens.
    void FlushIniDataToFile(const std::string& fileName) override;
};
