// fuzz/http_answer_fuzz.cpp
// What a web server sends back to HTTP_GetFile and HTTP_PutFile, taken line by line and piece by
// piece as the transport hands it over, then judged as the transfer's final answer. The first
// byte holds the size of the body pieces and whether the transfer broke off; the rest is the
// wire: header blocks (interim responses may come first), then the body. The reply must describe
// the last response whole, and the answer either yields exactly its body or fails with one of the
// transfer's documented errors.
#include <vum-qib-osl/misc/qib_error.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "ini/src/http_file_internal.h"
#include "platform/curl_http.h"

namespace {

void check(bool condition) {
    if (!condition) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t piece = (data[0] & 0x3F) + 1;
    const bool brokeOff = (data[0] & 0x40) != 0;
    std::string_view wire(reinterpret_cast<const char*>(data) + 1, size - 1);

    osl::platform::HttpReply reply;
    std::string_view lastBlock;  // the header lines of the last response
    const char* blockStart = wire.data();
    for (bool inHeaders = true; inHeaders && !wire.empty();) {
        const std::size_t end = wire.find('\n');
        const std::string_view line = wire.substr(0, end == std::string_view::npos ? end : end + 1);
        if (line.starts_with("HTTP/")) blockStart = line.data();
        osl::platform::takeHeaderLine(reply, line);
        wire.remove_prefix(line.size());
        lastBlock =
            std::string_view(blockStart, static_cast<std::size_t>(wire.data() - blockStart));
        inHeaders = !(line == "\r\n" || line == "\n") || wire.starts_with("HTTP/");
    }
    const std::string_view body = reply.headersComplete ? wire : std::string_view();
    for (std::size_t at = 0; at < body.size(); at += piece)
        check(osl::platform::takeBody(reply, body.substr(at, piece)));
    if (brokeOff || !reply.headersComplete) reply.error = std::make_error_code(std::errc::io_error);

    check(reply.status >= 0 && reply.status <= 999);
    check(reply.headers == lastBlock && reply.body == body);

    std::string content = "before";
    try {
        osl::detail::takeAnswer(reply, content);
        check(content == "before" + reply.body && reply.status < 400 && !reply.error);
    } catch (const QIBError& e) {
        check(content == "before");
        switch (e.Code()) {
            case -3:
                check(reply.status >= 400 &&
                      e.What() == "Send Request failed. Status " + std::to_string(reply.status));
                break;
            case -4:
                check(e.What() == "Get Response failed" && !reply.headersComplete);
                break;
            case -5:
                check(e.What() == reply.body && reply.body.starts_with("Error: "));
                break;
            case -6:
                check(e.What() == "Read a response failed" && reply.headersComplete);
                break;
            default:
                check(false);
        }
    }
    return 0;
}
