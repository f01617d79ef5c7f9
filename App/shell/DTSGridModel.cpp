#include "DTSGridModel.hpp"

#include <QBrush>
#include <QColor>
#include <QFont>

#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/shell/ShellText.hpp"

namespace tessel {
namespace {

constexpr std::array<const char*, DTSGridModel::columnCount_> headers{
    "Crew", "DTS Name", "Call", "Lunch Out", "Lunch In", "Wrap", "NDB", "Work Mode", "Mileage", "Box Rental", "Locality"};

QString workModeText(CrewDailyWorkMode mode) {
    switch (mode) {
        case CrewDailyWorkMode::timed: return QStringLiteral("Timed");
        case CrewDailyWorkMode::worked: return QStringLiteral("Worked");
        case CrewDailyWorkMode::prep: return QStringLiteral("Prep");
    }
    return {};
}

// The words a user may type for a work mode or a locality: the shown word or its raw value.
std::optional<CrewDailyWorkMode> workModeFromText(const QString& text) {
    return fromRawValue<CrewDailyWorkMode>(utf8(text.trimmed().toLower()));
}

DTSTimeEntryRole roleOf(DTSTimeField field) {
    return field == DTSTimeField::call ? DTSTimeEntryRole::call : DTSTimeEntryRole::postCallEvent;
}

// A check state from the view, or a plain true or false from code.
bool checked(const QVariant& value) {
    if (value.typeId() == QMetaType::Bool) return value.toBool();
    return value.toInt() == Qt::Checked;
}

}  // namespace

std::optional<DTSTimeField> timeFieldOf(int column) {
    switch (column) {
        case DTSGridModel::call: return DTSTimeField::call;
        case DTSGridModel::lunchOut: return DTSTimeField::lunchOut;
        case DTSGridModel::lunchIn: return DTSTimeField::lunchIn;
        case DTSGridModel::wrap: return DTSTimeField::wrap;
        default: return std::nullopt;
    }
}

DTSGridModel::DTSGridModel(ShellSession& session, QObject* parent) : QAbstractTableModel(parent), session_(session) {
    connect(&session_, &ShellSession::storeChanged, this, &DTSGridModel::reload);
}

void DTSGridModel::showWorkday(const std::optional<Uuid>& workdayID) {
    beginResetModel();
    workday_.reset();
    rows_.clear();
    if (workdayID) workday_ = payroll_week_repository::fetchWorkday(session_.context(), *workdayID);
    endResetModel();
    reload();
}

DTSGridModel::Row DTSGridModel::readRow(ModelContext& context, const CrewDailyEntry& entry) const {
    Row row{entry};
    if (entry.crewMemberID) {
        if (const auto member = crew_repository::fetchCrewMember(context, *entry.crewMemberID)) row.name = qtext(member->displayName);
    }
    row.dayplayer = CrewOnDTS::isDayplayerRow(context, entry);
    row.times = DailyTimeSheets::effectiveTimes(*workday_, entry);
    row.dtsName = CrewOnDTS::dtsNameForToday(context, entry.id);
    row.mode = DailyTimeSheets::workMode(context, entry.id);
    row.miles = DailyTimeSheets::rowMileage(context, entry.id);
    row.boxRental = DailyTimeSheets::boxRental(context, entry.id);
    return row;
}

void DTSGridModel::reload() {
    if (!workday_) return;
    ModelContext& context = session_.context();
    workday_ = payroll_week_repository::fetchWorkday(context, workday_->id);
    if (!workday_) {
        showWorkday(std::nullopt);
        return;
    }
    const Uuid productionID = DailyTimeSheets::productionOf(context, *workday_);
    if (const auto production = production_repository::fetch(context, productionID)) display_ = production->dtsTimeDisplay;
    std::vector<Row> rows;
    for (const auto& entry : payroll_week_repository::entries(context, workday_->id)) rows.push_back(readRow(context, entry));
    if (rows.size() != rows_.size()) {
        beginResetModel();
        rows_ = std::move(rows);
        endResetModel();
        return;
    }
    rows_ = std::move(rows);  // same shape: repaint in place, so the cursor and selection stay where they were
    if (!rows_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount_ - 1));
}

int DTSGridModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : static_cast<int>(rows_.size()); }
int DTSGridModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columnCount_; }

QString DTSGridModel::timeText(const EffectiveTime& time) const {
    return qtext(payroll_decimal_time::formatForDisplay(display_, time.value, workday_->calendarDate));
}

QVariant DTSGridModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || !workday_) return {};
    const Row& row = rows_.at(static_cast<std::size_t>(index.row()));
    const auto field = timeFieldOf(index.column());
    const bool autofilled = field && row.times[*field].source == EffectiveTimeSource::autofilled;
    switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            switch (index.column()) {
                case crew: return row.name;
                case dtsName: return row.dtsName ? qtext(*row.dtsName) : QString();
                case workMode: return workModeText(row.mode);
                case mileage: return row.miles ? QString::fromStdString(row.miles->toString()) : QString();
                case locality: return row.entry.rulesLocalityOverride ? qtext(toRawValue(*row.entry.rulesLocalityOverride)) : QString();
                default: break;
            }
            if (field) {
                // Editing always starts from payroll decimal, the notation every time can be typed in.
                if (role == Qt::EditRole) return qtext(payroll_decimal_time::formatTimeOfDay(row.times[*field].value, workday_->calendarDate));
                return timeText(row.times[*field]);
            }
            return {};
        case Qt::CheckStateRole:
            if (index.column() == ndb) return row.entry.nonDeductibleBreakfast ? Qt::Checked : Qt::Unchecked;
            if (index.column() == boxRental) return row.boxRental ? Qt::Checked : Qt::Unchecked;
            return {};
        case Qt::FontRole:
            if (autofilled) {
                QFont font;
                font.setItalic(true);
                return font;
            }
            return {};
        case Qt::ForegroundRole:
            if (autofilled) return QBrush(QColor(0x1f, 0x5f, 0xa8));
            if (field && row.times[*field].source == EffectiveTimeSource::inherited) return QBrush(QColor(0x70, 0x70, 0x70));
            if (index.column() == mileage && !row.miles) return QBrush(QColor(0x70, 0x70, 0x70));
            return {};
        case Qt::ToolTipRole:
            if (index.column() == crew) return row.dayplayer ? qtext(crew_on_dts_messages::dayplayerLabel) : QString();
            if (autofilled) return tr("Autofilled; type to replace it.");
            if (field && row.times[*field].source == EffectiveTimeSource::inherited) return tr("The DTS\u2019s shared time");
            if (index.column() == mileage && !row.miles) return tr("Use Department Mileage");
            if (index.column() == workMode) return tr("Timed, Worked or Prep");
            if (index.column() == locality) return tr("local or distant for this day; empty: the engagement\u2019s");
            return {};
        case autofilledRole: return autofilled;
        case revertLabelRole: {
            if (!field) return {};
            const auto label = DailyTimeSheets::revertToAutofillLabel(session_.context(), row.entry.id, *field);
            return label ? qtext(*label) : QVariant();
        }
        default: return {};
    }
}

QVariant DTSGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < columnCount_) return tr(headers[static_cast<std::size_t>(section)]);
    if (orientation == Qt::Vertical && role == Qt::DisplayRole) return section + 1;
    if (orientation == Qt::Vertical && role == Qt::ToolTipRole) return tr("Drag to reorder crew row");
    return {};
}

Qt::ItemFlags DTSGridModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Qt::ItemFlags base = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == crew) return base;
    if (index.column() == ndb || index.column() == boxRental) return base | Qt::ItemIsUserCheckable;
    return base | Qt::ItemIsEditable;
}

bool DTSGridModel::act(const QString& name, const std::function<void(ModelContext&)>& action) {
    if (beforeEdit_ && workday_) beforeEdit_(workday_->id);
    if (const auto refusal = session_.perform(name, action)) {
        emit refused(*refusal);
        return false;
    }
    return true;
}

