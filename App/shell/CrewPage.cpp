#include "CrewPage.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

using shell_widgets::calendarDate;
using shell_widgets::durationEntry;
using shell_widgets::durationText;
using shell_widgets::qdate;

using shell_widgets::dateEdit;
using shell_widgets::now;

using shell_widgets::readOnlyTable;

void setRow(QTableWidget* t, int row, const QStringList& cells) {
    for (int column = 0; column < cells.size(); ++column) t->setItem(row, column, new QTableWidgetItem(cells[column]));
}

constexpr std::array provisionKinds{CompensationProvisionKind::cellPhoneAllowance, CompensationProvisionKind::perDiem,
                                     CompensationProvisionKind::mileage, CompensationProvisionKind::vacationPay};

// A personal allowance term: an amount a day, "not eligible", or empty for the production's own amount.
void setProvision(ModelContext& context, const Uuid& engagementID, CompensationProvisionKind kind, CalendarDate from, const QString& value,
                  const std::string& currencyCode) {
    const QString text = value.trimmed();
    if (text.isEmpty()) {
        CompensationProvisions::setEngagementTerm(context, engagementID, kind, from, CompensationProvisionOverrideMode::productionDefault,
                                                  std::nullopt, currencyCode);
    } else if (text.compare("not eligible", Qt::CaseInsensitive) == 0) {
        CompensationProvisions::setEngagementTerm(context, engagementID, kind, from, CompensationProvisionOverrideMode::notEligible,
                                                  std::nullopt, currencyCode);
    } else {
        const auto amount = entry_text::decimal(utf8(text));
        if (!amount || amount->isNegative()) throw EntryRefused{"Enter the personal daily amount, such as 5.00."};
        CompensationProvisions::setEngagementTerm(context, engagementID, kind, from, CompensationProvisionOverrideMode::personalAmount,
                                                  amount, currencyCode);
    }
}

constexpr std::string_view precallMessage = "Enter the regular precall in payroll-decimal hours, such as 0.5.";
constexpr std::string_view wrapoutMessage = "Enter the regular wrap-out in payroll-decimal hours, such as 0.3.";
constexpr std::string_view restMessage = "Enter the required rest in payroll-decimal hours, such as 10.0.";
constexpr std::string_view guaranteeMessage = "Enter the guarantee in payroll-decimal hours, such as 10.0.";

}  // namespace

CrewPage::CrewPage(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* splitter = new QSplitter(Qt::Horizontal);
    splitter->addWidget(buildList());
    splitter->addWidget(buildEditor());
    splitter->setSizes({300, 900});
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(splitter, 1);
    status_ = new QLabel;
    status_->setObjectName("crewStatus");
    status_->setWordWrap(true);
    status_->setStyleSheet("color: #a00000;");
    layout->addWidget(status_);
    shell_widgets::reloadWhenShown(this, session_, [this] {
        reloadList();
        reloadEditor();
    });
}

QWidget* CrewPage::buildList() {
    auto* box = new QWidget;
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* title = new QLabel(tr("Crew"));
    title->setStyleSheet("font-size: 15pt; font-weight: bold;");
    layout->addWidget(title);
    list_ = new QListWidget;
    list_->setObjectName("crewList");
    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (row < 0) return;
        if (const auto id = Uuid::parse(utf8(list_->item(row)->data(Qt::UserRole).toString()))) {
            person_ = id;
            reloadEditor();
        }
    });
    layout->addWidget(list_, 1);
    auto* add = new QGroupBox(tr("Add Crew Member"));
    auto* form = new QFormLayout(add);
    newName_ = new QLineEdit;
    newName_->setObjectName("newCrewName");
    newName_->setPlaceholderText(tr("Name as it appears on the DTS"));
    newFrom_ = dateEdit();
    newRate_ = new QLineEdit;
    newRate_->setPlaceholderText(tr("hourly, such as 42.50"));
    newDayplayer_ = new QCheckBox(tr("Dayplayer"));
    form->addRow(tr("Name"), newName_);
    form->addRow(tr("Engaged from"), newFrom_);
    form->addRow(tr("Hourly rate"), newRate_);
    form->addRow(QString(), newDayplayer_);
    auto* addButton = new QPushButton(tr("Add"));
    connect(addButton, &QPushButton::clicked, this, [this] {
        const crew_roster::NewCrewMember person{utf8(newName_->text()), calendarDate(newFrom_->date()),
                                                newDayplayer_->isChecked() ? CrewParticipation::dayplayer : CrewParticipation::fullTime,
                                                std::nullopt, std::nullopt, utf8(newRate_->text())};
        if (!addPerson(person)) {
            newName_->clear();
            newRate_->clear();
        }
    });
    form->addRow(QString(), addButton);
    layout->addWidget(add);
    return box;
}

