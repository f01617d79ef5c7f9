#include "TemplatePage.hpp"

#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>


#include "App/shell/PdfPageView.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

namespace templates = production_dts_templates;

const QColor mappedColour(0x15, 0x65, 0xc0);
const QColor reviewColour(0xd0, 0x70, 0x00);
const QColor rowColour(0x2b, 0x8a, 0x3e);

QString mappingStatus(const DTSTemplateReviewMapping& m) {
    if (m.explicitlyResolved) return QObject::tr("Left Blank");
    switch (m.status) {
        case DTSTemplateReviewMapping::Status::mapped: return QObject::tr("Mapped");
        case DTSTemplateReviewMapping::Status::review: return QObject::tr("Review");
        case DTSTemplateReviewMapping::Status::notMapped: return QObject::tr("Not Mapped");
    }
    return {};
}

QString fieldName(const DTSTemplateReviewMapping& m) {
    if (m.semanticFieldID) return qtext(dts_fields::field(*m.semanticFieldID).displayName);
    return qtext(m.label);
}

// A crew-row region as it lies in the first row, where the user sees it drawn.
std::optional<PageRectangle> onPage(const DTSTemplateReviewMapping& m, const ProductionDTSTemplateDefinition& d) {
    if (!m.region) return std::nullopt;
    const auto& r = *m.region;
    if (m.scope == DTSSemanticScope::document) return PageRectangle{r.x, r.y, r.width, r.height};
    if (d.crewRowSlots.empty()) return std::nullopt;
    const auto& row = d.crewRowSlots.front().region;
    return PageRectangle{row.x + r.x * row.width, row.y + r.y * row.height, r.width * row.width, r.height * row.height};
}

}  // namespace

