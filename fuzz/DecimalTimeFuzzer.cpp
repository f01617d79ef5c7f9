// Payroll decimal times and durations as a user types them: each is read or refused with its own error,
// and a time that is read shows again as the same instant.
#include <cstdlib>
#include <string_view>

#include "App/dts/PayrollDecimalTime.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const CalendarDate anchor{std::chrono::year(2026), std::chrono::November, std::chrono::day(2)};
    if (const auto instant = payroll_decimal_time::parseTimeOfDay(text, anchor)) {
        const std::string shown = payroll_decimal_time::formatTimeOfDay(instant, anchor);
        if (payroll_decimal_time::parseTimeOfDay(shown, anchor) != instant) std::abort();
        (void)payroll_decimal_time::formatClockTime(instant, anchor);
    }
    try {
        const std::int64_t seconds = PayrollDecimalDurationParser::parse(text);
        if (seconds < 0) std::abort();
        (void)payroll_decimal_time::formatDuration(seconds);
    } catch (const PayrollDecimalDurationParser::ParseError&) {
    }
    return 0;
}
