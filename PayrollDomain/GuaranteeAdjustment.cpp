#include "GuaranteeAdjustment.hpp"

namespace tessel {

DailyMinimumGuaranteeValidationError::DailyMinimumGuaranteeValidationError()
    : CaseError(Case::minimumPaidDurationMustBePositive, "minimumPaidDurationMustBePositive",
                "A daily minimum must pay more than zero time.") {}

DailyMinimumGuarantee::DailyMinimumGuarantee(RuleID ruleID, WorkDuration minimumPaidDuration)
    : ruleID_(std::move(ruleID)), minimumPaidDuration_(minimumPaidDuration) {
    if (minimumPaidDuration_ == WorkDuration()) throw ValidationError();
}

std::string_view toRawValue(DailyMinimumGuaranteeEligibility eligibility) noexcept {
    return eligibility == DailyMinimumGuaranteeEligibility::actualWorkRequired ? "actualWorkRequired"
                                                                               : "confirmedWorkedDay";
}

std::optional<DailyMinimumGuaranteeEligibility> dailyMinimumGuaranteeEligibilityFromRawValue(
    std::string_view raw) noexcept {
    if (raw == "actualWorkRequired") return DailyMinimumGuaranteeEligibility::actualWorkRequired;
    if (raw == "confirmedWorkedDay") return DailyMinimumGuaranteeEligibility::confirmedWorkedDay;
    return std::nullopt;
}

std::string_view toRawValue(DailyMinimumGuaranteeTraceEntry::Reason reason) noexcept {
    using Reason = DailyMinimumGuaranteeTraceEntry::Reason;
    switch (reason) {
        case Reason::appliedMinimumNotMet: return "appliedMinimumNotMet";
        case Reason::appliedConfirmedWorkedDay: return "appliedConfirmedWorkedDay";
        case Reason::notAppliedNoActualWork: return "notAppliedNoActualWork";
        case Reason::notAppliedMinimumMetOrExceeded: return "notAppliedMinimumMetOrExceeded";
    }
    return {};
}

std::string_view description(DailyMinimumGuaranteeTraceEntry::Reason reason) noexcept {
    using Reason = DailyMinimumGuaranteeTraceEntry::Reason;
    switch (reason) {
        case Reason::appliedMinimumNotMet: return "positive actual work was below the configured daily minimum";
        case Reason::appliedConfirmedWorkedDay:
            return "the confirmed Worked or Prep day received its applicable daily minimum";
        case Reason::notAppliedNoActualWork: return "no actual work was supplied, so no paid day was invented";
        case Reason::notAppliedMinimumMetOrExceeded: return "actual work met or exceeded the configured daily minimum";
    }
    return {};
}

std::string_view description(DailyMinimumGuaranteeSource source) noexcept {
    return source == DailyMinimumGuaranteeSource::rulesetDailyGuarantee ? "ruleset daily guarantee"
                                                                        : "personal daily guarantee";
}

std::string_view toRawValue(MinimumBandGuaranteeTraceEntry::Reason reason) noexcept {
    using Reason = MinimumBandGuaranteeTraceEntry::Reason;
    switch (reason) {
        case Reason::appliedMinimumNotMet: return "appliedMinimumNotMet";
        case Reason::notAppliedNoCompensationBasisAllocation: return "notAppliedNoCompensationBasisAllocation";
        case Reason::notAppliedMinimumMetOrExceeded: return "notAppliedMinimumMetOrExceeded";
        case Reason::notAppliedMinimumSatisfiedByExistingPaidDuration:
            return "notAppliedMinimumSatisfiedByExistingPaidDuration";
    }
    return {};
}

std::string_view description(MinimumBandGuaranteeTraceEntry::Reason reason) noexcept {
    using Reason = MinimumBandGuaranteeTraceEntry::Reason;
    switch (reason) {
        case Reason::appliedMinimumNotMet: return "The band had a positive allocation below its configured minimum.";
        case Reason::notAppliedNoCompensationBasisAllocation:
            return "The band had no compensation-basis allocation, so its minimum did not apply.";
        case Reason::notAppliedMinimumMetOrExceeded: return "The actual allocation already met or exceeded its minimum.";
        case Reason::notAppliedMinimumSatisfiedByExistingPaidDuration:
            return "Existing paid allocation from the daily minimum already satisfied this band minimum.";
    }
    return {};
}

}  // namespace tessel
