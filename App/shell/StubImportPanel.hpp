#pragma once

#include <QWidget>

#include <atomic>
#include <optional>

#include "App/actualpay/PayStubImport.hpp"
#include "App/shell/ShellSession.hpp"

class QLabel;
class QProgressBar;
class QPushButton;
class QTableWidget;
class QThread;

namespace tessel {

// Pay stubs for one Payroll Week: files or a folder chosen or dropped, read on a worker thread (the
// window never waits for OCR) with a progress bar, then the batch as a table of each file's status,
// proposed crew member, printed period, gross and review reasons; "Confirm Ready" confirms the ready ones.
class StubImportPanel : public QWidget {
    Q_OBJECT
public:
    explicit StubImportPanel(ShellSession& session, QWidget* parent = nullptr);
    ~StubImportPanel() override;

    void setWeek(const std::optional<PayrollWeek>& week);
    // Starts reading the files (a folder stands for its PDF files); the refusal when nothing can be read.
    std::optional<Refusal> importFiles(const QStringList& paths);
    bool isReading() const noexcept { return worker_ != nullptr; }
    const std::optional<PayStubBatchSession>& batch() const noexcept { return batch_; }
    // Confirms every ready stub as one action; the refusal when refused.
    std::optional<Refusal> confirmReady();
    // A candidate reviewed and confirmed one by one: it shows as confirmed, and its crew member as having
    // confirmed pay for the week.
    void markConfirmed(int candidate, const PayStubReviewSession& review);

signals:
    void batchRead();
    // The user asked to review one candidate (by double-clicking it or "Review Pay Stub…").
    void reviewRequested(int candidate);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void showBatch();
    void finished(PayStubBatchSession batch, std::optional<Refusal> failure);

    ShellSession& session_;
    std::optional<PayrollWeek> week_;
    std::optional<PayStubBatchSession> batch_;
    QThread* worker_ = nullptr;
    QLabel* heading_ = nullptr;
    QLabel* message_ = nullptr;
    QProgressBar* progress_ = nullptr;
    QTableWidget* table_ = nullptr;
    QPushButton* confirm_ = nullptr;
    QPushButton* review_ = nullptr;
};

}  // namespace tessel
