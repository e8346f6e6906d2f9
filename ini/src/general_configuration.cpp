// ini/src/general_configuration.cpp
// GeneralConfiguration: the installation root from the environment and its subdirectories.
#include <vum-qib-osl/ini/general_configuration.h>

#include <vum-qib-osl/misc/wenv.h>

#include "platform/environment.h"

namespace {

struct State {
    std::vector<std::string> variableNames;
    std::string root;  // empty, or ending in "/"
};

State& state() {
    static State* s = new State;  // lives as long as the process; never destroyed
    return *s;
}

// The documented failure value of this class; callers catch it as int.
constexpr int kNoDirectory = 2;

std::string subdirectory(const char* name) { return state().root + name + "/"; }

}  // namespace

void GeneralConfiguration::Init(const std::string& variableName) {
    state().variableNames.assign(1, variableName);
    ReadEnviroment();
}

void GeneralConfiguration::Init(const std::vector<std::string>& variableNames) {
    state().variableNames = variableNames;
    ReadEnviroment();
}

void GeneralConfiguration::ReadEnviroment() {
    for (const std::string& name : state().variableNames) {
        std::string value;
        const WEnv::EnvStatus status = WEnv::WGetEnv(name, value);
        if (status == WEnv::EnvNotSet) continue;
        // The first variable that is set decides, even when it is empty.
        if (status == WEnv::EnvEmpty) throw kNoDirectory;
        state().root = GetFixedDirectoryPath(value);
        return;
    }
    throw kNoDirectory;
}

std::string GeneralConfiguration::GetRootDirectory() { return state().root; }

std::string GeneralConfiguration::GetFixedDirectoryPath(const std::string& path) {
    if (!path.empty() && path.back() == '/') return path;
    return path + "/";
}

std::string GeneralConfiguration::GetSystemTempDirectory() {
    // The environment is bytes here, so the wide and narrow system answers are the same text.
    const std::string temp = osl::platform::tempDirectory();
    if (temp.empty()) throw kNoDirectory;
    return GetFixedDirectoryPath(temp);
}

std::string GeneralConfiguration::GetBannersDirectory() { return subdirectory("banners"); }
std::string GeneralConfiguration::GetBinDirectory() { return subdirectory("bin"); }
std::string GeneralConfiguration::GetConfigurationDirectory() { return subdirectory("configuration"); }
std::string GeneralConfiguration::GetDBDirectory() { return subdirectory("db"); }
std::string GeneralConfiguration::GetDdfpageDirectory() { return subdirectory("ddfpage"); }
std::string GeneralConfiguration::GetDefinitionsDirectory() { return subdirectory("definitions"); }
std::string GeneralConfiguration::GetDocumentationDirectory() { return subdirectory("documentation"); }
std::string GeneralConfiguration::GetDriversDirectory() { return subdirectory("drivers"); }
std::string GeneralConfiguration::GetExamplesDirectory() { return subdirectory("examples"); }
std::string GeneralConfiguration::GetLogDirectory() { return subdirectory("log"); }
std::string GeneralConfiguration::GetMessagesDirectory() { return subdirectory("messages"); }
std::string GeneralConfiguration::GetMonitorDirectory() { return subdirectory("monitor"); }
std::string GeneralConfiguration::GetRecipientDirectory() { return subdirectory("recipient"); }
std::string GeneralConfiguration::GetTmpDirectory() { return subdirectory("tmp"); }
