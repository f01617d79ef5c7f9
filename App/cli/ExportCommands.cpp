#include "ExportCommands.hpp"

#include "App/dtsexport/ProductionDTSTemplates.hpp"

#include <spawn.h>
#include <sys/wait.h>

#include "App/dtsexport/BuiltInDTSForm.hpp"
#include "App/dtsexport/DTSExportJob.hpp"
#include "App/exchange/PendingIdentity.hpp"
#include "App/exchange/ProductionArchive.hpp"
#include "App/model/NewFile.hpp"
#include "App/model/ProductionProfile.hpp"
#include "App/model/CalendarText.hpp"
#include "App/cli/CommandActions.hpp"

extern char** environ;

namespace tessel {
namespace {

using namespace command_actions;

// Hands the file to the desktop's default viewer and waits for xdg-open to say whether it could.
bool openWithDesktop(const std::string& path) {
    const char* arguments[] = {"xdg-open", path.c_str(), nullptr};
    pid_t child = 0;
    if (posix_spawnp(&child, "xdg-open", nullptr, nullptr, const_cast<char* const*>(arguments), environ) != 0) return false;
    int status = 0;
    if (waitpid(child, &status, 0) != child) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

using dts_export_job::issueLines;

Json issuesJSON(const std::vector<DTSExportPreflightIssue>& issues) {
    Json list = Json::array();
    for (const auto& issue : issues) list.push_back({{"crewEntryID", issue.crewEntryID.text()}, {"crewName", issue.crewName}, {"message", issue.message}});
    return list;
}

int exportDTS(CommandSession& session, const ExportCommandArguments& a) {
    std::optional<std::string> refusalTitle;
    std::string refusalCase, refusalText;
    const std::string output = a.output.empty() ? std::string(dts_export_words::suggestedFileName) : a.output;
    int pages = 0;
    std::vector<DTSExportPreflightIssue> warnings;
    const int status = act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const auto workday = DailyTimeSheets::find(context, production.id, date);
        if (!workday) {
            throw Refused{"dtsNotFound", "There is no DTS for " + calendar_text::formatDate(date) + "; create it with \u201Ctessel dts create " +
                                             calendar_text::formatDate(date) + "\u201D."};
        }
        try {
            const auto result = dts_export_job::render(context, production.id, *workday, a.forceWarnings);
            if (const auto* held = std::get_if<dts_export_job::Held>(&result)) {
                refusalTitle = held->title;
                refusalCase = held->blocking ? "notReady" : "reviewBeforeExporting";
                refusalText = issueLines(held->issues) +
                              (held->blocking ? "Nothing was exported." : "Nothing was exported; add --force-warnings to export anyway.");
                return int{exitRefused};
            }
            const auto& exported = std::get<dts_export_job::Exported>(result);
            dts_export::writeAtomically(output, exported.pdf);
            pages = exported.pages;
            warnings = exported.warnings;
        } catch (const ProductionDTSExportError& error) {
            refusalTitle = error.alertTitle();
            refusalCase = error.caseName();
            refusalText = error.description();
            return int{exitRefused};
        } catch (const DTSPDFRendererError& error) {
            refusalTitle = error.alertTitle();
            refusalCase = error.caseName();
            refusalText = error.description();
            return int{exitRefused};
        } catch (const GenericDTSRenderError& error) {
            refusalTitle = std::string(dts_export_words::exportFailedTitle);
            refusalCase = error.caseName();
            refusalText = error.what();
            return int{exitRefused};
        }
        std::string text = "Exported the DTS for " + calendar_text::formatDate(date) + " to \u201C" + output + "\u201D (" + std::to_string(pages) +
                           (pages == 1 ? " page" : " pages") + ").\n";
        if (!warnings.empty()) text += "Exported with warnings:\n" + issueLines(warnings);
        text += std::string(dts_export_words::reviewReminder) + "\n";
        session.answer(Json{{"exported", output}, {"pages", pages}, {"warnings", issuesJSON(warnings)}}, text);
        return int{exitSuccess};
    });
    if (refusalTitle) return session.refuseWithTitle(refusalCase, *refusalTitle, refusalText);
    if (status == exitSuccess && a.open && !openWithDesktop(output)) session.answer(Json::object(), std::string(dts_export_words::openFailed) + "\n");
    return status;
}

int setSignature(CommandSession& session, const ExportCommandArguments& a) {
    if (a.clearSignature == !a.signatureFile.empty()) return session.refuse("invalidChoice", "Give a signature image, or --clear, not both.");
    std::optional<std::string> bytes;
    if (!a.clearSignature) {
        bytes = session.readInputFile(a.signatureFile);
        if (!bytes) return exitRefused;
    }
    return act(session, [&](ModelContext& context, const Production& production) {
        if (bytes) {
            dts_export::setSignature(context, production.id, *bytes);
            session.answer(Json{{"signature", "set"}}, "The department head\u2019s signature is kept for exported DTS forms. " +
                                                           std::string(dts_export_words::signaturePurpose) + "\n");
        } else {
            dts_export::clearSignature(context, production.id);
            session.answer(Json{{"signature", "cleared"}}, "The department head\u2019s signature was removed.\n");
        }
        return int{exitSuccess};
    });
}

// The archive is read in one store action and written after it, whole or not at all.
int exportArchive(CommandSession& session, const ExportCommandArguments& a) {
    const std::string output = a.archiveOutput.empty() ? std::string(production_archive::defaultFileName) : a.archiveOutput;
    std::string archive, name;
    const int status = act(session, [&](ModelContext& context, const Production& production) {
        try {
            archive = production_archive::exportProduction(context, production.id, now(), TESSEL_VERSION, TESSEL_BUILD);
        } catch (const ProductionArchiveExportError& error) {
            return session.refuseWithTitle(error.caseName(), std::string(production_archive::exportTitle), error.description());
        }
        name = production.name;
        return int{exitSuccess};
    });
    if (status != exitSuccess) return status;
    if (!new_file::replace(output, archive)) {
        return session.refuseWithTitle("exportFailed", std::string(production_archive::exportTitle), "The Production archive could not be exported.");
    }
    session.answer(Json{{"exported", output}, {"bytes", archive.size()}},
                   "Exported the production \u201C" + name + "\u201D to \u201C" + output + "\u201D.\n");
    return exitSuccess;
}

// The whole archive is checked before anything is written, and written in one store action; the
// imported production becomes the current one.
int importArchive(CommandSession& session, const ExportCommandArguments& a) {
    const auto bytes = session.readInputFile(a.archiveFile);
    if (!bytes) return exitRefused;
    TesselStore* store = session.store();
    if (!store) return exitRefused;
    std::optional<production_archive::ImportedProduction> done;
    try {
        done = store->perform([&](ModelContext& context) { return production_archive::importProduction(context, *bytes); });
    } catch (const ProductionArchiveError& error) {
        return session.refuseWithTitle(error.caseName(), std::string(production_archive::importTitle), error.description());
    }
    const auto& imported = *done;
    std::string text = "Imported the production \u201C" + imported.name + "\u201D" +
                       (imported.copy ? " as a copy: this store already holds the archive's production.\n" : ".\n");
    if (imported.pendingIdentity) {
        text += std::string(production_archive::pendingIdentityNotice) + " Use it with \u201Ctessel production identity accept\u201D.\n";
    }
    if (const auto problem = session.rememberProduction(imported.productionID)) text += *problem + "\n";
    session.answer(Json{{"productionID", imported.productionID.text()}, {"name", imported.name}, {"copy", imported.copy},
                        {"pendingIdentity", imported.pendingIdentity}},
                   text);
    return exitSuccess;
}

// A Department Head identity an archive brought is used only once accepted.
int decideIdentity(CommandSession& session, const ExportCommandArguments& a) {
    if (a.identityChoice != "accept" && a.identityChoice != "later") return session.refuse("invalidChoice", "Choose accept or later.");
    return act(session, [&](ModelContext& context, const Production& production) {
        if (!pending_identity::find(context, production.id)) throw Refused{"nothingPending", std::string(pending_identity::nothingPending)};
        if (a.identityChoice == "later") {
            session.answer(Json{{"identity", "later"}}, std::string(pending_identity::reviewLater) + "\n");
            return int{exitSuccess};
        }
        pending_identity::accept(context, production.id);
        session.answer(Json{{"identity", "accepted"}}, std::string(pending_identity::accepted) + "\n");
        return int{exitSuccess};
    });
}

}  // namespace

