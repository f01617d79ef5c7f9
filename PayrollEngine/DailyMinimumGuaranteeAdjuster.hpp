#pragma once

#include "PayrollDomain/GuaranteeAdjustment.hpp"

namespace tessel {

// Tops a day up to its daily minimum. The guaranteed time is appended after the day's work, so it lands
// in the band in force at the end of the day, or crosses into the next worked-basis band; it never
// enters an elapsed-basis band by itself.
class DailyMinimumGuaranteeAdjuster {
public:
    // Throws WorkDuration::ValidationError on arithmetic faults and passes allocator errors on.
    static DailyMinimumGuaranteeAdjustmentResult adjust(const PayBandAllocationResult& actualAllocation,
                                                        const std::optional<DailyMinimumGuarantee>& guarantee,
                                                        DailyMinimumGuaranteeEligibility eligibility);

    // Components that pay exactly the allocated time, with no guaranteed parts.
    static std::vector<PayBandCompensationBasisComponent> unguaranteedComponents(
        const PayBandAllocationResult& allocation);
};

}  // namespace tessel
