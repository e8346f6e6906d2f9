// misc/src/install_dir.cpp
// The installation directory from the environment, the temporary directory, and the library's
// own installation root.
#include <vum-qib-osl/misc/install_dir.h>

#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/wenv.h>

#include "misc/src/install_root.h"
#include "platform/dynamic_library.h"

std::string GetBinDir() {
    static std::string binDir;
    WEnv::WGetEnv("DECOLLATOR_DIR", binDir);
    return binDir;
}

int SetDECOLLATOR_DIRFromRegesistry() {
    // No registry on this platform: the key can never be opened.
    return -1;
}

bool bGetTempPath(std::string& path) {
    path = GeneralConfiguration::GetSystemTempDirectory();
    return true;
}

namespace osl::detail {

std::string libraryModulePath() {
    return osl::platform::modulePathOf(reinterpret_cast<const void*>(&libraryModulePath));
}

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
