// platform/process.h
// Identity of the calling process and thread.
#pragma once

namespace osl::platform {

int currentProcessId();
/// The operating system's id of the calling thread (as shown by ps -L).
long currentThreadId();

}  // namespace osl::platform
