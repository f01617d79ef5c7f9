#pragma once

#include "PayrollDomain/GuaranteeAdjustment.hpp"

namespace tessel {

enum class MinimumBandGuaranteeAdjustmentErrorCase {
    targetPayBandNotFound,
    duplicateGuaranteeRuleID,
    multipleGuaranteesForTargetPayBand,
};

class MinimumBandGuaranteeAdjustmentError : public CaseError<MinimumBandGuaranteeAdjustmentErrorCase> {
public:
    using Case = MinimumBandGuaranteeAdjustmentErrorCase;
    MinimumBandGuaranteeAdjustmentError(Case errorCase, const RuleID& ruleID);
};

// Once a band is reached, pays it at least its minimum, counting time the daily minimum already put there.
class MinimumBandGuaranteeAdjuster {
public:
    using AdjustmentError = MinimumBandGuaranteeAdjustmentError;

    // The guarantee list is checked completely before anything is adjusted.
    static MinimumBandGuaranteeAdjustmentResult adjust(const PayBandAllocationResult& originalAllocation,
                                                       std::vector<PayBandCompensationBasisComponent> components,
                                                       const std::vector<MinimumBandGuarantee>& guarantees);
};

}  // namespace tessel
