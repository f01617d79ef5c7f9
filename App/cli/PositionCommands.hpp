#pragma once

#include <CLI/CLI.hpp>

#include "App/rules/PositionDefaults.hpp"
#include "App/cli/CommandSession.hpp"

namespace tessel {

struct PositionCommandArguments {
    std::string name, newName, code, hourly, label, position, amount, from, through;
    std::string schedule = "daily";
    std::string minimumCall, overtime, doubleTime, legacyDefaults;
    bool saved = false, noCode = false, noHourly = false;
};

// position add | list | show | set | remove and ratecard create | scale | list | show | apply: the
// production's positions and Rate Cards, or with --saved the installation's Saved Positions and Rate Cards.
void addPositionCommands(CLI::App& app, CommandSession& session, PositionCommandArguments& arguments, int& exitStatus);

// A change of the day's schedule as typed after `option`: payroll hours ("10", "10.5"), "none", or
// "rules" to take it as the production's rules (for a person: as the position) say; overtime and double
// time also take a multiplier and a basis, "8,1.5" or "8,1.5,elapsed". Refused in one sentence otherwise.
PositionProvision scheduleProvisionArgument(std::string_view option, const std::string& text, bool band);

// The schedule change options given (empty text for those that were not), over `changes`.
PositionScheduleOverrides withScheduleArguments(PositionScheduleOverrides changes, const std::string& minimumCall, const std::string& overtime,
                                                const std::string& doubleTime);

}  // namespace tessel
