#include "LibraryCommands.hpp"

#include <fstream>
#include <iterator>
#include <sstream>
#include <unistd.h>

#include "App/model/CalendarText.hpp"
#include "App/model/NewFile.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/MealPenaltyRules.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/rules/RulesLibrary.hpp"
#include "App/rules/RulesetFile.hpp"
#include "App/cli/CommandActions.hpp"
#include "App/cli/RulesCommands.hpp"

namespace tessel {
namespace {

namespace library = rules_library;

using command_actions::now;

Json itemJSON(const PayrollRulesLibraryItem& item) {
    Json json{{"id", item.id.text()},
              {"portableRulesetID", item.portableRulesetID.text()},
              {"name", item.name},
              {"provenanceNotes", item.provenanceNotes},
              {"createdAt", calendar_text::formatInstant(item.createdAt)},
              {"modifiedAt", calendar_text::formatInstant(item.modifiedAt)}};
    if (item.importedAt) json["importedAt"] = calendar_text::formatInstant(*item.importedAt);
    return json;
}

enum class Access { read, write };

// Runs one library action, a change in one transaction, reporting a refusal with its sentence. A read
// takes no write lock, so listing the library never waits for another Tessel process.
template <typename Action>
int libraryAction(CommandSession& session, Action&& action, Access access = Access::write) {
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    try {
        if (access == Access::read) return action(store->context());
        return store->perform([&](ModelContext& context) -> int { return action(context); });
    } catch (const RulesLibraryError& error) {
        return session.refuse("refused", error.what());
    } catch (const RulesPayloadError& error) {
        return session.refuse("unreadableRuleset", error.what());
    } catch (const MealPenaltyRulesError& error) {
        return session.refuse("invalidMealPenaltyRules", error.what());
    } catch (const CompensationRuleInputError& error) {
        return session.refuse("invalidCompensationRule", error.what());
    } catch (const TesselRulesError& error) {
        return session.refuse(error.caseName(), error.description());
    } catch (const DomainError& error) {
        return session.refuse(error.caseName(), error.description());
    } catch (const StoreActionError& error) {
        return session.refuseWithTitle("storeActionFailed", std::string(library::failureTitle), error.what());
    }
}

// The production's current rules, or the refusal that it has none.
PayrollRuleConfiguration productionRules(ModelContext& context, const Production& production) {
    const auto current = currentRulesetRevision(context, production);
    if (!current) throw RulesLibraryError(std::string(library::noCurrentRuleset));
    return ProductionRulesets::readConfiguration(context, production.id, *current);
}

int list(CommandSession& session) {
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto items = library::list(context);
        Json json = Json::array();
        std::ostringstream text;
        for (const auto& item : items) {
            json.push_back(itemJSON(item));
            text << item.name << "  (effective from " << calendar_text::formatDate(item.configuration.payrollRules.effectiveFrom)
                 << ", saved " << calendar_text::formatDate(CalendarDate(std::chrono::floor<std::chrono::days>(item.modifiedAt)))
                 << (item.importedAt ? ", imported" : "") << ")\n";
        }
        if (items.empty()) text << library::emptyTitle << "\n" << library::emptyMessage << "\n";
        session.answer(Json{{"savedRulesets", std::move(json)}}, text.str());
        return exitSuccess;
    }, Access::read);
}

int show(CommandSession& session, const std::string& name) {
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto item = library::named(context, name);
        Json json = itemJSON(item);
        json["configuration"] = rules_json::toJSON(item.configuration);
        std::string text = "Saved Ruleset \u201C" + item.name + "\u201D (" + item.portableRulesetID.text() + ")\n";
        if (!item.provenanceNotes.empty()) text += item.provenanceNotes + "\n";
        session.answer(json, text + "\n" + describeRules(item.configuration, "Saved in the Ruleset Library."));
        return exitSuccess;
    }, Access::read);
}

int save(CommandSession& session, const std::string& name, const std::string& notes) {
    const auto production = session.production();
    if (!production) return exitRefused;
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto configuration = productionRules(context, *production);
        const auto item = library::save(context, name, notes, configuration, now());
        session.answer(itemJSON(item), std::string(library::saveExplanation) + "\nSaved \u201C" + item.name +
                                           "\u201D from " + production->name + " to the Ruleset Library.\n");
        return exitSuccess;
    });
}


int apply(CommandSession& session, const std::string& name, bool confirmed) {
    const auto production = session.production();
    if (!production) return exitRefused;
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto item = library::named(context, name);
        const std::string question = library::applyQuestion(production->name, item.name);
        if (!confirmed) return session.confirmationNeeded(library::applyTitle, question);
        library::applyToProduction(context, item, production->id, currentRulesetRevision(context, *production), now());
        session.answer(Json{{"applied", item.name}, {"production", production->id.text()}},
                       question + "\nApplied a copy of \u201C" + item.name + "\u201D to " + production->name + ".\n" +
                           std::string(library::appliedFromLabel) + " " + item.name + "\n");
        return exitSuccess;
    });
}

int update(CommandSession& session, const std::string& name, bool confirmed) {
    const auto production = session.production();
    if (!production) return exitRefused;
    return libraryAction(session, [&](ModelContext& context) -> int {
        if (library::list(context).empty()) throw RulesLibraryError(std::string(library::noneToUpdate));
        const auto item = library::named(context, name);
        const auto configuration = productionRules(context, *production);
        const std::string question = library::updateQuestion(item.name);
        if (!confirmed) return session.confirmationNeeded(library::updateTitle, question);
        library::update(context, item, configuration, now());
        session.answer(Json{{"updated", item.name}}, question + "\nUpdated \u201C" + item.name + "\u201D from " + production->name + ".\n");
        return exitSuccess;
    });
}

