// ini/src/http_file.cpp
// The transfers to and from the file-transfer endpoint: request data, the credential rounds, the
// secure second attempt and the error texts. HTTP itself is platform/curl_http.h.
#include <vum-qib-osl/ini/http_file.h>
#include <vum-qib-osl/misc/qib_error.h>

#include "ini/src/http_file_internal.h"
#include "platform/curl_http.h"

namespace {

using osl::platform::HttpReply;
using osl::platform::HttpRequest;

constexpr char kAgent[] = "RemoteFile";
constexpr char kFormType[] = "application/x-www-form-urlencoded";

[[noreturn]] void fail(const std::string& text, long code) { throw QIBError(text, code, 0, "", 0); }

struct Target {
    std::string host;
    int port = 80;
};

// "host", "host:port", "[v6]" or "[v6]:port"; false when the form or the port is bad.
bool splitServer(const std::string& server, Target& target) {
    std::size_t hostEnd = server.find(':');
    if (server.front() == '[') {
        const std::size_t close = server.find(']');
        if (close == std::string::npos) return false;
        hostEnd = close + 1;
        if (hostEnd < server.size() && server[hostEnd] != ':') return false;
    }
    target.host = server.substr(0, hostEnd);
    if (hostEnd >= server.size()) return !target.host.empty();
    const std::string digits = server.substr(hostEnd + 1);
    if (digits.empty() || digits.size() > 5 ||
        digits.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    target.port = std::stoi(digits);
    return !target.host.empty();
}

struct Exchange {
    const std::string& method;
    const std::string& path;
    const std::string& data;  // the body of a POST
    const std::string& user;
    const std::string& password;
};

// One attempt on one port: sends again with credentials once for each of 401 and 407.
HttpReply attempt(const Target& target, bool secure, const Exchange& x) {
    HttpRequest request(kAgent);
    if (!request.isOpen()) fail("Open Internet failed", -1);
    if (request.connect(target.host, target.port)) fail("Internet Connect failed", -2);
    if (request.open(x.method, x.path, secure)) fail("Open Request failed", -3);
    const bool post = x.method == "POST";
    bool serverAsked = false;
    bool proxyAsked = false;
    for (;;) {
        HttpReply reply = request.send(post ? kFormType : "", post ? x.data : std::string());
        if (reply.status == 401 || reply.status == 407) {
            bool& asked = reply.status == 401 ? serverAsked : proxyAsked;
            if (asked) fail("Authenticate failed", -7);
            asked = true;
            if (reply.status == 401) {
                request.setCredentials(x.user, x.password);
            } else {
                request.setProxyCredentials(x.user, x.password);
            }
            continue;
        }
        return reply;
    }
}

bool noAnswer(const HttpReply& reply) { return reply.error && reply.status == 0; }

// The body of the final answer is appended to content.
void transfer(const std::string& server, std::string path, const std::string& method,
              const std::string& data, std::string& content, const std::string& user,
              const std::string& password) {
    Target target;
    if (server.empty() || !splitServer(server, target)) fail("Internet Connect failed", -2);
    if (method != "POST") path += "?" + data;
    const Exchange x{method, path, data, user, password};
    HttpReply reply = attempt(target, false, x);
    const long status = noAnswer(reply) ? 403 : reply.status;
    if (status == 400 || status == 403 || status == 502) {
        const Target secure{target.host, target.port == 80 ? 443 : target.port};
        reply = attempt(secure, true, x);
        if (noAnswer(reply))
            fail("Send Request failed. Last Error is " + std::to_string(reply.error.value()), -3);
    }
    osl::detail::takeAnswer(reply, content);
}

}  // namespace

namespace osl::detail {

void takeAnswer(const HttpReply& reply, std::string& content) {
    if (reply.status >= 400)
        fail("Send Request failed. Status " + std::to_string(reply.status), -3);
    if (reply.error) {
        if (!reply.headersComplete) fail("Get Response failed", -4);
        fail("Read a response failed", -6);
    }
    if (reply.body.compare(0, 7, "Error: ") == 0) fail(reply.body, -5);
    content += reply.body;
}

std::string putFormData(std::string& content, bool isText) {
    for (std::size_t at = content.find('&'); at != std::string::npos;
         at = content.find('&', at + 3)) {
        content.replace(at, 1, "%26");
    }
    return std::string(isText ? "action=put&filedata=" : "action=put&istxt=0&filedata=") + content +
           "http_file_size=" + std::to_string(content.size());
}

}  // namespace osl::detail

void HTTP_GetFile(const std::string& server, std::string path, bool isText, std::string& content,
                  std::string user, std::string password) {
    content.clear();
    transfer(server, std::move(path), "GET", isText ? "action=get&" : "action=get&istxt=0", content,
             user, password);
}

void HTTP_PutFile(const std::string& server, std::string path, bool isText, std::string& content,
                  std::string user, std::string password) {
    const std::string data = osl::detail::putFormData(content, isText);
    transfer(server, std::move(path), "POST", data, content, user, password);
}
