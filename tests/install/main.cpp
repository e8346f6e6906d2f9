// Uses the installed headers and library the way a product program does, through osl.h alone.
// Every call here fails to link when its OSL_API is missing: one check of each subsystem's
// interface, the rest being their own tests' work.
#include <vum-qib-osl/osl.h>

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

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

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
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

void usesLog(const fs::path& dir) {
    static std::vector<std::string> seen;
    CLog* log = CLog::Instance();
    log->SetFunctionChannel([](const char* line) { seen.push_back(line); }, SevWarning, "*", false);
    OSL_LOG(SevInfo, "", "at") << "dropped";
    OSL_LOG(SevError, "db", "at") << "kept " << 1;
    CLogMsg("at", "", SevFatal) << "flushed" << flush;
    OslLogPrint(SevWarning, "", "at", "printed");
    expect(seen.size() == 3 && seen[0].find("-ERROR at : kept 1") != std::string::npos, "OSL_LOG, CLogMsg");
    expect(StringToSev("fatal") == SevFatal && CLogMsg::HasCategory("x"), "StringToSev, HasCategory");
    std::ofstream(dir / "log.ini") << "[logging]\nchannels=f\n[f]\ntype=text-file\nlevel=info\npath="
                                   << (dir / "c.log").string() << "\n";
    expect(log->Load((dir / "log.ini").string(), "api"), "CLog::Load");
    CLog::PrintVersions(QibVr_Versions::Instance(), "api");
    std::string setFile = (dir / "set.log").string();  // taken by non-const reference
    log->SetFileChannel(setFile, SevInfo, false);
    OslLogPrint(SevInfo, "", "at", "to every file");
    expect(contentOf(dir / "set.log").find("to every file") != std::string::npos &&
               contentOf(dir / "c.log").find("to every file") != std::string::npos,
           "file channels");
    CChannelCommonFile common((dir / "x.log").string(), SevInfo, "");
    CChannelPrivateFile own((dir / "x.log").string(), SevInfo, "");
    expect(own.GetFileName() != common.GetPath() && CChannelSnmp().GetPort() == 162, "channels");
    CChannelDebug debug(SevInfo, "");
    CChannelSyslog system(SevNone, "");
    expect(!RegisterThisDllAsMsgDll(), "RegisterThisDllAsMsgDll");
    log->SetFunctionChannel([](const char*) {}, SevNone, false);  // the overload without categories
    log->DeleteChannels();
    log->InitOptimisationVariable();
}

void usesIniAndMessages(const fs::path& dir) {
    fs::create_directories(dir / "config");
    const std::string file = (dir / "config/qib_fds.ini").string();
    std::ofstream(file) << "[default]\nk=d\n";
    BackupIni backup(file);
    expect(backup.SetKeyValue("new", "x", "v"), "BackupIni");
    backup.FlushIniDataToFile("");
    const QibFDSIni settings(dir.string(), true);
    expect(settings.GetProperty("new", "k") == "d" && settings.GetProperty("new", "x") == "v", "QibFDSIni");
    const Ini ini(file);
    IniGroupIterator it = ini.begin();
    expect((*++it).name == "new" && StrCmpInSensitive()("a", "B"), "Ini");
    expect(Ini::ExceptionNumberToString(5) == "Ini file is empty", "ExceptionNumberToString");
    std::string content = "a&b&";  // escaped in place, even when no server is named
    try {
        HTTP_PutFile("", "/qib", true, content, "", "");
        expect(false, "HTTP_PutFile without a server");
    } catch (const QIBError&) {
        expect(content == "a%26b%26", "HTTP_PutFile escapes");
    }
    try {
        RemoteIni("", "/qib", "", "");
        expect(false, "RemoteIni without a server");
    } catch (const QIBError&) {
    }

    MTMapFile catalog;
    catalog.Insert("K", "A %1 B %2");
    expect(catalog.StoreMap((dir / "c.cat").string()), "StoreMap");
    MapFile copy;
    expect(copy.LoadMap((dir / "c.cat").string()) && copy["K"] == "A %1 B %2", "MapFile");
    Message message;
    expect(message.Append((dir / "c.cat").string()), "Message::Append");
    expect((message["K"] << "x" << 5).Text() == "K A x B 5", "Message");
    expect(SingleMapFileMT::Instance()->HasEntry("K"), "SingleMapFileMT");
    expect(FormatString("%1%2").GetArgumentsNumber() == 2, "FormatString");
}

