#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "PayrollDomain/Instant.hpp"

// Instants and dates as ISO 8601 text, in the one UTC calendar the program uses.
namespace tessel::calendar_text {

// "2026-11-02T07:00:00Z"; a UTC offset ("+02:00") is accepted and folded into UTC, fractional seconds
// are truncated, since every instant of the program is a whole second.
std::optional<Instant> parseInstant(std::string_view text);
std::string formatInstant(Instant instant);

// "2026-11-02", a valid Gregorian date.
std::optional<CalendarDate> parseDate(std::string_view text);
std::string formatDate(CalendarDate date);
// "2026-11-02 to 2026-11-08"; a period without an end is "2026-11-02 to open".
std::string formatPeriod(CalendarDate from, std::optional<CalendarDate> through);

}  // namespace tessel::calendar_text
