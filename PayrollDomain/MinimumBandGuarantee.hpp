#pragma once

#include "RuleID.hpp"
#include "WorkDuration.hpp"

namespace tessel {

enum class MinimumBandGuaranteeValidationErrorCase {
    minimumPaidDurationMustBePositive,
    guaranteeAndTargetRuleIDsMustDiffer,
};

class MinimumBandGuaranteeValidationError : public CaseError<MinimumBandGuaranteeValidationErrorCase> {
public:
    using Case = MinimumBandGuaranteeValidationErrorCase;
    explicit MinimumBandGuaranteeValidationError(Case errorCase);
};

// Once a worker reaches the target band, that band is paid at least the minimum.
class MinimumBandGuarantee {
public:
    using ValidationError = MinimumBandGuaranteeValidationError;

    MinimumBandGuarantee(RuleID ruleID, RuleID targetPayBandRuleID, WorkDuration minimumPaidDuration);

    const RuleID& ruleID() const noexcept { return ruleID_; }
    const RuleID& targetPayBandRuleID() const noexcept { return targetPayBandRuleID_; }
    WorkDuration minimumPaidDuration() const noexcept { return minimumPaidDuration_; }
    bool operator==(const MinimumBandGuarantee&) const noexcept = default;

private:
    RuleID ruleID_;
    RuleID targetPayBandRuleID_;
    WorkDuration minimumPaidDuration_;
};

}  // namespace tessel
