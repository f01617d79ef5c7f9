#include "MealPenaltyRules.hpp"

#include <algorithm>
#include <set>

#include "App/model/EntryText.hpp"
#include "App/rules/RulesetValidationError.hpp"

namespace tessel {
namespace {

using Error = ProductionRulesetValidationError;

std::string trimmed(const std::string& text) { return std::string(entry_text::trimmed(text)); }

}  // namespace

Error Error::invalidPayBand(const std::string& message) {
    return Error(Case::invalidPayBand, "invalidPayBand", message, {{"text", message}});
}
Error Error::invalidProvisionID(const std::string& id) {
    return Error(Case::invalidProvisionID, "invalidProvisionID", "The provision identifier \u201C" + id + "\u201D is invalid.", {{"id", id}});
}
Error Error::duplicateProvisionID(const std::string& id) {
    return Error(Case::duplicateProvisionID, "duplicateProvisionID",
                 "The provision identifier \u201C" + id + "\u201D is used more than once.", {{"id", id}});
}
Error Error::nameRequired() { return Error(Case::nameRequired, "nameRequired", "Ruleset name is required."); }
Error Error::invalidDuration() { return Error(Case::invalidDuration, "invalidDuration", "Minimum durations must not be negative."); }
Error Error::revisionUnavailable() {
    return Error(Case::revisionUnavailable, "revisionUnavailable",
                 "This Ruleset revision is no longer available. Close the editor and reopen the Ruleset.");
}

MealPenaltyCompensationRulesDraft MealPenaltyRules::defaults() {
    MealPenaltyCompensationRulesDraft draft;
    draft.schedules = {
        {"production.meal-penalty.schedule-a", "Schedule A",
         {Decimal("8.50"), Decimal("11"), Decimal("13.50"), Decimal("13.50")}, Decimal("25")},
        {"production.meal-penalty.schedule-b", "Schedule B",
         {Decimal("7.50"), Decimal("10"), Decimal("12.50"), Decimal("12.50")}, Decimal("25")},
    };
    draft.localSelectedScheduleRuleID = "production.meal-penalty.schedule-a";
    draft.distantSelectedScheduleRuleID = "production.meal-penalty.schedule-b";
    draft.currencyCode = "USD";
    draft.fixedDollarWeeklyLimit = 20;
    return draft;
}

MealPenaltyTimingRulesDraft MealPenaltyRules::defaultTimingRules() { return MealPenaltyTimingRulesDraft{}; }

std::string MealPenaltyRules::selectedScheduleRuleID(const MealPenaltyCompensationRulesDraft& draft, RulesLocality locality,
                                                     std::optional<MealWorkLocation> workLocation) {
    if (draft.scheduleApplicability.value_or(MealPenaltyScheduleApplicability::oneSchedule) ==
        MealPenaltyScheduleApplicability::studioAndLocation) {
        const auto& selected = workLocation == MealWorkLocation::location ? draft.locationSelectedScheduleRuleID
                                                                          : draft.studioSelectedScheduleRuleID;
        return selected.value_or("");
    }
    if (draft.allWorkdaysSelectedScheduleRuleID) return *draft.allWorkdaysSelectedScheduleRuleID;
    return locality == RulesLocality::distant ? draft.distantSelectedScheduleRuleID : draft.localSelectedScheduleRuleID;
}

FixedDollarMealPenaltySchedule MealPenaltyRules::engineSchedule(const MealPenaltyCompensationRulesDraft& draft,
                                                                RulesLocality locality,
                                                                std::optional<MealWorkLocation> workLocation) {
    const std::string selected = selectedScheduleRuleID(draft, locality, workLocation);
    const auto schedule = std::find_if(draft.schedules.begin(), draft.schedules.end(),
                                       [&](const auto& candidate) { return candidate.ruleID == selected; });
    if (schedule == draft.schedules.end() || draft.fixedDollarWeeklyLimit < 1) {
        throw MealPenaltyRulesError(std::string(meal_rules_messages::incomplete));
    }
    const CurrencyCode currency(draft.currencyCode);
    std::vector<Money> early;
    for (const auto& amount : schedule->earlyOrdinalAmounts) early.emplace_back(amount, currency);
    return FixedDollarMealPenaltySchedule(RuleID(schedule->ruleID), std::move(early), Money(schedule->repeatingAmount, currency));
}

void MealPenaltyRules::validateTiming(const MealPenaltyTimingRulesDraft& t) {
    for (std::int64_t seconds : {t.firstMealDueSeconds, t.subsequentMealDueSeconds, t.penaltyIntervalSeconds,
                                 t.calledFirstMealGraceSeconds, t.subsequentMealGraceSeconds}) {
        if (seconds <= 0) throw MealPenaltyRulesError(std::string(meal_rules_messages::timingNotPositive));
    }
}

MealPenaltyTimingRules MealPenaltyRules::engineTimingRules(const MealPenaltyCompensationRulesDraft& draft) {
    const MealPenaltyTimingRulesDraft timing = draft.timingRules.value_or(defaultTimingRules());
    validateTiming(timing);
    // A called first-meal grace that is exceeded counts from the original due time.
    return {MealPeriodRule(RuleID("meal.first.deadline"), WorkDuration(timing.firstMealDueSeconds),
                           WorkDuration(timing.penaltyIntervalSeconds),
                           MealGraceExtension{WorkDuration(timing.calledFirstMealGraceSeconds), true}),
            MealPeriodRule(RuleID("meal.subsequent.deadline"), WorkDuration(timing.subsequentMealDueSeconds),
                           WorkDuration(timing.penaltyIntervalSeconds),
                           MealGraceExtension{WorkDuration(timing.subsequentMealGraceSeconds),
                                              timing.subsequentGraceIsRetroactiveIfExceeded})};
}

void TurnaroundRules::validate(const TurnaroundRulesDraft& d) {
    for (std::int64_t rest : {d.localDPOrOperatorRestSeconds, d.localAllOthersRestSeconds, d.distantDPOrOperatorRestSeconds,
                              d.distantAllOthersRestSeconds}) {
        if (rest < 0) throw Error::invalidDuration();
    }
    const std::vector<std::string> ids{d.localDPOrOperatorRuleID, d.localAllOthersRuleID, d.distantDPOrOperatorRuleID,
                                       d.distantAllOthersRuleID};
    for (const auto& id : ids) RuleID{id};
    // The user reads "The provision identifier “Turnaround” is used more than once." on purpose.
    if (std::set<std::string>(ids.begin(), ids.end()).size() != ids.size()) throw Error::duplicateProvisionID("Turnaround");
    std::set<std::string> codes;
    for (const auto& exception : d.positionExceptions.value_or(std::vector<PositionException>{})) {
        const std::string code = trimmed(exception.occupationCode);
        if (code.empty() || exception.localRestSeconds < 0 || exception.distantRestSeconds < 0 || !codes.insert(code).second) {
            throw Error::invalidDuration();
        }
    }
}

std::optional<TurnaroundSuggestion> TurnaroundRules::suggestion(const TurnaroundRulesDraft& d, RulesLocality locality,
                                                                const std::string& occupationCode,
                                                                const std::optional<Uuid>& classificationID) {
    validate(d);
    const bool distant = locality == RulesLocality::distant;
    const std::string origin = std::string("Production Default \u00B7 ") + (distant ? "Distant" : "Local");
    const std::string code = trimmed(occupationCode);
    for (const auto& exception : d.positionExceptions.value_or(std::vector<PositionException>{})) {
        if (code.empty() || exception.occupationCode != code) continue;
        const std::int64_t rest = distant ? exception.distantRestSeconds : exception.localRestSeconds;
        if (rest < 1) return std::nullopt;
        return TurnaroundSuggestion{rest, origin + " exception", distant ? d.distantAllOthersRuleID : d.localAllOthersRuleID};
    }
    const bool dpOrOperator = classificationID && d.dpOrOperatorClassificationIDs.contains(*classificationID);
    const std::int64_t rest = dpOrOperator ? (distant ? d.distantDPOrOperatorRestSeconds : d.localDPOrOperatorRestSeconds)
                                           : (distant ? d.distantAllOthersRestSeconds : d.localAllOthersRestSeconds);
    if (rest < 1) return std::nullopt;
    const std::string& ruleID = dpOrOperator ? (distant ? d.distantDPOrOperatorRuleID : d.localDPOrOperatorRuleID)
                                             : (distant ? d.distantAllOthersRuleID : d.localAllOthersRuleID);
    return TurnaroundSuggestion{rest, origin, ruleID};
}

}  // namespace tessel
