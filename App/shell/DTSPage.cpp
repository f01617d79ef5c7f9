#include "DTSPage.hpp"

#include <QCheckBox>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QUrl>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStandardItemModel>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "App/dts/CrewOnDTS.hpp"
#include "App/dtsexport/DTSExportJob.hpp"
#include "App/dtsexport/GenericDTSRenderer.hpp"
#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

constexpr std::array<const char*, 4> sharedTimeLabels{"General Crew Call", "Lunch Out", "Official Lunch In", "Wrap"};
using shell_widgets::calendarDate;
using shell_widgets::dateTitle;
using shell_widgets::qdate;

}  // namespace

// ---- grid view ----

void DTSGridView::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && state() != EditingState) {
        moveDown();
        return;
    }
    if (event->key() == Qt::Key_Delete && state() != EditingState && currentIndex().isValid() &&
        (model()->flags(currentIndex()) & Qt::ItemIsEditable)) {
        model()->setData(currentIndex(), QString(), Qt::EditRole);  // clears the cell, as a spreadsheet does
        return;
    }
    QTableView::keyPressEvent(event);
}

void DTSGridView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
    QTableView::closeEditor(editor, hint);
    if (hint == QAbstractItemDelegate::SubmitModelCache) moveDown();  // Enter: on to the next person's same time
}

void DTSGridView::moveDown() {
    const QModelIndex current = currentIndex();
    if (!current.isValid()) return;
    const QModelIndex below = model()->index(std::min(current.row() + 1, model()->rowCount() - 1), current.column());
    setCurrentIndex(below);
}

// ---- page ----

DTSPage::DTSPage(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    grid_ = new DTSGridModel(session_, this);
    review_ = new ReviewPane(session_);
    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(buildCalendar());
    auto* centre = new QWidget;
    auto* centreLayout = new QVBoxLayout(centre);
    centreLayout->setContentsMargins(4, 0, 4, 0);
    heading_ = new QLabel;
    heading_->setObjectName("dtsHeading");
    heading_->setStyleSheet("font-size: 15pt; font-weight: bold;");
    centreLayout->addWidget(heading_);
    facts_ = buildSharedFacts();
    centreLayout->addWidget(facts_);
    centreLayout->addWidget(buildGrid(), 1);
    splitter->addWidget(centre);
    splitter->addWidget(review_);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 3);
    splitter->setStretchFactor(2, 2);
    review_->setMinimumWidth(420);
    splitter->setSizes({200, 720, 660});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(splitter);

    connect(grid_, &DTSGridModel::refused, this, &DTSPage::showRefusal);
    grid_->setBeforeEdit([this](const Uuid& workdayID) { review_->expectTimeSheetEdit(workdayID); });
    connect(&session_, &ShellSession::storeChanged, this, [this] {
        reloadCalendar();
        reloadSharedFacts();
        reloadActivities();
    });
    connect(&session_, &ShellSession::productionChanged, this, [this] {
        date_.reset();
        grid_->showWorkday(std::nullopt);
        reloadCalendar();
        reloadSharedFacts();
        reloadActivities();
    });
    reloadCalendar();
    reloadSharedFacts();
}

QWidget* DTSPage::buildCalendar() {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    calendar_ = new QTreeWidget;
    calendar_->setObjectName("dtsCalendar");
    calendar_->setHeaderLabel(tr("Payroll Weeks"));
    connect(calendar_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
        if (!item || !item->data(0, Qt::UserRole).isValid()) return;
        showDate(calendarDate(item->data(0, Qt::UserRole).toDate()));
    });
    layout->addWidget(calendar_, 1);
    newDate_ = shell_widgets::dateEdit();
    auto* create = new QPushButton(tr("New DTS"));
    create->setToolTip(tr("Create the Daily Time Sheet of the chosen date"));
    connect(create, &QPushButton::clicked, this, [this] {
        if (const auto refusal = createDTS(calendarDate(newDate_->date()))) showRefusal(*refusal);
    });
    auto* row = new QHBoxLayout;
    row->addWidget(newDate_, 1);
    row->addWidget(create);
    layout->addLayout(row);
    return box;
}

