#include "ProductionDTSTemplates.hpp"

#include <algorithm>

#include "App/model/ProductionRepository.hpp"

namespace tessel {
namespace {

using Status = DTSTemplateReviewMapping::Status;
using Classification = DTSInterpretationClassification;
using Definition = ProductionDTSTemplateDefinition;

std::vector<StoredDTSTemplate> stored(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare(
        "SELECT id, sourcePDFData, definitionData, createdAt, modifiedAt FROM ProductionGenericDTSTemplate WHERE productionID = ?1 "
        "ORDER BY modifiedAt DESC, id");
    columns::bind(statement, 1, productionID);
    std::vector<StoredDTSTemplate> templates;
    while (statement.executeStep()) {
        try {
            templates.push_back({columns::uuid(statement.getColumn(0)), columns::blob(statement.getColumn(1)),
                                 generic_dts_template::decode(columns::blob(statement.getColumn(2))), columns::instant(statement.getColumn(3)),
                                 columns::instant(statement.getColumn(4))});
        } catch (const GenericDTSTemplateError&) {
            // A mapping this build cannot read is neither used nor offered for review.
        }
    }
    return templates;
}

std::optional<StoredDTSTemplate> inState(ModelContext& context, const Uuid& productionID, Definition::ApprovalState state) {
    for (auto& t : stored(context, productionID)) {
        if (t.definition.approvalState == state) return std::move(t);
    }
    return std::nullopt;
}

void write(ModelContext& context, const Uuid& productionID, const StoredDTSTemplate& t) {
    auto& statement = context.prepare(
        "INSERT OR REPLACE INTO ProductionGenericDTSTemplate (id, productionID, sourcePDFData, definitionData, createdAt, modifiedAt) "
        "VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
    columns::bind(statement, 1, t.id);
    columns::bind(statement, 2, productionID);
    columns::bindBlob(statement, 3, t.sourcePDFData);
    columns::bindBlob(statement, 4, generic_dts_template::encode(t.definition));
    columns::bind(statement, 5, t.createdAt);
    columns::bind(statement, 6, t.modifiedAt);
    statement.exec();
}

void removeExcept(ModelContext& context, const Uuid& productionID, const Uuid& kept, Definition::ApprovalState state) {
    for (const auto& t : stored(context, productionID)) {
        if (t.id == kept || t.definition.approvalState != state) continue;
        auto& statement = context.prepare("DELETE FROM ProductionGenericDTSTemplate WHERE id = ?1");
        columns::bind(statement, 1, t.id);
        statement.exec();
    }
}

// How a field prints best: times in payroll decimal, dates numeric, yes-or-no fields as a mark, the
// signature as its image; text shrinks to fit.
DTSTemplatePresentation presentationFor(DTSSemanticFieldID field) {
    DTSTemplatePresentation p;
    p.textFit = DTSTextFit::shrinkToFit;
    switch (dts_fields::field(field).valueKind) {
        case DTSSemanticValueKind::payrollTime:
            p.timePresentation = DTSTimePresentation::payrollDecimal;
            p.alignment = DTSTextAlignment::center;
            break;
        case DTSSemanticValueKind::date: p.datePresentation = DTSDatePresentation::numeric; break;
        case DTSSemanticValueKind::boolean:
            p.renderingKind = DTSTemplateRenderingKind::mark;
            p.alignment = DTSTextAlignment::center;
            break;
        case DTSSemanticValueKind::image: p.renderingKind = DTSTemplateRenderingKind::image; break;
        default: break;
    }
    return p;
}

DTSNormalizedRegion regionOf(const PDFRect& r) { return {r.x, r.y, r.width, r.height}; }

const DTSTemplatePlacement* placementOf(const Definition& d, DTSSemanticFieldID field) {
    for (const auto* list : {&d.documentPlacements, &d.crewRowPlacements}) {
        for (const auto& p : *list) {
            if (p.semanticFieldID == field) return &p;
        }
    }
    return nullptr;
}

bool placed(const Definition& d, DTSSemanticFieldID field) { return placementOf(d, field) != nullptr; }

DTSTemplateInterpretation interpretationOf(const std::string& pdf) { return dts_interpretation::interpret(pdf_structure::inspect(pdf)); }

}  // namespace

std::string_view toRawValue(DTSTemplateReviewMapping::Status status) noexcept {
    switch (status) {
        case Status::mapped: return "mapped";
        case Status::review: return "review";
        case Status::notMapped: return "notMapped";
    }
    return {};
}

namespace production_dts_templates {

std::optional<StoredDTSTemplate> approved(ModelContext& context, const Uuid& productionID) {
    return inState(context, productionID, Definition::ApprovalState::approved);
}

std::optional<StoredDTSTemplate> draft(ModelContext& context, const Uuid& productionID) {
    return inState(context, productionID, Definition::ApprovalState::draft);
}

Definition proposedDefinition(const DTSTemplateInterpretation& interpretation) {
    Definition d;
    if (interpretation.crewTableSuggestion) {
        for (const auto& slot : interpretation.crewTableSuggestion->rowSlots) d.crewRowSlots.push_back({Uuid::generate(), regionOf(slot)});
        for (const auto& s : interpretation.crewTableSuggestion->semanticSuggestions) {
            if (s.classification != Classification::found || !s.semanticFieldID || placed(d, *s.semanticFieldID)) continue;
            d.crewRowPlacements.push_back({Uuid::generate(), *s.semanticFieldID, regionOf(s.region), presentationFor(*s.semanticFieldID)});
        }
    }
    for (const auto& s : interpretation.documentFieldSuggestions) {
        if (s.classification != Classification::found || !s.semanticFieldID || s.scope != DTSSemanticScope::document) continue;
        if (placed(d, *s.semanticFieldID)) continue;
        d.documentPlacements.push_back({Uuid::generate(), *s.semanticFieldID, regionOf(s.region), presentationFor(*s.semanticFieldID)});
    }
    return d;
}

StoredDTSTemplate importDraft(ModelContext& context, const Uuid& productionID, const std::string& pdf, Instant now) {
    generic_dts_template::validateSource(pdf);
    const auto inspection = pdf_structure::inspect(pdf);
    StoredDTSTemplate draft{Uuid::generate(), pdf, proposedDefinition(dts_interpretation::interpret(inspection)), now, now};
    write(context, productionID, draft);
    removeExcept(context, productionID, draft.id, Definition::ApprovalState::draft);
    return draft;
}

void saveDraft(ModelContext& context, const StoredDTSTemplate& draft, Instant now) {
    generic_dts_template::validate(draft.definition);
    auto& owner = context.prepare("SELECT productionID FROM ProductionGenericDTSTemplate WHERE id = ?1");
    columns::bind(owner, 1, draft.id);
    const auto productionID = columns::readFirst(owner, [](SQLite::Statement& row) { return columns::uuid(row.getColumn(0)); });
    if (!productionID) throw ModelValidationError(std::string(dts_template_words::missingSource));
    StoredDTSTemplate saved = draft;
    saved.modifiedAt = now;
    write(context, *productionID, saved);
}

std::vector<DTSTemplateReviewMapping> review(const StoredDTSTemplate& draft) {
    const auto interpretation = interpretationOf(draft.sourcePDFData);
    const auto& d = draft.definition;
    std::vector<DTSTemplateReviewMapping> mappings;
    const auto add = [&](const DTSSemanticSuggestion& s, const std::string& label) {
        DTSTemplateReviewMapping m{label, s.semanticFieldID, s.scope.value_or(DTSSemanticScope::document), regionOf(s.region), Status::notMapped, false,
                                   s.evidence};
        const bool blank = s.semanticFieldID && std::find(d.leftBlank.begin(), d.leftBlank.end(), *s.semanticFieldID) != d.leftBlank.end();
        if (const auto* placement = s.semanticFieldID ? placementOf(d, *s.semanticFieldID) : nullptr) {
            m.status = Status::mapped;
            m.region = placement->region;  // where it will be drawn, which the user may have moved
        } else if (blank) {
            m.status = Status::notMapped;
            m.explicitlyResolved = true;
        } else {
            m.status = s.classification == Classification::unresolved ? Status::notMapped : Status::review;
        }
        mappings.push_back(std::move(m));
    };
    if (interpretation.crewTableSuggestion) {
        for (const auto& s : interpretation.crewTableSuggestion->semanticSuggestions) {
            std::string label;
            for (const auto& raw : s.rawLabels) label += (label.empty() ? "" : " / ") + raw;
            add(s, label.empty() ? "Column " + std::to_string(*s.columnID + 1) : label);
        }
    }
    for (const auto& s : interpretation.documentFieldSuggestions) add(s, s.rawLabels.empty() ? std::string() : s.rawLabels.front());
    // Fields the user placed by hand beyond the proposals.
    for (const auto* list : {&d.documentPlacements, &d.crewRowPlacements}) {
        for (const auto& p : *list) {
            const bool listed = std::any_of(mappings.begin(), mappings.end(), [&](const auto& m) { return m.semanticFieldID == p.semanticFieldID; });
            if (!listed) {
                mappings.push_back({std::string(dts_fields::field(p.semanticFieldID).key), p.semanticFieldID, dts_fields::field(p.semanticFieldID).scope,
                                    p.region, Status::mapped, false, {"placed by hand"}});
            }
        }
    }
    return mappings;
}

std::vector<std::string> blockers(const StoredDTSTemplate& draft) {
    std::vector<std::string> found;
    const auto mappings = review(draft);
    // A proposal that names a field and is neither placed nor left blank needs the user.
    if (std::any_of(mappings.begin(), mappings.end(), [](const auto& m) { return m.status == Status::review; })) {
        found.emplace_back(dts_template_words::unresolvedReview);
    }
    if (!draft.definition.crewRowPlacements.empty() && draft.definition.crewRowSlots.empty()) found.emplace_back(dts_template_words::missingCrewRows);
    if (!draft.definition.crewRowSlots.empty() && !draft.definition.crewRowsConfirmed) found.emplace_back(dts_template_words::confirmRows);
    try {
        generic_dts_template::validate(draft.definition);
    } catch (const GenericDTSTemplateError& error) {
        found.emplace_back(error.what());
    }
    return found;
}

StoredDTSTemplate approve(ModelContext& context, const Uuid& productionID, Instant now) {
    auto pending = draft(context, productionID);
    if (!pending) throw ModelValidationError(std::string(dts_template_words::missingSource));
    const auto blocked = blockers(*pending);
    if (!blocked.empty()) throw ModelValidationError(blocked.front());
    pending->definition.approvalState = Definition::ApprovalState::approved;
    pending->definition.approvedAt = now;
    pending->modifiedAt = now;
    write(context, productionID, *pending);
    removeExcept(context, productionID, pending->id, Definition::ApprovalState::approved);
    return *pending;
}

void checkRegion(const DTSNormalizedRegion& r) {
    if (!(r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0 && r.x + r.width <= 1 + 1e-9 && r.y + r.height <= 1 + 1e-9)) {
        throw DTSTemplateEditError("invalidRegion", std::string(dts_template_words::manualRegion));
    }
}

DTSTemplatePlacement& place(ProductionDTSTemplateDefinition& d, DTSSemanticFieldID field, const DTSNormalizedRegion& region) {
    checkRegion(region);
    const bool crew = dts_fields::field(field).scope == DTSSemanticScope::crewRow;
    auto& list = crew ? d.crewRowPlacements : d.documentPlacements;
    std::erase(d.leftBlank, field);
    const auto existing = std::find_if(list.begin(), list.end(), [&](const DTSTemplatePlacement& p) { return p.semanticFieldID == field; });
    if (existing != list.end()) {
        existing->region = region;
        return *existing;
    }
    list.push_back(DTSTemplatePlacement{Uuid::generate(), field, region, {}});
    return list.back();
}

void leaveBlank(ProductionDTSTemplateDefinition& d, DTSSemanticFieldID field) {
    const auto same = [&](const DTSTemplatePlacement& p) { return p.semanticFieldID == field; };
    std::erase_if(d.documentPlacements, same);
    std::erase_if(d.crewRowPlacements, same);
    if (std::find(d.leftBlank.begin(), d.leftBlank.end(), field) == d.leftBlank.end()) d.leftBlank.push_back(field);
}

void setCrewRows(ProductionDTSTemplateDefinition& d, const DTSNormalizedRegion& first, int count) {
    checkRegion(first);
    // No printed page holds more rows than this; a count beyond it is a typing slip, not a form.
    constexpr int mostRows = 200;
    if (count > mostRows) throw DTSTemplateEditError("invalidRegion", "A DTS page holds at most " + std::to_string(mostRows) + " crew rows.");
    if (count < 1 || first.y + first.height * count > 1 + 1e-9) {
        throw DTSTemplateEditError("invalidRegion", "The rows must fit on the page: give the first row and a count that ends above the page\u2019s foot.");
    }
    d.crewRowSlots.clear();
    d.crewRowsConfirmed = true;
    for (int i = 0; i < count; ++i) d.crewRowSlots.push_back({Uuid::generate(), {first.x, first.y + i * first.height, first.width, first.height}});
}

void confirmCrewRows(ProductionDTSTemplateDefinition& d) {
    if (d.crewRowSlots.empty()) throw DTSTemplateEditError("missingCrewRows", std::string(dts_template_words::missingCrewRows));
    d.crewRowsConfirmed = true;
}

DTSNormalizedRegion withinRow(const ProductionDTSTemplateDefinition& d, const DTSNormalizedRegion& r) {
    constexpr double slack = 1e-6;
    for (const auto& slot : d.crewRowSlots) {
        const auto& row = slot.region;
        if (r.x >= row.x - slack && r.y >= row.y - slack && r.x + r.width <= row.x + row.width + slack && r.y + r.height <= row.y + row.height + slack &&
            row.width > 0 && row.height > 0) {
            const double x = std::clamp((r.x - row.x) / row.width, 0.0, 1.0), y = std::clamp((r.y - row.y) / row.height, 0.0, 1.0);
            return {x, y, std::min(r.width / row.width, 1 - x), std::min(r.height / row.height, 1 - y)};
        }
    }
    throw DTSTemplateEditError("invalidRegion", std::string(dts_template_words::manualRegion));
}

}  // namespace production_dts_templates
}  // namespace tessel
