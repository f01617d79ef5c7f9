#pragma once

#include <QWidget>

#include <memory>
#include <optional>

#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/shell/ShellSession.hpp"

class QComboBox;
class QLabel;
class QPlainTextEdit;
class QVBoxLayout;

namespace tessel {

// The weekly review beside the DTS, current after every edit: each crew member's days, bands, guarantees,
// meal penalties, turnaround, allowances and gross with their explanations, and the Golden Hour advisories
// of the DTS shown. After an edit of one DTS only that DTS is read again; anything else starts afresh.
class ReviewPane : public QWidget {
    Q_OBJECT
public:
    explicit ReviewPane(ShellSession& session, QWidget* parent = nullptr);
    ~ReviewPane() override;

    // The week and DTS shown (the DTS's advisories); nothing clears the pane.
    void showWeek(const std::optional<Uuid>& payrollWeekID, const std::optional<Uuid>& workdayID);
    // The next store change is an edit of this DTS's times or rows only.
    void expectTimeSheetEdit(const Uuid& workdayID);
    // Recalculates now.
    void refresh();
    // Shows one person's whole week (nothing: everyone's line), without recalculating.
    void showCrewMember(const std::optional<Uuid>& crewMemberID);

    QString reviewText() const;
    // The moment the advisories are judged at; the wall clock unless a test sets it.
    void setClock(std::function<Instant()> clock) { clock_ = std::move(clock); }

private:
    void storeChanged();
    void showAdvisories(ExpectedPayrollReview& review);
    void render();

    ShellSession& session_;
    std::unique_ptr<ExpectedPayrollReview> review_;
    std::vector<WeeklyCrewPayrollReview> reviews_;
    std::optional<Uuid> productionID_, weekID_, workdayID_, editedTimeSheet_;
    std::function<Instant()> clock_;
    QComboBox* crewChoice_ = nullptr;
    QLabel* gross_ = nullptr;
    QVBoxLayout* advisories_ = nullptr;
    QPlainTextEdit* text_ = nullptr;
};

}  // namespace tessel
