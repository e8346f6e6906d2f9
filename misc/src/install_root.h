// misc/src/install_root.h
// Where the library itself is installed. Internal: used to find the installation settings file
// when no installation directory is given.
#pragma once

#include <string>

namespace osl::detail {

/// osl::platform::libraryPath(): the full path of the file that holds this library's code, with
/// symlinks resolved (libvum-qib-osl.so, or the program when linked statically). Empty when the
/// loader cannot tell.
std::string libraryModulePath();

/// The installation root that a module path gives:
/// - when the path holds "bin", the path cut at its last "bin" ("bin" and everything after it
///   go): "/opt/app/bin/libvum-qib-osl.so" gives "/opt/app/". The cut is by text, so a "bin"
///   inside another name ("/srv/robin/lib/x.so" gives "/srv/ro") cuts there too: installations
///   are found by that rule and a cut by directory would move their settings file;
/// - otherwise the parent of the module's directory, with a final "/":
///   "/opt/app/lib/libvum-qib-osl.so" gives "/opt/app/", "/lib/x.so" gives "/", a module in the
///   root directory gives "/", a relative "lib/x.so" gives "./" and a bare "x.so" gives "../";
/// - empty for an empty path.
/// Append "config/qib_fds.ini" to the result to get the installation settings file.
std::string installationRootFromModulePath(const std::string& modulePath);

/// installationRootFromModulePath(libraryModulePath()).
std::string installationRoot();

}  // namespace osl::detail