QWidget* CrewPage::buildEditor() {
    editor_ = new QWidget;
    auto* layout = new QVBoxLayout(editor_);
    auto* identity = new QHBoxLayout;
    name_ = new QLineEdit;
    name_->setObjectName("crewName");
    QFont big = name_->font();
    big.setPointSizeF(big.pointSizeF() * 1.3);
    name_->setFont(big);
    auto* rename = new QPushButton(tr("Rename"));
    connect(rename, &QPushButton::clicked, this, [this] {
        const std::string name = utf8(name_->text());
        act(tr("Rename Crew Member"), [&](ModelContext& c) { crew_roster::rename(c, *person_, name); });
    });
    retired_ = new QLabel;
    auto* retire = new QPushButton(tr("Retire / Return"));
    retire->setToolTip(tr("Retired people leave the crew list for new DTSes and keep all their history."));
    connect(retire, &QPushButton::clicked, this, [this] {
        const auto member = crew_repository::fetchCrewMember(session_.context(), *person_);
        if (!member) return;
        act(member->isActive() ? tr("Retire") : tr("Return"), [&](ModelContext& c) {
            if (member->isActive()) crew_roster::retire(c, member->id, now());
            else crew_roster::unretire(c, member->id);
        });
    });
    auto* remove = new QPushButton(tr("Remove\u2026"));
    connect(remove, &QPushButton::clicked, this, [this] {
        if (QMessageBox::question(this, tr("Remove Crew Member?"), tr("Remove %1 and their engagements from the production?").arg(name_->text())) !=
            QMessageBox::Yes)
            return;
        const Uuid id = *person_;
        act(tr("Remove Crew Member"), [&](ModelContext& c) { crew_roster::remove(c, id); });
    });
    identity->addWidget(name_, 1);
    identity->addWidget(rename);
    identity->addWidget(retired_);
    identity->addWidget(retire);
    identity->addWidget(remove);
    layout->addLayout(identity);

    auto* engagementBox = new QGroupBox(tr("Engagements"));
    auto* engagementLayout = new QVBoxLayout(engagementBox);
    engagements_ = readOnlyTable({tr("From"), tr("Through"), tr("Participation"), tr("Locality"), tr("Precall"), tr("Wrap-out"), tr("Required rest")});
    engagements_->setObjectName("engagements");
    engagements_->setMaximumHeight(130);
    connect(engagements_, &QTableWidget::currentCellChanged, this, &CrewPage::showEngagement);
    engagementLayout->addWidget(engagements_);
    auto* form = new QGridLayout;
    from_ = dateEdit();
    from_->setObjectName("engagementFrom");
    hasThrough_ = new QCheckBox(tr("Last day"));
    hasThrough_->setObjectName("engagementHasLastDay");
    through_ = dateEdit();
    participation_ = new QComboBox;
    participation_->addItems({tr("Full time"), tr("Dayplayer")});
    locality_ = new QComboBox;
    locality_->addItems({tr("Ruleset default"), tr("Local"), tr("Distant")});
    precall_ = new QLineEdit;
    wrapout_ = new QLineEdit;
    rest_ = new QLineEdit;
    for (auto* edit : {precall_, wrapout_, rest_}) edit->setPlaceholderText(tr("hours"));
    form->addWidget(new QLabel(tr("From")), 0, 0);
    form->addWidget(from_, 1, 0);
    form->addWidget(hasThrough_, 0, 1);
    form->addWidget(through_, 1, 1);
    form->addWidget(new QLabel(tr("Participation")), 0, 2);
    form->addWidget(participation_, 1, 2);
    form->addWidget(new QLabel(tr("Locality")), 0, 3);
    form->addWidget(locality_, 1, 3);
    form->addWidget(new QLabel(tr("Precall")), 0, 4);
    form->addWidget(precall_, 1, 4);
    form->addWidget(new QLabel(tr("Wrap-out")), 0, 5);
    form->addWidget(wrapout_, 1, 5);
    form->addWidget(new QLabel(tr("Required rest")), 0, 6);
    form->addWidget(rest_, 1, 6);
    auto* save = new QPushButton(tr("Save Engagement"));
    connect(save, &QPushButton::clicked, this, [this] { saveEngagement(false); });
    form->addWidget(save, 1, 7);
    auto* saveNew = new QPushButton(tr("Save as New Engagement"));
    saveNew->setObjectName("newEngagement");
    saveNew->setToolTip(tr("A later hire of the same person: the first engagement must end before this one starts."));
    connect(saveNew, &QPushButton::clicked, this, [this] { saveEngagement(true); });
    form->addWidget(saveNew, 0, 7);
    engagementLayout->addLayout(form);
    layout->addWidget(engagementBox);

    auto* termBox = new QGroupBox(tr("Dated terms of the chosen engagement"));
    auto* termLayout = new QVBoxLayout(termBox);
    terms_ = readOnlyTable({tr("Term"), tr("From"), tr("Value")});
    terms_->setObjectName("terms");
    termLayout->addWidget(terms_, 1);
    auto* termForm = new QHBoxLayout;
    termKind_ = new QComboBox;
    termKind_->setObjectName("termKind");
    termKind_->addItems({tr("Rate"), tr("Guarantee"), tr("Box Rental")});
    for (const auto kind : provisionKinds) termKind_->addItem(qtext(label(kind)), qtext(toRawValue(kind)));
    termKind_->setToolTip(tr("For an allowance: an amount a day, \u201Cnot eligible\u201D, or empty for the production\u2019s amount"));
    termFrom_ = dateEdit();
    termValue_ = new QLineEdit;
    termValue_->setObjectName("termValue");
    termValue_->setPlaceholderText(tr("amount, or hours for a guarantee"));
    auto* addTermButton = new QPushButton(tr("Set Term"));
    addTermButton->setObjectName("setTerm");
    connect(addTermButton, &QPushButton::clicked, this, &CrewPage::addTerm);
    auto* clearTermButton = new QPushButton(tr("Clear Selected Term"));
    connect(clearTermButton, &QPushButton::clicked, this, &CrewPage::clearTerm);
    termForm->addWidget(termKind_);
    termForm->addWidget(new QLabel(tr("from")));
    termForm->addWidget(termFrom_);
    termForm->addWidget(termValue_, 1);
    termForm->addWidget(addTermButton);
    termForm->addWidget(clearTermButton);
    termLayout->addLayout(termForm);
    layout->addWidget(termBox, 1);
    return editor_;
}

