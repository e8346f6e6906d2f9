// log/src/channel_file.cpp
// The common and private file channels: settings and filtering; log_file.cpp does the writing,
// log/config/channel_config.cpp the reading of their keys.
#include <vum-qib-osl/log/channel_file.h>

#include <filesystem>

#include "log/src/log_file.h"
#include "platform/process.h"

CChannelCommonFile::CChannelCommonFile() : path_("run.log") {}

CChannelCommonFile::CChannelCommonFile(const std::string& fileName, LogSeverity level, std::string category)
    : CChannel(level, std::move(category)), path_(fileName) {}

CChannelCommonFile::~CChannelCommonFile() = default;

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
    if (!IsHiger(msg) || path_.empty()) return;
    // A forked child writes a private file of its own, named after its process id.
    if (file_ && !Shared() && file_->owner() != osl::platform::currentProcessId()) file_.reset();
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

CChannelPrivateFile::~CChannelPrivateFile() = default;

std::string CChannelPrivateFile::FileName() const {
    const std::filesystem::path p(path_);
    const std::string name =
        p.stem().string() + "_" + std::to_string(osl::platform::currentProcessId()) + p.extension().string();
    return (p.parent_path() / name).string();
}
