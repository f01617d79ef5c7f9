#pragma once

#include <CLI/CLI.hpp>

#include <map>
#include <string>
#include <vector>

#include "App/cli/CommandSession.hpp"

namespace tessel {

// The values of the dts and activity commands, owned by the caller for one run.
struct DTSCommandArguments {
    std::string date;
    std::string name;
    std::vector<std::string> names;
    std::string kind;
    // times and facts; an option given with "" clears its value
    std::string call, lunchOut, lunchIn, wrap, travel, travelEach, mileage, location, mode, dtsName, workState, notes, locality;
    bool graceCalled = false, graceNotCalled = false, ndb = false, noNdb = false, yes = false;
    bool boxRental = false, noBoxRental = false;
    std::vector<std::string> clear, revert;
    // The options of dts set and dts row whose presence matters even with an empty value (which clears).
    std::map<std::string, CLI::Option*> setOptions, rowOptions;
    std::string job, rerate, rerateTitle;  // Job for Today and rerate, by Position name
    std::string position;                  // dayplayer: the production Position worked
    bool noJob = false, noRerate = false;
};

void addDTSCommands(CLI::App& app, CommandSession& session, DTSCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
