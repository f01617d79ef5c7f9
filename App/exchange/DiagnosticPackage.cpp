#include "DiagnosticPackage.hpp"

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <sys/utsname.h>
#include <unistd.h>

#include "App/exchange/StoredZip.hpp"
#include "App/model/NewFile.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/StoreSchema.hpp"

namespace tessel {

TesselDiagnosticPackageError::TesselDiagnosticPackageError(Case errorCase, std::string detail)
    : CaseError(errorCase, errorCase == Case::malformedArchive ? "malformedArchive" : "noStoreFiles",
                errorCase == Case::malformedArchive ? "The diagnostic package is invalid."
                                                    : "No Tessel store files were available to package.",
                detail.empty() ? std::vector<ErrorField>{} : std::vector<ErrorField>{{"detail", detail}}),
      detail_(std::move(detail)) {}

TesselDiagnosticPackageError TesselDiagnosticPackageError::malformedArchive(std::string detail) {
    return {Case::malformedArchive, std::move(detail)};
}

TesselDiagnosticPackageError TesselDiagnosticPackageError::noStoreFiles() { return {Case::noStoreFiles, {}}; }

namespace diagnostic_package {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

constexpr std::string_view manifestEntry = "manifest.json";
constexpr std::string_view canonicalFolder = "canonical-store/";
constexpr std::string_view backupFolder = "pre-open-backup/";
constexpr std::string_view inspectionPrefix = "Tessel-Diagnostic-Inspection-";

std::string platformDescription() {
    utsname system{};
    if (::uname(&system) != 0) return "Linux";
    return std::string(system.sysname) + " " + system.release + " " + system.machine;
}

json names(const std::vector<std::string>& list) { return json(list); }

TesselDiagnosticPackageError malformed(const std::string& detail) { return TesselDiagnosticPackageError::malformedArchive(detail); }

// The manifest keys and the JSON type each must have; optional keys may be absent.
struct ManifestKey {
    std::string_view key;
    json::value_t type;
    bool optional = false;
};

const std::vector<ManifestKey>& manifestKeys() {
    using T = json::value_t;
    static const std::vector<ManifestKey> keys{
        {"formatVersion", T::number_unsigned},  {"createdAt", T::string},
        {"applicationVersion", T::string},       {"applicationBuild", T::string},
        {"currentSchemaVersion", T::string},     {"platform", T::string},
        {"bundleIdentifier", T::string},         {"storePathDescription", T::string},
        {"currentStorePath", T::string},         {"legacyStorePath", T::string, true},
        {"currentStoreExists", T::boolean},      {"legacyStoreExists", T::boolean},
        {"legacyStoreInspectionResult", T::string}, {"legacyStoredModelIdentifiers", T::array},
        {"legacyStoredEntityNames", T::array},   {"storedMetadataSummary", T::string},
        {"storedModelIdentifiers", T::array},    {"storedEntityNames", T::array},
        {"storeOpenError", T::string},           {"canonicalStoreFiles", T::array},
        {"backupDirectoryName", T::string, true}, {"backupFiles", T::array},
    };
    return keys;
}

bool hasType(const json& value, json::value_t type) {
    if (type == json::value_t::number_unsigned) return value.is_number_integer() && value.get<std::int64_t>() >= 1;
    if (type == json::value_t::array) {
        return value.is_array() && std::all_of(value.begin(), value.end(), [](const json& item) { return item.is_string(); });
    }
    return value.type() == type;
}

json readManifest(std::string_view text) {
    json manifest = json::parse(text.begin(), text.end(), nullptr, false);
    if (!manifest.is_object()) throw malformed("The manifest is not a JSON object.");
    for (const auto& [key, type, optional] : manifestKeys()) {
        const auto found = manifest.find(std::string(key));
        if (found == manifest.end()) {
            if (optional) continue;
            throw malformed("The manifest has no \u201C" + std::string(key) + "\u201D.");
        }
        if (!hasType(*found, type)) throw malformed("The manifest\u2019s \u201C" + std::string(key) + "\u201D has the wrong type.");
    }
    return manifest;
}

// The file names under one folder of the package, in entry order; each is one file, not a path.
std::vector<std::string> filesUnder(const std::vector<stored_zip::Entry>& entries, std::size_t& next, std::string_view folder) {
    std::vector<std::string> files;
    for (; next < entries.size() && entries[next].name.starts_with(folder); ++next) {
        const std::string file = entries[next].name.substr(folder.size());
        if (file.empty() || file.find('/') != std::string::npos) {
            throw malformed("The entry \u201C" + entries[next].name + "\u201D is not a file of its folder.");
        }
        files.push_back(file);
    }
    return files;
}

struct Checked {
    std::vector<stored_zip::Entry> entries;
    json manifest;
};

Checked checkPackage(std::string_view bytes) {
    std::vector<stored_zip::Entry> entries;
    try {
        entries = stored_zip::read(bytes);
    } catch (const stored_zip::FormatError& error) {
        throw malformed(error.what());
    }
    if (entries.empty() || entries.front().name != manifestEntry) throw malformed("The package does not begin with its manifest.");
    std::size_t next = 1;
    const auto canonical = filesUnder(entries, next, canonicalFolder);
    const auto backup = filesUnder(entries, next, backupFolder);
    if (next != entries.size()) throw malformed("The entry \u201C" + entries[next].name + "\u201D does not belong in a diagnostic package.");
    json manifest = readManifest(entries.front().data);
    if (manifest["canonicalStoreFiles"] != names(canonical) || manifest["backupFiles"] != names(backup)) {
        throw malformed("The manifest does not list the files the package holds.");
    }
    if (!backup.empty() && !manifest.contains("backupDirectoryName")) throw malformed("The manifest does not name the backup it holds.");
    return {std::move(entries), std::move(manifest)};
}

void writeWhole(const fs::path& file, std::string_view bytes) {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) throw fs::filesystem_error("write", file, std::error_code(EIO, std::generic_category()));
}


}  // namespace

