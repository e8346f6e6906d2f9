// platform/shared_file.h
// Writing files in directories that other users and processes share: appends in one write call
// and replacements in one step.
#pragma once

#include <string>
#include <system_error>

namespace osl::platform {

/// Appends data to path with one write call. A missing file is created (mode 0644 less the umask)
/// exclusively and without following a symbolic link planted under its name.
std::error_code appendToSharedFile(const std::string& path, const std::string& data);

/// Replaces path by a file holding content: written to a new temporary file beside it (a name
/// starting with "." and ending in ".tmp"), synced, then renamed over path. On failure the
/// temporary file is removed and path is unchanged.
std::error_code replaceSharedFile(const std::string& path, const std::string& content);

}  // namespace osl::platform
