#pragma once

#include <CLI/CLI.hpp>

#include <string>

#include "App/rules/RulesetDrafts.hpp"
#include "App/cli/CommandSession.hpp"

namespace tessel {

struct RulesCommandArguments {
    std::string file;
    std::string locality;
    std::string day = "ordinary";
    std::string date;
    std::string location;
};

// The rules as `rules show` writes them, under the production's setup status line.
std::string describeRules(const PayrollRuleConfiguration& configuration, const std::string& statusLine);
// The production's current ruleset revision, if it has one.
std::optional<Uuid> currentRulesetRevision(ModelContext& context, const Production& production);

// rules show, rules set and rules sandbox.
void addRulesCommands(CLI::App& app, CommandSession& session, RulesCommandArguments& arguments, int& exitStatus);

}  // namespace tessel