void CrewPage::reloadList() {
    const QSignalBlocker quiet(list_);
    list_->clear();
    const auto production = session_.production();
    if (!production) return;
    int current = -1;
    for (const auto& member : crew_repository::crewMembers(session_.context(), production->id)) {
        auto* item = new QListWidgetItem(qtext(member.displayName) + (member.isActive() ? QString() : tr("  (retired)")));
        item->setData(Qt::UserRole, QString::fromStdString(member.id.text()));
        if (!member.isActive()) item->setForeground(Qt::gray);
        list_->addItem(item);
        if (person_ == member.id) current = list_->count() - 1;
    }
    if (current < 0 && list_->count() > 0) {
        current = 0;
        person_ = Uuid::parse(utf8(list_->item(0)->data(Qt::UserRole).toString()));
    }
    if (current < 0) person_.reset();
    list_->setCurrentRow(current);
}

void CrewPage::reloadEditor() {
    editor_->setEnabled(person_.has_value());
    if (!person_) {
        name_->clear();
        engagements_->setRowCount(0);
        terms_->setRowCount(0);
        return;
    }
    ModelContext& context = session_.context();
    const auto member = crew_repository::fetchCrewMember(context, *person_);
    if (!member) return;
    name_->setText(qtext(member->displayName));
    retired_->setText(member->isActive() ? QString() : tr("Retired"));
    const int chosen = std::max(0, engagements_->currentRow());
    records_ = crew_roster::records(context, *person_);
    QSignalBlocker quiet(engagements_);
    engagements_->setRowCount(static_cast<int>(records_.size()));
    for (int row = 0; row < static_cast<int>(records_.size()); ++row) {
        const auto& r = records_[static_cast<std::size_t>(row)];
        const auto& e = r.engagement;
        setRow(engagements_, row,
               {qtext(calendar_text::formatDate(e.effectiveFrom)), e.effectiveThrough ? qtext(calendar_text::formatDate(*e.effectiveThrough)) : QString(),
                e.crewParticipation == CrewParticipation::dayplayer ? tr("Dayplayer") : tr("Full time"),
                e.rulesLocalityOverride ? qtext(toRawValue(*e.rulesLocalityOverride)) : tr("ruleset default"),
                durationText(e.regularPrecallDurationSeconds), durationText(e.regularWrapoutDurationSeconds), durationText(r.requiredRestSeconds)});
    }
    engagements_->setCurrentCell(std::min(chosen, engagements_->rowCount() - 1), 0);
    quiet.unblock();
    showEngagement();
}