QWidget* DTSPage::buildSharedFacts() {
    auto* box = new QGroupBox(tr("Shared times and facts"));
    auto* form = new QGridLayout(box);
    for (std::size_t i = 0; i < sharedTimes_.size(); ++i) {
        auto* edit = new QLineEdit;
        edit->setObjectName(QString("shared-%1").arg(qtext(toRawValue(static_cast<DTSTimeField>(i)))));
        edit->setFixedWidth(72);
        edit->setPlaceholderText("0.0");
        sharedTimes_[i] = edit;
        connect(edit, &QLineEdit::editingFinished, this, [this, i] { commitSharedTime(static_cast<DTSTimeField>(i)); });
        form->addWidget(new QLabel(tr(sharedTimeLabels[i])), 0, static_cast<int>(i));
        form->addWidget(edit, 1, static_cast<int>(i));
    }
    auto* revert = new QPushButton;
    revert->setObjectName("revertLunchIn");
    revert->setFlat(true);
    revert->setVisible(false);
    connect(revert, &QPushButton::clicked, this, [this] {
        act(qtext(dts_messages::revertToAutofill),
            [](ModelContext& c, const Workday& w) { DailyTimeSheets::revertSharedToAutofill(c, w.id, DTSTimeField::lunchIn); });
    });
    form->addWidget(revert, 2, 2);
    grace_ = new QCheckBox(tr("Grace called"));
    connect(grace_, &QCheckBox::clicked, this, [this](bool on) {
        act(tr("Set Grace"), [on](ModelContext& c, const Workday& w) { DailyTimeSheets::setGraceCalled(c, w.id, on); });
    });
    form->addWidget(grace_, 1, 4);
    travel_ = new QLineEdit;
    travel_->setFixedWidth(72);
    travel_->setPlaceholderText(tr("hours"));
    connect(travel_, &QLineEdit::editingFinished, this, [this] {
        std::optional<std::int64_t> seconds;
        try {
            if (!entry_text::isBlank(utf8(travel_->text()))) seconds = PayrollDecimalDurationParser::parse(utf8(travel_->text()));
        } catch (const std::exception&) {
            showRefusal({{}, qtext(time_entry_messages::travelDuration)});
            reloadSharedFacts();
            return;
        }
        act(tr("Set Travel"), [seconds](ModelContext& c, const Workday& w) { DailyTimeSheets::setSharedTravel(c, w.id, seconds); });
    });
    form->addWidget(new QLabel(tr("Travel")), 0, 5);
    form->addWidget(travel_, 1, 5);
    mileage_ = new QLineEdit;
    mileage_->setFixedWidth(72);
    mileage_->setPlaceholderText(tr("miles"));
    connect(mileage_, &QLineEdit::editingFinished, this, [this] {
        std::optional<Decimal> miles;
        if (!entry_text::isBlank(utf8(mileage_->text()))) {
            miles = entry_text::decimal(utf8(mileage_->text()));
            if (!miles || miles->isNegative()) {
                showRefusal({{}, qtext(dts_messages::mileageInvalid)});
                reloadSharedFacts();
                return;
            }
        }
        act(tr("Set Department Mileage"), [miles](ModelContext& c, const Workday& w) { DailyTimeSheets::setDepartmentMileage(c, w.id, miles); });
    });
    form->addWidget(new QLabel(tr("Department Mileage")), 0, 6);
    form->addWidget(mileage_, 1, 6);
    location_ = new QComboBox;
    location_->addItem(tr("Studio"), "studio");
    location_->addItem(tr("Location"), "location");
    location_->setToolTip(qtext(dts_messages::workLocationRule));
    connect(location_, &QComboBox::activated, this, [this] {
        const auto chosen = fromRawValue<MealWorkLocation>(utf8(location_->currentData().toString()));
        act(tr("Set Work Location"), [chosen](ModelContext& c, const Workday& w) {
            DailyTimeSheets::setWorkLocation(c, w.id, *chosen, shell_widgets::now());
        });
    });
    form->addWidget(new QLabel(tr("Work Location")), 0, 7);
    form->addWidget(location_, 1, 7);
    workState_ = new QLineEdit;
    workState_->setFixedWidth(72);
    workState_->setPlaceholderText(tr("default"));
    connect(workState_, &QLineEdit::editingFinished, this, [this] {
        const std::string state = utf8(workState_->text().trimmed());
        act(tr("Set Work State"), [state](ModelContext& c, const Workday& w) { DailyTimeSheets::setWorkState(c, w.id, state); });
    });
    form->addWidget(new QLabel(tr("Work State")), 0, 8);
    form->addWidget(workState_, 1, 8);
    notes_ = new QPlainTextEdit;
    notes_->setObjectName("dtsNotes");
    notes_->setPlaceholderText(tr("Notes for this DTS"));
    notes_->setMaximumHeight(46);
    connect(notes_, &QPlainTextEdit::textChanged, this, [this] { notes_->setProperty("edited", true); });
    form->addWidget(notes_, 2, 3, 1, 6);
    auto* saveNotes = new QPushButton(tr("Save Notes"));
    connect(saveNotes, &QPushButton::clicked, this, [this] { this->saveNotes(); });
    form->addWidget(saveNotes, 2, 9);
    advisory_ = new QLabel;
    advisory_->setStyleSheet("color: #8a5a00;");
    form->addWidget(advisory_, 3, 0, 1, 10);
    form->setColumnStretch(10, 1);
    return box;
}

