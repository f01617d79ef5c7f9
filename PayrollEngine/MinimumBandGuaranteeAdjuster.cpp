#include "MinimumBandGuaranteeAdjuster.hpp"

#include <algorithm>
#include <unordered_set>

namespace tessel {
namespace {

using Error = MinimumBandGuaranteeAdjustmentError;
using Reason = MinimumBandGuaranteeTraceEntry::Reason;

void validate(const std::vector<MinimumBandGuarantee>& guarantees, const PayBandSchedule& schedule) {
    std::unordered_set<RuleID> ids;
    for (const auto& guarantee : guarantees) {
        if (!ids.insert(guarantee.ruleID()).second) throw Error(Error::Case::duplicateGuaranteeRuleID, guarantee.ruleID());
    }
    std::unordered_set<RuleID> targets;
    for (const auto& guarantee : guarantees) {
        if (!targets.insert(guarantee.targetPayBandRuleID()).second) {
            throw Error(Error::Case::multipleGuaranteesForTargetPayBand, guarantee.targetPayBandRuleID());
        }
    }
    for (const auto& guarantee : guarantees) {
        if (!schedule.indexOf(guarantee.targetPayBandRuleID())) {
            throw Error(Error::Case::targetPayBandNotFound, guarantee.targetPayBandRuleID());
        }
    }
}

MinimumBandGuaranteeTraceEntry apply(const MinimumBandGuarantee& guarantee,
                                     std::vector<PayBandCompensationBasisComponent>& components) {
    const auto band = std::find_if(components.begin(), components.end(), [&](const auto& component) {
        return component.payBandRuleID == guarantee.targetPayBandRuleID();
    });
    MinimumBandGuaranteeTraceEntry entry{guarantee.ruleID(), guarantee.targetPayBandRuleID(), {}, {}, {}, {}, {},
                                         Reason::notAppliedNoCompensationBasisAllocation};
    if (band == components.end()) return entry;

    const WorkDuration minimum = guarantee.minimumPaidDuration();
    entry.actualDuration = band->actualAllocatedDuration;
    entry.dailyMinimumGuaranteedDuration = band->dailyMinimumGuaranteedDuration;
    entry.preBandGuaranteePaidDuration = band->actualAllocatedDuration + band->dailyMinimumGuaranteedDuration;
    entry.paidDuration = band->paidDuration;
    if (entry.preBandGuaranteePaidDuration == WorkDuration()) return entry;
    if (entry.actualDuration >= minimum) {
        entry.reason = Reason::notAppliedMinimumMetOrExceeded;
    } else if (entry.preBandGuaranteePaidDuration >= minimum) {
        entry.reason = Reason::notAppliedMinimumSatisfiedByExistingPaidDuration;
    } else {
        const WorkDuration added = minimum - entry.preBandGuaranteePaidDuration;
        band->bandSpecificGuaranteedDuration = added;
        band->guaranteedAdditionalDuration = band->dailyMinimumGuaranteedDuration + added;
        band->paidDuration = minimum;
        // The band minimum decides the band's final paid time, so it is named as the applied guarantee.
        band->appliedGuaranteeRuleID = guarantee.ruleID();
        entry.guaranteedAdditionalDuration = added;
        entry.paidDuration = minimum;
        entry.reason = Reason::appliedMinimumNotMet;
    }
    return entry;
}

std::string adjustmentCaseName(Error::Case errorCase) {
    switch (errorCase) {
        case Error::Case::targetPayBandNotFound: return "targetPayBandNotFound";
        case Error::Case::duplicateGuaranteeRuleID: return "duplicateGuaranteeRuleID";
        case Error::Case::multipleGuaranteesForTargetPayBand: return "multipleGuaranteesForTargetPayBand";
    }
    return {};
}

std::string sentence(Error::Case errorCase, const RuleID& ruleID) {
    switch (errorCase) {
        case Error::Case::targetPayBandNotFound:
            return "The band minimum targets pay band " + quoted(ruleID.value()) + ", which the schedule does not have.";
        case Error::Case::duplicateGuaranteeRuleID:
            return "The band minimum " + quoted(ruleID.value()) + " is given more than once.";
        case Error::Case::multipleGuaranteesForTargetPayBand:
            return "Pay band " + quoted(ruleID.value()) + " has more than one band minimum.";
    }
    return {};
}

}  // namespace

MinimumBandGuaranteeAdjustmentError::MinimumBandGuaranteeAdjustmentError(Case errorCase, const RuleID& ruleID)
    : CaseError(errorCase, adjustmentCaseName(errorCase), sentence(errorCase, ruleID), {{"ruleID", ruleID.value()}}) {}

MinimumBandGuaranteeAdjustmentResult MinimumBandGuaranteeAdjuster::adjust(
    const PayBandAllocationResult& originalAllocation, std::vector<PayBandCompensationBasisComponent> components,
    const std::vector<MinimumBandGuarantee>& guarantees) {
    validate(guarantees, originalAllocation.schedule);
    std::vector<MinimumBandGuaranteeTraceEntry> entries;
    entries.reserve(guarantees.size());
    for (const auto& guarantee : guarantees) entries.push_back(apply(guarantee, components));
    return {originalAllocation, std::move(components), std::move(entries)};
}

}  // namespace tessel
