// misc/src/osl_init.cpp
// Library start-up and the end of the HTTP session.
#include <vum-qib-osl/misc/osl_init.h>

#include "platform/startup.h"

void InitOSL() { osl::platform::startServices(); }

void EndSession() { osl::platform::endSessions(); }
