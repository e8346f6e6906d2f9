// Directories by UTF-8 name: existence, creation, removal, listing with a wildcard.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>
#include <vector>

// Names are UTF-8 and converted with Osl_FileSystemName; a name that does not convert is a
// failure (code EILSEQ), never another name. Failures throw QIBError with severity 8, the errno
// as code and a text naming the operation, the path and the system's message. All functions are
// thread-safe; what several threads or processes do to the same path at once is up to the
// file system, except where a function promises atomicity.

/// Directories.
class OSL_API Osl_Directory {
public:
    /// True when path names a directory (symlinks followed); false for anything else, a missing
    /// path or a name that does not convert. Never throws.
    static bool exists(const std::string& path);
    /// Creates the directory and any missing parents with the permission bits (less the umask).
    /// An existing directory is not an error; an existing non-directory is (EEXIST or ENOTDIR).
    static void create(const std::string& path, unsigned permissions = 0777);
    /// Removes an empty directory.
    static void remove(const std::string& path);
    /// The names (not paths) of the entries that match the wildcard (WildcardString: * and ?),
    /// "." and ".." excluded, sorted by byte value. Names are returned as the file system holds
    /// them. A wildcard that does not compile throws the QIBError of WildcardString.
    static std::vector<std::string> list(const std::string& path, const std::string& wildcard = "*",
                                         bool caseSensitive = true);
};