void addExportCommands(CLI::App& app, CommandSession& session, ExportCommandArguments& a, int& exitStatus) {
    auto* exportCommand = app.get_subcommand("dts")->add_subcommand("export", "Export the DTS of a date as a filled PDF of the production's form");
    exportCommand->add_option("DATE", a.date, "The DTS date, YYYY-MM-DD")->required();
    exportCommand->add_option("--output", a.output, "The PDF to write (default: \u201CProduction DTS.pdf\u201D in the current folder)");
    exportCommand->add_flag("--open", a.open, "Open the PDF with the desktop's default viewer");
    exportCommand->add_flag("--force-warnings", a.forceWarnings, "Export although the checks found warnings");
    exportCommand->callback([&] { exitStatus = exportDTS(session, a); });

    auto* signature = app.get_subcommand("production")->add_subcommand("signature", "The department head's signature on exported DTS forms");
    signature->add_option("FILE", a.signatureFile, "A PNG, JPEG or TIFF image smaller than 5 MB");
    signature->add_flag("--clear", a.clearSignature, "Remove the signature");
    signature->callback([&] { exitStatus = setSignature(session, a); });

    auto* archive = app.get_subcommand("production")->add_subcommand("export", "Write the production, with everything it holds, as an archive");
    archive->add_option("--output", a.archiveOutput, "The archive to write (default: \u201CTessel-Production.tesselarchive\u201D here)");
    archive->callback([&] { exitStatus = exportArchive(session, a); });

    auto* import = app.get_subcommand("production")->add_subcommand("import", "Add the production an archive holds (a copy when this store has it)");
    import->add_option("FILE", a.archiveFile, "The .tesselarchive file")->required();
    import->callback([&] { exitStatus = importArchive(session, a); });

    auto* identity = app.get_subcommand("production")->add_subcommand("identity", "Use, or review later, a Department Head identity an archive brought");
    identity->add_option("CHOICE", a.identityChoice, "accept or later")->required();
    identity->callback([&] { exitStatus = decideIdentity(session, a); });
}

}  // namespace tessel
