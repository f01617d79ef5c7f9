// The machine form of a priced day and of a priced week.
#include "CalculationJSON.hpp"

namespace tessel::calculation_json {
namespace {

using namespace json_fields;

Json decimalText(const Decimal& value) { return decimal_json::text<Json>(value); }

WorkDuration durationOr(const Json& parent, std::string_view key, const std::string& path, WorkDuration fallback) {
    const Json* value = optionalMember(parent, key);
    return value ? WorkDuration(integer(*value, childPath(path, key))) : fallback;
}

// The durations every priced band line carries.
Json bandDurations(const RuleID& ruleID, WorkDuration actual, WorkDuration dailyMinimum, WorkDuration bandSpecific,
                   WorkDuration guaranteed, WorkDuration paid) {
    return Json{{"ruleID", ruleID.value()},
                {"actualAllocatedDurationSeconds", actual.seconds()},
                {"dailyMinimumGuaranteedDurationSeconds", dailyMinimum.seconds()},
                {"bandSpecificGuaranteedDurationSeconds", bandSpecific.seconds()},
                {"guaranteedAdditionalDurationSeconds", guaranteed.seconds()},
                {"paidDurationSeconds", paid.seconds()}};
}

}  // namespace

using namespace json_fields;

Json toJSON(const DailyMinimumGuaranteeTraceEntry& entry) {
    return Json{{"guaranteeRuleID", entry.guaranteeRuleID.value()},
                {"actualDailyDurationSeconds", entry.actualDailyDuration.seconds()},
                {"minimumPaidDurationSeconds", entry.minimumPaidDuration.seconds()},
                {"guaranteedAdditionalDurationSeconds", entry.guaranteedAdditionalDuration.seconds()},
                {"compensationBasisDurationSeconds", entry.compensationBasisDuration.seconds()},
                {"reason", toRawValue(entry.reason)},
                {"explanation", description(entry.reason)}};
}

Json toJSON(const MinimumBandGuaranteeTraceEntry& entry) {
    return Json{{"guaranteeRuleID", entry.guaranteeRuleID.value()},
                {"targetPayBandRuleID", entry.targetPayBandRuleID.value()},
                {"actualDurationSeconds", entry.actualDuration.seconds()},
                {"dailyMinimumGuaranteedDurationSeconds", entry.dailyMinimumGuaranteedDuration.seconds()},
                {"preBandGuaranteePaidDurationSeconds", entry.preBandGuaranteePaidDuration.seconds()},
                {"guaranteedAdditionalDurationSeconds", entry.guaranteedAdditionalDuration.seconds()},
                {"paidDurationSeconds", entry.paidDuration.seconds()},
                {"reason", toRawValue(entry.reason)},
                {"explanation", description(entry.reason)}};
}

Json toJSON(const GrossCompensationTraceEntry& entry) {
    Json json = bandDurations(entry.ruleID, entry.actualAllocatedDuration, entry.dailyMinimumGuaranteedDuration,
                              entry.bandSpecificGuaranteedDuration, entry.guaranteedAdditionalDuration, entry.paidDuration);
    json["hourlyPayRate"] = toJSON(entry.hourlyPayRate);
    json["multiplier"] = decimalText(entry.multiplier.value());
    json["unroundedAmount"] = toJSON(entry.unroundedAmount);
    json["roundedAmount"] = toJSON(entry.roundedAmount);
    json["roundingRule"] = toJSON(entry.roundingRule);
    return json;
}

Json toJSON(const WeeklyPayrollDay& day) {
    Json components = Json::array();
    for (const auto& component : day.components) components.push_back(toJSON(component));
    return Json{{"dayIndex", day.dayIndex},
                {"actualWorkedDurationSeconds", day.actualWorkedDuration.seconds()},
                {"components", std::move(components)},
                {"compensationAmount", toJSON(day.compensationAmount)}};
}

Json toJSON(const WeeklyPayrollCategoryContributor& contributor) {
    return Json{{"dayIndex", contributor.dayIndex},
                {"actualDurationSeconds", contributor.actualDuration.seconds()},
                {"dailyMinimumGuaranteedDurationSeconds", contributor.dailyMinimumGuaranteedDuration.seconds()},
                {"bandSpecificGuaranteedDurationSeconds", contributor.bandSpecificGuaranteedDuration.seconds()},
                {"paidDurationSeconds", contributor.paidDuration.seconds()},
                {"compensationAmount", toJSON(contributor.compensationAmount)}};
}

Json toJSON(const WeeklyPayrollCategoryTotal& total) {
    return Json{{"ruleID", total.ruleID.value()},
                {"multiplier", decimalText(total.multiplier.value())},
                {"actualDurationSeconds", total.actualDuration.seconds()},
                {"dailyMinimumGuaranteedDurationSeconds", total.dailyMinimumGuaranteedDuration.seconds()},
                {"bandSpecificGuaranteedDurationSeconds", total.bandSpecificGuaranteedDuration.seconds()},
                {"totalGuaranteedDurationSeconds", total.totalGuaranteedDuration.seconds()},
                {"paidDurationSeconds", total.paidDuration.seconds()},
                {"compensationAmount", toJSON(total.compensationAmount)},
                {"contributors", listJSON(total.contributors)}};
}

Json toJSON(const WeeklyPayrollAggregationTraceEntry& entry) {
    return Json{{"ruleID", entry.ruleID.value()},
                {"contributorDayIndexes", entry.contributorDayIndexes},
                {"paidDurationSeconds", entry.paidDuration.seconds()},
                {"compensationAmount", toJSON(entry.compensationAmount)}};
}

std::optional<DailyMinimumGuarantee> optionalDailyMinimum(const Json& parent, const std::string& path) {
    const Json* value = optionalMember(parent, "dailyMinimum");
    if (!value) return std::nullopt;
    const std::string minimumPath = childPath(path, "dailyMinimum");
    object(*value, minimumPath);
    return DailyMinimumGuarantee(RuleID(string(member(*value, "ruleID", minimumPath), childPath(minimumPath, "ruleID"))),
                                 WorkDuration(integer(member(*value, "minimumPaidDurationSeconds", minimumPath),
                                                      childPath(minimumPath, "minimumPaidDurationSeconds"))));
}

std::vector<MinimumBandGuarantee> bandGuarantees(const Json& parent, const std::string& path) {
    std::vector<MinimumBandGuarantee> guarantees;
    const Json* list = optionalMember(parent, "bandGuarantees");
    if (!list) return guarantees;
    const std::string listPath = childPath(path, "bandGuarantees");
    array(*list, listPath);
    for (std::size_t i = 0; i < list->size(); ++i) {
        guarantees.push_back(minimumBandGuarantee((*list)[i], elementPath(listPath, i)));
    }
    return guarantees;
}

// Reads a priced band line as written by the gross calculation. The guaranteed parts default to zero,
// the unrounded amount to the rounded one and the rounding rule to cents, so a line can be given by hand.
PayBandCompensationComponent compensationComponent(const Json& value, const std::string& path) {
    object(value, path);
    const RuleID ruleID(string(member(value, "ruleID", path), childPath(path, "ruleID")));
    const WorkDuration actual(integer(member(value, "actualAllocatedDurationSeconds", path),
                                      childPath(path, "actualAllocatedDurationSeconds")));
    const WorkDuration dailyMinimum = durationOr(value, "dailyMinimumGuaranteedDurationSeconds", path, {});
    const WorkDuration bandSpecific = durationOr(value, "bandSpecificGuaranteedDurationSeconds", path, {});
    const WorkDuration guaranteed =
        durationOr(value, "guaranteedAdditionalDurationSeconds", path, dailyMinimum + bandSpecific);
    const WorkDuration paid(integer(member(value, "paidDurationSeconds", path), childPath(path, "paidDurationSeconds")));
    const RateMultiplier multiplier(decimal(member(value, "multiplier", path), childPath(path, "multiplier")));
    const Money rounded = money(member(value, "roundedAmount", path), childPath(path, "roundedAmount"));
    const Json* unroundedValue = optionalMember(value, "unroundedAmount");
    const Money unrounded = unroundedValue ? money(*unroundedValue, childPath(path, "unroundedAmount")) : rounded;
    const Json* ruleValue = optionalMember(value, "roundingRule");
    const RoundingRule rounding = ruleValue ? roundingRule(*ruleValue, childPath(path, "roundingRule")) : RoundingRule::cents();
    return {ruleID, actual, dailyMinimum, bandSpecific, guaranteed, paid, multiplier, unrounded, rounded, rounding};
}

std::vector<WeeklyPayrollDay> weeklyPayrollDays(const Json& days, const std::string& path) {
    array(days, path);
    std::vector<WeeklyPayrollDay> result;
    for (std::size_t i = 0; i < days.size(); ++i) {
        const std::string dayPath = elementPath(path, i);
        const Json& day = object(days[i], dayPath);
        const Json& components = array(member(day, "components", dayPath), childPath(dayPath, "components"));
        std::vector<PayBandCompensationComponent> decoded;
        for (std::size_t k = 0; k < components.size(); ++k) {
            decoded.push_back(compensationComponent(components[k], elementPath(childPath(dayPath, "components"), k)));
        }
        const int index = boundedInteger(member(day, "dayIndex", dayPath), childPath(dayPath, "dayIndex"), 0, 999, "a day number");
        result.push_back({index,
                          WorkDuration(integer(member(day, "actualWorkedDurationSeconds", dayPath),
                                               childPath(dayPath, "actualWorkedDurationSeconds"))),
                          std::move(decoded),
                          money(member(day, "compensationAmount", dayPath), childPath(dayPath, "compensationAmount"))});
    }
    return result;
}

Json toJSON(const PayBandCompensationComponent& component) {
    Json json = bandDurations(component.ruleID, component.actualAllocatedDuration, component.dailyMinimumGuaranteedDuration,
                              component.bandSpecificGuaranteedDuration, component.guaranteedAdditionalDuration,
                              component.paidDuration);
    json["multiplier"] = decimalText(component.multiplier.value());
    json["unroundedAmount"] = toJSON(component.unroundedAmount);
    json["roundedAmount"] = toJSON(component.roundedAmount);
    json["roundingRule"] = toJSON(component.roundingRule);
    return json;
}

Json toJSON(const GrossCompensationResult& result) {
    const GrossCompensationTrace& trace = result.trace;
    Json traceJSON{{"suppliedDurationSeconds", trace.suppliedDuration.seconds()},
                   {"hourlyPayRate", toJSON(trace.hourlyPayRate)},
                   {"allocation", toJSON(trace.allocation)},
                   {"compensationBasisAllocation", toJSON(trace.compensationBasisAllocation)}};
    if (trace.dailyMinimumGuaranteeAdjustment) {
        traceJSON["dailyMinimumGuaranteeAdjustment"] = toJSON(*trace.dailyMinimumGuaranteeAdjustment);
    }
    traceJSON["guaranteeAdjustments"] = listJSON(trace.guaranteeAdjustments);
    traceJSON["entries"] = listJSON(trace.entries);
    traceJSON["totalCalculationOrder"] = toRawValue(trace.totalCalculationOrder);
    traceJSON["total"] = toJSON(trace.total);
    return Json{{"components", listJSON(result.components)}, {"total", toJSON(result.total)}, {"trace", std::move(traceJSON)}};
}

Json toJSON(const WeeklyPayrollResult& result) {
    return Json{{"days", listJSON(result.days)},
                {"categoryTotals", listJSON(result.categoryTotals)},
                {"totalCompensation", toJSON(result.totalCompensation)},
                {"trace",
                 Json{{"inputDayCount", result.trace.inputDayCount},
                      {"entries", listJSON(result.trace.entries)},
                      {"totalCompensation", toJSON(result.trace.totalCompensation)}}}};
}

}  // namespace tessel::calculation_json
