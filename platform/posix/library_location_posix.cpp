// platform/posix/library_location_posix.cpp
// dladdr on a function of this file names the shared object (or program) that contains it.
#include "platform/library_location.h"

#include <dlfcn.h>

#include <climits>
#include <cstdlib>

namespace osl::platform {

std::string libraryDirectory() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&libraryDirectory), &info) == 0 || info.dli_fname == nullptr) return {};
    std::string path = info.dli_fname;
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) != nullptr) path = resolved;
    size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

}  // namespace osl::platform
