#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "PayrollDomain/WeeklyPayroll.hpp"

namespace tessel {

enum class WeeklyPayrollAggregationErrorCase { inconsistentMultiplier, emptyWeekRequiresCurrency };

class WeeklyPayrollAggregationError : public CaseError<WeeklyPayrollAggregationErrorCase> {
public:
    using Case = WeeklyPayrollAggregationErrorCase;
    static WeeklyPayrollAggregationError inconsistentMultiplier(const RuleID& ruleID);
    static WeeklyPayrollAggregationError emptyWeekRequiresCurrency();

private:
    using CaseError::CaseError;
};

// Sums the priced days of one workweek by band.
class WeeklyPayrollAggregator {
public:
    using AggregationError = WeeklyPayrollAggregationError;

    // A week without days needs the currency of its zero total.
    static WeeklyPayrollResult aggregate(std::vector<WeeklyPayrollDay> days, const std::optional<CurrencyCode>& currency);
};

// Which day of the crew member's workweek a worked date is.
class CrewWorkdaySequenceResolver {
public:
    // The date itself counts as worked; a date listed more than once counts once.
    static CrewWorkdaySequencePosition position(const std::vector<std::chrono::year_month_day>& workedDates,
                                                std::chrono::year_month_day date);
};

}  // namespace tessel
