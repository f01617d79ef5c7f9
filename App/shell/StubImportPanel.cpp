#include "StubImportPanel.hpp"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QThread>
#include <QVBoxLayout>

#include <thread>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/model/CalendarText.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

QString crewName(const PayStubBatchSession& batch, const std::optional<Uuid>& id) {
    if (!id) return {};
    for (const auto& person : batch.crew) {
        if (person.id == *id) return qtext(choiceText(person));
    }
    return {};
}

QString periodText(const PayStubReviewSession& review) {
    const auto date = [](const PayStubReviewedDate& d) { return d.value ? qtext(calendar_text::formatDate(*d.value)) : QString("?"); };
    return date(review.payPeriodStart) + " \u2013 " + date(review.payPeriodEnd);
}

}  // namespace

StubImportPanel::StubImportPanel(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    setAcceptDrops(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* buttons = new QHBoxLayout;
    heading_ = new QLabel;
    auto* files = new QPushButton(tr("Import Pay Stubs\u2026"));
    connect(files, &QPushButton::clicked, this, [this] {
        const QStringList chosen = QFileDialog::getOpenFileNames(this, tr("Import Pay Stubs"), QString(), tr("PDF (*.pdf *.PDF)"));
        if (!chosen.isEmpty()) importFiles(chosen);
    });
    auto* folder = new QPushButton(tr("Import Folder\u2026"));
    connect(folder, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getExistingDirectory(this, tr("Import Folder"));
        if (!chosen.isEmpty()) importFiles({chosen});
    });
    review_ = new QPushButton(tr("Review Pay Stub\u2026"));
    review_->setEnabled(false);
    connect(review_, &QPushButton::clicked, this, [this] {
        if (table_->currentRow() >= 0) emit reviewRequested(table_->currentRow());
    });
    confirm_ = new QPushButton(tr("Confirm Ready"));
    confirm_->setEnabled(false);
    connect(confirm_, &QPushButton::clicked, this, [this] { confirmReady(); });
    progress_ = new QProgressBar;
    progress_->setVisible(false);
    buttons->addWidget(heading_);
    buttons->addStretch(1);
    buttons->addWidget(progress_);
    buttons->addWidget(files);
    buttons->addWidget(folder);
    buttons->addWidget(review_);
    buttons->addWidget(confirm_);
    layout->addLayout(buttons);
    message_ = new QLabel(tr("Drop pay-stub PDFs or a folder of them here."));
    message_->setObjectName("stubMessage");
    message_->setWordWrap(true);
    message_->setStyleSheet("color: #555;");
    layout->addWidget(message_);
    table_ = new QTableWidget(0, 6);
    table_->setObjectName("stubBatch");
    table_->setHorizontalHeaderLabels({tr("File"), tr("Status"), tr("Crew member"), tr("Printed period"), tr("Gross"), tr("Review")});
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->verticalHeader()->hide();
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setStretchLastSection(true);
    table_->setWordWrap(true);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(table_, &QTableWidget::cellDoubleClicked, this, [this](int row) { emit reviewRequested(row); });
    connect(table_, &QTableWidget::currentCellChanged, this, [this](int row) {
        // A file that could not be read has nothing to review.
        review_->setEnabled(batch_ && row >= 0 && row < static_cast<int>(batch_->candidates.size()) &&
                            batch_->candidates[static_cast<std::size_t>(row)].review.has_value());
    });
    layout->addWidget(table_, 1);
}

StubImportPanel::~StubImportPanel() {
    if (worker_) worker_->wait();  // the reading thread reports to this panel
}

void StubImportPanel::setWeek(const std::optional<PayrollWeek>& week) {
    if (worker_) return;  // a batch being read keeps its week
    if (week_ && week && week_->id == week->id) return;
    week_ = week;
    batch_.reset();
    showBatch();
    heading_->setText(week ? tr("Pay stubs for the week of %1").arg(qtext(calendar_text::formatDate(CalendarDate(std::chrono::floor<std::chrono::days>(week->startDate)))))
                           : QString());
}

