// log/src/channel_snmp.cpp
#include <vum-qib-osl/log/channel_snmp.h>

#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cstdlib>

#include "log/src/snmp_trap.h"
#include "platform/clock.h"
#include "platform/udp.h"

namespace {

constexpr char kWhere[] = "log\\src\\channel_snmp";
constexpr std::int64_t kRetrySeconds = 10;

std::int64_t microsNow() {
    const osl::platform::WallTime now = osl::platform::clock().now();
    return now.seconds * 1000000 + now.micros;
}

}  // namespace

CChannelSnmp::CChannelSnmp() : sender_(std::make_unique<osl::platform::UdpSender>()), startedAt_(microsNow()) {}

CChannelSnmp::CChannelSnmp(const std::string& host, int port, const std::string& community, LogSeverity level,
                           std::string category)
    : CChannel(level, std::move(category)),
      host_(host),
      port_(port),
      community_(community),
      sender_(std::make_unique<osl::platform::UdpSender>()),
      startedAt_(microsNow()) {}

CChannelSnmp::CChannelSnmp(Ini& ini, const std::string& group) : CChannelSnmp() { CChannelSnmp::Configure(ini, group); }

CChannelSnmp::~CChannelSnmp() = default;

void CChannelSnmp::Configure(Ini& ini, const std::string& group) {
    CChannel::Configure(ini, group);
    host_ = ini.GetString(group, "host", "localhost", nullptr);
    const std::string port = ini.GetString(group, "port", "162", nullptr);
    char* end = nullptr;
    const long value = std::strtol(port.c_str(), &end, 10);
    port_ = (end != port.c_str() && *end == '\0' && value > 0 && value < 65536) ? static_cast<int>(value) : 162;
    community_ = ini.GetString(group, "community", "public", nullptr);
    sender_->close();
    retryAt_ = 0;
}

void CChannelSnmp::Write(CLogMsg& msg) {
    if (!IsHiger(msg)) return;
    const std::int64_t now = microsNow();
    if (!sender_->isOpen()) {
        if (now / 1000000 < retryAt_) {
            throw QIBError("SNMP trap channel: no route to " + host_, 1, 8, kWhere, __LINE__);
        }
        if (std::error_code ec = sender_->open(host_, port_)) {
            retryAt_ = now / 1000000 + kRetrySeconds;
            throw QIBError("SNMP trap channel: cannot reach " + host_ + ":" + std::to_string(port_) + ": " +
                               ec.message(),
                           ec.value(), 8, kWhere, __LINE__);
        }
    }
    osl::detail::LogTrap trap;
    trap.community = community_;
    trap.requestId = ++requestId_;
    trap.upTime = static_cast<std::uint32_t>((now - startedAt_) / 10000);
    trap.line.assign(msg.c_str(), msg.size());
    trap.severity = msg.GetSevirity();
    trap.category = msg.GetCategory();
    trap.at = msg.GetAt();
    if (std::error_code ec = sender_->send(osl::detail::encodeTrap(trap))) {
        throw QIBError("SNMP trap channel: cannot send to " + host_ + ": " + ec.message(), ec.value(), 8, kWhere,
                       __LINE__);
    }
}
