#pragma once

#include <QWidget>

#include <memory>
#include <optional>

#include "App/actualpay/PayComparison.hpp"
#include "App/actualpay/PayrollIssues.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/shell/ShellSession.hpp"

class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QTableWidget;
class QTreeWidget;
class QTreeWidgetItem;

class QStackedWidget;

namespace tessel {
class GrossChart;
class StubImportPanel;
class StubReviewPanel;
}

namespace tessel {

// Checking pay for one Payroll Week: its pay stubs imported and confirmed, the dashboard (who is waiting, who needs attention), each crew
// member's gross and lines compared with exact differences, the unmapped stub lines, and the payroll
// issues of the week and earlier weeks with their actions, the full summary and the claim for payroll.
class PayPage : public QWidget {
    Q_OBJECT
public:
    explicit PayPage(ShellSession& session, QWidget* parent = nullptr);

    // Shows the week holding the date.
    void showWeek(const Uuid& payrollWeekID);
    const PayComparisonWeek* comparison() const { return comparison_ ? &*comparison_ : nullptr; }
    // Sets the state of every issue in the chosen group (with the note typed, when any).
    std::optional<Refusal> setGroupState(int group, PayrollIssueState state);
    // Sets the state of one issue of a group (with the note typed, when any).
    std::optional<Refusal> setIssueState(int group, int member, PayrollIssueState state);
    // Every issue of the shown week in one state moved to another ("Needs Attention as Reported",
    // "Reported as Resolved").
    std::optional<Refusal> moveWeekIssues(PayrollIssueState from, PayrollIssueState to);
    const std::vector<payroll_issues::PayrollIssueGroup>& issueGroups() const noexcept { return groups_; }
    QString issueDetailText() const;
    QString summaryText() const;
    QString claimText() const;
    QString dashboardText() const;
    StubImportPanel& stubs() noexcept { return *stubs_; }
    StubReviewPanel& stubReview() noexcept { return *reviewPanel_; }
    const GrossChart& chart() const noexcept { return *chart_; }
    // One candidate of the batch under review beside its page.
    void reviewCandidate(int candidate);
    // The confirmed stub of the person on a row of the comparison, opened to be corrected or removed.
    std::optional<Refusal> openConfirmedStub(int row);
    bool isReviewing() const;

private:
    void reloadWeeks();
    void recalculate();
    void showPerson(int row);
    void reloadIssues();
    void closeReview();
    void showIssue(QTreeWidgetItem* item);

    ShellSession& session_;
    std::unique_ptr<ExpectedPayrollReview> review_;
    std::optional<PayComparisonWeek> comparison_;
    std::vector<payroll_issues::PayrollIssueGroup> groups_;
    QComboBox* weeks_ = nullptr;
    QLabel* dashboard_ = nullptr;
    QTableWidget* people_ = nullptr;
    QTableWidget* lines_ = nullptr;
    QLabel* personNotes_ = nullptr;
    QTreeWidget* issues_ = nullptr;
    StubImportPanel* stubs_ = nullptr;
    QStackedWidget* stack_ = nullptr;
    GrossChart* chart_ = nullptr;
    StubReviewPanel* reviewPanel_ = nullptr;
    int reviewing_ = -1;  // the batch candidate under review; -1 for a confirmed stub or none
    QComboBox* state_ = nullptr;
    QLineEdit* note_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* issueDetail_ = nullptr;
};

}  // namespace tessel
