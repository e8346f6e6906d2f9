// tools/qibosl/commands.h
// The subcommands of qibosl. Each returns the process exit status; a usage error throws UsageError.
#pragma once

#include <vum-qib-osl/cmdline/qib_command_line.h>

#include <filesystem>
#include <functional>
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
// Directories and path status (cmd_files.cpp).
int cmdLs(const Args& args);
int cmdStat(const Args& args);
int cmdMatch(const Args& args);
/// qibosl run -timeout=SECONDS -- COMMAND...: Osl_System with a time-out (cmd_run.cpp).
int cmdRun(const Args& args);
void demoPrograms();
int cmdAutoEdit(const Args& args);
// Text in display columns (cmd_columns.cpp).
int cmdColumns(const Args& args);
void demoColumns();
/// The demo's logging part: the example installation's logging configuration.
void demoLogging(const std::string& installation);
// Statistics (cmd_stats.cpp): the demo counts each of its steps and writes a report at the end.
int cmdStats(const Args& args);
void demoStep();
void demoStatistics(const std::filesystem::path& installation);
/// Remembers a file or directory that the demo leaves behind; the demo names them all at its end.
void noteDemoFile(const std::filesystem::path& path, const std::string& what);
// Named locks (cmd_lock.cpp). programArguments() holds argv untouched, as main received it.
int cmdLock(const Args& args);
/// Runs a step of the demo while holding the computer-scope lock name, and says so.
void demoUnderLock(const std::string& name, const std::function<void()>& step);
const std::vector<std::string>& programArguments();

}  // namespace qibosl
