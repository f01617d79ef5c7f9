#pragma once

#include <CLI/CLI.hpp>

#include "App/shell/CommandSession.hpp"

namespace tessel {

struct PositionCommandArguments {
    std::string name, newName, code, hourly, label, position, amount, from, through;
    std::string schedule = "daily";
    bool saved = false, noCode = false, noHourly = false;
};

// position add | list | show | set | remove and ratecard create | scale | list | show | apply: the
// production's positions and Rate Cards, or with --saved the installation's Saved Positions and Rate Cards.
void addPositionCommands(CLI::App& app, CommandSession& session, PositionCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
