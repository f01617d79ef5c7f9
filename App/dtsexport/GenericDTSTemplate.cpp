#include "GenericDTSTemplate.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "App/dtsexport/PDFStructuralInspection.hpp"
#include "App/model/CalendarText.hpp"

namespace tessel {
namespace {

using Json = nlohmann::json;
using Case = GenericDTSTemplateError::Case;
using Definition = ProductionDTSTemplateDefinition;

[[noreturn]] void invalid(const std::string& why) {
    throw GenericDTSTemplateError(Case::invalidDefinition, "The DTS template mapping is invalid: " + why + ".");
}

// Each presentation choice with its raw value, in one table per kind.
template <typename Value, std::size_t N>
using Names = std::array<std::pair<Value, std::string_view>, N>;

constexpr Names<DTSTemplateRenderingKind, 4> renderingKinds{{{DTSTemplateRenderingKind::text, "text"},
                                                            {DTSTemplateRenderingKind::mark, "mark"},
                                                            {DTSTemplateRenderingKind::choiceGroup, "choiceGroup"},
                                                            {DTSTemplateRenderingKind::image, "image"}}};
constexpr Names<DTSTimePresentation, 3> timePresentations{
    {{DTSTimePresentation::payrollDecimal, "payrollDecimal"}, {DTSTimePresentation::clock12Hour, "clock12Hour"}, {DTSTimePresentation::clock24Hour, "clock24Hour"}}};
constexpr Names<DTSDatePresentation, 6> datePresentations{{{DTSDatePresentation::numeric, "numeric"},
                                                          {DTSDatePresentation::abbreviated, "abbreviated"},
                                                          {DTSDatePresentation::long_, "long"},
                                                          {DTSDatePresentation::monthDay, "monthDay"},
                                                          {DTSDatePresentation::monthDayShortYear, "monthDayShortYear"},
                                                          {DTSDatePresentation::dayMonthYear, "dayMonthYear"}}};
constexpr Names<DTSTextTransform, 2> textTransforms{{{DTSTextTransform::unchanged, "unchanged"}, {DTSTextTransform::uppercase, "uppercase"}}};
constexpr Names<DTSTextAlignment, 3> alignments{
    {{DTSTextAlignment::leading, "leading"}, {DTSTextAlignment::center, "center"}, {DTSTextAlignment::trailing, "trailing"}}};
constexpr Names<DTSTextFit, 2> fits{{{DTSTextFit::fixed, "fixed"}, {DTSTextFit::shrinkToFit, "shrinkToFit"}}};
constexpr Names<DTSBooleanMark, 3> marks{{{DTSBooleanMark::x, "x"}, {DTSBooleanMark::check, "check"}, {DTSBooleanMark::filled, "filled"}}};

template <typename Value, std::size_t N>
std::string nameOf(const Names<Value, N>& names, Value value) {
    for (const auto& [v, name] : names) {
        if (v == value) return std::string(name);
    }
    return {};
}

template <typename Value, std::size_t N>
Value valueOf(const Names<Value, N>& names, const Json& json, const char* key) {
    if (!json.is_string()) invalid(std::string("\u201C") + key + "\u201D must be text");
    for (const auto& [v, name] : names) {
        if (name == json.get_ref<const std::string&>()) return v;
    }
    invalid(std::string("\u201C") + key + "\u201D has an unknown value");
}

const Json& member(const Json& object, const char* key) {
    if (!object.is_object()) invalid("an entry must be an object");
    const auto found = object.find(key);
    if (found == object.end()) invalid(std::string("\u201C") + key + "\u201D is missing");
    return *found;
}

double number(const Json& object, const char* key) {
    const Json& value = member(object, key);
    if (!value.is_number()) invalid(std::string("\u201C") + key + "\u201D must be a number");
    return value.get<double>();
}

Uuid uuidOf(const Json& object, const char* key) {
    const Json& value = member(object, key);
    const auto id = value.is_string() ? Uuid::parse(value.get_ref<const std::string&>()) : std::nullopt;
    if (!id) invalid(std::string("\u201C") + key + "\u201D must be an identifier");
    return *id;
}

Json regionJSON(const DTSNormalizedRegion& r) { return {{"x", r.x}, {"y", r.y}, {"width", r.width}, {"height", r.height}}; }
DTSNormalizedRegion regionOf(const Json& json) { return {number(json, "x"), number(json, "y"), number(json, "width"), number(json, "height")}; }

Json presentationJSON(const DTSTemplatePresentation& p) {
    Json json{{"renderingKind", nameOf(renderingKinds, p.renderingKind)}, {"textTransform", nameOf(textTransforms, p.textTransform)},
              {"alignment", nameOf(alignments, p.alignment)},          {"textFit", nameOf(fits, p.textFit)},
              {"booleanMark", nameOf(marks, p.booleanMark)}};
    if (p.timePresentation) json["timePresentation"] = nameOf(timePresentations, *p.timePresentation);
    if (p.datePresentation) json["datePresentation"] = nameOf(datePresentations, *p.datePresentation);
    return json;
}

DTSTemplatePresentation presentationOf(const Json& json) {
    DTSTemplatePresentation p;
    p.renderingKind = valueOf(renderingKinds, member(json, "renderingKind"), "renderingKind");
    p.textTransform = valueOf(textTransforms, member(json, "textTransform"), "textTransform");
    p.alignment = valueOf(alignments, member(json, "alignment"), "alignment");
    p.textFit = valueOf(fits, member(json, "textFit"), "textFit");
    p.booleanMark = valueOf(marks, member(json, "booleanMark"), "booleanMark");
    if (json.contains("timePresentation")) p.timePresentation = valueOf(timePresentations, json["timePresentation"], "timePresentation");
    if (json.contains("datePresentation")) p.datePresentation = valueOf(datePresentations, json["datePresentation"], "datePresentation");
    return p;
}

Json placementsJSON(const std::vector<DTSTemplatePlacement>& placements) {
    Json list = Json::array();
    for (const auto& p : placements) {
        list.push_back({{"id", p.id.text()},
                        {"semanticFieldID", std::string(dts_fields::field(p.semanticFieldID).key)},
                        {"region", regionJSON(p.region)},
                        {"presentation", presentationJSON(p.presentation)}});
    }
    return list;
}

std::vector<DTSTemplatePlacement> placementsOf(const Json& list) {
    if (!list.is_array()) invalid("placements must be a list");
    std::vector<DTSTemplatePlacement> placements;
    for (const auto& item : list) {
        const Json& key = member(item, "semanticFieldID");
        const auto field = key.is_string() ? dts_fields::fromKey(key.get_ref<const std::string&>()) : std::nullopt;
        if (!field) invalid("a placement names a field Tessel does not know");
        placements.push_back({uuidOf(item, "id"), *field, regionOf(member(item, "region")), presentationOf(member(item, "presentation"))});
    }
    return placements;
}

std::string fieldName(DTSSemanticFieldID field) { return "\u201C" + std::string(dts_fields::field(field).key) + "\u201D"; }

void checkRegion(const DTSNormalizedRegion& r, const std::string& what) {
    const bool finite = std::isfinite(r.x) && std::isfinite(r.y) && std::isfinite(r.width) && std::isfinite(r.height);
    if (!finite || r.x < 0 || r.y < 0 || r.width <= 0 || r.height <= 0 || r.x + r.width > 1 || r.y + r.height > 1) {
        throw GenericDTSTemplateError(Case::invalidRegion, "The region of " + what + " lies outside its page or row.");
    }
}

void checkPlacements(const std::vector<DTSTemplatePlacement>& placements, DTSSemanticScope scope, std::set<std::string>& identities) {
    for (const auto& p : placements) {
        checkRegion(p.region, fieldName(p.semanticFieldID));
        if (dts_fields::field(p.semanticFieldID).scope != scope) {
            throw GenericDTSTemplateError(Case::scopeMismatch, scope == DTSSemanticScope::crewRow
                                                                  ? fieldName(p.semanticFieldID) + " is a document field placed in the crew rows."
                                                                  : fieldName(p.semanticFieldID) + " is a crew-row field placed on the page.");
        }
        // A placement is one field drawn in one place: the same field twice in the same region, or one
        // identifier twice, would draw over itself.
        const std::string place = std::string(dts_fields::field(p.semanticFieldID).key) + "@" + regionJSON(p.region).dump();
        if (!identities.insert(p.id.text()).second || !identities.insert(place).second) {
            throw GenericDTSTemplateError(Case::duplicatePhysicalIdentity, fieldName(p.semanticFieldID) + " is placed twice in the same place.");
        }
    }
}

}  // namespace

GenericDTSTemplateError::GenericDTSTemplateError(Case errorCase, const std::string& message) : std::runtime_error(message), case_(errorCase) {}

std::string_view GenericDTSTemplateError::caseName() const noexcept {
    switch (case_) {
        case Case::invalidRegion: return "invalidRegion";
        case Case::duplicatePhysicalIdentity: return "duplicatePhysicalIdentity";
        case Case::scopeMismatch: return "scopeMismatch";
        case Case::invalidApprovalState: return "invalidApprovalState";
        case Case::invalidSourcePDF: return "invalidSourcePDF";
        case Case::sourcePDFTooLarge: return "sourcePDFTooLarge";
        case Case::invalidDefinition: return "invalidDefinition";
        case Case::unsupportedDefinitionVersion: return "unsupportedDefinitionVersion";
    }
    return {};
}

namespace generic_dts_template {

std::string encode(const Definition& d) {
    Json slots = Json::array();
    for (const auto& slot : d.crewRowSlots) slots.push_back({{"id", slot.id.text()}, {"region", regionJSON(slot.region)}});
    Json json{{"formatVersion", d.formatVersion},
              {"id", d.id.text()},
              {"approvalState", d.approvalState == Definition::ApprovalState::approved ? "approved" : "draft"},
              {"documentPlacements", placementsJSON(d.documentPlacements)},
              {"crewRowSchema", {{"placements", placementsJSON(d.crewRowPlacements)}}},
              {"crewRowSlots", slots}};
    if (d.approvedAt) json["approvedAt"] = calendar_text::formatInstant(*d.approvedAt);
    Json blank = Json::array();
    for (const auto field : d.leftBlank) blank.push_back(std::string(dts_fields::field(field).key));
    json["leftBlankFields"] = blank;
    json["crewRowsConfirmed"] = d.crewRowsConfirmed;
    return json.dump(2);
}

Definition decode(std::string_view data) {
    Json json;
    try {
        json = Json::parse(data);
    } catch (const Json::exception&) {
        invalid("it is not a JSON document");
    }
    // The header first: a version this build does not know is refused before anything else is read.
    const Json& version = member(json, "formatVersion");
    if (!version.is_number_integer()) invalid("\u201CformatVersion\u201D must be a whole number");
    if (version.get<std::int64_t>() != Definition::currentFormatVersion) {
        throw GenericDTSTemplateError(Case::unsupportedDefinitionVersion, "This DTS template mapping was saved by a version of Tessel that this one cannot read (format " +
                                                                              std::to_string(version.get<std::int64_t>()) + ").");
    }
    Definition d;
    d.id = uuidOf(json, "id");
    const Json& state = member(json, "approvalState");
    if (state != "draft" && state != "approved") invalid("\u201CapprovalState\u201D must be draft or approved");
    d.approvalState = state == "approved" ? Definition::ApprovalState::approved : Definition::ApprovalState::draft;
    if (json.contains("approvedAt")) {
        const auto at = json["approvedAt"].is_string() ? calendar_text::parseInstant(json["approvedAt"].get_ref<const std::string&>()) : std::nullopt;
        if (!at) invalid("\u201CapprovedAt\u201D must be an ISO 8601 date");
        d.approvedAt = at;
    }
    d.documentPlacements = placementsOf(member(json, "documentPlacements"));
    d.crewRowPlacements = placementsOf(member(member(json, "crewRowSchema"), "placements"));
    const Json& slots = member(json, "crewRowSlots");
    if (!slots.is_array()) invalid("\u201CcrewRowSlots\u201D must be a list");
    for (const auto& slot : slots) d.crewRowSlots.push_back({uuidOf(slot, "id"), regionOf(member(slot, "region"))});
    if (json.contains("crewRowsConfirmed")) {
        if (!json["crewRowsConfirmed"].is_boolean()) invalid("\u201CcrewRowsConfirmed\u201D must be true or false");
        d.crewRowsConfirmed = json["crewRowsConfirmed"].get<bool>();
    }
    if (json.contains("leftBlankFields")) {
        if (!json["leftBlankFields"].is_array()) invalid("\u201CleftBlankFields\u201D must be a list");
        for (const auto& key : json["leftBlankFields"]) {
            const auto field = key.is_string() ? dts_fields::fromKey(key.get_ref<const std::string&>()) : std::nullopt;
            if (!field) invalid("a field left blank is one Tessel does not know");
            d.leftBlank.push_back(*field);
        }
    }
    return d;
}

void validate(const Definition& d) {
    std::set<std::string> identities;
    checkPlacements(d.documentPlacements, DTSSemanticScope::document, identities);
    checkPlacements(d.crewRowPlacements, DTSSemanticScope::crewRow, identities);
    for (std::size_t i = 0; i < d.crewRowSlots.size(); ++i) checkRegion(d.crewRowSlots[i].region, "crew row " + std::to_string(i + 1));
    if ((d.approvalState == Definition::ApprovalState::approved) != d.approvedAt.has_value()) {
        throw GenericDTSTemplateError(Case::invalidApprovalState, "An approved DTS template mapping records when it was approved, and a draft does not.");
    }
}

void validateSource(std::string_view pdf) {
    if (pdf.size() > sourcePDFLimit) throw GenericDTSTemplateError(Case::sourcePDFTooLarge, "The blank DTS PDF is larger than 10 MB.");
    try {
        if (pdf_structure::inspect(pdf).pageCount != 1) {
            throw GenericDTSTemplateError(Case::invalidSourcePDF, std::string(pdf_structure::onePageOnly));
        }
    } catch (const PDFStructuralInspectionError& error) {
        throw GenericDTSTemplateError(Case::invalidSourcePDF, error.what());
    }
}

}  // namespace generic_dts_template
}  // namespace tessel
