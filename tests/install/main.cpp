// Uses the installed headers and library the way a product program does.
#include <vum-qib-osl/osl.h>

#include <iostream>
#include <memory>
#include <sstream>

namespace {

// One class or function of every public header, reached through osl.h alone: a header missing
// from the umbrella fails this build. 0 when every answer is as expected.
int usesEveryHeader() {
    int failures = 0;
    auto expect = [&failures](bool ok, const char* what) {
        if (!ok) {
            std::cout << "unexpected: " << what << "\n";
            ++failures;
        }
    };
    // misc
    expect(QIBError("x", 1, 12, "w", 1).Code() == 1, "qib_error");
    expect(!GetUserNameA().empty(), "helpers");
    expect(bGetTempPath(*std::make_unique<std::string>()), "install_dir");
    std::string value;
    expect(WEnv::WGetEnv("OSL_CONSUMER_UNSET", value) == WEnv::EnvStatus(1), "wenv");
    OslLoadlibrary library;
    library.freeLibrary();
    // strings
    expect(Osl_UTF8String("caf\xC3\xA9").LengthInChars() == 4 || !Osl_UnicodeConfiguration::IsUnicodeMode(),
           "utf8_string, unicode_configuration");
    Osl_UnicodeConverter converter;
    expect(WildcardString("*.ini").Match("a.ini"), "wildcard_string, regular_expression");
    expect(!(QIBNoCaseString("A") < QIBNoCaseString("a")), "auto_edit_string");
    // cmdline, message, ini
    CmdLine line("a b");
    QIBCommandLine options;
    FormatString format("%1");
    expect(!format.Get().empty(), "format_string");
    Message message;
    MapFile catalog;
    expect(!catalog.HasEntry("k"), "map_file");
    Ini ini("", false);
    expect(GeneralConfiguration::GetFixedDirectoryPath("x") == "x/", "general_configuration");
    // log channels
    CChannelDebug debug(SevInfo, "");
    CChannelSyslog syslogChannel(SevInfo, "");
    CChannelSnmp snmp;
    CChannelCommonFile file;
    // files
    const std::string temporary = CreateTempFile("consumer");
    Osl_File_System::replace(temporary, "[g]\nk=v\n");
    BackupIni backup(temporary);
    expect(backup.GetKeyValue("g", "k", "", false) == "v", "file wrappers, qib_backup_ini");
    expect(Osl_IO_Status(temporary).size() == 8, "osl_io_status");
    expect(Osl_Directory::exists(GetDirName(temporary)), "osl_directory");
    Osl_File opened(temporary, Osl_File::mode_read);
    Osl_Ifstream stream(temporary);
    expect(stream.SkipSignature() == 0, "osl_fstream, unicode_signature");
    Osl_File_System::remove(temporary);
    try {
        QibFDSIni settings("/nonexistent-installation");
    } catch (const QIBError&) {
    }
    return failures;
}

}  // namespace

int main() {
    InitOSL();
    QibVr_Versions& versions = QibVr_Versions::Instance();
    versions.Register("consumer", "consumer 1.0");
    const std::string text = versions.ToString("consumer");
    std::cout << text;
    if (text.rfind("consumer 1.0\r\n", 0) != 0) return 1;

    static std::ostringstream captured;
    CLog::Instance()->SetProcessName("consumer");
    CLog::Instance()->SetFunctionChannel([](const char* line) { captured << line << '\n'; }, SevInfo, false);
    OSL_LOG(SevWarning, "", "main") << "installed library works";
    std::cout << captured.str();

    try {
        throw QIBLogicalError("consumer", "tests/install/main", 21);
    } catch (const QIBError& e) {
        std::cout << e << "\n";
    }
    if (captured.str().find("-WARN  main : installed library works") == std::string::npos) return 1;
    return usesEveryHeader();
}
