// The debugger channel.
#pragma once

#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/osl_api.h>

#include <cstdint>
#include <string>

/// Writes each line it takes to standard error while a debugger is attached to the process, and
/// nowhere otherwise (INI type "debug"). Whether one is attached is checked at most once a second.
class OSL_API CChannelDebug : public CChannel {
public:
    CChannelDebug() = default;
    CChannelDebug(LogSeverity level, std::string category) : CChannel(level, std::move(category)) {}
    /// Reads "level" and "category".
    CChannelDebug(Ini& ini, const std::string& group) { CChannel::Configure(ini, group); }
    ~CChannelDebug() override;

    void Write(CLogMsg& msg) override;

private:
    std::int64_t checkedAt_ = -1;
    bool attached_ = false;
};
