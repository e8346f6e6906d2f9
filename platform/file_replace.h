// platform/file_replace.h
// Replacing a file by another in one step, so that readers see either the old or the new one.
#pragma once

#include <string>
#include <system_error>

namespace osl::platform {

/// Writes the file's data through to the disk (fsync).
std::error_code syncFile(const std::string& path);

/// Renames source over target in one step (the same file system is required), then makes the new
/// directory entry durable. A failed rename leaves both files as they were.
std::error_code replaceFile(const std::string& source, const std::string& target);

}  // namespace osl::platform
