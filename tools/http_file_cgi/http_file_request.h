// tools/http_file_cgi/http_file_request.h
// What a request to the file-transfer endpoint asks for, read from its method, query and body
// alone: the parse the endpoint program runs before it touches the file.
#pragma once

#include <string>

namespace osl::http_file {

/// An answer that ends the request: an "Error: ..." body for the client, with the detail for
/// the server's log.
struct Refusal {
    std::string body;
    std::string detail;
};

struct Request {
    bool store = false;   // "action=put": content is the file to store; else "action=get"
    bool isText = true;   // false for "istxt=0"
    std::string content;  // the decoded file data of a store
};

/// A decimal count of at most 18 digits.
bool parseCount(const std::string& text, unsigned long long& value);

/// GET takes its fields from query, POST from body, where the file data runs from "filedata="
/// to the last "http_file_size=", whose number must be its length. "%26" in the data stands for
/// "&", and a text store drops the CR of every CR LF. Throws Refusal for another method, an
/// unknown action, or a store whose data is missing or incomplete.
Request parseRequest(const std::string& method, const std::string& query, const std::string& body);

}  // namespace osl::http_file
