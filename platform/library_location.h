// platform/library_location.h
// Where the library itself lives, to find the data files installed next to it.
#pragma once

#include <string>

namespace osl::platform {

/// The directory of the file that holds this code (libvum-qib-osl.so, or the program when
/// linked statically), without a trailing "/"; empty when it cannot be told.
std::string libraryDirectory();

}  // namespace osl::platform
