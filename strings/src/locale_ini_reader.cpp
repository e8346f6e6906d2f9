// strings/src/locale_ini_reader.cpp
// A reader of its own, not Ini: Ini reads through the stream classes, which convert file names
// with Osl_UTF8String and the encoding converter, which need these records to name their
// converters. Reading the records with Ini would close that ring on the first conversion. The
// file is plain ASCII with groups and "key = value" lines, which is all this reader knows.
#include "strings/src/locale_ini_reader.h"

#include "platform/library_location.h"
#include "strings/src/utf_transform.h"

#include <cstdlib>
#include <fstream>

namespace osl::detail {
namespace {
bool readable(const std::string& path) { return std::ifstream(path).good(); }
}  // namespace

std::string trimmed(const std::string& s) {
    size_t b = s.find_first_not_of(" \t\r");
    if (b == std::string::npos) return {};
    size_t e = s.find_last_not_of(" \t\r");
    return s.substr(b, e - b + 1);
}

std::string localeIniPath() {
    if (const char* env = std::getenv("OSL_LOCALE_INI"); env != nullptr && *env != '\0') return env;
    std::string dir = osl::platform::libraryDirectory();
    if (!dir.empty()) {
        std::string installed = dir + "/" OSL_LOCALE_INI_FROM_LIBDIR;
        if (readable(installed)) return installed;
    }
#ifdef OSL_LOCALE_INI_BUILD
    if (readable(OSL_LOCALE_INI_BUILD)) return OSL_LOCALE_INI_BUILD;
#endif
    return {};
}

std::optional<LocaleIniGroups> readLocaleIni(const std::string& path) {
    std::ifstream in(path);
    if (path.empty() || !in) return std::nullopt;
    LocaleIniGroups groups;
    std::string line;
    while (std::getline(in, line)) {
        line = trimmed(line);
        if (line.empty() || line[0] == ';' || line[0] == '#') continue;
        if (line.front() == '[' && line.back() == ']') {
            groups.push_back({trimmed(line.substr(1, line.size() - 2)), {}});
            continue;
        }
        size_t eq = line.find('=');
        if (eq == std::string::npos || groups.empty()) continue;
        groups.back().second[lowered(trimmed(line.substr(0, eq)))] = trimmed(line.substr(eq + 1));
    }
    return groups;
}

}  // namespace osl::detail
