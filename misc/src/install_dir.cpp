// misc/src/install_dir.cpp
// The installation directory from the environment, and the temporary directory.
#include <vum-qib-osl/misc/install_dir.h>

#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/wenv.h>

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
