// Uses the installed headers and library the way a product program does, through osl.h alone.
// Every call here fails to link when its OSL_API is missing.
#include <vum-qib-osl/osl.h>

#include <iostream>
#include <sstream>

namespace {

int failures = 0;

void expect(bool ok, const char* what) {
    if (!ok) {
        std::cout << "unexpected: " << what << "\n";
        ++failures;
    }
}

template <class T>
std::string text(const T& value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

void usesMiscAndCmdline() {
    EndSession();
    expect(text(QIBLogicalError("x", "m", 1)) == "Logical Error: x, code 1, severity 12, programm m 1", "qib_error");
    expect(std::string(ExceptionToConstChar(100)) == "Command Line Error", "ExceptionToConstChar");
    QibVr_AutoRegister("api", "api 1");
    expect(QibVr_Versions::Instance().ToStringMe("api") == "api 1\r\n", "QibVr_AutoRegister");
    expect(QibVr_VersionSpecHelper::parseVersion("1.2").getMinor() == 2, "parseVersion");
    expect(!GetUserNameA().empty(), "helpers");
    try {
        OslLoadlibrary().getProcAddress("x");
        expect(false, "getProcAddress without a library");
    } catch (const QIBError&) {
    }
    std::string value;
    expect(WEnv::WPutEnv("OSL_CONSUMER_VAR", "v") == 0 && WEnv::WGetEnv("OSL_CONSUMER_VAR", value) == WEnv::EnvSet,
           "wenv");
    WEnv::WClearEnv("OSL_CONSUMER_VAR");
    std::vector<std::pair<std::string, std::string>> list;
    WEnv::WGetEnvList(list);
    expect(!list.empty(), "WGetEnvList");
    expect(SetDECOLLATOR_DIRFromRegesistry() == -1 && bGetTempPath(value), "install_dir");
    GetBinDir();
    expect(GeneralConfiguration::GetFixedDirectoryPath("x") == "x/", "general_configuration");
    try {
        GeneralConfiguration::Init("OSL_CONSUMER_UNSET_VARIABLE");
        expect(false, "GeneralConfiguration::Init on an unset variable");
    } catch (int e) {
        expect(e == 2, "GeneralConfiguration::Init throws 2");
    }

    char prog[] = "prog", out[] = "-out=", file[] = "f";
    char* argv[] = {prog, out, file};
    QIBCommandLine options;
    options.Init(3, argv);
    expect(options.GetOptionValue("-OUT") == "f" && text(options) == "-out=f, ", "qib_command_line");
    CmdLine line("-a");
    expect(line.NextToken(false) == CmdLine::tkOption && std::string(line.CurrentToken()) == "A", "cmd_line");
    std::ostringstream usage;
    expect(DisplayUsage(usage, "prog", ""), "DisplayUsage");
}

// The other subsystems' classes are checked by their own tests against the shared library; these
// are the ones no such test uses.
void usesTheFileServices() {
    expect(!(QIBNoCaseString("A") < QIBNoCaseString("a")), "auto_edit_string");
    const std::string temporary = CreateTempFile("consumer");
    Osl_File_System::replace(temporary, "[g]\nk=v\n");
    expect(Osl_IO_Status(temporary).size() == 8, "osl_io_status");
    expect(Osl_Directory::exists(GetDirName(temporary)), "osl_directory");
    Osl_File opened(temporary, Osl_File::mode_read);
    Osl_File_System::remove(temporary);
}

}  // namespace

int main() {
    InitOSL();
    QibVr_Versions& versions = QibVr_Versions::Instance();
    versions.Register("consumer", "consumer 1.0");
    std::cout << versions.ToString("consumer");
    expect(versions.ToString("consumer").rfind("consumer 1.0\r\n", 0) == 0, "versions");

    static std::ostringstream captured;
    CLog::Instance()->SetProcessName("consumer");
    CLog::Instance()->SetFunctionChannel([](const char* line) { captured << line << '\n'; }, SevInfo, false);
    OSL_LOG(SevWarning, "", "main") << "installed library works";
    std::cout << captured.str();
    expect(captured.str().find("-WARN  main : installed library works") != std::string::npos, "log");

    usesMiscAndCmdline();
    usesTheFileServices();
    return failures;
}
