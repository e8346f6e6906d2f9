// platform/posix/udp_posix.cpp
#include "platform/udp.h"

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace osl::platform {

UdpSender::~UdpSender() { close(); }

void UdpSender::close() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

std::error_code UdpSender::open(const std::string& host, int port) {
    close();
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
    for (addrinfo* a = found; a != nullptr; a = a->ai_next) {
        int fd = ::socket(a->ai_family, a->ai_socktype | SOCK_CLOEXEC, a->ai_protocol);
        if (fd < 0) {
            ec = {errno, std::generic_category()};
            continue;
        }
        if (::connect(fd, a->ai_addr, a->ai_addrlen) == 0) {
            fd_ = fd;
            ec.clear();
            break;
        }
        ec = {errno, std::generic_category()};
        ::close(fd);
    }
    freeaddrinfo(found);
    return ec;
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
