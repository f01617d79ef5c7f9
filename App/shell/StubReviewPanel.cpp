#include "StubReviewPanel.hpp"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/model/CalendarText.hpp"
#include "App/shell/PdfPageView.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

enum Fact { name, occupation, periodStart, periodEnd, totalHours, gross, factCount };
enum EarningColumn { labelColumn, hoursColumn, rateColumn, amountColumn, reviewColumn };

const QColor needsLook(0xfd, 0xe2, 0xe2);
const QColor correctedColour(0xe3, 0xee, 0xfc);
const QColor evidenceColour(0xd0, 0x70, 0x00);

// What a table cell shows about one value, whatever its type.
struct ValueView {
    QString text;
    const std::vector<PayStubEvidenceExcerpt>* evidence;
    std::optional<std::string> reason;
    bool corrected;
};

template <typename Value>
ValueView viewOf(const PayStubReviewed<Value>& field, const QString& text) {
    return {text, &field.evidence, field.reviewReason, field.wasUserCorrected};
}

ValueView viewOf(const PayStubReviewedDecimal& field) {
    return {qtext(field.rawValue), &field.evidence, field.reviewReason, field.wasUserCorrected};
}

QString dateText(const PayStubReviewedDate& date) { return date.value ? qtext(calendar_text::formatDate(*date.value)) : QString(); }

ValueView factView(const PayStubReviewSession& s, int fact) {
    switch (fact) {
        case name: return viewOf(s.printedEmployeeName, qtext(s.printedEmployeeName.value.value_or("")));
        case occupation: return viewOf(s.printedOccupation, qtext(s.printedOccupation.value.value_or("")));
        case periodStart: return viewOf(s.payPeriodStart, dateText(s.payPeriodStart));
        case periodEnd: return viewOf(s.payPeriodEnd, dateText(s.payPeriodEnd));
        case totalHours: return viewOf(s.totalHours);
        default: return viewOf(s.gross);
    }
}

ValueView earningView(const PayStubReviewedEarningLine& line, int column) {
    switch (column) {
        case labelColumn: return viewOf(line.printedLabel, qtext(line.printedLabel.value.value_or("")));
        case hoursColumn: return viewOf(line.hours);
        case rateColumn: return viewOf(line.rate);
        default: return viewOf(line.amount);
    }
}

// A value's cell: what was read or typed, tinted when it needs a look or was corrected, the reason as its tip.
QTableWidgetItem* valueItem(const ValueView& view) {
    auto* item = new QTableWidgetItem(view.text);
    if (view.corrected) {
        item->setBackground(correctedColour);
        item->setToolTip(QObject::tr("Corrected"));
    } else if (view.reason) {
        item->setBackground(needsLook);
        item->setToolTip(qtext(*view.reason));
    }
    return item;
}

QTableWidgetItem* readOnly(const QString& text) {
    auto* item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    return item;
}

QString reviewText(const ValueView& view) {
    if (view.corrected) return QObject::tr("Corrected");
    return view.reason ? qtext(*view.reason) : QString();
}

QTableWidget* reviewTable(int columns, const QStringList& headers) {
    auto* table = new QTableWidget(0, columns);
    table->setHorizontalHeaderLabels(headers);
    table->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table->horizontalHeader()->setStretchLastSection(true);
    table->setSelectionMode(QAbstractItemView::SingleSelection);
    table->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    table->setWordWrap(true);
    return table;
}

}  // namespace

