// platform/posix/library_location_posix.cpp
// The module that holds a function of this file is the library (or the program that links it).
#include "platform/library_location.h"

#include <climits>
#include <cstdlib>

#include "platform/dynamic_library.h"

namespace osl::platform {

std::string libraryPath() {
    std::string path = modulePathOf(reinterpret_cast<const void*>(&libraryPath));
    if (path.empty()) return {};
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) != nullptr) path = resolved;
    return path;
}

std::string libraryDirectory() {
    const std::string path = libraryPath();
    if (path.empty()) return {};
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

}  // namespace osl::platform
