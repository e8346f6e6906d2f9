// The installation's directories: a root taken from the environment and fixed subdirectories.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>
#include <vector>

/// One installation root per process, taken from the first of a list of environment variables
/// that is set. Every directory returned ends in "/". Not guarded: call `Init` once at start-up,
/// before other threads read the directories.
///
/// Failures throw the bare integer 2 (catch (int)), the one place in the library that does.
class OSL_API GeneralConfiguration {
public:
    /// The variable list becomes this one name; then the root is read (see ReadEnviroment).
    /// Throws 2 when the variable is not set or is empty.
    static void Init(const std::string& variableName);
    /// The variable list becomes these names, consulted in order; then the root is read.
    /// Throws 2 when none is set, or when the first one set is empty.
    static void Init(const std::vector<std::string>& variableNames);

    /// The root, ending in "/"; empty before a successful Init.
    static std::string GetRootDirectory();

    /// path with a final "/" unless it already ends in one; "" gives "/".
    static std::string GetFixedDirectoryPath(const std::string& path);

    /// The system's temporary directory ($TMPDIR when set and not empty, else /tmp), ending in
    /// "/". Throws 2 when the system gives none.
    static std::string GetSystemTempDirectory();

    /// Root + the subdirectory's name + "/", whether or not it exists. Before Init the root is
    /// empty and each gives the bare name with its "/" ("log/").
    static std::string GetBannersDirectory();
    static std::string GetBinDirectory();
    static std::string GetConfigurationDirectory();
    static std::string GetDBDirectory();
    static std::string GetDdfpageDirectory();
    static std::string GetDefinitionsDirectory();
    static std::string GetDocumentationDirectory();
    static std::string GetDriversDirectory();
    static std::string GetExamplesDirectory();
    static std::string GetLogDirectory();
    static std::string GetMessagesDirectory();
    static std::string GetMonitorDirectory();
    static std::string GetRecipientDirectory();
    static std::string GetTmpDirectory();

protected:
    /// Reads the variables of the list in order with WEnv::WGetEnv; the first one that is set
    /// gives the root (normalised with GetFixedDirectoryPath) and ends the search. Throws 2 when
    /// none is set or that first one is empty; the root is then left as it was.
    static void ReadEnviroment();
};
