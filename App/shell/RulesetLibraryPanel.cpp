#include "RulesetLibraryPanel.hpp"

#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>


#include "App/model/CalendarText.hpp"
#include "App/model/NewFile.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/rules/RulesetFile.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

QString dateOf(Instant instant) { return qtext(calendar_text::formatDate(CalendarDate(std::chrono::floor<std::chrono::days>(instant)))); }

// The production's rules as they stand today; refused when it has none.
PayrollRuleConfiguration currentRules(ModelContext& context, const Uuid& productionID) {
    const auto revision = ProductionRulesets::currentRevision(context, productionID, shell_widgets::today());
    if (!revision) throw RulesLibraryError(std::string(rules_library::noCurrentRuleset));
    return ProductionRulesets::readConfiguration(context, productionID, *revision);
}

}  // namespace

RulesetLibraryPanel::RulesetLibraryPanel(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* layout = new QVBoxLayout(this);
    table_ = shell_widgets::readOnlyTable({tr("Saved Ruleset"), tr("Effective from"), tr("Saved"), tr("Origin")});
    table_->setObjectName("savedRulesets");
    layout->addWidget(table_, 1);
    auto* nameRow = new QHBoxLayout;
    name_ = new QLineEdit;
    name_->setPlaceholderText(tr("Name for a new Saved Ruleset, or a new name for the chosen one"));
    auto* save = new QPushButton(tr("Save Production Ruleset"));
    save->setToolTip(qtext(rules_library::saveExplanation));
    connect(save, &QPushButton::clicked, this, [this] { saveCurrent(name_->text()); });
    auto* renameButton = new QPushButton(tr("Rename"));
    connect(renameButton, &QPushButton::clicked, this, [this] { rename(table_->currentRow(), name_->text()); });
    nameRow->addWidget(name_, 1);
    nameRow->addWidget(save);
    nameRow->addWidget(renameButton);
    layout->addLayout(nameRow);
    auto* buttons = new QHBoxLayout;
    auto* applyButton = new QPushButton(tr("Apply to Production\u2026"));
    connect(applyButton, &QPushButton::clicked, this, [this] {
        const auto item = itemAt(table_->currentRow());
        const auto production = session_.production();
        if (item && production && ask(qtext(rules_library::applyTitle), qtext(rules_library::applyQuestion(production->name, item->name)))) {
            apply(table_->currentRow());
        }
    });
    auto* updateButton = new QPushButton(tr("Update from Production\u2026"));
    connect(updateButton, &QPushButton::clicked, this, [this] {
        const auto item = itemAt(table_->currentRow());
        if (item && ask(qtext(rules_library::updateTitle), qtext(rules_library::updateQuestion(item->name)))) update(table_->currentRow());
    });
    auto* deleteButton = new QPushButton(tr("Delete\u2026"));
    connect(deleteButton, &QPushButton::clicked, this, [this] {
        const auto item = itemAt(table_->currentRow());
        if (item && ask(tr("Delete \u201C%1\u201D?").arg(qtext(item->name)), qtext(rules_library::deleteExplanation))) remove(table_->currentRow());
    });
    auto* exportButton = new QPushButton(tr("Export\u2026"));
    connect(exportButton, &QPushButton::clicked, this, [this] {
        if (!itemAt(table_->currentRow())) return;
        const QString path = QFileDialog::getSaveFileName(this, tr("Export Saved Ruleset"), qtext(ruleset_file::defaultFileName),
                                                          tr("Tessel ruleset (*.tesselrules)"));
        if (!path.isEmpty()) exportTo(table_->currentRow(), path);
    });
    auto* importButton = new QPushButton(tr("Import\u2026"));
    connect(importButton, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Import Ruleset File"), QString(), tr("Tessel ruleset (*.tesselrules)"));
        if (!path.isEmpty()) importFrom(path);
    });
    for (auto* button : {applyButton, updateButton, deleteButton}) buttons->addWidget(button);
    buttons->addStretch(1);
    buttons->addWidget(importButton);
    buttons->addWidget(exportButton);
    layout->addLayout(buttons);
    status_ = new QLabel;
    status_->setWordWrap(true);
    layout->addWidget(status_);
}

