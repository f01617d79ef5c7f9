#include "SetupLibraryCommands.hpp"

#include "App/exchange/ProductionArchive.hpp"
#include "App/exchange/SetupFiles.hpp"
#include "App/model/NewFile.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using namespace command_actions;

// Runs an action on the installation's own records, refusals said as the other commands say them.
template <typename Action>
int onInstallation(CommandSession& session, Action&& action) {
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    try {
        return store->perform([&](ModelContext& context) { return action(context); });
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    } catch (const ModelValidationError& error) {
        return session.refuse("refused", error.what());
    } catch (const ProductionArchiveError& error) {
        return session.refuse(error.caseName(), error.description());
    }
}

Json personJSON(const CrewLibraryPerson& p) {
    Json json{{"id", p.id.text()}, {"displayName", p.displayName}};
    if (p.preferredPositionName) json["preferredPositionName"] = *p.preferredPositionName;
    if (p.preferredDTSTitle) json["preferredDTSTitle"] = *p.preferredDTSTitle;
    return json;
}

std::string personLine(const CrewLibraryPerson& p) {
    return p.displayName + (p.preferredPositionName ? "  " + *p.preferredPositionName : std::string()) +
           (p.preferredDTSTitle ? "  (DTS: " + *p.preferredDTSTitle + ")" : std::string()) + "\n";
}

int listPeople(CommandSession& session) {
    return onInstallation(session, [&](ModelContext& context) {
        Json list = Json::array();
        std::string text;
        for (const auto& p : crew_library::list(context)) {
            list.push_back(personJSON(p));
            text += personLine(p);
        }
        session.answer(list, text.empty() ? "The Crew Library is empty.\n" : text);
        return int{exitSuccess};
    });
}

int addPerson(CommandSession& session, const SetupLibraryCommandArguments& a) {
    return onInstallation(session, [&](ModelContext& context) {
        const auto optional = [](const std::string& text) { return text.empty() ? std::nullopt : std::optional(text); };
        const auto person = crew_library::add(context, a.name, optional(a.position), optional(a.dtsTitle), now());
        session.answer(personJSON(person), "Added \u201C" + person.displayName + "\u201D to the Crew Library.\n");
        return int{exitSuccess};
    });
}

int removePerson(CommandSession& session, const SetupLibraryCommandArguments& a) {
    return onInstallation(session, [&](ModelContext& context) {
        const auto person = crew_library::named(context, a.name);
        if (!a.yes) return session.confirmationNeeded("Delete from Crew Library\u2026", std::string(crew_library_words::deleteNote));
        crew_library::remove(context, person);
        session.answer(Json{{"removed", person.id.text()}}, "Removed \u201C" + person.displayName + "\u201D from the Crew Library. " +
                                                                std::string(crew_library_words::deleteNote) + "\n");
        return int{exitSuccess};
    });
}

int writeFile(CommandSession& session, const std::string& output, const std::string& bytes, const std::string& what) {
    if (!new_file::replace(output, bytes)) return session.refuse("exportFailed", "The file \u201C" + output + "\u201D could not be written.");
    session.answer(Json{{"exported", output}}, "Exported " + what + " to \u201C" + output + "\u201D.\n");
    return exitSuccess;
}

int exportPeople(CommandSession& session, const SetupLibraryCommandArguments& a) {
    std::string bytes;
    const int status = onInstallation(session, [&](ModelContext& context) {
        bytes = setup_files::writeCrewLibrary(crew_library::list(context), now());
        return int{exitSuccess};
    });
    if (status != exitSuccess) return status;
    return writeFile(session, a.output.empty() ? std::string(crew_library_words::defaultFileName) : a.output, bytes, "the Crew Library");
}

// NAME=useExisting|importSeparate for each possible match, by the imported person's name.
std::map<std::string, CrewLibraryImportResolution> resolutionsOf(const std::vector<std::string>& given) {
    std::map<std::string, CrewLibraryImportResolution> resolutions;
    for (const auto& text : given) {
        const auto equals = text.rfind('=');
        const std::string choice = equals == std::string::npos ? "" : text.substr(equals + 1);
        if (choice != "useExisting" && choice != "importSeparate") {
            throw Refused{"invalidChoice", "Resolve a match as NAME=useExisting or NAME=importSeparate."};
        }
        resolutions[text.substr(0, equals)] =
            choice == "useExisting" ? CrewLibraryImportResolution::useExisting : CrewLibraryImportResolution::importSeparate;
    }
    return resolutions;
}

int importPeople(CommandSession& session, const SetupLibraryCommandArguments& a) {
    const auto bytes = session.readInputFile(a.file);
    if (!bytes) return exitRefused;
    return onInstallation(session, [&](ModelContext& context) {
        const auto people = setup_files::readCrewLibrary(*bytes);
        const auto plan = crew_library::plan(context, people);
        const auto named = resolutionsOf(a.resolutions);
        std::map<Uuid, CrewLibraryImportResolution> resolutions;
        std::string unresolved;
        for (const auto& conflict : plan.conflicts) {
            const auto chosen = std::find_if(named.begin(), named.end(), [&](const auto& r) {
                return crew_library::sameName(r.first, conflict.imported.displayName);
            });
            if (chosen != named.end()) {
                resolutions.emplace(conflict.imported.id, chosen->second);
                continue;
            }
            unresolved += "  " + conflict.imported.displayName + " may be " + conflict.existingDisplayName +
                          (conflict.existingPreferredPositionName ? " (" + *conflict.existingPreferredPositionName + ")" : std::string()) +
                          " already in the library\n";
        }
        if (!unresolved.empty()) {
            throw Refused{"unresolvedMatches", unresolved + std::string(crew_library_words::chooseEveryMatch) +
                                                   " Add --resolve NAME=useExisting or NAME=importSeparate for each."};
        }
        const auto report = crew_library::apply(context, plan, resolutions, now());
        std::string text = std::string(crew_library_words::importComplete) + "\n";
        for (const auto& sentence : report.sentences()) text += sentence + "\n";
        session.answer(Json{{"imported", report.imported}, {"usedExisting", report.usedExisting}, {"keptSeparate", report.keptSeparate},
                            {"skipped", report.skipped}},
                       text);
        return int{exitSuccess};
    });
}

