// tools/http_file_cgi/http_file_request.cpp
// The endpoint's reading of a request; see http_file_request.h.
#include "tools/http_file_cgi/http_file_request.h"

#include <map>

namespace osl::http_file {
namespace {

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

}  // namespace

bool parseCount(const std::string& text, unsigned long long& value) {
    if (text.empty() || text.size() > 18 ||
        text.find_first_not_of("0123456789") != std::string::npos)
        return false;
    value = std::stoull(text);
    return true;
}

Request parseRequest(const std::string& method, const std::string& query, const std::string& body) {
    std::map<std::string, std::string> fields;
    std::string fileData;
    bool hasData = false;
    if (method == "GET") {
        fields = fieldsOf(query);
    } else if (method == "POST") {
        hasData = body.find("filedata=") != std::string::npos;
        std::string before = body;
        if (hasData) fileData = fileDataOf(body, before);
        fields = fieldsOf(before);
    } else {
        throw Refusal{"Error: method " + method + " is not supported", "method " + method};
    }
    Request request;
    request.isText = fields.count("istxt") == 0 || fields["istxt"] != "0";
    const std::string action = fields["action"];
    if (action == "put") {
        if (!hasData)
            throw Refusal{"Error: the file data is incomplete", "a store without filedata"};
        request.store = true;
        request.content = decoded(fileData, request.isText);
    } else if (action != "get") {
        throw Refusal{"Error: unknown action '" + action + "'", "action " + action};
    }
    return request;
}

}  // namespace osl::http_file
