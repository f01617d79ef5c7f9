#pragma once

#include "PayBand.hpp"

namespace tessel {

// When a band is first entered, counted from call, for the guarantee that targets it.
struct PayBandTargetEntry {
    RuleID payBandRuleID;
    RuleID guaranteeRuleID;
    WorkDuration elapsedDurationFromCall;
    // The next whole payroll tenth strictly after the entry point.
    WorkDuration firstQualifyingElapsedDurationFromCall;
    PayBandEntryThreshold threshold;
    WorkDuration minimumPaidDuration;
    RateMultiplier multiplier;
    bool operator==(const PayBandTargetEntry&) const noexcept = default;
};

}  // namespace tessel
