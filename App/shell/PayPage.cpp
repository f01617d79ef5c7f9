#include "PayPage.hpp"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTabWidget>
#include <QTableWidget>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <map>

#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/StubImportPanel.hpp"
#include "App/shell/GrossChart.hpp"
#include "App/shell/PdfPageView.hpp"
#include "App/shell/StubReviewPanel.hpp"
#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

using shell_widgets::readOnlyTable;

QString amount(const std::optional<Decimal>& value) { return value ? qtext(value->toString()) : QString("\u2014"); }

// Differences are coloured by what they mean to the person paid.
QColor statusColour(std::optional<PayComparisonLineStatus> status) {
    if (!status) return Qt::black;
    switch (*status) {
        case PayComparisonLineStatus::matches:
        case PayComparisonLineStatus::withinTolerance: return QColor(0x2b, 0x6a, 0x2b);
        case PayComparisonLineStatus::underpaid:
        case PayComparisonLineStatus::expectedOnly: return QColor(0xa0, 0x00, 0x00);
        case PayComparisonLineStatus::overpaid:
        case PayComparisonLineStatus::actualOnly: return QColor(0x8a, 0x5a, 0x00);
        case PayComparisonLineStatus::review: return QColor(0x55, 0x55, 0x55);
    }
    return Qt::black;
}

void setRow(QTableWidget* t, int row, const QStringList& cells, const QColor& colour = Qt::black) {
    for (int column = 0; column < cells.size(); ++column) {
        auto* item = new QTableWidgetItem(cells[column]);
        if (column >= 1 && column <= 3) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        item->setForeground(colour);
        t->setItem(row, column, item);
    }
}

}  // namespace

