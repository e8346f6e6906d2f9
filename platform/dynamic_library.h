// platform/dynamic_library.h
// Loading shared libraries, resolving their symbols, and the file a loaded symbol came from.
#pragma once

#include <string>

namespace osl::platform {

/// Why a load or a look-up failed: the loader's own text, and errno when the loader set it
/// (2 for a library file that does not exist), else -1.
struct LibraryFailure {
    long code = 0;
    std::string text;
};

/// Loads a library with every symbol resolved now. A name without "/" is searched the loader's
/// way (LD_LIBRARY_PATH, the cache, the default directories). Null on failure, with `failure` set.
void* openLibrary(const std::string& name, LibraryFailure& failure);

/// The address of the named symbol of a library from openLibrary. Null when it is not there,
/// with `failure` set; `found` tells a symbol whose address is null from a missing one.
void* findSymbol(void* library, const std::string& name, bool& found, LibraryFailure& failure);

/// Releases a library from openLibrary; a null handle is ignored.
void closeLibrary(void* library);

/// The system's text for an error number, or "" when the system has no text of its own for it.
std::string systemErrorText(long code);

/// The path of the file (shared library or program) that holds the given code or data address;
/// empty when the loader does not know it.
std::string modulePathOf(const void* address);

}  // namespace osl::platform
