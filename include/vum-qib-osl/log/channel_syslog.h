// The system event channel: log lines in the system log under the source "VELMARION".
#pragma once

#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/osl_api.h>

#include <string>

/// Writes each line it takes (header included) to the system log, syslog(3) with the identity
/// "VELMARION", facility user and the process id (INI type "system"). Severities map to
/// priorities: info and system give LOG_INFO, warning LOG_WARNING, error and fatal LOG_ERR; any
/// other severity writes nothing. The bytes of the line go out unchanged in legacy and Unicode
/// mode alike (UTF-8 in Unicode mode). Opening the channel sets the identity of the process's
/// syslog(3) calls.
class OSL_API CChannelSyslog : public CChannel {
public:
    /// Level none; opens the system log.
    CChannelSyslog();
    CChannelSyslog(LogSeverity level, std::string category);
    CChannelSyslog(Ini& ini, const std::string& group);
    ~CChannelSyslog() override;

    /// Reads "level" and "category", then opens the system log.
    void Configure(Ini& ini, const std::string& group) override;

    void Write(CLogMsg& msg) override;

protected:
    void Open();
};

/// The event-source registration of another platform: there is no registry here, so both return
/// false and change nothing.
OSL_API bool SubscribeSyslogEvents(const char* registryKey, char* messageFile);
OSL_API bool RegisterThisDllAsMsgDll();
