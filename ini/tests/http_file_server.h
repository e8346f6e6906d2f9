// ini/tests/http_file_server.h
// lighttpd on a free loopback port with a configuration of its own, for the programs that talk
// to the file-transfer endpoint: DIR/www is the document root, every .exe under it runs as a CGI
// program with VUM_QIB_HTTP_FILE_CONFIG=DIR/endpoint.ini, and the server stops with the object.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "log/tests/daemon.h"

namespace osl::test {

inline bool acceptsTcp(int port) {
    const int fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<uint16_t>(port));
    const bool ok = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    close(fd);
    return ok;
}

class HttpFileServer {
public:
    /// extraConfig is added to the configuration, with "@" standing for dir.
    explicit HttpFileServer(const std::string& dir, const std::string& extraConfig = "") {
        const std::string lighttpd = findProgram("lighttpd");
        if (lighttpd.empty()) {
            failure_ = "lighttpd is missing: tools/dev/install-deps.sh test";
            return;
        }
        port_ = freePort(SOCK_STREAM);
        std::string config = R"(server.document-root = "@/www"
server.bind = "127.0.0.1"
server.port = PORT
server.errorlog = "@/error.log"
server.modules += ("mod_cgi", "mod_setenv")
cgi.assign = (".exe" => "")
setenv.add-environment = ("VUM_QIB_HTTP_FILE_CONFIG" => "@/endpoint.ini")
)" + extraConfig;
        config.replace(config.find("PORT"), 4, std::to_string(port_));
        for (std::size_t at = config.find('@'); at != std::string::npos; at = config.find('@', at + dir.size()))
            config.replace(at, 1, dir);
        writeFile(dir + "/lighttpd.conf", config);
        daemon_ = std::make_unique<Daemon>(
            std::vector<std::string>{lighttpd, "-D", "-f", dir + "/lighttpd.conf"},
            std::vector<std::string>{}, dir + "/lighttpd.out");
        if (!waitFor([&] { return acceptsTcp(port_); }))
            failure_ = readFile(dir + "/lighttpd.out") + readFile(dir + "/error.log");
    }

    /// Empty when the server runs, else what went wrong.
    const std::string& failure() const { return failure_; }
    /// "127.0.0.1:PORT"
    std::string address() const { return "127.0.0.1:" + std::to_string(port_); }

private:
    std::string failure_;
    int port_ = 0;
    std::unique_ptr<Daemon> daemon_;
};

}  // namespace osl::test