StubReviewPanel::StubReviewPanel(ShellSession& session, QWidget* parent) : QWidget(parent), shell_(session) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* top = new QHBoxLayout;
    auto* back = new QPushButton(tr("\u2190 Back to Pay Check"));
    connect(back, &QPushButton::clicked, this, &StubReviewPanel::closed);
    heading_ = new QLabel;
    heading_->setStyleSheet("font-weight: bold;");
    top->addWidget(back);
    top->addWidget(heading_, 1);
    layout->addLayout(top);

    auto* splitter = new QSplitter(Qt::Horizontal);
    auto* pageScroll = new QScrollArea;
    pageScroll->setWidgetResizable(true);
    page_ = new PdfPageView;
    page_->setObjectName("stubPage");
    pageScroll->setWidget(page_);
    splitter->addWidget(pageScroll);

    auto* form = new QWidget;
    auto* formLayout = new QVBoxLayout(form);
    formLayout->setContentsMargins(8, 0, 0, 0);
    auto* crewRow = new QHBoxLayout;
    crewRow->addWidget(new QLabel(tr("Crew member:")));
    crew_ = new QComboBox;
    crew_->setObjectName("stubCrew");
    connect(crew_, &QComboBox::activated, this, &StubReviewPanel::crewChosen);
    crewRow->addWidget(crew_, 1);
    formLayout->addLayout(crewRow);
    crewReason_ = new QLabel;
    crewReason_->setWordWrap(true);
    crewReason_->setStyleSheet("color: #a00000;");
    formLayout->addWidget(crewReason_);

    // What each reading saw is shown below the tables for the value chosen, where there is room for it.
    facts_ = reviewTable(2, {tr("Value"), tr("Review")});
    facts_->setObjectName("stubFacts");
    facts_->setRowCount(factCount);
    facts_->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    facts_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    facts_->setVerticalHeaderLabels({tr("Printed name"), tr("Occupation"), tr("Pay period start"), tr("Pay period end"), tr("Total hours"), tr("Gross")});
    connect(facts_, &QTableWidget::itemChanged, this, &StubReviewPanel::factEdited);
    connect(facts_, &QTableWidget::currentCellChanged, this, [this](int row) { evidenceOfFact(row); });
    formLayout->addWidget(facts_);
    acknowledge_ = new QCheckBox(qtext(pay_stub_review_words::acknowledgePeriod));
    acknowledge_->setObjectName("stubAcknowledge");
    connect(acknowledge_, &QCheckBox::toggled, this, [this](bool on) {
        if (showing_ || !session_) return;
        session_->weekMismatchAcknowledged = on;
        showRemaining();
    });
    formLayout->addWidget(acknowledge_);

    earnings_ = reviewTable(5, {tr("Earning"), tr("Hours"), tr("Rate"), tr("Amount"), tr("Review")});
    earnings_->setObjectName("stubEarnings");
    connect(earnings_, &QTableWidget::itemChanged, this, &StubReviewPanel::earningEdited);
    connect(earnings_, &QTableWidget::currentCellChanged, this, [this](int row, int column) { evidenceOfEarning(row, column); });
    formLayout->addWidget(earnings_, 1);
    auto* lineButtons = new QHBoxLayout;
    auto* addLine = new QPushButton(tr("Add Earning Line"));
    connect(addLine, &QPushButton::clicked, this, [this] {
        if (!session_) return;
        addEarningLine(*session_);
        showEarnings();
        showRemaining();
        earnings_->setCurrentCell(earnings_->rowCount() - 1, labelColumn);
    });
    auto* removeLine = new QPushButton(tr("Remove Earning Line"));
    connect(removeLine, &QPushButton::clicked, this, [this] {
        if (!session_ || earnings_->currentRow() < 0) return;
        removeEarningLine(*session_, static_cast<std::size_t>(earnings_->currentRow()));
        showEarnings();
        showRemaining();
    });
    lineButtons->addWidget(addLine);
    lineButtons->addWidget(removeLine);
    lineButtons->addStretch(1);
    formLayout->addLayout(lineButtons);

    detail_ = new QLabel;
    detail_->setObjectName("stubEvidence");
    detail_->setWordWrap(true);
    detail_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    detail_->setStyleSheet("background: #f6f6f6; padding: 4px;");
    formLayout->addWidget(detail_);
    remaining_ = new QLabel;
    remaining_->setObjectName("stubRemaining");
    remaining_->setWordWrap(true);
    formLayout->addWidget(remaining_);
    status_ = new QLabel;
    status_->setWordWrap(true);
    status_->setStyleSheet("color: #a00000;");
    formLayout->addWidget(status_);
    auto* actions = new QHBoxLayout;
    remove_ = new QPushButton(tr("Remove Confirmed Pay Stub\u2026"));
    connect(remove_, &QPushButton::clicked, this, &StubReviewPanel::askAndRemove);
    confirm_ = new QPushButton;
    confirm_->setDefault(true);
    connect(confirm_, &QPushButton::clicked, this, &StubReviewPanel::askAndConfirm);
    actions->addWidget(remove_);
    actions->addStretch(1);
    actions->addWidget(confirm_);
    formLayout->addLayout(actions);
    splitter->addWidget(form);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 2);
    splitter->setSizes({900, 600});
    layout->addWidget(splitter, 1);
}

