#include "DiagnosticCommands.hpp"

#include <fstream>
#include <sstream>

#include "App/exchange/DiagnosticPackage.hpp"
#include "App/exchange/StoredZip.hpp"

namespace tessel {
namespace {

namespace package = diagnostic_package;

int exportPackage(CommandSession& session, const std::string& output) {
    const auto now = std::chrono::system_clock::now();
    const fs::path file = output.empty() ? fs::current_path() / package::proposedFileName(now) : fs::path(output);
    session.streams().err << package::privacyWarning << '\n';
    std::error_code ignored;
    if (fs::exists(file, ignored)) {
        return session.refuse("fileExists", "The file \u201C" + file.string() + "\u201D already exists; choose another with --output.");
    }
    const auto failed = [&](std::string_view errorCase, const std::string& reason) {
        return session.refuseWithTitle(errorCase, std::string(package::failureTitle), std::string(package::failureMessage) + " " + reason);
    };
    try {
        const Json manifest = package::write(session.environment(), {TESSEL_VERSION, TESSEL_BUILD}, file, now);
        std::ostringstream text;
        text << "Wrote the diagnostic package \u201C" << file.string() << "\u201D: "
             << counted(static_cast<std::int64_t>(manifest["canonicalStoreFiles"].size()), "store file", "store files");
        if (manifest.contains("backupDirectoryName")) {
            text << " and the backup \u201C" << manifest["backupDirectoryName"].get<std::string>() << "\u201D";
        }
        text << ".\n";
        session.answer(Json{{"file", file.string()}, {"manifest", manifest}}, text.str());
        return exitSuccess;
    } catch (const TesselDiagnosticPackageError& error) {
        return failed(error.caseName(), error.description());
    } catch (const stored_zip::FormatError& error) {
        return failed("entryTooLarge", error.what());
    } catch (const fs::filesystem_error& error) {
        return failed("writeFailed", "The file \u201C" + file.string() + "\u201D could not be written (" + error.code().message() + ").");
    }
}

int inspectPackage(CommandSession& session, const std::string& file) {
    const auto bytes = session.readInputFile(file);
    if (!bytes) return exitUsage;
    try {
        const auto inspection = package::inspect(std::string_view(*bytes));
        std::ostringstream text;
        text << "Unpacked the diagnostic package into \u201C" << inspection.folder.string() << "\u201D.\n"
             << decimal_json::dump(Json::parse(inspection.manifest.dump()), 2) << '\n';
        session.answer(Json{{"folder", inspection.folder.string()}, {"entries", inspection.entryNames},
                            {"manifest", Json::parse(inspection.manifest.dump())}},
                       text.str());
        return exitSuccess;
    } catch (const TesselDiagnosticPackageError& error) {
        if (session.options().json) return session.refuse(error.caseName(), error.description(), Json{{"detail", error.detail()}});
        return session.refuse(error.caseName(), error.description() + " " + error.detail());
    } catch (const fs::filesystem_error& error) {
        return session.refuse("unpackFailed", "The diagnostic package could not be unpacked (" + error.code().message() + ").");
    }
}

}  // namespace

void addDiagnosticCommands(CLI::App& store, CommandSession& session, DiagnosticCommandArguments& arguments, int& exitStatus) {
    auto* diagnostic = store.add_subcommand("diagnostic", "Write a support package of the store files, even when the store cannot be opened");
    diagnostic->add_option("--output", arguments.output,
                           "The package file (default: Tessel-Diagnostic-<local time>.tesseldiagnostic in this folder)");
    diagnostic->callback([&] { exitStatus = exportPackage(session, arguments.output); });
    store.add_subcommand("inspect-diagnostic", "Check a support package and unpack it into a fresh temporary folder")
        ->callback([&] { exitStatus = inspectPackage(session, arguments.package); })
        ->add_option("FILE", arguments.package, "The .tesseldiagnostic file")
        ->required();
}

}  // namespace tessel
