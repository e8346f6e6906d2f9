// platform/posix/environment_posix.cpp
// getenv/setenv/unsetenv over environ. As thread-safe as the C library's environment: a
// concurrent setenv may invalidate what getenv returned, so values are copied at once.
#include "platform/environment.h"

#include <stdlib.h>
#include <unistd.h>

#include <cerrno>

namespace osl::platform {
namespace {

bool validName(const std::string& name) {
    return !name.empty() && name.find('=') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

std::error_code lastError() { return {errno, std::generic_category()}; }

}  // namespace

std::optional<std::string> getEnv(const std::string& name) {
    if (!validName(name)) return std::nullopt;
    const char* value = getenv(name.c_str());
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

std::error_code setEnv(const std::string& name, const std::string& value) {
    if (!validName(name) || value.find('\0') != std::string::npos) {
        return std::make_error_code(std::errc::invalid_argument);
    }
    if (setenv(name.c_str(), value.c_str(), 1) != 0) return lastError();
    return {};
}

std::error_code unsetEnv(const std::string& name) {
    if (!validName(name)) return std::make_error_code(std::errc::invalid_argument);
    if (unsetenv(name.c_str()) != 0) return lastError();
    return {};
}

std::vector<std::string> environmentEntries() {
    std::vector<std::string> entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        entries.emplace_back(*entry);
    }
    return entries;
}

std::string tempDirectory() {
    const char* dir = getenv("TMPDIR");
    std::string path = dir != nullptr && *dir != '\0' ? dir : "/tmp";
    if (path.back() != '/') path += '/';
    return path;
}

}  // namespace osl::platform