void StubReviewPanel::review(PayStubReviewSession session, std::set<Uuid> existing) {
    session_ = std::move(session);
    existing_ = std::move(existing);
    status_->clear();
    page_->setDocument(QByteArray::fromStdString(session_->sourcePDFData));
    showSession();
    facts_->setCurrentCell(name, 0);
}

void StubReviewPanel::showSession() {
    const auto& s = *session_;
    heading_->setText(tr("%1 \u2014 Payroll Week %2")
                          .arg(qtext(s.sourceFilename), qtext(calendar_text::formatPeriod(s.week.start, s.week.end))));
    {
        const QSignalBlocker quiet(crew_);
        crew_->clear();
        if (!s.selectedCrewMemberID) crew_->addItem(qtext(pay_stub_review_words::chooseCrew), QString());
        for (const auto& option : s.crewOptions) {
            crew_->addItem(qtext(choiceText(option)), QString::fromStdString(option.id.text()));
            if (s.selectedCrewMemberID == option.id) crew_->setCurrentIndex(crew_->count() - 1);
        }
    }
    remove_->setVisible(s.isExistingAuthority);
    showFacts();
    showEarnings();
    showRemaining();
}

void StubReviewPanel::showFacts() {
    showing_ = true;
    for (int fact = 0; fact < factCount; ++fact) {
        const ValueView view = factView(*session_, fact);
        facts_->setItem(fact, 0, valueItem(view));
        facts_->setItem(fact, 1, readOnly(reviewText(view)));
    }
    showing_ = false;
}

void StubReviewPanel::showEarnings() {
    showing_ = true;
    const int current = earnings_->currentRow();
    earnings_->setRowCount(static_cast<int>(session_->earningLines.size()));
    for (int row = 0; row < earnings_->rowCount(); ++row) {
        const auto& line = session_->earningLines[static_cast<std::size_t>(row)];
        QStringList reasons;
        for (int column = labelColumn; column <= amountColumn; ++column) {
            const ValueView view = earningView(line, column);
            earnings_->setItem(row, column, valueItem(view));
            const QString review = reviewText(view);
            if (!review.isEmpty() && !reasons.contains(review)) reasons << review;
        }
        earnings_->setItem(row, reviewColumn, readOnly(reasons.join("\n")));
        for (int column = hoursColumn; column <= amountColumn; ++column) earnings_->item(row, column)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    }
    if (current >= 0 && current < earnings_->rowCount()) earnings_->setCurrentCell(current, earnings_->currentColumn());
    showing_ = false;
}

