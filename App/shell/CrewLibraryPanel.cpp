#include "CrewLibraryPanel.hpp"

#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>


#include "App/exchange/SetupFiles.hpp"
#include "App/model/NewFile.hpp"
#include "App/shell/ShellText.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {
namespace {

QString withPosition(const std::string& name, const std::optional<std::string>& position) {
    return qtext(name) + (position && !position->empty() ? " (" + qtext(*position) + ")" : QString());
}

}  // namespace

CrewLibraryPanel::CrewLibraryPanel(ShellSession& session, QWidget* parent) : QWidget(parent), session_(session) {
    auto* layout = new QVBoxLayout(this);
    table_ = shell_widgets::readOnlyTable({tr("Person"), tr("Preferred position"), tr("DTS title")});
    table_->setObjectName("crewLibrary");
    layout->addWidget(table_, 1);
    auto* addRow = new QHBoxLayout;
    name_ = new QLineEdit;
    name_->setPlaceholderText(tr("Name"));
    position_ = new QLineEdit;
    position_->setPlaceholderText(tr("Preferred position (optional)"));
    auto* add = new QPushButton(tr("Add Person"));
    connect(add, &QPushButton::clicked, this, [this] { addPerson(name_->text(), position_->text()); });
    auto* removeButton = new QPushButton(tr("Remove\u2026"));
    connect(removeButton, &QPushButton::clicked, this, [this] {
        const int row = table_->currentRow();
        if (row < 0 || row >= static_cast<int>(people_.size())) return;
        if (QMessageBox::question(this, tr("Remove %1?").arg(qtext(people_[static_cast<std::size_t>(row)].displayName)),
                                  qtext(crew_library_words::deleteNote)) == QMessageBox::Yes) {
            remove(row);
        }
    });
    addRow->addWidget(name_, 2);
    addRow->addWidget(position_, 2);
    addRow->addWidget(add);
    addRow->addWidget(removeButton);
    layout->addLayout(addRow);
    auto* files = new QHBoxLayout;
    auto* importButton = new QPushButton(tr("Import Crew Library\u2026"));
    connect(importButton, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getOpenFileName(this, tr("Import Crew Library"), QString(), tr("Tessel crew library (*.tesselcrewlibrary)"));
        if (!path.isEmpty()) planImport(path);
    });
    auto* exportButton = new QPushButton(tr("Export Crew Library\u2026"));
    connect(exportButton, &QPushButton::clicked, this, [this] {
        const QString path = QFileDialog::getSaveFileName(this, tr("Export Crew Library"), qtext(crew_library_words::defaultFileName),
                                                          tr("Tessel crew library (*.tesselcrewlibrary)"));
        if (!path.isEmpty()) exportTo(path);
    });
    files->addStretch(1);
    files->addWidget(importButton);
    files->addWidget(exportButton);
    layout->addLayout(files);

    auto* planBox = new QGroupBox(tr("Import plan"));
    planBox_ = planBox;
    auto* planLayout = new QVBoxLayout(planBox);
    planSummary_ = new QLabel;
    planSummary_->setWordWrap(true);
    planLayout->addWidget(planSummary_);
    matches_ = shell_widgets::readOnlyTable({tr("In the file"), tr("Already in the library"), tr("Choice")});
    matches_->setObjectName("crewLibraryMatches");
    planLayout->addWidget(matches_);
    auto* planButtons = new QHBoxLayout;
    importButton_ = new QPushButton(tr("Import"));
    connect(importButton_, &QPushButton::clicked, this, [this] { importPlan(); });
    auto* cancel = new QPushButton(tr("Cancel"));
    connect(cancel, &QPushButton::clicked, this, [this] {
        plan_.reset();
        showPlan();
    });
    planButtons->addStretch(1);
    planButtons->addWidget(cancel);
    planButtons->addWidget(importButton_);
    planLayout->addLayout(planButtons);
    planBox->setVisible(false);
    layout->addWidget(planBox);
    status_ = new QLabel;
    status_->setWordWrap(true);
    layout->addWidget(status_);
}

void CrewLibraryPanel::reload() {
    people_ = crew_library::list(session_.context());
    table_->setRowCount(static_cast<int>(people_.size()));
    for (int row = 0; row < table_->rowCount(); ++row) {
        const auto& person = people_[static_cast<std::size_t>(row)];
        const QStringList cells{qtext(person.displayName), qtext(person.preferredPositionName.value_or("")), qtext(person.preferredDTSTitle.value_or(""))};
        for (int column = 0; column < cells.size(); ++column) table_->setItem(row, column, new QTableWidgetItem(cells[column]));
    }
}

std::optional<Refusal> CrewLibraryPanel::finish(const std::optional<Refusal>& refusal, const QString& done) {
    status_->setStyleSheet(refusal ? "color: #a00000;" : "color: #2b6a2b;");
    status_->setText(refusal ? refusal->message : done);
    reload();
    return refusal;
}

std::optional<Refusal> CrewLibraryPanel::addPerson(const QString& name, const QString& position) {
    const QString trimmed = position.trimmed();
    const std::optional<std::string> preferred = trimmed.isEmpty() ? std::nullopt : std::optional(utf8(trimmed));
    const auto refusal = session_.perform(tr("Add to Crew Library"), [&](ModelContext& c) {
        crew_library::add(c, utf8(name), preferred, std::nullopt, shell_widgets::now());
    });
    if (!refusal) {
        name_->clear();
        position_->clear();
    }
    return finish(refusal, tr("Added %1 to the Crew Library.").arg(name.trimmed()));
}

