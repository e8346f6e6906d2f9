// ini/src/unicode_settings.cpp
// The Unicode configuration's view of the installation settings file.
#include "ini/src/unicode_settings.h"

#include <vum-qib-osl/ini/qib_fds_ini.h>

namespace osl::detail {

Osl_UnicodeSettings readUnicodeSettings(const std::string& installDir) {
    const QibFDSIni file = installDir.empty() ? QibFDSIni(true) : QibFDSIni(installDir, true);
    Osl_UnicodeSettings settings;
    settings.mode = file.GetProperty("unicode", "mode", "legacy");
    settings.localedir = file.GetProperty("unicode", "localedir", "");
    settings.default_character_set = file.GetProperty("unicode", "default_character_set", "");
    settings.os_file_systemnative_character_set =
        file.GetProperty("unicode", "os_file_systemnative_character_set", settings.default_character_set);
    return settings;
}

Osl_UnicodeSettings readInstallationUnicodeSettings() { return readUnicodeSettings(""); }

}  // namespace osl::detail
