#pragma once

#include <optional>
#include <vector>

#include "App/expected/PayrollReviewRecords.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel {

// Everything one crew member's DTS day is calculated from, gathered beforehand; the calculation itself
// needs no store, so the sandbox and the weekly review run the same code.
struct DailyReviewInputs {
    DTSCalculationInput source;
    const SandboxConfiguration* rules = nullptr;
    std::optional<ResolvedRate> rate{};
    std::optional<ResolvedRate::Warning> rateWarning{};
    std::optional<PayrollReviewClassification> classification{};  // the position the day is worked in
    std::optional<std::int64_t> personalDailyGuaranteeSeconds{};  // takes the place of the ruleset's daily minimum
    std::optional<CrewWorkdaySequencePosition> sequence{};
    std::optional<TurnaroundRule> turnaroundRule{};
    std::optional<Uuid> nextWorkdayID{};
    std::optional<CalendarDate> nextWorkdayDate{};
    std::optional<Instant> nextCall{};
    std::optional<Money> boxRental{};
    std::vector<ResolvedCompensationProvision> dailyProvisions{};  // fixed daily amounts in force for the day
    std::optional<ResolvedCompensationProvision> mileage{};         // an amount per mile
    std::optional<Decimal> miles{};
    std::optional<std::string> scheduleTerms{};         // whose terms shaped `rules`' schedule, in words
    std::optional<std::string> scheduleTermsProblem{};  // why a position's terms could not be used
    // Equal inputs give an equal day: the calculation reads nothing else.
    bool operator==(const DailyReviewInputs&) const = default;
};

class DailyReviewCalculator {
public:
    static DailyPayrollReview calculate(const DailyReviewInputs& inputs);
    // Where the golden hour guarantee's band would be entered if the day ran on past its meal.
    static std::optional<GoldenHourTarget> goldenHourTarget(const DTSCalculationInput& source, const SandboxConfiguration& rules);
};

}  // namespace tessel
