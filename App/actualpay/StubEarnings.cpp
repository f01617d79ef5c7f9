#include "StubEarnings.hpp"

#include <algorithm>
#include <cmath>
#include <set>

#include "PayrollDomain/RoundingRule.hpp"

namespace tessel {
namespace {

constexpr double minimumReach = 0.04;

enum class Column { description, rate, hours, amount, taxes };

struct ColumnAt {
    Column column;
    double middle;
    double reach = minimumReach;
};

double middleOf(const PayStubTextToken& token) { return token.normalizedBounds.x + token.normalizedBounds.width / 2; }

std::optional<Column> columnNamed(const std::string& word) {
    if (word == "DESC" || word == "DESCRIPTION") return Column::description;
    if (word == "RATE") return Column::rate;
    if (word == "HOURS" || word == "HRS" || word == "UNITS") return Column::hours;
    if (word == "AMOUNT" || word == "CURRENT") return Column::amount;
    if (word == "TAXES") return Column::taxes;
    return std::nullopt;
}

bool isHeader(const PayStubTokenLine& line) {
    std::set<std::string> words;
    for (const auto& token : line.tokens) words.insert(token.normalizedText);
    return words.contains("DESC") && words.contains("HOURS") && (words.contains("AMOUNT") || words.contains("TAXES"));
}

// The header's columns left to right. Two header words naming one column ("RATE" printed twice, a
// wrapped label) are one column at the mean of their middles. The first "AMOUNT" right of "HOURS" is
// the earnings amount; a later one belongs to another table.
std::vector<ColumnAt> columnsOf(const PayStubTokenLine& header) {
    std::vector<ColumnAt> columns;
    for (const auto& token : header.tokens) {
        const auto column = columnNamed(token.normalizedText);
        if (!column) continue;
        const auto same = std::find_if(columns.begin(), columns.end(), [&](const auto& c) { return c.column == *column; });
        if (same == columns.end()) {
            columns.push_back({*column, middleOf(token)});
        } else if (*column != Column::amount) {
            same->middle = (same->middle + middleOf(token)) / 2;
        }
    }
    std::sort(columns.begin(), columns.end(), [](const auto& a, const auto& b) { return a.middle < b.middle; });
    for (std::size_t i = 0; i < columns.size(); ++i) {
        double reach = 1.0;
        if (i > 0) reach = std::min(reach, (columns[i].middle - columns[i - 1].middle) / 2);
        if (i + 1 < columns.size()) reach = std::min(reach, (columns[i + 1].middle - columns[i].middle) / 2);
        columns[i].reach = std::max(reach, minimumReach);
    }
    return columns;
}

bool has(const std::vector<ColumnAt>& columns, Column column) {
    return std::any_of(columns.begin(), columns.end(), [&](const auto& c) { return c.column == column; });
}

// The number column a word falls in, if any: the nearest header middle within its reach.
std::optional<Column> numberColumnOf(const PayStubTextToken& token, const std::vector<ColumnAt>& columns) {
    const ColumnAt* nearest = nullptr;
    for (const auto& c : columns) {
        if (std::abs(middleOf(token) - c.middle) <= c.reach && (!nearest || std::abs(middleOf(token) - c.middle) < std::abs(middleOf(token) - nearest->middle))) {
            nearest = &c;
        }
    }
    if (!nearest || nearest->column == Column::description) return std::nullopt;
    return nearest->column;
}

struct Cells {
    std::vector<const PayStubTextToken*> description, rate, hours, amount;
};

Cells cellsOf(const PayStubTokenLine& line, const std::vector<ColumnAt>& columns) {
    const double firstNumberColumn = [&] {
        double left = 1.0;
        for (const auto& c : columns) {
            if (c.column != Column::description) left = std::min(left, c.middle - c.reach);
        }
        return left;
    }();
    Cells cells;
    for (const auto& token : line.tokens) {
        const auto column = numberColumnOf(token, columns);
        if (!column) {
            if (token.normalizedBounds.x < firstNumberColumn) cells.description.push_back(&token);
            continue;
        }
        if (*column == Column::rate) cells.rate.push_back(&token);
        if (*column == Column::hours) cells.hours.push_back(&token);
        if (*column == Column::amount) cells.amount.push_back(&token);
    }
    return cells;
}

std::string rawOf(const std::vector<const PayStubTextToken*>& tokens) {
    std::string text;
    for (const auto* token : tokens) text += (text.empty() ? "" : " ") + token->rawText;
    return text;
}

std::string normalizedOf(const std::vector<const PayStubTextToken*>& tokens) {
    std::string text;
    for (const auto* token : tokens) text += (text.empty() ? "" : " ") + token->normalizedText;
    return text;
}

std::optional<PayStubNumericInterpretation> numberIn(const std::vector<const PayStubTextToken*>& tokens) {
    if (tokens.empty()) return std::nullopt;
    auto number = interpretStubNumber(rawOf(tokens));
    number.area = areaOf(tokens);
    return number;
}

bool namesWord(const PayStubTokenLine& line, std::string_view word) {
    return std::any_of(line.tokens.begin(), line.tokens.end(), [&](const auto& t) { return t.normalizedText == word; });
}

// The increment of a printed amount's last place: 0.01 for "360.00", 1 for "360".
Decimal incrementOf(const Decimal& amount) {
    const std::string text = amount.toString();
    const auto point = text.find('.');
    if (point == std::string::npos) return Decimal(1);
    return *Decimal::parse("0." + std::string(text.size() - point - 2, '0') + "1");
}

bool printedExactly(const std::optional<PayStubNumericInterpretation>& value) {
    return value && value->classification == PayStubNumericClassification::exact;
}

PayStubSumValidation validateSum(const std::vector<PayStubEarningsRow>& rows, const std::optional<PayStubNumericInterpretation>& gross) {
    PayStubSumValidation result;
    bool allExact = printedExactly(gross);
    for (const auto& row : rows) {
        if (const auto value = row.amount ? row.amount->resolved() : std::nullopt) {
            result.resolvedAmounts.push_back(*value);
            allExact = allExact && printedExactly(row.amount);
        }
    }
    result.resolvedGross = gross ? gross->resolved() : std::nullopt;
    if (!result.resolvedGross || result.resolvedAmounts.empty()) return result;
    Decimal sum = Decimal(0);
    for (const auto& amount : result.resolvedAmounts) sum = sum + amount;
    result.sum = sum;
    result.difference = *result.resolvedGross - sum;
    const bool agree = result.difference->isZero();
    result.status = !agree ? PayStubArithmeticStatus::inconsistent : allExact ? PayStubArithmeticStatus::exact : PayStubArithmeticStatus::normalizedConsistent;
    if (!agree) result.reviewReason = std::string(stub_earnings_words::sumDoesNotReconcile);
    return result;
}

}  // namespace

std::string_view toRawValue(PayStubArithmeticStatus status) noexcept {
    switch (status) {
        case PayStubArithmeticStatus::exact: return "exact";
        case PayStubArithmeticStatus::normalizedConsistent: return "normalizedConsistent";
        case PayStubArithmeticStatus::inconsistent: return "inconsistent";
        case PayStubArithmeticStatus::notApplicable: return "notApplicable";
    }
    return {};
}

PayStubRowArithmeticValidation validateRow(const std::optional<PayStubNumericInterpretation>& rate,
                                           const std::optional<PayStubNumericInterpretation>& hours,
                                           const std::optional<PayStubNumericInterpretation>& amount) {
    PayStubRowArithmeticValidation result;
    result.resolvedRate = rate ? rate->resolved() : std::nullopt;
    result.resolvedHours = hours ? hours->resolved() : std::nullopt;
    result.resolvedAmount = amount ? amount->resolved() : std::nullopt;
    if (!result.resolvedRate || !result.resolvedHours || !result.resolvedAmount) return result;
    const RoundingRule toPrinted(incrementOf(*result.resolvedAmount), RoundingMethod::nearestAwayFromZero);
    result.expectedAmount = toPrinted.round(*result.resolvedRate * *result.resolvedHours);
    result.difference = *result.resolvedAmount - *result.expectedAmount;
    if (!result.difference->isZero()) {
        result.status = PayStubArithmeticStatus::inconsistent;
        result.reviewReason = std::string(stub_earnings_words::rowDoesNotReconcile);
    } else {
        const bool exact = printedExactly(rate) && printedExactly(hours) && printedExactly(amount);
        result.status = exact ? PayStubArithmeticStatus::exact : PayStubArithmeticStatus::normalizedConsistent;
    }
    return result;
}

PayStubEarningsAnalysis analyzeEarnings(const PayStubTextEvidence& evidence) {
    PayStubEarningsAnalysis analysis;
    const auto lines = tokenLines(evidence);
    const auto header = std::find_if(lines.begin(), lines.end(), isHeader);
    if (header == lines.end()) {
        analysis.diagnostics = {std::string(stub_earnings_words::noGeometry), std::string(stub_earnings_words::noTable)};
        return analysis;
    }
    const auto columns = columnsOf(*header);
    if (!has(columns, Column::amount) || !has(columns, Column::hours)) {
        analysis.diagnostics = {std::string(stub_earnings_words::noGeometry), std::string(stub_earnings_words::noTable)};
        return analysis;
    }
    for (auto line = std::next(header); line != lines.end() && line->pageIndex == header->pageIndex; ++line) {
        const Cells cells = cellsOf(*line, columns);
        if (namesWord(*line, "TOTALS") || namesWord(*line, "TOTAL")) {
            analysis.totalHours = numberIn(cells.hours);
            analysis.gross = numberIn(cells.amount);
            continue;
        }
        if (namesWord(*line, "GROSS")) {
            if (!analysis.gross && !cells.amount.empty()) analysis.gross = numberIn(cells.amount);
            break;
        }
        if (analysis.totalHours || analysis.gross) break;  // below the totals: another table
        if (cells.amount.empty() || cells.description.empty()) continue;
        PayStubEarningsRow row;
        row.id = std::string(toRawValue(evidence.source)) + "-row-" + std::to_string(analysis.rows.size());
        row.pageIndex = line->pageIndex;
        row.rawDescription = rawOf(cells.description);
        row.normalizedDescription = normalizedOf(cells.description);
        if (!cells.rate.empty()) row.rawRate = rawOf(cells.rate);
        if (!cells.hours.empty()) row.rawHours = rawOf(cells.hours);
        row.rawAmount = rawOf(cells.amount);
        row.rate = numberIn(cells.rate);
        row.hours = numberIn(cells.hours);
        row.amount = numberIn(cells.amount);
        row.normalizedBounds = line->area().bounds;
        row.arithmetic = validateRow(row.rate, row.hours, row.amount);
        analysis.rows.push_back(std::move(row));
    }
    if (analysis.rows.empty()) analysis.diagnostics = {std::string(stub_earnings_words::noTable)};
    analysis.sumValidation = validateSum(analysis.rows, analysis.gross);
    return analysis;
}

}  // namespace tessel
