#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "App/shell/CommandSession.hpp"

namespace tessel {

struct RulesCommandArguments {
    std::string file;
    std::string locality;
    std::string day = "ordinary";
    std::string date;
    std::string location;
};

// rules show, rules set and rules sandbox.
void addRulesCommands(CLI::App& app, CommandSession& session, RulesCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
