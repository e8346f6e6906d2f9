// log/src/log.cpp
// The logger singleton: channels, summaries and serialised output.
#include <vum-qib-osl/log/log.h>

#include <vum-qib-osl/log/channel_debug.h>
#include <vum-qib-osl/log/channel_file.h>
#include <vum-qib-osl/log/channel_snmp.h>
#include <vum-qib-osl/log/channel_syslog.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/versions.h>

#include <cctype>
#include <climits>
#include <iostream>

CLog* CLog::instance_ = nullptr;

CLog* CLog::Instance() {
    if (instance_ == nullptr) {
        instance_ = new CLog;
        instance_->InitOptimisationVariable();
    }
    return instance_;
}

CLog::CLog() {
    SetProcessName("");
    Init();
}

CLog::CLog(const std::string& iniFile, const std::string& processName) : CLog() { Load(iniFile, processName); }

CLog::~CLog() {
    DeleteChannels();
    if (instance_ == this) {
        instance_ = nullptr;
        osl::detail::logGate.store(INT_MAX, std::memory_order_relaxed);
    }
}

void CLog::Init() {
    functionChannel_ = nullptr;
    fileChannel_ = nullptr;
    lowestSeverity_ = static_cast<LogSeverity>(6);
    anyCategory_ = false;
    if (this == instance_) osl::detail::logGate.store(lowestSeverity_, std::memory_order_relaxed);
}

void CLog::SetProcessName(const std::string& name) {
    processName_ = name;
    paddedProcessName_ = (name + std::string(10, ' ')).substr(0, 10);
}

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
    if (sameIgnoringCase(type, "text-file")) return new CChannelCommonFile(ini, name);
    if (sameIgnoringCase(type, "system")) return new CChannelSyslog(ini, name);
    if (sameIgnoringCase(type, "private-file")) return new CChannelPrivateFile(ini, name);
    if (sameIgnoringCase(type, "debug")) return new CChannelDebug(ini, name);
    if (sameIgnoringCase(type, "snmp")) return new CChannelSnmp(ini, name);
    return nullptr;
}

}  // namespace

bool CLog::Load(const std::string& iniFile, const std::string& processName) {
    iniFile_ = iniFile;
    if (!LoadTheIni(ini_)) {
        DeleteChannels();
        Init();
        return false;
    }
    return Load(processName);
}

bool CLog::Load(Ini& ini, const std::string& processName) {
    ini_ = ini;
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
    group_ = ini_.isGroupExist(processName) ? processName : std::string("logging");
    if (!ini_.GetString(group_, "screen-level", "", nullptr).empty()) {
        SetFunctionChannel(Log2clog, SevNone, std::string(), true);
    }
    bool found = false;
    const std::string list = ini_.GetString(group_, "channels", "ValNone", &found);
    if (!found) {
        InitOptimisationVariable();
        return true;
    }
    for (const std::string& name : channelNames(list)) {
        if (CChannel* channel = makeChannel(ini_, name)) channels_.push_back(channel);
    }
    InitOptimisationVariable();
    return true;
}

void CLog::SetFunctionChannel(void (*fn)(const char*), LogSeverity sev, std::string category, bool fromIni) {
    if (fromIni && !group_.empty()) {
        sev = StringToSev(ini_.GetString(group_, "screen-level", "", nullptr));
        category = ini_.GetString(group_, "screen-category", "", nullptr);
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
    if (fromIni && !group_.empty()) {
        bool found = false;
        std::string level = ini_.GetString(group_, "file-level", "", &found);
        if (found) sev = StringToSev(level);
        std::string fileCategory = ini_.GetString(group_, "file-category", "", &found);
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

void CLog::PrintVersions(QibVr_Versions& versions, const std::string& app) {
    CLogMsg system(nullptr, nullptr, SevSystem);
    system << "\nApplication's version:\n" << versions.ToStringMe(app) << flush;
    CLogMsg info("PrintVersions", nullptr, SevInfo);
    info << "\nDLL's versions:\n" << versions.ToString(app) << flush;
}

void CLog::AddChannel(CChannel* channel) {
    channels_.push_back(channel);
    InitOptimisationVariable();
}

void CLog::DeleteChannels() {
    for (CChannel* channel : channels_) delete channel;
    channels_.clear();
    functionChannel_ = nullptr;
    fileChannel_ = nullptr;
}

void CLog::InitOptimisationVariable() {
    LogSeverity lowest = SevNone;
    categories_.clear();
    allCategories_ = false;
    for (const CChannel* channel : channels_) {
        if (channel->GetSeverity() < lowest) lowest = channel->GetSeverity();
        const std::string& category = channel->GetCategory();
        if (category.empty()) continue;
        if (category[0] == '*') {
            allCategories_ = true;
            continue;
        }
        std::size_t start = 0;
        while (true) {
            std::size_t sep = category.find(", ", start);
            categories_.push_back(category.substr(start, sep - start));
            if (sep == std::string::npos) break;
            start = sep + 2;
        }
    }
    lowestSeverity_ = lowest;
    anyCategory_ = !categories_.empty() || allCategories_;
    if (this == instance_) osl::detail::logGate.store(lowestSeverity_, std::memory_order_relaxed);
}

bool CLog::HasCategory(const std::string& category) const {
    if (allCategories_) return true;
    if (!anyCategory_) return false;
    for (const std::string& name : categories_) {
        if (name == category) return true;
    }
    return false;
}

bool CLog::IsEnable(const CLogMsg& msg) const {
    if (msg.GetSevirity() < lowestSeverity_) return false;
    if (msg.GetCategory().empty()) return true;
    return HasCategory(msg.GetCategory());
}

void CLog::Log(CLogMsg& msg) {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    for (CChannel* channel : channels_) {
        try {
            channel->Write(msg);
        } catch (...) {  // a failing channel loses its line; the others still write theirs
        }
    }
}

void CLog::Log2clog(const char* text) { std::clog << (text ? text : "") << std::endl; }