// The chosen engagement's fields in the form below the table, and its dated terms.
void CrewPage::showEngagement() {
    const auto record = chosenEngagement();
    if (!record) return;
    const auto& e = record->engagement;
    from_->setDate(qdate(e.effectiveFrom));
    hasThrough_->setChecked(e.effectiveThrough.has_value());
    through_->setDate(e.effectiveThrough ? qdate(*e.effectiveThrough) : QDate::currentDate());
    participation_->setCurrentIndex(e.crewParticipation == CrewParticipation::dayplayer ? 1 : 0);
    locality_->setCurrentIndex(!e.rulesLocalityOverride ? 0 : *e.rulesLocalityOverride == RulesLocality::local ? 1 : 2);
    precall_->setText(durationText(e.regularPrecallDurationSeconds));
    wrapout_->setText(durationText(e.regularWrapoutDurationSeconds));
    rest_->setText(durationText(record->requiredRestSeconds));
    terms_->setRowCount(0);
    const auto addTerms = [this](const std::vector<DatedEngagementTerm>& terms, const QString& kind, bool hours) {
        for (const auto& term : terms) {
            const int row = terms_->rowCount();
            terms_->insertRow(row);
            const QString value = hours ? durationText(term.seconds) + " h"
                                        : qtext((term.amount ? term.amount->toString() : std::string()) + " " + term.currencyCode);
            setRow(terms_, row, {kind, qtext(calendar_text::formatDate(term.effectiveDate)), value});
        }
    };
    addTerms(record->rates, tr("Rate"), false);
    addTerms(record->guarantees, tr("Guarantee"), true);
    addTerms(record->boxRentals, tr("Box Rental"), false);
    for (const auto& term : CompensationProvisions::engagementTerms(session_.context(), record->engagement.id)) {
        const auto kind = fromRawValue<CompensationProvisionKind>(term.kind);
        const int row = terms_->rowCount();
        terms_->insertRow(row);
        QString value = tr("Production\u2019s amount");
        if (term.mode == CompensationProvisionOverrideMode::notEligible) value = tr("Not eligible");
        if (term.mode == CompensationProvisionOverrideMode::personalAmount && term.personalDailyAmount) {
            value = tr("%1 %2 a day").arg(qtext(term.personalDailyAmount->toString()), qtext(term.currencyCode));
        }
        setRow(terms_, row, {kind ? qtext(label(*kind)) : qtext(term.kind), qtext(calendar_text::formatDate(term.effectiveDate)), value});
        terms_->item(row, 0)->setData(Qt::UserRole, qtext(term.kind));
    }
}

std::optional<EngagementRecord> CrewPage::chosenEngagement() const {
    const int row = engagements_->currentRow();
    if (row < 0 || row >= static_cast<int>(records_.size())) return std::nullopt;
    return records_[static_cast<std::size_t>(row)];
}

void CrewPage::act(const QString& name, const std::function<void(ModelContext&)>& action) {
    if (const auto refusal = session_.perform(name, action)) {
        status_->setText(refusal->title.isEmpty() ? refusal->message : refusal->title + ": " + refusal->message);
        return;
    }
    status_->clear();
}

