#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/actualpay/StubEvidence.hpp"
#include "PayrollDomain/Instant.hpp"

// The Entertainment Partners stub layout: whether a reading is one, and the printed facts on its lines.
namespace tessel {

// The text a value was read from, kept to show beside the PDF.
struct PayStubEvidenceExcerpt {
    PayStubTextSource source = PayStubTextSource::embeddedPDFText;
    std::string rawText;
    std::string normalizedText;
    std::optional<PageArea> area{};  // where on the page it was printed, when known
};

namespace ep_layout {

// Each marker searched in the compact text of all lines: the company name, "PAY PERIOD",
// "OCCUPATION TITLE", and "TOTALS" together with "GROSS".
struct Markers {
    bool companyName = false, payPeriod = false, occupationTitle = false, totalsAndGross = false;
    int count() const noexcept { return companyName + payPeriod + occupationTitle + totalsAndGross; }
    // Three of four: a stub whose company name is missing from its text is still recognised.
    bool recognized() const noexcept { return count() >= 3; }
};

Markers markers(const std::vector<PayStubTokenLine>& lines);

template <typename Value>
struct Found {
    Value value;
    PayStubEvidenceExcerpt excerpt;
    std::string printed;  // the captured text as the reading gave it, before normalisation
};

struct PrintedFields {
    std::optional<Found<std::string>> employeeName;
    std::optional<Found<std::string>> occupation;
    std::optional<Found<std::pair<CalendarDate, CalendarDate>>> payPeriod;
};

// The first line matching each field's pattern, read from the line's normalised text. A pay-period date
// is month/day/year; a two-digit year is in the 2000s. A date that does not exist is not a match.
PrintedFields printedFields(const std::vector<PayStubTokenLine>& lines, PayStubTextSource source);

}  // namespace ep_layout
}  // namespace tessel
