// An INI file that is never written in place.
#pragma once

#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/osl_api.h>

#include <string>

/// An Ini whose flush never writes its file F in place: the table goes into a temporary file
/// F.tmpN beside it (N from one counter for the whole process, advanced past names that exist,
/// so several processes and threads never share one), created exclusively and never through a
/// planted symlink, with F's mode from the first byte; it is synced to the disk and renamed over
/// F in one step, then the directory is synced. A crash or a kill at any moment leaves F with its
/// old or its new content, never half-written; several writers leave the table of one of them.
/// F keeps its mode, owner and group (the owner as far as the process may give it: a flush run
/// as root keeps a service's file the service's). A symlink F stays a link and the file it
/// points to is replaced; another hard link to F keeps the old content. When F's directory takes
/// no new file but F is writable, F is rewritten in place (said once on stderr).
class OSL_API BackupIni : public Ini {
public:
    /// Reads the file at once, writable. Throws as Ini::LoadAdd.
    explicit BackupIni(const std::string& fileName);
    BackupIni(const BackupIni&) = default;
    BackupIni& operator=(const BackupIni&) = default;
    BackupIni(BackupIni&&) noexcept = default;
    BackupIni& operator=(BackupIni&&) noexcept = default;
    ~BackupIni() override;

    /// Writes the table to the object's own file; the argument is ignored. Throws Ini's error 2
    /// for a read-only table, 3 when the temporary file cannot be created or written (or F's
    /// name does not convert to the file-system encoding), and QIBError "Cannot copy file: TMP
    /// to: F" (code and severity 12) when it cannot be synced or renamed over F; the temporary
    /// file is gone then. The object's file name stays F.
    void FlushIniDataToFile(const std::string& fileName) override;
};
