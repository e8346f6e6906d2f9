// platform/system_log.h
// The system log: syslog(3) under an identity, facility user. Tests route the entries to a
// datagram socket of their own instead, in the form syslog(3) sends them to /dev/log.
#pragma once

#include <string>

namespace osl::platform {

enum class SystemLogLevel { Info, Warning, Error };

/// Opens the system log for the process under identity (which must stay valid for the life of
/// the process), with the process id in every entry.
void openSystemLog(const char* identity);
/// Writes one entry; failures are not reported.
void writeSystemLog(SystemLogLevel level, const std::string& text);
/// Sends the entries to the datagram socket at path instead of syslog(3); empty restores
/// syslog(3).
void setSystemLogSocket(const std::string& path);

}  // namespace osl::platform
