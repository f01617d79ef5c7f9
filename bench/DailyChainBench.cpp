#include <benchmark/benchmark.h>

#include "ThreeBandSchedule.hpp"
#include "PayrollEngine/GrossCompensationCalculator.hpp"
#include "PayrollEngine/MealPenaltyEvaluator.hpp"
#include "PayrollEngine/WeeklyPayrollAggregator.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using Kind = PayBandAllocationTimelineSegment::Kind;

struct CrewDay {
    PayBandSchedule schedule = bench::threeBandSchedule();
    PayBandAllocationInput timeline{{{Kind::compensableWork, WorkDuration(21600)},
                                     {Kind::nonCompensableElapsed, WorkDuration(1800)},
                                     {Kind::compensableWork, WorkDuration(23400)}}};
    DayGuarantees guarantees{DailyMinimumGuarantee(RuleID("production.guarantee.daily-minimum"), WorkDuration(28800)),
                             DailyMinimumGuaranteeEligibility::actualWorkRequired,
                             {MinimumBandGuarantee(RuleID("production.guarantee.final-band-minimum"),
                                                   RuleID("production.band.double-time"), WorkDuration(7200))}};
    HourlyPayRate rate{Decimal("45.00"), CurrencyCode("USD")};
    RoundingRule rounding = RoundingRule::cents();
    MealPeriodRule firstMealRule{RuleID("meal.first.deadline"), WorkDuration(21600), WorkDuration(1800),
                                 MealGraceExtension{WorkDuration(720), true}};
    Instant call = sys_days(2026y / November / 2) + hours(7);
    FirstMealEvaluationInput firstMeal{call, call, call + minutes(370), false, true};

    GrossCompensationResult price() const {
        return GrossCompensationCalculator::calculate(timeline, schedule, guarantees, rate, rounding);
    }
};

// One crew-day through the whole daily chain: a 12.5-hour day reaching double time, with a daily
// minimum, a double-time band minimum, three priced bands and a first meal taken 10 minutes late.
void crewDayThroughTheDailyChain(benchmark::State& state) {
    const CrewDay day;
    for (auto _ : state) {
        benchmark::DoNotOptimize(day.price());
        benchmark::DoNotOptimize(MealPenaltyEvaluator::evaluateFirstMeal(day.firstMealRule, day.firstMeal));
    }
}
BENCHMARK(crewDayThroughTheDailyChain);

// Seven priced days summed into weekly band totals.
void weeklyAggregationOfSevenDays(benchmark::State& state) {
    const CrewDay day;
    const GrossCompensationResult priced = day.price();
    std::vector<WeeklyPayrollDay> week;
    for (int i = 0; i < 7; ++i) week.push_back({i, WorkDuration(45000), priced.components, priced.total});
    const std::optional<CurrencyCode> usd = CurrencyCode("USD");
    for (auto _ : state) {
        benchmark::DoNotOptimize(WeeklyPayrollAggregator::aggregate(week, usd));
    }
}
BENCHMARK(weeklyAggregationOfSevenDays);

}  // namespace
}  // namespace tessel
