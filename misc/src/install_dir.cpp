// misc/src/install_dir.cpp
// The installation directory from the environment, and the temporary directory.
#include <vum-qib-osl/misc/install_dir.h>

#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/wenv.h>

std::string GetBinDir() {
    // A local value: one shared buffer written by every call would be a data race between threads.
    std::string binDir;
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
