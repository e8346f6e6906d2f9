// misc/src/install_root.cpp
// The library's own installation root, from the path of the file that holds it.
#include "misc/src/install_root.h"

#include "platform/library_location.h"

namespace osl::detail {

std::string libraryModulePath() { return osl::platform::libraryPath(); }

std::string installationRootFromModulePath(const std::string& modulePath) {
    if (modulePath.empty()) return "";
    const std::size_t bin = modulePath.rfind("bin");
    if (bin != std::string::npos) return modulePath.substr(0, bin);
    const std::size_t fileSlash = modulePath.rfind('/');
    if (fileSlash == std::string::npos) return "../";
    if (fileSlash == 0) return "/";
    const std::size_t dirSlash = modulePath.rfind('/', fileSlash - 1);
    if (dirSlash == std::string::npos) return "./";
    return modulePath.substr(0, dirSlash + 1);
}

std::string installationRoot() { return installationRootFromModulePath(libraryModulePath()); }

}  // namespace osl::detail
