#include "TemplateCommands.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <sstream>

#include "App/dtsexport/DTSTemplateInterpretation.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/dtsexport/ProductionDTSTemplates.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using Classification = DTSInterpretationClassification;

Json rectJSON(const PDFRect& r) { return {{"x", r.x}, {"y", r.y}, {"width", r.width}, {"height", r.height}}; }

std::string number(double value, int places = 3) {
    char text[32];
    std::snprintf(text, sizeof text, "%.*f", places, value);
    return text;
}

std::string rectText(const PDFRect& r) { return number(r.x) + "," + number(r.y) + "," + number(r.width) + "," + number(r.height); }

std::string fieldKey(const DTSSemanticSuggestion& s) {
    return s.semanticFieldID ? std::string(dts_fields::field(*s.semanticFieldID).key) : std::string("(none)");
}

Json suggestionJSON(const DTSSemanticSuggestion& s) {
    Json alternatives = Json::array();
    for (const auto& a : s.alternatives) alternatives.push_back({{"semanticFieldID", std::string(dts_fields::field(a.semanticFieldID).key)}, {"score", a.score}});
    return {{"id", s.id},
            {"semanticFieldID", s.semanticFieldID ? Json(fieldKey(s)) : Json()},
            {"scope", s.scope ? Json(std::string(toRawValue(*s.scope))) : Json()},
            {"region", rectJSON(s.region)},
            {"score", s.score},
            {"classification", std::string(toRawValue(s.classification))},
            {"rawLabels", s.rawLabels},
            {"evidence", s.evidence},
            {"alternatives", alternatives},
            {"columnID", s.columnID ? Json(*s.columnID) : Json()}};
}

Json columnJSON(const DTSGridColumn& c) {
    return {{"id", c.id}, {"bounds", rectJSON(c.bounds)}, {"rowRelativeRegion", rectJSON(c.rowRelativeRegion)}, {"headerLabels", c.headerLabels},
            {"parentHeaderLabels", c.parentHeaderLabels}, {"supportingLineIDs", c.supportingLineIDs}};
}

Json interpretationJSON(const PDFStructuralInspection& inspection, const DTSTemplateInterpretation& i) {
    const auto& page = inspection.pages.front();
    Json tables = Json::array();
    for (const auto& t : i.tableCandidates) {
        Json rows = Json::array(), columns = Json::array();
        for (const auto& r : t.rowSlots) rows.push_back(rectJSON(r));
        for (const auto& c : t.columns) columns.push_back(columnJSON(c));
        tables.push_back({{"id", t.id}, {"bounds", rectJSON(t.bounds)}, {"rowSlots", rows}, {"columns", columns},
                          {"headerBounds", t.headerBounds ? rectJSON(*t.headerBounds) : Json()}, {"headerLabels", t.headerLabels},
                          {"structuralScore", t.structuralScore}, {"scoreComponents", t.scoreComponents}});
    }
    Json crew;
    if (i.crewTableSuggestion) {
        Json suggestions = Json::array();
        for (const auto& s : i.crewTableSuggestion->semanticSuggestions) suggestions.push_back(suggestionJSON(s));
        crew = {{"tableCandidateID", i.crewTableSuggestion->tableCandidateID},
                {"classification", std::string(toRawValue(i.crewTableSuggestion->classification))},
                {"rowCount", i.crewTableSuggestion->rowSlots.size()},
                {"semanticSuggestions", suggestions}};
    }
    Json documentFields = Json::array(), unresolved = Json::array();
    for (const auto& s : i.documentFieldSuggestions) documentFields.push_back(suggestionJSON(s));
    for (const auto& r : i.unresolvedRegions) unresolved.push_back(rectJSON(r));
    return {{"sha256", inspection.sha256},
            {"byteCount", inspection.byteCount},
            {"pageCount", inspection.pageCount},
            {"page",
             {{"cropBox", rectJSON(page.cropBox)},
              {"usedMediaBoxFallback", page.usedMediaBoxFallback},
              {"rotation", page.rotation},
              {"textCount", page.text.size()},
              {"widgetCount", page.widgets.size()},
              {"lineCount", page.lines.size()},
              {"rectangleCount", page.rectangles.size()},
              {"imageResourceCount", page.imageResourceCount}}},
            {"normalizedLineCount", i.normalizedLines.size()},
            {"tableCandidates", tables},
            {"crewTableSuggestion", crew},
            {"documentFieldSuggestions", documentFields},
            {"unresolvedRegions", unresolved},
            {"diagnostics", i.diagnostics}};
}

