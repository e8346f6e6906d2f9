// ini/src/remote_ini.cpp
// An Ini read from and written to the file-transfer endpoint of a web server.
#include <vum-qib-osl/ini/http_file.h>
#include <vum-qib-osl/ini/remote_ini.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <sstream>

namespace {

constexpr char kWhere[] = "ini/src/qib_http_ini";
constexpr char kEndpoint[] = "/vum-qib-http-file-cgi.exe";

}  // namespace

RemoteIni::RemoteIni(const std::string& server, const std::string& basePath,
                     const std::string& user, const std::string& password)
    : Ini("", false), server_(server), basePath_(basePath), user_(user), password_(password) {
    try {
        HTTP_GetFile(server_, basePath_ + kEndpoint, true, content_, user_, password_);
        ReadDataFromIniFile();
    } catch (const QIBError&) {
        throw;
    } catch (...) {
        throw QIBError("Unknown Exception", 0, 0, "", 0);
    }
}

RemoteIni::~RemoteIni() = default;

void RemoteIni::ReadDataFromIniFile() {
    std::istringstream probe(content_);
    std::string line;
    if (!GetNextLine(probe, line)) {
        OSL_LOG(SevInfo, "ini", "RemoteIni::ReadDataFromIniFile")
            << Ini::ExceptionNumberToString(5);
        throw QIBError(Ini::ExceptionNumberToString(5), 5, 12, kWhere, __LINE__);
    }
    std::istringstream in(content_);
    ReadGroups(in);
}

void RemoteIni::WriteDataToIniFileContent() {
    std::ostringstream out;
    WriteGroups(out);
    content_ = out.str();
}

void RemoteIni::FlushIniDataToFile(const std::string& /*fileName*/) {
    try {
        WriteDataToIniFileContent();
        HTTP_PutFile(server_, basePath_ + kEndpoint, true, content_, user_, password_);
    } catch (int number) {
        // Parse error numbers thrown as bare integers, as older readers did, leave as QIBError.
        throw QIBError("Ini error:" + Ini::ExceptionNumberToString(number), number, 12, kWhere,
                       __LINE__);
    }
}
