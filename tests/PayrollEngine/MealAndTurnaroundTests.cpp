#include <gtest/gtest.h>

#include "PayrollEngine/MealPenaltyEvaluator.hpp"
#include "PayrollEngine/TurnaroundEvaluator.hpp"
#include "PayrollEngine/WeeklyMealPenaltyCompensator.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using Disposition = FirstMealGraceDisposition;
using Resolution = FirstMealClockResolution;
using Status = MealPeriodEvaluationStatus;

// An instant on the day of the test DTS; hours past 24 are the next morning.
Instant at(int h, int m, int s = 0) { return sys_days(2026y / November / 2) + hours(h) + minutes(m) + seconds(s); }

MealPeriodRule sixHourRule(MealGraceRule grace = std::nullopt) {
    return MealPeriodRule(RuleID("meal.first.deadline"), WorkDuration::hours(6), WorkDuration(1800), grace);
}

MealPeriodRule withGrace(bool retroactive) {
    return sixHourRule(MealGraceExtension{WorkDuration(720), retroactive});
}

FirstMealEvaluationInput firstMeal(std::optional<Instant> employeeCall, std::optional<Instant> generalCrewCall,
                                   std::optional<Instant> mealOut, bool ndb = false, bool graceCalled = false) {
    return {employeeCall, generalCrewCall, mealOut, ndb, graceCalled};
}

struct CountCase {
    const char* name;
    Instant mealOut;
    int expectedPenalties;
};

class MealPenaltyCounting : public ::testing::TestWithParam<CountCase> {};

TEST_P(MealPenaltyCounting, EveryStartedIntervalCounts) {
    const auto result = MealPenaltyEvaluator::evaluateFirstMeal(sixHourRule(), firstMeal(at(7, 0), at(7, 0), GetParam().mealOut));
    EXPECT_EQ(result.status, Status::evaluated());
    EXPECT_EQ(static_cast<int>(result.occurrences.size()), GetParam().expectedPenalties);
    EXPECT_EQ(result.trace.occurrenceCount, GetParam().expectedPenalties);
    EXPECT_EQ(result.trace.contractualDueTime, at(13, 0));
}

