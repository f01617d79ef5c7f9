#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tessel {

struct CommandStreams {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
};

// Exit statuses of the tessel command.
enum ExitStatus : int {
    exitSuccess = 0,
    exitRefused = 1,  // the system refused: a validation or calculation error
    exitUsage = 2,    // a usage error, or input that is not well-formed
};

// Runs the tessel command with its arguments (without the program name) on the given streams and
// returns its exit status. The window and the tests call the same entry point.
int runCommandLine(const std::vector<std::string>& arguments, CommandStreams streams);

}  // namespace tessel
