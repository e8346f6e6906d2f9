// platform/posix/startup_posix.cpp
// Start-up of the process-wide services. Each is brought up by the constructor of a function-local
// static; none needs a shutdown, so their destructors do nothing.
#include "platform/startup.h"

#include "platform/curl_http.h"
#include "platform/icu_text.h"

#include <ctime>

namespace osl::platform {
namespace {

// Local time is read with localtime_r, which does not look at TZ by itself.
struct TimeService {
    TimeService() { tzset(); }
};

// ICU loads its data once; a locale directory set later by the Unicode configuration is handed
// over then. ICU's own clean-up is left to the process exit: other libraries may still use it.
struct TextService {
    TextService() { (void)icuStart(std::string()); }
};

// libcurl's global set-up is not thread-safe, so it happens here; its clean-up is left to the
// process exit, as other libraries of the process may use libcurl too.
struct HttpService {
    HttpService() { httpStart(); }
};

}  // namespace

void startServices() {
    static const bool started = [] {
        static TimeService time;
        static TextService text;
        static HttpService http;
        return true;
    }();
    (void)started;
}

void endSessions() { endHttpSession(); }

}  // namespace osl::platform
