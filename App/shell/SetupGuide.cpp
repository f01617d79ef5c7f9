#include "SetupGuide.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/rules/RulesLibrary.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

using shell_widgets::calendarDate;

using shell_widgets::dateEdit;

QLabel* explanation(const QString& text) {
    auto* label = new QLabel(text);
    label->setWordWrap(true);
    label->setStyleSheet("color: #444;");
    return label;
}

}  // namespace

Uuid setUpProduction(ModelContext& context, const ProductionSetupPlan& plan, const NewProductionDefaults& defaults, Instant now) {
    NewProductionDefaults chosen = defaults;
    chosen.timeDisplay = plan.timeDisplay;
    chosen.lunchDurationSeconds = plan.lunchSeconds;
    chosen.workweekWeekday = plan.payrollWeekStartWeekday;
    Production production = ProductionSetup::createProduction(context, plan.name, chosen, now);
    production.startDate = plan.startDate;
    production_repository::update(context, production);
    if (plan.savedRulesetID) {
        for (const auto& item : rules_library::list(context)) {
            if (item.id == *plan.savedRulesetID) rules_library::applyToProduction(context, item, production.id, std::nullopt, now);
        }
    }
    for (const auto& person : plan.crew) crew_roster::add(context, production.id, person, production.currencyCode);
    if (plan.firstDTS) DailyTimeSheets::create(context, production.id, *plan.firstDTS);
    return production.id;
}

SetupGuide::SetupGuide(ShellSession& session, QWidget* parent) : QWizard(parent), session_(session) {
    setWindowTitle(tr("Set Up a Production"));
    setWizardStyle(QWizard::ModernStyle);
    setOption(QWizard::NoBackButtonOnStartPage);
    addPage(productionPage());
    addPage(rulesPage());
    addPage(crewPage());
    addPage(firstDTSPage());
    resize(720, 560);
}

