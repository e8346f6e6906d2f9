// platform/startup.h
// The process-wide services that start-up brings up, in order. They are never shut down: they live
// until the process ends, as other libraries of the process may still use them.
#pragma once

#include <functional>

namespace osl::platform {

/// Brings up every platform service once per process; later calls do nothing. The services stay
/// up until the process ends.
void startServices();

/// How many times the services were brought up in this process (0 or 1).
int servicesStarted();

/// Registers a function that drops the process's HTTP session state; EndSession calls them all.
void addSessionEnder(std::function<void()> ender);
void endSessions();

}  // namespace osl::platform
