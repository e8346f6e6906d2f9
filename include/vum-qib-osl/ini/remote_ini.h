// An INI file kept on a web server and read and written over HTTP.
#pragma once

#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/osl_api.h>

#include <string>

/// An Ini whose text lives with the file-transfer endpoint BASEPATH/vum-qib-http-file-cgi.exe on
/// a web server (see HTTP_GetFile for the server forms, credentials and errors). Writable; comments
/// of the remote file are not kept when it is stored.
class OSL_API RemoteIni : public Ini {
public:
    /// Fetches the file in text mode and parses it. Throws the transfer's QIBError as it is, the
    /// parse errors of Ini (error 5 "Ini file is empty", where "ini/src/qib_http_ini", when the
    /// text has no content line), and "Unknown Exception" (code 0) for anything else.
    RemoteIni(const std::string& server, const std::string& basePath, const std::string& user,
              const std::string& password);
    RemoteIni(const RemoteIni&) = default;
    RemoteIni& operator=(const RemoteIni&) = default;
    ~RemoteIni() override;

    /// Stores the table in canonical form with HTTP_PutFile; the argument is ignored. Throws the
    /// transfer's QIBError.
    void FlushIniDataToFile(const std::string& fileName) override;

protected:
    /// Parses the fetched text into the table; a group already present keeps its keys.
    void ReadDataFromIniFile();
    /// Rebuilds the text from the table: "[group]", "key=value" lines, an empty line; LF ends.
    void WriteDataToIniFileContent();

private:
    std::string server_;
    std::string basePath_;
    std::string user_;
    std::string password_;
    std::string content_;
};
