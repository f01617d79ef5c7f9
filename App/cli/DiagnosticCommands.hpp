#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct DiagnosticCommandArguments {
    std::string output;
    std::string package;
};

// store diagnostic and store inspect-diagnostic: the support package, made and read without opening the store.
void addDiagnosticCommands(CLI::App& store, CommandSession& session, DiagnosticCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
