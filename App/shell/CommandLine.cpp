#include "CommandLine.hpp"

#include <CLI/CLI.hpp>
#include <iostream>

#include "App/shell/CalcCommands.hpp"

namespace tessel {

int runCommandLine(const std::vector<std::string>& arguments, CommandStreams streams) {
    CLI::App app{"Tessel keeps time and checks pay for a film or television crew department.", "tessel"};
    app.set_version_flag("--version", std::string("tessel ") + TESSEL_VERSION);
    app.require_subcommand(1);

    int exitStatus = exitSuccess;
    addCalcCommands(app, streams, exitStatus);

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
    }
    return exitStatus;
}

}  // namespace tessel
