#include "MinimumBandGuarantee.hpp"

namespace tessel {

MinimumBandGuaranteeValidationError::MinimumBandGuaranteeValidationError(Case errorCase)
    : CaseError(errorCase,
                errorCase == Case::minimumPaidDurationMustBePositive ? "minimumPaidDurationMustBePositive"
                                                                     : "guaranteeAndTargetRuleIDsMustDiffer",
                errorCase == Case::minimumPaidDurationMustBePositive
                    ? "A band minimum must pay more than zero time."
                    : "A band minimum cannot use the same rule identifier as the band it guarantees.") {}

MinimumBandGuarantee::MinimumBandGuarantee(RuleID ruleID, RuleID targetPayBandRuleID, WorkDuration minimumPaidDuration)
    : ruleID_(std::move(ruleID)),
      targetPayBandRuleID_(std::move(targetPayBandRuleID)),
      minimumPaidDuration_(minimumPaidDuration) {
    if (minimumPaidDuration_ == WorkDuration()) throw ValidationError(ValidationError::Case::minimumPaidDurationMustBePositive);
    if (ruleID_ == targetPayBandRuleID_) throw ValidationError(ValidationError::Case::guaranteeAndTargetRuleIDsMustDiffer);
}

}  // namespace tessel
