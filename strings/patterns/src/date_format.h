// strings/patterns/src/date_format.h
// The date formatting of AutoEdit's built-in "date" variable.
#pragma once

#include <string>

namespace osl::detail {

/// Formats a calendar date. Directives: %s and %y the year in two digits, %Y in four, %m the
/// month and %d the day in two digits, %% a percent sign. Any other % sequence, and a % at the
/// end, is kept as written.
std::string formatDate(const std::string& format, int year, int month, int day);

/// Today in the local time zone (from platform/clock.h), formatted.
std::string formatToday(const std::string& format);

}  // namespace osl::detail
