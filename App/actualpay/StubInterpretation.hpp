#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "App/actualpay/StubEarnings.hpp"
#include "App/actualpay/StubEvidence.hpp"
#include "App/actualpay/StubFields.hpp"

// An Entertainment Partners stub's printed facts, proposed from two independent readings compared with
// each other: every value with the text it came from, and a reason in words wherever a person must look.
namespace tessel {

namespace stub_review_words {
inline constexpr std::string_view sourcesDisagreePrefix = "The extraction sources do not agree on the ";
inline constexpr std::string_view rowNotAssociated =
    "This physical earning row could not be associated uniquely across extraction sources. Review it against the PDF; another "
    "unassociated row may represent the same evidence.";
}  // namespace stub_review_words

template <typename Value>
struct EPInterpreted {
    std::optional<Value> value;
    std::vector<PayStubEvidenceExcerpt> evidence;
    std::optional<std::string> reviewReason;
};
using EPInterpretedText = EPInterpreted<std::string>;
using EPInterpretedDate = EPInterpreted<CalendarDate>;
using EPInterpretedDecimal = EPInterpreted<Decimal>;

struct EPPayStubEarningInterpretation {
    std::string id;
    EPInterpretedText printedLabel;
    EPInterpretedDecimal hours, rate, amount;
    std::vector<PayStubRowArithmeticValidation> arithmetic;  // one per source row associated with the line
    int displayOrder = 0;
};

struct EPPayStubInterpretation {
    EPInterpretedText printedEmployeeName;
    EPInterpretedDate payPeriodStart, payPeriodEnd;
    EPInterpretedText printedOccupation;
    std::vector<EPPayStubEarningInterpretation> earningLines;
    EPInterpretedDecimal totalHours, gross;
    PayStubTextEvidence embeddedEvidence, ocrEvidence;
    PayStubSumValidation embeddedSum, ocrSum;
};

class EPPayStubInterpretationError : public std::runtime_error {
public:
    enum class Case { unsupportedDocument, noEarnings };
    explicit EPPayStubInterpretationError(Case errorCase);
    Case errorCase() const noexcept { return case_; }
    std::string_view caseName() const noexcept;

private:
    Case case_;
};

// The layout is recognised in either reading (a scan has no text layer at all). Each fact is read from
// each reading: equal readings are accepted; different ones are proposed from the text layer with the
// sources' disagreement as the reason; a fact read by one reading while the other saw text but not the
// fact is a disagreement too. When one reading saw no text at all, the other's facts stand alone.
// Earning rows of the two readings are the same physical row when they lie on the same page at the same
// height (their middles within half the taller row's height) and pair one to one; any other row keeps
// its own line with the association reason. Nothing is dropped.
EPPayStubInterpretation interpretEPStub(PayStubTextEvidence embedded, PayStubTextEvidence ocr);

}  // namespace tessel