PayPage::PayPage(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(8, 8, 8, 8);
    stack_ = new QStackedWidget;
    outer->addWidget(stack_);
    auto* checkPage = new QWidget;
    stack_->addWidget(checkPage);
    auto* layout = new QVBoxLayout(checkPage);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* heading = new QHBoxLayout;
    auto* title = new QLabel(tr("Pay Check"));
    title->setStyleSheet("font-size: 15pt; font-weight: bold;");
    heading->addWidget(title);
    heading->addSpacing(20);
    heading->addWidget(new QLabel(tr("Payroll Week:")));
    weeks_ = new QComboBox;
    weeks_->setObjectName("payWeek");
    weeks_->setMinimumContentsLength(22);
    connect(weeks_, &QComboBox::activated, this, [this] { recalculate(); });
    heading->addWidget(weeks_);
    heading->addStretch(1);
    layout->addLayout(heading);
    dashboard_ = new QLabel;
    dashboard_->setObjectName("payDashboard");
    dashboard_->setWordWrap(true);
    layout->addWidget(dashboard_);

    auto* splitter = new QSplitter(Qt::Vertical);
    stubs_ = new StubImportPanel(session_);
    splitter->addWidget(stubs_);
    auto* comparison = new QSplitter(Qt::Horizontal);
    people_ = readOnlyTable({tr("Crew"), tr("Expected gross"), tr("Paid gross"), tr("Difference"), tr("Outcome")});
    people_->setObjectName("payPeople");
    people_->setToolTip(tr("Double-click a person to open their confirmed pay stub."));
    connect(people_, &QTableWidget::currentCellChanged, this, [this](int row) { showPerson(row); });
    connect(people_, &QTableWidget::cellDoubleClicked, this, [this](int row) { openConfirmedStub(row); });
    comparison->addWidget(people_);
    auto* linesBox = new QWidget;
    auto* linesLayout = new QVBoxLayout(linesBox);
    linesLayout->setContentsMargins(0, 0, 0, 0);
    lines_ = readOnlyTable({tr("Line"), tr("Expected"), tr("Paid"), tr("Difference"), tr("Status"), tr("Hours expected / paid")});
    lines_->setObjectName("payLines");
    linesLayout->addWidget(lines_, 1);
    personNotes_ = new QLabel;
    personNotes_->setWordWrap(true);
    personNotes_->setStyleSheet("color: #555;");
    linesLayout->addWidget(personNotes_);
    auto* tabs = new QTabWidget;
    tabs->setObjectName("payTabs");
    tabs->addTab(linesBox, tr("Lines"));
    chart_ = new GrossChart;
    chart_->setObjectName("payChart");
    tabs->addTab(chart_, tr("Gross by Crew Member"));
    comparison->addWidget(tabs);
    comparison->setSizes({520, 780});
    splitter->addWidget(comparison);

    auto* issuesBox = new QGroupBox(tr("Payroll Issues"));
    auto* issuesLayout = new QVBoxLayout(issuesBox);
    issues_ = new QTreeWidget;
    issues_->setObjectName("payIssues");
    issues_->setColumnCount(4);
    issues_->setHeaderLabels({tr("Issue"), tr("Difference"), tr("State"), tr("Note")});
    issues_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    issues_->header()->setStretchLastSection(true);
    connect(issues_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) { showIssue(item); });
    auto* issueArea = new QHBoxLayout;
    issueArea->addWidget(issues_, 3);
    issueDetail_ = new QLabel;
    issueDetail_->setObjectName("issueDetail");
    issueDetail_->setWordWrap(true);
    issueDetail_->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    issueDetail_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    issueDetail_->setStyleSheet("background: #f6f6f6; padding: 6px;");
    issueArea->addWidget(issueDetail_, 2);
    issuesLayout->addLayout(issueArea, 1);
    auto* actions = new QHBoxLayout;
    state_ = new QComboBox;
    for (const auto state : {PayrollIssueState::reported, PayrollIssueState::noAction, PayrollIssueState::resolved, PayrollIssueState::noted,
                             PayrollIssueState::needsAttention}) {
        state_->addItem(qtext(label(state)), static_cast<int>(state));
    }
    note_ = new QLineEdit;
    note_->setPlaceholderText(tr("Note (optional)"));
    auto* apply = new QPushButton(tr("Mark Chosen"));
    apply->setToolTip(tr("Sets the state of the chosen issue, or of every issue of the chosen group."));
    connect(apply, &QPushButton::clicked, this, [this] {
        auto* item = issues_->currentItem();
        if (!item || !item->parent()) return;  // a heading
        const auto state = static_cast<PayrollIssueState>(state_->currentData().toInt());
        const int group = item->data(0, Qt::UserRole).toInt();
        const QVariant member = item->data(0, Qt::UserRole + 1);
        if (member.isValid()) {
            setIssueState(group, member.toInt(), state);
        } else {
            setGroupState(group, state);
        }
    });
    auto* reportAll = new QPushButton(tr("Needs Attention as Reported"));
    connect(reportAll, &QPushButton::clicked, this, [this] { moveWeekIssues(PayrollIssueState::needsAttention, PayrollIssueState::reported); });
    auto* resolveAll = new QPushButton(tr("Reported as Resolved"));
    connect(resolveAll, &QPushButton::clicked, this, [this] { moveWeekIssues(PayrollIssueState::reported, PayrollIssueState::resolved); });
    auto* summary = new QPushButton(tr("Copy Full Summary"));
    connect(summary, &QPushButton::clicked, this, [this] { QApplication::clipboard()->setText(summaryText()); });
    auto* claim = new QPushButton(tr("Copy Claim for Payroll"));
    connect(claim, &QPushButton::clicked, this, [this] { QApplication::clipboard()->setText(claimText()); });
    actions->addWidget(state_);
    actions->addWidget(note_, 1);
    actions->addWidget(apply);
    actions->addSpacing(12);
    actions->addWidget(reportAll);
    actions->addWidget(resolveAll);
    actions->addSpacing(12);
    actions->addWidget(summary);
    actions->addWidget(claim);
    issuesLayout->addLayout(actions);
    splitter->addWidget(issuesBox);
    layout->addWidget(splitter, 1);
    status_ = new QLabel;
    status_->setWordWrap(true);
    status_->setStyleSheet("color: #a00000;");
    layout->addWidget(status_);

    reviewPanel_ = new StubReviewPanel(session_);
    stack_->addWidget(reviewPanel_);
    connect(stubs_, &StubImportPanel::reviewRequested, this, [this](int candidate) { reviewCandidate(candidate); });
    connect(reviewPanel_, &StubReviewPanel::confirmed, this, [this](const PayStubReviewSession& review) {
        if (reviewing_ >= 0) stubs_->markConfirmed(reviewing_, review);
        closeReview();
    });
    connect(reviewPanel_, &StubReviewPanel::removed, this, [this] { closeReview(); });
    connect(reviewPanel_, &StubReviewPanel::closed, this, [this] { closeReview(); });

    shell_widgets::reloadWhenShown(this, session_, [this] {
        review_.reset();  // anything may have changed what is expected
        reloadWeeks();
        recalculate();
    });
}

