// platform/startup.h
// The process-wide services that start-up brings up, in order. They are never shut down: they live
// until the process ends, as other libraries of the process may still use them.
#pragma once

namespace osl::platform {

/// Brings up every platform service once per process; later calls do nothing. The services stay
/// up until the process ends.
void startServices();

/// Drops the process's kept HTTP connections (EndSession).
void endSessions();

}  // namespace osl::platform
