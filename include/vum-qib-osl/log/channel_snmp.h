// The SNMP trap channel.
#pragma once

#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/osl_api.h>

#include <cstdint>
#include <memory>
#include <string>

namespace osl::detail {
struct SnmpRoute;
}

/// Sends each line it takes as an SNMPv2c trap over UDP (INI type "snmp", keys "host", default
/// "localhost", "port", default 162, and "community", default "public"). The trap carries the
/// line, its severity, category and "at" (README: "SNMP traps"). The host is resolved once, on a
/// thread of its own, so that a slow name service holds up no thread that logs; the first 100
/// lines wait for it. A host that cannot be resolved is tried again ten seconds later; lines
/// meanwhile are lost (Write throws QIBError; the logger drops it).
class OSL_API CChannelSnmp : public CChannel {
public:
    CChannelSnmp();
    CChannelSnmp(const std::string& host, int port, const std::string& community, LogSeverity level,
                 std::string category);
    CChannelSnmp(Ini& ini, const std::string& group);
    ~CChannelSnmp() override;

    /// Reads "level" and "category", "host" (default "localhost"), "port" (default 162; a value
    /// that is not a port number gives 162) and "community" (default "public").
    void Configure(Ini& ini, const std::string& group) override;
    void Write(CLogMsg& msg) override;

    const std::string& GetHost() const { return host_; }
    int GetPort() const { return port_; }
    const std::string& GetCommunity() const { return community_; }

protected:
    /// Forgets the address and starts resolving host_ anew.
    void Restart();

    std::string host_ = "localhost";
    int port_ = 162;
    std::string community_ = "public";

private:
    std::shared_ptr<osl::detail::SnmpRoute> route_;  // shared with the thread that resolves
    std::int64_t startedAt_ = 0;                     // microseconds, for sysUpTime
    std::int32_t requestId_ = 0;
};
