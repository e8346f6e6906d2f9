// Loading a shared library and resolving its functions, with failures as QIBError.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>

/// Owns at most one loaded shared library. Not copyable: the library is released once, by
/// `freeLibrary` or the destructor.
class OSL_API OslLoadlibrary {
public:
    /// No library loaded.
    OslLoadlibrary();
    /// Calls `freeLibrary`.
    ~OslLoadlibrary();
    OslLoadlibrary(const OslLoadlibrary&) = delete;
    OslLoadlibrary& operator=(const OslLoadlibrary&) = delete;

    /// Loads the library `name` (a path, or a file name searched the loader's way: LD_LIBRARY_PATH,
    /// the cache, the default directories) with all its symbols resolved at once.
    /// Throws QIBError "loadLibrary:LoadLibrary failed - " + the loader's text, code: errno when the
    /// loader set it (2 for a missing file) else -1, severity 8, where "misc\src\dloadlib 38".
    /// A library this object held before is released, also when the new load fails: after a
    /// failure the object holds no library.
    void loadLibrary(const std::string& name);

    /// The address of the exported symbol `name` of the loaded library.
    /// Throws QIBError "getProcAddress: library not loaded " (with its final blank), code 1,
    /// severity 8, where "misc\src\dloadlib 49" when no library is loaded, and
    /// "getProcAddress: GetProcAddress failed - " + the loader's text, code errno or -1,
    /// severity 8, where "misc\src\dloadlib 76" when the symbol is not there.
    void* getProcAddress(const std::string& name);

    /// Releases the loaded library, if any; calling it again does nothing.
    void freeLibrary();

protected:
    /// The system's message text for an error number, or "" when the system has none.
    std::string FormatNtError(long code);

private:
    void* handle_;
};
