// platform/posix/udp_posix.cpp
// Datagrams to one address, and name resolution apart from the socket.
#include "platform/udp.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace osl::platform {

UdpSender::~UdpSender() { close(); }

void UdpSender::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

std::error_code resolveUdp(const std::string& host, int port, UdpEndpoint& endpoint) {
    endpoint = UdpEndpoint{};
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo* found = nullptr;
    const std::string service = std::to_string(port);
    int rc = getaddrinfo(host.c_str(), service.c_str(), &hints, &found);
    if (rc != 0) {
        return std::make_error_code(rc == EAI_SYSTEM ? static_cast<std::errc>(errno) : std::errc::host_unreachable);
    }
    std::error_code ec = std::make_error_code(std::errc::host_unreachable);
    if (found != nullptr && found->ai_addrlen <= sizeof endpoint.address) {
        std::memcpy(endpoint.address, found->ai_addr, found->ai_addrlen);
        endpoint.length = static_cast<unsigned>(found->ai_addrlen);
        endpoint.family = found->ai_family;
        ec.clear();
    }
    freeaddrinfo(found);
    return ec;
}

std::error_code UdpSender::open(const UdpEndpoint& endpoint) {
    close();
    int fd = ::socket(endpoint.family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return {errno, std::generic_category()};
    if (::connect(fd, reinterpret_cast<const sockaddr*>(endpoint.address), endpoint.length) != 0) {
        std::error_code ec{errno, std::generic_category()};
        ::close(fd);
        return ec;
    }
    fd_ = fd;
    return {};
}

std::error_code UdpSender::send(const std::string& datagram) {
    if (fd_ < 0) return std::make_error_code(std::errc::not_connected);
    int refused = 0;
    while (::send(fd_, datagram.data(), datagram.size(), 0) < 0) {
        // ECONNREFUSED reports a port unreachable for an earlier datagram: send this one again.
        if (errno == EINTR || (errno == ECONNREFUSED && ++refused == 1)) continue;
        return {errno, std::generic_category()};
    }
    return {};
}

}  // namespace osl::platform
