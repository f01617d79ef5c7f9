#pragma once

#include <QTableView>
#include <QWidget>

#include <array>
#include <optional>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/shell/DTSGridModel.hpp"
#include "App/shell/ReviewPane.hpp"
#include "App/shell/ShellSession.hpp"

class QCheckBox;
class QComboBox;
class QDateEdit;
class QLabel;
class QLineEdit;
class QListWidget;
class QLayout;
class QPlainTextEdit;
class QTreeWidget;

namespace tessel {

// The crew grid: typing starts an edit, Tab and Shift+Tab move along a row, Enter commits and moves down,
// the arrows move between cells, as in a spreadsheet.
class DTSGridView : public QTableView {
    Q_OBJECT
public:
    using QTableView::QTableView;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;

private:
    void moveDown();
};

// One DTS at a time: the production's dates by payroll week, the shared times and facts of the chosen
// date, the crew grid, the date's Non-DTS activities and, beside them, the weekly review.
class DTSPage : public QWidget {
    Q_OBJECT
public:
    explicit DTSPage(ShellSession& session, QWidget* parent = nullptr);

    // Shows the DTS of the date, if there is one.
    void showDate(CalendarDate date);
    // Creates the DTS of the date and shows it; the refusal when it was refused.
    std::optional<Refusal> createDTS(CalendarDate date);

    DTSGridModel& grid() noexcept { return *grid_; }
    DTSGridView& gridView() noexcept { return *gridView_; }
    ReviewPane& review() noexcept { return *review_; }
    QLineEdit& sharedTimeEdit(DTSTimeField field) { return *sharedTimes_.at(static_cast<std::size_t>(field)); }
    // "Export DTS…": checks the DTS, asks where to save ("Production DTS.pdf"), writes it and opens it.
    void exportDTS();
    // Writes the DTS shown to the file; the refusal (with its title) when it was held or failed. Warnings
    // are accepted only when `acceptWarnings`.
    std::optional<Refusal> exportTo(const QString& file, bool acceptWarnings);

    // Notes typed for the DTS shown and not saved yet, and saving them (false when refused).
    bool hasUnsavedNotes() const;
    bool saveNotes();
    // The last refusal shown under the grid.
    QString statusText() const;

    // Asks the question and removes the row when the user agrees (`ask` false: no question).
    void removeRow(int row, bool ask = true);
    // A Non-DTS activity of the chosen kind for the chosen person on the date shown; the refusal when refused.
    std::optional<Refusal> addActivity();
    void removeActivity(int row, bool ask = true);

signals:
    void refused(const tessel::Refusal& refusal);

private:
    QWidget* buildCalendar();
    QWidget* buildSharedFacts();
    QWidget* buildGrid();
    QLayout* buildActivityEditor();
    void reloadCalendar();
    void reloadSharedFacts();
    void reloadActivities();
    void showRefusal(const Refusal& refusal);
    void act(const QString& name, const std::function<void(ModelContext&, const Workday&)>& action);
    void commitSharedTime(DTSTimeField field);
    void showGridMenu(const QPoint& at);
    void addDayplayer();

    ShellSession& session_;
    std::optional<CalendarDate> date_;
    DTSGridModel* grid_ = nullptr;
    DTSGridView* gridView_ = nullptr;
    ReviewPane* review_ = nullptr;
    QTreeWidget* calendar_ = nullptr;
    QDateEdit* newDate_ = nullptr;
    QLabel* heading_ = nullptr;
    QLabel* status_ = nullptr;
    QLabel* advisory_ = nullptr;
    std::array<QLineEdit*, 4> sharedTimes_{};
    QCheckBox* grace_ = nullptr;
    QLineEdit* travel_ = nullptr;
    QLineEdit* mileage_ = nullptr;
    QComboBox* location_ = nullptr;
    QLineEdit* workState_ = nullptr;
    QPlainTextEdit* notes_ = nullptr;
    QComboBox* dayplayers_ = nullptr;
    QListWidget* activities_ = nullptr;
    QComboBox* activityKind_ = nullptr;
    QComboBox* activityPerson_ = nullptr;
    QLineEdit* activityTravel_ = nullptr;
    QWidget* facts_ = nullptr;
};

}  // namespace tessel
