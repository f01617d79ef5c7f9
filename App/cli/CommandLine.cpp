#include "CommandLine.hpp"

#include <CLI/CLI.hpp>
#include <iostream>

#include "App/cli/CalcCommands.hpp"
#include "App/cli/CommandSession.hpp"
#include "App/cli/ComparisonCommands.hpp"
#include "App/cli/CrewCommands.hpp"
#include "App/cli/DTSCommands.hpp"
#include "App/cli/DiagnosticCommands.hpp"
#include "App/cli/ExportCommands.hpp"
#include "App/cli/LibraryCommands.hpp"
#include "App/cli/ReviewCommands.hpp"
#include "App/cli/SetupLibraryCommands.hpp"
#include "App/cli/RulesCommands.hpp"
#include "App/cli/StoreCommands.hpp"
#include "App/cli/PositionCommands.hpp"
#include "App/cli/StubCommands.hpp"
#include "App/cli/TemplateCommands.hpp"

namespace tessel {

int runCommandLine(const std::vector<std::string>& arguments, CommandStreams streams) {
    CLI::App app{"Tessel keeps time and checks pay for a film or television crew department.", "tessel"};
    app.set_version_flag("--version", std::string("tessel ") + TESSEL_VERSION);
    app.require_subcommand(1);
    // Global options may follow the command: "tessel production list --json".
    app.fallthrough();

    GlobalOptions options;
    app.add_option("--store-root", options.storeRoot,
                   "Folder of the data store (default: $TESSEL_STORE_ROOT, else $XDG_DATA_HOME/Tessel)");
    app.add_flag("--test-store", options.testStore, "Use the separate test store and its own settings");
    app.add_flag("--json", options.json, "Answer in JSON");
    app.add_option("--production", options.production, "The production to work in, by name or identifier");

    int exitStatus = exitSuccess;
    CommandSession session(options, streams);
    StoreCommandArguments storeArguments;
    CrewCommandArguments crewArguments;
    DTSCommandArguments dtsArguments;
    RulesCommandArguments rulesArguments;
    ReviewCommandArguments reviewArguments;
    DiagnosticCommandArguments diagnosticArguments;
    LibraryCommandArguments libraryArguments;
    StubCommandArguments stubArguments;
    PayStubCommandArguments payStubArguments;
    PositionCommandArguments positionArguments;
    ExportCommandArguments exportArguments;
    SetupLibraryCommandArguments setupLibraryArguments;
    ComparisonCommandArguments comparisonArguments;
    TemplateCommandArguments templateArguments;
    addCalcCommands(app, streams, exitStatus);
    addStoreCommands(app, session, storeArguments, exitStatus);
    addDiagnosticCommands(*app.get_subcommand("store"), session, diagnosticArguments, exitStatus);
    addCrewCommands(app, session, crewArguments, exitStatus);
    addDTSCommands(app, session, dtsArguments, exitStatus);
    addRulesCommands(app, session, rulesArguments, exitStatus);
    addReviewCommands(app, session, reviewArguments, exitStatus);
    addLibraryCommands(app, session, libraryArguments, exitStatus);
    addStubCommands(app, session, stubArguments, payStubArguments, exitStatus);
    addPositionCommands(app, session, positionArguments, exitStatus);
    addExportCommands(app, session, exportArguments, exitStatus);
    addSetupLibraryCommands(app, session, setupLibraryArguments, exitStatus);
    addComparisonCommands(app, session, comparisonArguments, exitStatus);
    addTemplateCommands(app, session, templateArguments, exitStatus);

    std::vector<const char*> argv{"tessel"};
    for (const auto& argument : arguments) argv.push_back(argument.c_str());
    try {
        app.parse(static_cast<int>(argv.size()), argv.data());
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            return app.exit(error, streams.out, streams.err);  // --help and --version
        }
        streams.err << error.what() << "; see \u201Ctessel --help\u201D.\n";
        return exitUsage;
    } catch (const StoreActionError& error) {
        return session.refuse("storeActionFailed", error.what());
    } catch (const std::exception& error) {
        // A last resort, so that no failure ends without a sentence; each action's transaction was rolled back.
        return session.refuse("commandFailed", std::string("Tessel could not complete the command: ") + error.what());
    }
    return exitStatus;
}

}  // namespace tessel
