// The process-wide registry of component versions, and the parser of version texts.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <map>
#include <string>
#include <vector>

/// Every component of the product registers its name and version text here. Not guarded by a
/// lock: register while libraries load or before other threads start.
class OSL_API QibVr_Versions {
public:
    using Map = std::map<std::string, std::string>;

    /// The singleton, created on first call (without a lock).
    static QibVr_Versions& Instance();

    /// Registers (or replaces) the version text of a component.
    void Register(const std::string& name, const std::string& version);
    /// The version text of app first, then every other component's once in name order; each line
    /// ends in CR LF. An empty app lists every component; an unknown one gives an empty first line.
    std::string ToString(const std::string& app);
    /// The version text of app and CR LF; an unknown app gives "\r\n" and an empty entry for it.
    std::string ToStringMe(const std::string& app);
    /// A copy of every entry.
    operator Map() const;

    QibVr_Versions(const QibVr_Versions&) = delete;
    QibVr_Versions& operator=(const QibVr_Versions&) = delete;

private:
    QibVr_Versions() = default;
    ~QibVr_Versions() = default;

    Map registered_;
    Map all_;
};

/// Registers one (name, version) pair on construction; a library defines one as a static object.
class OSL_API QibVr_AutoRegister {
public:
    QibVr_AutoRegister(const std::string& name, const std::string& version);
};

/// The numbers of a version text: major, minor, revision, build, and the text after the fourth.
class OSL_API QibVr_VersionSpecHelper {
public:
    /// Runs of decimal digits are the numbers; any other character separates them. After four
    /// numbers the rest, separator included, is the extra text.
    static QibVr_VersionSpecHelper parseVersion(const std::string& text);

    bool hasMajor() const { return numbers_.size() >= 1; }
    bool hasMinor() const { return numbers_.size() >= 2; }
    bool hasRevision() const { return numbers_.size() >= 3; }
    bool hasBuild() const { return numbers_.size() >= 4; }
    /// The number, or -1 when the text has none in that place.
    int getMajor() const { return get(0); }
    int getMinor() const { return get(1); }
    int getRevision() const { return get(2); }
    int getBuild() const { return get(3); }
    bool hasExtra() const { return !extra_.empty(); }
    const std::string& getExtra() const { return extra_; }

private:
    int get(std::size_t i) const { return i < numbers_.size() ? numbers_[i] : -1; }

    std::vector<int> numbers_;
    std::string extra_;
};

/// Each registers its component's name and version text in the given registry.
OSL_API void GetVersionsList_OSL(QibVr_Versions& versions);
OSL_API void GetVersionsList_misc(QibVr_Versions& versions);
OSL_API void GetVersionsList_strings(QibVr_Versions& versions);
OSL_API void GetVersionsList_ini(QibVr_Versions& versions);
OSL_API void GetVersionsList_message(QibVr_Versions& versions);
OSL_API void GetVersionsList_statistics(QibVr_Versions& versions);
OSL_API void GetVersionsList_log(QibVr_Versions& versions);
OSL_API void GetVersionsList_sync(QibVr_Versions& versions);
OSL_API void GetVersionsList_http_file(QibVr_Versions& versions);

/// The old interface: writes "used old GetVersions interface!!!" to standard error, changes nothing.
OSL_API void GetVersionsList_OSL(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_misc(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_strings(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_ini(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_message(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_statistics(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_log(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_sync(std::map<std::string, std::string>& versions);
OSL_API void GetVersionsList_http_file(std::map<std::string, std::string>& versions);
