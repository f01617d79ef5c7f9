#pragma once

#include "App/dts/PayrollDecimalTime.hpp"

// The payroll week the review tests record their time sheets in, and times typed as payroll tenths.
namespace tessel::review_week {

using namespace std::chrono;

inline const CalendarDate monday = 2026y / November / 2;
inline CalendarDate dayOf(int offset) { return CalendarDate(sys_days(monday) + days(offset)); }
inline Instant at(CalendarDate date, const char* tenths) { return *payroll_decimal_time::parseTimeOfDay(tenths, date); }

}  // namespace tessel::review_week
