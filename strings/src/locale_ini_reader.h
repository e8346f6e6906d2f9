// strings/src/locale_ini_reader.h
// The reader of locale.ini, the encoding and language records.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace osl::detail {

/// The groups of locale.ini in file order: the header without brackets, and its keys (lower
/// case) with their values, blanks trimmed.
using LocaleIniGroups = std::vector<std::pair<std::string, std::map<std::string, std::string>>>;

/// The records file: $OSL_LOCALE_INI, else share/vum-qib-osl/locale.ini of the installation the
/// library lives in, else the copy in the source tree of a build that was not installed; empty
/// when none is readable.
std::string localeIniPath();
/// The groups of the file, or nothing when it cannot be read.
std::optional<LocaleIniGroups> readLocaleIni(const std::string& path);

/// s without leading and trailing blanks, tabs and carriage returns.
std::string trimmed(const std::string& s);

}  // namespace osl::detail
