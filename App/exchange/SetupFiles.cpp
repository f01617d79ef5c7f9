#include "SetupFiles.hpp"

#include <nlohmann/json.hpp>
#include <set>

#include "App/exchange/Base64.hpp"
#include "App/exchange/ProductionArchive.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/DecimalJSON.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/JSONFields.hpp"

namespace tessel::setup_files {
namespace {

// Sorted keys, as nlohmann::json keeps them.
using Document = nlohmann::json;
using Error = ProductionArchiveError;

Document decoded(const std::string& bytes) {
    try {
        Document document = decimal_json::parse<Document>(bytes);
        if (!document.is_object()) throw Error::invalidArchive("The document must be a JSON object.");
        const auto version = document.find("formatVersion");
        if (version == document.end() || !version->is_number_integer()) throw Error::invalidArchive("The field \u201CformatVersion\u201D is missing.");
        if (version->get<std::int64_t>() != 1) throw Error::unsupportedVersion(version->get<std::int64_t>());
        return document;
    } catch (const decimal_json::MalformedJSONError& error) {
        throw Error::invalidArchive(error.what());
    }
}

std::optional<std::string> optionalText(const Document& object, std::string_view key) {
    const auto found = object.find(std::string(key));
    if (found == object.end() || found->is_null()) return std::nullopt;
    if (!found->is_string()) throw Error::invalidArchive("The field \u201C" + std::string(key) + "\u201D must be text.");
    return found->get<std::string>();
}

std::string requiredText(const Document& object, std::string_view key, const std::string& path) {
    const auto text = optionalText(object, key);
    if (!text) throw Error::invalidArchive("The field \u201C" + json_fields::childPath(path, key) + "\u201D is missing.");
    return *text;
}

Instant instantAt(const Document& object, std::string_view key, const std::string& path) {
    const auto parsed = calendar_text::parseInstant(requiredText(object, key, path));
    if (!parsed) throw Error::invalidArchive("The field \u201C" + json_fields::childPath(path, key) + "\u201D must be an ISO 8601 date.");
    return *parsed;
}

CalendarDate dateAt(const Document& object, std::string_view key, const std::string& path) {
    return CalendarDate(std::chrono::floor<std::chrono::days>(instantAt(object, key, path)));
}

std::optional<Uuid> optionalUuid(const Document& object, std::string_view key) {
    const auto text = optionalText(object, key);
    if (!text) return std::nullopt;
    const auto id = Uuid::parse(*text);
    if (!id) throw Error::invalidArchive("The field \u201C" + std::string(key) + "\u201D must be an identifier.");
    return id;
}

Uuid uuidAt(const Document& object, std::string_view key, const std::string& path) {
    const auto id = optionalUuid(object, key);
    if (!id) throw Error::invalidArchive("The field \u201C" + json_fields::childPath(path, key) + "\u201D is missing.");
    return *id;
}

std::int64_t integerOr(const Document& object, std::string_view key, std::int64_t fallback) {
    const auto found = object.find(std::string(key));
    if (found == object.end() || found->is_null()) return fallback;
    if (!found->is_number_integer()) throw Error::invalidArchive("The field \u201C" + std::string(key) + "\u201D must be a whole number.");
    return found->get<std::int64_t>();
}

std::string dateText(CalendarDate date) { return calendar_text::formatInstant(std::chrono::sys_days(date)); }

void setOptional(Document& object, std::string_view key, const std::optional<std::string>& value) {
    if (value) object[std::string(key)] = *value;
}

}  // namespace

std::string writeCrewLibrary(const std::vector<CrewLibraryPerson>& people, Instant exportedAt) {
    Document list = Document::array();
    for (const auto& p : people) {
        Document person{{"id", p.id.text()}, {"displayName", p.displayName}, {"displayOrder", p.displayOrder}};
        if (p.preferredRatePackagePositionID) person["preferredRatePackagePositionID"] = p.preferredRatePackagePositionID->text();
        setOptional(person, "preferredPositionName", p.preferredPositionName);
        setOptional(person, "preferredDTSTitle", p.preferredDTSTitle);
        list.push_back(std::move(person));
    }
    const Document document{{"formatVersion", 1}, {"exportedAt", calendar_text::formatInstant(exportedAt)}, {"people", std::move(list)}};
    return decimal_json::dump(document, 2) + "\n";
}

std::vector<CrewLibraryPerson> readCrewLibrary(const std::string& bytes) {
    const Document document = decoded(bytes);
    instantAt(document, "exportedAt", "");
    const auto people = document.find("people");
    if (people == document.end() || !people->is_array()) throw Error::invalidArchive("The field \u201Cpeople\u201D is missing.");
    std::vector<CrewLibraryPerson> result;
    for (std::size_t i = 0; i < people->size(); ++i) {
        const Document& p = (*people)[i];
        const std::string path = "people[" + std::to_string(i) + "]";
        if (!p.is_object()) throw Error::invalidArchive("The field \u201C" + path + "\u201D must be an object.");
        CrewLibraryPerson person{uuidAt(p, "id", path), requiredText(p, "displayName", path)};
        if (entry_text::isBlank(person.displayName)) throw Error::invalidArchive(std::string(crew_library_words::blankName));
        person.displayName = std::string(entry_text::trimmed(person.displayName));
        person.preferredRatePackagePositionID = optionalUuid(p, "preferredRatePackagePositionID");
        person.preferredPositionName = optionalText(p, "preferredPositionName");
        person.preferredDTSTitle = optionalText(p, "preferredDTSTitle");
        person.displayOrder = integerOr(p, "displayOrder", static_cast<std::int64_t>(i));
        result.push_back(std::move(person));
    }
    return result;
}

std::string writeRateCard(const SavedRateCard& card) {
    Document positions = Document::array();
    for (std::size_t i = 0; i < card.positions.size(); ++i) {
        const auto& p = card.positions[i];
        Document position{{"id", p.id.text()},
                          {"positionName", p.positionName},
                          {"dailyDefaultsData", base64::encode(p.dailyDefaultsData)},
                          {"weeklyDefaultsData", base64::encode(p.weeklyDefaultsData)},
                          {"currencyCode", p.currencyCode},
                          {"alternateTitles", Document::array()},
                          {"displayOrder", static_cast<std::int64_t>(i)}};
        setOptional(position, "occupationCode", p.occupationCode);
        if (p.dailyScale) position["dailyScale"] = p.dailyScale->toString();
        if (p.weeklyScale) position["weeklyScale"] = p.weeklyScale->toString();
        positions.push_back(std::move(position));
    }
    Document document{{"formatVersion", 1},
                      {"id", card.id.text()},
                      {"displayName", card.displayName},
                      {"effectiveStart", dateText(card.effectiveStart)},
                      {"positions", std::move(positions)}};
    if (card.effectiveEnd) document["effectiveEnd"] = dateText(*card.effectiveEnd);
    setOptional(document, "sourceNotes", card.sourceNotes);
    return decimal_json::dump(document, 2) + "\n";
}

SavedRateCard readRateCard(const std::string& bytes) {
    const Document document = decoded(bytes);
    SavedRateCard card{uuidAt(document, "id", ""), requiredText(document, "displayName", ""), dateAt(document, "effectiveStart", ""), {}, {}, {}};
    if (entry_text::isBlank(card.displayName)) throw Error::invalidArchive("The Rate Card name is blank.");
    card.displayName = std::string(entry_text::trimmed(card.displayName));
    if (optionalText(document, "effectiveEnd")) card.effectiveEnd = dateAt(document, "effectiveEnd", "");
    card.sourceNotes = optionalText(document, "sourceNotes");
    const auto listed = document.find("positions");
    if (listed == document.end() || !listed->is_array()) throw Error::invalidArchive("The field \u201Cpositions\u201D is missing.");
    std::set<std::string> codes;
    for (const Document& p : *listed) {
        const auto invalid = [] { return Error::invalidArchive("A Rate Card Position is invalid."); };
        if (!p.is_object()) throw invalid();
        SavedRateCardPosition position{.id = Uuid::generate()};
        try {
            position.id = uuidAt(p, "id", "");
            position.positionName = requiredText(p, "positionName", "");
            position.occupationCode = optionalText(p, "occupationCode");
            if (position.occupationCode) position.occupationCode = positions::validatedOccupationCode(*position.occupationCode);
            for (auto [key, scale] : {std::pair("dailyScale", &position.dailyScale), std::pair("weeklyScale", &position.weeklyScale)}) {
                if (const auto text = optionalText(p, key)) *scale = positions::validatedScaleAmount(*text);
            }
            position.currencyCode = requiredText(p, "currencyCode", "");
            const auto daily = base64::decode(optionalText(p, "dailyDefaultsData").value_or(""));
            const auto weekly = base64::decode(optionalText(p, "weeklyDefaultsData").value_or(""));
            if (!daily || !weekly) throw invalid();
            position.dailyDefaultsData = *daily;
            position.weeklyDefaultsData = *weekly;
            position_defaults::read(position.dailyDefaultsData);
        } catch (const ProductionArchiveError&) {
            throw invalid();
        } catch (const ModelValidationError&) {
            throw invalid();
        } catch (const MalformedInputError&) {
            throw invalid();
        }
        if (entry_text::isBlank(position.positionName)) throw invalid();
        if (position.occupationCode && !codes.insert(*position.occupationCode).second) {
            throw Error::invalidArchive("Occupation code " + *position.occupationCode + " occurs more than once.");
        }
        card.positions.push_back(std::move(position));
    }
    return card;
}

}  // namespace tessel::setup_files
