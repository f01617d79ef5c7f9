#include "StubFacts.hpp"

#include <algorithm>

#include "App/model/EntryText.hpp"
#include "App/actualpay/StubEarnings.hpp"
#include "App/actualpay/StubFields.hpp"
#include "App/actualpay/StubText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/DecimalJSON.hpp"
#include "App/model/JSONFields.hpp"

namespace tessel {
namespace {

PayStubReferenceFactsError wrong(std::string_view key, std::string_view what) {
    return PayStubReferenceFactsError(entry_text::quoted(key) + " in the facts file must be " + std::string(what) + ".");
}

std::optional<std::string> textAt(const Json& facts, const char* key) {
    if (!facts.contains(key) || facts[key].is_null()) return std::nullopt;
    if (!facts[key].is_string()) throw wrong(key, "text");
    return facts[key].get<std::string>();
}

std::optional<CalendarDate> dateAt(const Json& facts, const char* key) {
    const auto text = textAt(facts, key);
    if (!text) return std::nullopt;
    const auto date = calendar_text::parseDate(*text);
    if (!date) throw wrong(key, "a date written YYYY-MM-DD");
    return date;
}

// A number as the facts file writes it: a JSON number's own digits, or text as the stub prints it.
std::optional<std::string> numberText(const Json& value, std::string_view key) {
    if (value.is_null()) return std::nullopt;
    std::string text;
    if (value.is_string()) {
        text = value.get<std::string>();
    } else if (decimal_json::isPreservedNumber(value)) {
        text.assign(value.get_binary().begin(), value.get_binary().end());
    } else if (value.is_number_integer()) {
        text = value.dump();
    } else {
        throw wrong(key, "a number, or a number written as text");
    }
    if (!interpretStubNumber(text).resolved()) throw wrong(key, "a number, not " + entry_text::quoted(text));
    return text;
}

std::optional<std::string> numberAt(const Json& facts, const char* key) {
    return facts.contains(key) ? numberText(facts[key], key) : std::nullopt;
}

std::vector<PayStubReferenceFacts::EarningLine> earningLinesAt(const Json& facts) {
    std::vector<PayStubReferenceFacts::EarningLine> lines;
    if (!facts.contains("earningLines") || facts["earningLines"].is_null()) return lines;
    const Json& list = facts["earningLines"];
    const auto refused = [] { return wrong("earningLines", "a list of [label, rate, hours, amount] lists"); };
    if (!list.is_array()) throw refused();
    for (const auto& line : list) {
        if (!line.is_array() || line.size() != 4 || !line[0].is_string()) throw refused();
        const auto amount = numberText(line[3], "earningLines");
        if (!amount) throw wrong("earningLines", "lists whose amount is given");
        lines.push_back({line[0].get<std::string>(), numberText(line[1], "earningLines"), numberText(line[2], "earningLines"), *amount});
    }
    return lines;
}

PayStubRecoveryClassification classify(const std::string& expected, const std::optional<std::string>& observed, bool number) {
    using C = PayStubRecoveryClassification;
    if (!observed || observed->empty()) return C::missing;
    if (*observed == expected) return C::exact;
    if (number) {
        const auto seen = interpretStubNumber(*observed).resolved();
        return seen && seen == interpretStubNumber(expected).resolved() ? C::normalizedCorrect : C::incorrect;
    }
    return stub_text::normalized(*observed) == stub_text::normalized(expected) ? C::normalizedCorrect : C::incorrect;
}

class Scorer {
public:
    explicit Scorer(PayStubTextSource source) { report_.summary.source = source; }

    void add(std::string id, const std::optional<std::string>& expected, std::optional<std::string> observed, bool number) {
        if (!expected) return;
        const auto classification = classify(*expected, observed, number);
        report_.facts.push_back({std::move(id), *expected, std::move(observed), classification});
        auto& s = report_.summary;
        ++s.totalCount;
        using C = PayStubRecoveryClassification;
        ++(classification == C::exact ? s.exactCount
           : classification == C::normalizedCorrect ? s.normalizedCount
           : classification == C::incorrect         ? s.incorrectCount
                                                    : s.missingCount);
    }
    PayStubFactRecoveryReport finish(bool earningsReconcile) {
        report_.summary.earningsReconcile = earningsReconcile;
        return std::move(report_);
    }

private:
    PayStubFactRecoveryReport report_;
};

// The row each expected line is scored against: the first unmatched row with its label, else the
// unmatched row at the line's own place.
std::vector<const PayStubEarningsRow*> matchedRows(const std::vector<PayStubReferenceFacts::EarningLine>& lines,
                                                   const std::vector<PayStubEarningsRow>& rows) {
    std::vector<const PayStubEarningsRow*> matched(lines.size(), nullptr);
    std::vector<bool> taken(rows.size(), false);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto label = stub_text::normalized(lines[i].label);
        for (std::size_t r = 0; r < rows.size(); ++r) {
            if (!taken[r] && rows[r].normalizedDescription == label) {
                matched[i] = &rows[r];
                taken[r] = true;
                break;
            }
        }
    }
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!matched[i] && i < rows.size() && !taken[i]) {
            matched[i] = &rows[i];
            taken[i] = true;
        }
    }
    return matched;
}

