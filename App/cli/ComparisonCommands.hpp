#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct ComparisonCommandArguments {
    std::string week, crew, state, group, note;
    std::vector<std::string> targets;  // issues set: [ID] STATE
    std::vector<std::string> claimStates;
};

// compare week: expected beside confirmed actual pay for a Payroll Week. issues sync | list | set |
// summary | claim: the payroll issues those comparisons leave, tracked until they are resolved.
void addComparisonCommands(CLI::App& app, CommandSession& session, ComparisonCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