QWidget* DTSPage::buildGrid() {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    gridView_ = new DTSGridView;
    gridView_->setObjectName("dtsGrid");
    gridView_->setModel(grid_);
    gridView_->setEditTriggers(QAbstractItemView::AnyKeyPressed | QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    gridView_->setSelectionMode(QAbstractItemView::SingleSelection);
    gridView_->setTabKeyNavigation(true);
    gridView_->setAlternatingRowColors(true);
    gridView_->setContextMenuPolicy(Qt::CustomContextMenu);
    gridView_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    gridView_->verticalHeader()->setSectionsMovable(true);
    gridView_->verticalHeader()->setToolTip(tr("Drag to reorder crew row"));
    connect(gridView_->verticalHeader(), &QHeaderView::sectionMoved, this, [this](int, int from, int to) {
        // The header only carries the drag; the order itself is the DTS's, saved as one action.
        QHeaderView* header = gridView_->verticalHeader();
        const QSignalBlocker quiet(header);
        header->moveSection(to, from);
        grid_->moveRow(from, to);
    });
    connect(gridView_, &QWidget::customContextMenuRequested, this, &DTSPage::showGridMenu);
    // The review beside the grid follows the person being typed for.
    connect(gridView_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& current) {
        if (current.isValid() && current.row() < grid_->rowCount()) review_->showCrewMember(grid_->entry(current.row()).crewMemberID);
    });
    layout->addWidget(gridView_, 1);

    auto* actions = new QHBoxLayout;
    dayplayers_ = new QComboBox;
    dayplayers_->setMinimumContentsLength(16);
    auto* add = new QPushButton(tr("Add Dayplayer"));
    connect(add, &QPushButton::clicked, this, &DTSPage::addDayplayer);
    auto* remove = new QPushButton(tr("Remove Row\u2026"));
    connect(remove, &QPushButton::clicked, this, [this] {
        if (gridView_->currentIndex().isValid()) removeRow(gridView_->currentIndex().row());
    });
    auto* exportButton = new QPushButton(tr("Export DTS\u2026"));
    exportButton->setObjectName("exportDTS");
    connect(exportButton, &QPushButton::clicked, this, &DTSPage::exportDTS);
    actions->addWidget(dayplayers_);
    actions->addWidget(add);
    actions->addWidget(remove);
    actions->addStretch(1);
    actions->addWidget(exportButton);
    layout->addLayout(actions);
    status_ = new QLabel;
    status_->setObjectName("dtsStatus");
    status_->setWordWrap(true);
    status_->setStyleSheet("color: #a00000;");
    layout->addWidget(status_);
    activities_ = new QListWidget;
    activities_->setObjectName("activities");
    activities_->setMaximumHeight(80);
    layout->addWidget(new QLabel(tr("Non-DTS Activities on this date")));
    layout->addWidget(activities_);
    layout->addLayout(buildActivityEditor());
    return box;
}