void writeSuggestion(std::ostringstream& out, const std::string& lead, const DTSSemanticSuggestion& s) {
    out << "  " << lead << fieldKey(s) << "  " << toRawValue(s.classification) << " " << number(s.score, 2) << "  at " << rectText(s.region) << "\n";
    for (const auto& e : s.evidence) out << "      " << e << "\n";
}

std::string interpretationText(const std::string& file, const PDFStructuralInspection& inspection, const DTSTemplateInterpretation& i) {
    const auto& page = inspection.pages.front();
    std::ostringstream out;
    out << pdf_structure::transient << "\n"
        << file << ": " << inspection.pageCount << " page, " << number(page.displayedSize.first, 0) << " \u00D7 " << number(page.displayedSize.second, 0)
        << " pt, SHA-256 " << inspection.sha256 << "\n"
        << "Evidence: " << page.text.size() << " words, " << page.lines.size() << " lines, " << page.rectangles.size() << " rectangles, "
        << page.widgets.size() << " form fields, " << page.imageResourceCount << " images\n";
    for (const auto& d : i.diagnostics) out << d << "\n";
    out << "\nTable candidates:\n";
    if (i.tableCandidates.empty()) out << "  none\n";
    for (const auto& t : i.tableCandidates) {
        out << "  " << t.id + 1 << ". score " << number(t.structuralScore, 2) << ", " << t.rowSlots.size() << " rows, " << t.columns.size() << " columns at "
            << rectText(t.bounds) << "\n";
        for (const auto& c : t.scoreComponents) out << "      " << c << "\n";
    }
    if (i.crewTableSuggestion) {
        const auto& crew = *i.crewTableSuggestion;
        out << "\nCrew table: " << toRawValue(crew.classification) << " (candidate " << crew.tableCandidateID + 1 << ", " << crew.rowSlots.size()
            << " rows)\n";
        for (const auto& s : crew.semanticSuggestions) writeSuggestion(out, "Column " + std::to_string(*s.columnID + 1) + "  ", s);
    }
    out << "\nDocument fields:\n";
    if (i.documentFieldSuggestions.empty()) out << "  none\n";
    for (const auto& s : i.documentFieldSuggestions) writeSuggestion(out, "", s);
    out << "\nUnresolved regions: " << i.unresolvedRegions.size() << "\n" << dts_interpretation::authority << "\n";
    return out.str();
}

int inspect(CommandSession& session, const TemplateCommandArguments& a) {
    const auto bytes = session.readInputFile(a.file);
    if (!bytes) return exitUsage;
    try {
        const auto inspection = pdf_structure::inspect(*bytes);
        if (inspection.pageCount != 1) return session.refuseWithTitle("notOnePage", std::string(pdf_structure::inspectTitle), std::string(pdf_structure::onePageOnly));
        const auto interpretation = dts_interpretation::interpret(inspection);
        session.answer(interpretationJSON(inspection, interpretation), interpretationText(a.file, inspection, interpretation));
        return exitSuccess;
    } catch (const PDFStructuralInspectionError& error) {
        return session.refuseWithTitle(std::string(error.caseName()), std::string(pdf_structure::inspectTitle), error.what());
    }
}

using command_actions::act;
using command_actions::now;
namespace templates = production_dts_templates;