void StubReviewPanel::showRemaining() {
    const auto& s = *session_;
    // The association is offered only for a whole period that is another week's.
    acknowledge_->setVisible(s.payPeriodStart.value && s.payPeriodEnd.value && !periodMatchesWeek(s));
    {
        const QSignalBlocker quiet(acknowledge_);
        acknowledge_->setChecked(s.weekMismatchAcknowledged);
    }
    crewReason_->setText(s.crewReviewReason ? qtext(*s.crewReviewReason) : QString());
    crewReason_->setVisible(s.crewReviewReason.has_value());

    const auto unresolved = unresolvedItems(s);
    QString text;
    if (!unresolved.empty()) {
        text = "<b>" + qtext(pay_stub_review_words::remainingItems).toHtmlEscaped() + "</b><ul style='margin: 0'>";
        for (const auto& item : unresolved) text += "<li>" + qtext(item).toHtmlEscaped() + "</li>";
        text += "</ul>";
    } else {
        const auto reasons = valueReviewReasons(s);
        text = reasons.empty() ? tr("Every value is read and checked. Ready to confirm.")
                               : tr("Ready to confirm once you have compared the tinted values with the page.");
    }
    remaining_->setText(text);
    remaining_->setStyleSheet(unresolved.empty() ? "color: #2b6a2b;" : "color: #a00000;");

    const bool replacing = !s.isExistingAuthority && s.selectedCrewMemberID && existing_.contains(*s.selectedCrewMemberID);
    confirm_->setText(s.isExistingAuthority ? tr("Save Pay Stub")
                      : replacing           ? qtext(confirmed_pay_stub_words::replaceTitle) + "\u2026"
                                            : tr("Confirm Pay Stub"));
    confirm_->setEnabled(unresolved.empty());
}

void StubReviewPanel::crewChosen(int index) {
    if (!session_) return;
    const auto id = Uuid::parse(utf8(crew_->itemData(index).toString()));
    if (!id) return;
    chooseCrewMember(*session_, *id);
    showSession();
}

void StubReviewPanel::factEdited(QTableWidgetItem* item) {
    if (showing_ || !session_ || item->column() != 0) return;
    auto& s = *session_;
    const std::string text = utf8(item->text().trimmed());
    status_->clear();
    switch (item->row()) {
        case name: correct(s.printedEmployeeName, text); break;
        case occupation: correct(s.printedOccupation, text); break;
        case periodStart:
        case periodEnd: {
            const auto date = calendar_text::parseDate(text);
            if (!date) {
                status_->setText(tr("Enter the date as %1.").arg(qtext(calendar_text::formatDate(s.week.start))));
                break;
            }
            correct(item->row() == periodStart ? s.payPeriodStart : s.payPeriodEnd, *date);
            break;
        }
        case totalHours: correct(s.totalHours, text); break;
        default: correct(s.gross, text); break;
    }
    // Settled after the table's own edit has finished: the cell being committed is replaced.
    QMetaObject::invokeMethod(this, [this, row = item->row()] {
        showFacts();
        showRemaining();
        evidenceOfFact(row);
    }, Qt::QueuedConnection);
}

void StubReviewPanel::earningEdited(QTableWidgetItem* item) {
    if (showing_ || !session_ || item->column() > amountColumn) return;
    auto& line = session_->earningLines.at(static_cast<std::size_t>(item->row()));
    const std::string text = utf8(item->text().trimmed());
    switch (item->column()) {
        case labelColumn: correct(line.printedLabel, text); break;
        case hoursColumn: correct(line.hours, text); break;
        case rateColumn: correct(line.rate, text); break;
        default: correct(line.amount, text); break;
    }
    QMetaObject::invokeMethod(this, [this, row = item->row(), column = item->column()] {
        showEarnings();
        showRemaining();
        evidenceOfEarning(row, column);
    }, Qt::QueuedConnection);
}

void StubReviewPanel::evidenceOfFact(int row) {
    if (!session_ || row < 0 || row >= factCount) return;
    const ValueView view = factView(*session_, row);
    showEvidence(*view.evidence, view.reason, view.corrected);
}

void StubReviewPanel::evidenceOfEarning(int row, int column) {
    if (!session_ || row < 0 || row >= static_cast<int>(session_->earningLines.size())) return;
    const ValueView view = earningView(session_->earningLines[static_cast<std::size_t>(row)], std::min(column, int(amountColumn)));
    showEvidence(*view.evidence, view.reason, view.corrected);
}