QLayout* DTSPage::buildActivityEditor() {
    auto* row = new QHBoxLayout;
    activityKind_ = new QComboBox;
    activityKind_->setObjectName("activityKind");
    for (const auto kind : {PayrollDayActivityKind::travel, PayrollDayActivityKind::idleAvailable, PayrollDayActivityKind::personalUnavailable,
                            PayrollDayActivityKind::holiday}) {
        activityKind_->addItem(qtext(label(kind)), static_cast<int>(kind));
    }
    activityPerson_ = new QComboBox;
    activityPerson_->setObjectName("activityPerson");
    activityPerson_->setMinimumContentsLength(16);
    activityTravel_ = new QLineEdit;
    activityTravel_->setObjectName("activityTravel");
    activityTravel_->setPlaceholderText(tr("travel hours"));
    activityTravel_->setFixedWidth(90);
    auto* add = new QPushButton(tr("Add Activity"));
    add->setObjectName("addActivity");
    connect(add, &QPushButton::clicked, this, [this] { addActivity(); });
    auto* remove = new QPushButton(tr("Remove Activity\u2026"));
    connect(remove, &QPushButton::clicked, this, [this] {
        if (auto* item = activities_->currentItem(); item && item->data(Qt::UserRole).isValid()) removeActivity(activities_->row(item));
    });
    row->addWidget(activityKind_);
    row->addWidget(activityPerson_);
    row->addWidget(activityTravel_);
    row->addWidget(add);
    row->addWidget(remove);
    row->addStretch(1);
    return row;
}

std::optional<Refusal> DTSPage::addActivity() {
    const auto production = session_.production();
    if (!production || !date_) return std::nullopt;
    const auto engagementID = Uuid::parse(utf8(activityPerson_->currentData().toString()));
    NonDTSActivityDraft draft;
    draft.date = *date_;
    draft.kind = static_cast<PayrollDayActivityKind>(activityKind_->currentData().toInt());
    draft.sharedTravelText = utf8(activityTravel_->text());
    if (engagementID) draft.selectedEngagementIDs.push_back(*engagementID);
    const Uuid productionID = production->id;
    auto refusal = session_.perform(tr("Add Activity"), [&](ModelContext& c) { NonDTSActivities::save(c, productionID, draft); });
    if (refusal) showRefusal(*refusal);
    else activityTravel_->clear();
    return refusal;
}

void DTSPage::removeActivity(int row, bool ask) {
    const auto activityID = Uuid::parse(utf8(activities_->item(row)->data(Qt::UserRole).toString()));
    if (!activityID) return;
    if (ask && QMessageBox::question(this, qtext(activity_messages::removeOneTitle), qtext(activity_messages::removeOneExplanation)) !=
                   QMessageBox::Yes) {
        return;
    }
    if (const auto refusal = session_.perform(tr("Remove Activity"), [&](ModelContext& c) { NonDTSActivities::remove(c, *activityID); })) {
        showRefusal(*refusal);
    }
}

void DTSPage::reloadCalendar() {
    const QSignalBlocker quiet(calendar_);
    calendar_->clear();
    const auto production = session_.production();
    if (!production) return;
    ModelContext& context = session_.context();
    QTreeWidgetItem* current = nullptr;
    for (const auto& week : payroll_week_repository::weeks(context, production->id)) {
        const auto days = payroll_week_repository::workdays(context, week.id);
        if (days.empty()) continue;
        auto* weekItem = new QTreeWidgetItem(calendar_, {tr("Week of %1").arg(qtext(calendar_text::formatDate(std::chrono::floor<std::chrono::days>(week.startDate))))});
        for (const auto& day : days) {
            auto* item = new QTreeWidgetItem(weekItem, {dateTitle(day.calendarDate)});
            item->setData(0, Qt::UserRole, qdate(day.calendarDate));
            if (date_ == day.calendarDate) current = item;
        }
        weekItem->setExpanded(true);
    }
    if (current) calendar_->setCurrentItem(current);
}

void DTSPage::showDate(CalendarDate date) {
    if (hasUnsavedNotes()) saveNotes();  // notes typed for one date are not lost by moving to another
    notes_->setProperty("edited", false);
    date_ = date;
    const auto production = session_.production();
    const auto workday = production ? DailyTimeSheets::find(session_.context(), production->id, date) : std::nullopt;
    grid_->showWorkday(workday ? std::optional(workday->id) : std::nullopt);
    review_->showWeek(workday ? std::optional(workday->payrollWeekID) : std::nullopt, workday ? std::optional(workday->id) : std::nullopt);
    status_->clear();
    reloadCalendar();
    reloadSharedFacts();
    reloadActivities();
}