TemplatePage::TemplatePage(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    auto* top = new QHBoxLayout;
    auto* title = new QLabel(tr("Production DTS Template"));
    title->setStyleSheet("font-size: 15pt; font-weight: bold;");
    top->addWidget(title);
    top->addSpacing(16);
    state_ = new QLabel;
    state_->setObjectName("templateState");
    top->addWidget(state_, 1);
    auto* import = new QPushButton(tr("Import Blank Page\u2026"));
    connect(import, &QPushButton::clicked, this, [this] {
        const QString chosen = QFileDialog::getOpenFileName(this, tr("Import Blank DTS Page"), QString(), tr("PDF (*.pdf *.PDF)"));
        if (!chosen.isEmpty()) importBlankPage(chosen);
    });
    auto* approveButton = new QPushButton(tr("Approve"));
    connect(approveButton, &QPushButton::clicked, this, [this] { approve(); });
    top->addWidget(import);
    top->addWidget(approveButton);
    layout->addLayout(top);

    auto* splitter = new QSplitter(Qt::Horizontal);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    page_ = new PdfPageView;
    page_->setObjectName("templatePageView");
    connect(page_, &PdfPageView::regionDrawn, this, &TemplatePage::regionDrawn);
    scroll->setWidget(page_);
    splitter->addWidget(scroll);

    auto* side = new QWidget;
    auto* sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(8, 0, 0, 0);
    table_ = shell_widgets::readOnlyTable({tr("Field"), tr("Where"), tr("Status")});
    table_->setObjectName("templateMappings");
    connect(table_, &QTableWidget::currentCellChanged, this, [this] { showMarks(); });
    sideLayout->addWidget(table_, 1);
    auto* mappingButtons = new QHBoxLayout;
    auto* accept = new QPushButton(tr("Accept"));
    accept->setToolTip(tr("Use the proposed region for the chosen field."));
    connect(accept, &QPushButton::clicked, this, [this] { acceptMapping(table_->currentRow()); });
    auto* blank = new QPushButton(tr("Leave Blank"));
    connect(blank, &QPushButton::clicked, this, [this] { leaveBlank(table_->currentRow()); });
    auto* redraw = new QPushButton(tr("Draw Region"));
    redraw->setToolTip(tr("Drag a rectangle on the page where the chosen field goes."));
    connect(redraw, &QPushButton::clicked, this, [this] {
        const int row = table_->currentRow();
        if (row >= 0 && row < static_cast<int>(mappings_.size()) && mappings_[static_cast<std::size_t>(row)].semanticFieldID) {
            drawField(*mappings_[static_cast<std::size_t>(row)].semanticFieldID);
        }
    });
    mappingButtons->addWidget(accept);
    mappingButtons->addWidget(blank);
    mappingButtons->addWidget(redraw);
    mappingButtons->addStretch(1);
    sideLayout->addLayout(mappingButtons);

    auto* placeBox = new QGroupBox(tr("Place another field"));
    auto* placeLayout = new QHBoxLayout(placeBox);
    field_ = new QComboBox;
    field_->setObjectName("templateField");
    for (const auto& field : dts_fields::catalogue()) {
        if (!field.isCurrentlyResolvable) continue;
        field_->addItem(qtext(field.displayName) + (field.scope == DTSSemanticScope::crewRow ? tr(" (each crew row)") : QString()), static_cast<int>(field.id));
    }
    auto* place = new QPushButton(tr("Draw on Page"));
    connect(place, &QPushButton::clicked, this, [this] { drawField(static_cast<DTSSemanticFieldID>(field_->currentData().toInt())); });
    placeLayout->addWidget(field_, 1);
    placeLayout->addWidget(place);
    sideLayout->addWidget(placeBox);

    auto* rowsBox = new QGroupBox(tr("Crew rows"));
    auto* rowsLayout = new QHBoxLayout(rowsBox);
    rows_ = new QLabel;
    rows_->setObjectName("templateRows");
    auto* confirm = new QPushButton(tr("Confirm Crew Rows"));
    connect(confirm, &QPushButton::clicked, this, [this] { confirmCrewRows(); });
    rowCount_ = new QSpinBox;
    rowCount_->setRange(1, 200);
    rowCount_->setValue(14);
    rowCount_->setSuffix(tr(" rows"));
    auto* drawRows = new QPushButton(tr("Draw First Row"));
    connect(drawRows, &QPushButton::clicked, this, [this] { drawCrewRows(rowCount_->value()); });
    rowsLayout->addWidget(rows_, 1);
    rowsLayout->addWidget(confirm);
    rowsLayout->addWidget(rowCount_);
    rowsLayout->addWidget(drawRows);
    sideLayout->addWidget(rowsBox);

    auto* fillBox = new QGroupBox(tr("Test fill"));
    auto* fillLayout = new QHBoxLayout(fillBox);
    scenario_ = new QComboBox;
    for (const auto scenario : {GenericDTSTestFillScenario::typical, GenericDTSTestFillScenario::full, GenericDTSTestFillScenario::overflow}) {
        scenario_->addItem(qtext(generic_dts_render::label(scenario)), static_cast<int>(scenario));
    }
    auto* fill = new QPushButton(tr("Test Fill"));
    connect(fill, &QPushButton::clicked, this, [this] { testFill(static_cast<GenericDTSTestFillScenario>(scenario_->currentData().toInt())); });
    back_ = new QPushButton(tr("Back to Template"));
    back_->setVisible(false);
    connect(back_, &QPushButton::clicked, this, &TemplatePage::showDraft);
    fillLayout->addWidget(scenario_, 1);
    fillLayout->addWidget(fill);
    fillLayout->addWidget(back_);
    sideLayout->addWidget(fillBox);

    blockers_ = new QLabel;
    blockers_->setObjectName("templateBlockers");
    blockers_->setWordWrap(true);
    sideLayout->addWidget(blockers_);
    status_ = new QLabel;
    status_->setWordWrap(true);
    sideLayout->addWidget(status_);
    splitter->addWidget(side);
    splitter->setSizes({760, 640});
    layout->addWidget(splitter, 1);
    shell_widgets::reloadWhenShown(this, session_, [this] { reload(); });
}