// Marks where the chosen value was printed (the reading it was taken from first) and says what each
// reading saw, so that a disagreement is settled by looking at the page.
void StubReviewPanel::showEvidence(const std::vector<PayStubEvidenceExcerpt>& evidence, const std::optional<std::string>& reason, bool corrected) {
    std::vector<PdfPageView::Mark> marks;
    QStringList lines;
    for (const auto& excerpt : evidence) {
        lines << "<b>" + qtext(label(excerpt.source)).toHtmlEscaped() + ":</b> " + qtext(excerpt.rawText).toHtmlEscaped();
        if (!excerpt.area) continue;
        if (marks.empty()) page_->showPage(excerpt.area->pageIndex);
        if (excerpt.area->pageIndex == page_->page()) marks.push_back({excerpt.area->bounds, evidenceColour, marks.empty()});
    }
    page_->setMarks(std::move(marks));
    if (evidence.empty()) lines << tr("Nothing was read for this value.");
    if (corrected) lines << tr("Corrected by you.");
    if (reason) lines << "<span style='color: #a00000'>" + qtext(*reason).toHtmlEscaped() + "</span>";
    detail_->setText(lines.join("<br>"));
}

QString StubReviewPanel::remainingText() const { return remaining_->text(); }
QString StubReviewPanel::detailText() const { return detail_->text(); }

std::optional<Refusal> StubReviewPanel::confirm(bool replace) {
    if (!session_) return std::nullopt;
    std::optional<ConfirmedPayStubActualPay> record;
    try {
        record = confirmedRecord(*session_, shell_widgets::now());
    } catch (...) {
        const Refusal refusal = refusalOf(std::current_exception());
        status_->setText(refusal.message);
        return refusal;
    }
    const bool existing = session_->isExistingAuthority;
    const auto refusal = shell_.perform(existing ? tr("Save Pay Stub") : tr("Confirm Pay Stub"), [&](ModelContext& c) {
        if (existing) {
            confirmed_pay_stubs::update(c, *record);
        } else {
            confirmed_pay_stubs::confirm(c, *record, replace);
        }
    });
    if (refusal) {
        status_->setText(refusal->message);
        return refusal;
    }
    emit confirmed(*session_);
    return std::nullopt;
}

std::optional<Refusal> StubReviewPanel::remove() {
    if (!session_ || !session_->isExistingAuthority) return std::nullopt;
    const Uuid id = session_->recordID;
    const auto refusal = shell_.perform(tr("Remove Confirmed Pay Stub"), [&](ModelContext& c) { confirmed_pay_stubs::remove(c, id); });
    if (refusal) {
        status_->setText(refusal->message);
        return refusal;
    }
    emit removed();
    return std::nullopt;
}

void StubReviewPanel::askAndConfirm() {
    if (!session_) return;
    const bool replacing = !session_->isExistingAuthority && session_->selectedCrewMemberID && existing_.contains(*session_->selectedCrewMemberID);
    if (replacing) {
        QMessageBox question(QMessageBox::Question, qtext(confirmed_pay_stub_words::replaceTitle), qtext(confirmed_pay_stub_words::replaceQuestion),
                             QMessageBox::Cancel, this);
        question.addButton(qtext(confirmed_pay_stub_words::replaceTitle), QMessageBox::DestructiveRole);
        if (question.exec() == QMessageBox::Cancel) return;
    }
    confirm(replacing);
}

void StubReviewPanel::askAndRemove() {
    QMessageBox question(QMessageBox::Warning, qtext(confirmed_pay_stub_words::removeTitle), qtext(confirmed_pay_stub_words::removeQuestion),
                         QMessageBox::Cancel, this);
    question.addButton(tr("Remove"), QMessageBox::DestructiveRole);
    if (question.exec() == QMessageBox::Cancel) return;
    remove();
}

}  // namespace tessel
