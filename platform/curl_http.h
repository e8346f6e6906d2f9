// platform/curl_http.h
// HTTP requests in standard types: one request per object, sent once or again with credentials,
// over connections the process keeps open between requests until endHttpSession. Implemented in
// platform/bridges/curl_http.cpp; nothing else includes libcurl.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace osl::platform {

/// Transport failures: the value is libcurl's own result code, the message its text.
const std::error_category& httpCategory();

/// Process-wide set-up of libcurl; called once from start-up, before other threads run.
void httpStart();

/// Drops the connections (with their DNS and TLS session caches) kept for later requests. A
/// request in flight finishes on its own connection, which is then closed instead of kept.
void endHttpSession();

/// What came back from one send.
struct HttpReply {
    std::error_code error;  // the exchange broke off; see status and headersComplete for where
    long status = 0;        // of the last response; 0 when no status line arrived
    bool headersComplete = false;  // the last response's header block arrived whole
    std::string headers;           // the last response's raw header block
    std::string body;              // the last response's body
};

/// Takes one header line of an answer as it arrived (with its line end): a status line starts a
/// new response, so the reply always describes the last one; an empty line completes the block.
void takeHeaderLine(HttpReply& reply, std::string_view line);
/// Appends a piece of the body; false (nothing appended) when the body would pass 256 MiB.
bool takeBody(HttpReply& reply, std::string_view data);

/// One request: a target, a method and path, optional credentials, then one or more sends. Every
/// request uses the proxy settings of the environment (http_proxy, https_proxy, no_proxy), sends
/// "Accept: */*" and asks caches not to answer, follows redirects over HTTP(S) only, gives up on
/// a connection that takes more than 30 s, on a transfer that stalls (under one byte per second)
/// for 60 s and on a body over 256 MiB, and sends no cookies. Not shared between threads.
class HttpRequest {
public:
    /// isOpen() tells whether a session could be had.
    explicit HttpRequest(const std::string& agent);
    ~HttpRequest();
    HttpRequest(const HttpRequest&) = delete;
    HttpRequest& operator=(const HttpRequest&) = delete;

    bool isOpen() const;
    /// host is a name, an IPv4 address or an IPv6 address in brackets; port 1..65535. Fails when
    /// either is malformed; nothing is contacted yet.
    std::error_code connect(const std::string& host, int port);
    /// path may carry a query after "?". secure: HTTPS, HTTP/1.0, and no check of the server's
    /// certificate (authority, name, dates, usage, revocation). Fails when the path is malformed.
    std::error_code open(const std::string& method, const std::string& path, bool secure);
    /// Offered to the server (any scheme it asks for) by the following sends.
    void setCredentials(const std::string& user, const std::string& password);
    /// Offered to the proxy by the following sends.
    void setProxyCredentials(const std::string& user, const std::string& password);
    /// Sends the request: body and a Content-Type header for a non-empty contentType, neither
    /// otherwise.
    HttpReply send(const std::string& contentType, const std::string& body);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace osl::platform