void PayPage::reloadWeeks() {
    const QString chosen = weeks_->currentData().toString();
    const QSignalBlocker quiet(weeks_);
    weeks_->clear();
    const auto production = session_.production();
    if (!production) return;
    for (const auto& week : payroll_week_repository::weeks(session_.context(), production->id)) {
        const CalendarDate start(std::chrono::floor<std::chrono::days>(week.startDate));
        weeks_->addItem(tr("Week of %1").arg(qtext(calendar_text::formatDate(start))), QString::fromStdString(week.id.text()));
    }
    const int index = weeks_->findData(chosen);
    weeks_->setCurrentIndex(index >= 0 ? index : weeks_->count() - 1);
}

void PayPage::showWeek(const Uuid& payrollWeekID) {
    reloadWeeks();
    weeks_->setCurrentIndex(weeks_->findData(QString::fromStdString(payrollWeekID.text())));
    recalculate();
}

void PayPage::recalculate() {
    comparison_.reset();
    chart_->showWeek(nullptr);
    people_->setRowCount(0);
    lines_->setRowCount(0);
    const auto production = session_.production();
    const auto weekID = Uuid::parse(utf8(weeks_->currentData().toString()));
    const auto week = weekID ? payroll_week_repository::fetchWeek(session_.context(), *weekID) : std::nullopt;
    stubs_->setWeek(week);
    if (!production || !week) {
        dashboard_->setText(qtext(payroll_issue_words::noWeeks));
        reloadIssues();
        return;
    }
    if (!review_) review_ = std::make_unique<ExpectedPayrollReview>(session_.context(), production->id);
    try {
        comparison_ = compareWeek(session_.context(), *review_, *production, *week);
    } catch (...) {
        dashboard_->setText(refusalOf(std::current_exception()).message);
        reloadIssues();
        return;
    }
    const auto& c = *comparison_;
    QStringList waiting;
    for (const auto& [id, name] : c.waiting) waiting << qtext(name);
    dashboard_->setText(tr("Pay stubs confirmed: %1 of %2 people in this Payroll Week.   Needs Attention: %3   Unable to Compare: %4   "
                           "No Action Needed: %5")
                            .arg(c.stubsConfirmed)
                            .arg(c.peopleInWeek)
                            .arg(c.needsAttention)
                            .arg(c.unableToCompare)
                            .arg(c.noActionNeeded) +
                        (waiting.isEmpty() ? QString() : "\n" + tr("Awaiting Pay Stub: %1").arg(waiting.join(", "))));
    people_->setRowCount(static_cast<int>(c.comparisons.size()));
    for (int row = 0; row < static_cast<int>(c.comparisons.size()); ++row) {
        const auto& person = c.comparisons[static_cast<std::size_t>(row)];
        setRow(people_, row,
               {qtext(person.crewName), amount(person.expected ? person.expected->gross : std::nullopt),
                amount(person.actual ? std::optional(person.actual->gross) : std::nullopt), qtext(signedAmount(person.grossDifference)),
                qtext(dashboardLabel(person.outcome))},
               statusColour(person.grossStatus));
    }
    if (people_->rowCount() > 0) people_->setCurrentCell(0, 0);
    chart_->showWeek(&c);
    reloadIssues();
}

void PayPage::showPerson(int row) {
    lines_->setRowCount(0);
    personNotes_->clear();
    if (!comparison_ || row < 0 || row >= static_cast<int>(comparison_->comparisons.size())) return;
    const auto& person = comparison_->comparisons[static_cast<std::size_t>(row)];
    for (const auto& line : person.lines) {
        const int at = lines_->rowCount();
        lines_->insertRow(at);
        std::optional<Decimal> expectedHours, paidHours;
        for (const auto& e : line.expected) {
            if (e.hours) expectedHours = expectedHours ? *expectedHours + *e.hours : *e.hours;
        }
        for (const auto& a : line.actual) {
            if (a.hours) paidHours = paidHours ? *paidHours + *a.hours : *a.hours;
        }
        setRow(lines_, at,
               {qtext(line.title), amount(expectedAmount(line)), amount(actualAmount(line)), qtext(signedAmount(line.difference)), qtext(label(line.status)),
                amount(expectedHours) + " / " + amount(paidHours)},
               statusColour(line.status));
    }
    for (const auto& unmapped : person.unmappedActual) {
        const int at = lines_->rowCount();
        lines_->insertRow(at);
        setRow(lines_, at, {qtext(unmapped.label), QString("\u2014"), qtext(unmapped.amount.toString()), QString(), tr("Not mapped to an expected line")},
               statusColour(PayComparisonLineStatus::actualOnly));
    }
    QStringList notes;
    for (const auto& issue : person.issues) notes << qtext(issue);
    personNotes_->setText(notes.join("\n"));
}

