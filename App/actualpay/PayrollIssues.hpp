#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/actualpay/PayComparison.hpp"

// Lasting records of the differences between expected and confirmed actual pay: one per crew member,
// Payroll Week and comparison category (or unmapped printed line). Comparisons are recomputed whenever
// they are asked for; issues persist across them, so that what was reported to payroll, what needs no
// action and what was resolved is kept, and a settled difference that comes back or changes is reopened.
namespace tessel {

enum class PayrollIssueState { needsAttention, reported, noAction, resolved, noted };
std::string_view toRawValue(PayrollIssueState state) noexcept;
std::optional<PayrollIssueState> payrollIssueStateFromRaw(std::string_view raw) noexcept;
std::string_view label(PayrollIssueState state) noexcept;  // "Reported to Payroll"

namespace payroll_issue_words {
inline constexpr std::string_view reopened = "Discrepancy changed or reappeared; review again.";
inline constexpr std::string_view reconciled = "reconciled";
inline constexpr std::string_view resolvedByUser = "Marked resolved by the user.";
inline constexpr std::string_view summaryHeading = "Payroll Issues \u2014";
inline constexpr std::string_view thisWeek = "This Week\u2019s Issues";
inline constexpr std::string_view earlierWeeks = "Earlier Outstanding Issues";
inline constexpr std::string_view noneOutstanding = "No outstanding payroll issues for this week or earlier weeks.";
inline constexpr std::string_view noWeeks = "No Payroll Weeks available.";
inline constexpr std::string_view unavailableCrew = "Unavailable crew";
inline constexpr std::string_view unmappedCategory = "actual:unmapped";
}  // namespace payroll_issue_words

struct PayrollIssue {
    Uuid id;
    std::string identityKey{};
    Uuid productionID, crewID, weekID;
    std::string categoryKey{};
    std::optional<Uuid> actualLineID{};
    std::string title{}, nature{};
    std::optional<Decimal> expectedAmount{}, actualAmount{}, differenceAmount{};
    std::string currency{};
    std::string fingerprint{};
    std::string stateRaw{};
    std::string note{};
    Instant createdAt{}, updatedAt{};
    std::optional<Instant> reportedAt{}, resolvedAt{};
    // Why the issue is in its state: "reconciled", "Marked resolved by the user.", or the sentence of a
    // reopened one ("Discrepancy changed or reappeared; review again.").
    std::optional<std::string> resolutionReason{};

    std::optional<PayrollIssueState> state() const noexcept { return payrollIssueStateFromRaw(stateRaw); }
    bool open() const noexcept;  // needing attention or reported
};

// What one comparison observes now for one category or unmapped line.
struct PayrollIssueObservation {
    std::string categoryKey{};
    std::optional<Uuid> actualLineID{};
    std::string title{}, nature{};
    std::optional<Decimal> expected{}, actual{}, difference{};
    std::string currency{};
};

namespace payroll_issues {

std::string identityKey(const Uuid& productionID, const Uuid& crewID, const Uuid& weekID, const std::string& categoryKey,
                        const std::optional<Uuid>& actualLineID);
std::string fingerprint(const PayrollIssueObservation& observation);
// Every line that is not a match (exactly or within the tolerance), and every unmapped printed line.
std::vector<PayrollIssueObservation> observations(const CrewPayComparison& comparison);

std::vector<PayrollIssue> list(ModelContext& context, const Uuid& productionID);  // by week, crew, category
std::optional<PayrollIssue> find(ModelContext& context, const Uuid& productionID, const Uuid& issueID);

struct SyncReport {
    int created = 0, changed = 0, reopened = 0, reconciled = 0, weeks = 0;
    bool anythingChanged() const noexcept { return created + changed + reopened + reconciled > 0; }
};
// Compares every Payroll Week with confirmed Actual Pay and brings the issues in line with what is
// observed, writing only at the end and only what changed.
SyncReport synchronize(ModelContext& context, const Production& production, Instant now);
// Whether the production has any confirmed pay, so that an edit elsewhere needs a synchronisation.
bool hasConfirmedPay(ModelContext& context, const Uuid& productionID);
// After an edit of a production with confirmed pay, its payroll issues are brought in line with the edit
// in the same transaction, so that the list is never stale. A comparison that cannot be made leaves the
// issues as they were rather than refusing the edit; an explicit synchronisation then says why.
void keepCurrent(ModelContext& context, const Uuid& productionID, Instant now);

// A user's choice of state for issues, with an optional note that replaces the issue's note.
void setState(ModelContext& context, const std::vector<PayrollIssue>& issues, PayrollIssueState state, const std::optional<std::string>& note,
              Instant now);

// Every issue of the production in one state (of one week, when given): what the bulk actions "Needs
// Attention as Reported" and "Reported as Resolved" move on.
std::vector<PayrollIssue> inState(ModelContext& context, const Uuid& productionID, PayrollIssueState state, const std::optional<Uuid>& weekID);

// One issue in full, as its detail view shows it: the line and its amounts, the state and why, when it was
// first seen and last changed, and what the user did with it before ("Previously reported", "Previous
// workflow note:").
std::string detailText(const PayrollIssue& issue);

// Issues of one week, one category, one direction and one currency together; an issue whose crew member
// can no longer be found stands alone.
struct PayrollIssueGroup {
    std::string key{};  // "2026-11-02|semantic:overtime|Underpaid|USD", plus "|crew=<id>" for unavailable crew
    std::string title{};
    CalendarDate weekStart;
    std::optional<Uuid> unknownIdentity{};
    std::vector<PayrollIssue> members{};
    std::optional<Decimal> difference() const;  // the members' total, when each has one
};
std::vector<PayrollIssueGroup> groups(ModelContext& context, const Uuid& productionID, const std::vector<PayrollIssue>& issues);

// The weekly summary as the text "Copy Full Summary" copies: the week's outstanding groups, then each
// earlier week's, with each member's name, amount, state and note.
std::string summaryText(ModelContext& context, const Production& production, const CalendarDate& weekDate);

// A message for the payroll company: each crew member's issues of the week in the given states, with the
// line, expected, actual and difference, and under each the expected line's calculation in words.
std::string claimText(ModelContext& context, ExpectedPayrollReview& review, const Production& production, const PayrollWeek& week,
                      const std::vector<PayrollIssueState>& states);

}  // namespace payroll_issues
}  // namespace tessel
