#include "MealPeriod.hpp"

namespace tessel {

std::string_view toRawValue(MealTimelineEvent::Kind kind) noexcept {
    switch (kind) {
        case MealTimelineEvent::Kind::call: return "call";
        case MealTimelineEvent::Kind::mealOut: return "mealOut";
        case MealTimelineEvent::Kind::mealIn: return "mealIn";
        case MealTimelineEvent::Kind::wrap: return "wrap";
    }
    return {};
}

std::optional<MealTimelineEvent::Kind> mealTimelineEventKindFromRawValue(std::string_view raw) noexcept {
    for (auto kind : {MealTimelineEvent::Kind::call, MealTimelineEvent::Kind::mealOut, MealTimelineEvent::Kind::mealIn,
                      MealTimelineEvent::Kind::wrap}) {
        if (toRawValue(kind) == raw) return kind;
    }
    return std::nullopt;
}

MealPeriodRuleValidationError::MealPeriodRuleValidationError(Case errorCase)
    : CaseError(errorCase,
                errorCase == Case::dueDurationMustBePositive       ? "dueDurationMustBePositive"
                : errorCase == Case::penaltyIntervalMustBePositive ? "penaltyIntervalMustBePositive"
                                                                   : "graceDurationMustBePositive",
                errorCase == Case::dueDurationMustBePositive       ? "A meal must be due more than zero time after its clock starts."
                : errorCase == Case::penaltyIntervalMustBePositive ? "A meal penalty interval must be longer than zero."
                                                                   : "A meal grace period must be longer than zero.") {}

MealPeriodRule::MealPeriodRule(RuleID ruleID, WorkDuration dueAfterClockStart, WorkDuration penaltyInterval,
                               MealGraceRule grace)
    : ruleID_(std::move(ruleID)), dueAfterClockStart_(dueAfterClockStart), penaltyInterval_(penaltyInterval), grace_(grace) {
    if (dueAfterClockStart_ == WorkDuration()) throw ValidationError(ValidationError::Case::dueDurationMustBePositive);
    if (penaltyInterval_ == WorkDuration()) throw ValidationError(ValidationError::Case::penaltyIntervalMustBePositive);
    if (grace_ && grace_->duration == WorkDuration()) {
        throw ValidationError(ValidationError::Case::graceDurationMustBePositive);
    }
}

std::string_view toRawValue(FirstMealClockResolution resolution) noexcept {
    switch (resolution) {
        case FirstMealClockResolution::employeeCall: return "employeeCall";
        case FirstMealClockResolution::generalCrewCall: return "generalCrewCall";
        case FirstMealClockResolution::generalCrewCallBecauseNDB: return "generalCrewCallBecauseNDB";
    }
    return {};
}

std::string_view toRawValue(FirstMealGraceDisposition disposition) noexcept {
    switch (disposition) {
        case FirstMealGraceDisposition::notCalled: return "notCalled";
        case FirstMealGraceDisposition::eligible: return "eligible";
        case FirstMealGraceDisposition::protected_: return "protected";
        case FirstMealGraceDisposition::exceeded: return "exceeded";
        case FirstMealGraceDisposition::ineligiblePrecallWithoutNDB: return "ineligiblePrecallWithoutNDB";
        case FirstMealGraceDisposition::ineligibleLaterCall: return "ineligibleLaterCall";
    }
    return {};
}

std::string_view description(FirstMealGraceDisposition disposition, FirstMealClockResolution resolution) noexcept {
    const bool ndb = resolution == FirstMealClockResolution::generalCrewCallBecauseNDB;
    switch (disposition) {
        case FirstMealGraceDisposition::notCalled:
            return ndb ? "NDB reset the first-meal clock to General Crew Call; grace was not called."
                       : "Grace was not called.";
        case FirstMealGraceDisposition::ineligibleLaterCall:
            return "Grace was called for the general crew, but this employee was called later.";
        case FirstMealGraceDisposition::ineligiblePrecallWithoutNDB:
            return "Grace was called for the general crew, but this precalled employee had no NDB.";
        case FirstMealGraceDisposition::eligible: return "Grace was called and this employee was eligible.";
        case FirstMealGraceDisposition::exceeded:
            return ndb ? "NDB reset the first-meal clock to General Crew Call; called grace was exceeded."
                       : "Grace was called and exceeded; penalties count from the original due time.";
        case FirstMealGraceDisposition::protected_:
            return ndb ? "NDB reset the first-meal clock to General Crew Call; called grace protected this meal."
                       : "Grace was called and protected this employee through the grace window.";
    }
    return {};
}

std::string_view toRawValue(MealPeriodEvaluationStatus::Case kind) noexcept {
    switch (kind) {
        case MealPeriodEvaluationStatus::Case::incomplete: return "incomplete";
        case MealPeriodEvaluationStatus::Case::invalid: return "invalid";
        case MealPeriodEvaluationStatus::Case::evaluated: return "evaluated";
    }
    return {};
}

std::string_view toRawValue(MealPeriodEvaluationStatus::IncompleteReason reason) noexcept {
    return reason == MealPeriodEvaluationStatus::IncompleteReason::missingClockStart ? "missingClockStart"
                                                                                     : "missingSatisfactionEvent";
}

std::string_view toRawValue(MealPeriodEvaluationStatus::InvalidReason reason) noexcept {
    return reason == MealPeriodEvaluationStatus::InvalidReason::satisfactionBeforeClockStart
               ? "satisfactionBeforeClockStart"
               : "durationOutOfRange";
}

std::string_view toRawValue(MealPeriodEvaluationResult::Warning) noexcept {
    return "graceExceededAndCountedFromOriginalDeadline";
}

}  // namespace tessel
