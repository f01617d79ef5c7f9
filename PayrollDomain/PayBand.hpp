#pragma once

#include <optional>

#include "DurationBasis.hpp"
#include "RateMultiplier.hpp"
#include "RuleID.hpp"
#include "WorkDuration.hpp"

namespace tessel {

// Where a band begins: an inclusive lower bound measured on its own basis.
struct PayBandEntryThreshold {
    WorkDuration duration;
    DurationBasis basis = DurationBasis::worked;
    bool operator==(const PayBandEntryThreshold&) const noexcept = default;
};

enum class PayBandValidationErrorCase { upperBoundaryMustExceedLowerBoundary };

class PayBandValidationError : public CaseError<PayBandValidationErrorCase> {
public:
    using Case = PayBandValidationErrorCase;
    explicit PayBandValidationError(const RuleID& ruleID);
};

// One band of a schedule: straight time, time and a half, double time, or whatever a ruleset defines.
class PayBand {
public:
    using ValidationError = PayBandValidationError;

    // An absent upper bound makes the band open-ended; a present one must lie above the threshold.
    PayBand(RuleID ruleID, PayBandEntryThreshold entryThreshold, std::optional<WorkDuration> upperBound,
            RateMultiplier multiplier);

    const RuleID& ruleID() const noexcept { return ruleID_; }
    const PayBandEntryThreshold& entryThreshold() const noexcept { return entryThreshold_; }
    const std::optional<WorkDuration>& upperBound() const noexcept { return upperBound_; }
    const RateMultiplier& multiplier() const noexcept { return multiplier_; }
    bool isOpenEnded() const noexcept { return !upperBound_; }

    bool operator==(const PayBand&) const noexcept = default;

private:
    RuleID ruleID_;
    PayBandEntryThreshold entryThreshold_;
    std::optional<WorkDuration> upperBound_;
    RateMultiplier multiplier_;
};

}  // namespace tessel
