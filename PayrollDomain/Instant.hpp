#pragma once

#include <chrono>

namespace tessel {

// A moment in time, in whole seconds of the one UTC calendar the program uses.
using Instant = std::chrono::sys_seconds;
// A calendar date of that calendar.
using CalendarDate = std::chrono::year_month_day;

}  // namespace tessel
