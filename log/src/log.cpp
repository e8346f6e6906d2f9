// log/src/log.cpp
// The logger singleton: channels, summaries and serialised output. Reading the configuration from
// an INI file is log/config/log_config.cpp's: this core needs nothing above misc/ and platform/.
#include <vum-qib-osl/log/log.h>

#include <vum-qib-osl/misc/versions.h>

#include <climits>
#include <iostream>
#include <new>

#include "log/src/log_locks.h"
#include "platform/fork_handlers.h"

namespace osl::detail {
namespace {

struct Locks {
    std::recursive_mutex output;  // guards the channels' output
    std::mutex rotation;          // guards the rotation of file channels
};

Locks* forkLocks = nullptr;

void lockBeforeFork() {
    forkLocks->output.lock();
    forkLocks->rotation.lock();
}

void unlockInParent() {
    forkLocks->rotation.unlock();
    forkLocks->output.unlock();
}

// The child's only thread is not the owner that the mutexes recorded in the parent: they are
// made anew, unlocked, instead of unlocked.
void renewInChild() {
    new (&forkLocks->rotation) std::mutex;
    new (&forkLocks->output) std::recursive_mutex;
}

Locks& locks() {
    static Locks* made = [] {
        forkLocks = new Locks;
        osl::platform::registerForkHandlers(lockBeforeFork, unlockInParent, renewInChild);
        return forkLocks;
    }();
    return *made;
}

}  // namespace

std::recursive_mutex& outputMutex() { return locks().output; }
std::mutex& rotationMutex() { return locks().rotation; }

}  // namespace osl::detail

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
    std::lock_guard<std::recursive_mutex> guard(osl::detail::outputMutex());
    for (CChannel* channel : channels_) {
        try {
            channel->Write(msg);
        } catch (...) {  // a failing channel loses its line; the others still write theirs
        }
    }
}

void CLog::Log2clog(const char* text) { std::clog << (text ? text : "") << std::endl; }
