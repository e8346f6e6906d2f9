// strings/src/unicode_configuration.cpp
// The mode switch and the encoding names. The mode is one atomic flag: every string operation
// asks for it.
#include <vum-qib-osl/strings/unicode_configuration.h>

#include <atomic>
#include <mutex>

namespace {
std::atomic<bool> unicodeMode{false};

struct Names {
    std::mutex lock;  // guards current and fileSystem
    std::string current;
    std::string fileSystem;
};
Names& names() {
    static Names* n = new Names;
    return *n;
}
}  // namespace

struct Osl_UnicodeConfiguration::Impl {};

Osl_UnicodeConfiguration::Osl_UnicodeConfiguration() : impl_(new Impl) {}
Osl_UnicodeConfiguration::~Osl_UnicodeConfiguration() { delete impl_; }

Osl_UnicodeConfiguration* Osl_UnicodeConfiguration::Instance() {
    static Osl_UnicodeConfiguration* instance = new Osl_UnicodeConfiguration;
    return instance;
}

bool Osl_UnicodeConfiguration::IsUnicodeMode() { return unicodeMode.load(std::memory_order_relaxed); }
void Osl_UnicodeConfiguration::SetUnicodeMode(bool unicode) { unicodeMode.store(unicode, std::memory_order_relaxed); }

std::string Osl_UnicodeConfiguration::GetCurrentEncoding() {
    std::lock_guard<std::mutex> guard(names().lock);
    return names().current;
}
void Osl_UnicodeConfiguration::SetCurrentEncoding(const std::string& name) {
    std::lock_guard<std::mutex> guard(names().lock);
    names().current = name;
}
std::string Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding() {
    std::lock_guard<std::mutex> guard(names().lock);
    return names().fileSystem;
}
void Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(const std::string& name) {
    std::lock_guard<std::mutex> guard(names().lock);
    names().fileSystem = name;
}
