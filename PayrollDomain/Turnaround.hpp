#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Instant.hpp"
#include "RuleID.hpp"
#include "WorkDuration.hpp"

namespace tessel {

struct TurnaroundRule {
    RuleID ruleID;
    WorkDuration requiredRest;
    // Where the required rest came from: "engagement.turnaround.required-rest" or one of the
    // production defaults such as "production.turnaround.local.all-others".
    std::string valueOrigin;
    bool operator==(const TurnaroundRule&) const = default;
};

struct TurnaroundEvaluationInput {
    std::optional<Instant> priorWrap;
    std::optional<Instant> nextCall;
};

struct TurnaroundEvaluationStatus {
    enum class Case {
        satisfied,
        shortfall,
        incompleteUnconfiguredRequiredRest,
        incompleteMissingPriorWrap,
        noNextCall,
        exactlySatisfied,
    };

    Case kind = Case::noNextCall;
    std::optional<WorkDuration> actualRest;         // satisfied and shortfall
    std::optional<WorkDuration> shortfallDuration;  // shortfall: required rest − actual rest
    bool operator==(const TurnaroundEvaluationStatus&) const noexcept = default;
};

std::string_view toRawValue(TurnaroundEvaluationStatus::Case kind) noexcept;
// The review's words for the statuses that have fixed words (satisfied and shortfall show figures).
std::optional<std::string_view> description(TurnaroundEvaluationStatus::Case kind) noexcept;

namespace turnaround_words {
inline constexpr std::string_view earliestNextCall = "Earliest next call";
inline constexpr std::string_view actualNextCall = "Actual next call";
inline constexpr std::string_view weekendNotCalculated = "Weekend turnaround is not currently calculated.";
inline constexpr std::string_view noCallNextDay = "No call on the following day, so turnaround was not evaluated.";
}  // namespace turnaround_words

struct TurnaroundEvaluationTrace {
    std::optional<RuleID> ruleID;
    std::string valueOrigin;
    std::optional<Instant> priorWrap;
    std::optional<WorkDuration> requiredRest;
    std::optional<Instant> earliestNextCall;
    std::optional<Instant> actualNextCall;
};

struct TurnaroundEvaluationResult {
    TurnaroundEvaluationStatus status;
    TurnaroundEvaluationTrace trace;
};

}  // namespace tessel
