#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/actualpay/StubEvidence.hpp"
#include "PayrollDomain/Decimal.hpp"

// Numbers printed on a pay stub, read as exact decimals in the POSIX locale and never as floating point.
namespace tessel {

enum class PayStubNumericClassification {
    exact,       // the text is one decimal exactly as printed
    normalized,  // one decimal, once grouping, currency, sign notation or an OCR letter is read
    ambiguous,   // more than one reading; every one is kept
    invalid,     // no reading
};

std::string_view toRawValue(PayStubNumericClassification classification) noexcept;

struct PayStubNumericInterpretation {
    std::string rawText;
    std::string normalizedText;
    std::vector<Decimal> candidates;
    PayStubNumericClassification classification = PayStubNumericClassification::invalid;
    std::optional<PageArea> area{};  // where it was printed, when read from a page

    // The value, when the text allows exactly one.
    std::optional<Decimal> resolved() const;
};

// The readings of one printed number. The rules:
// - Exact: optional "-", digits, optionally "." and digits (the POSIX form), nothing else.
// - Otherwise the normalised text is read. A sign is a leading or trailing "-" or enclosing
//   parentheses ("(12.00)" and "12.00-" are -12.00); a currency mark ("$", "US$", "USD") before or
//   after is dropped; in a token of digits and separators, the letters OCR confuses with digits are
//   read as those digits ("O" as 0; "L", "I" and "|" as 1).
// - Separators: with both "," and "." the last is the decimal mark and the other groups thousands
//   ("1,234.50" and "1.234,50" are both 1234.50); "." alone is the decimal mark, as in the POSIX
//   locale, unless it appears more than once as a grouping ("1.234.567"); "," alone groups thousands
//   when followed by three digits, but OCR reads a "." as "," often enough that a lone "," before
//   three digits is also kept as a decimal mark ("1,234" is ambiguous: 1234 or 1.234) unless a currency
//   mark says it is money ("$1,500" is 1500); a "," before one, two or more than three digits is a
//   decimal mark ("12,50" is 12.50). Spaces group thousands.
//   Groups after the first must have exactly three digits.
// - A reading that needs more than the decimals' 34 significant digits is no reading.
PayStubNumericInterpretation interpretStubNumber(std::string_view raw);

}  // namespace tessel
