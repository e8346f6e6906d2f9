// Walking a directory with a wildcard, and temporary files.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>

class Osl_File;

/// A search over one directory, made by OslFindFirstFile and ended by OslFindClose; null is no
/// search. A handle is used by one thread at a time.
struct Osl_FindData;
typedef Osl_FindData* FHANDLE;

/// Starts a search of directory (UTF-8) for names that match wildcard (WildcardString: * and ?,
/// case-sensitive unless caseSensitive is false) and gives the first in name. Entries come in
/// the directory's order, "." and ".." excluded. Returns null, with errno set, when nothing
/// matches (ENOENT) or the directory cannot be read (its errno, EILSEQ for a name that does not
/// convert); no handle is then to be closed. A wildcard that does not compile throws the QIBError
/// of WildcardString.
OSL_API FHANDLE OslFindFirstFile(const std::string& directory, const std::string& wildcard, std::string& name,
                                 bool caseSensitive = true);
/// The next matching name; false at the end (errno 0) or on a read error (errno set).
OSL_API bool OslFindNextFile(FHANDLE handle, std::string& name);
/// Ends the search; null is allowed.
OSL_API void OslFindClose(FHANDLE handle);

/// Creates a new empty file with an unpredictable name (mkstemp) in the temporary directory
/// (TMPDIR, else /tmp), readable and writable by its owner only, and returns its path:
/// "<dir>/<prefix>XXXXXX". When file is given it receives the open file (read and write), so the
/// name is never opened a second time. The caller removes the file. Throws QIBError (severity
/// 8, the errno as code) when it cannot be created. Thread-safe.
OSL_API std::string CreateTempFile(const std::string& prefix = "osl", Osl_File* file = nullptr);
