#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/actualpay/StubEvidence.hpp"
#include "App/actualpay/StubNumbers.hpp"

// The earnings table of one reading of a stub, rebuilt from the geometry of its words.
namespace tessel {

enum class PayStubArithmeticStatus { exact, normalizedConsistent, inconsistent, notApplicable };
std::string_view toRawValue(PayStubArithmeticStatus status) noexcept;

namespace stub_earnings_words {
inline constexpr std::string_view rowDoesNotReconcile = "Rate × hours does not reconcile to the printed amount.";
inline constexpr std::string_view sumDoesNotReconcile = "The earning amounts do not add up to the printed gross.";
inline constexpr std::string_view noGeometry = "No reliable single-page earnings geometry is available.";
inline constexpr std::string_view noTable = "No earnings table reconstructed from the available geometry.";
}  // namespace stub_earnings_words

struct PayStubRowArithmeticValidation {
    PayStubArithmeticStatus status = PayStubArithmeticStatus::notApplicable;
    std::optional<Decimal> resolvedRate{}, resolvedHours{}, resolvedAmount{}, expectedAmount{}, difference{};
    std::optional<std::string> reviewReason{};
};

struct PayStubEarningsRow {
    std::string id;
    int pageIndex = 0;
    std::string rawDescription;
    std::string normalizedDescription;
    std::optional<std::string> rawRate{}, rawHours{}, rawAmount{};
    std::optional<PayStubNumericInterpretation> rate{}, hours{}, amount{};
    PageRectangle normalizedBounds;
    PayStubRowArithmeticValidation arithmetic;
};

struct PayStubSumValidation {
    PayStubArithmeticStatus status = PayStubArithmeticStatus::notApplicable;
    std::vector<Decimal> resolvedAmounts;
    std::optional<Decimal> resolvedGross{}, sum{}, difference{};
    std::optional<std::string> reviewReason{};
};

struct PayStubEarningsAnalysis {
    std::vector<PayStubEarningsRow> rows;
    std::optional<PayStubNumericInterpretation> totalHours{};
    std::optional<PayStubNumericInterpretation> gross{};
    PayStubSumValidation sumValidation;
    std::vector<std::string> diagnostics;  // why no table was found, in words
    bool found() const noexcept { return !rows.empty(); }
};

// The table under the first line that names "DESC" and "HOURS" and "AMOUNT" (or "TAXES"), on that
// line's page only. Each header word is a column at its middle; a column reaches half way to its
// neighbours but never less than 0.04 of the page each side. The lines below, up to the "TOTALS"
// line, are rows: a word belongs to the column whose middle is nearest within reach, and words left
// of every number column describe the row. The "TOTALS" line gives the printed total hours and
// gross (a line naming "GROSS" gives the gross when the totals line does not). Words under a "TAXES"
// column are not earnings.
PayStubEarningsAnalysis analyzeEarnings(const PayStubTextEvidence& evidence);

// Rate × hours, rounded half away from zero to the printed amount's places, against the printed
// amount: exact when all three were printed exactly and agree, normalizedConsistent when they agree
// only once read, inconsistent otherwise, notApplicable without a rate or hours (a flat allowance).
PayStubRowArithmeticValidation validateRow(const std::optional<PayStubNumericInterpretation>& rate,
                                           const std::optional<PayStubNumericInterpretation>& hours,
                                           const std::optional<PayStubNumericInterpretation>& amount);

}  // namespace tessel
