// A faster clock for trials and demonstrations of the statistics.
#pragma once

#include <vum-qib-osl/osl_api.h>

/// Makes the library's clock (the statistics thread, durations, log times) run from the given
/// local date and time at `factor` times real speed: with 600, the thread's 30-second sleep lasts
/// 50 ms. For trials only, at the start of a program. False, changing nothing, when the time cannot
/// be represented or the factor is not above 0.
OSL_API bool OslStatistics_SimulateClock(int year, int month, int day, int hour, int minute, int second,
                                         double factor);
/// The system clock again.
OSL_API void OslStatistics_SystemClock();
