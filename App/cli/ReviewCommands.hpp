#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct ReviewCommandArguments {
    std::string date, crew, at, dismiss;
    std::string call, lunchOut, lunchIn, wrap, rate, generalCall, locality, day = "ordinary", rulesFile;
    bool ndb = false, graceCalled = false;
    bool explain = false;  // the rule identifier behind each line
};

// review week, review golden-hour, and calc day (the sandbox of one day under the production's rules).
void addReviewCommands(CLI::App& app, CommandSession& session, ReviewCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
