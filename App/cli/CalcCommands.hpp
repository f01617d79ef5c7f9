#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandLine.hpp"

namespace tessel {

// The engine commands: each reads one JSON document on standard input and answers in JSON.
void addCalcCommands(CLI::App& app, CommandStreams streams, int& exitStatus);

}  // namespace tessel