template <typename Value, std::size_t N>
Value choiceArgument(const std::string& text, const std::array<std::pair<std::string_view, Value>, N>& choices, const char* option) {
    std::string words;
    for (const auto& [name, value] : choices) {
        if (name == text) return value;
        words += (words.empty() ? "" : ", ") + std::string(name);
    }
    throw Refused{"invalidChoice", std::string("Choose ") + option + " " + words + "."};
}

// Runs an edit of the draft, its refusal as the command's.
template <typename Edit>
decltype(auto) edited(Edit edit) {
    try {
        return edit();
    } catch (const DTSTemplateEditError& error) {
        throw Refused{error.code(), error.what()};
    }
}

DTSNormalizedRegion regionArgument(const std::string& text) {
    DTSNormalizedRegion r;
    char tail = 0;
    if (std::sscanf(text.c_str(), "%lf,%lf,%lf,%lf%c", &r.x, &r.y, &r.width, &r.height, &tail) != 4) {
        throw Refused{"invalidRegion", "Give the region as X,Y,WIDTH,HEIGHT, each 0 to 1 of the page (or of one row), such as 0.1,0.2,0.3,0.04."};
    }
    edited([&] { templates::checkRegion(r); });
    return r;
}

DTSSemanticFieldID fieldArgument(const std::string& key) {
    const auto field = dts_fields::fromKey(key);
    if (!field) throw Refused{"unknownField", "There is no DTS field \u201C" + key + "\u201D; fields are named as \u201Ccrew.name\u201D or \u201Cworkday.date\u201D."};
    return *field;
}

StoredDTSTemplate draftOf(ModelContext& context, const Production& production) {
    auto draft = templates::draft(context, production.id);
    if (!draft) throw Refused{"noDraft", std::string(dts_template_words::missingSource) + " Start one with \u201Ctessel template import FILE.pdf\u201D."};
    return std::move(*draft);
}

std::string regionWords(const std::optional<DTSNormalizedRegion>& r) {
    return r ? number(r->x) + "," + number(r->y) + "," + number(r->width) + "," + number(r->height) : std::string("-");
}

int importTemplate(CommandSession& session, const TemplateCommandArguments& a) {
    const auto bytes = session.readInputFile(a.file);
    if (!bytes) return exitUsage;
    return act(session, [&](ModelContext& context, const Production& production) {
        StoredDTSTemplate draft{Uuid::generate(), {}, {}, {}, {}};
        try {
            draft = templates::importDraft(context, production.id, *bytes, now());
        } catch (const GenericDTSTemplateError& error) {
            throw Refused{std::string(error.caseName()), error.what()};
        }
        const auto& d = draft.definition;
        std::string text = "Started the DTS template draft from \u201C" + a.file + "\u201D: " + std::to_string(d.documentPlacements.size()) +
                           " document fields and " + std::to_string(d.crewRowPlacements.size()) + " crew-row fields placed, " +
                           std::to_string(d.crewRowSlots.size()) + " crew rows. Review it with \u201Ctessel template show\u201D.\n";
        if (templates::approved(context, production.id)) text += std::string(dts_template_words::replacementNotice) + "\n";
        session.answer(Json{{"draft", draft.id.text()}, {"documentPlacements", d.documentPlacements.size()}, {"crewRowPlacements", d.crewRowPlacements.size()},
                            {"crewRows", d.crewRowSlots.size()}},
                       text);
        return int{exitSuccess};
    });
}