int exportCard(CommandSession& session, const SetupLibraryCommandArguments& a) {
    std::string bytes, name;
    const int status = onInstallation(session, [&](ModelContext& context) {
        const auto card = rate_cards::savedNamed(context, a.label);
        bytes = setup_files::writeRateCard(card);
        name = card.displayName;
        return int{exitSuccess};
    });
    if (status != exitSuccess) return status;
    // A rate card's file is named after the card.
    const std::string output = a.output.empty() ? name + std::string(setup_files::rateCardExtension) : a.output;
    return writeFile(session, output, bytes, "the Rate Card \u201C" + name + "\u201D");
}

int importCard(CommandSession& session, const SetupLibraryCommandArguments& a) {
    const auto bytes = session.readInputFile(a.file);
    if (!bytes) return exitRefused;
    return onInstallation(session, [&](ModelContext& context) {
        const auto card = setup_files::readRateCard(*bytes);
        rate_cards::addSaved(context, card, now());
        session.answer(Json{{"imported", card.id.text()}, {"displayName", card.displayName}},
                       "Added the Rate Card \u201C" + card.displayName + "\u201D with " + std::to_string(card.positions.size()) +
                           (card.positions.size() == 1 ? " position" : " positions") + " to the library.\n");
        return int{exitSuccess};
    });
}

int linkCrew(CommandSession& session, const SetupLibraryCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto members = crewMembersNamed(context, production.id, a.name);
        if (members.size() != 1) throw Refused{"crewNotFound", "This Production has no one named \u201C" + a.name + "\u201D."};
        const auto person = crew_library::named(context, a.libraryName);
        crew_library::link(context, production.id, members.front().id, person, now());
        session.answer(Json{{"crewMemberID", members.front().id.text()}, {"crewLibraryPersonID", person.id.text()}},
                       members.front().displayName + " is linked to \u201C" + person.displayName + "\u201D in the Crew Library.\n");
        return int{exitSuccess};
    });
}

}  // namespace

void addSetupLibraryCommands(CLI::App& app, CommandSession& session, SetupLibraryCommandArguments& a, int& exitStatus) {
    auto* library = app.get_subcommand("library");
    auto* crew = library->add_subcommand("crew", "The Crew Library: people you work with from show to show")->require_subcommand(1);
    crew->add_subcommand("list", "List the Crew Library")->callback([&] { exitStatus = listPeople(session); });
    auto* add = crew->add_subcommand("add", "Add a person to the Crew Library");
    add->add_option("NAME", a.name, "Their name")->required();
    add->add_option("--position", a.position, "Their preferred position");
    add->add_option("--dts-title", a.dtsTitle, "Their preferred title on the DTS");
    add->callback([&] { exitStatus = addPerson(session, a); });
    auto* remove = crew->add_subcommand("remove", "Remove a person from the Crew Library");
    remove->add_option("NAME", a.name, "Their name")->required();
    remove->add_flag("--yes", a.yes, "Remove without asking");
    remove->callback([&] { exitStatus = removePerson(session, a); });
    auto* exportCrew = crew->add_subcommand("export", "Write the Crew Library as a file");
    exportCrew->add_option("--output", a.output, "The file (default: \u201CTessel-Crew-Library.tesselcrewlibrary\u201D here)");
    exportCrew->callback([&] { exitStatus = exportPeople(session, a); });
    auto* importCrew = crew->add_subcommand("import", "Add the people of a Crew Library file");
    importCrew->add_option("FILE", a.file, "The .tesselcrewlibrary file")->required();
    importCrew->add_option("--resolve", a.resolutions, "NAME=useExisting or NAME=importSeparate for a possible match");
    importCrew->callback([&] { exitStatus = importPeople(session, a); });

    auto* card = library->add_subcommand("ratecard", "Saved Rate Cards as files")->require_subcommand(1);
    auto* exportRate = card->add_subcommand("export", "Write a saved Rate Card as a file");
    exportRate->add_option("LABEL", a.label, "The saved card's label")->required();
    exportRate->add_option("--output", a.output, "The file (default: the card's name with .tesselratepackage)");
    exportRate->callback([&] { exitStatus = exportCard(session, a); });
    auto* importRate = card->add_subcommand("import", "Add the Rate Card of a file to the library");
    importRate->add_option("FILE", a.file, "The .tesselratepackage file")->required();
    importRate->callback([&] { exitStatus = importCard(session, a); });

    auto* link = app.get_subcommand("crew")->add_subcommand("link", "Link a crew member to a person of the Crew Library");
    link->add_option("NAME", a.name, "The crew member")->required();
    link->add_option("LIBRARY-NAME", a.libraryName, "The person in the Crew Library")->required();
    link->callback([&] { exitStatus = linkCrew(session, a); });
}

}  // namespace tessel
