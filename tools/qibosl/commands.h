// tools/qibosl/commands.h
// The subcommands of qibosl. Each returns the process exit status; a usage error throws UsageError.
#pragma once

#include <vum-qib-osl/cmdline/qib_command_line.h>

#include <filesystem>
#include <initializer_list>
#include <iosfwd>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class Ini;

namespace qibosl {

/// The arguments after the subcommand's name, as QIBCommandLine gives them: options joined into
/// -NAME=value elements ("-from = x" and "-from= x" become "-from=x"), bare words as they are.
class Args : public std::vector<std::string> {
public:
    using std::vector<std::string>::vector;

    /// The elements as a command line, for look-ups by option name (-from finds -FROM=x).
    QIBCommandLine options() const;
    /// The bare words, in order. Throws UsageError for an option whose name is not in `allowed`
    /// (names with their dash, any case) or that lacks its value.
    std::vector<std::string> operands(std::initializer_list<std::string_view> allowed = {}) const;
};

/// Bad subcommand or arguments: main prints the usage on standard error and exits with 2.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Prints qibosl's usage text for the given usage sets (all commands when empty) from its catalog.
void printUsage(std::ostream& out, const std::vector<std::string>& sets);
/// Prints the usage of one command, "usage: qibosl " followed by its catalog entry; the full usage
/// when there is no such command.
void printCommandUsage(std::ostream& out, const std::string& name);

int cmdVersion(const Args& args);
int cmdDemo(const Args& args);
int cmdCatalog(const Args& args);
int cmdUsage(const Args& args);
int cmdConvert(const Args& args);
int cmdEncodings(const Args& args);

// INI files (cmd_ini.cpp).
int cmdIni(const Args& args);
int cmdLog(const Args& args);
void demoSettings(const std::string& installation);
/// The table in canonical form: "[group]", "key=value" lines, an empty line.
void printIni(std::ostream& out, const Ini& ini);
// INI files on a web server (cmd_remote_ini.cpp).
int cmdRemoteIni(const Args& args);
void demoRemoteSettings(const std::string& installation);
// Environment and installation directories (cmd_env.cpp).
int cmdEnv(const Args& args);
int cmdDirs(const Args& args);
void printDirectories(std::ostream& out);
void demoEnvironment(const std::filesystem::path& installation);
int cmdMatch(const Args& args);
int cmdAutoEdit(const Args& args);
/// The demo's logging part: the example installation's logging configuration.
void demoLogging(const std::string& installation);

}  // namespace qibosl
