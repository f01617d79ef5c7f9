#include "StubInterpretation.hpp"

#include <algorithm>
#include <cmath>

namespace tessel {
namespace {

std::string disagreement(std::string_view field) { return std::string(stub_review_words::sourcesDisagreePrefix) + std::string(field) + "."; }

// One fact as each reading found it (or not), combined into the proposal.
template <typename Value>
EPInterpreted<Value> combined(const std::optional<Value>& embedded, std::optional<PayStubEvidenceExcerpt> embeddedExcerpt,
                              const std::optional<Value>& ocr, std::optional<PayStubEvidenceExcerpt> ocrExcerpt, bool bothRead,
                              std::string_view field) {
    EPInterpreted<Value> result;
    if (embeddedExcerpt) result.evidence.push_back(std::move(*embeddedExcerpt));
    if (ocrExcerpt) result.evidence.push_back(std::move(*ocrExcerpt));
    result.value = embedded ? embedded : ocr;
    const bool agree = embedded && ocr ? *embedded == *ocr : !(embedded || ocr) || !bothRead;
    if (!agree) result.reviewReason = disagreement(field);
    return result;
}

template <typename Value>
std::optional<Value> valueOf(const std::optional<ep_layout::Found<Value>>& found) {
    return found ? std::optional(found->value) : std::nullopt;
}
template <typename Value>
std::optional<PayStubEvidenceExcerpt> excerptOf(const std::optional<ep_layout::Found<Value>>& found) {
    return found ? std::optional(found->excerpt) : std::nullopt;
}

std::optional<PayStubEvidenceExcerpt> excerptOf(const std::optional<PayStubNumericInterpretation>& number, PayStubTextSource source) {
    if (!number) return std::nullopt;
    return PayStubEvidenceExcerpt{source, number->rawText, number->normalizedText, number->area};
}

std::optional<Decimal> resolvedOf(const std::optional<PayStubNumericInterpretation>& number) {
    return number ? number->resolved() : std::nullopt;
}

EPInterpretedDecimal number(const std::optional<PayStubNumericInterpretation>& embedded, const PayStubTextSource embeddedSource,
                            const std::optional<PayStubNumericInterpretation>& ocr, bool bothRead, std::string_view field) {
    // A number that allows several readings, or none, resolves to nothing: its excerpt stays for the
    // person who types the value.
    return combined(resolvedOf(embedded), excerptOf(embedded, embeddedSource), resolvedOf(ocr), excerptOf(ocr, PayStubTextSource::tesseractOCR),
                    bothRead, field);
}

bool sameRow(const PayStubEarningsRow& a, const PayStubEarningsRow& b) {
    const double tolerance = std::max(a.normalizedBounds.height, b.normalizedBounds.height) / 2;
    return a.pageIndex == b.pageIndex && std::abs(a.normalizedBounds.midY() - b.normalizedBounds.midY()) <= std::max(tolerance, 0.002);
}

struct RowPair {
    const PayStubEarningsRow* embedded = nullptr;
    const PayStubEarningsRow* ocr = nullptr;
    bool associated = false;
};

// Rows of the two readings paired one to one by their place on the page; every row appears once.
std::vector<RowPair> paired(const std::vector<PayStubEarningsRow>& embedded, const std::vector<PayStubEarningsRow>& ocr) {
    std::vector<RowPair> pairs;
    std::vector<bool> ocrTaken(ocr.size(), false);
    for (const auto& row : embedded) {
        std::vector<std::size_t> matches;
        for (std::size_t i = 0; i < ocr.size(); ++i) {
            if (sameRow(row, ocr[i])) matches.push_back(i);
        }
        const bool unique = matches.size() == 1 && std::count_if(embedded.begin(), embedded.end(), [&](const auto& other) {
                                                       return sameRow(other, ocr[matches.front()]);
                                                   }) == 1;
        if (unique) {
            ocrTaken[matches.front()] = true;
            pairs.push_back({&row, &ocr[matches.front()], true});
        } else {
            pairs.push_back({&row, nullptr, false});
        }
    }
    for (std::size_t i = 0; i < ocr.size(); ++i) {
        if (!ocrTaken[i]) pairs.push_back({nullptr, &ocr[i], false});
    }
    // In printed order: page, then height on the page.
    std::stable_sort(pairs.begin(), pairs.end(), [](const RowPair& a, const RowPair& b) {
        const auto& x = a.embedded ? *a.embedded : *a.ocr;
        const auto& y = b.embedded ? *b.embedded : *b.ocr;
        return x.pageIndex != y.pageIndex ? x.pageIndex < y.pageIndex : x.normalizedBounds.midY() < y.normalizedBounds.midY();
    });
    return pairs;
}

EPPayStubEarningInterpretation lineOf(const RowPair& pair, PayStubTextSource embeddedSource, bool bothRead, int order) {
    const auto* e = pair.embedded;
    const auto* o = pair.ocr;
    // A row only one reading has, while the other did read a table, must be looked at.
    const bool compare = bothRead && pair.associated;
    EPPayStubEarningInterpretation line;
    line.id = (e ? e->id : o->id);
    line.displayOrder = order;
    const auto label = [](const PayStubEarningsRow* row) { return row ? std::optional(row->normalizedDescription) : std::nullopt; };
    const auto labelExcerpt = [](const PayStubEarningsRow* row, PayStubTextSource source) {
        return row ? std::optional(PayStubEvidenceExcerpt{source, row->rawDescription, row->normalizedDescription, PageArea{row->pageIndex, row->normalizedBounds}})
                   : std::nullopt;
    };
    line.printedLabel = combined(label(e), labelExcerpt(e, embeddedSource), label(o), labelExcerpt(o, PayStubTextSource::tesseractOCR), compare,
                                 "earning label");
    const auto field = [](const PayStubEarningsRow* row, auto member) { return row ? row->*member : std::nullopt; };
    line.hours = number(field(e, &PayStubEarningsRow::hours), embeddedSource, field(o, &PayStubEarningsRow::hours), compare, "hours");
    line.rate = number(field(e, &PayStubEarningsRow::rate), embeddedSource, field(o, &PayStubEarningsRow::rate), compare, "rate");
    line.amount = number(field(e, &PayStubEarningsRow::amount), embeddedSource, field(o, &PayStubEarningsRow::amount), compare, "amount");
    // A row the other reading has no counterpart for is itself the doubt.
    if (bothRead && !pair.associated) line.printedLabel.reviewReason = std::string(stub_review_words::rowNotAssociated);
    for (const auto* row : {e, o}) {
        if (!row) continue;
        line.arithmetic.push_back(row->arithmetic);
        if (row->arithmetic.reviewReason && !line.amount.reviewReason) line.amount.reviewReason = row->arithmetic.reviewReason;
    }
    return line;
}

bool readAnything(const PayStubTextEvidence& evidence) { return !evidence.tokens.empty(); }

}  // namespace

EPPayStubInterpretationError::EPPayStubInterpretationError(Case errorCase)
    : std::runtime_error(errorCase == Case::unsupportedDocument
                             ? "Tessel doesn't recognize this pay-stub format yet."
                             : "Tessel recognized an Entertainment Partners pay stub but could not reconstruct its earnings table."),
      case_(errorCase) {}

std::string_view EPPayStubInterpretationError::caseName() const noexcept {
    return case_ == Case::unsupportedDocument ? "unsupportedDocument" : "noEarnings";
}

EPPayStubInterpretation interpretEPStub(PayStubTextEvidence embedded, PayStubTextEvidence ocr) {
    const auto embeddedLines = tokenLines(embedded);
    const auto ocrLines = tokenLines(ocr);
    if (!ep_layout::markers(embeddedLines).recognized() && !ep_layout::markers(ocrLines).recognized()) {
        throw EPPayStubInterpretationError(EPPayStubInterpretationError::Case::unsupportedDocument);
    }
    const auto embeddedTable = analyzeEarnings(embedded);
    const auto ocrTable = analyzeEarnings(ocr);
    if (!embeddedTable.found() && !ocrTable.found()) throw EPPayStubInterpretationError(EPPayStubInterpretationError::Case::noEarnings);

    const bool bothRead = readAnything(embedded) && readAnything(ocr);
    const auto e = ep_layout::printedFields(embeddedLines, embedded.source);
    const auto o = ep_layout::printedFields(ocrLines, ocr.source);
    EPPayStubInterpretation result;
    result.printedEmployeeName = combined(valueOf(e.employeeName), excerptOf(e.employeeName), valueOf(o.employeeName), excerptOf(o.employeeName),
                                          bothRead, "printed employee name");
    result.printedOccupation =
        combined(valueOf(e.occupation), excerptOf(e.occupation), valueOf(o.occupation), excerptOf(o.occupation), bothRead, "printed occupation");
    const auto start = [](const auto& f) { return f.payPeriod ? std::optional(f.payPeriod->value.first) : std::nullopt; };
    const auto end = [](const auto& f) { return f.payPeriod ? std::optional(f.payPeriod->value.second) : std::nullopt; };
    result.payPeriodStart = combined(start(e), excerptOf(e.payPeriod), start(o), excerptOf(o.payPeriod), bothRead, "pay-period start");
    result.payPeriodEnd = combined(end(e), excerptOf(e.payPeriod), end(o), excerptOf(o.payPeriod), bothRead, "pay-period end");

    const bool bothTables = embeddedTable.found() && ocrTable.found();
    int order = 0;
    for (const auto& pair : paired(embeddedTable.rows, ocrTable.rows)) {
        result.earningLines.push_back(lineOf(pair, embedded.source, bothTables, order++));
    }
    result.totalHours = number(embeddedTable.totalHours, embedded.source, ocrTable.totalHours, bothTables, "total hours");
    result.gross = number(embeddedTable.gross, embedded.source, ocrTable.gross, bothTables, "gross");
    result.embeddedSum = embeddedTable.sumValidation;
    result.ocrSum = ocrTable.sumValidation;
    if (!result.gross.reviewReason) {
        for (const auto* sum : {&result.embeddedSum, &result.ocrSum}) {
            if (sum->reviewReason) result.gross.reviewReason = sum->reviewReason;
        }
    }
    result.embeddedEvidence = std::move(embedded);
    result.ocrEvidence = std::move(ocr);
    return result;
}

}  // namespace tessel