std::optional<Refusal> StubImportPanel::importFiles(const QStringList& paths) {
    const auto production = session_.production();
    if (!production || !week_ || worker_) return Refusal{{}, tr("Choose a Payroll Week first.")};
    std::optional<PayStubImportSetting> setting;
    std::vector<PayStubBatchInput> inputs;
    try {
        setting = importSetting(session_.context(), production->id, *week_);
        std::vector<std::filesystem::path> files;
        for (const auto& path : paths) files.emplace_back(utf8(path));
        inputs = batchInputs(files);
    } catch (...) {
        const Refusal refusal = refusalOf(std::current_exception());
        message_->setText(refusal.message);
        return refusal;
    }
    progress_->setRange(0, static_cast<int>(inputs.size()));
    progress_->setValue(0);
    progress_->setVisible(true);
    confirm_->setEnabled(false);
    message_->setText(tr("Reading %1 files\u2026").arg(inputs.size()));
    const PayStubBatchOptions options{PayStubTextSource::embeddedPDFText, static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, 2u)),
                                      shell_widgets::now()};
    // The files are read away from the window; each report and the result come back through its event loop.
    worker_ = QThread::create([this, inputs = std::move(inputs), setting = *setting, options] {
        std::optional<Refusal> failure;
        PayStubBatchSession read{setting.week, setting.crew, {}, setting.existing, false, 0, std::nullopt};
        try {
            read = importBatch(inputs, setting.week, setting.crew, setting.existing, options, [this](std::size_t done, std::size_t) {
                QMetaObject::invokeMethod(progress_, [this, done] { progress_->setValue(static_cast<int>(done)); }, Qt::QueuedConnection);
            });
        } catch (...) {
            failure = refusalOf(std::current_exception());
        }
        QMetaObject::invokeMethod(this, [this, read = std::move(read), failure]() mutable { finished(std::move(read), failure); }, Qt::QueuedConnection);
    });
    worker_->start();
    return std::nullopt;
}

void StubImportPanel::finished(PayStubBatchSession batch, std::optional<Refusal> failure) {
    worker_->wait();
    worker_->deleteLater();
    worker_ = nullptr;
    progress_->setVisible(false);
    if (failure) {
        message_->setText(failure->message);
        return;
    }
    batch_ = std::move(batch);
    showBatch();
    emit batchRead();
}

void StubImportPanel::showBatch() {
    table_->setRowCount(0);
    if (!batch_) {
        confirm_->setEnabled(false);
        return;
    }
    int ready = 0;
    for (const auto& candidate : batch_->candidates) {
        const int row = table_->rowCount();
        table_->insertRow(row);
        const auto status = statusOf(candidate, *batch_);
        ready += status == PayStubBatchStatus::ready ? 1 : 0;
        QStringList reasons;
        for (const auto& reason : reviewReasons(candidate, *batch_)) reasons << qtext(reason);
        const auto& review = candidate.review;
        const QStringList cells{qtext(candidate.filename), qtext(label(status)), review ? crewName(*batch_, review->selectedCrewMemberID) : QString(),
                                review ? periodText(*review) : QString(),
                                review ? qtext(review->gross.rawValue) : QString(), reasons.join("\n")};
        for (int column = 0; column < cells.size(); ++column) table_->setItem(row, column, new QTableWidgetItem(cells[column]));
        if (status == PayStubBatchStatus::ready || status == PayStubBatchStatus::confirmed) table_->item(row, 1)->setForeground(QColor(0x2b, 0x6a, 0x2b));
    }
    table_->resizeRowsToContents();
    confirm_->setEnabled(ready > 0);
    message_->setText(batch_->message ? qtext(*batch_->message) : tr("%1 of %2 files ready to confirm.").arg(ready).arg(batch_->candidates.size()));
}

std::optional<Refusal> StubImportPanel::confirmReady() {
    if (!batch_) return std::nullopt;
    int confirmed = 0;
    auto working = *batch_;
    const auto refusal = session_.perform(tr("Confirm Pay Stubs"), [&](ModelContext& c) { confirmed = tessel::confirmReady(c, working, shell_widgets::now()); });
    if (refusal) {
        message_->setText(refusal->message + " " + tr("Nothing was confirmed."));
        return refusal;
    }
    batch_ = std::move(working);
    showBatch();
    message_->setText(confirmed == 1 ? tr("Confirmed 1 pay stub.") : tr("Confirmed %1 pay stubs.").arg(confirmed));
    return std::nullopt;
}

void StubImportPanel::markConfirmed(int candidate, const PayStubReviewSession& review) {
    if (!batch_ || candidate < 0 || candidate >= static_cast<int>(batch_->candidates.size())) return;
    auto& c = batch_->candidates[static_cast<std::size_t>(candidate)];
    c.review = review;
    c.confirmed = true;
    if (review.selectedCrewMemberID) batch_->existingCrewIDs.insert(*review.selectedCrewMemberID);
    showBatch();
    message_->setText(tr("Confirmed \u201C%1\u201D.").arg(qtext(c.filename)));
}

void StubImportPanel::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) event->acceptProposedAction();
}

void StubImportPanel::dropEvent(QDropEvent* event) {
    QStringList paths;
    for (const auto& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) paths << url.toLocalFile();
    }
    if (!paths.isEmpty()) importFiles(paths);
    event->acceptProposedAction();
}

}  // namespace tessel
