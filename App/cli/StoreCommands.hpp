#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

// The positional values and flags of these commands, owned by the caller for one run.
struct StoreCommandArguments {
    std::string name;
    std::string idOrName;
    std::string week;
    bool allWeeks = false;
    int weekday = 0;
    std::string key;
    std::string value;
};

// store info, production, week and settings: the commands that keep a production's data.
void addStoreCommands(CLI::App& app, CommandSession& session, StoreCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
