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
#include <map>
#include <string>
#include <system_error>

namespace {

constexpr char kConfigVariable[] = "VUM_QIB_HTTP_FILE_CONFIG";
constexpr char kConfigName[] = "vum-qib-http-file-cgi.ini";
constexpr char kGroup[] = "http_file";
constexpr unsigned long long kDefaultMaxBody = 1024 * 1024;

// An answer that ends the request: an "Error: " body, with the detail for the server's log.
struct Refusal {
    std::string body;
    std::string detail;
};

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

bool parseCount(const std::string& text, unsigned long long& value) {
    if (text.empty() || text.size() > 18 ||
        text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    value = std::stoull(text);
    return true;
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

// "a=1&b=2&" gives a and b; a field without "=" has an empty value.
std::map<std::string, std::string> fieldsOf(const std::string& text) {
    std::map<std::string, std::string> fields;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('&', start);
        if (end == std::string::npos) end = text.size();
        const std::string field = text.substr(start, end - start);
        const std::size_t equals = field.find('=');
        if (!field.empty())
            fields.emplace(field.substr(0, equals),
                           equals == std::string::npos ? "" : field.substr(equals + 1));
        start = end + 1;
    }
    return fields;
}

// The data of a store runs from "filedata=" to the last "http_file_size=", whose number must be
// its length: a file may hold both words itself.
std::string fileDataOf(const std::string& body, std::string& fieldsBefore) {
    const std::size_t start = body.find("filedata=");
    const std::size_t sizeAt = body.rfind("http_file_size=");
    unsigned long long announced = 0;
    if (start == std::string::npos || sizeAt == std::string::npos || sizeAt < start + 9 ||
        !parseCount(body.substr(sizeAt + 15), announced) || announced != sizeAt - start - 9) {
        throw Refusal{"Error: the file data is incomplete", "filedata and http_file_size disagree"};
    }
    fieldsBefore = body.substr(0, start);
    return body.substr(start + 9, sizeAt - start - 9);
}

// The client escapes "&" alone, as %26; every other byte came as it is.
std::string decoded(const std::string& data, bool isText) {
    std::string out;
    out.reserve(data.size());
    for (std::size_t i = 0; i < data.size(); ++i) {
        if (data.compare(i, 3, "%26") == 0) {
            out += '&';
            i += 2;
        } else if (!(isText && data[i] == '\r' && i + 1 < data.size() && data[i + 1] == '\n')) {
            out += data[i];
        }
    }
    return out;
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
    std::map<std::string, std::string> fields;
    std::string fileData;
    bool hasData = false;
    if (method == "GET") {
        fields = fieldsOf(environment("QUERY_STRING"));
    } else if (method == "POST") {
        const std::string body = readBody(settings);
        hasData = body.find("filedata=") != std::string::npos;
        std::string before = body;
        if (hasData) fileData = fileDataOf(body, before);
        fields = fieldsOf(before);
    } else {
        throw Refusal{"Error: method " + method + " is not supported", "method " + method};
    }
    const bool isText = fields.count("istxt") == 0 || fields["istxt"] != "0";
    const std::string action = fields["action"];
    if (action == "get") {
        answer(isText ? "text/plain; charset=utf-8" : "application/octet-stream", serve(settings));
    } else if (action == "put") {
        if (!hasData)
            throw Refusal{"Error: the file data is incomplete", "a store without filedata"};
        store(settings, decoded(fileData, isText));
        answer("text/plain; charset=utf-8", "");
    } else {
        throw Refusal{"Error: unknown action '" + action + "'", "action " + action};
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
