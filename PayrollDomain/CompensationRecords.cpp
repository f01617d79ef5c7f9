// Validation and raw values of the turnaround, weekly meal penalty and supplemental pay records.
#include "SupplementalCompensation.hpp"
#include "Turnaround.hpp"
#include "WeeklyMealPenalty.hpp"

namespace tessel {

std::string_view toRawValue(TurnaroundEvaluationStatus::Case kind) noexcept {
    using Case = TurnaroundEvaluationStatus::Case;
    switch (kind) {
        case Case::satisfied: return "satisfied";
        case Case::shortfall: return "shortfall";
        case Case::incompleteUnconfiguredRequiredRest: return "incompleteUnconfiguredRequiredRest";
        case Case::incompleteMissingPriorWrap: return "incompleteMissingPriorWrap";
        case Case::noNextCall: return "noNextCall";
        case Case::exactlySatisfied: return "exactlySatisfied";
    }
    return {};
}

std::optional<std::string_view> description(TurnaroundEvaluationStatus::Case kind) noexcept {
    using Case = TurnaroundEvaluationStatus::Case;
    switch (kind) {
        case Case::exactlySatisfied: return "Call exactly at required turnaround";
        case Case::noNextCall: return "No next qualifying Call available";
        case Case::incompleteMissingPriorWrap: return "Prior Wrap is missing";
        case Case::incompleteUnconfiguredRequiredRest: return "Turnaround is not configured for this engagement";
        case Case::satisfied:
        case Case::shortfall: return std::nullopt;
    }
    return std::nullopt;
}

FixedDollarMealPenaltyScheduleValidationError::FixedDollarMealPenaltyScheduleValidationError(Case errorCase)
    : CaseError(errorCase,
                errorCase == Case::earlyAmountsRequired ? "earlyAmountsRequired"
                : errorCase == Case::negativeAmount     ? "negativeAmount"
                                                        : "inconsistentCurrency",
                errorCase == Case::earlyAmountsRequired ? "A meal penalty schedule needs the amount of its first penalty."
                : errorCase == Case::negativeAmount     ? "A meal penalty amount cannot be negative."
                                                        : "All amounts of a meal penalty schedule must be in one currency.") {}

FixedDollarMealPenaltySchedule::FixedDollarMealPenaltySchedule(RuleID ruleID, std::vector<Money> earlyOrdinalAmounts,
                                                               Money repeatingAmount)
    : ruleID_(std::move(ruleID)), earlyOrdinalAmounts_(std::move(earlyOrdinalAmounts)), repeatingAmount_(repeatingAmount) {
    using Case = ValidationError::Case;
    if (earlyOrdinalAmounts_.empty()) throw ValidationError(Case::earlyAmountsRequired);
    for (const Money& amount : earlyOrdinalAmounts_) {
        if (amount.amount().isNegative()) throw ValidationError(Case::negativeAmount);
    }
    if (repeatingAmount_.amount().isNegative()) throw ValidationError(Case::negativeAmount);
    for (const Money& amount : earlyOrdinalAmounts_) {
        if (amount.currency() != repeatingAmount_.currency()) throw ValidationError(Case::inconsistentCurrency);
    }
}

const Money& FixedDollarMealPenaltySchedule::amountFor(int occurrenceOrdinal) const noexcept {
    const auto index = static_cast<std::size_t>(occurrenceOrdinal - 1);
    return occurrenceOrdinal >= 1 && index < earlyOrdinalAmounts_.size() ? earlyOrdinalAmounts_[index]
                                                                         : repeatingAmount_;
}

std::string_view toRawValue(WeeklyMealPenaltyOccurrence::Compensation::Case kind) noexcept {
    return kind == WeeklyMealPenaltyOccurrence::Compensation::Case::fixedDollar ? "fixedDollar"
                                                                                : "prevailingRateUnverified";
}

std::string_view toRawValue(WeeklyMealPenaltyOccurrence::Warning) noexcept {
    return "prevailingRateRequiresContractVerification";
}

UnworkedHolidayRuleValidationError::UnworkedHolidayRuleValidationError(Case errorCase)
    : CaseError(errorCase, errorCase == Case::invalidDuration ? "invalidDuration" : "invalidMultiplier",
                errorCase == Case::invalidDuration ? "An unworked holiday must pay at least one second."
                                                   : "An unworked holiday multiplier must be a number of zero or more.") {}

UnworkedHolidayRule::UnworkedHolidayRule(Formula formula, std::int64_t compensatedSeconds, Decimal rateMultiplier)
    : formula_(formula), compensatedSeconds_(compensatedSeconds), rateMultiplier_(rateMultiplier) {
    if (compensatedSeconds_ < 1) throw ValidationError(ValidationError::Case::invalidDuration);
    if (rateMultiplier_.isNaN() || rateMultiplier_.isNegative()) {
        throw ValidationError(ValidationError::Case::invalidMultiplier);
    }
}

std::string_view toRawValue(UnworkedHolidayRule::Formula) noexcept { return "fixedStraightTimeDuration"; }

std::optional<UnworkedHolidayRule::Formula> unworkedHolidayFormulaFromRawValue(std::string_view raw) noexcept {
    if (raw == "fixedStraightTimeDuration") return UnworkedHolidayRule::Formula::fixedStraightTimeDuration;
    return std::nullopt;
}

}  // namespace tessel
