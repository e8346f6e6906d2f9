// file/src/file_errors.h
// The one place where the file wrappers convert names and turn system errors into QIBError.
#pragma once

#include "platform/fs.h"

#include <functional>
#include <string>
#include <system_error>

class Osl_File;

namespace osl::detail {

/// QIBError(operation + " " + name + ": " + the system's text, errno, 8, where, line).
[[noreturn]] void throwFileError(const char* operation, const std::string& name, std::error_code ec,
                                 const char* where, long line);

/// Osl_FileSystemName, or the QIBError above with EILSEQ (EINVAL for a NUL byte).
std::string nativeNameOrThrow(const char* operation, const std::string& name, const char* where, long line);

/// The crash-safe replacement of Osl_File_System::replace, for callers with errors of their own:
/// error and the report (which step failed, the temporary name) instead of a throw. A name that
/// does not convert fails at the create step. What writer throws passes through after the
/// temporary file is gone. Says once per process on stderr when a file was written in place.
osl::platform::ReplaceReport replaceContent(const std::string& path, const std::function<void(Osl_File&)>& writer,
                                            unsigned newPermissions, const std::function<unsigned()>& nextNumber,
                                            std::error_code& error);

}  // namespace osl::detail
