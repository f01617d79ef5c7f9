#pragma once

#include <CLI/CLI.hpp>

#include <map>
#include <string>
#include <vector>

#include "App/cli/CommandSession.hpp"

namespace tessel {

// The values of the crew commands, owned by the caller for one run.
struct CrewCommandArguments {
    std::string name, newName, value, kind;
    std::string from, rate, precall, wrapout, on, through, schedule, location, locality, classification, dtsFrom, notes;
    std::string mode, amount, clearDate;
    std::vector<std::string> conditions;
    // production set
    std::string startDate, department, company, workState, departmentHead, defaultNDB, lunchLength, timeDisplay, currency;
    std::string exportForm, builtinForm, terminology, tolerance;
    std::int64_t order = 0;
    bool dayplayer = false, fullTime = false, retire = false, unretire = false, clear = false, followsScale = false, fromLibrary = false;
    std::string position;
    std::string minimumCall, overtime, doubleTime;  // crew position-terms
    // Options whose presence matters even when given "" (which clears the value).
    std::map<std::string, CLI::Option*> given;
};

// crew: the production's crew list, each person's engagements and their dated terms; and production set,
// the production's own facts. Registered after the production command.
void addCrewCommands(CLI::App& app, CommandSession& session, CrewCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
