#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct PayStubCommandArguments {
    std::vector<std::string> paths;
    std::string file;
    std::string week;
    std::string embedded = "downloaded";
    bool confirmReady = false;
    std::string crew;      // the crew member: chosen on confirm, named by show, edit and remove
    std::string reassign;  // edit: the crew member the stub is for instead
    bool acceptPeriod = false;
    std::optional<std::string> printedName, occupation, start, end, gross, totalHours;
    std::vector<std::string> lines, addLines;
    std::vector<int> dropLines;
    bool replace = false;
    std::string pdf;
    bool yes = false;
};

// stub import | confirm | list | show | edit | remove: pay stubs imported for a Payroll Week, reviewed,
// corrected and confirmed as the crew member's Actual Pay.
void addPayStubCommands(CLI::App& stub, CommandSession& session, PayStubCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
