#pragma once

#include "PayrollDomain/PayBandAllocation.hpp"

namespace tessel {

enum class PayBandAllocationErrorCase { durationExceedsCoverage };

class PayBandAllocationError : public CaseError<PayBandAllocationErrorCase> {
public:
    using Case = PayBandAllocationErrorCase;
    explicit PayBandAllocationError(WorkDuration coveredThrough);
    WorkDuration coveredThrough() const noexcept { return coveredThrough_; }

private:
    WorkDuration coveredThrough_;
};

// Assigns each second of a day's paid time to the band in force at that moment. A band is in force
// from the moment its threshold is reached on its own basis, so a band whose elapsed threshold passes
// during a meal is in force from the first worked second after the meal.
class PayBandAllocator {
public:
    using AllocationError = PayBandAllocationError;

    // Throws AllocationError when a closed final band cannot hold the day, and
    // WorkDuration::ValidationError when the timeline's running totals overflow.
    static PayBandAllocationResult allocate(const PayBandAllocationInput& input, const PayBandSchedule& schedule);
};

}  // namespace tessel
