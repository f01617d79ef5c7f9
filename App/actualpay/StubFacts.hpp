#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "App/actualpay/StubEvidence.hpp"
#include "PayrollDomain/Instant.hpp"

// Scoring one reading of a stub against what is known to be printed on it: how the extraction lab
// tells whether the text layer and OCR recover every fact, and which ones they miss.
namespace tessel {

// What a reference stub prints. Texts and numbers are kept as written in the facts file, so that a
// reading can be told to have recovered them exactly or only once normalised; an absent fact is not
// scored.
struct PayStubReferenceFacts {
    struct EarningLine {
        std::string label;
        std::optional<std::string> rate, hours;  // absent on a flat row
        std::string amount;
    };
    std::optional<std::string> printedEmployeeName, printedOccupation;
    std::optional<CalendarDate> payPeriodStart, payPeriodEnd;
    std::optional<std::string> totalHours, gross;
    std::vector<EarningLine> earningLines;
};

// A facts file that cannot be used; the message is one sentence naming what is wrong.
class PayStubReferenceFactsError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// {"printedEmployeeName", "printedOccupation", "payPeriodStart", "payPeriodEnd" (YYYY-MM-DD),
//  "totalHours", "gross", "earningLines": [[label, rate|null, hours|null, amount], …]}; every key is
// optional, numbers may be JSON numbers (read from their digits) or text as printed ("1,234.50").
PayStubReferenceFacts readReferenceFacts(std::string_view json);

enum class PayStubRecoveryClassification { exact, normalizedCorrect, incorrect, missing };
std::string_view toRawValue(PayStubRecoveryClassification classification) noexcept;

struct PayStubFactRecovery {
    std::string id;  // "gross", "earningLines[2].amount", …
    std::string expected;
    std::optional<std::string> observed;
    PayStubRecoveryClassification classification = PayStubRecoveryClassification::missing;
};

struct PayStubComparisonSummary {
    PayStubTextSource source = PayStubTextSource::embeddedPDFText;
    int totalCount = 0, exactCount = 0, normalizedCount = 0, incorrectCount = 0, missingCount = 0;
    bool earningsReconcile = false;  // a table was read, no row fails rate × hours, and the amounts add up to the gross
};

struct PayStubFactRecoveryReport {
    std::vector<PayStubFactRecovery> facts;
    PayStubComparisonSummary summary;
};

// Each fact against the text this reading gives for it: the same text is exact; the same once
// normalised (a text's normal form, a number's value, "8.0" for "8") is normalizedCorrect; other text is
// incorrect; none is missing. A date is observed as the date read, written YYYY-MM-DD. An earning line
// is looked for by its label among the rows not yet matched, then at its own place in the table.
PayStubFactRecoveryReport recoverFacts(const PayStubTextEvidence& evidence, const PayStubReferenceFacts& facts);

}  // namespace tessel
