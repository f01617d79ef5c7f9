#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "PayBand.hpp"

namespace tessel {

enum class PayBandScheduleValidationErrorCase {
    firstBandMustBeginAtZero,
    bandsOutOfOrder,
    gap,
    overlap,
    openEndedBandMustBeFinal,
    duplicateRuleID,
    emptyBands,
};

class PayBandScheduleValidationError : public CaseError<PayBandScheduleValidationErrorCase> {
public:
    using Case = PayBandScheduleValidationErrorCase;
    static PayBandScheduleValidationError firstBandMustBeginAtZero(WorkDuration actual);
    static PayBandScheduleValidationError bandsOutOfOrder(const RuleID& previous, const RuleID& current);
    static PayBandScheduleValidationError gap(const RuleID& previous, const RuleID& current);
    static PayBandScheduleValidationError overlap(const RuleID& previous, const RuleID& current);
    static PayBandScheduleValidationError openEndedBandMustBeFinal(const RuleID& ruleID);
    static PayBandScheduleValidationError duplicateRuleID(const RuleID& ruleID);
    static PayBandScheduleValidationError emptyBands();

private:
    using CaseError::CaseError;
};

// The ordered bands of a day. Each band's upper bound equals the next band's threshold duration
// (the bases may differ); the final band may be closed, which limits how much time the schedule holds.
class PayBandSchedule {
public:
    using ValidationError = PayBandScheduleValidationError;

    // Validates and throws the first error found.
    explicit PayBandSchedule(std::vector<PayBand> bands);

    const std::vector<PayBand>& bands() const noexcept { return *bands_; }
    std::optional<std::size_t> indexOf(const RuleID& ruleID) const noexcept;

    bool operator==(const PayBandSchedule& other) const noexcept { return bands() == other.bands(); }

private:
    // Immutable once validated, so copies (every allocation result keeps the schedule it used) share it.
    std::shared_ptr<const std::vector<PayBand>> bands_;
};

}  // namespace tessel
