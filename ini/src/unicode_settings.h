// ini/src/unicode_settings.h
// The "unicode" group of the installation settings file, as the Unicode configuration reads it.
#pragma once

#include <vum-qib-osl/strings/unicode_configuration.h>

#include <string>

namespace osl::detail {

/// Reads "mode" (default "legacy"), "localedir", "default_character_set" and
/// "os_file_systemnative_character_set" (default: the value of "default_character_set") from the
/// group "unicode" of INSTALLDIR/config/qib_fds.ini, or of the file found from the library's
/// path when installDir is empty. %NAME% references are expanded. Throws QibFDSIni's QIBErrors.
Osl_UnicodeSettings readUnicodeSettings(const std::string& installDir);

/// readUnicodeSettings(""): the default settings reader of the Unicode configuration.
Osl_UnicodeSettings readInstallationUnicodeSettings();

}  // namespace osl::detail
