#include <gtest/gtest.h>

#include "App/dts/PayrollDecimalTime.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using namespace payroll_decimal_time;

const CalendarDate dtsDate = 2026y / November / 2;
Instant at(int dayOffset, int h, int m) { return sys_days(dtsDate) + days(dayOffset) + hours(h) + minutes(m); }

struct TimeCase {
    const char* text;
    std::optional<Instant> expected;
};

class TimeOfDayParsing : public ::testing::TestWithParam<TimeCase> {};

TEST_P(TimeOfDayParsing, ReadsPayrollTenthsOnTheDTSDate) { EXPECT_EQ(parseTimeOfDay(GetParam().text, dtsDate), GetParam().expected); }

INSTANTIATE_TEST_SUITE_P(
    Boundaries, TimeOfDayParsing,
    ::testing::Values(TimeCase{"7", at(0, 7, 0)}, TimeCase{"7.0", at(0, 7, 0)}, TimeCase{" 7.0 ", at(0, 7, 0)},
                      TimeCase{"7.5", at(0, 7, 30)}, TimeCase{"0.0", at(0, 0, 0)}, TimeCase{"23.9", at(0, 23, 54)},
                      TimeCase{"24.0", at(1, 0, 0)}, TimeCase{"25.3", at(1, 1, 18)}, TimeCase{"47.9", at(1, 23, 54)},
                      TimeCase{"48.0", std::nullopt}, TimeCase{"7.25", std::nullopt}, TimeCase{"7.", std::nullopt},
                      TimeCase{".5", std::nullopt}, TimeCase{"-1.0", std::nullopt}, TimeCase{"7:30", std::nullopt},
                      TimeCase{"abc", std::nullopt}, TimeCase{"", std::nullopt}, TimeCase{"1.2.3", std::nullopt},
                      TimeCase{"007.0", at(0, 7, 0)}, TimeCase{"99999999999.0", std::nullopt}));

TEST(TimeOfDayFormatting, ShowsTheNextTenthUpAndCountsOnlyTheNextDay) {
    EXPECT_EQ(formatTimeOfDay(at(0, 13, 1), dtsDate), "13.1");
    EXPECT_EQ(formatTimeOfDay(at(0, 13, 0), dtsDate), "13.0");
    EXPECT_EQ(formatTimeOfDay(at(0, 7, 0), dtsDate), "7.0");
    EXPECT_EQ(formatTimeOfDay(at(1, 1, 18), dtsDate), "25.3");
    EXPECT_EQ(formatTimeOfDay(at(2, 1, 18), dtsDate), "1.3");
    EXPECT_EQ(formatTimeOfDay(std::nullopt, dtsDate), "");
    EXPECT_EQ(formatClockTime(at(1, 1, 18), dtsDate), "01:18 +1 day");
}

struct DurationCase {
    const char* text;
    std::int64_t seconds;
    std::optional<PayrollDecimalDurationParser::ParseError::Case> error;
};

class DurationParsing : public ::testing::TestWithParam<DurationCase> {};

TEST_P(DurationParsing, ReadsDecimalHoursAsWholeSeconds) {
    const auto& c = GetParam();
    try {
        EXPECT_EQ(PayrollDecimalDurationParser::parse(c.text), c.seconds);
        EXPECT_FALSE(c.error.has_value());
    } catch (const PayrollDecimalDurationParser::ParseError& error) {
        EXPECT_EQ(std::optional(error.errorCase()), c.error) << c.text;
    }
}

using DurationError = PayrollDecimalDurationParser::ParseError::Case;
INSTANTIATE_TEST_SUITE_P(
    Values, DurationParsing,
    ::testing::Values(DurationCase{"0.5", 1800, {}}, DurationCase{"1.25", 4500, {}}, DurationCase{" 5 ", 18000, {}},
                      DurationCase{"0.0001", 0, DurationError::notRepresentableAsWholeSeconds},
                      DurationCase{"-0.5", 0, DurationError::negativeDuration}, DurationCase{"1,5", 0, DurationError::invalidText},
                      DurationCase{".5", 0, DurationError::invalidText}, DurationCase{"abc", 0, DurationError::invalidText},
                      DurationCase{"99999999999999999999", 0, DurationError::durationOutOfRange}));

TEST(DurationFormatting, ShowsOneToThreeDecimals) {
    EXPECT_EQ(formatDuration(1800), "0.5");
    EXPECT_EQ(formatDuration(3600), "1.0");
    EXPECT_EQ(formatDuration(4500), "1.25");
    EXPECT_EQ(formatDuration(1200), "0.333");
    EXPECT_EQ(formatDuration(7200), "2.0");
}

TEST(TenthHourConverter, RoundsHalfUpToATenth) {
    EXPECT_EQ(PayrollDecimalTenthHourConverter::seconds(Decimal("1.25")), 4680);
    EXPECT_EQ(PayrollDecimalTenthHourConverter::seconds(Decimal("1.24")), 4320);
    EXPECT_THROW(PayrollDecimalTenthHourConverter::seconds(Decimal("-0.1")), PayrollDecimalTenthHourConverter::ConversionError);
}

TEST(TimeFieldTransition, DecidesWhatEndingAnEditDoes) {
    using Kind = PayrollDecimalTimeFieldTransition::Outcome::Kind;
    PayrollDecimalTimeFieldTransition call{"7.0", dtsDate, DTSTimeEntryRole::call, at(0, 6, 30), false};
    EXPECT_EQ(call.end("7.0").kind, Kind::unchanged);
    EXPECT_EQ(call.end("").kind, Kind::cleared);
    EXPECT_EQ(call.end("6.5").kind, Kind::acceptedSuggestion);
    EXPECT_EQ(call.end("8.0").kind, Kind::explicitValue);
    const auto late = call.end("24.0");
    EXPECT_EQ(late.kind, Kind::invalid);
    EXPECT_EQ(late.message, "Call must be between 0.0 and 23.9.");
    EXPECT_EQ(late.restoredText, "7.0");
    call.userTypedOverSuggestion = true;
    EXPECT_EQ(call.end("6.5").kind, Kind::explicitValue);

    const PayrollDecimalTimeFieldTransition wrap{"", dtsDate, DTSTimeEntryRole::postCallEvent, std::nullopt, false};
    EXPECT_EQ(wrap.end("25.0").value, at(1, 1, 0));
    EXPECT_EQ(wrap.end("7.25").message, "Enter time in payroll tenths.");
}

}  // namespace
}  // namespace tessel