int rename(CommandSession& session, const std::string& name, const std::string& newName) {
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto item = library::named(context, name);
        library::rename(context, item, newName, now());
        const std::string shown = library::validName(newName);
        session.answer(Json{{"renamed", item.id.text()}, {"name", shown}},
                       "Renamed \u201C" + item.name + "\u201D to \u201C" + shown + "\u201D.\n");
        return exitSuccess;
    });
}

int remove(CommandSession& session, const std::string& name) {
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto item = library::named(context, name);
        library::remove(context, item);
        session.answer(Json{{"deleted", item.id.text()}},
                       std::string(library::deleteExplanation) + "\nDeleted \u201C" + item.name + "\u201D.\n");
        return exitSuccess;
    });
}

int exportFile(CommandSession& session, const std::string& name, const std::string& output) {
    const fs::path file = output.empty() ? fs::current_path() / ruleset_file::defaultFileName : fs::path(output);
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto item = library::named(context, name);
        std::error_code ignored;
        if (fs::exists(file, ignored)) {
            return session.refuse("fileExists", "The file \u201C" + file.string() + "\u201D already exists; choose another with --output.");
        }
        const std::string bytes = ruleset_file::write(item, now(), std::string(TESSEL_VERSION), std::string(TESSEL_BUILD));
        if (!new_file::write(file, bytes)) {
            return session.refuse("writeFailed", "The file \u201C" + file.string() + "\u201D could not be written.");
        }
        session.answer(Json{{"file", file.string()}, {"portableRulesetID", item.portableRulesetID.text()}},
                       "Exported \u201C" + item.name + "\u201D to \u201C" + file.string() + "\u201D.\n");
        return exitSuccess;
    }, Access::read);
}

int importFile(CommandSession& session, const std::string& file) {
    const auto read = session.readInputFile(file);
    if (!read) return exitUsage;
    const std::string& bytes = *read;
    return libraryAction(session, [&](ModelContext& context) -> int {
        const auto contents = ruleset_file::read(bytes);
        const auto item = library::addImported(context, contents.metadata.portableRulesetID, contents.name,
                                               contents.metadata.provenanceNotes, contents.metadata.createdAt,
                                               contents.configuration, now());
        session.answer(itemJSON(item), "Imported \u201C" + item.name + "\u201D into the Ruleset Library.\n");
        return exitSuccess;
    });
}

}  // namespace

void addLibraryCommands(CLI::App& app, CommandSession& session, LibraryCommandArguments& a, int& exitStatus) {
    auto* libraryCommand = app.add_subcommand("library", "What this installation keeps apart from any production")->require_subcommand(1);
    auto* rules = libraryCommand->add_subcommand("rules", "The Ruleset Library: Saved Rulesets and ruleset files")->require_subcommand(1);
    rules->add_subcommand("list", "List the Saved Rulesets")->callback([&] { exitStatus = list(session); });
    rules->add_subcommand("show", "Show a Saved Ruleset (with --json, its configuration)")
        ->callback([&] { exitStatus = show(session, a.name); })
        ->add_option("NAME", a.name, "The Saved Ruleset")
        ->required();
    auto* saveCommand = rules->add_subcommand("save", "Save the production's current ruleset as a new Saved Ruleset");
    saveCommand->add_option("NAME", a.name, "The new Saved Ruleset's name")->required();
    saveCommand->add_option("--notes", a.notes, "Where the rules come from");
    saveCommand->callback([&] { exitStatus = save(session, a.name, a.notes); });
    auto* applyCommand = rules->add_subcommand("apply", "Replace the production's current ruleset with a copy of a Saved Ruleset");
    applyCommand->add_option("NAME", a.name, "The Saved Ruleset")->required();
    applyCommand->add_flag("--yes", a.yes, "Confirm the replacement");
    applyCommand->callback([&] { exitStatus = apply(session, a.name, a.yes); });
    auto* updateCommand = rules->add_subcommand("update", "Replace a Saved Ruleset with the production's current ruleset");
    updateCommand->add_option("NAME", a.name, "The Saved Ruleset")->required();
    updateCommand->add_flag("--yes", a.yes, "Confirm the replacement");
    updateCommand->callback([&] { exitStatus = update(session, a.name, a.yes); });
    auto* renameCommand = rules->add_subcommand("rename", "Rename a Saved Ruleset");
    renameCommand->add_option("NAME", a.name, "The Saved Ruleset")->required();
    renameCommand->add_option("NEW", a.newName, "Its new name")->required();
    renameCommand->callback([&] { exitStatus = rename(session, a.name, a.newName); });
    auto* exportCommand = rules->add_subcommand("export", "Write a Saved Ruleset as a ruleset file");
    exportCommand->add_option("NAME", a.name, "The Saved Ruleset")->required();
    exportCommand->add_option("--output", a.output, "The file (default: Payroll-Ruleset.tesselrules in this folder)");
    exportCommand->callback([&] { exitStatus = exportFile(session, a.name, a.output); });
    rules->add_subcommand("import", "Add the ruleset of a ruleset file to the library")
        ->callback([&] { exitStatus = importFile(session, a.file); })
        ->add_option("FILE", a.file, "A .tesselrules file")
        ->required();
    rules->add_subcommand("delete", "Remove a Saved Ruleset from this installation")
        ->callback([&] { exitStatus = remove(session, a.name); })
        ->add_option("NAME", a.name, "The Saved Ruleset")
        ->required();
}

}  // namespace tessel
