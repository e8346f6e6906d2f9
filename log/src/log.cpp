// log/src/log.cpp
// The logger singleton: channels, summaries and serialised output.
#include <vum-qib-osl/log/log.h>

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

void CLog::SetFunctionChannel(void (*fn)(const char*), LogSeverity sev, std::string category, bool fromIni) {
    (void)fromIni;  // the level and category come from the INI once the logger is configured from one
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
