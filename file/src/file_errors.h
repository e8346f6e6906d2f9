// file/src/file_errors.h
// The one place where the file wrappers convert names and turn system errors into QIBError.
#pragma once

#include <string>
#include <system_error>

namespace osl::detail {

/// QIBError(operation + " " + name + ": " + the system's text, errno, 8, where, line).
[[noreturn]] void throwFileError(const char* operation, const std::string& name, std::error_code ec,
                                 const char* where, long line);

/// Osl_FileSystemName, or the QIBError above with EILSEQ (EINVAL for a NUL byte).
std::string nativeNameOrThrow(const char* operation, const std::string& name, const char* where, long line);

}  // namespace osl::detail
