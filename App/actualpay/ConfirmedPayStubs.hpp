#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"

// Confirmed Actual Pay: what payroll paid one crew member for one Payroll Week, as printed on the stub
// the user confirmed, with the stub's PDF. One per crew member and week; it is the single authority that
// comparison reads.
namespace tessel {

struct ConfirmedPayStubEarningLine {
    Uuid id;
    Uuid payStubID;
    std::string printedLabel;
    std::optional<Decimal> hours{}, rate{};
    Decimal amount;
    std::int64_t displayOrder = 0;
};

struct ConfirmedPayStubActualPay {
    Uuid id;
    Uuid productionID, crewMemberID, payrollWeekID;
    CalendarDate payrollWeekStart, payrollWeekEnd;  // the week's bounds when confirmed
    std::string printedEmployeeName;
    std::optional<CalendarDate> printedPayPeriodStart{}, printedPayPeriodEnd{};
    std::string printedOccupation;
    std::optional<Decimal> totalHours{};
    Decimal gross;
    std::string sourcePDFData;  // the PDF's bytes
    std::string sourceFilename;
    Instant importedAt, confirmedAt, modifiedAt;
    std::vector<ConfirmedPayStubEarningLine> lines;  // in display order
};

namespace confirmed_pay_stub_words {
inline constexpr std::string_view alreadyConfirmed = "A confirmed pay stub already exists for this crew member and Payroll Week.";
inline constexpr std::string_view replaceTitle = "Replace Confirmed Pay Stub";
inline constexpr std::string_view replaceQuestion =
    "This crew member already has confirmed Actual Pay for this Payroll Week. Replacement is explicit and preserves the newly "
    "selected source PDF.";
inline constexpr std::string_view removeTitle = "Remove Confirmed Pay Stub?";
inline constexpr std::string_view removeQuestion =
    "This removes Actual Pay authority for this crew member and Payroll Week. Expected Payroll is unchanged.";
inline constexpr std::string_view noLongerExists = "The confirmed pay stub no longer exists.";
inline constexpr std::string_view saveFailed = "The pay stub could not be saved.";
inline constexpr std::string_view invalidPDF = "The original pay-stub PDF is invalid.";
inline constexpr std::string_view openFailedTitle = "The pay stub could not be opened.";
}  // namespace confirmed_pay_stub_words

// A confirmation or removal the store's state refuses; the message is the sentence to show.
class ConfirmedPayStubError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace confirmed_pay_stubs {

// Stubs of a week or of the production, without their PDFs (which can be large) unless asked for.
std::vector<ConfirmedPayStubActualPay> forWeek(ModelContext& context, const Uuid& payrollWeekID, bool withPDF = false);
std::vector<ConfirmedPayStubActualPay> forProduction(ModelContext& context, const Uuid& productionID, bool withPDF = false);
std::optional<ConfirmedPayStubActualPay> find(ModelContext& context, const Uuid& crewMemberID, const Uuid& payrollWeekID, bool withPDF = false);

// Writes a new stub with its lines. A stub already confirmed for the person and week is refused unless
// `replace` is set: then the new record, with its newly selected PDF, takes the old one's place and the
// old one and its lines are gone.
void confirm(ModelContext& context, const ConfirmedPayStubActualPay& stub, bool replace);

// Writes the edited values of a confirmed stub over its record, keeping its identity, its PDF, when it
// was imported and confirmed; its lines are replaced. Refused when it no longer exists, or when it is moved
// to a crew member who already has a confirmed stub for the week.
void update(ModelContext& context, const ConfirmedPayStubActualPay& stub);

// Deletes the stub and its lines; refused when it no longer exists.
void remove(ModelContext& context, const Uuid& payStubID);

// What is wrong with the production's stored stubs, one sentence per finding.
std::vector<std::string> integrityFindings(ModelContext& context, const Uuid& productionID);

}  // namespace confirmed_pay_stubs
}  // namespace tessel
