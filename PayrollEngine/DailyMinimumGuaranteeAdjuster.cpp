#include "DailyMinimumGuaranteeAdjuster.hpp"

#include "PayBandAllocator.hpp"

namespace tessel {
namespace {

using Reason = DailyMinimumGuaranteeTraceEntry::Reason;

struct Decision {
    Reason reason;
    WorkDuration additional;
};

Decision decide(WorkDuration actual, WorkDuration minimum, DailyMinimumGuaranteeEligibility eligibility) {
    if (actual > WorkDuration()) {
        if (actual >= minimum) return {Reason::notAppliedMinimumMetOrExceeded, WorkDuration()};
        return {Reason::appliedMinimumNotMet, minimum - actual};
    }
    if (eligibility == DailyMinimumGuaranteeEligibility::actualWorkRequired) {
        return {Reason::notAppliedNoActualWork, WorkDuration()};
    }
    return {Reason::appliedConfirmedWorkedDay, minimum};
}

WorkDuration allocatedTo(const PayBandAllocationResult& allocation, const RuleID& band) {
    for (const auto& component : allocation.components) {
        if (component.ruleID == band) return component.allocatedDuration;
    }
    return WorkDuration();
}

std::vector<PayBandCompensationBasisComponent> components(const PayBandAllocationResult& actual,
                                                          const PayBandAllocationResult& basis,
                                                          const RuleID& guaranteeRuleID) {
    std::vector<PayBandCompensationBasisComponent> result;
    result.reserve(basis.components.size());
    for (const auto& paid : basis.components) {
        const WorkDuration actualTime = allocatedTo(actual, paid.ruleID);
        const WorkDuration guaranteed = paid.allocatedDuration - actualTime;
        std::optional<RuleID> applied;
        if (guaranteed > WorkDuration()) applied = guaranteeRuleID;
        result.push_back({paid.ruleID, paid.multiplier, actualTime, guaranteed, WorkDuration(), guaranteed,
                          paid.allocatedDuration, applied});
    }
    return result;
}

}  // namespace

std::vector<PayBandCompensationBasisComponent> DailyMinimumGuaranteeAdjuster::unguaranteedComponents(
    const PayBandAllocationResult& allocation) {
    std::vector<PayBandCompensationBasisComponent> result;
    result.reserve(allocation.components.size());
    for (const auto& component : allocation.components) {
        result.push_back({component.ruleID, component.multiplier, component.allocatedDuration, WorkDuration(),
                          WorkDuration(), WorkDuration(), component.allocatedDuration, std::nullopt});
    }
    return result;
}

DailyMinimumGuaranteeAdjustmentResult DailyMinimumGuaranteeAdjuster::adjust(
    const PayBandAllocationResult& actualAllocation, const std::optional<DailyMinimumGuarantee>& guarantee,
    DailyMinimumGuaranteeEligibility eligibility) {
    if (!guarantee) {
        return {actualAllocation, actualAllocation, unguaranteedComponents(actualAllocation), std::nullopt};
    }
    const WorkDuration actual = actualAllocation.trace.inputDuration;
    const Decision decision = decide(actual, guarantee->minimumPaidDuration(), eligibility);
    const DailyMinimumGuaranteeTraceEntry entry{guarantee->ruleID(),  actual,
                                                guarantee->minimumPaidDuration(), decision.additional,
                                                actual + decision.additional,      decision.reason};
    if (decision.additional == WorkDuration()) {
        return {actualAllocation, actualAllocation, unguaranteedComponents(actualAllocation), entry};
    }

    PayBandAllocationInput extended = actualAllocation.input;
    extended.segments.push_back({PayBandAllocationTimelineSegment::Kind::guaranteedCompensation, decision.additional});
    PayBandAllocationResult basis = PayBandAllocator::allocate(extended, actualAllocation.schedule);
    auto basisComponents = components(actualAllocation, basis, guarantee->ruleID());
    return {actualAllocation, std::move(basis), std::move(basisComponents), entry};
}

}  // namespace tessel
