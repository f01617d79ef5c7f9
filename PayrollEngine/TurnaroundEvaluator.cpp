#include "TurnaroundEvaluator.hpp"

namespace tessel {

TurnaroundEvaluationResult TurnaroundEvaluator::evaluate(const std::optional<TurnaroundRule>& rule,
                                                         const TurnaroundEvaluationInput& input) {
    using Case = TurnaroundEvaluationStatus::Case;
    TurnaroundEvaluationResult result{{}, {}};
    result.trace.priorWrap = input.priorWrap;
    result.trace.actualNextCall = input.nextCall;
    if (!rule) return result.status.kind = Case::incompleteUnconfiguredRequiredRest, result;
    result.trace.ruleID = rule->ruleID;
    result.trace.valueOrigin = rule->valueOrigin;
    result.trace.requiredRest = rule->requiredRest;
    if (!input.priorWrap) return result.status.kind = Case::incompleteMissingPriorWrap, result;

    // A required rest so long that the earliest call is beyond any representable instant is refused,
    // not wrapped around into a wrong status.
    std::int64_t earliestSeconds = 0;
    if (__builtin_add_overflow(input.priorWrap->time_since_epoch().count(), rule->requiredRest.seconds(), &earliestSeconds)) {
        throw WorkDurationValidationError(WorkDurationValidationError::Case::arithmeticOverflow);
    }
    const Instant earliest{std::chrono::seconds(earliestSeconds)};
    result.trace.earliestNextCall = earliest;
    if (!input.nextCall) return result.status.kind = Case::noNextCall, result;

    const auto rest = std::max<std::int64_t>(0, (*input.nextCall - *input.priorWrap).count());
    const WorkDuration actualRest(rest);
    if (*input.nextCall == earliest) {
        result.status.kind = Case::exactlySatisfied;
    } else if (*input.nextCall > earliest) {
        result.status = {Case::satisfied, actualRest, std::nullopt};
    } else {
        result.status = {Case::shortfall, actualRest, rule->requiredRest - actualRest};
    }
    return result;
}

}  // namespace tessel
