// Channels: the outputs of the logger, each with its own level and category filter.
#pragma once

#include <vum-qib-osl/log/log_msg.h>
#include <vum-qib-osl/osl_api.h>

#include <string>
#include <vector>

class Ini;

/// One output of the logger. Owned by the logger, which calls Write under its lock.
class OSL_API CChannel {
public:
    CChannel() = default;
    CChannel(LogSeverity level, std::string category) : level_(level) { SetCategory(std::move(category)); }
    virtual ~CChannel();
    CChannel(const CChannel&) = delete;
    CChannel& operator=(const CChannel&) = delete;

    /// Reads the channel's keys from its group of the INI: "level" (a level name, default
    /// "none": nothing passes) and "category" (default empty). Channel types read more keys.
    /// Mistakes are said once on standard error: an unknown level name (the channel then takes
    /// nothing, as documented) among them. Defined with the configuration, above the INI layer.
    virtual void Configure(Ini& ini, const std::string& group);

    /// Writes the message's line when IsHiger(msg) is true. Failures may throw; the logger
    /// swallows them.
    virtual void Write(CLogMsg& msg) = 0;

    LogSeverity GetSeverity() const { return level_; }
    const std::string& GetCategory() const { return category_; }
    void SetSeverity(LogSeverity level) { level_ = level; }
    /// Also splits a list of categories once, so that filtering a message allocates nothing.
    void SetCategory(std::string category);

    /// Whether this channel takes the message: its severity reaches the level, and its category
    /// passes the channel's category filter ("*" takes all; "a, b" takes a and b, with
    /// "NONE" standing for no category; "*, ~a" takes all but a). Exact, case-sensitive.
    bool IsHiger(const CLogMsg& msg) const;

protected:
    std::string category_;  // change it through SetCategory
    LogSeverity level_ = SevNone;

private:
    std::vector<std::string> categoryList_;  // category_ split at ", " when it holds a comma
};

/// Hands each line it takes to a caller's function (CLog::Log2clog for the screen).
class OSL_API CChannelFunc : public CChannel {
public:
    using Function = void (*)(const char*);
    explicit CChannelFunc(Function fn = nullptr, LogSeverity level = SevNone, std::string category = {})
        : CChannel(level, std::move(category)), fn_(fn) {}
    ~CChannelFunc() override;

    void Write(CLogMsg& msg) override;
    void SetFunction(Function fn) { fn_ = fn; }
    Function GetFunction() const { return fn_; }

private:
    Function fn_;
};
