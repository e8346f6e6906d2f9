// strings/patterns/src/date_format.cpp
// The date directives of AutoEdit. Written by hand rather than with strftime: %s means the
// two-digit year here, not seconds since the epoch.
#include "strings/patterns/src/date_format.h"

#include <cstdio>

#include "platform/clock.h"

namespace osl::detail {
namespace {

void appendNumber(std::string& out, int value, int digits) {
    char buffer[16];
    const int n = std::snprintf(buffer, sizeof buffer, "%0*d", digits, value);
    if (n > 0) out.append(buffer, static_cast<std::size_t>(n));
}

}  // namespace

std::string formatDate(const std::string& format, int year, int month, int day) {
    std::string out;
    out.reserve(format.size() + 8);
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%' || i + 1 == format.size()) {
            out += format[i];
            continue;
        }
        const char directive = format[++i];
        switch (directive) {
            case 's':
            case 'y': appendNumber(out, ((year % 100) + 100) % 100, 2); break;
            case 'Y': appendNumber(out, year, 4); break;
            case 'm': appendNumber(out, month, 2); break;
            case 'd': appendNumber(out, day, 2); break;
            case '%': out += '%'; break;
            default:
                out += '%';
                out += directive;
        }
    }
    return out;
}

std::string formatToday(const std::string& format) {
    const osl::platform::LocalTime now = osl::platform::localNow();
    return formatDate(format, now.year, now.month, now.day);
}

}  // namespace osl::detail
