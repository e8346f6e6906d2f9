// platform/posix/fork_handlers_posix.cpp
// pthread_atfork behind a portable name.
#include "platform/fork_handlers.h"

#include <pthread.h>

namespace osl::platform {

void registerForkHandlers(void (*prepare)(), void (*parent)(), void (*child)()) {
    ::pthread_atfork(prepare, parent, child);
}

}  // namespace osl::platform
