#include "GrossCompensationCalculator.hpp"

#include "DailyMinimumGuaranteeAdjuster.hpp"
#include "MinimumBandGuaranteeAdjuster.hpp"
#include "PayBandAllocator.hpp"

namespace tessel {

GrossCompensationResult GrossCompensationCalculator::calculate(const PayBandAllocationInput& input,
                                                               const PayBandSchedule& schedule,
                                                               const DayGuarantees& guarantees,
                                                               const HourlyPayRate& hourlyRate,
                                                               const RoundingRule& rounding) {
    const PayBandAllocationResult actual = PayBandAllocator::allocate(input, schedule);
    DailyMinimumGuaranteeAdjustmentResult daily =
        DailyMinimumGuaranteeAdjuster::adjust(actual, guarantees.dailyMinimum, guarantees.eligibility);
    MinimumBandGuaranteeAdjustmentResult banded =
        MinimumBandGuaranteeAdjuster::adjust(actual, std::move(daily.components), guarantees.bandMinimums);

    const Money& rate = hourlyRate.amountPerHour();
    std::vector<PayBandCompensationComponent> components;
    std::vector<GrossCompensationTraceEntry> entries;
    components.reserve(banded.components.size());
    entries.reserve(banded.components.size());
    Money total = Money::zero(rate.currency());
    for (const auto& band : banded.components) {
        const Money unrounded = hourlyRate.priceOf(band.paidDuration, band.multiplier.value());
        const Money rounded = rounding.apply(unrounded).after;
        components.push_back({band.payBandRuleID, band.actualAllocatedDuration, band.dailyMinimumGuaranteedDuration,
                              band.bandSpecificGuaranteedDuration, band.guaranteedAdditionalDuration,
                              band.paidDuration, band.multiplier, unrounded, rounded, rounding});
        entries.push_back({band.payBandRuleID, band.actualAllocatedDuration, band.dailyMinimumGuaranteedDuration,
                           band.bandSpecificGuaranteedDuration, band.guaranteedAdditionalDuration, band.paidDuration,
                           rate, band.multiplier, unrounded, rounded, rounding});
        total = total + rounded;
    }
    GrossCompensationTrace trace{actual.trace.inputDuration,
                                 rate,
                                 actual.trace,
                                 daily.compensationBasisAllocation.trace,
                                 daily.traceEntry,
                                 std::move(banded.traceEntries),
                                 std::move(entries),
                                 GrossCompensationTrace::TotalCalculationOrder::sumIndividuallyRoundedComponents,
                                 total};
    return {std::move(components), total, std::move(trace)};
}

}  // namespace tessel