void TemplatePage::reload() {
    shown_.reset();
    mappings_.clear();
    const auto production = session_.production();
    if (production) {
        shown_ = templates::draft(session_.context(), production->id);
        isDraft_ = shown_.has_value();
        if (!shown_) shown_ = templates::approved(session_.context(), production->id);
    }
    if (shown_) mappings_ = templates::review(*shown_);
    const bool approvedToo = production && isDraft_ && templates::approved(session_.context(), production->id);
    state_->setText(!shown_    ? qtext(dts_template_words::missingSource)
                    : isDraft_ ? tr("Draft, not yet approved.") + (approvedToo ? " " + qtext(dts_template_words::replacementNotice) : QString())
                               : tr("Approved. ") + qtext(dts_template_words::usesApprovedPDF));
    const int current = table_->currentRow();
    table_->setRowCount(static_cast<int>(mappings_.size()));
    for (int row = 0; row < table_->rowCount(); ++row) {
        const auto& m = mappings_[static_cast<std::size_t>(row)];
        const QStringList cells{fieldName(m), m.scope == DTSSemanticScope::crewRow ? tr("Each crew row") : tr("Page"), mappingStatus(m)};
        for (int column = 0; column < cells.size(); ++column) {
            auto* item = new QTableWidgetItem(cells[column]);
            if (m.status == DTSTemplateReviewMapping::Status::review && !m.explicitlyResolved) item->setForeground(reviewColour);
            if (!m.evidence.empty()) item->setToolTip(qtext(m.evidence.front()));
            table_->setItem(row, column, item);
        }
    }
    if (current >= 0 && current < table_->rowCount()) table_->setCurrentCell(current, 0);
    if (shown_) {
        const auto& d = shown_->definition;
        rows_->setText(d.crewRowSlots.empty() ? qtext(dts_template_words::missingCrewRows)
                                              : tr("%1 crew rows, %2").arg(d.crewRowSlots.size()).arg(d.crewRowsConfirmed ? tr("confirmed") : tr("not yet confirmed")));
    } else {
        rows_->clear();
    }
    QStringList blocked;
    if (shown_ && isDraft_) {
        for (const auto& blocker : templates::blockers(*shown_)) blocked << qtext(blocker);
    }
    blockers_->setText(blocked.isEmpty() ? (isDraft_ ? tr("Ready to approve.") : QString()) : blocked.join("\n"));
    blockers_->setStyleSheet(blocked.isEmpty() ? "color: #2b6a2b;" : "color: #a00000;");
    if (!showingFill_) showDraft();
}

void TemplatePage::showDraft() {
    showingFill_ = false;
    back_->setVisible(false);
    page_->setDocument(shown_ ? QByteArray::fromStdString(shown_->sourcePDFData) : QByteArray());
    showMarks();
}

void TemplatePage::showMarks() {
    if (!shown_ || showingFill_) return;
    std::vector<PdfPageView::Mark> marks;
    for (const auto& slot : shown_->definition.crewRowSlots) {
        marks.push_back({{slot.region.x, slot.region.y, slot.region.width, slot.region.height}, rowColour, false, {}});
    }
    const int chosen = table_->currentRow();
    for (int i = 0; i < static_cast<int>(mappings_.size()); ++i) {
        const auto& m = mappings_[static_cast<std::size_t>(i)];
        const auto area = onPage(m, shown_->definition);
        if (!area || m.explicitlyResolved) continue;
        const QColor colour = m.status == DTSTemplateReviewMapping::Status::mapped ? mappedColour : reviewColour;
        marks.push_back({*area, colour, i == chosen, fieldName(m)});
    }
    page_->setMarks(std::move(marks));
}

