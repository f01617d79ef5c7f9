#include "MealPenaltyEvaluator.hpp"

namespace tessel {
namespace {

using Status = MealPeriodEvaluationStatus;
using Disposition = FirstMealGraceDisposition;
using Resolution = FirstMealClockResolution;

// No crew day produces anything near this many penalties; a larger count is out of range rather
// than a list too long to hold.
constexpr std::int64_t maximumOccurrences = 1'000'000;

std::optional<Instant> checkedAdd(Instant instant, WorkDuration duration) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(instant.time_since_epoch().count(), duration.seconds(), &sum)) return std::nullopt;
    return Instant(std::chrono::seconds(sum));
}

std::optional<std::int64_t> checkedDifference(Instant later, Instant earlier) {
    std::int64_t difference = 0;
    if (__builtin_sub_overflow(later.time_since_epoch().count(), earlier.time_since_epoch().count(), &difference)) {
        return std::nullopt;
    }
    return difference;
}

MealPeriodEvaluationResult count(const MealPeriodRule& rule, const MealPeriodEvaluationInput& input, bool graceApplies,
                                 MealPeriodEvaluationTrace trace) {
    MealPeriodEvaluationResult result{input.mealPeriodOrdinal, Status::evaluated(), {}, {}, std::move(trace)};
    result.trace.clockStart = input.clockStart;
    result.trace.satisfactionEvent = input.satisfactionEvent;
    result.trace.penaltyInterval = rule.penaltyInterval();
    if (!input.clockStart) return result.status = Status::incomplete(Status::IncompleteReason::missingClockStart), result;
    if (!input.satisfactionEvent) {
        return result.status = Status::incomplete(Status::IncompleteReason::missingSatisfactionEvent), result;
    }
    const Instant start = input.clockStart->timestamp;
    const Instant satisfied = input.satisfactionEvent->timestamp;
    if (satisfied < start) return result.status = Status::invalid(Status::InvalidReason::satisfactionBeforeClockStart), result;

    const auto outOfRange = [&] { return result.status = Status::invalid(Status::InvalidReason::durationOutOfRange), result; };
    const auto due = checkedAdd(start, rule.dueAfterClockStart());
    if (!due) return outOfRange();
    result.trace.contractualDueTime = due;
    std::optional<Instant> graceEnd;
    if (graceApplies && rule.grace()) {
        graceEnd = checkedAdd(*due, rule.grace()->duration);
        if (!graceEnd) return outOfRange();
        result.trace.graceProtectedThrough = graceEnd;
    }
    // A meal out exactly at the end of the protected window is protected.
    if (satisfied <= *due || (graceEnd && satisfied <= *graceEnd)) return result;

    Instant countFrom = *due;
    if (graceEnd && rule.grace()->retroactiveIfExceeded) {
        result.warnings.push_back(MealPeriodEvaluationResult::Warning::graceExceededAndCountedFromOriginalDeadline);
    } else if (graceEnd) {
        countFrom = *graceEnd;
    }
    const auto violation = checkedDifference(satisfied, countFrom);
    if (!violation) return outOfRange();
    const std::int64_t interval = rule.penaltyInterval().seconds();
    const std::int64_t occurrences = *violation / interval + (*violation % interval != 0 ? 1 : 0);
    if (occurrences > maximumOccurrences) return outOfRange();

    result.trace.countedViolationDuration = WorkDuration(*violation);
    result.trace.occurrenceCount = static_cast<int>(occurrences);
    for (int k = 1; k <= occurrences; ++k) {
        const Instant from = countFrom + std::chrono::seconds((k - 1) * interval);
        result.occurrences.push_back({{input.mealPeriodOrdinal, k}, from, from + std::chrono::seconds(interval)});
    }
    return result;
}

Disposition initialDisposition(const FirstMealEvaluationInput& input) {
    if (!input.graceWasCalled || !input.employeeCall || !input.generalCrewCall) return Disposition::notCalled;
    if (*input.employeeCall == *input.generalCrewCall) return Disposition::eligible;
    if (*input.employeeCall < *input.generalCrewCall) {
        return input.nonDeductibleBreakfast ? Disposition::eligible : Disposition::ineligiblePrecallWithoutNDB;
    }
    return Disposition::ineligibleLaterCall;
}

// An eligible employee whose meal came after the due time is protected within the grace window and
// has exceeded it after. Without a grace duration in the rule there is no window to be protected by.
Disposition finalDisposition(Disposition initial, const MealPeriodRule& rule, std::optional<Instant> clock,
                             std::optional<Instant> mealOut) {
    if (initial != Disposition::eligible || !rule.grace() || !clock || !mealOut) return initial;
    const auto due = checkedAdd(*clock, rule.dueAfterClockStart());
    if (!due || *mealOut <= *due) return initial;
    const auto graceEnd = checkedAdd(*due, rule.grace()->duration);
    return graceEnd && *mealOut <= *graceEnd ? Disposition::protected_ : Disposition::exceeded;
}

}  // namespace

MealPeriodEvaluationResult MealPenaltyEvaluator::evaluatePeriod(const MealPeriodRule& rule,
                                                                const MealPeriodEvaluationInput& input) {
    return count(rule, input, true, MealPeriodEvaluationTrace{rule.ruleID(), {}, {}, {}, {}, {}, {}, 0, {}, {}});
}

MealPeriodEvaluationResult MealPenaltyEvaluator::evaluateFirstMeal(const MealPeriodRule& rule,
                                                                   const FirstMealEvaluationInput& input) {
    std::optional<Instant> clock;
    std::optional<Resolution> resolution;
    const bool precall = input.employeeCall && input.generalCrewCall && *input.employeeCall < *input.generalCrewCall;
    if (precall && input.nonDeductibleBreakfast) {
        clock = input.generalCrewCall;
        resolution = Resolution::generalCrewCallBecauseNDB;
    } else if (input.employeeCall) {
        clock = input.employeeCall;
        resolution = Resolution::employeeCall;
    } else if (input.generalCrewCall) {
        clock = input.generalCrewCall;
        resolution = Resolution::generalCrewCall;
    }
    const Disposition disposition = finalDisposition(initialDisposition(input), rule, clock, input.mealOut);
    const bool graceApplies = disposition == Disposition::eligible || disposition == Disposition::protected_ ||
                              disposition == Disposition::exceeded;

    MealPeriodEvaluationInput period{MealPeriodOrdinal{1}, {}, {}};
    if (clock) period.clockStart = MealTimelineEvent{MealTimelineEvent::Kind::call, *clock};
    if (input.mealOut) period.satisfactionEvent = MealTimelineEvent{MealTimelineEvent::Kind::mealOut, *input.mealOut};
    return count(rule, period, graceApplies,
                 MealPeriodEvaluationTrace{rule.ruleID(), {}, {}, {}, {}, {}, {}, 0, resolution, disposition});
}

}  // namespace tessel
