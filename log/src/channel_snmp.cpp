// log/src/channel_snmp.cpp
// The SNMP trap channel. The host is resolved on a thread of its own, never under the logger's
// lock: a name service that does not answer would otherwise stall every thread that logs.
#include <vum-qib-osl/log/channel_snmp.h>

#include <vum-qib-osl/misc/qib_error.h>

#include <deque>
#include <mutex>
#include <thread>

#include "log/src/snmp_trap.h"
#include "platform/clock.h"
#include "platform/process.h"
#include "platform/udp.h"

namespace osl::detail {

struct SnmpRoute {
    SnmpRoute(std::string h, int p) : host(std::move(h)), port(p) {}
    const std::string host;
    const int port;
    const int pid = osl::platform::currentProcessId();
    std::mutex mutex;  // guards the fields below
    osl::platform::UdpSender sender;
    bool resolving = false;
    std::int64_t retryAt = 0;  // seconds: no new resolution before then
    std::deque<std::string> waiting;  // traps sent once the host is resolved
};

}  // namespace osl::detail

namespace {

constexpr char kWhere[] = "log\\src\\channel_snmp";
constexpr std::int64_t kRetrySeconds = 10;
constexpr std::size_t kMaxWaiting = 100;

std::int64_t microsNow() {
    const osl::platform::WallTime now = osl::platform::clock().now();
    return now.seconds * 1000000 + now.micros;
}

void resolve(const std::shared_ptr<osl::detail::SnmpRoute>& route) {
    osl::platform::UdpEndpoint endpoint;
    std::error_code ec = osl::platform::resolveUdp(route->host, route->port, endpoint);
    std::lock_guard<std::mutex> guard(route->mutex);
    route->resolving = false;
    if (!ec) ec = route->sender.open(endpoint);
    if (ec) {
        route->retryAt = microsNow() / 1000000 + kRetrySeconds;
        route->waiting.clear();
        return;
    }
    for (const std::string& trap : route->waiting) route->sender.send(trap);
    route->waiting.clear();
}

// Called with route->mutex held and resolving set.
void startResolving(const std::shared_ptr<osl::detail::SnmpRoute>& route) {
    try {
        std::thread([route] { resolve(route); }).detach();
    } catch (const std::system_error&) {  // no thread to be had: try again later
        route->resolving = false;
        route->retryAt = microsNow() / 1000000 + kRetrySeconds;
    }
}

}  // namespace

CChannelSnmp::CChannelSnmp() : startedAt_(microsNow()) {}

CChannelSnmp::CChannelSnmp(const std::string& host, int port, const std::string& community, LogSeverity level,
                           std::string category)
    : CChannel(level, std::move(category)), host_(host), port_(port), community_(community), startedAt_(microsNow()) {
    Restart();
}

CChannelSnmp::~CChannelSnmp() = default;

void CChannelSnmp::Restart() {
    if (route_ && route_->pid != osl::platform::currentProcessId()) {
        // A forked child: the parent's resolving thread may have held the mutex at the fork, so
        // the route is neither locked nor destroyed here.
        new std::shared_ptr<osl::detail::SnmpRoute>(std::move(route_));
    }
    route_ = std::make_shared<osl::detail::SnmpRoute>(host_, port_);
    std::lock_guard<std::mutex> guard(route_->mutex);
    route_->resolving = true;
    startResolving(route_);
}

void CChannelSnmp::Write(CLogMsg& msg) {
    if (!IsHiger(msg)) return;
    if (!route_ || route_->pid != osl::platform::currentProcessId()) Restart();
    const std::int64_t now = microsNow();
    osl::detail::LogTrap trap;
    trap.community = community_;
    trap.requestId = ++requestId_;
    trap.upTime = static_cast<std::uint32_t>((now - startedAt_) / 10000);
    trap.line.assign(msg.c_str(), msg.size());
    trap.severity = msg.GetSevirity();
    trap.category = msg.GetCategory();
    trap.at = msg.GetAt();
    std::string datagram = osl::detail::encodeTrap(trap);

    std::lock_guard<std::mutex> guard(route_->mutex);
    if (route_->sender.isOpen()) {
        if (std::error_code ec = route_->sender.send(datagram)) {
            throw QIBError("SNMP trap channel: cannot send to " + host_ + ": " + ec.message(), ec.value(), 8, kWhere,
                           __LINE__);
        }
        return;
    }
    if (!route_->resolving && now / 1000000 >= route_->retryAt) {
        route_->resolving = true;
        startResolving(route_);
    }
    if (!route_->resolving || route_->waiting.size() >= kMaxWaiting) {
        throw QIBError("SNMP trap channel: no route to " + host_ + ":" + std::to_string(port_), 1, 8, kWhere, __LINE__);
    }
    route_->waiting.push_back(std::move(datagram));
}
