#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"
#include "App/cli/PayStubCommands.hpp"

namespace tessel {

struct StubCommandArguments {
    std::string file;
    std::string embedded = "downloaded";
    std::string facts;
};

// stub read: a pay-stub PDF read from its text layer and by OCR of its pixels, interpreted and compared.
// stub lab: each reading scored against a file of the facts the stub is known to print.
// Neither stores anything; the import, confirmation and confirmed stubs come with the pay-stub commands.
void addStubCommands(CLI::App& app, CommandSession& session, StubCommandArguments& arguments, PayStubCommandArguments& payStubArguments,
                     int& exitStatus);

}  // namespace tessel
