#pragma once

#include <CLI/CLI.hpp>

#include "App/cli/CommandSession.hpp"

namespace tessel {

struct ExportCommandArguments {
    std::string date, output, signatureFile, archiveOutput, archiveFile, identityChoice;
    bool open = false, forceWarnings = false, clearSignature = false;
};

// dts export (the DTS as a filled PDF), production signature (the department head's signature on it)
// and production export | import | identity (the production as an archive, and a Department Head
// identity an archive brought). Registered after the production and dts commands.
void addExportCommands(CLI::App& app, CommandSession& session, ExportCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
