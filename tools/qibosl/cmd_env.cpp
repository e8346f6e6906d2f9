// tools/qibosl/cmd_env.cpp
// qibosl env and qibosl dirs: the environment as WEnv sees it, and the installation directories;
// the demo's part on files with signatures, environment, directories and dynamic libraries.
#include <vum-qib-osl/file/osl_fstream.h>
#include <vum-qib-osl/file/unicode_signature.h>
#include <vum-qib-osl/ini/general_configuration.h>
#include <vum-qib-osl/misc/install_dir.h>
#include <vum-qib-osl/misc/dloadlib.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/wenv.h>

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <iomanip>
#include <iostream>

#include "tools/qibosl/commands.h"

namespace qibosl {

int cmdEnv(const Args& args) {
    if (args.size() > 1) throw UsageError("env takes at most one variable name");
    if (args.empty()) {
        std::vector<std::pair<std::string, std::string>> list;
        WEnv::WGetEnvList(list);
        for (const auto& [name, value] : list) std::cout << name << "=" << value << "\n";
        return 0;
    }
    std::string value;
    switch (WEnv::WGetEnv(args[0], value)) {
        case WEnv::EnvSet:
            std::cout << args[0] << "=" << value << "\n";
            return 0;
        case WEnv::EnvEmpty:
            std::cout << args[0] << " is set to the empty text\n";
            return 0;
        case WEnv::EnvNotSet:
            break;
    }
    std::cout << args[0] << " is not set\n";
    return 1;
}

void printDirectories(std::ostream& out) {
    const std::pair<const char*, std::string (*)()> dirs[] = {
        {"root", GeneralConfiguration::GetRootDirectory},
        {"banners", GeneralConfiguration::GetBannersDirectory},
        {"bin", GeneralConfiguration::GetBinDirectory},
        {"configuration", GeneralConfiguration::GetConfigurationDirectory},
        {"db", GeneralConfiguration::GetDBDirectory},
        {"ddfpage", GeneralConfiguration::GetDdfpageDirectory},
        {"definitions", GeneralConfiguration::GetDefinitionsDirectory},
        {"documentation", GeneralConfiguration::GetDocumentationDirectory},
        {"drivers", GeneralConfiguration::GetDriversDirectory},
        {"examples", GeneralConfiguration::GetExamplesDirectory},
        {"log", GeneralConfiguration::GetLogDirectory},
        {"messages", GeneralConfiguration::GetMessagesDirectory},
        {"monitor", GeneralConfiguration::GetMonitorDirectory},
        {"recipient", GeneralConfiguration::GetRecipientDirectory},
        {"tmp", GeneralConfiguration::GetTmpDirectory},
    };
    for (const auto& [name, getter] : dirs) {
        out << "  " << std::left << std::setw(15) << name << getter() << "\n";
    }
}

int cmdDirs(const Args& args) {
    const std::vector<std::string> variables = args.empty() ? Args{"DECOLLATOR_DIR"} : args;
    std::cout << "DECOLLATOR_DIR   " << GetBinDir() << "\n";
    std::string temp;
    bGetTempPath(temp);
    std::cout << "temp directory   " << temp << "\n";
    try {
        GeneralConfiguration::Init(variables);
    } catch (int) {
        std::cout << "no installation root from";
        for (const std::string& v : variables) std::cout << " " << v;
        std::cout << " (not set, or the first one set is empty)\n";
        return 1;
    }
    std::cout << "installation directories:\n";
    printDirectories(std::cout);
    return 0;
}

}  // namespace qibosl

namespace qibosl {
namespace {

void demoSignatures(const std::string& tempDir) {
    std::cout << "\n== files with Unicode signatures (in " << tempDir << ")\n";
    const std::filesystem::path dir = tempDir + "qibosl-demo-" + std::to_string(getpid());
    std::filesystem::create_directories(dir);
    const std::pair<const char*, std::string> files[] = {
        {"utf8.txt", std::string(UTF8_Header) + "Gr\xC3\xBC\xC3\x9F" "e"},
        {"utf16le.txt", std::string(UNICODE_Header, 2) + std::string("H\0i\0", 4)},
        {"utf16be.txt", std::string(UNICODE_BE_Header, 2) + std::string("\0H\0i", 4)},
        {"plain.txt", "no signature"},
        {"ff-fe-only.txt", std::string(UNICODE_Header, 2)},
    };
    for (const auto& [name, bytes] : files) {
        const std::string path = (dir / name).string();
        {
            Osl_Ofstream out(path, std::ios::binary);
            out << bytes;
        }
        Osl_Ifstream in(path, std::ios::binary);
        const int streamKind = in.SkipSignature();
        FILE* file = Osl_Fopen(path.c_str(), "rb");
        const int fileKind = file != nullptr ? Osl_FILE_SkipSignature(file) : -1;
        if (file != nullptr) std::fclose(file);
        std::cout << "  " << std::left << std::setw(16) << name << std::setw(3) << bytes.size()
                  << "bytes  stream form " << streamKind << (in.fail() ? " (stream failed)" : "")
                  << "  FILE* form " << fileKind << "\n";
    }
    std::filesystem::remove_all(dir);
    std::cout << "  (0 none, 1 UTF-8, 2 UTF-16LE, 3 UTF-16BE; on a file of FF FE alone the two forms"
                 " answer differently, on purpose)\n";
}

}  // namespace

void demoEnvironment(const std::filesystem::path& installation) {
    std::cout << "\n== environment, installation directories and dynamic libraries\n";
    const std::string root = std::filesystem::absolute(installation).lexically_normal().string();
    WEnv::WPutEnv("DECOLLATOR_DIR", root);
    std::cout << "WPutEnv(DECOLLATOR_DIR); GetBinDir() gives " << GetBinDir() << "\n";
    GeneralConfiguration::Init("DECOLLATOR_DIR");
    std::cout << "GeneralConfiguration::Init(\"DECOLLATOR_DIR\"):\n";
    printDirectories(std::cout);

    std::string value;
    auto show = [&value](const char* what) {
        const WEnv::EnvStatus status = WEnv::WGetEnv("QIBOSL_DEMO", value);
        std::cout << "WGetEnv(QIBOSL_DEMO) " << what << ": status " << status << " value \"" << value
                  << "\"\n";
    };
    WEnv::WPutEnv("QIBOSL_DEMO", "caf\xC3\xA9");
    show("after WPutEnv(\"caf\xC3\xA9\")");
    setenv("QIBOSL_DEMO", "", 1);
    show("when set to the empty text");
    WEnv::WClearEnv("QIBOSL_DEMO");
    show("after WClearEnv");
    std::string temp;
    bGetTempPath(temp);
    std::cout << "temporary directory: " << temp << "\n";
    try {
        GeneralConfiguration::Init(std::vector<std::string>{"QIBOSL_UNSET_ROOT"});
    } catch (int e) {
        std::cout << "GeneralConfiguration::Init on an unset variable throws the integer " << e << "\n";
    }

    OslLoadlibrary libm;
    libm.loadLibrary("libm.so.6");
    auto cosine = reinterpret_cast<double (*)(double)>(libm.getProcAddress("cos"));
    std::cout << "OslLoadlibrary: cos(0) from libm.so.6 = " << cosine(0.0) << "\n";
    try {
        libm.getProcAddress("no_such_function");
    } catch (const QIBError& e) {
        std::cout << e << "\n";
    }
    try {
        OslLoadlibrary missing;
        missing.loadLibrary("libqibosl-missing.so");
    } catch (const QIBError& e) {
        std::cout << e << "\n";
    }
    demoSignatures(temp);
}

}  // namespace qibosl
