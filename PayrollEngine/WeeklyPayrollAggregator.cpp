#include "WeeklyPayrollAggregator.hpp"

#include <algorithm>

namespace tessel {
namespace {

using Error = WeeklyPayrollAggregationError;

WeeklyPayrollCategoryTotal& categoryFor(std::vector<WeeklyPayrollCategoryTotal>& totals,
                                        const PayBandCompensationComponent& component) {
    const auto found = std::find_if(totals.begin(), totals.end(),
                                    [&](const auto& total) { return total.ruleID == component.ruleID; });
    if (found == totals.end()) {
        const Money zero = Money::zero(component.roundedAmount.currency());
        totals.push_back({component.ruleID, component.multiplier, {}, {}, {}, {}, {}, zero, {}});
        return totals.back();
    }
    if (!(found->multiplier == component.multiplier)) throw Error::inconsistentMultiplier(component.ruleID);
    return *found;
}

void addContribution(WeeklyPayrollCategoryTotal& total, int dayIndex, const PayBandCompensationComponent& component) {
    total.actualDuration += component.actualAllocatedDuration;
    total.dailyMinimumGuaranteedDuration += component.dailyMinimumGuaranteedDuration;
    total.bandSpecificGuaranteedDuration += component.bandSpecificGuaranteedDuration;
    total.totalGuaranteedDuration += component.dailyMinimumGuaranteedDuration + component.bandSpecificGuaranteedDuration;
    total.paidDuration += component.paidDuration;
    total.compensationAmount = total.compensationAmount + component.roundedAmount;

    // A day that lists a band twice contributes once, with both lines together.
    if (total.contributors.empty() || total.contributors.back().dayIndex != dayIndex) {
        total.contributors.push_back({dayIndex, {}, {}, {}, {}, Money::zero(component.roundedAmount.currency())});
    }
    auto& contributor = total.contributors.back();
    contributor.actualDuration += component.actualAllocatedDuration;
    contributor.dailyMinimumGuaranteedDuration += component.dailyMinimumGuaranteedDuration;
    contributor.bandSpecificGuaranteedDuration += component.bandSpecificGuaranteedDuration;
    contributor.paidDuration += component.paidDuration;
    contributor.compensationAmount = contributor.compensationAmount + component.roundedAmount;
}

}  // namespace

Error Error::inconsistentMultiplier(const RuleID& ruleID) {
    return Error(Case::inconsistentMultiplier, "inconsistentMultiplier",
                 "Pay band " + quoted(ruleID.value()) + " has different multipliers on different days of the week.",
                 {{"ruleID", ruleID.value()}});
}

Error Error::emptyWeekRequiresCurrency() {
    return Error(Case::emptyWeekRequiresCurrency, "emptyWeekRequiresCurrency",
                 "A week without days needs a currency for its total.");
}

WeeklyPayrollResult WeeklyPayrollAggregator::aggregate(std::vector<WeeklyPayrollDay> days,
                                                       const std::optional<CurrencyCode>& currency) {
    if (days.empty() && !currency) throw Error::emptyWeekRequiresCurrency();
    Money total = Money::zero(currency ? *currency : days.front().compensationAmount.currency());
    std::vector<WeeklyPayrollCategoryTotal> categories;
    for (const auto& day : days) {
        total = total + day.compensationAmount;
        for (const auto& component : day.components) {
            addContribution(categoryFor(categories, component), day.dayIndex, component);
        }
    }

    WeeklyPayrollAggregationTrace trace{static_cast<int>(days.size()), {}, total};
    for (const auto& category : categories) {
        std::vector<int> indexes;
        for (const auto& contributor : category.contributors) indexes.push_back(contributor.dayIndex);
        trace.entries.push_back({category.ruleID, std::move(indexes), category.paidDuration, category.compensationAmount});
    }
    return {std::move(days), std::move(categories), total, std::move(trace)};
}

CrewWorkdaySequencePosition CrewWorkdaySequenceResolver::position(
    const std::vector<std::chrono::year_month_day>& workedDates, std::chrono::year_month_day date) {
    // A sorted vector rather than a set: one allocation, since every crew row of a week asks.
    std::vector<std::chrono::sys_days> distinct(workedDates.begin(), workedDates.end());
    std::sort(distinct.begin(), distinct.end());
    distinct.erase(std::unique(distinct.begin(), distinct.end()), distinct.end());
    const auto earlier = std::distance(distinct.begin(), std::lower_bound(distinct.begin(), distinct.end(), std::chrono::sys_days(date)));
    return {static_cast<int>(earlier) + 1};
}

}  // namespace tessel
