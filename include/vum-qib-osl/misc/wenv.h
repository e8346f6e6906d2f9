// Environment variables in UTF-8 (Unicode mode) or the legacy encoding, never throwing.
#pragma once

#include <vum-qib-osl/osl_api.h>

#include <string>
#include <utility>
#include <vector>

/// Reading and writing the process environment. The Linux environment holds bytes: the "U" forms
/// take and give UTF-8 text as it is, the "L" forms the bytes of the legacy encoding, so both
/// families see the same variables. The plain forms choose by the current Unicode mode.
/// As thread-safe as the C library's environment: do not change it while other threads read it.
class OSL_API WEnv {
public:
    enum EnvStatus {
        EnvSet = 0,     ///< the variable is set; its value was returned
        EnvNotSet = 1,  ///< the variable is not set
        EnvEmpty = 2,   ///< the variable is set to the empty text
    };

    /// `value` is cleared, then receives the variable's text when it is set and not empty.
    static EnvStatus WGetEnv(const std::string& name, std::string& value);
    static EnvStatus WGetEnvL(const std::string& name, std::string& value);
    static EnvStatus WGetEnvU(const std::string& name, std::string& value);

    /// Puts "name=value" into the environment; an empty value removes the variable. As with the
    /// entry text it stands for, the name ends at the first "=" and the rest belongs to the value
    /// (WPutEnv("A=B", "c") sets A to "B=c"). Returns 0 on success, -1 when the entry is refused
    /// (empty name, or a NUL in name or value).
    static int WPutEnv(const std::string& name, const std::string& value);
    static int WPutEnvL(const std::string& name, const std::string& value);
    static int WPutEnvU(const std::string& name, const std::string& value);

    /// Removes the variable (WPutEnv with an empty value).
    static void WClearEnv(const std::string& name);
    static void WClearEnvL(const std::string& name);
    static void WClearEnvU(const std::string& name);

    /// Appends one (name, value) pair per environment entry, in the environment's order, split at
    /// the entry's first "=" (an entry without one gives an empty value). `list` is not cleared.
    static void WGetEnvList(std::vector<std::pair<std::string, std::string>>& list);
    static void WGetEnvListL(std::vector<std::pair<std::string, std::string>>& list);
    static void WGetEnvListU(std::vector<std::pair<std::string, std::string>>& list);
};
