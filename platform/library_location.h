// platform/library_location.h
// Where the library itself lives: the one answer for the settings file and the data files.
#pragma once

#include <string>

namespace osl::platform {

/// The full path of the file that holds this code (libvum-qib-osl.so, or the program when linked
/// statically), with symlinks resolved, so that every caller agrees behind a symlinked
/// directory; empty when it cannot be told.
std::string libraryPath();

/// The directory of libraryPath(), without a trailing "/"; empty when it cannot be told.
std::string libraryDirectory();

}  // namespace osl::platform
