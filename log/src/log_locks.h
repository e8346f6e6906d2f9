// log/src/log_locks.h
// The two process-wide mutexes of logging: the output lock that serialises every line, and the
// rotation lock of the file channels (taken inside the first). Both are taken before a fork and
// released after it in parent and child, so a child never inherits one that another thread held.
#pragma once

#include <mutex>

namespace osl::detail {

/// Re-entrant: a function channel may log.
std::recursive_mutex& outputMutex();
std::mutex& rotationMutex();

}  // namespace osl::detail
