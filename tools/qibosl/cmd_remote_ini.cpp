// tools/qibosl/cmd_remote_ini.cpp
// qibosl remote-ini get|set: an INI file kept by a web server's file-transfer endpoint.
#include <vum-qib-osl/ini/qib_fds_ini.h>
#include <vum-qib-osl/ini/remote_ini.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/wenv.h>

#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {
namespace {

// Keeps the password off the command line, where every user of the machine can read it.
constexpr char kPasswordVariable[] = "QIBOSL_REMOTE_PASSWORD";

std::string passwordFromEnvironment() {
    std::string password;
    WEnv::WGetEnv(kPasswordVariable, password);
    return password;
}

}  // namespace

int cmdRemoteIni(const Args& args) {
    if (args.empty()) throw UsageError("remote-ini needs get or set");
    const Args rest(args.begin() + 1, args.end());
    const std::vector<std::string> words =
        rest.operands({"-server", "-path", "-user", "-password"});
    const QIBCommandLine options = rest.options();
    const std::string server = options.GetOptionValue("-server");
    if (server.empty()) throw UsageError("remote-ini needs -server=HOST[:PORT]");
    const std::string password = options.HasOption("-password")
                                     ? options.GetOptionValue("-password")
                                     : passwordFromEnvironment();
    if (args[0] == "get") {
        if (!words.empty()) throw UsageError("remote-ini get takes no GROUP, KEY or VALUE");
        const RemoteIni ini(server, options.GetOptionValue("-path"),
                            options.GetOptionValue("-user"), password);
        printIni(std::cout, ini);
        return 0;
    }
    if (args[0] == "set") {
        if (words.size() != 3) throw UsageError("remote-ini set takes GROUP KEY VALUE");
        RemoteIni ini(server, options.GetOptionValue("-path"), options.GetOptionValue("-user"),
                      password);
        ini.SetKeyValue(words[0], words[1], words[2]);
        ini.FlushIniDataToFile("");
        return 0;
    }
    throw UsageError("unknown remote-ini command '" + args[0] + "'");
}

void demoRemoteSettings(const std::string& installation) {
    std::cout << "\n== remote settings\n";
    const QibFDSIni settings(installation, true);
    const std::string server = settings.GetProperty("remote_settings", "server", "");
    if (server.empty()) {
        std::cout
            << "no remote settings: the installation names no server ([remote_settings] server= in "
            << settings.GetLocation() << ")\n";
        return;
    }
    const std::string path = settings.GetProperty("remote_settings", "path", "");
    std::cout << "fetching the remote settings from " << server << path
              << "/vum-qib-http-file-cgi.exe\n";
    try {
        const RemoteIni remote(server, path, settings.GetProperty("remote_settings", "user", ""),
                               passwordFromEnvironment());
        printIni(std::cout, remote);
    } catch (const QIBError& e) {
        std::cout << "the remote settings could not be fetched: " << e << "\n";
    }
}

}  // namespace qibosl
