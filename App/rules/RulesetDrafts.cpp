#include "RulesetDrafts.hpp"

#include "App/model/CalendarText.hpp"

namespace tessel {

std::vector<RulesetPayBandDraft> OrdinaryDayScheduleDraft::enabledBands() const {
    if (thirdBandEnabled.value_or(true) || bands.size() < 3) return bands;
    std::vector<RulesetPayBandDraft> two(bands.begin(), bands.begin() + 2);
    two.back().upperBoundSeconds.reset();
    return two;
}

const OrdinaryDayScheduleDraft& ProductionRulesetDraft::schedule(RulesLocality locality, DayKind day) const noexcept {
    const bool distant = locality == RulesLocality::distant;
    const std::optional<OrdinaryDayScheduleDraft>* alternate = nullptr;
    if (day == DayKind::sixthDay) alternate = distant ? &distantSixthDaySchedule : &localSixthDaySchedule;
    if (day == DayKind::seventhDay) alternate = distant ? &distantSeventhDaySchedule : &localSeventhDaySchedule;
    if (alternate && *alternate) return **alternate;
    return distant ? distantSchedule : localSchedule;
}

DayKind ProductionRulesetDraft::scheduleDayKind(RulesLocality locality, DayKind day) const noexcept {
    const bool distant = locality == RulesLocality::distant;
    if (day == DayKind::sixthDay && (distant ? distantSixthDaySchedule : localSixthDaySchedule)) return day;
    if (day == DayKind::seventhDay && (distant ? distantSeventhDaySchedule : localSeventhDaySchedule)) return day;
    return DayKind::ordinary;
}

std::string_view toRawValue(DayKind kind) noexcept {
    return kind == DayKind::ordinary ? "ordinary" : kind == DayKind::sixthDay ? "sixthDay" : "seventhDay";
}

std::optional<DayKind> dayKindFromRawValue(std::string_view raw) noexcept {
    for (auto kind : {DayKind::ordinary, DayKind::sixthDay, DayKind::seventhDay}) {
        if (toRawValue(kind) == raw) return kind;
    }
    return std::nullopt;
}

std::string_view toRawValue(HolidayRuleContext context) noexcept {
    switch (context) {
        case HolidayRuleContext::dailyLocal: return "dailyLocal";
        case HolidayRuleContext::weeklyLocal: return "weeklyLocal";
        case HolidayRuleContext::dailyDistant: return "dailyDistant";
        case HolidayRuleContext::weeklyDistant: return "weeklyDistant";
    }
    return {};
}

std::optional<HolidayRuleContext> holidayRuleContextFromRawValue(std::string_view raw) noexcept {
    for (auto context : {HolidayRuleContext::dailyLocal, HolidayRuleContext::weeklyLocal, HolidayRuleContext::dailyDistant,
                         HolidayRuleContext::weeklyDistant}) {
        if (toRawValue(context) == raw) return context;
    }
    return std::nullopt;
}

namespace rules_json {
namespace {

using namespace json_fields;

Json text(const Decimal& value) { return decimal_json::text<Json>(value); }

std::int64_t integerAt(const Json& parent, std::string_view key, const std::string& path) {
    return integer(member(parent, key, path), childPath(path, key));
}
std::string stringAt(const Json& parent, std::string_view key, const std::string& path) {
    return string(member(parent, key, path), childPath(path, key));
}
bool booleanAt(const Json& parent, std::string_view key, const std::string& path) {
    return boolean(member(parent, key, path), childPath(path, key));
}
Decimal decimalAt(const Json& parent, std::string_view key, const std::string& path) {
    return decimal(member(parent, key, path), childPath(path, key));
}
std::optional<std::string> optionalString(const Json& parent, std::string_view key, const std::string& path) {
    const Json* value = optionalMember(parent, key);
    if (!value) return std::nullopt;
    return string(*value, childPath(path, key));
}

template <typename Item, typename Decode>
std::vector<Item> listAt(const Json& parent, std::string_view key, const std::string& path, Decode decode) {
    const std::string listPath = childPath(path, key);
    const Json& list = array(member(parent, key, path), listPath);
    std::vector<Item> items;
    for (std::size_t i = 0; i < list.size(); ++i) items.push_back(decode(list[i], elementPath(listPath, i)));
    return items;
}

Json toJSON(const RulesetPayBandDraft& band) {
    Json json{{"ruleID", band.ruleID}, {"lowerBoundSeconds", band.lowerBoundSeconds}};
    if (band.upperBoundSeconds) json["upperBoundSeconds"] = *band.upperBoundSeconds;
    json["multiplier"] = text(band.multiplier);
    json["entryThresholdBasis"] = toRawValue(band.entryThresholdBasis);
    return json;
}

RulesetPayBandDraft bandDraft(const Json& json, const std::string& path) {
    object(json, path);
    RulesetPayBandDraft band;
    band.ruleID = stringAt(json, "ruleID", path);
    band.lowerBoundSeconds = integerAt(json, "lowerBoundSeconds", path);
    if (const Json* upper = optionalMember(json, "upperBoundSeconds")) band.upperBoundSeconds = integer(*upper, childPath(path, "upperBoundSeconds"));
    band.multiplier = decimalAt(json, "multiplier", path);
    band.entryThresholdBasis = enumeration(member(json, "entryThresholdBasis", path), childPath(path, "entryThresholdBasis"),
                                           &durationBasisFromRawValue);
    return band;
}

PositionException positionException(const Json& json, const std::string& path) {
    object(json, path);
    return {stringAt(json, "occupationCode", path), stringAt(json, "positionName", path),
            integerAt(json, "localRestSeconds", path), integerAt(json, "distantRestSeconds", path)};
}

Json toJSON(const PositionException& exception) {
    return Json{{"occupationCode", exception.occupationCode}, {"positionName", exception.positionName},
                {"localRestSeconds", exception.localRestSeconds}, {"distantRestSeconds", exception.distantRestSeconds}};
}

FixedDollarMealPenaltyScheduleDraft mealScheduleDraft(const Json& json, const std::string& path) {
    object(json, path);
    const std::string amountsPath = childPath(path, "earlyOrdinalAmounts");
    const Json& amounts = array(member(json, "earlyOrdinalAmounts", path), amountsPath);
    std::vector<Decimal> early;
    for (std::size_t i = 0; i < amounts.size(); ++i) early.push_back(decimal(amounts[i], elementPath(amountsPath, i)));
    return {stringAt(json, "ruleID", path), stringAt(json, "name", path), std::move(early), decimalAt(json, "repeatingAmount", path)};
}

Json toJSON(const FixedDollarMealPenaltyScheduleDraft& schedule) {
    Json amounts = Json::array();
    for (const auto& amount : schedule.earlyOrdinalAmounts) amounts.push_back(text(amount));
    return Json{{"ruleID", schedule.ruleID}, {"name", schedule.name}, {"earlyOrdinalAmounts", std::move(amounts)},
                {"repeatingAmount", text(schedule.repeatingAmount)}};
}

Json toJSON(const MealPenaltyTimingRulesDraft& rules) {
    return Json{{"firstMealDueSeconds", rules.firstMealDueSeconds},
                {"subsequentMealDueSeconds", rules.subsequentMealDueSeconds},
                {"penaltyIntervalSeconds", rules.penaltyIntervalSeconds},
                {"calledFirstMealGraceSeconds", rules.calledFirstMealGraceSeconds},
                {"subsequentMealGraceSeconds", rules.subsequentMealGraceSeconds},
                {"subsequentGraceIsRetroactiveIfExceeded", rules.subsequentGraceIsRetroactiveIfExceeded}};
}

MealPenaltyTimingRulesDraft timingDraft(const Json& json, const std::string& path) {
    object(json, path);
    return {integerAt(json, "firstMealDueSeconds", path),         integerAt(json, "subsequentMealDueSeconds", path),
            integerAt(json, "penaltyIntervalSeconds", path),      integerAt(json, "calledFirstMealGraceSeconds", path),
            integerAt(json, "subsequentMealGraceSeconds", path),  booleanAt(json, "subsequentGraceIsRetroactiveIfExceeded", path)};
}

std::optional<MealPenaltyScheduleApplicability> applicabilityFromRawValue(std::string_view raw) noexcept {
    if (raw == "oneSchedule") return MealPenaltyScheduleApplicability::oneSchedule;
    if (raw == "studioAndLocation") return MealPenaltyScheduleApplicability::studioAndLocation;
    return std::nullopt;
}

template <typename Enum>
std::optional<Enum> rawValueOf(std::string_view raw) noexcept {
    return fromRawValue<Enum>(raw);
}

}  // namespace

Json toJSON(const OrdinaryDayScheduleDraft& schedule) {
    Json bands = Json::array();
    for (const auto& band : schedule.bands) bands.push_back(toJSON(band));
    Json json{{"bands", std::move(bands)},
              {"dailyMinimumRuleID", schedule.dailyMinimumRuleID},
              {"dailyMinimumEnabled", schedule.dailyMinimumEnabled},
              {"dailyMinimumSeconds", schedule.dailyMinimumSeconds},
              {"finalBandMinimumRuleID", schedule.finalBandMinimumRuleID},
              {"finalBandMinimumEnabled", schedule.finalBandMinimumEnabled},
              {"finalBandMinimumSeconds", schedule.finalBandMinimumSeconds}};
    if (schedule.bandMinimumTargetRuleID) json["bandMinimumTargetRuleID"] = *schedule.bandMinimumTargetRuleID;
    if (schedule.thirdBandEnabled) json["thirdBandEnabled"] = *schedule.thirdBandEnabled;
    return json;
}

OrdinaryDayScheduleDraft scheduleDraft(const Json& json, const std::string& path) {
    object(json, path);
    OrdinaryDayScheduleDraft schedule;
    schedule.bands = listAt<RulesetPayBandDraft>(json, "bands", path, bandDraft);
    schedule.dailyMinimumRuleID = stringAt(json, "dailyMinimumRuleID", path);
    schedule.dailyMinimumEnabled = booleanAt(json, "dailyMinimumEnabled", path);
    schedule.dailyMinimumSeconds = integerAt(json, "dailyMinimumSeconds", path);
    schedule.finalBandMinimumRuleID = stringAt(json, "finalBandMinimumRuleID", path);
    schedule.finalBandMinimumEnabled = booleanAt(json, "finalBandMinimumEnabled", path);
    schedule.finalBandMinimumSeconds = integerAt(json, "finalBandMinimumSeconds", path);
    schedule.bandMinimumTargetRuleID = optionalString(json, "bandMinimumTargetRuleID", path);
    if (const Json* third = optionalMember(json, "thirdBandEnabled")) schedule.thirdBandEnabled = boolean(*third, childPath(path, "thirdBandEnabled"));
    return schedule;
}

Json toJSON(const TurnaroundRulesDraft& draft) {
    Json classifications = Json::array();
    for (const auto& id : draft.dpOrOperatorClassificationIDs) classifications.push_back(id.text());
    Json json{{"localDPOrOperatorRuleID", draft.localDPOrOperatorRuleID},
              {"localDPOrOperatorRestSeconds", draft.localDPOrOperatorRestSeconds},
              {"localAllOthersRuleID", draft.localAllOthersRuleID},
              {"localAllOthersRestSeconds", draft.localAllOthersRestSeconds},
              {"distantDPOrOperatorRuleID", draft.distantDPOrOperatorRuleID},
              {"distantDPOrOperatorRestSeconds", draft.distantDPOrOperatorRestSeconds},
              {"distantAllOthersRuleID", draft.distantAllOthersRuleID},
              {"distantAllOthersRestSeconds", draft.distantAllOthersRestSeconds},
              {"dpOrOperatorClassificationIDs", std::move(classifications)}};
    if (draft.positionExceptions) {
        Json exceptions = Json::array();
        for (const auto& exception : *draft.positionExceptions) exceptions.push_back(toJSON(exception));
        json["positionExceptions"] = std::move(exceptions);
    }
    return json;
}

TurnaroundRulesDraft turnaroundDraft(const Json& json, const std::string& path) {
    object(json, path);
    TurnaroundRulesDraft draft;
    draft.localDPOrOperatorRuleID = stringAt(json, "localDPOrOperatorRuleID", path);
    draft.localDPOrOperatorRestSeconds = integerAt(json, "localDPOrOperatorRestSeconds", path);
    draft.localAllOthersRuleID = stringAt(json, "localAllOthersRuleID", path);
    draft.localAllOthersRestSeconds = integerAt(json, "localAllOthersRestSeconds", path);
    draft.distantDPOrOperatorRuleID = stringAt(json, "distantDPOrOperatorRuleID", path);
    draft.distantDPOrOperatorRestSeconds = integerAt(json, "distantDPOrOperatorRestSeconds", path);
    draft.distantAllOthersRuleID = stringAt(json, "distantAllOthersRuleID", path);
    draft.distantAllOthersRestSeconds = integerAt(json, "distantAllOthersRestSeconds", path);
    const std::string idsPath = childPath(path, "dpOrOperatorClassificationIDs");
    const Json& ids = array(member(json, "dpOrOperatorClassificationIDs", path), idsPath);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const auto id = Uuid::parse(string(ids[i], elementPath(idsPath, i)));
        if (!id) throw MalformedInputError("The field \u201C" + elementPath(idsPath, i) + "\u201D must be an identifier.");
        draft.dpOrOperatorClassificationIDs.insert(*id);
    }
    if (optionalMember(json, "positionExceptions")) {
        draft.positionExceptions = listAt<PositionException>(json, "positionExceptions", path, positionException);
    }
    return draft;
}

Json toJSON(const ProductionRulesetDraft& draft) {
    Json json{{"name", draft.name},
              {"sourceNotes", draft.sourceNotes},
              {"effectiveFrom", calendar_text::formatDate(draft.effectiveFrom)},
              {"defaultRulesLocality", toRawValue(draft.defaultRulesLocality)},
              {"localSchedule", toJSON(draft.localSchedule)},
              {"distantSchedule", toJSON(draft.distantSchedule)}};
    if (draft.localSixthDaySchedule) json["localSixthDaySchedule"] = toJSON(*draft.localSixthDaySchedule);
    if (draft.localSeventhDaySchedule) json["localSeventhDaySchedule"] = toJSON(*draft.localSeventhDaySchedule);
    if (draft.distantSixthDaySchedule) json["distantSixthDaySchedule"] = toJSON(*draft.distantSixthDaySchedule);
    if (draft.distantSeventhDaySchedule) json["distantSeventhDaySchedule"] = toJSON(*draft.distantSeventhDaySchedule);
    if (draft.turnaroundRules) json["turnaroundRules"] = toJSON(*draft.turnaroundRules);
    return json;
}

ProductionRulesetDraft rulesetDraft(const Json& json, const std::string& path) {
    object(json, path);
    ProductionRulesetDraft draft;
    draft.name = stringAt(json, "name", path);
    draft.sourceNotes = stringAt(json, "sourceNotes", path);
    const auto date = calendar_text::parseDate(stringAt(json, "effectiveFrom", path));
    if (!date) throw MalformedInputError("The field \u201C" + childPath(path, "effectiveFrom") + "\u201D must be a date such as \u201C2026-11-02\u201D.");
    draft.effectiveFrom = *date;
    draft.defaultRulesLocality =
        enumeration(member(json, "defaultRulesLocality", path), childPath(path, "defaultRulesLocality"), &rawValueOf<RulesLocality>);
    draft.localSchedule = scheduleDraft(member(json, "localSchedule", path), childPath(path, "localSchedule"));
    draft.distantSchedule = scheduleDraft(member(json, "distantSchedule", path), childPath(path, "distantSchedule"));
    const auto alternate = [&](std::string_view key) -> std::optional<OrdinaryDayScheduleDraft> {
        const Json* value = optionalMember(json, key);
        if (!value) return std::nullopt;
        return scheduleDraft(*value, childPath(path, key));
    };
    draft.localSixthDaySchedule = alternate("localSixthDaySchedule");
    draft.localSeventhDaySchedule = alternate("localSeventhDaySchedule");
    draft.distantSixthDaySchedule = alternate("distantSixthDaySchedule");
    draft.distantSeventhDaySchedule = alternate("distantSeventhDaySchedule");
    if (const Json* turnaround = optionalMember(json, "turnaroundRules")) draft.turnaroundRules = turnaroundDraft(*turnaround, childPath(path, "turnaroundRules"));
    return draft;
}

Json toJSON(const MealPenaltyCompensationRulesDraft& draft) {
    Json schedules = Json::array();
    for (const auto& schedule : draft.schedules) schedules.push_back(toJSON(schedule));
    Json json{{"schedules", std::move(schedules)},
              {"localSelectedScheduleRuleID", draft.localSelectedScheduleRuleID},
              {"distantSelectedScheduleRuleID", draft.distantSelectedScheduleRuleID},
              {"currencyCode", draft.currencyCode},
              {"fixedDollarWeeklyLimit", draft.fixedDollarWeeklyLimit}};
    if (draft.timingRules) json["timingRules"] = toJSON(*draft.timingRules);
    if (draft.scheduleApplicability) {
        json["scheduleApplicability"] =
            *draft.scheduleApplicability == MealPenaltyScheduleApplicability::oneSchedule ? "oneSchedule" : "studioAndLocation";
    }
    if (draft.allWorkdaysSelectedScheduleRuleID) json["allWorkdaysSelectedScheduleRuleID"] = *draft.allWorkdaysSelectedScheduleRuleID;
    if (draft.studioSelectedScheduleRuleID) json["studioSelectedScheduleRuleID"] = *draft.studioSelectedScheduleRuleID;
    if (draft.locationSelectedScheduleRuleID) json["locationSelectedScheduleRuleID"] = *draft.locationSelectedScheduleRuleID;
    return json;
}

MealPenaltyCompensationRulesDraft mealPenaltyDraft(const Json& json, const std::string& path) {
    object(json, path);
    MealPenaltyCompensationRulesDraft draft;
    draft.schedules = listAt<FixedDollarMealPenaltyScheduleDraft>(json, "schedules", path, mealScheduleDraft);
    draft.localSelectedScheduleRuleID = stringAt(json, "localSelectedScheduleRuleID", path);
    draft.distantSelectedScheduleRuleID = stringAt(json, "distantSelectedScheduleRuleID", path);
    draft.currencyCode = stringAt(json, "currencyCode", path);
    draft.fixedDollarWeeklyLimit = integerAt(json, "fixedDollarWeeklyLimit", path);
    if (const Json* timing = optionalMember(json, "timingRules")) draft.timingRules = timingDraft(*timing, childPath(path, "timingRules"));
    if (const Json* applicability = optionalMember(json, "scheduleApplicability")) {
        draft.scheduleApplicability = enumeration(*applicability, childPath(path, "scheduleApplicability"), &applicabilityFromRawValue);
    }
    draft.allWorkdaysSelectedScheduleRuleID = optionalString(json, "allWorkdaysSelectedScheduleRuleID", path);
    draft.studioSelectedScheduleRuleID = optionalString(json, "studioSelectedScheduleRuleID", path);
    draft.locationSelectedScheduleRuleID = optionalString(json, "locationSelectedScheduleRuleID", path);
    return draft;
}

Json toJSON(const ProductionCompensationProvisionDraft& d) {
    return Json{{"kind", d.kind},
                {"isEnabled", d.isEnabled},
                {"amount", text(d.amount)},
                {"currencyCode", d.currencyCode},
                {"timedWorkDayEligible", d.timedWorkDayEligible},
                {"workedEligible", d.workedEligible},
                {"prepEligible", d.prepEligible},
                {"idleAvailableEligible", d.idleAvailableEligible},
                {"travelEligible", d.travelEligible},
                {"holidayEligible", d.holidayEligible},
                {"personalUnavailableEligible", d.personalUnavailableEligible}};
}

ProductionCompensationProvisionDraft provisionDraft(const Json& json, const std::string& path) {
    object(json, path);
    return {stringAt(json, "kind", path),
            booleanAt(json, "isEnabled", path),
            decimalAt(json, "amount", path),
            stringAt(json, "currencyCode", path),
            booleanAt(json, "timedWorkDayEligible", path),
            booleanAt(json, "workedEligible", path),
            booleanAt(json, "prepEligible", path),
            booleanAt(json, "idleAvailableEligible", path),
            booleanAt(json, "travelEligible", path),
            booleanAt(json, "holidayEligible", path),
            booleanAt(json, "personalUnavailableEligible", path)};
}

Json toJSON(const IdleCompensationRuleDraft& draft) {
    return Json{{"compensatedSecondsPerDay", draft.compensatedSecondsPerDay},
                {"straightTimeRateMultiplier", text(draft.straightTimeRateMultiplier)}};
}

IdleCompensationRuleDraft idleDraft(const Json& json, const std::string& path) {
    object(json, path);
    return {integerAt(json, "compensatedSecondsPerDay", path), decimalAt(json, "straightTimeRateMultiplier", path)};
}

Json toJSON(const HolidayCompensationRulesDraft& draft) {
    Json json = Json::object();
    for (const auto& [context, rule] : draft) {
        json[std::string(toRawValue(context))] = Json{{"formula", toRawValue(rule.formula())},
                                                      {"compensatedSeconds", rule.compensatedSeconds()},
                                                      {"rateMultiplier", text(rule.rateMultiplier())}};
    }
    return json;
}

HolidayCompensationRulesDraft holidayDraft(const Json& json, const std::string& path) {
    object(json, path);
    HolidayCompensationRulesDraft draft;
    for (auto it = json.begin(); it != json.end(); ++it) {
        const std::string contextPath = childPath(path, it.key());
        const auto context = holidayRuleContextFromRawValue(it.key());
        if (!context) throw MalformedInputError("The field \u201C" + contextPath + "\u201D is not a holiday rule context.");
        const Json& rule = object(it.value(), contextPath);
        const auto formula = enumeration(member(rule, "formula", contextPath), childPath(contextPath, "formula"),
                                         &unworkedHolidayFormulaFromRawValue);
        draft.emplace(*context, UnworkedHolidayRule(formula, integerAt(rule, "compensatedSeconds", contextPath),
                                                    decimalAt(rule, "rateMultiplier", contextPath)));
    }
    return draft;
}

Json toJSON(const PayrollRuleConfiguration& configuration) {
    Json provisions = Json::array();
    for (const auto& provision : configuration.additionalCompensation) provisions.push_back(toJSON(provision));
    Json json{{"payrollRules", toJSON(configuration.payrollRules)},
              {"mealPenaltyRules", toJSON(configuration.mealPenaltyRules)},
              {"additionalCompensation", std::move(provisions)}};
    if (configuration.idleCompensation) json["idleCompensation"] = toJSON(*configuration.idleCompensation);
    json["holidayCompensation"] = toJSON(configuration.holidayCompensation);
    return json;
}

PayrollRuleConfiguration configuration(const Json& json) {
    object(json, "");
    PayrollRuleConfiguration configuration;
    configuration.payrollRules = rulesetDraft(member(json, "payrollRules", ""), "payrollRules");
    configuration.mealPenaltyRules = mealPenaltyDraft(member(json, "mealPenaltyRules", ""), "mealPenaltyRules");
    configuration.additionalCompensation =
        listAt<ProductionCompensationProvisionDraft>(json, "additionalCompensation", "", provisionDraft);
    if (const Json* idle = optionalMember(json, "idleCompensation")) configuration.idleCompensation = idleDraft(*idle, "idleCompensation");
    if (const Json* holiday = optionalMember(json, "holidayCompensation")) {
        configuration.holidayCompensation = holidayDraft(*holiday, "holidayCompensation");
    }
    return configuration;
}

}  // namespace rules_json
}  // namespace tessel
