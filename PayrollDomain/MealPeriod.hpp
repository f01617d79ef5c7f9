#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "Instant.hpp"
#include "RuleID.hpp"
#include "WorkDuration.hpp"

namespace tessel {

struct MealTimelineEvent {
    enum class Kind { call, mealOut, mealIn, wrap };
    Kind kind = Kind::call;
    Instant timestamp;
    bool operator==(const MealTimelineEvent&) const noexcept = default;
};

std::string_view toRawValue(MealTimelineEvent::Kind kind) noexcept;
std::optional<MealTimelineEvent::Kind> mealTimelineEventKindFromRawValue(std::string_view raw) noexcept;

// A called grace period that protects a meal taken shortly after its due time.
struct MealGraceExtension {
    WorkDuration duration;
    bool retroactiveIfExceeded = false;  // when exceeded, penalties count from the original due time
    bool operator==(const MealGraceExtension&) const noexcept = default;
};

// No value means the rule has no grace.
using MealGraceRule = std::optional<MealGraceExtension>;

enum class MealPeriodRuleValidationErrorCase {
    dueDurationMustBePositive,
    penaltyIntervalMustBePositive,
    graceDurationMustBePositive,
};

class MealPeriodRuleValidationError : public CaseError<MealPeriodRuleValidationErrorCase> {
public:
    using Case = MealPeriodRuleValidationErrorCase;
    explicit MealPeriodRuleValidationError(Case errorCase);
};

// A meal is due a set time after its clock starts; each penalty interval, or part of one, that passes
// before the meal begins is one penalty.
class MealPeriodRule {
public:
    using ValidationError = MealPeriodRuleValidationError;

    MealPeriodRule(RuleID ruleID, WorkDuration dueAfterClockStart, WorkDuration penaltyInterval, MealGraceRule grace);

    const RuleID& ruleID() const noexcept { return ruleID_; }
    WorkDuration dueAfterClockStart() const noexcept { return dueAfterClockStart_; }
    WorkDuration penaltyInterval() const noexcept { return penaltyInterval_; }
    const MealGraceRule& grace() const noexcept { return grace_; }
    bool operator==(const MealPeriodRule&) const noexcept = default;

private:
    RuleID ruleID_;
    WorkDuration dueAfterClockStart_;
    WorkDuration penaltyInterval_;
    MealGraceRule grace_;
};

struct MealPeriodOrdinal {
    int value = 1;  // 1 for the first meal, 2 for the second, …
    auto operator<=>(const MealPeriodOrdinal&) const noexcept = default;
};

struct MealPeriodEvaluationInput {
    MealPeriodOrdinal mealPeriodOrdinal;
    std::optional<MealTimelineEvent> clockStart;
    // The event that ends the count: the meal out, or wrap when no meal was taken.
    std::optional<MealTimelineEvent> satisfactionEvent;
};

struct FirstMealEvaluationInput {
    std::optional<Instant> employeeCall;
    std::optional<Instant> generalCrewCall;
    std::optional<Instant> mealOut;
    bool nonDeductibleBreakfast = false;
    bool graceWasCalled = false;
};

enum class FirstMealClockResolution { employeeCall, generalCrewCall, generalCrewCallBecauseNDB };

enum class FirstMealGraceDisposition {
    notCalled,
    eligible,
    protected_,  // "protected" is a keyword here; its raw value is "protected"
    exceeded,
    ineligiblePrecallWithoutNDB,
    ineligibleLaterCall,
};

std::string_view toRawValue(FirstMealClockResolution resolution) noexcept;
std::string_view toRawValue(FirstMealGraceDisposition disposition) noexcept;
// The review's words for the first meal's grace; the NDB variants apply where NDB reset the clock.
std::string_view description(FirstMealGraceDisposition disposition, FirstMealClockResolution resolution) noexcept;

// Two occurrences are the same exactly when both ordinals are equal.
struct MealPenaltyOccurrenceID {
    MealPeriodOrdinal mealPeriodOrdinal;
    int mealPeriodOccurrenceOrdinal = 1;
    auto operator<=>(const MealPenaltyOccurrenceID&) const noexcept = default;
};

// One penalty, standing for one penalty interval.
struct MealPenaltyOccurrence {
    MealPenaltyOccurrenceID id;
    Instant intervalStart;
    Instant intervalEnd;
    bool operator==(const MealPenaltyOccurrence&) const noexcept = default;
};

struct MealPeriodEvaluationTrace {
    RuleID ruleID;
    std::optional<MealTimelineEvent> clockStart;
    std::optional<Instant> contractualDueTime;
    std::optional<Instant> graceProtectedThrough;
    std::optional<MealTimelineEvent> satisfactionEvent;
    std::optional<WorkDuration> countedViolationDuration;
    WorkDuration penaltyInterval;
    int occurrenceCount = 0;
    std::optional<FirstMealClockResolution> firstMealClockResolution;  // first meal only
    std::optional<FirstMealGraceDisposition> firstMealGraceDisposition;  // first meal only
};

struct MealPeriodEvaluationStatus {
    enum class Case { incomplete, invalid, evaluated };
    enum class IncompleteReason { missingClockStart, missingSatisfactionEvent };
    enum class InvalidReason { satisfactionBeforeClockStart, durationOutOfRange };

    Case kind = Case::evaluated;
    std::optional<IncompleteReason> incompleteReason;
    std::optional<InvalidReason> invalidReason;

    static MealPeriodEvaluationStatus evaluated() { return {}; }
    static MealPeriodEvaluationStatus incomplete(IncompleteReason reason) { return {Case::incomplete, reason, {}}; }
    static MealPeriodEvaluationStatus invalid(InvalidReason reason) { return {Case::invalid, {}, reason}; }
    bool operator==(const MealPeriodEvaluationStatus&) const noexcept = default;
};

std::string_view toRawValue(MealPeriodEvaluationStatus::Case kind) noexcept;
std::string_view toRawValue(MealPeriodEvaluationStatus::IncompleteReason reason) noexcept;
std::string_view toRawValue(MealPeriodEvaluationStatus::InvalidReason reason) noexcept;

struct MealPeriodEvaluationResult {
    enum class Warning { graceExceededAndCountedFromOriginalDeadline };

    MealPeriodOrdinal mealPeriodOrdinal;
    MealPeriodEvaluationStatus status;
    std::vector<MealPenaltyOccurrence> occurrences;  // none unless evaluated
    std::vector<Warning> warnings;
    MealPeriodEvaluationTrace trace;
};

std::string_view toRawValue(MealPeriodEvaluationResult::Warning warning) noexcept;

}  // namespace tessel
