// The machine form of meal periods, a week's meal penalties and turnaround.
#include "CalculationJSON.hpp"

namespace tessel::calculation_json {
namespace {

using namespace json_fields;

std::optional<Instant> optionalInstant(const Json& parent, std::string_view key, const std::string& path) {
    const Json* value = optionalMember(parent, key);
    if (!value) return std::nullopt;
    return instant(*value, childPath(path, key));
}

bool flag(const Json& parent, std::string_view key, const std::string& path) {
    const Json* value = optionalMember(parent, key);
    return value && boolean(*value, childPath(path, key));
}

WorkDuration duration(const Json& parent, std::string_view key, const std::string& path) {
    return WorkDuration(integer(member(parent, key, path), childPath(path, key)));
}

std::optional<MealTimelineEvent> optionalEvent(const Json& parent, std::string_view key, const std::string& path) {
    const Json* value = optionalMember(parent, key);
    if (!value) return std::nullopt;
    const std::string eventPath = childPath(path, key);
    object(*value, eventPath);
    return MealTimelineEvent{enumeration(member(*value, "kind", eventPath), childPath(eventPath, "kind"),
                                         &mealTimelineEventKindFromRawValue),
                             instant(member(*value, "timestamp", eventPath), childPath(eventPath, "timestamp"))};
}

std::optional<MealPeriodEvaluationStatus::Case> mealPeriodEvaluationStatusCaseFromRawValue(std::string_view raw) noexcept {
    using Case = MealPeriodEvaluationStatus::Case;
    for (const Case kind : {Case::incomplete, Case::invalid, Case::evaluated}) {
        if (toRawValue(kind) == raw) return kind;
    }
    return std::nullopt;
}

MealPeriodOrdinal ordinal(const Json& parent, std::string_view key, const std::string& path) {
    return MealPeriodOrdinal{boundedInteger(member(parent, key, path), childPath(path, key), 1, 100, "a meal number")};
}

MealPenaltyOccurrence occurrence(const Json& value, const std::string& path) {
    object(value, path);
    const Json& id = object(member(value, "id", path), childPath(path, "id"));
    // A penalty's number within its meal period chooses its amount; there is no penalty number 0.
    const int occurrenceOrdinal = boundedInteger(member(id, "mealPeriodOccurrenceOrdinal", childPath(path, "id")),
                                                 childPath(childPath(path, "id"), "mealPeriodOccurrenceOrdinal"), 1, 1000,
                                                 "a penalty number");
    return {{ordinal(id, "mealPeriodOrdinal", childPath(path, "id")), occurrenceOrdinal},
            instant(member(value, "intervalStart", path), childPath(path, "intervalStart")),
            instant(member(value, "intervalEnd", path), childPath(path, "intervalEnd"))};
}

FixedDollarMealPenaltySchedule penaltySchedule(const Json& value, const std::string& path) {
    object(value, path);
    const std::string amountsPath = childPath(path, "earlyOrdinalAmounts");
    const Json& amounts = array(member(value, "earlyOrdinalAmounts", path), amountsPath);
    std::vector<Money> early;
    for (std::size_t i = 0; i < amounts.size(); ++i) early.push_back(money(amounts[i], elementPath(amountsPath, i)));
    return FixedDollarMealPenaltySchedule(RuleID(string(member(value, "ruleID", path), childPath(path, "ruleID"))),
                                          std::move(early),
                                          money(member(value, "repeatingAmount", path), childPath(path, "repeatingAmount")));
}

template <typename Value>
void putOptional(Json& json, const char* key, const std::optional<Value>& value, Json (*encode)(Value)) {
    if (value) json[key] = encode(*value);
}

Json statusJSON(const MealPeriodEvaluationStatus& status) {
    Json json{{"case", toRawValue(status.kind)}};
    if (status.incompleteReason) json["reason"] = toRawValue(*status.incompleteReason);
    if (status.invalidReason) json["reason"] = toRawValue(*status.invalidReason);
    return json;
}

}  // namespace

using namespace json_fields;

MealPeriodRule mealPeriodRule(const Json& value, const std::string& path) {
    object(value, path);
    MealGraceRule grace;
    if (const Json* graceValue = optionalMember(value, "grace")) {
        const std::string gracePath = childPath(path, "grace");
        object(*graceValue, gracePath);
        grace = MealGraceExtension{duration(*graceValue, "protectedExtensionSeconds", gracePath),
                                   flag(*graceValue, "retroactiveIfExceeded", gracePath)};
    }
    return MealPeriodRule(RuleID(string(member(value, "ruleID", path), childPath(path, "ruleID"))),
                          duration(value, "dueAfterClockStartSeconds", path),
                          duration(value, "penaltyIntervalSeconds", path), grace);
}

FirstMealEvaluationInput firstMealInput(const Json& value, const std::string& path) {
    object(value, path);
    return {optionalInstant(value, "employeeCall", path), optionalInstant(value, "generalCrewCall", path),
            optionalInstant(value, "mealOut", path), flag(value, "nonDeductibleBreakfast", path),
            flag(value, "graceWasCalled", path)};
}

MealPeriodEvaluationInput mealPeriodInput(const Json& value, const std::string& path) {
    object(value, path);
    return {ordinal(value, "mealPeriodOrdinal", path), optionalEvent(value, "clockStart", path),
            optionalEvent(value, "satisfactionEvent", path)};
}

// Reads back what the meal evaluation wrote: its ordinal, occurrences and rule are what a week prices.
MealPeriodEvaluationResult mealPeriodResult(const Json& value, const std::string& path) {
    object(value, path);
    const std::string occurrencesPath = childPath(path, "occurrences");
    const Json& occurrences = array(member(value, "occurrences", path), occurrencesPath);
    const Json& trace = object(member(value, "trace", path), childPath(path, "trace"));
    // Only an evaluated meal period has penalties to price; an incomplete or invalid one is not guessed at.
    if (const Json* status = optionalMember(value, "status")) {
        const std::string casePath = childPath(childPath(path, "status"), "case");
        const auto kind = enumeration(member(object(*status, childPath(path, "status")), "case", childPath(path, "status")),
                                      casePath, &mealPeriodEvaluationStatusCaseFromRawValue);
        if (kind != MealPeriodEvaluationStatus::Case::evaluated) {
            throw MalformedInputError("The meal period at \u201C" + path + "\u201D was not evaluated (\u201C" +
                                      std::string(toRawValue(kind)) + "\u201D), so it has no penalties to price.");
        }
    }
    MealPeriodEvaluationResult result{ordinal(value, "mealPeriodOrdinal", path), MealPeriodEvaluationStatus::evaluated(), {}, {},
                                      MealPeriodEvaluationTrace{RuleID(string(member(trace, "ruleID", childPath(path, "trace")),
                                                                              childPath(childPath(path, "trace"), "ruleID"))),
                                                                {}, {}, {}, {}, {}, {}, 0, {}, {}}};
    for (std::size_t i = 0; i < occurrences.size(); ++i) {
        result.occurrences.push_back(occurrence(occurrences[i], elementPath(occurrencesPath, i)));
    }
    result.trace.occurrenceCount = static_cast<int>(result.occurrences.size());
    return result;
}

std::vector<DatedMealPenaltyPeriod> datedMealPenaltyPeriods(const Json& periods, const std::string& path) {
    array(periods, path);
    std::vector<DatedMealPenaltyPeriod> result;
    for (std::size_t i = 0; i < periods.size(); ++i) {
        const std::string periodPath = elementPath(path, i);
        const Json& period = object(periods[i], periodPath);
        const auto limit = integer(member(period, "fixedDollarWeeklyLimit", periodPath), childPath(periodPath, "fixedDollarWeeklyLimit"));
        if (limit < 0 || limit > 1000) {
            throw MalformedInputError("The field \u201C" + childPath(periodPath, "fixedDollarWeeklyLimit") +
                                      "\u201D must be a count from 0 to 1000.");
        }
        result.push_back({string(member(period, "sourceDayID", periodPath), childPath(periodPath, "sourceDayID")),
                          date(member(period, "productionDate", periodPath), childPath(periodPath, "productionDate")),
                          penaltySchedule(member(period, "schedule", periodPath), childPath(periodPath, "schedule")),
                          static_cast<int>(limit),
                          mealPeriodResult(member(period, "result", periodPath), childPath(periodPath, "result"))});
    }
    return result;
}

std::optional<TurnaroundRule> optionalTurnaroundRule(const Json& parent, const std::string& path) {
    const Json* value = optionalMember(parent, "rule");
    if (!value) return std::nullopt;
    const std::string rulePath = childPath(path, "rule");
    object(*value, rulePath);
    return TurnaroundRule{RuleID(string(member(*value, "ruleID", rulePath), childPath(rulePath, "ruleID"))),
                          duration(*value, "requiredRestSeconds", rulePath),
                          string(member(*value, "valueOrigin", rulePath), childPath(rulePath, "valueOrigin"))};
}

Json toJSON(const MealTimelineEvent& event) {
    return Json{{"kind", toRawValue(event.kind)}, {"timestamp", instantJSON(event.timestamp)}};
}

Json toJSON(const MealPenaltyOccurrence& occurrence) {
    return Json{{"id",
                 Json{{"mealPeriodOrdinal", occurrence.id.mealPeriodOrdinal.value},
                      {"mealPeriodOccurrenceOrdinal", occurrence.id.mealPeriodOccurrenceOrdinal}}},
                {"intervalStart", instantJSON(occurrence.intervalStart)},
                {"intervalEnd", instantJSON(occurrence.intervalEnd)}};
}

Json toJSON(const MealPeriodEvaluationTrace& trace) {
    Json json{{"ruleID", trace.ruleID.value()}};
    if (trace.clockStart) json["clockStart"] = toJSON(*trace.clockStart);
    putOptional(json, "contractualDueTime", trace.contractualDueTime, &instantJSON);
    putOptional(json, "graceProtectedThrough", trace.graceProtectedThrough, &instantJSON);
    if (trace.satisfactionEvent) json["satisfactionEvent"] = toJSON(*trace.satisfactionEvent);
    if (trace.countedViolationDuration) json["countedViolationDurationSeconds"] = trace.countedViolationDuration->seconds();
    json["penaltyIntervalSeconds"] = trace.penaltyInterval.seconds();
    json["occurrenceCount"] = trace.occurrenceCount;
    if (trace.firstMealClockResolution) json["firstMealClockResolution"] = toRawValue(*trace.firstMealClockResolution);
    if (trace.firstMealGraceDisposition) {
        json["firstMealGraceDisposition"] = toRawValue(*trace.firstMealGraceDisposition);
        const auto resolution = trace.firstMealClockResolution.value_or(FirstMealClockResolution::employeeCall);
        json["firstMealGraceExplanation"] = description(*trace.firstMealGraceDisposition, resolution);
    }
    return json;
}

Json toJSON(const MealPeriodEvaluationResult& result) {
    Json warnings = Json::array();
    for (auto warning : result.warnings) warnings.push_back(toRawValue(warning));
    return Json{{"mealPeriodOrdinal", result.mealPeriodOrdinal.value},
                {"status", statusJSON(result.status)},
                {"occurrences", listJSON(result.occurrences)},
                {"warnings", std::move(warnings)},
                {"trace", toJSON(result.trace)}};
}

Json toJSON(const WeeklyMealPenaltyOccurrence& occurrence) {
    Json compensation{{"case", toRawValue(occurrence.compensation.kind)}};
    if (occurrence.compensation.amount) compensation["amount"] = toJSON(*occurrence.compensation.amount);
    Json warnings = Json::array();
    for (auto warning : occurrence.warnings) warnings.push_back(toRawValue(warning));
    return Json{{"sourceDayID", occurrence.sourceDayID},
                {"productionDate", dateJSON(occurrence.productionDate)},
                {"sourceMealPeriodRuleID", occurrence.sourceMealPeriodRuleID.value()},
                {"mealPeriodOrdinal", occurrence.mealPeriodOrdinal.value},
                {"mealPeriodOccurrenceOrdinal", occurrence.mealPeriodOccurrenceOrdinal},
                {"weeklyOrdinal", occurrence.weeklyOrdinal},
                {"intervalStart", instantJSON(occurrence.intervalStart)},
                {"intervalEnd", instantJSON(occurrence.intervalEnd)},
                {"compensationScheduleRuleID", occurrence.compensationScheduleRuleID.value()},
                {"compensation", std::move(compensation)},
                {"warnings", std::move(warnings)}};
}

Json toJSON(const WeeklyMealPenaltyResult& result) {
    Json json{{"occurrences", listJSON(result.occurrences)}};
    if (result.fixedDollarSubtotal) json["fixedDollarSubtotal"] = toJSON(*result.fixedDollarSubtotal);
    json["unresolvedPrevailingRateCount"] = result.unresolvedPrevailingRateCount;
    return json;
}

Json toJSON(const TurnaroundEvaluationResult& result) {
    Json status{{"case", toRawValue(result.status.kind)}};
    if (result.status.actualRest) status["actualRestSeconds"] = result.status.actualRest->seconds();
    if (result.status.shortfallDuration) status["durationSeconds"] = result.status.shortfallDuration->seconds();
    if (const auto words = description(result.status.kind)) status["explanation"] = *words;

    const TurnaroundEvaluationTrace& trace = result.trace;
    Json traceJSON;
    if (trace.ruleID) traceJSON["ruleID"] = trace.ruleID->value();
    traceJSON["valueOrigin"] = trace.valueOrigin;
    putOptional(traceJSON, "priorWrap", trace.priorWrap, &instantJSON);
    if (trace.requiredRest) traceJSON["requiredRestSeconds"] = trace.requiredRest->seconds();
    putOptional(traceJSON, "earliestNextCall", trace.earliestNextCall, &instantJSON);
    putOptional(traceJSON, "actualNextCall", trace.actualNextCall, &instantJSON);
    return Json{{"status", std::move(status)}, {"trace", std::move(traceJSON)}};
}

}  // namespace tessel::calculation_json
