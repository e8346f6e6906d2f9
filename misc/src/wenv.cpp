// misc/src/wenv.cpp
// WEnv over the byte environment. Both families reach the same variables: Linux keeps the
// environment as bytes, so UTF-8 text needs no conversion on its way in or out.
#include <vum-qib-osl/misc/wenv.h>

#include <vum-qib-osl/strings/unicode_configuration.h>

#include "platform/environment.h"

namespace {

using EnvList = std::vector<std::pair<std::string, std::string>>;

WEnv::EnvStatus getEnv(const std::string& name, std::string& value) {
    value.clear();
    std::optional<std::string> found = osl::platform::getEnv(name);
    if (!found) return WEnv::EnvNotSet;
    if (found->empty()) return WEnv::EnvEmpty;
    value = std::move(*found);
    return WEnv::EnvSet;
}

// The text "name=value" is what the entry stands for: its name ends at the first "=", and an
// empty value removes the variable.
int putEnv(const std::string& name, const std::string& value) {
    const std::string entry = name + "=" + value;
    const std::size_t equals = entry.find('=');
    const std::string entryName = entry.substr(0, equals);
    const std::string entryValue = entry.substr(equals + 1);
    const std::error_code ec = entryValue.empty() ? osl::platform::unsetEnv(entryName)
                                                  : osl::platform::setEnv(entryName, entryValue);
    return ec ? -1 : 0;
}

void getEnvList(EnvList& list) {
    for (const std::string& entry : osl::platform::environmentEntries()) {
        const std::size_t equals = entry.find('=');
        if (equals == std::string::npos) {
            list.emplace_back(entry, std::string());
        } else {
            list.emplace_back(entry.substr(0, equals), entry.substr(equals + 1));
        }
    }
}

bool unicodeMode() { return Osl_UnicodeConfiguration::IsUnicodeMode(); }

}  // namespace

WEnv::EnvStatus WEnv::WGetEnv(const std::string& name, std::string& value) {
    return unicodeMode() ? WGetEnvU(name, value) : WGetEnvL(name, value);
}
WEnv::EnvStatus WEnv::WGetEnvL(const std::string& name, std::string& value) {
    return getEnv(name, value);
}
WEnv::EnvStatus WEnv::WGetEnvU(const std::string& name, std::string& value) {
    return getEnv(name, value);
}

int WEnv::WPutEnv(const std::string& name, const std::string& value) {
    return unicodeMode() ? WPutEnvU(name, value) : WPutEnvL(name, value);
}
int WEnv::WPutEnvL(const std::string& name, const std::string& value) { return putEnv(name, value); }
int WEnv::WPutEnvU(const std::string& name, const std::string& value) { return putEnv(name, value); }

void WEnv::WClearEnv(const std::string& name) { WPutEnv(name, std::string()); }
void WEnv::WClearEnvL(const std::string& name) { WPutEnvL(name, std::string()); }
void WEnv::WClearEnvU(const std::string& name) { WPutEnvU(name, std::string()); }

void WEnv::WGetEnvList(EnvList& list) { unicodeMode() ? WGetEnvListU(list) : WGetEnvListL(list); }
void WEnv::WGetEnvListL(EnvList& list) { getEnvList(list); }
void WEnv::WGetEnvListU(EnvList& list) { getEnvList(list); }