bool DTSGridModel::setTime(const Row& row, int column, DTSTimeField field, const QString& text) {
    // The cell's text has already been compared with its value, so whatever arrives here was typed.
    const PayrollDecimalTimeFieldTransition transition{"", workday_->calendarDate, roleOf(field), std::nullopt, false};
    const auto outcome = transition.end(utf8(text));
    using Kind = PayrollDecimalTimeFieldTransition::Outcome::Kind;
    if (outcome.kind == Kind::invalid) {
        emit refused({{}, qtext(outcome.message)});
        return false;
    }
    const Uuid entryID = row.entry.id;
    const std::optional<Instant> value = outcome.kind == Kind::cleared ? std::nullopt : outcome.value;
    return act(tr("Set %1").arg(tr(headers[static_cast<std::size_t>(column)])), [&](ModelContext& context) { DailyTimeSheets::setRowTime(context, entryID, field, value); });
}

bool DTSGridModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || !workday_) return false;
    const Row row = rows_.at(static_cast<std::size_t>(index.row()));
    const Uuid entryID = row.entry.id;
    if (role == Qt::CheckStateRole) {
        const bool on = checked(value);
        if (index.column() == ndb)
            return act(tr("Set NDB"), [&](ModelContext& c) { DailyTimeSheets::setNonDeductibleBreakfast(c, entryID, on); });
        if (index.column() == boxRental)
            return act(tr("Set Box Rental"), [&](ModelContext& c) { DailyTimeSheets::setBoxRental(c, entryID, on); });
        return false;
    }
    if (role != Qt::EditRole) return false;
    const QString text = value.toString();
    if (data(index, Qt::EditRole).toString() == text) return true;  // nothing typed over the value
    if (const auto field = timeFieldOf(index.column())) return setTime(row, index.column(), *field, text);
    switch (index.column()) {
        case dtsName:
            return act(tr("Set DTS Name"), [&](ModelContext& c) { CrewOnDTS::setDTSNameForToday(c, entryID, utf8(text.trimmed())); });
        case workMode: {
            const auto mode = workModeFromText(text);
            if (!mode) {
                emit refused({{}, tr("Enter Timed, Worked or Prep.")});
                return false;
            }
            return act(tr("Set Work Mode"), [&](ModelContext& c) { DailyTimeSheets::setWorkMode(c, entryID, *mode); });
        }
        case mileage: {
            std::optional<Decimal> miles;
            if (!entry_text::isBlank(utf8(text))) {
                miles = entry_text::decimal(utf8(text));
                if (!miles || miles->isNegative()) {
                    emit refused({{}, qtext(dts_messages::mileageInvalid)});
                    return false;
                }
            }
            return act(tr("Set Mileage"), [&](ModelContext& c) { DailyTimeSheets::setRowMileage(c, entryID, miles); });
        }
        case locality: {
            std::optional<RulesLocality> chosen;
            if (!text.trimmed().isEmpty()) {
                chosen = fromRawValue<RulesLocality>(utf8(text.trimmed().toLower()));
                if (!chosen) {
                    emit refused({{}, tr("Enter local or distant, or leave it empty for the engagement\u2019s locality.")});
                    return false;
                }
            }
            return act(tr("Set Locality"), [&](ModelContext& c) { DailyTimeSheets::setRowLocality(c, entryID, chosen); });
        }
        default: return false;
    }
}

bool DTSGridModel::revertToAutofill(const QModelIndex& index) {
    const auto field = timeFieldOf(index.column());
    if (!field || !index.isValid()) return false;
    const Uuid entryID = entry(index.row()).id;
    return act(qtext(dts_messages::revertToAutofill), [&](ModelContext& c) { DailyTimeSheets::revertRowToAutofill(c, entryID, *field); });
}

bool DTSGridModel::removeRow(int row) {
    const Uuid entryID = entry(row).id;
    return act(tr("Remove Crew Row"), [&](ModelContext& c) { CrewOnDTS::removeRow(c, entryID); });
}

bool DTSGridModel::moveRow(int from, int to) {
    if (from == to || from < 0 || to < 0 || from >= rowCount() || to >= rowCount()) return false;
    std::vector<Uuid> order;
    for (const Row& row : rows_) order.push_back(row.entry.id);
    const Uuid moved = order[static_cast<std::size_t>(from)];
    order.erase(order.begin() + from);
    order.insert(order.begin() + to, moved);
    const Uuid workdayID = workday_->id;
    return act(tr("Reorder Crew"), [&](ModelContext& c) { CrewOnDTS::reorderRows(c, workdayID, order); });
}

}  // namespace tessel
