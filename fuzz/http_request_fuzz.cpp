// fuzz/http_request_fuzz.cpp
// The file-transfer endpoint's reading of a request. The first byte picks the method, the rest
// up to the first line feed is the query, the remainder the body: a request is either refused
// with an "Error: " answer or asks for one file read or store no larger than its body. Then the
// whole input, as a file's text or bytes, goes through the client's store encoding and must reach
// the endpoint as the file that was sent ("%26" in a file comes back as "&", and a text store
// drops the CR of every CR LF).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "ini/src/http_file_internal.h"
#include "tools/http_file_cgi/http_file_request.h"

namespace {

using osl::http_file::parseRequest;
using osl::http_file::Refusal;
using osl::http_file::Request;

void check(bool condition) {
    if (!condition) std::abort();
}

std::string asStored(const std::string& file, bool isText) {
    std::string out;
    for (std::size_t i = 0; i < file.size(); ++i) {
        if (file.compare(i, 3, "%26") == 0) {
            out += '&';
            i += 2;
        } else if (!isText || file.compare(i, 2, "\r\n") != 0) {
            out += file[i];
        }
    }
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    static const char* const kMethods[] = {"GET", "POST", "PUT", ""};
    const std::string method = kMethods[data[0] & 3];
    const std::string input(reinterpret_cast<const char*>(data) + 1, size - 1);
    const std::size_t newline = input.find('\n');
    const std::string query = input.substr(0, newline);
    const std::string body = newline == std::string::npos ? "" : input.substr(newline + 1);
    try {
        const Request request = parseRequest(method, query, body);
        check(method == "GET" || method == "POST");
        check(!request.store || (method == "POST" && request.content.size() <= body.size()));
    } catch (const Refusal& r) {
        check(r.body.starts_with("Error: "));
    }

    const bool isText = (data[0] & 4) == 0;
    std::string sent = input;
    const std::string form = osl::detail::putFormData(sent, isText);
    try {
        const Request request = parseRequest("POST", "", form);
        check(request.store && request.isText == isText);
        check(request.content == asStored(input, isText));
    } catch (const Refusal&) {
        check(false);
    }
    return 0;
}
