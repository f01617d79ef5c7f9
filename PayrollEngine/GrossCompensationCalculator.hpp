#pragma once

#include "PayrollDomain/GrossCompensation.hpp"

namespace tessel {

// The minimums that apply to one day: the daily minimum first, then the band minimums.
struct DayGuarantees {
    std::optional<DailyMinimumGuarantee> dailyMinimum;
    DailyMinimumGuaranteeEligibility eligibility = DailyMinimumGuaranteeEligibility::actualWorkRequired;
    std::vector<MinimumBandGuarantee> bandMinimums;
};

// Prices one day: allocation, daily minimum, band minimums, then each band's paid time at the hourly
// rate times the band's multiplier, rounded once per band. The total is the sum of the rounded lines.
class GrossCompensationCalculator {
public:
    // Passes on the allocator's, the adjusters' and money arithmetic errors.
    static GrossCompensationResult calculate(const PayBandAllocationInput& input, const PayBandSchedule& schedule,
                                             const DayGuarantees& guarantees, const HourlyPayRate& hourlyRate,
                                             const RoundingRule& rounding);
};

}  // namespace tessel
