#pragma once

#include <CLI/CLI.hpp>

#include "App/shell/CommandSession.hpp"

namespace tessel {

struct StubCommandArguments {
    std::string file;
    std::string embedded = "downloaded";
    std::string facts;
};

// stub read: a pay-stub PDF read from its text layer and by OCR of its pixels, interpreted and compared.
// stub lab: each reading scored against a file of the facts the stub is known to print.
// Nothing is stored.
void addStubCommands(CLI::App& app, CommandSession& session, StubCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
