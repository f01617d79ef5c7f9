#include <gtest/gtest.h>

#include "../support/PayBands.hpp"
#include "PayrollEngine/GrossCompensationCalculator.hpp"
#include "PayrollEngine/SupplementalCompensationCalculator.hpp"
#include "PayrollEngine/WeeklyPayrollAggregator.hpp"

namespace tessel {
namespace {

using namespace tessel::testing;
using namespace std::chrono;
constexpr auto worked = DurationBasis::worked;

HourlyPayRate rate(const char* amount, const char* currency = "USD") {
    return HourlyPayRate(Decimal(amount), CurrencyCode(currency));
}

GrossCompensationResult price(std::vector<PayBandAllocationTimelineSegment> day, const PayBandSchedule& schedule,
                              const HourlyPayRate& hourly, DayGuarantees guarantees = {}) {
    return GrossCompensationCalculator::calculate({std::move(day)}, schedule, guarantees, hourly, RoundingRule::cents());
}

std::vector<std::string> roundedAmounts(const GrossCompensationResult& result) {
    std::vector<std::string> amounts;
    for (const auto& c : result.components) amounts.push_back(c.roundedAmount.amount().toString());
    return amounts;
}

TEST(GrossCompensation, PricesEachBandAtRateTimesMultiplier) {
    const auto result = price({work(10)}, threeBandSchedule(), rate("30.00"));
    EXPECT_EQ(roundedAmounts(result), (std::vector<std::string>{"240.00", "90.00"}));
    EXPECT_EQ(result.total.amount().toString(), "330.00");
    EXPECT_EQ(result.trace.total, result.total);
    EXPECT_EQ(result.trace.suppliedDuration, hours(10));
    EXPECT_EQ(result.trace.entries.at(1).hourlyPayRate.amount(), Decimal("30.00"));
}

TEST(GrossCompensation, DividesByTheHourLastAndRoundsEachLineOnce) {
    const PayBandSchedule oneBand({band("st", 0, worked, std::nullopt, "1")});
    const auto second = price({{SegmentKind::compensableWork, WorkDuration(1)}}, oneBand, rate("35.00"));
    EXPECT_EQ(second.components.at(0).unroundedAmount.amount().toString().substr(0, 10), "0.00972222");
    EXPECT_EQ(second.total.amount().toString(), "0.01");
}

TEST(GrossCompensation, TotalIsTheSumOfTheRoundedLines) {
    // Each one-second line is worth half a cent; each rounds up, so the day is 0.02, not 0.01.
    const PayBandSchedule twoBands({PayBand(RuleID("a"), {WorkDuration(0), worked}, WorkDuration(1), RateMultiplier(Decimal(1))),
                                    PayBand(RuleID("b"), {WorkDuration(1), worked}, std::nullopt, RateMultiplier(Decimal(1)))});
    const auto result = price({{SegmentKind::compensableWork, WorkDuration(2)}}, twoBands, rate("18.00"));
    EXPECT_EQ(roundedAmounts(result), (std::vector<std::string>{"0.01", "0.01"}));
    EXPECT_EQ(result.total.amount().toString(), "0.02");
}

TEST(GrossCompensation, PricesGuaranteedTimeAndKeepsTheAdjustmentsInTheTrace) {
    DayGuarantees guarantees{DailyMinimumGuarantee(RuleID("production.guarantee.daily-minimum"), hours(10)),
                             DailyMinimumGuaranteeEligibility::actualWorkRequired,
                             {MinimumBandGuarantee(RuleID("production.guarantee.final-band-minimum"),
                                                   RuleID("production.band.double-time"), hours(2))}};
    const auto result = price({work(6)}, threeBandSchedule(), rate("40.00", "cad"), guarantees);
    EXPECT_EQ(roundedAmounts(result), (std::vector<std::string>{"320.00", "120.00"}));
    EXPECT_EQ(result.total.currency().code(), "CAD");
    ASSERT_TRUE(result.trace.dailyMinimumGuaranteeAdjustment.has_value());
    EXPECT_EQ(result.trace.dailyMinimumGuaranteeAdjustment->reason,
              DailyMinimumGuaranteeTraceEntry::Reason::appliedMinimumNotMet);
    EXPECT_EQ(result.trace.guaranteeAdjustments.at(0).reason,
              MinimumBandGuaranteeTraceEntry::Reason::notAppliedNoCompensationBasisAllocation);
    EXPECT_EQ(result.trace.compensationBasisAllocation.inputDuration, hours(10));
    EXPECT_EQ(result.trace.allocation.inputDuration, hours(6));
}

WeeklyPayrollDay pricedDay(int index, double workedHours, const char* multiplierOfOvertime = "1.5") {
    const PayBandSchedule schedule({band("st", 0, worked, 8, "1"), band("ot", 8, worked, std::nullopt, multiplierOfOvertime)});
    const auto result = price({work(workedHours)}, schedule, rate("30.00"));
    return {index, hours(workedHours), result.components, result.total};
}

TEST(WeeklyPayroll, SumsEachBandAcrossTheWeekInOrderOfFirstAppearance) {
    const auto week = WeeklyPayrollAggregator::aggregate({pricedDay(0, 6), pricedDay(1, 10), pricedDay(2, 9)}, std::nullopt);
    ASSERT_EQ(week.categoryTotals.size(), 2u);
    const auto& straight = week.categoryTotals[0];
    EXPECT_EQ(straight.ruleID, RuleID("st"));
    EXPECT_EQ(straight.paidDuration, hours(22));
    EXPECT_EQ(straight.compensationAmount.amount().toString(), "660.00");
    EXPECT_EQ(straight.contributors.size(), 3u);
    const auto& overtime = week.categoryTotals[1];
    EXPECT_EQ(overtime.paidDuration, hours(3));
    EXPECT_EQ(week.trace.entries[1].contributorDayIndexes, (std::vector<int>{1, 2}));
    EXPECT_EQ(week.totalCompensation.amount().toString(), "795.00");
    EXPECT_EQ(week.trace.inputDayCount, 3);
}

TEST(WeeklyPayroll, RefusesOneBandWithTwoMultipliers) {
    try {
        WeeklyPayrollAggregator::aggregate({pricedDay(0, 10, "1.5"), pricedDay(1, 10, "2")}, std::nullopt);
        FAIL();
    } catch (const WeeklyPayrollAggregator::AggregationError& error) {
        EXPECT_EQ(error.errorCase(), WeeklyPayrollAggregator::AggregationError::Case::inconsistentMultiplier);
        EXPECT_EQ(std::get<std::string>(error.payload().at(0).value), "ot");
    }
}

TEST(WeeklyPayroll, AnEmptyWeekNeedsACurrency) {
    EXPECT_THROW(WeeklyPayrollAggregator::aggregate({}, std::nullopt), WeeklyPayrollAggregator::AggregationError);
    const auto empty = WeeklyPayrollAggregator::aggregate({}, CurrencyCode("USD"));
    EXPECT_EQ(empty.totalCompensation.amount().toString(), "0");
    EXPECT_THROW(WeeklyPayrollAggregator::aggregate({pricedDay(0, 6)}, CurrencyCode("CAD")), Money::ArithmeticError);
}

TEST(WorkdaySequence, CountsDistinctWorkedDatesInOrder) {
    std::vector<year_month_day> dates;
    for (int d = 1; d <= 6; ++d) dates.push_back(2026y / November / d);
    dates.push_back(2026y / November / 3);  // a second entry on one date counts once
    const auto seventh = CrewWorkdaySequenceResolver::position(dates, 2026y / November / 7);
    EXPECT_EQ(seventh.ordinal, 7);
    EXPECT_EQ(seventh.classification(), CrewWorkdaySequencePosition::Classification::seventh);
    EXPECT_EQ(CrewWorkdaySequenceResolver::position(dates, 2026y / November / 6).classification(),
              CrewWorkdaySequencePosition::Classification::sixth);
    EXPECT_EQ(CrewWorkdaySequenceResolver::position(dates, 2026y / November / 2).classification(),
              CrewWorkdaySequencePosition::Classification::ordinary);
    dates.push_back(2026y / November / 7);
    const auto eighth = CrewWorkdaySequenceResolver::position(dates, 2026y / November / 8);
    EXPECT_EQ(eighth.ordinal, 8);
    EXPECT_EQ(eighth.classification(), CrewWorkdaySequencePosition::Classification::additional);
}

TEST(SupplementalCompensation, FixedDailyPaysOnlyOnQualifyingDays) {
    const Money allowance(Decimal("25.00"), CurrencyCode::usd());
    const auto notApplying = SupplementalCompensationCalculator::fixedDaily(allowance, false);
    EXPECT_FALSE(notApplying.compensation.has_value());
    EXPECT_EQ(notApplying.trace.configuredAmount, allowance);
    EXPECT_FALSE(notApplying.trace.applies);
    EXPECT_EQ(SupplementalCompensationCalculator::fixedDaily(allowance, true).compensation, allowance);
}

TEST(SupplementalCompensation, IdleHolidayAndPercentagePay) {
    const auto idle = SupplementalCompensationCalculator::idle(hours(8), rate("45.00"), RateMultiplier::one(),
                                                               RoundingRule::cents());
    EXPECT_EQ(idle.compensation.amount().toString(), "360.00");

    const UnworkedHolidayRule holidayRule(UnworkedHolidayRule::Formula::fixedStraightTimeDuration, 28800, Decimal(1));
    const auto holiday = SupplementalCompensationCalculator::unworkedHoliday(holidayRule, rate("40.00"), RoundingRule::cents());
    EXPECT_EQ(holiday.compensation.amount().toString(), "320.00");

    const auto vacation = SupplementalCompensationCalculator::percentage(
        CompensationPercentage(Decimal(4)), Money(Decimal("1234.56"), CurrencyCode::usd()), RoundingRule::cents());
    EXPECT_EQ(vacation.trace.unroundedAmount.amount().toString(), "49.3824");
    EXPECT_EQ(vacation.compensation.amount().toString(), "49.38");
    EXPECT_EQ(vacation.trace.rounding.before.amount().toString(), "49.3824");
}

TEST(SupplementalCompensation, HolidayRuleRefusesZeroTimeAndNegativeMultipliers) {
    using Formula = UnworkedHolidayRule::Formula;
    EXPECT_THROW(UnworkedHolidayRule(Formula::fixedStraightTimeDuration, 0, Decimal(1)), UnworkedHolidayRule::ValidationError);
    EXPECT_THROW(UnworkedHolidayRule(Formula::fixedStraightTimeDuration, 60, Decimal(-1)), UnworkedHolidayRule::ValidationError);
    EXPECT_THROW(UnworkedHolidayRule(Formula::fixedStraightTimeDuration, 60, Decimal::nan()), UnworkedHolidayRule::ValidationError);
}

}  // namespace
}  // namespace tessel
