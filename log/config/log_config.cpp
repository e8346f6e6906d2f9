// log/config/log_config.cpp
// The logger's configuration from an INI file: the logger group, the channel factory, and the
// screen and file channels that read their keys from it. Sits above ini/, which logs through the
// core in log/src.
#include <vum-qib-osl/log/log.h>

#include <vum-qib-osl/ini/ini.h>
#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cctype>
#include <cstdio>
#include <iostream>

namespace {

bool sameIgnoringCase(const std::string& a, const char* b) {
    std::size_t i = 0;
    for (; i < a.size() && b[i] != '\0'; ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i]))) {
            return false;
        }
    }
    return i == a.size() && b[i] == '\0';
}

// The names of "channels": separated by runs of blanks and commas.
std::vector<std::string> channelNames(const std::string& list) {
    std::vector<std::string> names;
    std::size_t i = 0;
    while (i < list.size()) {
        i = list.find_first_not_of(" ,", i);
        if (i == std::string::npos) break;
        std::size_t end = list.find_first_of(" ,", i);
        if (end == std::string::npos) end = list.size();
        names.push_back(list.substr(i, end - i));
        i = end;
    }
    return names;
}

CChannel* makeChannel(Ini& ini, const std::string& name) {
    const std::string type = ini.GetString(name, "type", "ValNone", nullptr);
    if (sameIgnoringCase(type, "text-file") || sameIgnoringCase(type, "private-file")) {
        if (ini.GetString(name, "path", "run.log", nullptr).empty()) {
            std::fprintf(stderr, "vum-qib-osl: [%s] path= is empty: the channel is not made\n", name.c_str());
            return nullptr;
        }
        if (sameIgnoringCase(type, "text-file")) return new CChannelCommonFile(ini, name);
        return new CChannelPrivateFile(ini, name);
    }
    if (sameIgnoringCase(type, "system")) return new CChannelSyslog(ini, name);
    if (sameIgnoringCase(type, "debug")) return new CChannelDebug(ini, name);
    if (sameIgnoringCase(type, "snmp")) return new CChannelSnmp(ini, name);
    return nullptr;
}

}  // namespace

CLog::CLog(const std::string& iniFile, const std::string& processName) : CLog() { Load(iniFile, processName); }

bool CLog::Load(const std::string& iniFile, const std::string& processName) {
    iniFile_ = iniFile;
    auto ini = std::make_shared<Ini>();
    if (!LoadTheIni(*ini)) {
        DeleteChannels();
        Init();
        return false;
    }
    ini_ = std::move(ini);
    return Load(processName);
}

bool CLog::Load(Ini& ini, const std::string& processName) {
    ini_ = std::make_shared<Ini>(ini);
    return Load(processName);
}

bool CLog::LoadTheIni(Ini& ini) {
    try {
        ini.Load(iniFile_, true);
        return true;
    } catch (const QIBError& e) {
        std::cerr << iniFile_ << ":" << Ini::ExceptionNumberToString(static_cast<int>(e.Code())) << std::endl;
    } catch (...) {  // deliberate: any other failure only means the configuration is not there
    }
    return false;
}

bool CLog::Load(const std::string& processName) {
    DeleteChannels();
    SetProcessName(processName);
    group_ = ini_->isGroupExist(processName) ? processName : std::string("logging");
    if (!ini_->GetString(group_, "screen-level", "", nullptr).empty()) {
        SetFunctionChannel(Log2clog, SevNone, std::string(), true);
    }
    bool found = false;
    const std::string list = ini_->GetString(group_, "channels", "ValNone", &found);
    if (found) {
        for (const std::string& name : channelNames(list)) {
            if (CChannel* channel = makeChannel(*ini_, name)) channels_.push_back(channel);
        }
    }
    InitOptimisationVariable();
    return true;
}

void CLog::SetFunctionChannel(void (*fn)(const char*), LogSeverity sev, std::string category, bool fromIni) {
    if (fromIni && !group_.empty() && ini_) {
        sev = StringToSev(ini_->GetString(group_, "screen-level", "", nullptr));
        category = ini_->GetString(group_, "screen-category", "", nullptr);
    }
    if (functionChannel_ == nullptr) {
        functionChannel_ = new CChannelFunc;
        channels_.push_back(functionChannel_);
    }
    auto* channel = static_cast<CChannelFunc*>(functionChannel_);
    channel->SetFunction(fn);
    channel->SetSeverity(sev);
    channel->SetCategory(category);
    InitOptimisationVariable();
}

void CLog::SetFunctionChannel(void (*fn)(const char*), LogSeverity sev, bool fromIni) {
    SetFunctionChannel(fn, sev, std::string(), fromIni);
}

void CLog::SetFileChannel(std::string& fileName, LogSeverity sev, std::string category, bool fromIni) {
    if (fromIni && !group_.empty() && ini_) {
        bool found = false;
        std::string level = ini_->GetString(group_, "file-level", "", &found);
        if (found) sev = StringToSev(level);
        std::string fileCategory = ini_->GetString(group_, "file-category", "", &found);
        if (found) category = fileCategory;
    }
    auto* channel = static_cast<CChannelCommonFile*>(fileChannel_);
    if (channel == nullptr) {
        channel = new CChannelCommonFile(fileName, sev, category);
        fileChannel_ = channel;
        channels_.push_back(channel);
    } else if (channel->GetPath() != fileName) {
        channel->SetPath(fileName);
    }
    channel->SetSeverity(sev);
    channel->SetCategory(category);
    InitOptimisationVariable();
}

void CLog::SetFileChannel(std::string& fileName, LogSeverity sev, bool fromIni) {
    SetFileChannel(fileName, sev, std::string(), fromIni);
}
