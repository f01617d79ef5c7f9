#include "StubCommands.hpp"

#include <algorithm>
#include <sstream>

#include "App/actualpay/StubFacts.hpp"
#include "App/actualpay/StubInterpretation.hpp"
#include "App/actualpay/StubOcr.hpp"
#include "App/model/CalendarText.hpp"

namespace tessel {
namespace {

Json excerptsJSON(const std::vector<PayStubEvidenceExcerpt>& excerpts) {
    Json list = Json::array();
    for (const auto& e : excerpts) list.push_back({{"source", toRawValue(e.source)}, {"rawText", e.rawText}, {"normalizedText", e.normalizedText}});
    return list;
}

template <typename Value, typename Encode>
Json interpretedJSON(const EPInterpreted<Value>& v, Encode encode) {
    Json json{{"evidence", excerptsJSON(v.evidence)}};
    json["value"] = v.value ? encode(*v.value) : Json();
    if (v.reviewReason) json["reviewReason"] = *v.reviewReason;
    return json;
}

Json text(const std::string& value) { return value; }
Json decimal(const Decimal& value) { return value.toString(); }
Json date(const CalendarDate& value) { return calendar_text::formatDate(value); }
Json optionalDecimal(const std::optional<Decimal>& value) { return value ? Json(value->toString()) : Json(); }

Json arithmeticJSON(const PayStubRowArithmeticValidation& a) {
    Json json{{"status", toRawValue(a.status)}, {"resolvedRate", optionalDecimal(a.resolvedRate)}, {"resolvedHours", optionalDecimal(a.resolvedHours)},
              {"resolvedAmount", optionalDecimal(a.resolvedAmount)}, {"expectedAmount", optionalDecimal(a.expectedAmount)},
              {"difference", optionalDecimal(a.difference)}};
    if (a.reviewReason) json["reviewReason"] = *a.reviewReason;
    return json;
}

Json sumJSON(const PayStubSumValidation& s) {
    Json amounts = Json::array();
    for (const auto& amount : s.resolvedAmounts) amounts.push_back(amount.toString());
    Json json{{"status", toRawValue(s.status)}, {"resolvedAmounts", amounts}, {"resolvedGross", optionalDecimal(s.resolvedGross)},
              {"sum", optionalDecimal(s.sum)}, {"difference", optionalDecimal(s.difference)}};
    if (s.reviewReason) json["reviewReason"] = *s.reviewReason;
    return json;
}

Json evidenceJSON(const PayStubTextEvidence& evidence) {
    Json tokens = Json::array();
    for (const auto& t : evidence.tokens) {
        Json token{{"id", t.id}, {"rawText", t.rawText}, {"normalizedText", t.normalizedText}, {"pageIndex", t.pageIndex},
                   {"normalizedBounds", {{"x", t.normalizedBounds.x}, {"y", t.normalizedBounds.y}, {"width", t.normalizedBounds.width},
                                         {"height", t.normalizedBounds.height}}},
                   {"source", toRawValue(t.source)}};
        if (t.confidence) token["confidence"] = *t.confidence;
        tokens.push_back(std::move(token));
    }
    return {{"source", toRawValue(evidence.source)}, {"label", label(evidence.source)}, {"pageCount", evidence.pageCount}, {"tokens", tokens}};
}

Json interpretationJSON(const EPPayStubInterpretation& stub) {
    Json lines = Json::array();
    for (const auto& line : stub.earningLines) {
        Json arithmetic = Json::array();
        for (const auto& a : line.arithmetic) arithmetic.push_back(arithmeticJSON(a));
        lines.push_back({{"id", line.id}, {"printedLabel", interpretedJSON(line.printedLabel, text)}, {"hours", interpretedJSON(line.hours, decimal)},
                         {"rate", interpretedJSON(line.rate, decimal)}, {"amount", interpretedJSON(line.amount, decimal)},
                         {"arithmetic", arithmetic}, {"displayOrder", line.displayOrder}});
    }
    return {{"printedEmployeeName", interpretedJSON(stub.printedEmployeeName, text)},
            {"payPeriodStart", interpretedJSON(stub.payPeriodStart, date)},
            {"payPeriodEnd", interpretedJSON(stub.payPeriodEnd, date)},
            {"printedOccupation", interpretedJSON(stub.printedOccupation, text)},
            {"earningLines", lines},
            {"totalHours", interpretedJSON(stub.totalHours, decimal)},
            {"gross", interpretedJSON(stub.gross, decimal)},
            {"sumValidation", {{"embedded", sumJSON(stub.embeddedSum)}, {"ocr", sumJSON(stub.ocrSum)}}},
            {"embeddedEvidence", evidenceJSON(stub.embeddedEvidence)},
            {"ocrEvidence", evidenceJSON(stub.ocrEvidence)}};
}

// "Employee: DANA M RIVERA", then the value's review reason, if any, on the next line.
template <typename Value, typename Show>
void writeValue(std::ostringstream& out, const char* name, const EPInterpreted<Value>& v, Show show, const std::string& indent = "  ") {
    out << indent << name << ": " << (v.value ? show(*v.value) : std::string("not read")) << "\n";
    if (v.reviewReason) out << indent << "  Review: " << *v.reviewReason << "\n";
}

std::string showText(const std::string& value) { return value; }
std::string showDecimal(const Decimal& value) { return value.toString(); }
std::string showDate(const CalendarDate& value) { return calendar_text::formatDate(value); }

std::string interpretationText(const std::string& file, const EPPayStubInterpretation& stub) {
    std::ostringstream out;
    out << "Pay stub \u201C" << file << "\u201D (Entertainment Partners), read from " << label(stub.embeddedEvidence.source) << " ("
        << stub.embeddedEvidence.tokens.size() << " words) and " << label(stub.ocrEvidence.source) << " (" << stub.ocrEvidence.tokens.size()
        << " words)\n";
    writeValue(out, "Employee", stub.printedEmployeeName, showText);
    writeValue(out, "Occupation", stub.printedOccupation, showText);
    writeValue(out, "Pay period start", stub.payPeriodStart, showDate);
    writeValue(out, "Pay period end", stub.payPeriodEnd, showDate);
    out << "  Earnings:\n";
    for (const auto& line : stub.earningLines) {
        out << "    " << line.printedLabel.value.value_or("(no label)") << "\n";
        if (line.printedLabel.reviewReason) out << "      Review: " << *line.printedLabel.reviewReason << "\n";
        if (line.hours.value || line.hours.reviewReason) writeValue(out, "Hours", line.hours, showDecimal, "      ");
        if (line.rate.value || line.rate.reviewReason) writeValue(out, "Rate", line.rate, showDecimal, "      ");
        writeValue(out, "Amount", line.amount, showDecimal, "      ");
        // One status per reading that saw the row; said once when they agree.
        std::vector<std::string_view> statuses;
        for (const auto& a : line.arithmetic) {
            if (a.status != PayStubArithmeticStatus::notApplicable) statuses.push_back(toRawValue(a.status));
        }
        if (!statuses.empty()) {
            out << "      Rate x hours: ";
            if (std::all_of(statuses.begin(), statuses.end(), [&](auto s) { return s == statuses.front(); })) {
                out << statuses.front() << "\n";
            } else {
                for (std::size_t i = 0; i < statuses.size(); ++i) out << (i ? ", " : "") << statuses[i];
                out << "\n";
            }
        }
    }
    writeValue(out, "Total hours", stub.totalHours, showDecimal);
    writeValue(out, "Gross", stub.gross, showDecimal);
    out << "  Earnings against gross: " << toRawValue(stub.embeddedSum.status) << " (" << label(stub.embeddedEvidence.source) << "), "
        << toRawValue(stub.ocrSum.status) << " (" << label(stub.ocrEvidence.source) << ")\n";
    return out.str();
}

std::optional<PayStubTextSource> embeddedSource(CommandSession& session, const StubCommandArguments& a) {
    if (a.embedded == "downloaded") return PayStubTextSource::embeddedPDFText;
    if (a.embedded == "ocr-layer") return PayStubTextSource::embeddedOCRText;
    session.streams().err << "Give --embedded downloaded or ocr-layer.\n";
    return std::nullopt;
}

int readStub(CommandSession& session, const StubCommandArguments& a) {
    const auto source = embeddedSource(session, a);
    if (!source) return exitUsage;
    const auto bytes = session.readInputFile(a.file);
    if (!bytes) return exitUsage;
    try {
        auto embedded = extractTextLayer(*bytes, *source);
        StubOcrEngine engine;
        auto ocr = engine.read(*bytes);
        const auto stub = interpretEPStub(std::move(embedded), std::move(ocr));
        session.answer(interpretationJSON(stub), interpretationText(a.file, stub));
        return exitSuccess;
    } catch (const PayStubExtractionError& error) {
        return session.refuse(error.caseName(), error.what());
    } catch (const EPPayStubInterpretationError& error) {
        return session.refuse(error.caseName(), error.what());
    }
}

Json recoveryJSON(const PayStubFactRecoveryReport& report) {
    Json facts = Json::array();
    for (const auto& fact : report.facts) {
        facts.push_back({{"id", fact.id}, {"expected", fact.expected}, {"observed", fact.observed ? Json(*fact.observed) : Json()},
                         {"classification", toRawValue(fact.classification)}});
    }
    const auto& s = report.summary;
    return {{"source", toRawValue(s.source)},
            {"label", label(s.source)},
            {"facts", facts},
            {"summary",
             {{"totalCount", s.totalCount}, {"exactCount", s.exactCount}, {"normalizedCount", s.normalizedCount},
              {"incorrectCount", s.incorrectCount}, {"missingCount", s.missingCount}, {"earningsReconcile", s.earningsReconcile}}}};
}

// One block per reading: every fact that was not recovered exactly, then the counts.
std::string recoveryText(const PayStubFactRecoveryReport& report) {
    const auto& s = report.summary;
    std::ostringstream out;
    out << label(s.source) << ": " << s.exactCount << " of " << s.totalCount << " facts exact, " << s.normalizedCount << " normalized, "
        << s.incorrectCount << " incorrect, " << s.missingCount << " missing; earnings " << (s.earningsReconcile ? "reconcile" : "do not reconcile")
        << "\n";
    for (const auto& fact : report.facts) {
        out << "  " << fact.id << ": " << toRawValue(fact.classification) << " (expected \u201C" << fact.expected << "\u201D";
        if (fact.observed) out << ", read \u201C" << *fact.observed << "\u201D";
        out << ")\n";
    }
    return out.str();
}

int scoreStub(CommandSession& session, const StubCommandArguments& a) {
    const auto source = embeddedSource(session, a);
    if (!source) return exitUsage;
    const auto bytes = session.readInputFile(a.file);
    if (!bytes) return exitUsage;
    const auto factsFile = session.readInputFile(a.facts);
    if (!factsFile) return exitUsage;
    try {
        const auto facts = readReferenceFacts(*factsFile);
        const auto embedded = recoverFacts(extractTextLayer(*bytes, *source), facts);
        StubOcrEngine engine;
        const auto ocr = recoverFacts(engine.read(*bytes), facts);
        session.answer(Json{{"file", a.file}, {"sources", Json::array({recoveryJSON(embedded), recoveryJSON(ocr)})}},
                       "Pay stub \u201C" + a.file + "\u201D against \u201C" + a.facts + "\u201D\n" + recoveryText(embedded) + recoveryText(ocr));
        return exitSuccess;
    } catch (const PayStubReferenceFactsError& error) {
        return session.refuse("invalidFacts", error.what());
    } catch (const PayStubExtractionError& error) {
        return session.refuse(error.caseName(), error.what());
    }
}

}  // namespace

void addStubCommands(CLI::App& app, CommandSession& session, StubCommandArguments& arguments, PayStubCommandArguments& payStubArguments,
                     int& exitStatus) {
    auto* stub = app.add_subcommand("stub", "Pay stubs read, interpreted, imported for a Payroll Week and confirmed as Actual Pay")->require_subcommand(1);
    auto* read = stub->add_subcommand("read", "Read a pay-stub PDF from its text layer and by OCR, and interpret it");
    read->add_option("FILE", arguments.file, "The pay-stub PDF")->required();
    read->add_option("--embedded", arguments.embedded,
                     "What the PDF's text layer is: downloaded (the payroll company's own text, the default) or ocr-layer (an earlier OCR's)");
    read->callback([&] { exitStatus = readStub(session, arguments); });

    auto* lab = stub->add_subcommand("lab", "Score both readings of a pay-stub PDF against the facts it is known to print");
    lab->add_option("FILE", arguments.file, "The pay-stub PDF")->required();
    lab->add_option("--facts", arguments.facts,
                    "A JSON file of the printed facts: printedEmployeeName, printedOccupation, payPeriodStart, payPeriodEnd, totalHours, "
                    "gross, earningLines [[label, rate, hours, amount], …]")
        ->required();
    lab->add_option("--embedded", arguments.embedded, "What the PDF's text layer is: downloaded (the default) or ocr-layer");
    lab->callback([&] { exitStatus = scoreStub(session, arguments); });

    addPayStubCommands(*stub, session, payStubArguments, exitStatus);
}

}  // namespace tessel
