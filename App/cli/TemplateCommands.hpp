#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct TemplateCommandArguments {
    std::string file, field, region, fit, time, date, transform, align, mark, scenario, output;
    bool row = false;
    int count = 0;
};

// template inspect | import | show | map | blank | rows set | approve: a production's own blank DTS page,
// what the interpreter proposes for it, and its mapping from draft to approval.
void addTemplateCommands(CLI::App& app, CommandSession& session, TemplateCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
