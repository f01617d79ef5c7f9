#pragma once

#include <CLI/CLI.hpp>

#include "App/shell/CommandSession.hpp"

namespace tessel {

struct TemplateCommandArguments {
    std::string file;
};

// template inspect: what a production's blank DTS page holds and what the interpreter proposes for it.
void addTemplateCommands(CLI::App& app, CommandSession& session, TemplateCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
