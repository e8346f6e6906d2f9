// platform/linux/debugger_linux.cpp
// Whether a debugger is attached: TracerPid in /proc/self/status.
#include "platform/debugger.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace osl::platform {

bool debuggerAttached() {
    std::FILE* status = std::fopen("/proc/self/status", "re");
    if (status == nullptr) return false;
    char line[256];
    long tracer = 0;
    while (std::fgets(line, sizeof line, status) != nullptr) {
        if (std::strncmp(line, "TracerPid:", 10) == 0) {
            tracer = std::strtol(line + 10, nullptr, 10);
            break;
        }
    }
    std::fclose(status);
    return tracer != 0;
}

}  // namespace osl::platform
