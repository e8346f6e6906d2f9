// The process-wide logger: its channels, their summaries and the serialised output.
#pragma once

#include <vum-qib-osl/log/channel.h>
#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/osl_api.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

class Ini;
class QibVr_Versions;

/// The logger. Messages reach it through CLogMsg; it filters them by the lowest level and the
/// categories of all its channels, then hands each to every channel under one process-wide lock,
/// so lines from different threads never interleave. The lock is taken before a fork and
/// released after it, so a child may log at once even when another thread was logging. Until it
/// is configured it has no channels and every message is dropped. Configure it during start-up:
/// configuration is not serialised against logging.

class OSL_API CLog {
public:
    /// The singleton, created on first call. The first call must come before other threads log.
    static CLog* Instance();

    /// No channels: every message is dropped until a configuration is loaded.
    CLog();
    /// CLog(), then Load(iniFile, processName).
    CLog(const std::string& iniFile, const std::string& processName);
    virtual ~CLog();
    CLog(const CLog&) = delete;
    CLog& operator=(const CLog&) = delete;

    /// No function or file channel, lowest severity 6, no categories.
    void Init();

    /// Loads the INI file and builds the channels from it (see Load(Ini&, ...)). When the file
    /// cannot be read, writes "<file>:<reason>" on standard error, keeps no channels and returns
    /// false. Mistakes in the channels' keys are said once each on standard error: an unknown
    /// level name (the channel then takes nothing), a number with trailing text, one too large or
    /// negative, an empty "path" (that channel is not made).
    bool Load(const std::string& iniFile, const std::string& processName);
    /// Copies the INI and builds the channels from it, replacing any earlier ones. The logger's
    /// group is the group named like the process when there is one, else "logging". Its keys:
    /// "channels" (names separated by blanks and/or commas, each the group of one channel, whose
    /// "type" is "text-file", "private-file", "system", "debug" or "snmp", in any case; other
    /// types are skipped), "screen-level" and "screen-category" (a channel to the screen, through
    /// Log2clog), "file-level" and "file-category" (for SetFileChannel with fromIni). Returns true.
    bool Load(Ini& ini, const std::string& processName);

    /// The padded name is the name followed by ten blanks, cut to ten characters.
    void SetProcessName(const std::string& name);
    /// Always exactly ten characters.
    const std::string& GetProcessName() const { return paddedProcessName_; }

    /// Creates the function channel on first call (appended to the channels), then sets its
    /// function, level and category. With fromIni and a configured logger group, the level and
    /// category come from its "screen-level" and "screen-category" keys.
    void SetFunctionChannel(void (*fn)(const char*), LogSeverity sev, std::string category, bool fromIni);
    void SetFunctionChannel(void (*fn)(const char*), LogSeverity sev, bool fromIni);
    CChannel* GetFunctionChannel() { return functionChannel_; }

    /// Creates the file channel (a common file channel without limits) on first call, appended to
    /// the channels; then sets its file, level and category. With fromIni and a configured logger
    /// group, "file-level" and "file-category" replace the level and category when present.
    void SetFileChannel(std::string& fileName, LogSeverity sev, std::string category, bool fromIni);
    void SetFileChannel(std::string& fileName, LogSeverity sev, bool fromIni);

    /// A process-wide switch for callers; the library never reads it.
    void SetLoggingGate(bool gate) { loggingGate_ = gate; }
    bool GetLoggingGate() { return loggingGate_; }

    /// Whether some channel's level is at most sev.
    bool HasSeverity(LogSeverity sev) const { return sev >= lowestSeverity_; }
    /// Whether some channel takes this (non-empty) category.
    bool HasCategory(const std::string& category) const;
    /// The logger-level pre-filter; each channel applies its own test afterwards.
    bool IsEnable(const CLogMsg& msg) const;

    /// Hands the message to every channel in order, under the logger's lock. A channel's failure
    /// is dropped and the next channel still runs.
    void Log(CLogMsg& msg);

    /// Writes the text and a line end to std::clog: the screen channel's function.
    static void Log2clog(const char* text);

    /// Logs "\nApplication's version:\n" and versions.ToStringMe(app) at severity system, then
    /// "\nDLL's versions:\n" and versions.ToString(app) at info, with at "PrintVersions".
    static void PrintVersions(QibVr_Versions& versions, const std::string& app);

    /// Adds a channel (the logger owns it from now on) and recomputes the summaries.
    void AddChannel(CChannel* channel);
    /// Deletes every channel.
    void DeleteChannels();
    /// Recomputes the lowest severity and the categories from the channels.
    void InitOptimisationVariable();

private:
    friend class CLogMsg;
    static CLog* instance_;

    bool Load(const std::string& processName);
    bool LoadTheIni(Ini& ini);

    std::list<CChannel*> channels_;
    CChannel* functionChannel_ = nullptr;
    CChannel* fileChannel_ = nullptr;
    std::string iniFile_;
    std::string paddedProcessName_;
    std::string processName_;
    std::string group_;
    bool loggingGate_ = false;
    std::shared_ptr<Ini> ini_;  // the configuration loaded last; null before the first Load
    LogSeverity lowestSeverity_ = static_cast<LogSeverity>(6);
    std::vector<std::string> categories_;
    bool anyCategory_ = false;
    bool allCategories_ = false;
};
