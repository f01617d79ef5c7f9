#include "WeeklyMealPenaltyCompensator.hpp"

#include <algorithm>
#include <tuple>

namespace tessel {
namespace {

using Error = WeeklyMealPenaltyCompensationError;
using Occurrence = WeeklyMealPenaltyOccurrence;

void validate(const std::vector<DatedMealPenaltyPeriod>& periods) {
    for (const auto& period : periods) {
        if (period.schedule.currency() != periods.front().schedule.currency()) {
            throw Error(Error::Case::inconsistentCurrency);
        }
        if (period.fixedDollarWeeklyLimit != periods.front().fixedDollarWeeklyLimit) {
            throw Error(Error::Case::inconsistentWeeklyLimit);
        }
    }
}

// Interval start, interval end, meal ordinal, occurrence ordinal, then the day's identifier as text:
// a total order, so the weekly numbering never depends on the order the days were given in.
bool precedes(const Occurrence& a, const Occurrence& b) {
    return std::tie(a.intervalStart, a.intervalEnd, a.mealPeriodOrdinal, a.mealPeriodOccurrenceOrdinal, a.sourceDayID) <
           std::tie(b.intervalStart, b.intervalEnd, b.mealPeriodOrdinal, b.mealPeriodOccurrenceOrdinal, b.sourceDayID);
}

}  // namespace

WeeklyMealPenaltyCompensationError::WeeklyMealPenaltyCompensationError(Case errorCase)
    : CaseError(errorCase, errorCase == Case::inconsistentCurrency ? "inconsistentCurrency" : "inconsistentWeeklyLimit",
                errorCase == Case::inconsistentCurrency
                    ? "The meal penalty schedules of one week must use one currency."
                    : "The meal penalty periods of one week must share one fixed-dollar weekly limit.") {}

WeeklyMealPenaltyResult WeeklyMealPenaltyCompensator::compensate(const std::vector<DatedMealPenaltyPeriod>& periods) {
    WeeklyMealPenaltyResult result;
    if (periods.empty()) return result;
    validate(periods);

    std::vector<std::pair<Occurrence, const FixedDollarMealPenaltySchedule*>> gathered;
    for (const auto& period : periods) {
        for (const auto& occurrence : period.result.occurrences) {
            gathered.push_back({Occurrence{period.sourceDayID, period.productionDate, period.result.trace.ruleID,
                                           occurrence.id.mealPeriodOrdinal, occurrence.id.mealPeriodOccurrenceOrdinal,
                                           0, occurrence.intervalStart, occurrence.intervalEnd,
                                           period.schedule.ruleID(), {}, {}},
                                &period.schedule});
        }
    }
    std::stable_sort(gathered.begin(), gathered.end(),
                     [](const auto& a, const auto& b) { return precedes(a.first, b.first); });

    const int limit = periods.front().fixedDollarWeeklyLimit;
    for (std::size_t i = 0; i < gathered.size(); ++i) {
        auto& [occurrence, schedule] = gathered[i];
        occurrence.weeklyOrdinal = static_cast<int>(i) + 1;
        if (occurrence.weeklyOrdinal <= limit) {
            const Money& amount = schedule->amountFor(occurrence.mealPeriodOccurrenceOrdinal);
            occurrence.compensation = {Occurrence::Compensation::Case::fixedDollar, amount};
            result.fixedDollarSubtotal = result.fixedDollarSubtotal ? *result.fixedDollarSubtotal + amount : amount;
        } else {
            occurrence.compensation = {Occurrence::Compensation::Case::prevailingRateUnverified, std::nullopt};
            occurrence.warnings.push_back(Occurrence::Warning::prevailingRateRequiresContractVerification);
            ++result.unresolvedPrevailingRateCount;
        }
        result.occurrences.push_back(std::move(occurrence));
    }
    return result;
}

}  // namespace tessel
