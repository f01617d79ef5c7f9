#pragma once

#include "PayrollDomain/HourlyPayRate.hpp"
#include "PayrollDomain/SupplementalCompensation.hpp"

namespace tessel {

// The simple kinds of pay beside banded work: each rounded once with the given rule, each with a trace.
class SupplementalCompensationCalculator {
public:
    // The configured amount, unchanged, when the day qualifies; otherwise nothing.
    static FixedDailyCompensationResult fixedDaily(const std::optional<Money>& configuredAmount, bool applies);

    // A paid day without work at straight time for the compensated duration.
    static IdleCompensationResult idle(WorkDuration compensatedDuration, const HourlyPayRate& straightTimeHourlyRate,
                                       const RateMultiplier& straightTimeRateMultiplier, const RoundingRule& rounding);

    static UnworkedHolidayResult unworkedHoliday(const UnworkedHolidayRule& rule,
                                                 const HourlyPayRate& straightTimeHourlyRate,
                                                 const RoundingRule& rounding);

    // A percentage (such as vacation pay) of straight-time earnings.
    static PercentageCompensationResult percentage(const CompensationPercentage& percentage, const Money& basisAmount,
                                                   const RoundingRule& rounding);
};

}  // namespace tessel
