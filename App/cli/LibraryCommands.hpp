#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct LibraryCommandArguments {
    std::string name;
    std::string newName;
    std::string notes;
    std::string file;
    std::string output;
    bool yes = false;
};

// library rules …: the Saved Rulesets of this installation and the ruleset files that carry them.
void addLibraryCommands(CLI::App& app, CommandSession& session, LibraryCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
