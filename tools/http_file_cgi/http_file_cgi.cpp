// tools/http_file_cgi/http_file_cgi.cpp
// vum-qib-http-file-cgi.exe: the CGI program at the other end of HTTP_GetFile and HTTP_PutFile.
// It serves and stores the ONE file its configuration names; nothing of a request reaches a path.
// Failures are answered with status 200 and an "Error: ..." body, which the library raises as
// the error text; the details that name server paths go to standard error (the server's log).
#include <vum-qib-osl/file/osl_file.h>
#include <vum-qib-osl/file/osl_file_system.h>
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/osl_init.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>

#include "tools/http_file_cgi/http_file_request.h"

namespace {

using osl::http_file::parseCount;
using osl::http_file::Refusal;

constexpr char kConfigVariable[] = "VUM_QIB_HTTP_FILE_CONFIG";
constexpr char kConfigName[] = "vum-qib-http-file-cgi.ini";
constexpr char kGroup[] = "http_file";
constexpr unsigned long long kDefaultMaxBody = 1024 * 1024;

struct Settings {
    std::string file;
    unsigned long long maxBody = kDefaultMaxBody;
};

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): one thread
    return value ? value : "";
}

std::string configurationPath() {
    std::string path = environment(kConfigVariable);
    if (!path.empty()) return path;
    std::error_code ec;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ec);
    return (program.parent_path() / kConfigName).string();
}

Settings loadSettings() {
    const std::string path = configurationPath();
    const std::string unconfigured = "Error: the file-transfer endpoint is not configured";
    Settings settings;
    try {
        const Ini ini(path, true);
        settings.file = ini.GetKeyValue(kGroup, "file", "", false);
        const std::string limit = ini.GetKeyValue(kGroup, "max_body", "", false);
        if (!limit.empty() && !parseCount(limit, settings.maxBody)) {
            throw Refusal{unconfigured, path + ": max_body is not a number of bytes: " + limit};
        }
    } catch (const QIBError& e) {
        throw Refusal{unconfigured, path + ": " + e.What()};
    }
    if (settings.file.empty() || settings.file.front() != '/') {
        throw Refusal{unconfigured, path + ": [http_file] file must name an absolute path"};
    }
    return settings;
}

// The request's body, refused unread when it is larger than the limit.
std::string readBody(const Settings& settings) {
    unsigned long long length = 0;
    const std::string declared = environment("CONTENT_LENGTH");
    if (!declared.empty() && !parseCount(declared, length))
        throw Refusal{"Error: bad request length", declared};
    if (length > settings.maxBody) {
        throw Refusal{"Error: the request of " + declared + " bytes exceeds the limit of " +
                          std::to_string(settings.maxBody) + " bytes",
                      "request body too large"};
    }
    std::string body(static_cast<std::size_t>(length), '\0');
    const std::size_t got = std::fread(body.data(), 1, body.size(), stdin);
    if (got != body.size()) throw Refusal{"Error: the request ended early", "short request body"};
    return body;
}

std::string serve(const Settings& settings) {
    try {
        Osl_File file(settings.file, Osl_File::mode_read);
        return file.read_all();
    } catch (const QIBError& e) {
        throw Refusal{"Error: cannot read the file: " +
                          std::generic_category().message(static_cast<int>(e.Code())),
                      e.What()};
    }
}

void store(const Settings& settings, const std::string& content) {
    try {
        Osl_File_System::replace(settings.file, content);
    } catch (const QIBError& e) {
        throw Refusal{"Error: cannot store the file: " +
                          std::generic_category().message(static_cast<int>(e.Code())),
                      e.What()};
    }
}

void answer(const std::string& type, const std::string& body) {
    std::cout << "Status: 200 OK\r\nContent-Type: " << type << "\r\nContent-Length: " << body.size()
              << "\r\nCache-Control: no-store\r\n\r\n"
              << body << std::flush;
}

void handle() {
    const Settings settings = loadSettings();
    const std::string method = environment("REQUEST_METHOD");
    const osl::http_file::Request request = osl::http_file::parseRequest(
        method, environment("QUERY_STRING"), method == "POST" ? readBody(settings) : "");
    if (request.store) {
        store(settings, request.content);
        answer("text/plain; charset=utf-8", "");
    } else {
        answer(request.isText ? "text/plain; charset=utf-8" : "application/octet-stream",
               serve(settings));
    }
}

}  // namespace

int main() {
    InitOSL();
    std::ios::sync_with_stdio(false);
    try {
        handle();
    } catch (const Refusal& r) {
        std::cerr << "vum-qib-http-file-cgi: " << r.detail << "\n";
        answer("text/plain; charset=utf-8", r.body);
    } catch (const std::exception& e) {
        std::cerr << "vum-qib-http-file-cgi: " << e.what() << "\n";
        answer("text/plain; charset=utf-8", "Error: internal failure");
    }
    return 0;
}