int showTemplate(CommandSession& session) {
    return act(session, [&](ModelContext& context, const Production& production) {
        auto shown = templates::draft(context, production.id);
        const bool isDraft = shown.has_value();
        if (!shown) shown = templates::approved(context, production.id);
        if (!shown) throw Refused{"noTemplate", std::string(dts_template_words::missingSource)};
        Json mappings = Json::array();
        std::ostringstream out;
        out << (isDraft ? "Draft" : "Approved") << " DTS template, " << shown->definition.crewRowSlots.size() << " crew rows\n";
        for (const auto& m : templates::review(*shown)) {
            const std::string field = m.semanticFieldID ? std::string(dts_fields::field(*m.semanticFieldID).key) : std::string("(none)");
            mappings.push_back({{"label", m.label}, {"semanticFieldID", m.semanticFieldID ? Json(field) : Json()}, {"scope", std::string(toRawValue(m.scope))},
                                {"status", std::string(toRawValue(m.status))}, {"leftBlank", m.explicitlyResolved}, {"evidence", m.evidence}});
            out << "  " << toRawValue(m.status) << (m.explicitlyResolved ? " (left blank)" : "") << "  " << (m.label.empty() ? field : m.label) << " \u2192 "
                << field << "\n";
        }
        const auto blocked = isDraft ? templates::blockers(*shown) : std::vector<std::string>{};
        for (const auto& b : blocked) out << b << "\n";
        if (isDraft && blocked.empty()) out << "Ready to approve: \u201Ctessel template approve\u201D.\n";
        session.answer(Json{{"state", isDraft ? "draft" : "approved"}, {"crewRows", shown->definition.crewRowSlots.size()}, {"mappings", mappings},
                            {"blockers", blocked}},
                       out.str());
        return int{exitSuccess};
    });
}

int mapField(CommandSession& session, const TemplateCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        auto draft = draftOf(context, production);
        const auto field = fieldArgument(a.field);
        const bool crew = dts_fields::field(field).scope == DTSSemanticScope::crewRow;
        if (crew != a.row) throw Refused{"scopeMismatch", std::string(dts_template_words::manualRegion)};
        DTSTemplatePlacement& placement = edited([&]() -> DTSTemplatePlacement& { return templates::place(draft.definition, field, regionArgument(a.region)); });
        if (!a.fit.empty()) placement.presentation.textFit = choiceArgument(a.fit, std::array{std::pair{std::string_view("fixed"), DTSTextFit::fixed},
                                                                                               std::pair{std::string_view("shrinkToFit"), DTSTextFit::shrinkToFit}}, "--fit");
        if (!a.time.empty()) {
            placement.presentation.timePresentation = choiceArgument(
                a.time, std::array{std::pair{std::string_view("payrollDecimal"), DTSTimePresentation::payrollDecimal},
                                   std::pair{std::string_view("clock12Hour"), DTSTimePresentation::clock12Hour},
                                   std::pair{std::string_view("clock24Hour"), DTSTimePresentation::clock24Hour}},
                "--time");
        }
        if (!a.date.empty()) {
            placement.presentation.datePresentation = choiceArgument(
                a.date, std::array{std::pair{std::string_view("numeric"), DTSDatePresentation::numeric},
                                   std::pair{std::string_view("abbreviated"), DTSDatePresentation::abbreviated},
                                   std::pair{std::string_view("long"), DTSDatePresentation::long_},
                                   std::pair{std::string_view("monthDay"), DTSDatePresentation::monthDay},
                                   std::pair{std::string_view("monthDayShortYear"), DTSDatePresentation::monthDayShortYear},
                                   std::pair{std::string_view("dayMonthYear"), DTSDatePresentation::dayMonthYear}},
                "--date");
        }
        if (!a.transform.empty()) {
            placement.presentation.textTransform = choiceArgument(a.transform, std::array{std::pair{std::string_view("unchanged"), DTSTextTransform::unchanged},
                                                                                          std::pair{std::string_view("uppercase"), DTSTextTransform::uppercase}},
                                                                  "--transform");
        }
        if (!a.align.empty()) {
            placement.presentation.alignment = choiceArgument(a.align, std::array{std::pair{std::string_view("leading"), DTSTextAlignment::leading},
                                                                                  std::pair{std::string_view("center"), DTSTextAlignment::center},
                                                                                  std::pair{std::string_view("trailing"), DTSTextAlignment::trailing}},
                                                              "--align");
        }
        if (!a.mark.empty()) {
            placement.presentation.renderingKind = DTSTemplateRenderingKind::mark;
            placement.presentation.booleanMark = choiceArgument(a.mark, std::array{std::pair{std::string_view("x"), DTSBooleanMark::x},
                                                                                   std::pair{std::string_view("check"), DTSBooleanMark::check},
                                                                                   std::pair{std::string_view("filled"), DTSBooleanMark::filled}},
                                                                "--mark");
        }
        try {
            templates::saveDraft(context, draft, now());
        } catch (const GenericDTSTemplateError& error) {
            throw Refused{std::string(error.caseName()), error.what()};
        }
        session.answer(Json{{"mapped", a.field}}, "Mapped " + a.field + " at " + regionWords(placement.region) + (crew ? " of each crew row" : "") + ".\n");
        return int{exitSuccess};
    });
}

