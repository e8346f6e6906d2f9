// tools/qibosl/commands.h
// The subcommands of qibosl. Each returns the process exit status; a usage error throws UsageError.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <vector>

namespace qibosl {

using Args = std::vector<std::string>;

/// Bad subcommand or arguments: main prints the usage on standard error and exits with 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

int cmdVersion(const Args& args);
int cmdDemo(const Args& args);

// INI files (cmd_ini.cpp).
int cmdIni(const Args& args);
int cmdLog(const Args& args);
void demoSettings(const std::string& installation);
// Environment and installation directories (cmd_env.cpp).
int cmdEnv(const Args& args);
int cmdDirs(const Args& args);
void printDirectories(std::ostream& out);
void demoEnvironment(const std::filesystem::path& installation);
/// The demo's logging part: the example installation's logging configuration.
void demoLogging(const std::string& installation);

}  // namespace qibosl
