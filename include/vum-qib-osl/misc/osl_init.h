// Library start-up and the end of the process's HTTP session.
#pragma once

#include <vum-qib-osl/osl_api.h>

/// Brings up the platform services the library uses, once per process; later calls do nothing.
/// Call it before anything else, before other threads start. The services stay up until the
/// process ends; nothing is shut down at exit.
OSL_API void InitOSL();

/// Ends the process's HTTP session: shared connections and cookies are dropped, so the next
/// request starts afresh. Harmless when no HTTP request was ever made.
OSL_API void EndSession();