void usesStrings() {
    Osl_UnicodeConfiguration::SetUnicodeMode(true);
    Osl_UTF8String s(u"a\u00E9\u20AC");
    Osl_UnicodeConverter converter;
    converter.SetCurrentEncoding("windows-1252");
    std::string legacy;
    expect(s.LengthInChars() == 3 && converter.ConvertUTF8toCurrentEncoding(s, legacy) == ConversionOK &&
               legacy == "a\xE9\x80",
           "Osl_UTF8String, Osl_UnicodeConverter");
    expect(Osl_VisualString("\xE4\xB8\xAD").LengthInNarrowChars() == 2, "Osl_VisualString");
    Osl_UnicodeConfiguration::SetUnicodeMode(false);
    Osl_RegularExpression re("(b+)", true);
    expect(re.search("aBbc", 0, Osl_RegularExpression::npos) == Osl_RegularExpression::range(1, 3), "regex");
    expect(WildcardString("*.ini", false).Match("QIB_FDS.INI"), "WildcardString");
    Osl_UTF8String regexp;
    WStringAsRegexp("?", regexp);
    expect(regexp.ToString() == "^.$", "WStringAsRegexp");
    QIBAutoEditString edit("log_%%job.%%Part");
    edit.AddVariable("JOB", "run");
    edit.AddVariable("part", "7");
    expect(edit.Resolve(false) == "log_run7", "QIBAutoEditString");
    expect(!(QIBNoCaseString("A") < QIBNoCaseString("a")), "QIBNoCaseString");
}

void usesStatisticsAndFiles(const fs::path& dir) {
    CQibOsl_Statistics_OutputReportToFiles files((dir / "h.csv").string(), (dir / "d.csv").string(),
                                                 (dir / "m.csv").string());
    CQibOsl_Statistics_Thread(&files).Start();
    CQibOsl_Statistics_Thread::EnableStatistics();
    static auto* counter = new CQibOsl_Statistics_EventPerMinuteCounter("jobs");
    { CQibOsl_Statistics_AutoEventDuration duration(*counter); }
    expect(counter->Current().count == 1, "CQibOsl_Statistics_AutoEventDuration");
    counter->SampleMinute(0);
    CQibOsl_Statistics_RingList rings;
    counter->ReportMinutes(rings);
    files.HourReport(rings, 2024, 1, 1, 0);
    expect(contentOf(dir / "h.csv").rfind("\"Time\",\"jobs(Count)\",\"jobs(Duration)\"\n2024/1/1 0:0,1,", 0) == 0,
           "HourReport");

    const std::string temporary = CreateTempFile("consumer");
    Osl_File_System::replace(temporary, "[g]\nk=v\n");
    expect(Osl_IO_Status(temporary).size() == 8, "osl_io_status");
    expect(Osl_Directory::exists(GetDirName(temporary)), "osl_directory");
    Osl_File opened(temporary, Osl_File::mode_read);
    Osl_File_System::remove(temporary);
    std::istringstream in(std::string(UNICODE_Header, 2) + "x");
    expect(Osl_Ifstream_SkipSignature(in) == 2 && Osl_FILE_SkipSignature(nullptr) == 0, "SkipSignature");
    expect(Osl_Fopen(nullptr, "r") == nullptr && std::string(UTF8_Header, 4) == std::string("\xEF\xBB\xBF\0", 4) &&
               std::string(UNICODE_BE_Header, 2) == "\xFE\xFF",
           "Osl_Fopen, signatures");
    Osl_Fstream f;
    Osl_Ifstream i("/nonexistent/file");
    Osl_Ofstream o;
    expect(i.fail() && f.SkipSignature() + i.SkipSignature() == 0, "Osl_Fstream");
}

}  // namespace

int main() {
    InitOSL();
    QibVr_Versions& versions = QibVr_Versions::Instance();
    versions.Register("consumer", "consumer 1.0");
    std::cout << versions.ToString("consumer");
    expect(versions.ToString("consumer").rfind("consumer 1.0\r\n", 0) == 0, "versions");

    usesMiscAndCmdline();
    std::string made = (fs::temp_directory_path() / "osl-consumer-XXXXXX").string();
    if (mkdtemp(made.data()) == nullptr) return 2;
    usesLog(made);
    usesIniAndMessages(made);
    usesStrings();
    usesStatisticsAndFiles(made);
    fs::remove_all(made);
    return failures;
}
