#include "CalculationJSON.hpp"

#include "App/model/CalendarText.hpp"

namespace tessel::calculation_json {
namespace {

using namespace json_fields;

Json decimalText(const Decimal& value) { return decimal_json::text<Json>(value); }

WorkDuration duration(const Json& parent, std::string_view key, const std::string& path) {
    return WorkDuration(integer(member(parent, key, path), childPath(path, key)));
}

RuleID ruleID(const Json& parent, std::string_view key, const std::string& path) {
    return RuleID(string(member(parent, key, path), childPath(path, key)));
}

PayBand payBand(const Json& band, const std::string& path) {
    object(band, path);
    const PayBandEntryThreshold threshold{
        duration(band, "entryThresholdSeconds", path),
        enumeration(member(band, "entryThresholdBasis", path), childPath(path, "entryThresholdBasis"),
                    &durationBasisFromRawValue)};
    std::optional<WorkDuration> upperBound;
    if (const Json* upper = optionalMember(band, "upperBoundSeconds")) {
        upperBound = WorkDuration(integer(*upper, childPath(path, "upperBoundSeconds")));
    }
    const RateMultiplier multiplier(decimal(member(band, "multiplier", path), childPath(path, "multiplier")));
    return PayBand(ruleID(band, "ruleID", path), threshold, upperBound, multiplier);
}

}  // namespace

Money money(const Json& value, const std::string& path) {
    object(value, path);
    const Decimal amount = decimal(member(value, "amount", path), childPath(path, "amount"));
    const CurrencyCode currency(string(member(value, "currency", path), childPath(path, "currency")));
    return Money(amount, currency);
}

RoundingRule roundingRule(const Json& value, const std::string& path) {
    object(value, path);
    const Decimal increment = decimal(member(value, "increment", path), childPath(path, "increment"));
    const auto method = enumeration(member(value, "method", path), childPath(path, "method"), &roundingMethodFromRawValue);
    return RoundingRule(increment, method);
}

Instant instant(const Json& value, const std::string& path) {
    if (const auto parsed = calendar_text::parseInstant(string(value, path))) return *parsed;
    throw MalformedInputError("The field \u201C" + path + "\u201D must be an ISO 8601 instant such as \u201C2026-11-02T07:00:00Z\u201D.");
}

CalendarDate date(const Json& value, const std::string& path) {
    if (const auto parsed = calendar_text::parseDate(string(value, path))) return *parsed;
    throw MalformedInputError("The field \u201C" + path + "\u201D must be a date such as \u201C2026-11-02\u201D.");
}

Json toJSON(const Money& money) {
    return Json{{"amount", decimalText(money.amount())}, {"currency", money.currency().code()}};
}

Json toJSON(const RoundingRule& rule) {
    return Json{{"increment", decimalText(rule.increment())}, {"method", toRawValue(rule.method())}};
}

Json instantJSON(Instant instant) { return calendar_text::formatInstant(instant); }

Json dateJSON(CalendarDate date) { return calendar_text::formatDate(date); }

PayBandSchedule payBandSchedule(const Json& bands, const std::string& path) {
    array(bands, path);
    std::vector<PayBand> decoded;
    decoded.reserve(bands.size());
    for (std::size_t i = 0; i < bands.size(); ++i) decoded.push_back(payBand(bands[i], elementPath(path, i)));
    return PayBandSchedule(std::move(decoded));
}

PayBandAllocationInput allocationInput(const Json& segments, const std::string& path) {
    array(segments, path);
    PayBandAllocationInput input;
    input.segments.reserve(segments.size());
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const std::string segmentPath = elementPath(path, i);
        const Json& segment = object(segments[i], segmentPath);
        const auto kind = enumeration(member(segment, "kind", segmentPath), childPath(segmentPath, "kind"),
                                      &segmentKindFromRawValue);
        input.segments.push_back({kind, duration(segment, "durationSeconds", segmentPath)});
    }
    return input;
}

MinimumBandGuarantee minimumBandGuarantee(const Json& guarantee, const std::string& path) {
    object(guarantee, path);
    return MinimumBandGuarantee(ruleID(guarantee, "ruleID", path), ruleID(guarantee, "targetPayBandRuleID", path),
                                duration(guarantee, "minimumPaidDurationSeconds", path));
}

Json toJSON(const PayBandEntryThreshold& threshold) {
    return Json{{"durationSeconds", threshold.duration.seconds()}, {"basis", toRawValue(threshold.basis)}};
}

Json toJSON(const PayBandAllocationComponent& component) {
    return Json{{"ruleID", component.ruleID.value()},
                {"allocatedDurationSeconds", component.allocatedDuration.seconds()},
                {"multiplier", decimalText(component.multiplier.value())}};
}

Json toJSON(const PayBandAllocationTraceEntry& entry) {
    Json json{{"ruleID", entry.ruleID.value()}, {"inclusiveLowerBoundSeconds", entry.inclusiveLowerBound.seconds()}};
    if (entry.exclusiveUpperBound) json["exclusiveUpperBoundSeconds"] = entry.exclusiveUpperBound->seconds();
    if (entry.exclusiveUpperBoundBasis) json["exclusiveUpperBoundBasis"] = toRawValue(*entry.exclusiveUpperBoundBasis);
    json["allocatedDurationSeconds"] = entry.allocatedDuration.seconds();
    json["multiplier"] = decimalText(entry.multiplier.value());
    json["entryThresholdBasis"] = toRawValue(entry.entryThresholdBasis);
    return json;
}

Json toJSON(const PayBandAllocationTrace& trace) {
    Json entries = Json::array();
    for (const auto& entry : trace.entries) entries.push_back(toJSON(entry));
    return Json{{"inputDurationSeconds", trace.inputDuration.seconds()},
                {"elapsedDurationSeconds", trace.elapsedDuration.seconds()},
                {"boundaryConvention", toRawValue(trace.boundaryConvention)},
                {"entries", std::move(entries)}};
}

Json toJSON(const PayBandAllocationResult& result) {
    Json components = Json::array();
    for (const auto& component : result.components) components.push_back(toJSON(component));
    return Json{{"components", std::move(components)}, {"trace", toJSON(result.trace)}};
}

Json toJSON(const PayBandTargetEntry& entry) {
    return Json{{"payBandRuleID", entry.payBandRuleID.value()},
                {"guaranteeRuleID", entry.guaranteeRuleID.value()},
                {"elapsedDurationFromCallSeconds", entry.elapsedDurationFromCall.seconds()},
                {"firstQualifyingElapsedDurationFromCallSeconds", entry.firstQualifyingElapsedDurationFromCall.seconds()},
                {"threshold", toJSON(entry.threshold)},
                {"minimumPaidDurationSeconds", entry.minimumPaidDuration.seconds()},
                {"multiplier", decimalText(entry.multiplier.value())}};
}

Json errorJSON(const DomainError& error) {
    Json json{{"error", error.caseName()}};
    for (const ErrorField& field : error.payload()) {
        std::visit([&](const auto& value) { json[field.name] = value; }, field.value);
    }
    json["message"] = error.description();
    return json;
}

}  // namespace tessel::calculation_json