std::optional<Refusal> DTSPage::createDTS(CalendarDate date) {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose or create a production first.")};
    const Uuid productionID = production->id;
    if (auto refusal = session_.perform(tr("New DTS"), [&](ModelContext& c) { DailyTimeSheets::create(c, productionID, date); })) return refusal;
    showDate(date);
    return std::nullopt;
}

void DTSPage::reloadSharedFacts() {
    const auto& workday = grid_->workday();
    facts_->setEnabled(workday.has_value());
    const auto production = session_.production();
    if (!workday || !production) {
        heading_->setText(production ? tr("Choose a date, or create its DTS") : QString());
        for (auto* edit : sharedTimes_) edit->clear();
        for (auto* edit : {travel_, mileage_, workState_}) edit->clear();
        const QSignalBlocker quiet(notes_);
        notes_->clear();  // a date without a DTS shows none of another date's facts
        advisory_->clear();
        dayplayers_->clear();
        return;
    }
    ModelContext& context = session_.context();
    const CalendarDate date = workday->calendarDate;
    heading_->setText(tr("DTS \u2014 %1").arg(dateTitle(date)));
    const std::array<std::pair<std::optional<Instant>, bool>, 4> shared{{{workday->generalCrewCall, workday->generalCrewCallWasAutofilled},
                                                                          {workday->officialLunchOut, workday->officialLunchOutWasAutofilled},
                                                                          {workday->officialLunchIn, workday->officialLunchInWasAutofilled},
                                                                          {workday->wrap, false}}};
    for (std::size_t i = 0; i < shared.size(); ++i) {
        if (sharedTimes_[i]->hasFocus() && sharedTimes_[i]->isModified()) continue;  // keep what is being typed
        sharedTimes_[i]->setText(qtext(payroll_decimal_time::formatForDisplay(production->dtsTimeDisplay, shared[i].first, date)));
        sharedTimes_[i]->setStyleSheet(shared[i].second ? "font-style: italic; color: #1f5fa8;" : "");
        sharedTimes_[i]->setToolTip(shared[i].second ? tr("Autofilled; type to replace it.") : QString());
    }
    if (auto* revert = facts_->findChild<QPushButton*>("revertLunchIn")) {
        const auto label = DailyTimeSheets::sharedRevertToAutofillLabel(context, *workday, DTSTimeField::lunchIn);
        revert->setVisible(label.has_value());
        if (label) revert->setText(qtext(*label));
    }
    grace_->setChecked(workday->firstMealGraceWasCalled);
    travel_->setText(workday->sharedTravelDurationSeconds ? qtext(payroll_decimal_time::formatDuration(*workday->sharedTravelDurationSeconds)) : QString());
    const auto miles = DailyTimeSheets::departmentMileage(context, workday->id);
    mileage_->setText(miles ? qtext(miles->toString()) : QString());
    const auto location = DailyTimeSheets::workLocation(context, workday->id).value_or(MealWorkLocation::studio);
    location_->setCurrentIndex(location_->findData(qtext(toRawValue(location))));
    workState_->setText(qtext(DailyTimeSheets::workState(context, workday->id)));
    if (!notes_->property("edited").toBool()) {
        const QSignalBlocker quiet(notes_);
        notes_->setPlainText(qtext(DailyTimeSheets::notes(context, workday->id)));
    }
    QStringList advisories;
    if (const auto meal = DailyTimeSheets::unusualMealAdvisory(workday->officialLunchOut, workday->officialLunchIn)) {
        advisories << qtext(dts_messages::unusualMealTitle) + ": " + qtext(*meal);
    }
    for (const auto& finding : CrewOnDTS::integrityFindings(context, workday->id)) {
        advisories << (finding.crewMember.empty() ? QString() : qtext(finding.crewMember) + ": ") + qtext(finding.text);
    }
    if (grid_->rowCount() == 0) advisories << qtext(dts_messages::noCrew);
    advisory_->setText(advisories.join("\n"));
    dayplayers_->clear();
    for (const auto& member : CrewOnDTS::availableDayplayers(context, workday->id)) {
        dayplayers_->addItem(qtext(member.displayName), QString::fromStdString(member.id.text()));
    }
    if (dayplayers_->count() == 0) dayplayers_->addItem(qtext(crew_on_dts_messages::noAvailableDayplayers));
}

