// strings/patterns/tests/mode.h
// Sets the process's text mode for one test and restores it.
#pragma once

#include <vum-qib-osl/strings/unicode_configuration.h>

namespace osl::test {

enum class Mode { Legacy, Unicode };

class ScopedMode {
public:
    explicit ScopedMode(Mode mode) : previous_(Osl_UnicodeConfiguration::IsUnicodeMode()) {
        Osl_UnicodeConfiguration::SetUnicodeMode(mode == Mode::Unicode);
    }
    ~ScopedMode() { Osl_UnicodeConfiguration::SetUnicodeMode(previous_); }
    ScopedMode(const ScopedMode&) = delete;
    ScopedMode& operator=(const ScopedMode&) = delete;

private:
    bool previous_;
};

}  // namespace osl::test
