#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/actualpay/StubInterpretation.hpp"

// One stub under review before it becomes Confirmed Actual Pay: the interpretation's values with their
// evidence and reasons, the crew member it is for, the week it is associated with, and the user's
// corrections. Nothing here is stored until the review is confirmed.
namespace tessel {

struct PayStubCrewOption {
    Uuid id;
    std::string displayName;
    bool isDTSParticipant = false;  // has rows on this week's DTS: shown as "· DTS participant"
};

// "Dana Rivera · DTS participant", as a crew choice is shown.
std::string choiceText(const PayStubCrewOption& option);

struct PayStubCrewMatch {
    std::optional<Uuid> proposedCrewMemberID;
    std::optional<std::string> reviewReason;
};

namespace pay_stub_review_words {
inline constexpr std::string_view chooseCrew = "Choose a Production crew member.";
inline constexpr std::string_view sameName = "More than one Production crew member has this name.";
inline constexpr std::string_view notUnambiguous = "Choose a Production crew member; the name is not unambiguous.";
inline constexpr std::string_view multiplePDFs = "Multiple PDFs propose this crew member. Review individually; bulk confirmation is disabled.";
inline constexpr std::string_view periodRequired = "The pay-period dates are required.";
inline constexpr std::string_view startFollowsEnd = "Printed Start must not follow Printed End.";
inline constexpr std::string_view periodMismatch = "The printed pay period does not match the selected Tessel Payroll Week.";
inline constexpr std::string_view acknowledgePeriod = "Associate this mismatched pay period with the selected Payroll Week";
inline constexpr std::string_view remainingItems = "Review the remaining pay-stub items before confirming:";
inline constexpr std::string_view chooseCorrectCrew = "Choose the correct Production crew member.";
inline constexpr std::string_view valueRequired = "A value is required.";
inline constexpr std::string_view oneDecimal = "Enter one unambiguous decimal value.";
inline constexpr std::string_view labelRequired = "A printed earning label is required.";
inline constexpr std::string_view amountInvalid = "An earning amount is invalid.";
inline constexpr std::string_view oneLineRequired = "At least one earning line is required.";
inline constexpr std::string_view grossNotSum = "Gross does not match the sum of earning amounts.";
inline constexpr std::string_view dateRequired = "A date is required.";
inline constexpr std::string_view needsCrew = "Add Production crew before importing pay stubs.";
}  // namespace pay_stub_review_words

// The printed name against the crew's display names, both in the stub reader's normal form. An equal
// name is proposed when one person carries it. Otherwise a printed name of two or more words is matched
// word by word: words are compared without their periods and commas, a one-letter word is an initial
// that matches any word it begins, and a crew member is a candidate when the words of the shorter name
// appear in the longer in the same order, its first word matching the longer's first and its last the
// longer's last ("DANA M RIVERA" and "Dana Rivera"; "D RIVERA" and "Dana Rivera"; not "RIVERA DANA").
PayStubCrewMatch matchCrew(std::string_view printedName, const std::vector<PayStubCrewOption>& crew);

template <typename Value>
struct PayStubReviewed {
    std::optional<Value> value;
    std::vector<PayStubEvidenceExcerpt> evidence;
    std::optional<std::string> reviewReason;
    bool wasUserCorrected = false;
};
using PayStubReviewedText = PayStubReviewed<std::string>;
using PayStubReviewedDate = PayStubReviewed<CalendarDate>;

struct PayStubReviewedDecimal {
    std::string rawValue;  // as read or entered; empty when nothing was
    std::vector<PayStubEvidenceExcerpt> evidence;
    std::optional<std::string> reviewReason;
    bool wasUserCorrected = false;
    bool isRequired = false;
    std::optional<Decimal> value() const;  // the one decimal the text reads as, if it does
};

struct PayStubReviewedEarningLine {
    std::string id;
    PayStubReviewedText printedLabel;
    PayStubReviewedDecimal hours, rate, amount;  // only the amount is required
    std::vector<PayStubRowArithmeticValidation> arithmetic;
    int displayOrder = 0;
};

// The Payroll Week a stub is imported for.
struct PayStubWeek {
    Uuid productionID, payrollWeekID;
    CalendarDate start, end;
};

struct PayStubReviewSession {
    Uuid recordID;  // the identity the confirmed record takes
    PayStubWeek week;
    std::string sourcePDFData, sourceFilename;
    Instant importedAt;
    std::vector<PayStubCrewOption> crewOptions;
    PayStubReviewedText printedEmployeeName;
    PayStubReviewedDate payPeriodStart, payPeriodEnd;
    PayStubReviewedText printedOccupation;
    std::vector<PayStubReviewedEarningLine> earningLines;
    PayStubReviewedDecimal totalHours, gross;
    std::optional<Uuid> selectedCrewMemberID;
    std::optional<std::string> crewReviewReason;
    bool weekMismatchAcknowledged = false;
    bool isExistingAuthority = false;
    std::optional<Instant> confirmedAt{};  // an edited stub's first confirmation
};

// The interpretation as a review, with the crew member its printed name proposes.
PayStubReviewSession startReview(const EPPayStubInterpretation& stub, const PayStubWeek& week, std::vector<PayStubCrewOption> crew,
                                 std::string filename, std::string pdf, Instant importedAt);

// A confirmed stub opened again for editing: its stored values (with any earlier corrections) as the
// review, its identity kept. A period it was confirmed with counts as associated with its week.
PayStubReviewSession reviewOfConfirmed(const ConfirmedPayStubActualPay& stub, std::vector<PayStubCrewOption> crew);

// The user's corrections: each marks its value as corrected and settles its review reason.
void chooseCrewMember(PayStubReviewSession& session, const Uuid& crewMemberID);
void correct(PayStubReviewedText& field, std::string value);
void correct(PayStubReviewedDate& field, CalendarDate value);
void correct(PayStubReviewedDecimal& field, std::string value);

// An earning line the reading missed, added by the user at the end (its amount required), and a line
// the reading made up, dropped; the lines are numbered again in their order.
PayStubReviewedEarningLine& addEarningLine(PayStubReviewSession& session);
void removeEarningLine(PayStubReviewSession& session, std::size_t index);

// The printed period's problems in words: missing dates, a start after the end, or (unless acknowledged)
// a period other than the week's.
std::vector<std::string> periodProblems(const PayStubReviewSession& session);
bool periodMatchesWeek(const PayStubReviewSession& session);
// Every value that still carries a review reason from the reading, as "Field: reason", in the order a
// person reads the stub; none when nothing needs a look.
std::vector<std::string> valueReviewReasons(const PayStubReviewSession& session);
// Everything that stops confirmation, each as "Field: sentence" (or the sentence alone).
std::vector<std::string> unresolvedItems(const PayStubReviewSession& session);

// The review cannot be confirmed yet; what() is the heading and the list, one item a line.
class PayStubReviewError : public std::runtime_error {
public:
    explicit PayStubReviewError(std::vector<std::string> unresolved);
    const std::vector<std::string>& unresolved() const noexcept { return unresolved_; }

private:
    std::vector<std::string> unresolved_;
};

// The record confirmation writes, stamped `now` (an edited stub keeps when it was imported and confirmed);
// refused with PayStubReviewError while anything is unresolved.
ConfirmedPayStubActualPay confirmedRecord(const PayStubReviewSession& session, Instant now);

}  // namespace tessel
