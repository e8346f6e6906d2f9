// misc/src/versions.cpp
// The registry of component versions and the version-text parser.
#include <vum-qib-osl/misc/versions.h>

#include <iostream>

#include "osl_version.h"

QibVr_Versions& QibVr_Versions::Instance() {
    static QibVr_Versions* instance = new QibVr_Versions;
    return *instance;
}

void QibVr_Versions::Register(const std::string& name, const std::string& version) {
    all_[name] = version;
    registered_[name] = version;
}

std::string QibVr_Versions::ToString(const std::string& app) {
    all_.insert(registered_.begin(), registered_.end());  // existing entries keep their value
    std::string text;
    if (!app.empty()) text += all_[app] + "\r\n";
    for (const auto& [name, version] : all_) {
        if (name != app) text += version + "\r\n";
    }
    return text;
}

std::string QibVr_Versions::ToStringMe(const std::string& app) { return all_[app] + "\r\n"; }

QibVr_Versions::operator Map() const { return all_; }

QibVr_AutoRegister::QibVr_AutoRegister(const std::string& name, const std::string& version) {
    QibVr_Versions::Instance().Register(name, version);
}

QibVr_VersionSpecHelper QibVr_VersionSpecHelper::parseVersion(const std::string& text) {
    QibVr_VersionSpecHelper parsed;
    parsed.numbers_.reserve(4);
    std::size_t i = 0;
    while (i < text.size()) {
        if (parsed.numbers_.size() == 4) {
            parsed.extra_ = text.substr(i);
            break;
        }
        std::size_t end = i;
        while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
        if (end == i) {
            ++i;  // any other character only separates
            continue;
        }
        long long value = 0;
        for (std::size_t k = i; k < end; ++k) {
            value = value * 10 + (text[k] - '0');
            if (value > 0x7fffffff) value = 0x7fffffff;  // an absurd run saturates, never overflows
        }
        parsed.numbers_.push_back(static_cast<int>(value));
        i = end;
    }
    return parsed;
}

namespace {

void registerComponent(QibVr_Versions& versions, const char* component) {
    versions.Register(component, std::string("vum-qib-osl ") + component + " " OSL_VERSION_STRING);
}

void refuseOldInterface() { std::cerr << "used old GetVersions interface!!!" << std::endl; }

}  // namespace

#define OSL_VERSION_FUNCTIONS(component)                                                         \
    void GetVersionsList_##component(QibVr_Versions& versions) { registerComponent(versions, #component); } \
    void GetVersionsList_##component(std::map<std::string, std::string>&) { refuseOldInterface(); }

OSL_VERSION_FUNCTIONS(OSL)
OSL_VERSION_FUNCTIONS(misc)
OSL_VERSION_FUNCTIONS(strings)
OSL_VERSION_FUNCTIONS(ini)
OSL_VERSION_FUNCTIONS(message)
OSL_VERSION_FUNCTIONS(statistics)
OSL_VERSION_FUNCTIONS(log)
OSL_VERSION_FUNCTIONS(sync)
OSL_VERSION_FUNCTIONS(http_file)

#undef OSL_VERSION_FUNCTIONS

namespace {

// The library registers its components when it is loaded, as every library of the product does.
[[gnu::constructor]] void registerOwnVersions() {
    QibVr_Versions& versions = QibVr_Versions::Instance();
    GetVersionsList_OSL(versions);
    GetVersionsList_misc(versions);
    GetVersionsList_strings(versions);
    GetVersionsList_ini(versions);
    GetVersionsList_message(versions);
    GetVersionsList_statistics(versions);
    GetVersionsList_log(versions);
    GetVersionsList_sync(versions);
    GetVersionsList_http_file(versions);
}

}  // namespace
