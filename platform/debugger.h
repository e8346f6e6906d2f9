// platform/debugger.h
// Whether a debugger (any tracer) is attached to the process.
#pragma once

namespace osl::platform {

/// True while the process is traced (TracerPid in /proc/self/status is not 0).
bool debuggerAttached();

}  // namespace osl::platform