bool reconciles(const PayStubEarningsAnalysis& table) {
    const auto good = [](PayStubArithmeticStatus s) { return s == PayStubArithmeticStatus::exact || s == PayStubArithmeticStatus::normalizedConsistent; };
    return table.found() && good(table.sumValidation.status) &&
           std::none_of(table.rows.begin(), table.rows.end(),
                        [](const auto& row) { return row.arithmetic.status == PayStubArithmeticStatus::inconsistent; });
}

std::optional<std::string> isoDate(const std::optional<CalendarDate>& date) {
    return date ? std::optional(calendar_text::formatDate(*date)) : std::nullopt;
}

std::optional<std::string> rawOf(const std::optional<PayStubNumericInterpretation>& number) {
    return number ? std::optional(number->rawText) : std::nullopt;
}

}  // namespace

std::string_view toRawValue(PayStubRecoveryClassification classification) noexcept {
    switch (classification) {
        case PayStubRecoveryClassification::exact: return "exact";
        case PayStubRecoveryClassification::normalizedCorrect: return "normalizedCorrect";
        case PayStubRecoveryClassification::incorrect: return "incorrect";
        case PayStubRecoveryClassification::missing: return "missing";
    }
    return "missing";
}

PayStubReferenceFacts readReferenceFacts(std::string_view json) {
    Json facts;
    try {
        facts = decimal_json::parse<Json>(json);
    } catch (const decimal_json::MalformedJSONError& error) {
        throw PayStubReferenceFactsError(std::string("The facts file is not well-formed JSON") +
                                         std::string(error.what()).substr(std::string_view("The input is not well-formed JSON").size()));
    }
    if (!facts.is_object()) throw PayStubReferenceFactsError("The facts file must be a JSON object.");
    PayStubReferenceFacts result;
    result.printedEmployeeName = textAt(facts, "printedEmployeeName");
    result.printedOccupation = textAt(facts, "printedOccupation");
    result.payPeriodStart = dateAt(facts, "payPeriodStart");
    result.payPeriodEnd = dateAt(facts, "payPeriodEnd");
    result.totalHours = numberAt(facts, "totalHours");
    result.gross = numberAt(facts, "gross");
    result.earningLines = earningLinesAt(facts);
    return result;
}

PayStubFactRecoveryReport recoverFacts(const PayStubTextEvidence& evidence, const PayStubReferenceFacts& facts) {
    const auto fields = ep_layout::printedFields(tokenLines(evidence), evidence.source);
    const auto table = analyzeEarnings(evidence);
    Scorer score(evidence.source);
    const auto printed = [](const auto& found) { return found ? std::optional(found->printed) : std::nullopt; };
    score.add("printedEmployeeName", facts.printedEmployeeName, printed(fields.employeeName), false);
    score.add("printedOccupation", facts.printedOccupation, printed(fields.occupation), false);
    const auto start = fields.payPeriod ? std::optional(fields.payPeriod->value.first) : std::nullopt;
    const auto end = fields.payPeriod ? std::optional(fields.payPeriod->value.second) : std::nullopt;
    score.add("payPeriodStart", isoDate(facts.payPeriodStart), isoDate(start), false);
    score.add("payPeriodEnd", isoDate(facts.payPeriodEnd), isoDate(end), false);
    score.add("totalHours", facts.totalHours, rawOf(table.totalHours), true);
    score.add("gross", facts.gross, rawOf(table.gross), true);
    const auto rows = matchedRows(facts.earningLines, table.rows);
    for (std::size_t i = 0; i < facts.earningLines.size(); ++i) {
        const auto& line = facts.earningLines[i];
        const auto* row = rows[i];
        const std::string id = "earningLines[" + std::to_string(i) + "].";
        score.add(id + "label", line.label, row ? std::optional(row->rawDescription) : std::nullopt, false);
        score.add(id + "rate", line.rate, row ? row->rawRate : std::nullopt, true);
        score.add(id + "hours", line.hours, row ? row->rawHours : std::nullopt, true);
        score.add(id + "amount", line.amount, row ? row->rawAmount : std::nullopt, true);
    }
    return score.finish(reconciles(table));
}

}  // namespace tessel
