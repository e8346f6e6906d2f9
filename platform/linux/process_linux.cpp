// platform/linux/process_linux.cpp
// Process and thread ids; the thread id is the kernel's, cached per thread.
#include "platform/process.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace osl::platform {

int currentProcessId() { return static_cast<int>(getpid()); }

long currentThreadId() {
    thread_local long id = static_cast<long>(syscall(SYS_gettid));
    return id;
}

}  // namespace osl::platform
