// platform/udp.h
// A UDP socket that sends datagrams to one address, and the resolution of a host name to such an
// address, kept apart so that callers can resolve where a slow name service blocks nobody.
#pragma once

#include <string>
#include <system_error>

namespace osl::platform {

/// An address to send to (a socket address of any family, stored as bytes).
struct UdpEndpoint {
    alignas(8) unsigned char address[128] = {};
    unsigned length = 0;
    int family = 0;
};

/// Resolves host (a name or an address) and port. May block as long as the name service does.
std::error_code resolveUdp(const std::string& host, int port, UdpEndpoint& endpoint);

class UdpSender {
public:
    UdpSender() = default;
    ~UdpSender();
    UdpSender(const UdpSender&) = delete;
    UdpSender& operator=(const UdpSender&) = delete;

    /// Connects a socket to the endpoint; never blocks on a name service.
    std::error_code open(const UdpEndpoint& endpoint);
    bool isOpen() const { return fd_ >= 0; }
    void close();
    /// Sends one datagram.
    std::error_code send(const std::string& datagram);

private:
    int fd_ = -1;
};

}  // namespace osl::platform
