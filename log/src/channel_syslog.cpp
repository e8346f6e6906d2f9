// log/src/channel_syslog.cpp
// The system event channel on the system log; severities map to its priorities.
#include <vum-qib-osl/log/channel_syslog.h>

#include "platform/system_log.h"

namespace {
constexpr char kEventSource[] = "VELMARION";
}  // namespace

CChannelSyslog::CChannelSyslog() { Open(); }

CChannelSyslog::CChannelSyslog(LogSeverity level, std::string category) : CChannel(level, std::move(category)) {
    Open();
}

// The source stays open when the channel goes: other channels may still use it.
CChannelSyslog::~CChannelSyslog() = default;

void CChannelSyslog::Open() { osl::platform::openSystemLog(kEventSource); }

void CChannelSyslog::Write(CLogMsg& msg) {
    if (!IsHiger(msg)) return;
    osl::platform::SystemLogLevel level;
    switch (msg.GetSevirity()) {
        case SevInfo:
        case SevSystem: level = osl::platform::SystemLogLevel::Info; break;
        case SevWarning: level = osl::platform::SystemLogLevel::Warning; break;
        case SevError:
        case SevFatal: level = osl::platform::SystemLogLevel::Error; break;
        default: return;
    }
    osl::platform::writeSystemLog(level, std::string(msg.c_str(), msg.size()));
}

bool SubscribeSyslogEvents(const char* /*registryKey*/, char* /*messageFile*/) { return false; }

bool RegisterThisDllAsMsgDll() { return false; }
