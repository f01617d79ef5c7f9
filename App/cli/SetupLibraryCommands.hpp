#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct SetupLibraryCommandArguments {
    std::string name, libraryName, position, dtsTitle, file, output, label;
    std::vector<std::string> resolutions;  // NAME=useExisting|importSeparate
    bool yes = false;
};

// library crew list | add | remove | export | import, library ratecard export | import, and crew link:
// the crew library and the files reusable setup travels in. Registered after the library and crew commands.
void addSetupLibraryCommands(CLI::App& app, CommandSession& session, SetupLibraryCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