std::optional<Refusal> CrewPage::addPerson(const crew_roster::NewCrewMember& person) {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose or create a production first.")};
    std::optional<Uuid> added;
    const auto refusal = session_.perform(tr("Add Crew Member"), [&](ModelContext& c) {
        added = crew_roster::add(c, production->id, person, production->currencyCode).first.id;
    });
    if (refusal) {
        status_->setText(refusal->message);
        return refusal;
    }
    status_->clear();
    if (added) choosePerson(*added);
    return std::nullopt;
}

void CrewPage::choosePerson(const Uuid& crewMemberID) {
    person_ = crewMemberID;
    reloadList();
    reloadEditor();
}

void CrewPage::saveEngagement(bool asNew) {
    auto record = chosenEngagement();
    if (!record) return;
    ProductionEngagement engagement = record->engagement;
    if (asNew) engagement.id = Uuid::generate();  // the form's values as another engagement of the person
    const QString precall = precall_->text(), wrapout = wrapout_->text(), rest = rest_->text();
    act(tr("Save Engagement"), [&](ModelContext& c) {
        engagement.effectiveFrom = calendarDate(from_->date());
        engagement.effectiveThrough = hasThrough_->isChecked() ? std::optional(calendarDate(through_->date())) : std::nullopt;
        engagement.crewParticipation = participation_->currentIndex() == 1 ? CrewParticipation::dayplayer : CrewParticipation::fullTime;
        engagement.rulesLocalityOverride = locality_->currentIndex() == 0   ? std::nullopt
                                           : locality_->currentIndex() == 1 ? std::optional(RulesLocality::local)
                                                                            : std::optional(RulesLocality::distant);
        engagement.regularPrecallDurationSeconds = durationEntry(precall, precallMessage);
        engagement.regularWrapoutDurationSeconds = durationEntry(wrapout, wrapoutMessage);
        const auto saved = crew_roster::saveEngagement(c, engagement, {});
        crew_roster::setRequiredRest(c, saved.id, durationEntry(rest, restMessage), now());
    });
}

void CrewPage::addTerm() {
    const auto record = chosenEngagement();
    const auto production = session_.production();
    if (!record || !production) return;
    const Uuid engagementID = record->engagement.id;
    const CalendarDate from = calendarDate(termFrom_->date());
    const QString value = termValue_->text();
    const int kind = termKind_->currentIndex();
    const auto provision = fromRawValue<CompensationProvisionKind>(utf8(termKind_->currentData().toString()));
    act(tr("Set %1").arg(termKind_->currentText()), [&](ModelContext& c) {
        if (provision) return setProvision(c, engagementID, *provision, from, value, production->currencyCode);
        if (kind == 0) crew_roster::setRate(c, engagementID, from, utf8(value), production->currencyCode);
        if (kind == 1) {
            const auto seconds = durationEntry(value, guaranteeMessage);
            if (!seconds) throw EntryRefused{std::string(guaranteeMessage)};
            crew_roster::setGuarantee(c, engagementID, from, *seconds);
        }
        if (kind == 2) crew_roster::setBoxRental(c, engagementID, from, utf8(value), production->currencyCode);
    });
    if (status_->text().isEmpty()) termValue_->clear();
}

void CrewPage::clearTerm() {
    const auto record = chosenEngagement();
    const int row = terms_->currentRow();
    if (!record || row < 0) return;
    const auto date = calendar_text::parseDate(utf8(terms_->item(row, 1)->text()));
    if (!date) return;
    const Uuid engagementID = record->engagement.id;
    if (const auto provision = fromRawValue<CompensationProvisionKind>(utf8(terms_->item(row, 0)->data(Qt::UserRole).toString()))) {
        act(tr("Clear Term"), [&](ModelContext& c) { CompensationProvisions::removeEngagementTerm(c, engagementID, *provision, *date); });
        return;
    }
    const QString kindText = terms_->item(row, 0)->text();
    const auto kind = kindText == tr("Rate") ? crew_roster::DatedTermKind::rate
                      : kindText == tr("Guarantee") ? crew_roster::DatedTermKind::guarantee
                                                    : crew_roster::DatedTermKind::boxRental;
    act(tr("Clear Term"), [&](ModelContext& c) { crew_roster::clearTerm(c, engagementID, kind, *date); });
}

QString CrewPage::statusText() const { return status_->text(); }

}  // namespace tessel