INSTANTIATE_TEST_SUITE_P(IntervalBoundaries, MealPenaltyCounting,
                         ::testing::Values(CountCase{"onTime", at(13, 0, 0), 0}, CountCase{"oneSecondLate", at(13, 0, 1), 1},
                                           CountCase{"endOfFirstInterval", at(13, 30, 0), 1},
                                           CountCase{"intoSecondInterval", at(13, 30, 1), 2},
                                           CountCase{"early", at(11, 0, 0), 0}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(MealPenalty, OccurrencesAreNumberedAndCoverTheirIntervals) {
    const auto result = MealPenaltyEvaluator::evaluateFirstMeal(sixHourRule(), firstMeal(at(7, 0), std::nullopt, at(13, 45)));
    ASSERT_EQ(result.occurrences.size(), 2u);
    EXPECT_EQ(result.occurrences[1].id, (MealPenaltyOccurrenceID{MealPeriodOrdinal{1}, 2}));
    EXPECT_EQ(result.occurrences[1].intervalStart, at(13, 30));
    EXPECT_EQ(result.occurrences[1].intervalEnd, at(14, 0));
    EXPECT_EQ(result.trace.countedViolationDuration, WorkDuration(2700));
    EXPECT_EQ(result.trace.firstMealClockResolution, Resolution::employeeCall);
}

struct GraceCase {
    const char* name;
    Instant employeeCall;
    bool ndb;
    Instant mealOut;
    bool retroactive;
    Disposition disposition;
    Resolution resolution;
    int penalties;
    std::optional<Instant> firstPenaltyStart;
};

class FirstMealGrace : public ::testing::TestWithParam<GraceCase> {};

TEST_P(FirstMealGrace, DecidesTheDispositionAndWhereCountingStarts) {
    const auto& c = GetParam();
    const auto result = MealPenaltyEvaluator::evaluateFirstMeal(withGrace(c.retroactive),
                                                                firstMeal(c.employeeCall, at(7, 0), c.mealOut, c.ndb, true));
    EXPECT_EQ(result.trace.firstMealGraceDisposition, c.disposition);
    EXPECT_EQ(result.trace.firstMealClockResolution, c.resolution);
    ASSERT_EQ(static_cast<int>(result.occurrences.size()), c.penalties);
    if (c.firstPenaltyStart) {
        EXPECT_EQ(result.occurrences.front().intervalStart, *c.firstPenaltyStart);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Dispositions, FirstMealGrace,
    ::testing::Values(
        GraceCase{"protected", at(7, 0), false, at(13, 10), true, Disposition::protected_, Resolution::employeeCall, 0, {}},
        GraceCase{"protectedAtWindowEnd", at(7, 0), false, at(13, 12), false, Disposition::protected_, Resolution::employeeCall, 0, {}},
        GraceCase{"exceededRetroactive", at(7, 0), false, at(13, 20), true, Disposition::exceeded, Resolution::employeeCall, 1, at(13, 0)},
        GraceCase{"exceededFromWindowEnd", at(7, 0), false, at(13, 50), false, Disposition::exceeded, Resolution::employeeCall, 2, at(13, 12)},
        GraceCase{"eligibleOnTime", at(7, 0), false, at(12, 30), false, Disposition::eligible, Resolution::employeeCall, 0, {}},
        GraceCase{"ndbPrecall", at(6, 0), true, at(13, 5), false, Disposition::protected_, Resolution::generalCrewCallBecauseNDB, 0, {}},
        GraceCase{"precallWithoutNDB", at(6, 0), false, at(12, 5), false, Disposition::ineligiblePrecallWithoutNDB, Resolution::employeeCall, 1, at(12, 0)},
        GraceCase{"laterCall", at(8, 0), false, at(14, 5), false, Disposition::ineligibleLaterCall, Resolution::employeeCall, 1, at(14, 0)}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(FirstMealGrace, RetroactiveCountingCarriesAWarning) {
    const auto result = MealPenaltyEvaluator::evaluateFirstMeal(withGrace(true), firstMeal(at(7, 0), at(7, 0), at(13, 20), false, true));
    EXPECT_EQ(result.warnings, (std::vector{MealPeriodEvaluationResult::Warning::graceExceededAndCountedFromOriginalDeadline}));
    EXPECT_EQ(result.trace.graceProtectedThrough, at(13, 12));
}

TEST(FirstMealGrace, NotCalledWhenACallTimeIsMissing) {
    const auto result = MealPenaltyEvaluator::evaluateFirstMeal(withGrace(false), firstMeal(at(7, 0), std::nullopt, at(13, 5), false, true));
    EXPECT_EQ(result.trace.firstMealGraceDisposition, Disposition::notCalled);
    EXPECT_FALSE(result.trace.graceProtectedThrough.has_value());
    EXPECT_EQ(result.occurrences.size(), 1u);
}

TEST(FirstMealGrace, ReviewWordsNameTheNDBReset) {
    EXPECT_EQ(description(Disposition::protected_, Resolution::generalCrewCallBecauseNDB),
              "NDB reset the first-meal clock to General Crew Call; called grace protected this meal.");
    EXPECT_EQ(description(Disposition::protected_, Resolution::employeeCall),
              "Grace was called and protected this employee through the grace window.");
}

TEST(MealPenalty, MissingOrInconsistentTimesBecomeAStatus) {
    const auto noMeal = MealPenaltyEvaluator::evaluateFirstMeal(sixHourRule(), firstMeal(at(7, 0), at(7, 0), std::nullopt));
    EXPECT_EQ(noMeal.status, Status::incomplete(Status::IncompleteReason::missingSatisfactionEvent));
    const auto noCall = MealPenaltyEvaluator::evaluateFirstMeal(sixHourRule(), firstMeal(std::nullopt, std::nullopt, at(13, 0)));
    EXPECT_EQ(noCall.status, Status::incomplete(Status::IncompleteReason::missingClockStart));
    EXPECT_FALSE(noCall.trace.firstMealClockResolution.has_value());
    const auto backwards = MealPenaltyEvaluator::evaluateFirstMeal(sixHourRule(), firstMeal(at(7, 0), at(7, 0), at(6, 0)));
    EXPECT_EQ(backwards.status, Status::invalid(Status::InvalidReason::satisfactionBeforeClockStart));
    EXPECT_TRUE(backwards.occurrences.empty());
}

TEST(MealPenalty, LaterMealsCountFromTheirOwnClockWithGrace) {
    const MealPeriodRule second(RuleID("meal.subsequent.deadline"), WorkDuration::hours(6), WorkDuration(1800),
                                MealGraceExtension{WorkDuration(720), false});
    const MealPeriodEvaluationInput input{MealPeriodOrdinal{2}, MealTimelineEvent{MealTimelineEvent::Kind::mealIn, at(13, 30)},
                                          MealTimelineEvent{MealTimelineEvent::Kind::wrap, at(20, 0)}};
    const auto result = MealPenaltyEvaluator::evaluatePeriod(second, input);
    EXPECT_EQ(result.trace.graceProtectedThrough, at(19, 42));
    ASSERT_EQ(result.occurrences.size(), 1u);
    EXPECT_EQ(result.occurrences[0].id.mealPeriodOrdinal, MealPeriodOrdinal{2});
    EXPECT_FALSE(result.trace.firstMealGraceDisposition.has_value());
}

TEST(MealPeriodRule, RefusesZeroDurations) {
    using Case = MealPeriodRule::ValidationError::Case;
    const auto refusal = [](WorkDuration due, WorkDuration interval, MealGraceRule grace) {
        try {
            MealPeriodRule(RuleID("m"), due, interval, grace);
        } catch (const MealPeriodRule::ValidationError& error) {
            return std::optional(error.errorCase());
        }
        return std::optional<Case>();
    };
    EXPECT_EQ(refusal(WorkDuration(), WorkDuration(1800), std::nullopt), Case::dueDurationMustBePositive);
    EXPECT_EQ(refusal(WorkDuration(60), WorkDuration(), std::nullopt), Case::penaltyIntervalMustBePositive);
    EXPECT_EQ(refusal(WorkDuration(60), WorkDuration(60), MealGraceExtension{WorkDuration(), true}),
              Case::graceDurationMustBePositive);
}

// ---- weekly pricing of penalties ----

FixedDollarMealPenaltySchedule scheduleA(const char* currency = "USD") {
    const CurrencyCode code(currency);
    return FixedDollarMealPenaltySchedule(RuleID("production.meal-penalty.schedule-a"),
                                          {Money(Decimal("7.50"), code), Money(Decimal("10.00"), code)},
                                          Money(Decimal("12.50"), code));
}

DatedMealPenaltyPeriod periodWith(const std::string& dayID, int day, Instant mealOut, int limit = 20,
                                  const char* currency = "USD") {
    const auto shifted = mealOut + days(day);
    return {dayID, year_month_day(floor<days>(shifted)), scheduleA(currency), limit,
            MealPenaltyEvaluator::evaluateFirstMeal(sixHourRule(), firstMeal(at(7, 0) + days(day), std::nullopt, shifted))};
}

std::vector<std::string> amounts(const WeeklyMealPenaltyResult& week) {
    std::vector<std::string> text;
    for (const auto& o : week.occurrences) text.push_back(o.compensation.amount ? o.compensation.amount->amount().toString() : "-");
    return text;
}

TEST(WeeklyMealPenalties, EscalateWithinAMealPeriod) {
    const auto week = WeeklyMealPenaltyCompensator::compensate({periodWith("day-1", 0, at(14, 15))});
    EXPECT_EQ(amounts(week), (std::vector<std::string>{"7.50", "10.00", "12.50"}));
    EXPECT_EQ(week.fixedDollarSubtotal->amount().toString(), "30.00");
}

TEST(WeeklyMealPenalties, PastTheWeeklyLimitNeedContractVerification) {
    // Five days of four penalties and one of one: 21 in the week.
    std::vector<DatedMealPenaltyPeriod> periods;
    for (int d = 0; d < 5; ++d) periods.push_back(periodWith("day-" + std::to_string(d), d, at(14, 45)));
    periods.push_back(periodWith("day-5", 5, at(13, 10)));
    const auto week = WeeklyMealPenaltyCompensator::compensate(periods);
    ASSERT_EQ(week.occurrences.size(), 21u);
    EXPECT_EQ(week.unresolvedPrevailingRateCount, 1);
    const auto& last = week.occurrences.back();
    EXPECT_EQ(last.weeklyOrdinal, 21);
    EXPECT_EQ(last.compensation.kind, WeeklyMealPenaltyOccurrence::Compensation::Case::prevailingRateUnverified);
    EXPECT_EQ(last.warnings, (std::vector{WeeklyMealPenaltyOccurrence::Warning::prevailingRateRequiresContractVerification}));
    EXPECT_EQ(week.fixedDollarSubtotal->amount().toString(), "212.50");  // twenty priced: five days of 42.50
}

TEST(WeeklyMealPenalties, IdenticalIntervalsAreOrderedByDayIdentifier) {
    const auto week = WeeklyMealPenaltyCompensator::compensate({periodWith("B-day", 0, at(13, 10)), periodWith("A-day", 0, at(13, 10))});
    ASSERT_EQ(week.occurrences.size(), 2u);
    EXPECT_EQ(week.occurrences[0].sourceDayID, "A-day");
    EXPECT_EQ(week.occurrences[1].weeklyOrdinal, 2);
}

TEST(WeeklyMealPenalties, AWeekWithoutPenaltiesHasNoSubtotal) {
    const auto week = WeeklyMealPenaltyCompensator::compensate({periodWith("day", 0, at(12, 0))});
    EXPECT_FALSE(week.fixedDollarSubtotal.has_value());
    EXPECT_EQ(week.unresolvedPrevailingRateCount, 0);
}

TEST(WeeklyMealPenalties, RefuseMixedCurrenciesAndLimits) {
    using Error = WeeklyMealPenaltyCompensator::Error;
    EXPECT_THROW(WeeklyMealPenaltyCompensator::compensate({periodWith("a", 0, at(14, 0)), periodWith("b", 1, at(14, 0), 20, "CAD")}), Error);
    EXPECT_THROW(WeeklyMealPenaltyCompensator::compensate({periodWith("a", 0, at(14, 0)), periodWith("b", 1, at(14, 0), 10)}), Error);
    EXPECT_THROW(FixedDollarMealPenaltySchedule(RuleID("s"), {}, Money(Decimal(1), CurrencyCode::usd())),
                 FixedDollarMealPenaltySchedule::ValidationError);
    EXPECT_THROW(FixedDollarMealPenaltySchedule(RuleID("s"), {Money(Decimal(1), CurrencyCode("CAD"))}, Money(Decimal(1), CurrencyCode::usd())),
                 FixedDollarMealPenaltySchedule::ValidationError);
}

// ---- turnaround ----

struct TurnaroundCase {
    const char* name;
    Instant nextCall;
    TurnaroundEvaluationStatus expected;
};

class Turnaround : public ::testing::TestWithParam<TurnaroundCase> {};

TEST_P(Turnaround, ComparesActualWithRequiredRest) {
    const TurnaroundRule rule{RuleID("engagement.turnaround.required-rest"), WorkDuration::hours(10),
                              "engagement.turnaround.required-rest"};
    const auto result = TurnaroundEvaluator::evaluate(rule, {at(23, 0), GetParam().nextCall});
    EXPECT_EQ(result.status, GetParam().expected);
    EXPECT_EQ(result.trace.earliestNextCall, at(33, 0));
}

INSTANTIATE_TEST_SUITE_P(
    Rest, Turnaround,
    ::testing::Values(
        TurnaroundCase{"exactly", at(33, 0), {TurnaroundEvaluationStatus::Case::exactlySatisfied, {}, {}}},
        TurnaroundCase{"more", at(33, 30), {TurnaroundEvaluationStatus::Case::satisfied, WorkDuration(37800), {}}},
        TurnaroundCase{"short", at(32, 0), {TurnaroundEvaluationStatus::Case::shortfall, WorkDuration::hours(9), WorkDuration::hours(1)}},
        TurnaroundCase{"callBeforeWrap", at(22, 0), {TurnaroundEvaluationStatus::Case::shortfall, WorkDuration(), WorkDuration::hours(10)}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Turnaround, IncompleteCasesKeepWhatIsKnownInTheTrace) {
    const TurnaroundRule rule{RuleID("production.turnaround.local.all-others"), WorkDuration::hours(10),
                              "production.turnaround.local.all-others"};
    const auto noWrap = TurnaroundEvaluator::evaluate(rule, {std::nullopt, at(9, 0)});
    EXPECT_EQ(noWrap.status.kind, TurnaroundEvaluationStatus::Case::incompleteMissingPriorWrap);
    EXPECT_EQ(noWrap.trace.ruleID, rule.ruleID);
    EXPECT_EQ(noWrap.trace.valueOrigin, "production.turnaround.local.all-others");
    const auto noCall = TurnaroundEvaluator::evaluate(rule, {at(23, 0), std::nullopt});
    EXPECT_EQ(noCall.status.kind, TurnaroundEvaluationStatus::Case::noNextCall);
    EXPECT_EQ(noCall.trace.earliestNextCall, at(33, 0));
    EXPECT_EQ(TurnaroundEvaluator::evaluate(std::nullopt, {at(23, 0), at(9, 0)}).status.kind,
              TurnaroundEvaluationStatus::Case::incompleteUnconfiguredRequiredRest);
    EXPECT_EQ(description(TurnaroundEvaluationStatus::Case::exactlySatisfied), "Call exactly at required turnaround");
}

}  // namespace
}  // namespace tessel
