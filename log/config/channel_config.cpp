// log/config/channel_config.cpp
// The channels' keys read from their INI groups. A mistake in a key is said once, on standard
// error, when the channel is configured; the value still reads as it always has.
#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "log/src/log_file.h"  // completes the file channel

namespace {

void sayMistake(const std::string& group, const char* key, const std::string& value, const std::string& what) {
    std::fprintf(stderr, "vum-qib-osl: [%s] %s=%s: %s\n", group.c_str(), key, value.c_str(), what.c_str());
}

// As "%lu" reads it, cut to 32 bits: "10k" is 10, "-1" is 4294967295.
std::uint32_t number(Ini& ini, const std::string& group, const char* key) {
    const std::string text = ini.GetString(group, key, "", nullptr);
    if (text.empty()) return 0;
    char* end = nullptr;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 10);
    if (end == text.c_str()) {
        sayMistake(group, key, text, "not a number, reads as 0 (no limit)");
        return 0;
    }
    const auto result = static_cast<std::uint32_t>(value);
    const std::string reads = ", reads as " + std::to_string(result);
    std::size_t first = text.find_first_not_of(" \t");
    while (*end != '\0' && std::isspace(static_cast<unsigned char>(*end))) ++end;
    if (text[first] == '-') {
        sayMistake(group, key, text, "negative" + reads);
    } else if (value > UINT32_MAX) {
        sayMistake(group, key, text, "larger than 4294967295" + reads);
    } else if (*end != '\0') {
        sayMistake(group, key, text, "text after the number" + reads);
    }
    return result;
}

}  // namespace

void CChannel::Configure(Ini& ini, const std::string& group) {
    const std::string level = ini.GetString(group, "level", "none", nullptr);
    level_ = StringToSev(level);
    if (level_ == SevNone && level != "none") {
        sayMistake(group, "level", level, "not info, warning, error, fatal, system or none: the channel takes nothing");
    }
    SetCategory(ini.GetString(group, "category", "", nullptr));
}

CChannelCommonFile::CChannelCommonFile(Ini& ini, const std::string& group) : path_("run.log") {
    CChannelCommonFile::Configure(ini, group);
}

void CChannelCommonFile::Configure(Ini& ini, const std::string& group) {
    path_ = ini.GetString(group, "path", "run.log", nullptr);
    if (path_.empty()) sayMistake(group, "path", path_, "empty: the channel writes nothing");
    CChannel::Configure(ini, group);
    period_ = number(ini, group, "period");
    maxsize_ = number(ini, group, "maxsize");
    purgeCount_ = number(ini, group, "purgecount");
    purgeAge_ = number(ini, group, "purgeage");
    Reset();
}

CChannelPrivateFile::CChannelPrivateFile(Ini& ini, const std::string& group) : CChannelCommonFile(ini, group) {}

CChannelSnmp::CChannelSnmp(Ini& ini, const std::string& group) : CChannelSnmp() { CChannelSnmp::Configure(ini, group); }

void CChannelSnmp::Configure(Ini& ini, const std::string& group) {
    CChannel::Configure(ini, group);
    host_ = ini.GetString(group, "host", "localhost", nullptr);
    const std::string port = ini.GetString(group, "port", "162", nullptr);
    char* end = nullptr;
    const long value = std::strtol(port.c_str(), &end, 10);
    const bool valid = end != port.c_str() && *end == '\0' && value > 0 && value < 65536;
    if (!valid) sayMistake(group, "port", port, "not a port number, reads as 162");
    port_ = valid ? static_cast<int>(value) : 162;
    community_ = ini.GetString(group, "community", "public", nullptr);
    Restart();
}

CChannelSyslog::CChannelSyslog(Ini& ini, const std::string& group) { CChannelSyslog::Configure(ini, group); }

void CChannelSyslog::Configure(Ini& ini, const std::string& group) {
    CChannel::Configure(ini, group);
    Open();
}
