// platform/startup.h
// The process-wide services that start-up brings up, in order, and their shutdown at exit.
#pragma once

#include <functional>

namespace osl::platform {

/// Brings up every platform service once per process; later calls do nothing. The services are
/// shut down in reverse order when the process exits.
void startServices();

/// How many times the services were brought up in this process (0 or 1).
int servicesStarted();

/// Registers a function that drops the process's HTTP session state; EndSession calls them all.
void addSessionEnder(std::function<void()> ender);
void endSessions();

}  // namespace osl::platform