QWizardPage* SetupGuide::productionPage() {
    auto* page = new QWizardPage;
    page->setTitle(tr("The production"));
    page->setSubTitle(tr("Its name and how its DTS is kept. Everything here can be changed later."));
    auto* form = new QFormLayout(page);
    name_ = new QLineEdit;
    name_->setObjectName("setupName");
    name_->setPlaceholderText(tr("such as Night Harbor"));
    start_ = dateEdit(QDate::currentDate());
    display_ = new QComboBox;
    display_->addItem(tr("Payroll decimal (13.5)"), "payrollDecimal");
    display_->addItem(tr("24-hour clock (13:30)"), "clockTime");
    lunch_ = new QComboBox;
    lunch_->addItem(tr("0.5 hour"), 1800);
    lunch_->addItem(tr("1.0 hour"), 3600);
    weekStart_ = new QComboBox;
    for (const char* day : {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"}) weekStart_->addItem(tr(day));
    weekStart_->setCurrentIndex(std::clamp(session_.settings().newProductionDefaults().workweekWeekday, 1, 7) - 1);
    form->addRow(tr("Production name"), name_);
    form->addRow(tr("First shooting day"), start_);
    form->addRow(tr("DTS times shown as"), display_);
    form->addRow(tr("Usual lunch"), lunch_);
    form->addRow(tr("Payroll Week starts on"), weekStart_);
    return page;
}

QWizardPage* SetupGuide::rulesPage() {
    auto* page = new QWizardPage;
    page->setTitle(tr("Payroll rules"));
    page->setSubTitle(tr("The bands, guarantees, meal penalties and turnaround the crew is paid under."));
    auto* layout = new QVBoxLayout(page);
    example_ = new QRadioButton(tr("Start from the example ruleset"));
    example_->setChecked(true);
    auto* savedChoice = new QRadioButton(tr("Apply a saved ruleset:"));
    saved_ = new QComboBox;
    for (const auto& item : rules_library::list(session_.context())) saved_->addItem(qtext(item.name), QString::fromStdString(item.id.text()));
    savedChoice->setEnabled(saved_->count() > 0);
    saved_->setEnabled(false);
    connect(savedChoice, &QRadioButton::toggled, saved_, &QWidget::setEnabled);
    layout->addWidget(example_);
    layout->addWidget(savedChoice);
    layout->addWidget(saved_);
    layout->addWidget(explanation(saved_->count() > 0 ? tr("A saved ruleset is copied into the production; later changes to it do not reach it.")
                                                     : tr("No saved rulesets yet. The example ruleset can be edited on the Rules page.")));
    layout->addStretch(1);
    return page;
}

QWizardPage* SetupGuide::crewPage() {
    auto* page = new QWizardPage;
    page->setTitle(tr("Crew"));
    page->setSubTitle(tr("The people on this department's DTS, each engaged from the first shooting day at an hourly rate."));
    auto* layout = new QVBoxLayout(page);
    crew_ = new QTableWidget(0, 3);
    crew_->setObjectName("setupCrew");
    crew_->setHorizontalHeaderLabels({tr("Name"), tr("Hourly rate"), tr("Dayplayer")});
    crew_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    crew_->verticalHeader()->hide();
    layout->addWidget(crew_, 1);
    auto* add = new QPushButton(tr("Add a Person"));
    connect(add, &QPushButton::clicked, this, [this] {
        addCrewLine({}, {}, false);
        crew_->setCurrentCell(crew_->rowCount() - 1, 0);
        crew_->editItem(crew_->item(crew_->rowCount() - 1, 0));
    });
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(add);
    buttons->addStretch(1);
    layout->addLayout(buttons);
    layout->addWidget(explanation(tr("Precall, wrap-out, guarantees and box rentals are set on the Crew page afterwards.")));
    return page;
}

QWizardPage* SetupGuide::firstDTSPage() {
    auto* page = new QWizardPage;
    page->setTitle(tr("The first DTS"));
    page->setSubTitle(tr("Tessel makes the DTS of a date with a row for everyone engaged on it."));
    auto* layout = new QVBoxLayout(page);
    makeDTS_ = new QCheckBox(tr("Create the DTS of:"));
    makeDTS_->setChecked(true);
    firstDate_ = dateEdit(QDate::currentDate());
    connect(start_, &QDateEdit::dateChanged, firstDate_, &QDateEdit::setDate);
    connect(makeDTS_, &QCheckBox::toggled, firstDate_, &QWidget::setEnabled);
    layout->addWidget(makeDTS_);
    layout->addWidget(firstDate_);
    layout->addStretch(1);
    return page;
}

void SetupGuide::addCrewLine(const QString& name, const QString& rate, bool dayplayer) {
    const int row = crew_->rowCount();
    crew_->insertRow(row);
    crew_->setItem(row, 0, new QTableWidgetItem(name));
    crew_->setItem(row, 1, new QTableWidgetItem(rate));
    auto* check = new QTableWidgetItem;
    check->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
    check->setCheckState(dayplayer ? Qt::Checked : Qt::Unchecked);
    crew_->setItem(row, 2, check);
}

ProductionSetupPlan SetupGuide::plan() const {
    ProductionSetupPlan plan;
    plan.name = utf8(name_->text());
    plan.startDate = calendarDate(start_->date());
    plan.timeDisplay = display_->currentIndex() == 1 ? DTSTimeDisplay::clockTime : DTSTimeDisplay::payrollDecimal;
    plan.lunchSeconds = lunch_->currentData().toInt();
    plan.payrollWeekStartWeekday = weekStart_->currentIndex() + 1;
    if (!example_->isChecked() && saved_->currentIndex() >= 0) plan.savedRulesetID = Uuid::parse(utf8(saved_->currentData().toString()));
    for (int row = 0; row < crew_->rowCount(); ++row) {
        const QString name = crew_->item(row, 0) ? crew_->item(row, 0)->text().trimmed() : QString();
        if (name.isEmpty()) continue;  // an empty line is one the user did not fill in
        crew_roster::NewCrewMember person{utf8(name), plan.startDate};
        person.rate = crew_->item(row, 1) ? utf8(crew_->item(row, 1)->text().trimmed()) : std::string();
        if (crew_->item(row, 2) && crew_->item(row, 2)->checkState() == Qt::Checked) person.participation = CrewParticipation::dayplayer;
        plan.crew.push_back(std::move(person));
    }
    if (makeDTS_->isChecked()) plan.firstDTS = calendarDate(firstDate_->date());
    return plan;
}

bool SetupGuide::validateCurrentPage() {
    if (currentId() == 0 && name_->text().trimmed().isEmpty()) {
        QMessageBox::warning(this, windowTitle(), tr("Enter a production name."));
        return false;
    }
    if (nextId() != -1) return true;
    const ProductionSetupPlan chosen = plan();
    const auto defaults = session_.settings().newProductionDefaults();
    std::optional<Uuid> made;
    const Instant now = shell_widgets::now();
    if (const auto refusal = session_.perform(tr("Set Up Production"), [&](ModelContext& c) { made = setUpProduction(c, chosen, defaults, now); })) {
        QMessageBox::warning(this, refusal->title.isEmpty() ? windowTitle() : refusal->title, refusal->message);
        return false;
    }
    created_ = made;
    return true;
}

}  // namespace tessel
