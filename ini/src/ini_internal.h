// ini/src/ini_internal.h
// Helpers shared by the INI sources: the error helper, the file stream and environment access.
#pragma once

#include <fstream>
#include <string>

namespace osl::detail {

/// The file stream INI files are read and written with.
using IniStream = std::fstream;

/// Logs the text of the parse error number in category "ini" with at as origin, then throws it
/// as QIBError (code = number, severity 12, where "ini/src/ini" and line).
[[noreturn]] void logAndThrowIniError(const char* at, int number, long line);

/// The value of an environment variable; false when it is not set.
bool readEnvironment(const std::string& name, std::string& value);

}  // namespace osl::detail
