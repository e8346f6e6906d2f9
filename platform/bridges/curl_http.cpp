// platform/bridges/curl_http.cpp
// The one file that includes libcurl. Connections are kept open between requests by keeping the
// easy handles themselves (curl_easy_reset leaves a handle's connections alive): a handle is
// used by one request at a time, so no connection cache is shared between threads, which
// libcurl does not support.
#include "platform/curl_http.h"

#include <curl/curl.h>
#include <unistd.h>

#include <mutex>
#include <string_view>
#include <vector>

namespace osl::platform {
namespace {

constexpr long kConnectTimeoutSeconds = 30;
constexpr long kStallSeconds = 60;
constexpr std::size_t kMaxIdleHandles = 4;
constexpr std::size_t kMaxBody = std::size_t{256} << 20;

class CurlCategory : public std::error_category {
public:
    const char* name() const noexcept override { return "curl"; }
    std::string message(int code) const override {
        return curl_easy_strerror(static_cast<CURLcode>(code));
    }
};

std::error_code curlError(CURLcode code) { return {static_cast<int>(code), httpCategory()}; }

// The handles kept for later requests, with the connections they hold open.
struct HandlePool {
    std::mutex lock;  // guards the members below
    std::vector<CURL*> idle;
    unsigned generation = 0;  // advanced by endHttpSession: older handles are not taken back
    pid_t owner = 0;          // the process the handles belong to
};

HandlePool& pool() {
    static HandlePool* instance = new HandlePool;
    return *instance;
}

// After a fork the kept handles share their sockets (and TLS state) with the parent: closing them
// here would end the parent's sessions, so the child forgets them instead.
void forgetForeignHandles(HandlePool& p) {
    if (p.owner != getpid()) {
        p.idle.clear();
        p.owner = getpid();
        ++p.generation;
    }
}

CURL* takeHandle(unsigned& generation) {
    HandlePool& p = pool();
    {
        std::lock_guard<std::mutex> guard(p.lock);
        forgetForeignHandles(p);
        generation = p.generation;
        if (!p.idle.empty()) {
            CURL* handle = p.idle.back();
            p.idle.pop_back();
            return handle;
        }
    }
    return curl_easy_init();
}

void giveBack(CURL* handle, unsigned generation) {
    curl_easy_reset(handle);
    HandlePool& p = pool();
    {
        std::lock_guard<std::mutex> guard(p.lock);
        if (p.owner == getpid() && p.generation == generation && p.idle.size() < kMaxIdleHandles) {
            p.idle.push_back(handle);
            return;
        }
    }
    curl_easy_cleanup(handle);
}

// "HTTP/1.1 401 Unauthorized" gives 401; a line without a code of exactly three digits after
// its first blank gives 0, as no status line would.
long statusOf(std::string_view line) {
    const std::size_t blank = line.find(' ');
    if (blank == std::string_view::npos) return 0;
    const std::string_view code = line.substr(blank + 1, 4);
    if (code.size() < 3 || (code.size() == 4 && code[3] >= '0' && code[3] <= '9')) return 0;
    long status = 0;
    for (std::size_t i = 0; i < 3; ++i) {
        if (code[i] < '0' || code[i] > '9') return 0;
        status = status * 10 + (code[i] - '0');
    }
    return status;
}

std::size_t onHeader(char* data, std::size_t size, std::size_t count, void* user) {
    takeHeaderLine(*static_cast<HttpReply*>(user), std::string_view(data, size * count));
    return size * count;
}

// A server that never stops sending must not take the host's memory: the transfer breaks off.
std::size_t onBody(char* data, std::size_t size, std::size_t count, void* user) {
    const std::size_t length = size * count;
    return takeBody(*static_cast<HttpReply*>(user), std::string_view(data, length)) ? length : 0;
}

bool hasControlCharacters(const std::string& text) {
    for (unsigned char c : text) {
        if (c < 0x20 || c == 0x7F) return true;
    }
    return false;
}

}  // namespace

void takeHeaderLine(HttpReply& reply, std::string_view line) {
    if (line.substr(0, 5) == "HTTP/") {
        reply.status = statusOf(line);
        reply.headers.clear();
        reply.body.clear();
        reply.headersComplete = false;
    }
    reply.headers.append(line);
    if (line == "\r\n" || line == "\n") reply.headersComplete = true;
}

bool takeBody(HttpReply& reply, std::string_view data) {
    if (data.size() > kMaxBody - reply.body.size()) return false;
    reply.body.append(data);
    return true;
}

const std::error_category& httpCategory() {
    static const CurlCategory* category = new CurlCategory;
    return *category;
}

void httpStart() { curl_global_init(CURL_GLOBAL_DEFAULT); }

void endHttpSession() {
    std::vector<CURL*> dropped;
    HandlePool& p = pool();
    {
        std::lock_guard<std::mutex> guard(p.lock);
        forgetForeignHandles(p);
        dropped.swap(p.idle);
        ++p.generation;
    }
    for (CURL* handle : dropped) curl_easy_cleanup(handle);
}

struct HttpRequest::Impl {
    CURL* curl = nullptr;
    unsigned generation = 0;
    std::string agent;
    CURLU* url = nullptr;
    std::string method;
    bool secure = false;
    bool hasCredentials = false;
    std::string user;
    std::string password;
    bool hasProxyCredentials = false;
    std::string proxyUser;
    std::string proxyPassword;
};

HttpRequest::HttpRequest(const std::string& agent) : impl_(std::make_unique<Impl>()) {
    impl_->agent = agent;
    impl_->curl = takeHandle(impl_->generation);
    impl_->url = curl_url();
}

HttpRequest::~HttpRequest() {
    if (impl_->curl) giveBack(impl_->curl, impl_->generation);  // first: the handle points at url
    if (impl_->url) curl_url_cleanup(impl_->url);
}

bool HttpRequest::isOpen() const { return impl_->curl && impl_->url; }

std::error_code HttpRequest::connect(const std::string& host, int port) {
    if (!isOpen()) return curlError(CURLE_FAILED_INIT);
    if (host.empty() || port < 1 || port > 65535 ||
        curl_url_set(impl_->url, CURLUPART_HOST, host.c_str(), 0) != CURLUE_OK ||
        curl_url_set(impl_->url, CURLUPART_PORT, std::to_string(port).c_str(), 0) != CURLUE_OK) {
        return curlError(CURLE_URL_MALFORMAT);
    }
    return {};
}

std::error_code HttpRequest::open(const std::string& method, const std::string& path, bool secure) {
    if (!isOpen()) return curlError(CURLE_FAILED_INIT);
    const std::size_t question = path.find('?');
    std::string objectPath = path.substr(0, question);
    if (objectPath.empty() || objectPath.front() != '/') {
        // Built up rather than inserted at 0: g++ 12 at -O2 reports a false -Wrestrict there.
        std::string rooted(1, '/');
        rooted += objectPath;
        objectPath = std::move(rooted);
    }
    const char* query = question == std::string::npos ? nullptr : path.c_str() + question + 1;
    if (method.empty() || hasControlCharacters(method) || hasControlCharacters(path) ||
        curl_url_set(impl_->url, CURLUPART_SCHEME, secure ? "https" : "http", 0) != CURLUE_OK ||
        curl_url_set(impl_->url, CURLUPART_PATH, objectPath.c_str(), CURLU_URLENCODE) !=
            CURLUE_OK ||
        curl_url_set(impl_->url, CURLUPART_QUERY, query, 0) != CURLUE_OK) {
        return curlError(CURLE_URL_MALFORMAT);
    }
    impl_->method = method;
    impl_->secure = secure;
    return {};
}

void HttpRequest::setCredentials(const std::string& user, const std::string& password) {
    impl_->hasCredentials = true;
    impl_->user = user;
    impl_->password = password;
}

void HttpRequest::setProxyCredentials(const std::string& user, const std::string& password) {
    impl_->hasProxyCredentials = true;
    impl_->proxyUser = user;
    impl_->proxyPassword = password;
}

HttpReply HttpRequest::send(const std::string& contentType, const std::string& body) {
    HttpReply reply;
    if (!isOpen() || impl_->method.empty()) {
        reply.error = curlError(CURLE_FAILED_INIT);
        return reply;
    }
    CURL* curl = impl_->curl;
    curl_easy_reset(curl);  // the options of an earlier send go; its connection stays
    curl_easy_setopt(curl, CURLOPT_CURLU, impl_->url);
    curl_easy_setopt(curl, CURLOPT_USERAGENT, impl_->agent.c_str());
    curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl, CURLOPT_MAXREDIRS, 10L);
    curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, kStallSeconds);
    curl_easy_setopt(curl, CURLOPT_HEADERFUNCTION, onHeader);
    curl_easy_setopt(curl, CURLOPT_HEADERDATA, &reply);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, onBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply);

    // A fresh answer from the server, never one from a cache; no "Expect: 100-continue" round.
    curl_slist* headers = nullptr;
    std::vector<std::string> lines{"Accept: */*", "Cache-Control: no-cache", "Pragma: no-cache",
                                   "Expect:"};
    if (!contentType.empty()) lines.push_back("Content-Type: " + contentType);
    if (impl_->secure) lines.emplace_back("Connection: Keep-Alive");
    for (const std::string& line : lines) {
        curl_slist* longer = curl_slist_append(headers, line.c_str());
        if (!longer) {
            curl_slist_free_all(headers);
            reply.error = curlError(CURLE_OUT_OF_MEMORY);
            return reply;
        }
        headers = longer;
    }
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);

    if (impl_->method == "GET") {
        curl_easy_setopt(curl, CURLOPT_HTTPGET, 1L);
    } else if (impl_->method == "POST") {
        curl_easy_setopt(curl, CURLOPT_POST, 1L);
    } else {
        curl_easy_setopt(curl, CURLOPT_CUSTOMREQUEST, impl_->method.c_str());
    }
    if (!contentType.empty()) {
        curl_easy_setopt(curl, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
        curl_easy_setopt(curl, CURLOPT_POSTFIELDS, body.data());
    }
    if (impl_->secure) {
        curl_easy_setopt(curl, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_0));
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYPEER, 0L);
        curl_easy_setopt(curl, CURLOPT_SSL_VERIFYHOST, 0L);
        curl_easy_setopt(curl, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NO_REVOKE));
    }
    if (impl_->hasCredentials) {
        curl_easy_setopt(curl, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_ANY));
        curl_easy_setopt(curl, CURLOPT_USERNAME, impl_->user.c_str());
        curl_easy_setopt(curl, CURLOPT_PASSWORD, impl_->password.c_str());
    }
    if (impl_->hasProxyCredentials) {
        curl_easy_setopt(curl, CURLOPT_PROXYAUTH, static_cast<long>(CURLAUTH_ANY));
        curl_easy_setopt(curl, CURLOPT_PROXYUSERNAME, impl_->proxyUser.c_str());
        curl_easy_setopt(curl, CURLOPT_PROXYPASSWORD, impl_->proxyPassword.c_str());
    }

    const CURLcode result = curl_easy_perform(curl);
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, nullptr);
    curl_slist_free_all(headers);
    if (result != CURLE_OK) reply.error = curlError(result);
    return reply;
}

}  // namespace osl::platform
