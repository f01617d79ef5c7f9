#pragma once

#include <QWidget>

#include <functional>
#include <optional>

#include "App/dtsexport/GenericDTSRenderer.hpp"
#include "App/dtsexport/ProductionDTSTemplates.hpp"
#include "App/actualpay/StubEvidence.hpp"
#include "App/shell/ShellSession.hpp"

class QComboBox;
class QLabel;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace tessel {
class PdfPageView;

// The production's own DTS form: a blank page imported, the interpreter's proposals drawn over it, each
// accepted, left blank or placed again by drawing its region with the mouse, the crew rows confirmed or
// drawn, a test fill of each scenario viewed on the page, and the draft approved for export.
class TemplatePage : public QWidget {
    Q_OBJECT
public:
    explicit TemplatePage(ShellSession& session, QWidget* parent = nullptr);

    std::optional<Refusal> importBlankPage(const QString& path);
    // The mappings as the table shows them, in order.
    const std::vector<DTSTemplateReviewMapping>& mappings() const noexcept { return mappings_; }
    std::optional<Refusal> acceptMapping(int row);
    std::optional<Refusal> leaveBlank(int row);
    // The next region drawn on the page places the field (a crew-row field: within the row it is drawn in).
    void drawField(DTSSemanticFieldID field);
    // The next region drawn on the page is the first crew row; `count` rows follow from it.
    void drawCrewRows(int count);
    std::optional<Refusal> confirmCrewRows();
    // Fills the draft with invented data and shows the result on the page; back to the blank page with showDraft().
    std::optional<Refusal> testFill(GenericDTSTestFillScenario scenario);
    void showDraft();
    std::optional<Refusal> approve();

    PdfPageView& page() noexcept { return *page_; }
    QString blockersText() const;
    QString statusText() const;

private:
    void reload();
    void showMarks();
    void regionDrawn(const PageRectangle& region);
    std::optional<Refusal> editDraft(const QString& name, const std::function<void(ProductionDTSTemplateDefinition&)>& edit);
    std::optional<Refusal> refused(const std::optional<Refusal>& refusal);

    ShellSession& session_;
    std::optional<StoredDTSTemplate> shown_;  // the draft, else the approved template
    bool isDraft_ = false;
    bool showingFill_ = false;
    std::vector<DTSTemplateReviewMapping> mappings_;
    std::function<void(const PageRectangle&)> pendingDrawing_;
    PdfPageView* page_ = nullptr;
    QLabel* state_ = nullptr;
    QTableWidget* table_ = nullptr;
    QComboBox* field_ = nullptr;
    QSpinBox* rowCount_ = nullptr;
    QLabel* rows_ = nullptr;
    QComboBox* scenario_ = nullptr;
    QPushButton* back_ = nullptr;
    QLabel* blockers_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tessel
