// tools/qibosl/cmd_ini.cpp
// qibosl ini check|get|set|dump: INI files from the shell.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/ini/qib_fds_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <vum-qib-osl/misc/wenv.h>

#include <filesystem>
#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

int iniCheck(const Args& args) {
    if (args.size() != 1) throw UsageError("ini check takes one FILE");
    Ini ini;
    try {
        ini.Load(args[0], true);
    } catch (const QIBError& e) {
        std::cout << args[0] << ":" << ini.GetErrorLine() << ": " << e.What() << " (error " << e.Code() << ")\n";
        return 1;
    }
    std::list<std::string> groups;
    ini.GetGroupNames(groups);
    std::cout << args[0] << ": ok, " << groups.size() << " groups\n";
    return 0;
}

int iniGet(const Args& args) {
    std::vector<std::string> positional;
    std::string defaultValue;
    bool hasDefault = false;
    for (const std::string& a : args) {
        if (a.rfind("-default=", 0) == 0) {
            defaultValue = a.substr(9);
            hasDefault = true;
        } else {
            positional.push_back(a);
        }
    }
    if (positional.size() != 3) throw UsageError("ini get takes FILE GROUP KEY [-default=TEXT]");
    const Ini ini(positional[0], true);
    bool found = false;
    const std::string value = ini.GetString(positional[1], positional[2], defaultValue, &found);
    if (!found && !hasDefault) {
        std::cerr << "qibosl ini get: no key '" << positional[2] << "' in group '" << positional[1] << "'\n";
        return 1;
    }
    std::cout << value << "\n";
    return 0;
}

int iniSet(const Args& args) {
    if (args.size() != 4) throw UsageError("ini set takes FILE GROUP KEY VALUE");
    BackupIni ini(args[0]);
    ini.SetKeyValue(args[1], args[2], args[3]);
    ini.FlushIniDataToFile("");
    return 0;
}

int iniDump(const Args& args) {
    if (args.size() != 1) throw UsageError("ini dump takes one FILE");
    printIni(std::cout, Ini(args[0], true));
    return 0;
}

}  // namespace

void printIni(std::ostream& out, const Ini& ini) {
    for (IniGroupIterator it = ini.begin(); it != ini.end(); ++it) {
        const Group group = *it;
        out << '[' << group.name << "]\n";
        for (const auto& [key, value] : *group.properties) out << key << '=' << value << '\n';
        out << '\n';
    }
}

int cmdIni(const Args& args) {
    if (args.empty()) throw UsageError("ini needs check, get, set or dump");
    const Args rest(args.begin() + 1, args.end());
    if (args[0] == "check") return iniCheck(rest);
    if (args[0] == "get") return iniGet(rest);
    if (args[0] == "set") return iniSet(rest);
    if (args[0] == "dump") return iniDump(rest);
    throw UsageError("unknown ini command '" + args[0] + "'");
}

void demoSettings(const std::string& installation) {
    std::cout << "\n== the installation settings file\n";
    std::string root;
    if (WEnv::WGetEnv("DECOLLATOR_DIR", root) != WEnv::EnvSet) {
        root = std::filesystem::absolute(installation).lexically_normal().string();
        if (root.size() > 1 && root.back() == '/') root.pop_back();
        WEnv::WPutEnv("DECOLLATOR_DIR", root);
    }
    // The lookups log in category "ini" through the demo's channel: gather first, then print.
    const QibFDSIni settings(installation, true);
    std::vector<std::string> lines;
    for (const char* key : {"port", "report_format", "log_dir", "language"}) {
        lines.push_back(std::string("report_server/") + key + " = " + settings.GetProperty("report_server", key) +
                        (settings.isGroupHasKey("report_server", key) ? "" : "   (from the group default)"));
    }
    lines.push_back("unicode/os_file_systemnative_character_set = " +
                    settings.GetProperty("unicode", "os_file_systemnative_character_set", ""));
    std::cout << "read " << settings.GetLocation() << " with DECOLLATOR_DIR=" << root << "\n";
    for (const std::string& line : lines) std::cout << "  " << line << "\n";
}

}  // namespace qibosl
