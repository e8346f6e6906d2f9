// tests/support/scoped_unicode_mode.h
// Sets the Unicode mode and the current encoding for one scope, and restores them afterwards.
#pragma once

#include <vum-qib-osl/strings/unicode_configuration.h>

#include <string>

namespace osl::test {

class ScopedUnicodeMode {
public:
    explicit ScopedUnicodeMode(bool unicode, const std::string& encoding = "MS1252",
                               const std::string& fileSystemEncoding = "UTF-8")
        : unicode_(Osl_UnicodeConfiguration::IsUnicodeMode()),
          encoding_(Osl_UnicodeConfiguration::GetCurrentEncoding()),
          fileSystem_(Osl_UnicodeConfiguration::GetOSFileSystemNativeEncoding()) {
        Osl_UnicodeConfiguration::SetUnicodeMode(unicode);
        Osl_UnicodeConfiguration::SetCurrentEncoding(encoding);
        Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(fileSystemEncoding);
    }
    ~ScopedUnicodeMode() {
        Osl_UnicodeConfiguration::SetUnicodeMode(unicode_);
        Osl_UnicodeConfiguration::SetCurrentEncoding(encoding_);
        Osl_UnicodeConfiguration::SetOSFileSystemNativeEncoding(fileSystem_);
    }
    ScopedUnicodeMode(const ScopedUnicodeMode&) = delete;
    ScopedUnicodeMode& operator=(const ScopedUnicodeMode&) = delete;

private:
    bool unicode_;
    std::string encoding_;
    std::string fileSystem_;
};

}  // namespace osl::test
