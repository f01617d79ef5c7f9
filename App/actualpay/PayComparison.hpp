#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/expected/PayrollReviewRecords.hpp"
#include "App/model/ModelContext.hpp"

// Expected pay beside confirmed Actual Pay for one crew member and Payroll Week: the gross, and under the
// EP earnings profile each paid concept line by line, with the exact difference (actual − expected) and
// its status. Comparisons are computed when asked for, never stored.
namespace tessel {

// How far printed lines can be paired: not at all (gross only), or by the EP earning terms. The raw
// values are the profile codes the store keeps.
enum class PayComparisonProfile { unspecified, grossOnly, ep };
std::string_view toRawValue(PayComparisonProfile profile) noexcept;
std::optional<PayComparisonProfile> payComparisonProfileFromRaw(std::string_view raw) noexcept;
std::string_view label(PayComparisonProfile profile) noexcept;  // "EP earnings (USD)"

namespace pay_comparison_words {
inline constexpr std::string_view invalidTolerance = "Enter a non-negative amount, such as 0.00 or 0.01.";
inline constexpr std::string_view toleranceHelp =
    "Differences up to this amount count as rounding matches. Exact differences are still shown. 0.00 requires an exact match.";
inline constexpr std::string_view noExpected = "Expected Payroll is unavailable for this crew identity/week.";
inline constexpr std::string_view noActual = "Confirmed Actual Pay is unavailable for this crew identity/week.";
inline constexpr std::string_view multipleStubs = "Multiple confirmed stubs exist for this crew/week; comparison is unavailable.";
inline constexpr std::string_view incompleteExpected = "Expected Payroll is incomplete; resolve its source/rate issues first.";
inline constexpr std::string_view epNeedsUSD = "The EP earnings profile requires USD.";
inline constexpr std::string_view periodDiffers = "The confirmed stub's printed period differs from this Payroll Week.";
inline constexpr std::string_view grossUnavailable = "Gross Difference unavailable \u2014 Review needed";
inline constexpr std::string_view grossOnlyReview = "Gross-only review. Set payroll terminology in Production Settings to reconcile earning lines.";
inline constexpr std::string_view grossWithinTolerance = "Gross matches within rounding tolerance";
inline constexpr std::string_view grossMatchesLinesDoNot = "Gross matches; item reconciliation still needs review.";
inline constexpr std::string_view noSupportedMapping =
    "No supported mapping. These printed lines remain part of Actual Pay and require review.";
inline constexpr std::string_view hoursNotDifferenced =
    "Expected paid hours and payroll's printed hours may use different bases. They are shown separately, without an inferred hours "
    "difference.";
inline constexpr std::string_view expectedOnlyDetail = "Expected but not found on pay stub";
}  // namespace pay_comparison_words

// The production's profile and rounding tolerance. The tolerance is refused when negative or not a
// decimal (invalidTolerance); a production without a stored profile is `unspecified`.
struct PayComparisonSettings {
    PayComparisonProfile profile = PayComparisonProfile::unspecified;
    Decimal tolerance{"0.01"};
};
namespace pay_comparison_settings {
PayComparisonSettings read(ModelContext& context, const Uuid& productionID);
void setProfile(ModelContext& context, const Uuid& productionID, PayComparisonProfile profile);
Decimal validatedTolerance(const std::string& text);
void setTolerance(ModelContext& context, const Uuid& productionID, const Decimal& tolerance);
}  // namespace pay_comparison_settings

// The concept a printed EP earning label stands for: the concept titles and the labels payroll companies
// print ("OT 1.5X", "MEAL PEN", "KIT RENTAL" …), compared in the stub reader's normal form.
std::optional<PayComparisonConcept> conceptOfPrintedLabel(std::string_view printedLabel);
std::string_view title(PayComparisonConcept concept_) noexcept;  // "Straight Time"

enum class PayComparisonLineStatus { matches, withinTolerance, underpaid, overpaid, expectedOnly, actualOnly, review };
std::string_view toRawValue(PayComparisonLineStatus status) noexcept;
std::string_view label(PayComparisonLineStatus status) noexcept;  // "Matches within rounding tolerance"
// The status of a difference: zero matches, within the tolerance (boundary included) is a rounding
// match, then its sign.
PayComparisonLineStatus statusOfDifference(const Decimal& difference, const Decimal& tolerance);

struct PayComparisonExpectedLine {
    std::string id{};  // the category's rule id and schedule, "band.overtime@local"
    std::string title{};
    std::optional<PayComparisonConcept> concept_{};
    std::optional<Decimal> amount{}, hours{}, rate{};
    std::vector<std::string> calculationDetails{};  // each day's part in words
    std::string issueCategoryKey{};                   // "semantic:overtime", "expected:box", "expected:<rule id>"
};

struct PayComparisonExpected {
    Uuid crewID, weekID;
    std::optional<Decimal> gross{}, hours{};
    bool complete = false;
    std::vector<PayComparisonExpectedLine> lines{};
};

struct PayComparisonActualLine {
    Uuid id;  // the confirmed earning line
    std::string label{};
    Decimal amount{};
    std::optional<Decimal> hours{}, rate{};
};

struct PayComparisonActual {
    Uuid crewID, weekID;
    Decimal gross{};
    std::optional<Decimal> hours{};
    std::vector<PayComparisonActualLine> lines{};
};

struct PayComparisonLine {
    std::string id{};  // the concept's raw value, or the expected line's id when it has none
    std::string title{};
    std::vector<PayComparisonExpectedLine> expected{};
    std::vector<PayComparisonActualLine> actual{};
    Decimal tolerance{};
    bool comparable = false;
    PayComparisonLineStatus status = PayComparisonLineStatus::review;
    std::optional<Decimal> difference{};  // actual − expected, when both sides have amounts
    std::string issueCategoryKey{};
};

// The sums of a line's two sides: absent when the side has no lines, or an expected line has no amount.
std::optional<Decimal> expectedAmount(const PayComparisonLine& line);
std::optional<Decimal> actualAmount(const PayComparisonLine& line);
// A difference as it is read: "−67.50" when less was paid than expected, "+8.50" when more, "-" for none.
std::string signedAmount(const std::optional<Decimal>& difference);

enum class PayComparisonOutcome { unavailable, discrepancy, roundingMatch, exact };

struct CrewPayComparison {
    Uuid crewID, weekID;
    std::string crewName{};
    std::optional<PayComparisonExpected> expected{};
    std::optional<PayComparisonActual> actual{};
    std::vector<PayComparisonLine> lines{};
    std::vector<PayComparisonActualLine> unmappedActual{};
    std::vector<std::string> issues{};
    bool comparable = false;
    Decimal tolerance{};
    bool reconciliationAvailable = false;
    std::string currency{};
    std::optional<Decimal> grossDifference{};
    std::optional<PayComparisonLineStatus> grossStatus{};
    PayComparisonOutcome outcome = PayComparisonOutcome::unavailable;
};

// The expected side of a weekly review: each paid category as a line, the estimated gross, the paid
// hours of the pay bands; complete when the gross is whole and nothing in the week needs its source or
// rate resolved. Each line's calculation in words is written only when asked for: a synchronisation of
// issues over a season has no use for it.
enum class CalculationWords { include, omit };
PayComparisonExpected expectedPay(const WeeklyCrewPayrollReview& review, const Uuid& weekID, CalculationWords words = CalculationWords::include);
PayComparisonActual actualPay(const ConfirmedPayStubActualPay& stub);

// One crew member's comparison from what is known of the week: the weekly review (absent when there is
// none), the confirmed stubs for the person and week (normally one), the settings and the production's
// currency.
CrewPayComparison compare(const Uuid& crewID, const Uuid& weekID, const std::string& crewName, const WeeklyCrewPayrollReview* review,
                          const std::vector<const ConfirmedPayStubActualPay*>& stubs, const PayComparisonSettings& settings,
                          const std::string& currency, CalculationWords words = CalculationWords::include);

// A Payroll Week's comparisons and its dashboard: every person in the week (a DTS row, an activity or a
// confirmed stub), in crew order.
struct PayComparisonWeek {
    PayrollWeek week;
    CalendarDate start, end;
    std::vector<CrewPayComparison> comparisons{};  // the people with confirmed pay
    std::vector<std::pair<Uuid, std::string>> waiting{};  // the people without: "Awaiting Pay Stub"
    int peopleInWeek = 0, stubsConfirmed = 0, needsAttention = 0, unableToCompare = 0, noActionNeeded = 0;
};
std::string_view dashboardLabel(PayComparisonOutcome outcome) noexcept;  // "Needs Attention"

class ExpectedPayrollReview;
PayComparisonWeek compareWeek(ModelContext& context, ExpectedPayrollReview& review, const Production& production, const PayrollWeek& week,
                              CalculationWords words = CalculationWords::include);

}  // namespace tessel
