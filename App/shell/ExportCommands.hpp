#pragma once

#include <CLI/CLI.hpp>

#include "App/shell/CommandSession.hpp"

namespace tessel {

struct ExportCommandArguments {
    std::string date, output, signatureFile, archiveOutput;
    bool open = false, forceWarnings = false, clearSignature = false;
};

// dts export (the DTS as a filled PDF), production signature (the department head's signature on it)
// and production export (the production as an archive). Registered after the production and dts commands.
void addExportCommands(CLI::App& app, CommandSession& session, ExportCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
