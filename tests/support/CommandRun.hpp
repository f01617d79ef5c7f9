#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TemporaryFolder.hpp"
#include "App/model/JSONFields.hpp"
#include "App/cli/CommandLine.hpp"

namespace tessel::testing {

// What one `tessel` invocation answered.
struct CommandOutcome {
    int status;
    std::string out;
    std::string err;
    Json json() const { return Json::parse(out); }
};

// Runs the command line in-process, as the installed binary would, with `input` on standard input.
inline CommandOutcome runCommand(const std::vector<std::string>& arguments, const std::string& input = "") {
    std::istringstream in(input);
    std::ostringstream out, err;
    const int status = runCommandLine(arguments, {in, out, err});
    return {status, out.str(), err.str()};
}

// Each test has its own store root and settings folder.
class CommandTest : public ::testing::Test {
protected:
    TemporaryFolder folder;

    void SetUp() override { setenv("XDG_CONFIG_HOME", (folder.path() / "config").c_str(), 1); }

    // Writes a JSON document to a file in the test's folder, for commands that read one.
    std::string write(const Json& document, const std::string& name = "rules.json") {
        const auto path = (folder.path() / name).string();
        std::ofstream(path) << document.dump(2);
        return path;
    }

    CommandOutcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--store-root", (folder.path() / "data").string()});
        return runCommand(arguments);
    }
};

}  // namespace tessel::testing