std::string proposedFileName(std::chrono::system_clock::time_point now) {
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d-%H%M%S", &local);
    return "Tessel-Diagnostic-" + std::string(stamp) + std::string(fileExtension);
}

json manifest(const TesselStoreEnvironment& environment, const StoreEnvironmentFacts& facts,
              const ApplicationIdentity& application, std::chrono::system_clock::time_point now) {
    json m;
    m["formatVersion"] = formatVersion;
    m["createdAt"] = calendar_text::formatInstant(std::chrono::floor<std::chrono::seconds>(now));
    m["applicationVersion"] = application.version;
    m["applicationBuild"] = application.build;
    m["currentSchemaVersion"] = std::string(store_schema::currentSchemaVersion);
    m["platform"] = platformDescription();
    m["bundleIdentifier"] = std::string(bundleIdentifier);
    m["storePathDescription"] = std::string(description(environment.kind)) + " in " + environment.storeURL.parent_path().string();
    m["currentStorePath"] = environment.storeURL.string();
    m["legacyStorePath"] = environment.legacyStoreURL.string();
    m["currentStoreExists"] = facts.currentStoreExists;
    m["legacyStoreExists"] = facts.legacyStoreExists;
    m["legacyStoreInspectionResult"] = facts.legacyStoreInspectionResult;
    m["legacyStoredModelIdentifiers"] = facts.legacyMetadata ? facts.legacyMetadata->modelIdentifiers : std::vector<std::string>{};
    m["legacyStoredEntityNames"] = facts.legacyMetadata ? facts.legacyMetadata->entityNames : std::vector<std::string>{};
    m["storedMetadataSummary"] = facts.currentMetadata ? metadataSummaryText(*facts.currentMetadata) : "Store metadata was unavailable.";
    m["storedModelIdentifiers"] = facts.currentMetadata ? facts.currentMetadata->modelIdentifiers : std::vector<std::string>{};
    m["storedEntityNames"] = facts.currentMetadata ? facts.currentMetadata->entityNames : std::vector<std::string>{};
    m["storeOpenError"] = facts.storeOpenError;
    std::vector<std::string> canonical;
    for (const auto& file : facts.storeFiles) canonical.push_back(file.filename().string());
    m["canonicalStoreFiles"] = canonical;
    m["backupFiles"] = facts.newestBackup ? facts.newestBackup->copiedFileNames : std::vector<std::string>{};
    if (facts.newestBackup) m["backupDirectoryName"] = facts.newestBackup->directoryURL.filename().string();
    return m;
}

json write(const TesselStoreEnvironment& environment, const ApplicationIdentity& application, const fs::path& output,
           std::chrono::system_clock::time_point now) {
    const StoreEnvironmentFacts facts = describeStoreEnvironment(environment);
    if (facts.storeFiles.empty()) throw TesselDiagnosticPackageError::noStoreFiles();
    const json packageManifest = manifest(environment, facts, application, now);

    const fs::path building = new_file::beside(output);
    try {
        stored_zip::Writer zip(building);
        zip.add(manifestEntry, packageManifest.dump(2) + "\n");
        for (const auto& file : facts.storeFiles) zip.addFile(std::string(canonicalFolder) + file.filename().string(), file);
        if (facts.newestBackup) {
            for (const auto& name : facts.newestBackup->copiedFileNames) {
                zip.addFile(std::string(backupFolder) + name, facts.newestBackup->directoryURL / name);
            }
        }
        zip.finish();
    } catch (...) {
        std::error_code ignored;
        fs::remove(building, ignored);
        throw;
    }
    if (!new_file::place(building, output)) {
        throw fs::filesystem_error("link", output, std::make_error_code(std::errc::file_exists));
    }
    return packageManifest;
}

json check(std::string_view packageBytes) { return checkPackage(packageBytes).manifest; }

Inspection inspect(std::string_view packageBytes) {
    Checked checked = checkPackage(packageBytes);  // everything is checked before a folder exists
    std::string pattern = (fs::temp_directory_path() / (std::string(inspectionPrefix) + "XXXXXX")).string();
    if (!::mkdtemp(pattern.data())) throw fs::filesystem_error("mkdtemp", std::error_code(errno, std::generic_category()));
    Inspection inspection{pattern, std::move(checked.manifest), {}};
    try {
        for (const auto& entry : checked.entries) {
            const fs::path target = inspection.folder / entry.name;
            fs::create_directories(target.parent_path());
            writeWhole(target, entry.data);
            inspection.entryNames.push_back(entry.name);
        }
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(inspection.folder, ignored);
        throw;
    }
    return inspection;
}


}  // namespace diagnostic_package
}  // namespace tessel
