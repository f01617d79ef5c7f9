#include "RulesetFile.hpp"

#include <array>

#include "App/model/CalendarText.hpp"
#include "App/model/DecimalJSON.hpp"
#include "App/model/EntryText.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/MealPenaltyRules.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel {

TesselRulesError TesselRulesError::unsupportedVersion(std::int64_t version) {
    return {Case::unsupportedVersion, "unsupportedVersion",
            "Ruleset file version " + std::to_string(version) + " is not supported.", {{"version", version}}};
}

TesselRulesError TesselRulesError::invalid(const std::string& detail) {
    return {Case::invalid, "invalid", "The Ruleset is invalid. " + detail, {{"detail", detail}}};
}

TesselRulesError TesselRulesError::emptyName() { return {Case::emptyName, "emptyName", std::string(rules_library::emptyName)}; }

namespace ruleset_file {
namespace {

using namespace std::chrono;

// The reference date of the file's dates.
const Instant referenceDate = Instant(sys_days(year(2001) / January / 1));

// The configuration's decimal fields, and its one date field, by key.
constexpr std::array<std::string_view, 5> decimalKeys{"multiplier", "repeatingAmount", "amount", "straightTimeRateMultiplier",
                                                      "rateMultiplier"};
constexpr std::string_view decimalListKey = "earlyOrdinalAmounts";
constexpr std::string_view dateKey = "effectiveFrom";

bool isDecimalKey(std::string_view key) { return std::find(decimalKeys.begin(), decimalKeys.end(), key) != decimalKeys.end(); }

Json secondsSinceReference(Instant instant) { return Json((instant - referenceDate).count()); }

// A file date: a JSON number of seconds since the reference date (a fraction is cut to whole seconds).
Instant instantFrom(const Json& value, const std::string& path) {
    const auto count = decimal_json::read(value);
    const auto whole = count && !value.is_string() ? count->roundedToWholeNumber(RoundingMethod::towardZero).toInt64() : std::nullopt;
    // Four hundred thousand years either way is far beyond any ruleset and inside every calendar we use.
    if (!whole || *whole > 12'000'000'000'000 || *whole < -12'000'000'000'000) {
        throw TesselRulesError::invalid("\u201C" + path + "\u201D must be a date as a number of seconds since 2001-01-01.");
    }
    return referenceDate + seconds(*whole);
}

// Rewrites the configuration document between the command line's conventions (decimal text, dates as
// YYYY-MM-DD) and the file's (numbers, seconds since the reference date), key by key.
enum class Direction { toFile, fromFile };

void convertDecimal(Json& value, Direction direction, const std::string& path) {
    if (direction == Direction::toFile) {
        value = decimal_json::number<Json>(*decimal_json::read(value));
        return;
    }
    if (value.is_string() || !decimal_json::read(value)) {
        throw TesselRulesError::invalid("\u201C" + path + "\u201D must be a decimal number.");
    }
    value = decimal_json::text<Json>(*decimal_json::read(value));
}

void convert(Json& value, Direction direction, const std::string& path) {
    if (value.is_array()) {
        for (std::size_t i = 0; i < value.size(); ++i) convert(value[i], direction, json_fields::elementPath(path, i));
        return;
    }
    if (!value.is_object()) return;
    for (auto& [key, member] : value.items()) {
        const std::string memberPath = json_fields::childPath(path, key);
        if (isDecimalKey(key) && !member.is_null()) {
            convertDecimal(member, direction, memberPath);
        } else if (key == decimalListKey && member.is_array()) {
            for (std::size_t i = 0; i < member.size(); ++i) convertDecimal(member[i], direction, json_fields::elementPath(memberPath, i));
        } else if (key == dateKey && !member.is_null()) {
            if (direction == Direction::toFile) {
                const auto date = calendar_text::parseDate(member.get<std::string>());
                member = secondsSinceReference(Instant(sys_days(*date)));
            } else {
                member = calendar_text::formatDate(CalendarDate(floor<days>(instantFrom(member, memberPath))));
            }
        } else {
            convert(member, direction, memberPath);
        }
    }
}

std::string textAt(const Json& object, std::string_view key, bool required) {
    const auto found = object.find(std::string(key));
    if (found == object.end() || found->is_null()) {
        if (required) throw TesselRulesError::invalid("The file\u2019s metadata has no \u201C" + std::string(key) + "\u201D.");
        return {};
    }
    if (!found->is_string()) throw TesselRulesError::invalid("The file\u2019s \u201C" + std::string(key) + "\u201D must be text.");
    return found->get<std::string>();
}

Instant dateAt(const Json& metadata, const char* key) {
    if (!metadata.contains(key)) throw TesselRulesError::invalid("The file\u2019s metadata has no \u201C" + std::string(key) + "\u201D.");
    return instantFrom(metadata.at(key), std::string("metadata.") + key);
}

std::optional<std::string> optionalTextAt(const Json& metadata, std::string_view key) {
    std::string text = textAt(metadata, key, false);
    if (text.empty()) return std::nullopt;
    return text;
}

TesselRulesFileMetadata readMetadata(const Json& metadata) {
    const auto id = Uuid::parse(textAt(metadata, "portableRulesetID", true));
    if (!id) throw TesselRulesError::invalid("The file\u2019s \u201CportableRulesetID\u201D is not an identifier.");
    return {1,
            *id,
            textAt(metadata, "name", true),
            textAt(metadata, "provenanceNotes", false),
            dateAt(metadata, "createdAt"),
            dateAt(metadata, "exportedAt"),
            optionalTextAt(metadata, "applicationVersion"),
            optionalTextAt(metadata, "applicationBuild")};
}

}  // namespace

std::string write(const PayrollRulesLibraryItem& item, Instant exportedAt, const std::optional<std::string>& applicationVersion,
                  const std::optional<std::string>& applicationBuild) {
    Json metadata{{"formatVersion", 1},
                  {"portableRulesetID", item.portableRulesetID.text()},
                  {"name", item.name},
                  {"provenanceNotes", item.provenanceNotes},
                  {"createdAt", secondsSinceReference(item.createdAt)},
                  {"exportedAt", secondsSinceReference(exportedAt)}};
    if (applicationVersion) metadata["applicationVersion"] = *applicationVersion;
    if (applicationBuild) metadata["applicationBuild"] = *applicationBuild;
    Json configuration = rules_json::toJSON(item.configuration);
    convert(configuration, Direction::toFile, "configuration");
    return decimal_json::dump(Json{{"metadata", std::move(metadata)}, {"configuration", std::move(configuration)}}, -1);
}

Contents read(std::string_view bytes) {
    Json file;
    try {
        file = decimal_json::parse<Json>(bytes);
    } catch (const decimal_json::MalformedJSONError& error) {
        throw TesselRulesError::invalid(error.what());
    }
    if (!file.is_object() || !file.contains("metadata") || !file["metadata"].is_object() || !file.contains("configuration")) {
        throw TesselRulesError::invalid("The file does not hold \u201Cmetadata\u201D and \u201Cconfiguration\u201D.");
    }
    const Json& metadata = file["metadata"];
    const auto version = metadata.contains("formatVersion") ? decimal_json::read(metadata["formatVersion"]) : std::nullopt;
    const auto versionNumber = version && !metadata["formatVersion"].is_string() ? version->toInt64() : std::nullopt;
    if (!versionNumber) throw TesselRulesError::invalid("The file\u2019s \u201CformatVersion\u201D must be a whole number.");
    if (*versionNumber != 1) throw TesselRulesError::unsupportedVersion(*versionNumber);

    PayrollRuleConfiguration configuration;
    try {
        Json document = file["configuration"];
        convert(document, Direction::fromFile, "configuration");
        configuration = rules_json::configuration(document);
        ProductionRulesets::validateWhole(configuration);
    } catch (const MalformedInputError& error) {
        throw TesselRulesError::invalid(error.what());
    } catch (const DomainError& error) {
        if (dynamic_cast<const TesselRulesError*>(&error)) throw;
        throw TesselRulesError::invalid(error.description());
    } catch (const MealPenaltyRulesError& error) {
        throw TesselRulesError::invalid(error.what());
    } catch (const CompensationRuleInputError& error) {
        throw TesselRulesError::invalid(error.what());
    }
    TesselRulesFileMetadata read = readMetadata(metadata);
    std::string name(entry_text::trimmed(read.name));
    if (name.empty()) throw TesselRulesError::emptyName();
    return {std::move(read), std::move(configuration), std::move(name)};
}

}  // namespace ruleset_file
}  // namespace tessel