void DTSPage::reloadActivities() {
    activities_->clear();
    const auto production = session_.production();
    if (!production || !date_) return;
    ModelContext& context = session_.context();
    for (const auto& activity : NonDTSActivities::onDate(context, production->id, *date_)) {
        QString who;
        if (activity.crewMemberID) {
            if (const auto member = crew_repository::fetchCrewMember(context, *activity.crewMemberID)) who = qtext(member->displayName);
        }
        QString line = qtext(activityKindLabel(activity.kindRawValue)) + (who.isEmpty() ? QString() : " \u2014 " + who);
        if (activity.travelDurationSeconds) line += " (" + qtext(payroll_decimal_time::formatDuration(*activity.travelDurationSeconds)) + " h)";
        auto* item = new QListWidgetItem(line);
        item->setData(Qt::UserRole, QString::fromStdString(activity.id.text()));
        activities_->addItem(item);
    }
    if (activities_->count() == 0) activities_->addItem(tr("None"));
    activityPerson_->clear();
    const auto options = NonDTSActivities::options(context, production->id, *date_);
    for (const auto& option : options) {
        activityPerson_->addItem(qtext(option.crewMember.displayName) + (option.unavailableReason ? " \u2014 " + qtext(*option.unavailableReason) : QString()),
                                 QString::fromStdString(option.engagement.id.text()));
        if (option.unavailableReason) {
            // Offered but not choosable, with the reason in its words ("Already on this date's DTS").
            auto* model = qobject_cast<QStandardItemModel*>(activityPerson_->model());
            if (model) model->item(activityPerson_->count() - 1)->setEnabled(false);
        }
    }
    for (std::size_t i = 0; i < options.size(); ++i) {
        if (options[i].unavailableReason) continue;
        activityPerson_->setCurrentIndex(static_cast<int>(i));  // the first person who can be chosen
        break;
    }
}

void DTSPage::act(const QString& name, const std::function<void(ModelContext&, const Workday&)>& action) {
    const auto workday = grid_->workday();
    if (!workday) return;
    review_->expectTimeSheetEdit(workday->id);
    if (const auto refusal = session_.perform(name, [&](ModelContext& c) { action(c, *workday); })) {
        showRefusal(*refusal);
        reloadSharedFacts();
        return;
    }
    status_->clear();
}

void DTSPage::commitSharedTime(DTSTimeField field) {
    QLineEdit* edit = sharedTimes_.at(static_cast<std::size_t>(field));
    const auto workday = grid_->workday();
    if (!workday || !edit->isModified()) return;
    edit->setModified(false);
    const PayrollDecimalTimeFieldTransition transition{"", workday->calendarDate,
                                                        field == DTSTimeField::call ? DTSTimeEntryRole::call : DTSTimeEntryRole::postCallEvent,
                                                        std::nullopt, false};
    const auto outcome = transition.end(utf8(edit->text()));
    using Kind = PayrollDecimalTimeFieldTransition::Outcome::Kind;
    if (outcome.kind == Kind::invalid) {
        showRefusal({{}, qtext(outcome.message)});
        reloadSharedFacts();
        return;
    }
    const std::optional<Instant> value = outcome.kind == Kind::cleared ? std::nullopt : outcome.value;
    act(tr("Set %1").arg(tr(sharedTimeLabels[static_cast<std::size_t>(field)])),
        [field, value](ModelContext& c, const Workday& w) { DailyTimeSheets::setSharedTime(c, w.id, field, value); });
}

void DTSPage::showGridMenu(const QPoint& at) {
    const QModelIndex index = gridView_->indexAt(at);
    if (!index.isValid()) return;
    QMenu menu(this);
    const QVariant revert = grid_->data(index, DTSGridModel::revertLabelRole);
    if (revert.isValid()) {
        connect(menu.addAction(revert.toString()), &QAction::triggered, this, [this, index] { grid_->revertToAutofill(index); });
    }
    connect(menu.addAction(qtext(crew_on_dts_messages::removeRowAction) + "\u2026"), &QAction::triggered, this,
            [this, index] { removeRow(index.row()); });
    menu.exec(gridView_->viewport()->mapToGlobal(at));
}