void PayPage::reloadIssues() {
    issues_->clear();
    groups_.clear();
    const auto production = session_.production();
    if (!production) return;
    ModelContext& context = session_.context();
    // Outstanding issues of this week and earlier ones: a later week's are not outstanding from here.
    std::map<Uuid, CalendarDate> weekStarts;
    for (const auto& week : payroll_week_repository::weeks(context, production->id)) {
        weekStarts.emplace(week.id, CalendarDate(std::chrono::floor<std::chrono::days>(week.startDate)));
    }
    std::vector<PayrollIssue> outstanding;
    for (auto& issue : payroll_issues::list(context, production->id)) {
        const auto start = weekStarts.find(issue.weekID);
        const bool later = comparison_ && start != weekStarts.end() && start->second > comparison_->start;
        if (issue.open() && !later) outstanding.push_back(std::move(issue));
    }
    groups_ = payroll_issues::groups(context, production->id, outstanding);
    std::map<Uuid, QString> names;
    for (const auto& member : crew_repository::crewMembers(context, production->id)) names.emplace(member.id, qtext(member.displayName));
    const QString weekStart = comparison_ ? qtext(calendar_text::formatDate(comparison_->start)) : QString();
    auto* thisWeek = new QTreeWidgetItem(issues_, {qtext(payroll_issue_words::thisWeek)});
    auto* earlier = new QTreeWidgetItem(issues_, {qtext(payroll_issue_words::earlierWeeks)});
    for (int g = 0; g < static_cast<int>(groups_.size()); ++g) {
        const auto& group = groups_[static_cast<std::size_t>(g)];
        const QString start = qtext(calendar_text::formatDate(group.weekStart));
        auto* parent = start == weekStart ? thisWeek : earlier;
        auto* item = new QTreeWidgetItem(parent, {qtext(group.title) + (parent == earlier ? " (" + start + ")" : QString()),
                                                  qtext(signedAmount(group.difference())),
                                                  group.members.size() == 1 ? tr("1 issue") : tr("%1 issues").arg(group.members.size())});
        item->setData(0, Qt::UserRole, g);
        for (const auto& member : group.members) {
            const auto name = names.find(member.crewID);
            auto* child = new QTreeWidgetItem(item, {name != names.end() ? name->second : qtext(payroll_issue_words::unavailableCrew),
                                                     qtext(signedAmount(member.differenceAmount)),
                                                     member.state() ? qtext(label(*member.state())) : qtext(member.stateRaw), qtext(member.note)});
            child->setData(0, Qt::UserRole, g);
            child->setData(0, Qt::UserRole + 1, static_cast<int>(&member - group.members.data()));
        }
    }
    if (thisWeek->childCount() == 0 && earlier->childCount() == 0) thisWeek->setText(0, qtext(payroll_issue_words::noneOutstanding));
    issues_->expandAll();
}

std::optional<Refusal> PayPage::setGroupState(int group, PayrollIssueState state) {
    if (group < 0 || group >= static_cast<int>(groups_.size())) return std::nullopt;
    const auto members = groups_[static_cast<std::size_t>(group)].members;
    const QString noteText = note_->text().trimmed();
    const std::optional<std::string> note = noteText.isEmpty() ? std::nullopt : std::optional(utf8(noteText));
    auto refusal = session_.perform(tr("Mark Payroll Issues"), [&](ModelContext& c) { payroll_issues::setState(c, members, state, note, shell_widgets::now()); });
    status_->setText(refusal ? refusal->message : QString());
    if (!refusal) note_->clear();
    return refusal;
}

std::optional<Refusal> PayPage::setIssueState(int group, int member, PayrollIssueState state) {
    if (group < 0 || group >= static_cast<int>(groups_.size())) return std::nullopt;
    const auto& members = groups_[static_cast<std::size_t>(group)].members;
    if (member < 0 || member >= static_cast<int>(members.size())) return std::nullopt;
    const auto issue = members[static_cast<std::size_t>(member)];
    const QString noteText = note_->text().trimmed();
    const std::optional<std::string> note = noteText.isEmpty() ? std::nullopt : std::optional(utf8(noteText));
    auto refusal = session_.perform(tr("Mark Payroll Issue"), [&](ModelContext& c) { payroll_issues::setState(c, {issue}, state, note, shell_widgets::now()); });
    status_->setText(refusal ? refusal->message : QString());
    if (!refusal) note_->clear();
    return refusal;
}