std::optional<Refusal> TemplatePage::refused(const std::optional<Refusal>& refusal) {
    status_->setStyleSheet(refusal ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(refusal ? refusal->message : QString());
    return refusal;
}

std::optional<Refusal> TemplatePage::editDraft(const QString& name, const std::function<void(ProductionDTSTemplateDefinition&)>& edit) {
    const auto production = session_.production();
    if (!production) return refused(Refusal{{}, tr("Choose a production first.")});
    return refused(session_.perform(name, [&](ModelContext& c) {
        auto draft = templates::draft(c, production->id);
        if (!draft) throw DTSTemplateEditError("noDraft", std::string(dts_template_words::missingSource));
        edit(draft->definition);
        templates::saveDraft(c, *draft, shell_widgets::now());
    }));
}

std::optional<Refusal> TemplatePage::importBlankPage(const QString& path) {
    const auto production = session_.production();
    if (!production) return refused(Refusal{{}, tr("Choose a production first.")});
    const auto bytes = shell_widgets::readFile(path);
    if (!bytes) return refused(Refusal{{}, shell_widgets::unreadableFile(path)});
    showingFill_ = false;
    const std::string& pdf = *bytes;
    const auto refusal = refused(session_.perform(tr("Import Blank DTS Page"), [&](ModelContext& c) {
        templates::importDraft(c, production->id, pdf, shell_widgets::now());
    }));
    if (!refusal) status_->setText(tr("The interpreter\u2019s proposals are drawn over the page: accept each, leave it blank or draw its region."));
    return refusal;
}

std::optional<Refusal> TemplatePage::acceptMapping(int row) {
    if (row < 0 || row >= static_cast<int>(mappings_.size())) return std::nullopt;
    const auto m = mappings_[static_cast<std::size_t>(row)];
    if (!m.semanticFieldID || !m.region) return refused(Refusal{{}, tr("Nothing is proposed for this field: draw its region on the page.")});
    return editDraft(tr("Accept Field"), [&](ProductionDTSTemplateDefinition& d) { templates::place(d, *m.semanticFieldID, *m.region); });
}

std::optional<Refusal> TemplatePage::leaveBlank(int row) {
    if (row < 0 || row >= static_cast<int>(mappings_.size()) || !mappings_[static_cast<std::size_t>(row)].semanticFieldID) return std::nullopt;
    const auto field = *mappings_[static_cast<std::size_t>(row)].semanticFieldID;
    return editDraft(tr("Leave Field Blank"), [&](ProductionDTSTemplateDefinition& d) { templates::leaveBlank(d, field); });
}

void TemplatePage::drawField(DTSSemanticFieldID field) {
    const bool crew = dts_fields::field(field).scope == DTSSemanticScope::crewRow;
    pendingDrawing_ = [this, field, crew](const PageRectangle& area) {
        editDraft(tr("Place Field"), [&](ProductionDTSTemplateDefinition& d) {
            const DTSNormalizedRegion drawn{area.x, area.y, area.width, area.height};
            templates::place(d, field, crew ? templates::withinRow(d, drawn) : drawn);
        });
    };
    page_->setDrawing(true);
    status_->setStyleSheet("color: #1565c0;");
    status_->setText(crew ? tr("Drag a rectangle inside one crew row where %1 goes in every row.").arg(qtext(dts_fields::field(field).displayName))
                          : tr("Drag a rectangle on the page where %1 goes.").arg(qtext(dts_fields::field(field).displayName)));
}

void TemplatePage::drawCrewRows(int count) {
    pendingDrawing_ = [this, count](const PageRectangle& area) {
        editDraft(tr("Set Crew Rows"), [&](ProductionDTSTemplateDefinition& d) {
            templates::setCrewRows(d, {area.x, area.y, area.width, area.height}, count);
        });
    };
    page_->setDrawing(true);
    status_->setStyleSheet("color: #1565c0;");
    status_->setText(tr("Drag a rectangle around the first crew row; %1 rows as tall follow it.").arg(count));
}

void TemplatePage::regionDrawn(const PageRectangle& region) {
    page_->setDrawing(false);
    auto action = std::move(pendingDrawing_);
    pendingDrawing_ = nullptr;
    if (action) action(region);
}

std::optional<Refusal> TemplatePage::confirmCrewRows() {
    return editDraft(tr("Confirm Crew Rows"), [](ProductionDTSTemplateDefinition& d) { templates::confirmCrewRows(d); });
}

std::optional<Refusal> TemplatePage::testFill(GenericDTSTestFillScenario scenario) {
    if (!shown_) return refused(Refusal{{}, qtext(dts_template_words::missingSource)});
    std::string pdf;
    try {
        pdf = generic_dts_render::testFill(scenario, shown_->sourcePDFData, shown_->definition);
    } catch (...) {
        return refused(refusalOf(std::current_exception()));
    }
    showingFill_ = true;
    back_->setVisible(true);
    page_->setDocument(QByteArray::fromStdString(pdf));
    refused(std::nullopt);
    const int pages = page_->pageCount();
    status_->setText(tr("Test fill \u201C%1\u201D with invented data: %2. Check each value sits in its place.")
                         .arg(qtext(generic_dts_render::label(scenario)), pages == 1 ? tr("1 page") : tr("%1 pages").arg(pages)));
    return std::nullopt;
}

std::optional<Refusal> TemplatePage::approve() {
    const auto production = session_.production();
    if (!production) return refused(Refusal{{}, tr("Choose a production first.")});
    const auto refusal = refused(session_.perform(tr("Approve DTS Template"), [&](ModelContext& c) {
        templates::approve(c, production->id, shell_widgets::now());
    }));
    if (!refusal) status_->setText(tr("Approved. Choose \u201CProduction DTS Template\u201D as the export form in Production Settings to use it."));
    return refusal;
}

QString TemplatePage::blockersText() const { return blockers_->text(); }
QString TemplatePage::statusText() const { return status_->text(); }

}  // namespace tessel
