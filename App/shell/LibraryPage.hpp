#pragma once

#include <QWidget>

#include "App/shell/ShellSession.hpp"

class QTabWidget;

namespace tessel {
class CrewLibraryPanel;
class PositionsPanel;
class RulesetLibraryPanel;

// What a timekeeper carries from show to show, and the production's positions and rates: the Ruleset
// Library, the Crew Library, and the Positions and Rate Cards, each a tab.
class LibraryPage : public QWidget {
    Q_OBJECT
public:
    explicit LibraryPage(ShellSession& session, QWidget* parent = nullptr);

    RulesetLibraryPanel& rulesets() noexcept { return *rulesets_; }
    CrewLibraryPanel& crewLibrary() noexcept { return *crew_; }
    PositionsPanel& positions() noexcept { return *positions_; }
    QTabWidget& tabs() noexcept { return *tabs_; }

private:
    QTabWidget* tabs_ = nullptr;
    RulesetLibraryPanel* rulesets_ = nullptr;
    CrewLibraryPanel* crew_ = nullptr;
    PositionsPanel* positions_ = nullptr;
};

}  // namespace tessel
