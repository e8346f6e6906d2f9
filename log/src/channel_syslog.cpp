// log/src/channel_syslog.cpp
#include <vum-qib-osl/log/channel_syslog.h>

#include "platform/system_log.h"

namespace {
constexpr char kEventSource[] = "VELMARION";
}  // namespace

CChannelSyslog::CChannelSyslog() { Open(); }

CChannelSyslog::CChannelSyslog(LogSeverity level, std::string category) : CChannel(level, std::move(category)) {
    Open();
}

CChannelSyslog::CChannelSyslog(Ini& ini, const std::string& group) { CChannelSyslog::Configure(ini, group); }

void CChannelSyslog::Configure(Ini& ini, const std::string& group) {
    CChannel::Configure(ini, group);
    Open();
}

// The source stays open when the channel goes: other channels may still use it.
CChannelSyslog::~CChannelSyslog() = default;

void CChannelSyslog::Open() {
    osl::platform::openSystemLog(kEventSource);
    opened_ = true;
}

void CChannelSyslog::Write(CLogMsg& msg) {
    if (!opened_ || !IsHiger(msg)) return;
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
