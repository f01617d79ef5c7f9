#include "LibraryPage.hpp"

#include <QLabel>
#include <QTabWidget>
#include <QVBoxLayout>

#include "App/shell/CrewLibraryPanel.hpp"
#include "App/shell/PositionsPanel.hpp"
#include "App/shell/RulesetLibraryPanel.hpp"
#include "App/shell/ShellWidgets.hpp"

namespace tessel {

LibraryPage::LibraryPage(ShellSession& session, QWidget* parent) : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    auto* title = new QLabel(tr("Libraries and Rates"));
    title->setStyleSheet("font-size: 15pt; font-weight: bold;");
    layout->addWidget(title);
    tabs_ = new QTabWidget;
    rulesets_ = new RulesetLibraryPanel(session);
    crew_ = new CrewLibraryPanel(session);
    positions_ = new PositionsPanel(session);
    tabs_->addTab(rulesets_, tr("Saved Rulesets"));
    tabs_->addTab(crew_, tr("Crew Library"));
    tabs_->addTab(positions_, tr("Positions and Rate Cards"));
    layout->addWidget(tabs_, 1);
    shell_widgets::reloadWhenShown(this, session, [this] {
        rulesets_->reload();
        crew_->reload();
        positions_->reload();
    });
}

}  // namespace tessel