void RulesetLibraryPanel::reload() {
    items_ = rules_library::list(session_.context());
    const int current = table_->currentRow();
    table_->setRowCount(static_cast<int>(items_.size()));
    for (int row = 0; row < table_->rowCount(); ++row) {
        const auto& item = items_[static_cast<std::size_t>(row)];
        const QStringList cells{qtext(item.name), qtext(calendar_text::formatDate(item.configuration.payrollRules.effectiveFrom)), dateOf(item.modifiedAt),
                                item.importedAt ? tr("Imported %1").arg(dateOf(*item.importedAt)) : tr("Saved here")};
        for (int column = 0; column < cells.size(); ++column) table_->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
    if (items_.empty()) status_->setText(qtext(rules_library::emptyTitle) + ": " + qtext(rules_library::emptyMessage));
    table_->setCurrentCell(std::clamp(current, 0, table_->rowCount() - 1), 0);
}

std::optional<PayrollRulesLibraryItem> RulesetLibraryPanel::itemAt(int row) const {
    if (row < 0 || row >= static_cast<int>(items_.size())) return std::nullopt;
    return items_[static_cast<std::size_t>(row)];
}

bool RulesetLibraryPanel::ask(const QString& title, const QString& question) {
    return QMessageBox::question(this, title, question, QMessageBox::Ok | QMessageBox::Cancel) == QMessageBox::Ok;
}

std::optional<Refusal> RulesetLibraryPanel::act(const QString& name, const std::function<QString(ModelContext&)>& action) {
    QString done;
    auto refusal = session_.perform(name, [&](ModelContext& c) { done = action(c); });
    if (refusal && refusal->title.isEmpty()) refusal->title = qtext(rules_library::failureTitle);
    status_->setStyleSheet(refusal ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(refusal ? refusal->message : done);
    reload();
    return refusal;
}

std::optional<Refusal> RulesetLibraryPanel::saveCurrent(const QString& name) {
    const auto production = session_.production();
    if (!production) return Refusal{{}, tr("Choose a production first.")};
    auto refusal = act(tr("Save Ruleset"), [&](ModelContext& c) {
        const auto item = rules_library::save(c, utf8(name), {}, currentRules(c, production->id), shell_widgets::now());
        return qtext(rules_library::saveExplanation) + " " + tr("Saved \u201C%1\u201D from %2.").arg(qtext(item.name), qtext(production->name));
    });
    if (!refusal) name_->clear();
    return refusal;
}

std::optional<Refusal> RulesetLibraryPanel::apply(int row) {
    const auto item = itemAt(row);
    const auto production = session_.production();
    if (!item || !production) return std::nullopt;
    return act(tr("Apply Saved Ruleset"), [&](ModelContext& c) {
        rules_library::applyToProduction(c, *item, production->id, ProductionRulesets::currentRevision(c, production->id, shell_widgets::today()),
                                         shell_widgets::now());
        return tr("Applied a copy of \u201C%1\u201D to %2.").arg(qtext(item->name), qtext(production->name));
    });
}

std::optional<Refusal> RulesetLibraryPanel::update(int row) {
    const auto item = itemAt(row);
    const auto production = session_.production();
    if (!production) return std::nullopt;
    if (!item) return Refusal{qtext(rules_library::failureTitle), qtext(rules_library::noneToUpdate)};
    return act(tr("Update Saved Ruleset"), [&](ModelContext& c) {
        rules_library::update(c, *item, currentRules(c, production->id), shell_widgets::now());
        return tr("Updated \u201C%1\u201D from %2.").arg(qtext(item->name), qtext(production->name));
    });
}

std::optional<Refusal> RulesetLibraryPanel::rename(int row, const QString& name) {
    const auto item = itemAt(row);
    if (!item) return std::nullopt;
    auto refusal = act(tr("Rename Saved Ruleset"), [&](ModelContext& c) {
        rules_library::rename(c, *item, utf8(name), shell_widgets::now());
        return tr("Renamed \u201C%1\u201D to \u201C%2\u201D.").arg(qtext(item->name), qtext(rules_library::validName(utf8(name))));
    });
    if (!refusal) name_->clear();
    return refusal;
}

std::optional<Refusal> RulesetLibraryPanel::remove(int row) {
    const auto item = itemAt(row);
    if (!item) return std::nullopt;
    return act(tr("Delete Saved Ruleset"), [&](ModelContext& c) {
        rules_library::remove(c, *item);
        return tr("Deleted \u201C%1\u201D.").arg(qtext(item->name));
    });
}

std::optional<Refusal> RulesetLibraryPanel::exportTo(int row, const QString& path) {
    const auto item = itemAt(row);
    if (!item) return std::nullopt;
    const std::string bytes = ruleset_file::write(*item, shell_widgets::now(), std::string(TESSEL_VERSION), std::string(TESSEL_BUILD));
    // The save dialog asked before a file of that name is replaced.
    if (!new_file::replace(std::filesystem::path(utf8(path)), bytes)) {
        const Refusal refusal{qtext(rules_library::failureTitle), tr("The file \u201C%1\u201D could not be written.").arg(path)};
        status_->setText(refusal.message);
        return refusal;
    }
    status_->setStyleSheet("color: #2b6a2b;");
    status_->setText(tr("Exported \u201C%1\u201D to %2.").arg(qtext(item->name), path));
    return std::nullopt;
}

std::optional<Refusal> RulesetLibraryPanel::importFrom(const QString& path) {
    const auto bytes = shell_widgets::readFile(path);
    if (!bytes) return Refusal{{}, shell_widgets::unreadableFile(path)};
    const std::string& file = *bytes;
    return act(tr("Import Ruleset"), [&](ModelContext& c) {
        const auto contents = ruleset_file::read(file);
        const auto item = rules_library::addImported(c, contents.metadata.portableRulesetID, contents.name, contents.metadata.provenanceNotes,
                                                     contents.metadata.createdAt, contents.configuration, shell_widgets::now());
        return tr("Imported \u201C%1\u201D into the Ruleset Library.").arg(qtext(item.name));
    });
}

QString RulesetLibraryPanel::statusText() const { return status_->text(); }

}  // namespace tessel
