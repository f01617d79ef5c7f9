#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "App/model/TesselPersistence.hpp"
#include "PayrollDomain/DomainError.hpp"

namespace tessel {

enum class TesselDiagnosticPackageErrorCase { malformedArchive, noStoreFiles };

// A package that cannot be made or read. A malformed archive carries the detail of what is wrong.
class TesselDiagnosticPackageError : public CaseError<TesselDiagnosticPackageErrorCase> {
public:
    using Case = TesselDiagnosticPackageErrorCase;
    static TesselDiagnosticPackageError malformedArchive(std::string detail);
    static TesselDiagnosticPackageError noStoreFiles();
    const std::string& detail() const noexcept { return detail_; }

private:
    TesselDiagnosticPackageError(Case errorCase, std::string detail);
    std::string detail_;
};

// Who made a package: the application's short version and its build.
struct ApplicationIdentity {
    std::string version;
    std::string build;
};

// The support file: the raw store files, the newest pre-open backup and a manifest describing the
// store environment, as a stored ZIP ("manifest.json", "canonical-store/…", "pre-open-backup/…").
// The store files are only read, never opened as a store or changed.
namespace diagnostic_package {

inline constexpr int formatVersion = 1;
inline constexpr std::string_view fileExtension = ".tesseldiagnostic";
inline constexpr std::string_view bundleIdentifier = "app.tessel";
inline constexpr std::string_view exportTitle = "Export Tessel Diagnostic Package?";
inline constexpr std::string_view privacyWarning =
    "This package can contain your Tessel productions, crew, pay rates, time entries, payroll rules, and other payroll "
    "data. Share it only with someone you trust for Tessel support.";
inline constexpr std::string_view failureTitle = "Couldn\u2019t Export Diagnostic Package";
inline constexpr std::string_view failureMessage = "The diagnostic package could not be created.";

// "Tessel-Diagnostic-2026-11-22-163005.tesseldiagnostic", stamped in local time.
std::string proposedFileName(std::chrono::system_clock::time_point now);

// The manifest of a package made now (JSON keys sorted).
nlohmann::json manifest(const TesselStoreEnvironment& environment, const StoreEnvironmentFacts& facts,
                        const ApplicationIdentity& application, std::chrono::system_clock::time_point now);

// Writes the package to `output`, which must not exist yet. It is written beside the target and moved
// into place when complete, so a failure leaves no file. Returns the manifest. Throws
// TesselDiagnosticPackageError (no store files), stored_zip::FormatError (an entry too large) or a
// filesystem error.
nlohmann::json write(const TesselStoreEnvironment& environment, const ApplicationIdentity& application,
                     const std::filesystem::path& output, std::chrono::system_clock::time_point now);

// A package unpacked for support.
struct Inspection {
    std::filesystem::path folder;  // a fresh "Tessel-Diagnostic-Inspection-…" folder in the temporary folder
    nlohmann::json manifest;
    std::vector<std::string> entryNames;
};

// Checks the whole package, then unpacks it. Anything that is not a well-formed package of this layout
// is refused as a malformed archive, and a refused package leaves no folder.
Inspection inspect(std::string_view packageBytes);
// Checks package bytes as inspect() does, without unpacking them; returns the manifest.
nlohmann::json check(std::string_view packageBytes);

}  // namespace diagnostic_package
}  // namespace tessel
