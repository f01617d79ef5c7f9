#pragma once

#include <QWidget>

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "App/actualpay/PayStubReview.hpp"
#include "App/shell/ShellSession.hpp"

class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;
class QTableWidgetItem;

namespace tessel {
class PdfPageView;

// One pay stub under review: its page beside the values proposed from it. Choosing a value marks where it
// was printed and shows what each reading saw; a value typed over is marked as corrected; the crew member,
// the period's association with the week and everything still unresolved are in view until the stub is
// confirmed. A stub confirmed earlier is opened the same way, to be corrected and saved, or removed.
class StubReviewPanel : public QWidget {
    Q_OBJECT
public:
    explicit StubReviewPanel(ShellSession& session, QWidget* parent = nullptr);

    // `existing`: crew members whose stub for the week is already confirmed, whom confirming would replace.
    void review(PayStubReviewSession session, std::set<Uuid> existing = {});
    const std::optional<PayStubReviewSession>& session() const noexcept { return session_; }

    // Confirms the stub as the crew member's Actual Pay for the week (`replace`: in place of the one
    // confirmed before), or saves a confirmed stub's corrections; the refusal when refused.
    std::optional<Refusal> confirm(bool replace = false);
    // Removes a confirmed stub's Actual Pay authority.
    std::optional<Refusal> remove();

    PdfPageView& page() noexcept { return *page_; }
    QString remainingText() const;
    QString detailText() const;

signals:
    void confirmed(const tessel::PayStubReviewSession& session);
    void removed();
    void closed();

private:
    void showSession();
    void showFacts();
    void showEarnings();
    void showRemaining();
    void factEdited(QTableWidgetItem* item);
    void earningEdited(QTableWidgetItem* item);
    void crewChosen(int index);
    void showEvidence(const std::vector<PayStubEvidenceExcerpt>& evidence, const std::optional<std::string>& reason, bool corrected);
    void evidenceOfFact(int row);
    void evidenceOfEarning(int row, int column);
    void askAndConfirm();
    void askAndRemove();

    ShellSession& shell_;
    std::optional<PayStubReviewSession> session_;
    std::set<Uuid> existing_;
    bool showing_ = false;  // tables being filled: their change signals are not edits
    PdfPageView* page_ = nullptr;
    QLabel* heading_ = nullptr;
    QComboBox* crew_ = nullptr;
    QLabel* crewReason_ = nullptr;
    QTableWidget* facts_ = nullptr;
    QTableWidget* earnings_ = nullptr;
    QLabel* detail_ = nullptr;
    QCheckBox* acknowledge_ = nullptr;
    QLabel* remaining_ = nullptr;
    QLabel* status_ = nullptr;
    QPushButton* confirm_ = nullptr;
    QPushButton* remove_ = nullptr;
};

}  // namespace tessel
