// platform/environment.h
// The process environment as bytes, and the system's temporary directory.
#pragma once

#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace osl::platform {

/// The value of a variable; nullopt when it is not set.
std::optional<std::string> getEnv(const std::string& name);

/// Sets a variable, replacing its value. Fails with EINVAL for an empty name or a name or value
/// holding "=" (name only) or NUL.
std::error_code setEnv(const std::string& name, const std::string& value);

/// Removes a variable; removing one that is not set succeeds. EINVAL as for setEnv.
std::error_code unsetEnv(const std::string& name);

/// Every entry of the environment, "NAME=value", in the environment's order.
std::vector<std::string> environmentEntries();

/// $TMPDIR when set and not empty, else "/tmp"; always ending in "/".
std::string tempDirectory();

}  // namespace osl::platform
