#pragma once

#include <QAbstractTableModel>

#include <optional>
#include <vector>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/shell/ShellSession.hpp"

namespace tessel {

// The crew rows of one DTS as a grid typed into like a spreadsheet: each edit is one saved, undoable
// action through the DTS services; a refused one changes nothing and is reported with its sentence.
class DTSGridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { crew, dtsName, call, lunchOut, lunchIn, wrap, ndb, workMode, mileage, boxRental, locality, columnCount_ };
    // Marks a cell whose value the program filled in (call and wrap from the shared times).
    static constexpr int autofilledRole = Qt::UserRole + 1;
    // "Revert to Autofill (6.5)" when the cell offers it.
    static constexpr int revertLabelRole = Qt::UserRole + 2;

    DTSGridModel(ShellSession& session, QObject* parent = nullptr);

    // The DTS shown; nothing empties the grid.
    void showWorkday(const std::optional<Uuid>& workdayID);
    const std::optional<Workday>& workday() const noexcept { return workday_; }
    // Reads the rows again after the store changed.
    void reload();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    const CrewDailyEntry& entry(int row) const { return rows_.at(static_cast<std::size_t>(row)).entry; }
    QString crewName(int row) const { return rows_.at(static_cast<std::size_t>(row)).name; }
    // Puts the program's value back in a call or wrap cell.
    bool revertToAutofill(const QModelIndex& index);
    // Removes the row from this DTS only.
    bool removeRow(int row);
    // Moves a row to another place in the DTS's crew order.
    bool moveRow(int from, int to);
    // Called before each edit of this DTS is saved (the review pane reads only this DTS again).
    void setBeforeEdit(std::function<void(const Uuid& workdayID)> beforeEdit) { beforeEdit_ = std::move(beforeEdit); }

signals:
    void refused(const tessel::Refusal& refusal);

private:
    struct Row {
        CrewDailyEntry entry;
        QString name{};
        bool dayplayer = false;
        EffectiveRowTimes times{};
        std::optional<std::string> dtsName{};
        CrewDailyWorkMode mode = CrewDailyWorkMode::timed;
        std::optional<Decimal> miles{};
        bool boxRental = false;
    };
    Row readRow(ModelContext& context, const CrewDailyEntry& entry) const;
    QString timeText(const EffectiveTime& time) const;
    bool act(const QString& name, const std::function<void(ModelContext&)>& action);
    bool setTime(const Row& row, int column, DTSTimeField field, const QString& text);

    ShellSession& session_;
    std::optional<Workday> workday_;
    DTSTimeDisplay display_ = DTSTimeDisplay::payrollDecimal;
    std::vector<Row> rows_;
    std::function<void(const Uuid&)> beforeEdit_;
};

// The time field a grid column holds, if it holds one.
std::optional<DTSTimeField> timeFieldOf(int column);

}  // namespace tessel