int leaveBlank(CommandSession& session, const TemplateCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        auto draft = draftOf(context, production);
        const auto field = fieldArgument(a.field);
        templates::leaveBlank(draft.definition, field);
        templates::saveDraft(context, draft, now());
        session.answer(Json{{"leftBlank", a.field}}, a.field + " is left blank on this template.\n");
        return int{exitSuccess};
    });
}

int setRows(CommandSession& session, const TemplateCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        auto draft = draftOf(context, production);
        const auto first = regionArgument(a.region);
        edited([&] { templates::setCrewRows(draft.definition, first, a.count); });
        templates::saveDraft(context, draft, now());
        session.answer(Json{{"crewRows", a.count}}, "The template has " + std::to_string(a.count) + " crew rows.\n");
        return int{exitSuccess};
    });
}

// A trial of the draft (else of the approved template) with invented data, written where asked.
int testFill(CommandSession& session, const TemplateCommandArguments& a) {
    using Scenario = GenericDTSTestFillScenario;
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto scenario = choiceArgument(a.scenario, std::array{std::pair{std::string_view("typical"), Scenario::typical},
                                                                    std::pair{std::string_view("full"), Scenario::full},
                                                                    std::pair{std::string_view("overflow"), Scenario::overflow}},
                                             "the test fill");
        auto shown = templates::draft(context, production.id);
        if (!shown) shown = templates::approved(context, production.id);
        if (!shown) throw Refused{"noTemplate", std::string(dts_template_words::missingSource)};
        std::string pdf;
        try {
            pdf = generic_dts_render::testFill(scenario, shown->sourcePDFData, shown->definition);
        } catch (const GenericDTSRenderError& error) {
            const std::string hint = error.errorCase() == GenericDTSRenderError::Case::cannotFit
                                         ? " Enable Shrink to Fit (template map FIELD --region \u2026 --fit shrinkToFit) or give the field a larger region."
                                         : "";
            throw Refused{std::string(error.caseName()), error.what() + hint};
        }
        dts_export::writeAtomically(a.output, pdf);
        const int pages = generic_dts_render::pageCount(shown->definition, generic_dts_render::testFillFacts(scenario, shown->definition));
        session.answer(Json{{"testFill", a.scenario}, {"output", a.output}, {"pages", pages}},
                       "Test fill \u201C" + std::string(generic_dts_render::label(scenario)) + "\u201D written to \u201C" + a.output + "\u201D (" +
                           std::to_string(pages) + (pages == 1 ? " page" : " pages") + ", invented data).\n");
        return int{exitSuccess};
    });
}

int confirmRows(CommandSession& session) {
    return act(session, [&](ModelContext& context, const Production& production) {
        auto draft = draftOf(context, production);
        edited([&] { templates::confirmCrewRows(draft.definition); });
        templates::saveDraft(context, draft, now());
        session.answer(Json{{"crewRows", draft.definition.crewRowSlots.size()}},
                       "Confirmed the template's " + std::to_string(draft.definition.crewRowSlots.size()) + " crew rows.\n");
        return int{exitSuccess};
    });
}