std::optional<Refusal> CrewLibraryPanel::remove(int row) {
    if (row < 0 || row >= static_cast<int>(people_.size())) return std::nullopt;
    const auto person = people_[static_cast<std::size_t>(row)];
    const auto refusal = session_.perform(tr("Remove from Crew Library"), [&](ModelContext& c) { crew_library::remove(c, person); });
    return finish(refusal, tr("Removed %1. %2").arg(qtext(person.displayName), qtext(crew_library_words::deleteNote)));
}

std::optional<Refusal> CrewLibraryPanel::exportTo(const QString& path) {
    const std::string bytes = setup_files::writeCrewLibrary(crew_library::list(session_.context()), shell_widgets::now());
    // The save dialog asked before a file of that name is replaced.
    if (!new_file::replace(std::filesystem::path(utf8(path)), bytes)) {
        return finish(Refusal{{}, tr("The file \u201C%1\u201D could not be written.").arg(path)}, {});
    }
    return finish(std::nullopt, tr("Exported the Crew Library to %1.").arg(path));
}

std::optional<Refusal> CrewLibraryPanel::planImport(const QString& path) {
    const auto bytes = shell_widgets::readFile(path);
    if (!bytes) return finish(Refusal{{}, shell_widgets::unreadableFile(path)}, {});
    try {
        plan_ = crew_library::plan(session_.context(), setup_files::readCrewLibrary(*bytes));
    } catch (...) {
        plan_.reset();
        showPlan();
        return finish(refusalOf(std::current_exception()), {});
    }
    resolutions_.clear();
    showPlan();
    status_->clear();
    return std::nullopt;
}

void CrewLibraryPanel::showPlan() {
    planBox_->setVisible(plan_.has_value());
    if (!plan_) return;
    const auto& p = *plan_;
    const auto count = [](std::size_t n, const QString& one, const QString& many) { return n == 1 ? one : many.arg(n); };
    planSummary_->setText(tr("In the file: %1, %2 already in the library (skipped), %3 to settle.")
                              .arg(count(p.newPeople.size(), tr("1 new person"), tr("%1 new people")))
                              .arg(p.exactIdentityMatchCount)
                              .arg(count(p.conflicts.size(), tr("1 possible match"), tr("%1 possible matches"))));
    matches_->setRowCount(static_cast<int>(p.conflicts.size()));
    for (int row = 0; row < matches_->rowCount(); ++row) {
        const auto& conflict = p.conflicts[static_cast<std::size_t>(row)];
        matches_->setItem(row, 0, new QTableWidgetItem(withPosition(conflict.imported.displayName, conflict.imported.preferredPositionName)));
        matches_->setItem(row, 1, new QTableWidgetItem(withPosition(conflict.existingDisplayName, conflict.existingPreferredPositionName)));
        auto* choice = new QComboBox;
        choice->addItem(tr("Choose\u2026"));
        choice->addItem(tr("Use Existing"), static_cast<int>(CrewLibraryImportResolution::useExisting));
        choice->addItem(tr("Import Separately"), static_cast<int>(CrewLibraryImportResolution::importSeparate));
        const auto chosen = resolutions_.find(conflict.imported.id);
        if (chosen != resolutions_.end()) choice->setCurrentIndex(choice->findData(static_cast<int>(chosen->second)));
        connect(choice, &QComboBox::activated, this, [this, row, choice] {
            if (choice->currentData().isValid()) resolve(row, static_cast<CrewLibraryImportResolution>(choice->currentData().toInt()));
        });
        matches_->setCellWidget(row, 2, choice);
    }
    matches_->setVisible(!p.conflicts.empty());
    importButton_->setEnabled(resolutions_.size() == p.conflicts.size());
    importButton_->setToolTip(importButton_->isEnabled() ? QString() : qtext(crew_library_words::chooseEveryMatch));
}

void CrewLibraryPanel::resolve(int conflict, CrewLibraryImportResolution resolution) {
    if (!plan_ || conflict < 0 || conflict >= static_cast<int>(plan_->conflicts.size())) return;
    resolutions_[plan_->conflicts[static_cast<std::size_t>(conflict)].imported.id] = resolution;
    importButton_->setEnabled(resolutions_.size() == plan_->conflicts.size());
}

std::optional<Refusal> CrewLibraryPanel::importPlan() {
    if (!plan_) return std::nullopt;
    CrewLibraryImportReport report;
    const auto refusal = session_.perform(tr("Import Crew Library"), [&](ModelContext& c) {
        report = crew_library::apply(c, *plan_, resolutions_, shell_widgets::now());
    });
    if (refusal) return finish(refusal, {});
    plan_.reset();
    showPlan();
    QStringList sentences;
    for (const auto& sentence : report.sentences()) sentences << qtext(sentence);
    return finish(std::nullopt, qtext(crew_library_words::importComplete) + ": " + sentences.join(" "));
}

QString CrewLibraryPanel::statusText() const { return status_->text(); }

}  // namespace tessel
