// The machine form of the fixed daily, idle, unworked holiday and percentage calculators.
#include "CalculationJSON.hpp"

namespace tessel::calculation_json {
namespace {

Json decimalText(const Decimal& value) { return decimal_json::text<Json>(value); }

}  // namespace

using namespace json_fields;

UnworkedHolidayRule unworkedHolidayRule(const Json& value, const std::string& path) {
    object(value, path);
    const auto formula = enumeration(member(value, "formula", path), childPath(path, "formula"),
                                     &unworkedHolidayFormulaFromRawValue);
    return UnworkedHolidayRule(formula, integer(member(value, "compensatedSeconds", path), childPath(path, "compensatedSeconds")),
                               decimal(member(value, "rateMultiplier", path), childPath(path, "rateMultiplier")));
}

Json toJSON(const FixedDailyCompensationResult& result) {
    Json trace;
    if (result.trace.configuredAmount) trace["configuredAmount"] = toJSON(*result.trace.configuredAmount);
    trace["applies"] = result.trace.applies;
    if (result.trace.compensation) trace["compensation"] = toJSON(*result.trace.compensation);
    Json json;
    if (result.compensation) json["compensation"] = toJSON(*result.compensation);
    json["trace"] = std::move(trace);
    return json;
}

Json toJSON(const IdleCompensationResult& result) {
    const IdleCompensationTrace& trace = result.trace;
    return Json{{"compensation", toJSON(result.compensation)},
                {"trace",
                 Json{{"compensatedDurationSeconds", trace.compensatedDuration.seconds()},
                      {"straightTimeRateMultiplier", decimalText(trace.straightTimeRateMultiplier.value())},
                      {"straightTimeHourlyRate", toJSON(trace.straightTimeHourlyRate)},
                      {"unroundedAmount", toJSON(trace.unroundedAmount)},
                      {"roundedAmount", toJSON(trace.roundedAmount)},
                      {"roundingRule", toJSON(trace.roundingRule)}}}};
}

Json toJSON(const UnworkedHolidayResult& result) {
    const UnworkedHolidayTrace& trace = result.trace;
    return Json{{"compensation", toJSON(result.compensation)},
                {"trace",
                 Json{{"rule",
                       Json{{"formula", toRawValue(trace.rule.formula())},
                            {"compensatedSeconds", trace.rule.compensatedSeconds()},
                            {"rateMultiplier", decimalText(trace.rule.rateMultiplier())}}},
                      {"straightTimeHourlyRate", toJSON(trace.straightTimeHourlyRate)},
                      {"unroundedAmount", toJSON(trace.unroundedAmount)},
                      {"roundedAmount", toJSON(trace.roundedAmount)},
                      {"roundingRule", toJSON(trace.roundingRule)}}}};
}

Json toJSON(const PercentageCompensationResult& result) {
    const PercentageCompensationTrace& trace = result.trace;
    return Json{{"compensation", toJSON(result.compensation)},
                {"trace",
                 Json{{"basis", toRawValue(trace.basis)},
                      {"percentage", decimalText(trace.percentage.percent())},
                      {"basisAmount", toJSON(trace.basisAmount)},
                      {"unroundedAmount", toJSON(trace.unroundedAmount)},
                      {"rounding",
                       Json{{"before", toJSON(trace.rounding.before)},
                            {"after", toJSON(trace.rounding.after)},
                            {"rule", toJSON(trace.rounding.rule)}}}}}};
}

}  // namespace tessel::calculation_json
