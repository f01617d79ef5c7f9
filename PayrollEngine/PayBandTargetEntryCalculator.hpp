#pragma once

#include <optional>
#include <vector>

#include "PayrollDomain/MinimumBandGuarantee.hpp"
#include "PayrollDomain/PayBandAllocation.hpp"
#include "PayrollDomain/PayBandTargetEntry.hpp"

namespace tessel {

// Answers when, counted from call, the band a guarantee targets is first entered.
class PayBandTargetEntryCalculator {
public:
    static constexpr std::int64_t payrollTenthSeconds = 360;

    // Nothing when the band is not in the schedule, the timeline is empty, or the band is never reached.
    static std::optional<PayBandTargetEntry> entry(const std::vector<PayBandAllocationTimelineSegment>& segments,
                                                   const PayBandSchedule& schedule,
                                                   const MinimumBandGuarantee& guarantee);
};

}  // namespace tessel
