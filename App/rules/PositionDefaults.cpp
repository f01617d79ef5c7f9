#include "PositionDefaults.hpp"

#include "App/model/JSONFields.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel {

std::string_view toRawValue(PositionProvisionMode mode) noexcept {
    switch (mode) {
        case PositionProvisionMode::inherit: return "inherit";
        case PositionProvisionMode::custom: return "custom";
        case PositionProvisionMode::none: return "none";
    }
    return "inherit";
}

std::optional<PositionProvisionMode> positionProvisionModeFromRawValue(std::string_view raw) noexcept {
    for (auto mode : {PositionProvisionMode::inherit, PositionProvisionMode::custom, PositionProvisionMode::none}) {
        if (toRawValue(mode) == raw) return mode;
    }
    return std::nullopt;
}

bool PositionScheduleOverrides::empty() const noexcept {
    return minimumCall.mode == PositionProvisionMode::inherit && overtime.mode == PositionProvisionMode::inherit &&
           doubleTime.mode == PositionProvisionMode::inherit;
}

bool PositionPayrollDefaults::changesSchedule() const noexcept {
    return ordinaryDaySchedule || (scheduleOverrides && !scheduleOverrides->empty());
}

namespace position_defaults {
namespace {

using namespace json_fields;

// The keys of each provision as stored: "overtimeMode", "overtimeThresholdSeconds", "overtimeMultiplier",
// "overtimeBasis"; the minimum call has "minimumCallSeconds" and no multiplier or basis.
struct ProvisionKeys {
    std::string mode, seconds, multiplier, basis;
};
const ProvisionKeys minimumCallKeys{"minimumCallMode", "minimumCallSeconds", "", ""};
const ProvisionKeys overtimeKeys{"overtimeMode", "overtimeThresholdSeconds", "overtimeMultiplier", "overtimeBasis"};
const ProvisionKeys doubleTimeKeys{"doubleTimeMode", "doubleTimeThresholdSeconds", "doubleTimeMultiplier", "doubleTimeBasis"};

// Read as every rules document is, numbers kept as written, so that a multiplier of 1.5 stays exact.
Json parsed(const std::string& data) {
    if (data.empty()) return Json::object();
    Json json;
    try {
        json = decimal_json::parse<Json>(data);
    } catch (const decimal_json::MalformedJSONError&) {
        throw MalformedInputError("The payroll defaults are not a JSON object.");
    }
    if (!json.is_object()) throw MalformedInputError("The payroll defaults are not a JSON object.");
    return json;
}

PositionProvision provisionAt(const Json& json, const ProvisionKeys& keys, const std::string& path) {
    PositionProvision provision;
    if (const Json* mode = optionalMember(json, keys.mode)) {
        provision.mode = enumeration(*mode, childPath(path, keys.mode), &positionProvisionModeFromRawValue);
    }
    if (const Json* seconds = optionalMember(json, keys.seconds)) {
        provision.seconds = integer(*seconds, childPath(path, keys.seconds));
        if (*provision.seconds < 0) throw MalformedInputError("The field \u201C" + childPath(path, keys.seconds) + "\u201D cannot be negative.");
    }
    if (!keys.multiplier.empty()) {
        if (const Json* multiplier = optionalMember(json, keys.multiplier)) provision.multiplier = decimal(*multiplier, childPath(path, keys.multiplier));
    }
    if (!keys.basis.empty()) {
        if (const Json* basis = optionalMember(json, keys.basis)) {
            provision.basis = enumeration(*basis, childPath(path, keys.basis), &durationBasisFromRawValue);
        }
    }
    if (provision.mode == PositionProvisionMode::custom && !provision.seconds) {
        throw MalformedInputError("The field \u201C" + childPath(path, keys.seconds) + "\u201D is required when " + keys.mode + " is custom.");
    }
    return provision;
}

void writeProvision(Json& json, const PositionProvision& provision, const ProvisionKeys& keys) {
    for (const auto* key : {&keys.mode, &keys.seconds, &keys.multiplier, &keys.basis}) {
        if (!key->empty()) json.erase(*key);
    }
    if (provision.mode == PositionProvisionMode::inherit) return;
    json[keys.mode] = toRawValue(provision.mode);
    if (provision.seconds) json[keys.seconds] = *provision.seconds;
    if (provision.multiplier && !keys.multiplier.empty()) json[keys.multiplier] = decimal_json::text<Json>(*provision.multiplier);
    if (provision.basis && !keys.basis.empty()) json[keys.basis] = toRawValue(*provision.basis);
}

PositionScheduleOverrides overridesAt(const Json& json, const std::string& path) {
    object(json, path);
    return {provisionAt(json, minimumCallKeys, path), provisionAt(json, overtimeKeys, path), provisionAt(json, doubleTimeKeys, path)};
}

Json overridesJSON(const PositionScheduleOverrides& overrides) {
    Json json = Json::object();
    writeProvision(json, overrides.minimumCall, minimumCallKeys);
    writeProvision(json, overrides.overtime, overtimeKeys);
    writeProvision(json, overrides.doubleTime, doubleTimeKeys);
    return json;
}

template <typename Read>
auto optionalAt(const Json& json, std::string_view key, const std::string& path, Read read) -> std::optional<decltype(read(json, path))> {
    const Json* value = optionalMember(json, key);
    if (!value) return std::nullopt;
    return read(*value, childPath(path, key));
}

// A band the schedule does not have yet, named after its straight-time band ("production.band.double-time").
std::string siblingRuleID(const std::string& straightTimeRuleID, std::string_view suffix) {
    constexpr std::string_view straight = ".band.straight-time";
    if (straightTimeRuleID.size() > straight.size() && straightTimeRuleID.ends_with(straight)) {
        return straightTimeRuleID.substr(0, straightTimeRuleID.size() - straight.size()) + ".band." + std::string(suffix);
    }
    return straightTimeRuleID + "." + std::string(suffix);
}

// One band slot changed by a provision: dropped, moved to its threshold with its multiplier and basis,
// or made from `fallback` when the schedule had no such band.
void applyTo(std::optional<RulesetPayBandDraft>& band, const PositionProvision& provision, const RulesetPayBandDraft& fallback) {
    if (provision.mode == PositionProvisionMode::inherit) return;
    if (provision.mode == PositionProvisionMode::none) {
        band.reset();
        return;
    }
    if (!band) band = fallback;
    band->lowerBoundSeconds = provision.seconds.value_or(band->lowerBoundSeconds);
    if (provision.multiplier) band->multiplier = *provision.multiplier;
    if (provision.basis) band->entryThresholdBasis = *provision.basis;
}

}  // namespace

PositionPayrollDefaults read(const std::string& data) {
    const Json json = parsed(data);
    const std::string path = "defaults";
    PositionPayrollDefaults defaults;
    defaults.ordinaryDaySchedule = optionalAt(json, "ordinaryDaySchedule", path, &rules_json::scheduleDraft);
    defaults.scheduleOverrides = optionalAt(json, "scheduleOverrides", path, &overridesAt);
    defaults.availability = optionalAt(json, "availability", path, &boolean);
    defaults.hourlyAmount = optionalAt(json, "hourlyAmount", path, &decimal);
    if (const auto currency = optionalAt(json, "currencyCode", path, &string)) defaults.currencyCode = *currency;
    defaults.weeklyGuaranteeSeconds = optionalAt(json, "weeklyGuaranteeSeconds", path, &integer);
    defaults.weeklyGuaranteeAmount = optionalAt(json, "weeklyGuaranteeAmount", path, &decimal);
    defaults.weeklyOvertimeRuleID = optionalAt(json, "weeklyOvertimeRuleID", path, &string);
    defaults.weeklyOvertimeThresholdSeconds = optionalAt(json, "weeklyOvertimeThresholdSeconds", path, &integer);
    defaults.weeklyOvertimeMultiplier = optionalAt(json, "weeklyOvertimeMultiplier", path, &decimal);
    return defaults;
}

std::string withHourlyAmount(const std::string& data, const std::optional<Decimal>& amount, const std::string& currencyCode) {
    Json json = parsed(data);
    if (amount) {
        json["hourlyAmount"] = amount->toString();
    } else {
        json.erase("hourlyAmount");
    }
    json["currencyCode"] = currencyCode;
    return decimal_json::dump(json);
}

std::string withOverrides(const std::string& data, const std::optional<PositionScheduleOverrides>& overrides) {
    Json json = parsed(data);
    if (overrides && !overrides->empty()) {
        json["scheduleOverrides"] = overridesJSON(*overrides);
    } else {
        json.erase("scheduleOverrides");
    }
    return decimal_json::dump(json);
}

PositionScheduleOverrides readOverrides(const std::string& data) { return overridesAt(parsed(data), "overrides"); }

std::string writeOverrides(const PositionScheduleOverrides& overrides) { return decimal_json::dump(overridesJSON(overrides)); }

PositionScheduleOverrides merged(const PositionScheduleOverrides& position, const PositionScheduleOverrides& personal) {
    const auto pick = [](const PositionProvision& own, const PositionProvision& person) {
        return person.mode == PositionProvisionMode::inherit ? own : person;
    };
    return {pick(position.minimumCall, personal.minimumCall), pick(position.overtime, personal.overtime),
            pick(position.doubleTime, personal.doubleTime)};
}

OrdinaryDayScheduleDraft adjusted(const OrdinaryDayScheduleDraft& schedule, const PositionScheduleOverrides& overrides) {
    OrdinaryDayScheduleDraft result = schedule;
    if (overrides.minimumCall.mode == PositionProvisionMode::none) result.dailyMinimumEnabled = false;
    if (overrides.minimumCall.mode == PositionProvisionMode::custom) {
        result.dailyMinimumEnabled = true;
        result.dailyMinimumSeconds = *overrides.minimumCall.seconds;
    }
    const auto enabled = schedule.enabledBands();
    if (enabled.empty()) return result;
    // The bands by place: straight time, overtime, double time, then any further band as it is.
    const RulesetPayBandDraft& straight = enabled.front();
    std::optional<RulesetPayBandDraft> overtime, doubleTime;
    if (enabled.size() > 1) overtime = enabled[1];
    if (enabled.size() > 2) doubleTime = enabled[2];
    // A double-time band switched off in the schedule is still stored: setting double time revives it.
    const RulesetPayBandDraft storedDoubleTime =
        schedule.bands.size() > 2 ? schedule.bands[2]
                                  : RulesetPayBandDraft{siblingRuleID(straight.ruleID, "double-time"), 0, std::nullopt, Decimal(2), straight.entryThresholdBasis};
    applyTo(overtime, overrides.overtime,
            {siblingRuleID(straight.ruleID, "time-and-a-half"), 0, std::nullopt, Decimal("1.5"), straight.entryThresholdBasis});
    applyTo(doubleTime, overrides.doubleTime, storedDoubleTime);

    std::vector<RulesetPayBandDraft> bands{straight};
    if (overtime) bands.push_back(*overtime);
    if (doubleTime) bands.push_back(*doubleTime);
    bands.insert(bands.end(), enabled.begin() + std::min<std::ptrdiff_t>(3, static_cast<std::ptrdiff_t>(enabled.size())), enabled.end());
    // Each band ends where the next begins; the last is open.
    for (std::size_t i = 0; i < bands.size(); ++i) {
        bands[i].upperBoundSeconds = i + 1 < bands.size() ? std::optional(bands[i + 1].lowerBoundSeconds) : std::nullopt;
    }
    result.bands = std::move(bands);
    result.thirdBandEnabled.reset();
    ProductionRulesets::validateSchedule(result);
    return result;
}

}  // namespace position_defaults
}  // namespace tessel
