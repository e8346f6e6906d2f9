// log/src/channel_file.cpp
// The common and private file channels: settings and filtering; log_file.cpp does the writing.
#include <vum-qib-osl/log/channel_file.h>

#include <vum-qib-osl/ini/ini.h>

#include <cstdio>
#include <filesystem>

#include "log/src/log_file.h"
#include "platform/process.h"

CChannelCommonFile::CChannelCommonFile() : path_("run.log") {}

CChannelCommonFile::CChannelCommonFile(const std::string& fileName, LogSeverity level, std::string category)
    : CChannel(level, std::move(category)), path_(fileName) {}

CChannelCommonFile::CChannelCommonFile(Ini& ini, const std::string& group) : path_("run.log") {
    CChannelCommonFile::Configure(ini, group);
}

CChannelCommonFile::~CChannelCommonFile() = default;

namespace {

std::uint32_t number(Ini& ini, const std::string& group, const char* key) {
    const std::string text = ini.GetString(group, key, "", nullptr);
    unsigned long value = 0;
    if (text.empty() || std::sscanf(text.c_str(), "%lu", &value) != 1) return 0;
    return static_cast<std::uint32_t>(value);
}

}  // namespace

void CChannelCommonFile::Configure(Ini& ini, const std::string& group) {
    path_ = ini.GetString(group, "path", "run.log", nullptr);
    CChannel::Configure(ini, group);
    period_ = number(ini, group, "period");
    maxsize_ = number(ini, group, "maxsize");
    purgeCount_ = number(ini, group, "purgecount");
    purgeAge_ = number(ini, group, "purgeage");
    Reset();
}

void CChannelCommonFile::SetPath(const std::string& path) {
    path_ = path;
    Reset();
}

void CChannelCommonFile::Reset() { file_.reset(); }

void CChannelCommonFile::SetPeriod(std::uint32_t days) {
    period_ = days;
    Reset();
}

void CChannelCommonFile::SetMaxSize(std::uint32_t bytes) {
    maxsize_ = bytes;
    Reset();
}

void CChannelCommonFile::SetPurgeCount(std::uint32_t count) {
    purgeCount_ = count;
    Reset();
}

void CChannelCommonFile::SetPurgeAge(std::uint32_t days) {
    purgeAge_ = days;
    Reset();
}

void CChannelCommonFile::Write(CLogMsg& msg) {
    if (!IsHiger(msg)) return;
    if (!file_) {
        osl::detail::LogFileSettings settings;
        settings.path = FileName();
        settings.period = period_;
        settings.maxsize = maxsize_;
        settings.purgeCount = purgeCount_;
        settings.purgeAge = purgeAge_;
        settings.shared = Shared();
        file_ = std::make_unique<osl::detail::LogFile>(std::move(settings));
    }
    file_->writeLine(msg.c_str(), msg.size());
}

CChannelPrivateFile::CChannelPrivateFile() = default;

CChannelPrivateFile::CChannelPrivateFile(const std::string& fileName, LogSeverity level, std::string category)
    : CChannelCommonFile(fileName, level, std::move(category)) {}

CChannelPrivateFile::CChannelPrivateFile(Ini& ini, const std::string& group) : CChannelCommonFile(ini, group) {}

CChannelPrivateFile::~CChannelPrivateFile() = default;

std::string CChannelPrivateFile::FileName() const {
    const std::filesystem::path p(path_);
    const std::string name =
        p.stem().string() + "_" + std::to_string(osl::platform::currentProcessId()) + p.extension().string();
    return (p.parent_path() / name).string();
}
