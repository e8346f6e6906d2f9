// platform/udp.h
// A UDP socket that sends datagrams to one host and port.
#pragma once

#include <string>
#include <system_error>

namespace osl::platform {

class UdpSender {
public:
    UdpSender() = default;
    ~UdpSender();
    UdpSender(const UdpSender&) = delete;
    UdpSender& operator=(const UdpSender&) = delete;

    /// Resolves host (a name or an address) and connects a socket to it and port.
    std::error_code open(const std::string& host, int port);
    bool isOpen() const { return fd_ >= 0; }
    void close();
    /// Sends one datagram.
    std::error_code send(const std::string& datagram);

private:
    int fd_ = -1;
};

}  // namespace osl::platform