void DTSPage::removeRow(int row, bool ask) {
    if (row < 0 || row >= grid_->rowCount()) return;
    if (ask) {
        QMessageBox question(QMessageBox::Question, qtext(crew_on_dts_messages::removeRowTitle),
                             qtext(crew_on_dts_messages::removeRowExplanation), QMessageBox::Cancel, this);
        question.setInformativeText(grid_->crewName(row));
        question.addButton(qtext(crew_on_dts_messages::removeRowAction), QMessageBox::DestructiveRole);
        if (question.exec() == QMessageBox::Cancel) return;
    }
    grid_->removeRow(row);
}

void DTSPage::addDayplayer() {
    const QString id = dayplayers_->currentData().toString();
    const auto workday = grid_->workday();
    if (id.isEmpty() || !workday) return;
    const auto memberID = Uuid::parse(utf8(id));
    if (!memberID) return;
    act(tr("Add Dayplayer"), [&](ModelContext& c, const Workday& w) { CrewOnDTS::addRow(c, w.id, *memberID); });
}

void DTSPage::showRefusal(const Refusal& refusal) {
    status_->setStyleSheet("color: #a00000;");
    status_->setText(refusal.title.isEmpty() ? refusal.message : refusal.title + ": " + refusal.message);
    emit refused(refusal);
}

QString DTSPage::statusText() const { return status_->text(); }

std::optional<Refusal> DTSPage::exportTo(const QString& file, bool acceptWarnings) {
    const auto workday = grid_->workday();
    const auto production = session_.production();
    if (!workday || !production) return Refusal{{}, tr("Choose a DTS to export.")};
    try {
        const auto result = dts_export_job::render(session_.context(), production->id, *workday, acceptWarnings);
        if (const auto* held = std::get_if<dts_export_job::Held>(&result)) {
            return Refusal{qtext(held->title), qtext(dts_export_job::issueLines(held->issues))};
        }
        dts_export::writeAtomically(utf8(file), std::get<dts_export_job::Exported>(result).pdf);
        return std::nullopt;
    } catch (const GenericDTSRenderError& error) {
        return Refusal{qtext(dts_export_words::exportFailedTitle), QString::fromUtf8(error.what())};
    } catch (const DTSPDFRendererError& error) {
        return Refusal{qtext(error.alertTitle()), qtext(error.description())};
    } catch (const ProductionDTSExportError& error) {
        return Refusal{qtext(error.alertTitle()), qtext(error.description())};
    }
}

void DTSPage::exportDTS() {
    if (!grid_->workday()) return;
    const QString file = QFileDialog::getSaveFileName(this, tr("Export DTS"), QDir::home().filePath(qtext(dts_export_words::suggestedFileName)),
                                                      tr("PDF (*.pdf)"));
    if (file.isEmpty()) return;
    auto refusal = exportTo(file, false);
    if (refusal && refusal->title == qtext(dts_export_words::reviewTitle)) {
        // Warnings only: the user may look at them and export anyway.
        QMessageBox question(QMessageBox::Warning, refusal->title, refusal->message, QMessageBox::Cancel, this);
        question.addButton(tr("Export Anyway"), QMessageBox::AcceptRole);
        if (question.exec() == QMessageBox::Cancel) return;
        refusal = exportTo(file, true);
    }
    if (refusal) {
        QMessageBox::warning(this, refusal->title.isEmpty() ? tr("Export DTS") : refusal->title, refusal->message);
        return;
    }
    status_->setStyleSheet("color: #2b6a2b;");
    status_->setText(qtext(dts_export_words::reviewReminder));
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(file))) QMessageBox::information(this, tr("Export DTS"), qtext(dts_export_words::openFailed));
}

bool DTSPage::hasUnsavedNotes() const { return notes_->property("edited").toBool() && grid_->workday().has_value(); }

bool DTSPage::saveNotes() {
    const std::string text = utf8(notes_->toPlainText());
    notes_->setProperty("edited", false);
    act(tr("Set Notes"), [text](ModelContext& c, const Workday& w) { DailyTimeSheets::setNotes(c, w.id, text); });
    return status_->text().isEmpty();
}

}  // namespace tessel
