#include "TemplateCommands.hpp"

#include <cstdio>
#include <sstream>

#include "App/dtsexport/DTSTemplateInterpretation.hpp"

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

}  // namespace

void addTemplateCommands(CLI::App& app, CommandSession& session, TemplateCommandArguments& a, int& exitStatus) {
    auto* templates = app.add_subcommand("template", "The production's own blank DTS form")->require_subcommand(1);
    auto* inspectCommand = templates->add_subcommand("inspect", "What a blank DTS page holds and where its crew table and fields are proposed");
    inspectCommand->add_option("FILE", a.file, "The blank DTS page, a one-page PDF")->required();
    inspectCommand->callback([&] { exitStatus = inspect(session, a); });
}

}  // namespace tessel