int approveTemplate(CommandSession& session) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto approved = templates::approve(context, production.id, now());
        session.answer(Json{{"approved", approved.id.text()}},
                       "Approved the DTS template. " + std::string(dts_template_words::usesApprovedPDF) +
                           " (\u201Ctessel production set --export-form template\u201D)\n");
        return int{exitSuccess};
    });
}

}  // namespace

void addTemplateCommands(
CLI::App& app, CommandSession& session, TemplateCommandArguments& a, int& exitStatus) {
    auto* templates = app.add_subcommand("template", "The production's own blank DTS form")->require_subcommand(1);
    auto* inspectCommand = templates->add_subcommand("inspect", "What a blank DTS page holds and where its crew table and fields are proposed");
    inspectCommand->add_option("FILE", a.file, "The blank DTS page, a one-page PDF")->required();
    inspectCommand->callback([&] { exitStatus = inspect(session, a); });
    auto* import = templates->add_subcommand("import", "Start the production's draft template from a blank page and the interpreter's proposals");
    import->add_option("FILE", a.file, "The blank DTS page, a one-page PDF")->required();
    import->callback([&] { exitStatus = importTemplate(session, a); });
    templates->add_subcommand("show", "The draft's mappings with their statuses (or the approved template's)")->callback([&] { exitStatus = showTemplate(session); });
    auto* map = templates->add_subcommand("map", "Place a field on the draft: on the page, or with --row within each crew row");
    map->add_option("FIELD", a.field, "The field, such as crew.name or workday.date")->required();
    map->add_option("--region", a.region, "X,Y,WIDTH,HEIGHT, 0 to 1 of the page (or of one row)")->required();
    map->add_flag("--row", a.row, "The region is within one crew row");
    map->add_option("--fit", a.fit, "fixed or shrinkToFit");
    map->add_option("--time", a.time, "payrollDecimal, clock12Hour or clock24Hour");
    map->add_option("--date", a.date, "numeric, abbreviated, long, monthDay, monthDayShortYear or dayMonthYear");
    map->add_option("--transform", a.transform, "unchanged or uppercase");
    map->add_option("--align", a.align, "leading, center or trailing");
    map->add_option("--mark", a.mark, "x, check or filled: a yes-or-no field drawn as a mark");
    map->callback([&] { exitStatus = mapField(session, a); });
    auto* blank = templates->add_subcommand("blank", "Leave a proposed field blank on this template");
    blank->add_option("FIELD", a.field, "The field, such as workday.notes")->required();
    blank->callback([&] { exitStatus = leaveBlank(session, a); });
    auto* rows = templates->add_subcommand("rows", "The crew rows of the draft")->require_subcommand(1);
    rows->add_subcommand("confirm", "Confirm the crew rows the interpreter found")->callback([&] { exitStatus = confirmRows(session); });
    auto* rowsSet = rows->add_subcommand("set", "Set the crew rows: the first row and how many follow it, each as tall");
    rowsSet->add_option("--first", a.region, "X,Y,WIDTH,HEIGHT of the first row, 0 to 1 of the page")->required();
    rowsSet->add_option("--count", a.count, "How many rows")->required();
    rowsSet->callback([&] { exitStatus = setRows(session, a); });
    auto* fill = templates->add_subcommand("test-fill", "Fill the draft (else the approved template) with invented data: typical, full or overflow");
    fill->add_option("SCENARIO", a.scenario, "typical, full or overflow")->required();
    fill->add_option("--output", a.output, "Where the PDF is written")->required();
    fill->callback([&] { exitStatus = testFill(session, a); });
    templates->add_subcommand("approve", "Approve the draft; it replaces the approved template")->callback([&] { exitStatus = approveTemplate(session); });
}

}  // namespace tessel
