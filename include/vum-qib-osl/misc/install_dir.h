// The installation directory from the environment, and the system's temporary directory.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>

/// The value of the environment variable DECOLLATOR_DIR, read anew at every call; empty when it is
/// not set. Thread-safe as far as the C library's environment is (no setenv at the same time).
OSL_API std::string GetBinDir();

/// Copies the installation directory from the system registry into DECOLLATOR_DIR. Linux has no
/// registry: returns -1 (the key cannot be opened) and leaves the environment unchanged; the
/// installation directory comes from the environment alone.
OSL_API int SetDECOLLATOR_DIRFromRegesistry();

/// path := the system's temporary directory ($TMPDIR, else /tmp), ending in "/"; returns true.
/// See GeneralConfiguration::GetSystemTempDirectory (it throws the integer 2 when there is none).
OSL_API bool bGetTempPath(std::string& path);