std::optional<Refusal> PayPage::moveWeekIssues(PayrollIssueState from, PayrollIssueState to) {
    const auto production = session_.production();
    if (!production || !comparison_) return std::nullopt;
    int moved = 0;
    auto refusal = session_.perform(tr("Mark Payroll Issues"), [&](ModelContext& c) {
        const auto issues = payroll_issues::inState(c, production->id, from, comparison_->week.id);
        moved = static_cast<int>(issues.size());
        if (!issues.empty()) payroll_issues::setState(c, issues, to, std::nullopt, shell_widgets::now());
    });
    const QString now = qtext(label(to));
    status_->setText(refusal      ? refusal->message
                     : moved == 0 ? tr("No payroll issue of this week is %1.").arg(qtext(label(from)))
                     : moved == 1 ? tr("1 payroll issue is now %1.").arg(now)
                                  : tr("%1 payroll issues are now %2.").arg(moved).arg(now));
    return refusal;
}

void PayPage::showIssue(QTreeWidgetItem* item) {
    issueDetail_->clear();
    if (!item) return;
    const QVariant member = item->data(0, Qt::UserRole + 1);
    const int group = item->data(0, Qt::UserRole).toInt();
    if (!member.isValid() || group < 0 || group >= static_cast<int>(groups_.size())) return;
    const auto& members = groups_[static_cast<std::size_t>(group)].members;
    if (member.toInt() < 0 || member.toInt() >= static_cast<int>(members.size())) return;
    issueDetail_->setText(qtext(payroll_issues::detailText(members[static_cast<std::size_t>(member.toInt())])));
}

QString PayPage::issueDetailText() const { return issueDetail_->text(); }

QString PayPage::summaryText() const {
    const auto production = session_.production();
    if (!production || !comparison_) return {};
    return qtext(payroll_issues::summaryText(session_.context(), *production, comparison_->start));
}

QString PayPage::claimText() const {
    const auto production = session_.production();
    if (!production || !comparison_ || !review_) return {};
    return qtext(payroll_issues::claimText(session_.context(), *review_, *production, comparison_->week,
                                           {PayrollIssueState::needsAttention, PayrollIssueState::reported}));
}

void PayPage::reviewCandidate(int candidate) {
    const auto& batch = stubs_->batch();
    if (!batch || candidate < 0 || candidate >= static_cast<int>(batch->candidates.size())) return;
    const auto& c = batch->candidates[static_cast<std::size_t>(candidate)];
    if (!c.review) {
        status_->setText(c.failure ? qtext(*c.failure) : QString());
        return;
    }
    if (c.confirmed || c.duplicateFile) {
        status_->setText(c.confirmed ? tr("\u201C%1\u201D is confirmed; open it from the person's row to correct it.").arg(qtext(c.filename))
                                     : qtext(pay_stub_import_words::alreadyInBatch));
        return;
    }
    reviewing_ = candidate;
    reviewPanel_->review(*c.review, batch->existingCrewIDs);
    stack_->setCurrentWidget(reviewPanel_);
}

std::optional<Refusal> PayPage::openConfirmedStub(int row) {
    const auto production = session_.production();
    if (!production || !comparison_ || row < 0 || row >= static_cast<int>(comparison_->comparisons.size())) return std::nullopt;
    const auto& person = comparison_->comparisons[static_cast<std::size_t>(row)];
    std::optional<ConfirmedPayStubActualPay> stub;
    std::vector<PayStubCrewOption> crew;
    try {
        stub = confirmed_pay_stubs::find(session_.context(), person.crewID, person.weekID, true);
        const auto week = payroll_week_repository::fetchWeek(session_.context(), person.weekID);
        if (stub && week) crew = importSetting(session_.context(), production->id, *week).crew;
    } catch (...) {
        const Refusal refusal = refusalOf(std::current_exception());
        status_->setText(refusal.message);
        return refusal;
    }
    if (!stub) {
        const Refusal refusal{{}, tr("%1 has no confirmed pay stub for this Payroll Week.").arg(qtext(person.crewName))};
        status_->setText(refusal.message);
        return refusal;
    }
    reviewing_ = -1;
    reviewPanel_->review(reviewOfConfirmed(*stub, std::move(crew)));
    if (reviewPanel_->page().pageCount() == 0) {
        const Refusal refusal{qtext(confirmed_pay_stub_words::openFailedTitle), qtext(confirmed_pay_stub_words::invalidPDF)};
        status_->setText(refusal.message);
        return refusal;
    }
    stack_->setCurrentWidget(reviewPanel_);
    return std::nullopt;
}

void PayPage::closeReview() {
    reviewing_ = -1;
    stack_->setCurrentIndex(0);
}

bool PayPage::isReviewing() const { return stack_->currentWidget() == reviewPanel_; }

QString PayPage::dashboardText() const { return dashboard_->text(); }

}  // namespace tessel
