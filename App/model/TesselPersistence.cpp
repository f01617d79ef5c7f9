#include "TesselPersistence.hpp"

#include <SQLiteCpp/Statement.h>
#include <sqlite3.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <unistd.h>

#include "App/model/CalendarText.hpp"
#include "App/model/NewFile.hpp"
#include "App/model/StoreSchema.hpp"

namespace tessel {
namespace {

using Case = TesselPersistenceErrorCase;

namespace messages {
constexpr std::string_view storePreparationFailed =
    "Tessel could not safely prepare its application-specific data store.";
constexpr std::string_view legacyStoreConflict =
    "The former shared data-store path contains data from another application, so Tessel did not create or replace "
    "a store.";
constexpr std::string_view backupFailed =
    "Tessel could not preserve a pre-open backup, so the data store was not opened.";
constexpr std::string_view foreignModel = "The existing store contains a foreign model and was not opened.";
constexpr std::string_view storeOpenFailed =
    "Tessel could not open or migrate the data store. No automatic reset was attempted.";
constexpr std::string_view inspectionCopyFailed = "Tessel could not create an isolated metadata-inspection copy.";
constexpr std::string_view legacyBackupFailed = "The legacy store could not be backed up for inspection.";
constexpr std::string_view expectedSchema =
    "Expected Tessel schema: 40.2.0 (migration sources include V1-V40 and transitional historical generations).";
}  // namespace messages

namespace legacy {
constexpr std::string_view none = "No store exists at the former shared path.";
constexpr std::string_view recognised = "Recognizable Tessel store.";
constexpr std::string_view foreign = "Foreign store; it is not a usable legacy Tessel store.";
constexpr std::string_view unreadable =
    "Store exists but its metadata could not be read safely; it was not treated as Tessel.";
constexpr std::string_view leftUnchanged = "The legacy Tessel store was left unchanged.";
}  // namespace legacy

constexpr std::string_view backupFolderPrefix = "pre-open-backup";
constexpr std::string_view inspectionFolderPrefix = "Tessel-Legacy-Inspection-";

// A refusal: the error case with its sentence, and what the store's metadata said.
struct Refusal {
    Case errorCase;
    std::string message;
    std::optional<StoreMetadataSummary> metadata;
    std::optional<std::string> openError = std::nullopt;  // what stopped a store whose metadata was read from opening
};

// The main store file and the journal files SQLite keeps beside it, those that exist.
std::vector<fs::path> storeFiles(const fs::path& storeURL) {
    std::vector<fs::path> files;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
        fs::path file = storeURL;
        file += suffix;
        if (fs::exists(file)) files.push_back(file);
    }
    return files;
}

std::vector<std::string> copyStoreFiles(const fs::path& storeURL, const fs::path& directory) {
    std::vector<std::string> copied;
    for (const fs::path& file : storeFiles(storeURL)) {
        fs::copy_file(file, directory / file.filename(), fs::copy_options::overwrite_existing);
        copied.push_back(file.filename().string());
    }
    return copied;
}

fs::path newTemporaryDirectory(std::string_view prefix) {
    std::string pattern = (fs::temp_directory_path() / (std::string(prefix) + "XXXXXX")).string();
    if (!mkdtemp(pattern.data())) throw fs::filesystem_error("mkdtemp", std::error_code(errno, std::generic_category()));
    return pattern;
}

// A temporary folder removed with everything in it when it goes out of scope.
struct TemporaryDirectory {
    fs::path path;
    explicit TemporaryDirectory(std::string_view prefix) : path(newTemporaryDirectory(prefix)) {}
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    ~TemporaryDirectory() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

// An SQLite URI naming a file read as immutable: no lock is taken and no companion file is created.
std::string immutableURI(const fs::path& file) {
    std::string uri = "file:";
    for (const char c : file.string()) {
        if (c == '%' || c == '?' || c == '#') {
            static constexpr char hex[] = "0123456789ABCDEF";
            uri += '%';
            uri += hex[static_cast<unsigned char>(c) >> 4];
            uri += hex[static_cast<unsigned char>(c) & 0xF];
        } else {
            uri += c;
        }
    }
    return uri + "?immutable=1";
}

// Reads what the store's own metadata says through a connection that only reads.
StoreMetadataSummary readMetadata(SQLite::Database& db) {
    StoreMetadataSummary summary;
    try {
        SQLite::Statement tables(db, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name");
        while (tables.executeStep()) summary.entityNames.push_back(tables.getColumn(0).getString());
        const bool hasMetadata = std::find(summary.entityNames.begin(), summary.entityNames.end(),
                                           store_schema::metadataTable) != summary.entityNames.end();
        if (hasMetadata) {
            SQLite::Statement rows(db, "SELECT key, value FROM TesselStoreMetadata");
            std::string identifier;
            while (rows.executeStep()) {
                const std::string key = rows.getColumn(0).getString();
                if (key == "modelIdentifier") identifier = rows.getColumn(1).getString();
                if (key == "schemaVersion") summary.schemaVersion = rows.getColumn(1).getString();
            }
            summary.isTesselModel = identifier == store_schema::modelIdentifier && summary.schemaVersion.has_value();
            if (!identifier.empty()) summary.modelIdentifiers.push_back(identifier + " " + summary.schemaVersion.value_or("?"));
        }
        std::erase(summary.entityNames, std::string(store_schema::metadataTable));
    } catch (const std::exception& error) {
        summary = StoreMetadataSummary{error.what(), {}, {}, {}, false};
    }
    return summary;
}

StoreMetadataSummary readMetadataInPlace(const fs::path& copy, bool immutable = false) {
    try {
        SQLite::Database db(immutable ? immutableURI(copy) : copy.string(),
                            SQLite::OPEN_READONLY | (immutable ? SQLITE_OPEN_URI : 0));
        return readMetadata(db);
    } catch (const std::exception& error) {
        return StoreMetadataSummary{error.what(), {}, {}, {}, false};
    }
}

std::string join(const std::vector<std::string>& items) {
    std::string text;
    for (const auto& item : items) text += (text.empty() ? "" : ", ") + item;
    return text.empty() ? "none" : text;
}

std::string detailsText(const std::optional<StoreMetadataSummary>& metadata, const std::optional<std::string>& openError = {}) {
    std::string details(messages::expectedSchema);
    if (!metadata) {
        details += " Store metadata is unavailable.";
    } else if (metadata->readError) {
        details += " Store metadata could not be read: " + *metadata->readError + ".";
    } else {
        details += " Store model identifiers: " + join(metadata->modelIdentifiers) + ". Store entities: " + join(metadata->entityNames) + ".";
    }
    if (openError) details += " The store could not be opened: " + *openError + ".";
    return details;
}

TesselUnavailableStoreState unavailable(const TesselStoreEnvironment& environment, const Refusal& refusal) {
    return {environment.storeURL, environment.backupRootURL, refusal.message, refusal.errorCase,
            detailsText(refusal.metadata, refusal.openError)};
}

void writeMetadata(SQLite::Database& db, std::string_view key, std::string_view value) {
    SQLite::Statement statement(db, "INSERT INTO TesselStoreMetadata (key, value) VALUES (?, ?) "
                                    "ON CONFLICT(key) DO UPDATE SET value = excluded.value");
    statement.bind(1, std::string(key));
    statement.bind(2, std::string(value));
    statement.exec();
}

std::string readSchemaVersion(SQLite::Database& db) {
    return db.execAndGet("SELECT value FROM TesselStoreMetadata WHERE key = 'schemaVersion'").getString();
}

void configureConnection(SQLite::Database& db) {
    db.exec("PRAGMA foreign_keys = ON");
    // Another Tessel process may hold the write lock for a while (a large import); wait rather than fail.
    db.setBusyTimeout(15000);
}

// Creates the lookup indexes the store lacks; a store that has them all is only read.
void addMissingLookupIndexes(SQLite::Database& db) {
    std::vector<const store_schema::LookupIndex*> missing;
    for (const auto& index : store_schema::lookupIndexes()) {
        SQLite::Statement exists(db, "SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ?1");
        exists.bind(1, std::string(index.name));
        if (!exists.executeStep()) missing.push_back(&index);
    }
    if (missing.empty()) return;
    SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
    for (const auto* index : missing) db.exec(std::string(index->definition));
    transaction.commit();
}

// Runs each step from the store's version on, one transaction per step.
void migrate(SQLite::Database& db) {
    for (const auto& step : store_schema::migrationPlan()) {
        // Only a step that applies takes the write lock, so that opening a current store never waits for,
        // or blocks, another Tessel process; the version is read again under the lock.
        if (readSchemaVersion(db) != step.fromVersion) continue;
        SQLite::Transaction transaction(db, SQLite::TransactionBehavior::IMMEDIATE);
        if (readSchemaVersion(db) != step.fromVersion) continue;
        step.apply(db);
        writeMetadata(db, "schemaVersion", step.toVersion);
        transaction.commit();
    }
    if (readSchemaVersion(db) != store_schema::currentSchemaVersion) {
        throw std::runtime_error("no migration leads from schema " + readSchemaVersion(db));
    }
    addMissingLookupIndexes(db);
}

// A file name beside the store that no other process uses.
fs::path buildingPath(const fs::path& storeURL, std::string_view purpose) {
    fs::path building = storeURL;
    building += "." + std::string(purpose) + "-" + std::to_string(::getpid());
    for (const fs::path& leftover : storeFiles(building)) fs::remove(leftover);
    return building;
}

// Builds a new store beside the final path and links it into place, so that an interrupted creation
// never leaves a half-made store where the next start would find it.
void createStore(const fs::path& storeURL) {
    const fs::path building = buildingPath(storeURL, "creating");
    {
        SQLite::Database db(building.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        db.exec("PRAGMA application_id = " + std::to_string(store_schema::applicationID));
        db.exec("PRAGMA journal_mode = WAL");
        configureConnection(db);
        SQLite::Transaction transaction(db);
        db.exec("CREATE TABLE TesselStoreMetadata (key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL)");
        db.exec(std::string(store_schema::earliestGenerationSchema()));
        writeMetadata(db, "modelIdentifier", store_schema::modelIdentifier);
        writeMetadata(db, "schemaVersion", store_schema::earliestSchemaVersion);
        transaction.commit();
        migrate(db);
    }
    new_file::place(building, storeURL);  // another process may have put its store there first
}

// Brings a Tessel store from the former shared path into the canonical place through a consistent
// snapshot of its isolated copy, so that transactions still in its write-ahead log come along and the
// files at the former path are never opened.
void adoptLegacyStore(const fs::path& isolatedCopy, const fs::path& storeURL) {
    const fs::path building = buildingPath(storeURL, "adopting");
    store_backups::snapshot(isolatedCopy, building);
    {
        SQLite::Database db(building.string(), SQLite::OPEN_READWRITE);
        db.exec("PRAGMA journal_mode = WAL");
    }
    new_file::place(building, storeURL);  // another process may have put its store there first
}

// Decides from the metadata whether the store may be opened: ours, and at a version the plan reaches.
std::optional<Refusal> refusalFor(const StoreMetadataSummary& metadata) {
    if (metadata.readError) return Refusal{Case::storeOpenFailed, std::string(messages::storeOpenFailed), metadata};
    if (!metadata.isTesselModel) return Refusal{Case::storeOpenFailed, std::string(messages::foreignModel), metadata};
    const std::string& version = *metadata.schemaVersion;
    const bool known = version == store_schema::currentSchemaVersion ||
                       std::any_of(store_schema::migrationPlan().begin(), store_schema::migrationPlan().end(),
                                   [&](const auto& step) { return step.fromVersion == version; });
    if (!known) return Refusal{Case::storeOpenFailed, std::string(messages::storeOpenFailed), metadata};
    return std::nullopt;
}

struct LegacyInspection {
    std::string result;
    std::optional<Refusal> refusal;
    std::optional<StoreMetadataSummary> metadata;
    std::unique_ptr<TemporaryDirectory> copy;  // kept when the store is one of ours, for its adoption
    bool adopt() const { return copy != nullptr; }
    fs::path copiedStore(const fs::path& legacyURL) const { return copy->path / legacyURL.filename(); }
};

// Looks at the former shared store on an isolated copy, never in place. Nobody writes that store any
// more, so a copy of its files is the store as it was left.
LegacyInspection inspectLegacyStore(const fs::path& legacyURL) {
    if (!fs::exists(legacyURL)) return {std::string(legacy::none), std::nullopt, std::nullopt, nullptr};
    std::unique_ptr<TemporaryDirectory> copy;
    try {
        copy = std::make_unique<TemporaryDirectory>(inspectionFolderPrefix);
    } catch (const std::exception&) {
        return {std::string(legacy::unreadable),
                Refusal{Case::legacyStoreConflict, std::string(messages::inspectionCopyFailed), std::nullopt}, std::nullopt,
                nullptr};
    }
    try {
        copyStoreFiles(legacyURL, copy->path);
    } catch (const std::exception&) {
        return {std::string(legacy::unreadable),
                Refusal{Case::legacyStoreConflict, std::string(messages::legacyBackupFailed), std::nullopt}, std::nullopt,
                nullptr};
    }
    const StoreMetadataSummary metadata = readMetadataInPlace(copy->path / legacyURL.filename());
    if (metadata.isTesselModel) {
        return {std::string(legacy::recognised) + " " + std::string(legacy::leftUnchanged), std::nullopt, metadata,
                std::move(copy)};
    }
    return {std::string(metadata.readError ? legacy::unreadable : legacy::foreign),
            Refusal{Case::legacyStoreConflict, std::string(messages::legacyStoreConflict), metadata}, metadata, nullptr};
}

}  // namespace

std::string_view toRawValue(TesselStoreEnvironmentKind kind) noexcept {
    switch (kind) {
        case TesselStoreEnvironmentKind::normal: return "normal";
        case TesselStoreEnvironmentKind::test: return "test";
        case TesselStoreEnvironmentKind::debugUnavailable: return "debugUnavailable";
    }
    return {};
}

std::string_view description(TesselStoreEnvironmentKind kind) noexcept {
    switch (kind) {
        case TesselStoreEnvironmentKind::normal: return "Tessel store";
        case TesselStoreEnvironmentKind::test: return "Tessel Test Store environment";
        case TesselStoreEnvironmentKind::debugUnavailable: return "Debug unavailable-store fixture";
    }
    return {};
}

std::string_view toRawValue(TesselPersistenceErrorCase errorCase) noexcept {
    switch (errorCase) {
        case Case::backupFailed: return "backupFailed";
        case Case::legacyStoreConflict: return "legacyStoreConflict";
        case Case::storePreparationFailed: return "storePreparationFailed";
        case Case::storeOpenFailed: return "storeOpenFailed";
    }
    return {};
}

TesselStoreEnvironment TesselStoreEnvironment::make(TesselStoreEnvironmentKind kind, const fs::path& applicationDataRoot) {
    const fs::path root = kind == TesselStoreEnvironmentKind::test ? applicationDataRoot / "Test Store" : applicationDataRoot;
    return {kind, root, root / "canonical-store" / "Tessel.store", root / "Tessel Store Backups", root / "default.store"};
}

fs::path defaultApplicationDataRoot() {
    if (const char* root = std::getenv("TESSEL_STORE_ROOT"); root && *root) return root;
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) return fs::path(data) / "Tessel";
    const char* home = std::getenv("HOME");
    return fs::path(home && *home ? home : ".") / ".local" / "share" / "Tessel";
}

namespace {

std::string storeActionFailure(int sqliteResultCode) {
    switch (sqliteResultCode & 0xFF) {  // the primary result code
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return "The Tessel store is busy in another Tessel window or command, so nothing was changed; try again when it has finished.";
        case SQLITE_FULL: return "The disk holding the Tessel store is full, so nothing was changed.";
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_CANTOPEN: return "The Tessel store cannot be written, so nothing was changed.";
        default: return "The Tessel store could not save this change, so nothing was changed.";
    }
}

}  // namespace

StoreActionError::StoreActionError(int sqliteResultCode) : std::runtime_error(storeActionFailure(sqliteResultCode)) {}

TesselStore::TesselStore(TesselStoreEnvironment environment, std::unique_ptr<SQLite::Database> database,
                         std::optional<TesselStoreBackup> preOpenBackup, std::string legacyStoreInspectionResult)
    : environment_(std::move(environment)),
      database_(std::move(database)),
      context_(*database_),
      preOpenBackup_(std::move(preOpenBackup)),
      legacyStoreInspectionResult_(std::move(legacyStoreInspectionResult)) {}

void TesselStore::afterCommit(std::function<void()> work) {
    if (performing_) {
        afterCommit_.push_back(std::move(work));
    } else {
        work();
    }
}

void TesselStore::PerformingScope::committed() {
    store_.performing_ = false;
    auto work = std::exchange(store_.afterCommit_, {});
    for (auto& step : work) step();
}

TesselStore::PerformingScope::~PerformingScope() {
    store_.performing_ = false;
    store_.afterCommit_.clear();
}

std::string TesselStore::schemaVersion() const { return readSchemaVersion(*database_); }

StoreMetadataSummary inspectStoreMetadata(const fs::path& storeURL) {
    if (!fs::exists(storeURL)) return {std::string("no store exists at this path"), {}, {}, {}, false};
    // A store with no journal beside it is wholly in its one file, which is then read as immutable, in
    // place and without a copy; a journal means a writer may be at work, and the files are copied first.
    if (storeFiles(storeURL).size() == 1) {
        StoreMetadataSummary summary = readMetadataInPlace(storeURL, true);
        if (!summary.readError) return summary;
    }
    fs::path copy;
    try {
        copy = newTemporaryDirectory(inspectionFolderPrefix);
        copyStoreFiles(storeURL, copy);
    } catch (const std::exception& error) {
        return {std::string(error.what()), {}, {}, {}, false};
    }
    StoreMetadataSummary summary = readMetadataInPlace(copy / storeURL.filename());
    std::error_code ignored;
    fs::remove_all(copy, ignored);
    return summary;
}

std::string metadataSummaryText(const StoreMetadataSummary& metadata) {
    if (metadata.readError) return "Store metadata could not be read: " + *metadata.readError + ".";
    return "Store model identifiers: " + join(metadata.modelIdentifiers) + ". Store entities: " + join(metadata.entityNames) + ".";
}

StoreEnvironmentFacts describeStoreEnvironment(const TesselStoreEnvironment& environment) {
    StoreEnvironmentFacts facts;
    std::error_code ignored;
    facts.currentStoreExists = fs::exists(environment.storeURL, ignored);
    facts.legacyStoreExists = fs::exists(environment.legacyStoreURL, ignored);
    const LegacyInspection legacyInspection = inspectLegacyStore(environment.legacyStoreURL);
    facts.legacyStoreInspectionResult = legacyInspection.result;
    facts.legacyMetadata = legacyInspection.metadata;
    for (const fs::path& file : storeFiles(environment.storeURL)) facts.storeFiles.push_back(file);
    facts.newestBackup = newestStoreBackup(environment);
    if (environment.kind == TesselStoreEnvironmentKind::debugUnavailable) {
        facts.storeOpenError = std::string(description(environment.kind));
    } else if (facts.currentStoreExists) {
        facts.currentMetadata = inspectStoreMetadata(environment.storeURL);
        if (const auto refusal = refusalFor(*facts.currentMetadata)) facts.storeOpenError = refusal->message;
    } else if (legacyInspection.refusal) {
        facts.storeOpenError = legacyInspection.refusal->message;
    }
    return facts;
}

std::vector<TesselStoreBackup> listStoreBackups(const TesselStoreEnvironment& environment) {
    if (!environment.backupRootURL) return {};
    return store_backups::list(*environment.backupRootURL, environment.storeURL.filename().string());
}

std::optional<TesselStoreBackup> newestStoreBackup(const TesselStoreEnvironment& environment) {
    auto backups = listStoreBackups(environment);
    if (backups.empty()) return std::nullopt;
    return std::move(backups.back());
}

namespace {

fs::path resetRequestMarker(const fs::path& testRoot) { return testRoot.parent_path() / "Test Store Reset Requested"; }

}  // namespace

void requestTestStoreReset(const fs::path& applicationDataRoot) {
    const auto test = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::test, applicationDataRoot);
    fs::create_directories(applicationDataRoot);
    std::ofstream(resetRequestMarker(test.rootURL)) << "requested\n";
}

bool applyPendingTestStoreReset(const TesselStoreEnvironment& testEnvironment, const fs::path& testPreferencesFile) {
    if (testEnvironment.kind != TesselStoreEnvironmentKind::test) return false;
    const fs::path marker = resetRequestMarker(testEnvironment.rootURL);
    if (!fs::exists(marker)) return false;
    fs::remove_all(testEnvironment.rootURL);
    fs::remove(testPreferencesFile);
    fs::remove(marker);
    return true;
}

namespace {

// The backup of the store about to be opened, and what the store's metadata says. The newest backup
// stands when the store has not changed since it was taken; otherwise a new snapshot is taken. A
// snapshot stays pending until the open is known to go ahead, so a refused open changes no backup.
struct PreOpenCheck {
    std::optional<TesselStoreBackup> reused;
    std::optional<store_backups::PendingBackup> pending;
    StoreMetadataSummary metadata;
};

std::variant<PreOpenCheck, Refusal> checkBeforeOpening(const TesselStoreEnvironment& environment, SQLite::Database& db,
                                                       const std::string& storeFingerprint) {
    const std::string storeFileName = environment.storeURL.filename().string();
    PreOpenCheck check;
    if (!environment.backupRootURL) {
        check.metadata = inspectStoreMetadata(environment.storeURL);
        return check;
    }
    if (auto newest = store_backups::unchangedBackup(*environment.backupRootURL, storeFileName, storeFingerprint)) {
        // The store is what its newest backup holds, so its metadata is read through the connection
        // that is open anyway: the common open costs no second one.
        check.metadata = readMetadata(db);
        if (!check.metadata.readError) {
            check.reused = std::move(newest);
            return check;
        }
    }
    try {
        check.pending.emplace(
            store_backups::PendingBackup::take(*environment.backupRootURL, db.getHandle(), storeFileName, storeFingerprint));
    } catch (const store_backups::SnapshotError& error) {
        // A file SQLite cannot read as a database is refused for what it is, with no backup of it made.
        if (error.notADatabase()) {
            return Refusal{Case::storeOpenFailed, std::string(messages::storeOpenFailed),
                           StoreMetadataSummary{std::string(error.what()), {}, {}, {}, false}};
        }
        return Refusal{Case::backupFailed, std::string(messages::backupFailed), std::nullopt};
    }
    check.metadata = readMetadataInPlace(check.pending->storeCopy());
    return check;
}

// Makes sure a store file is at the store path: the existing one, the former shared store adopted, or a
// new one. True when the store holds earlier data (and so is backed up and checked before it is opened).
std::variant<bool, Refusal> placeStoreFile(const TesselStoreEnvironment& environment, std::string& legacyResult) {
    try {
        fs::create_directories(environment.storeURL.parent_path());
        if (fs::exists(environment.storeURL)) return true;
    } catch (const std::exception&) {
        return Refusal{Case::storePreparationFailed, std::string(messages::storePreparationFailed), {}};
    }
    const LegacyInspection inspection = inspectLegacyStore(environment.legacyStoreURL);
    legacyResult = inspection.result;
    if (inspection.refusal) return *inspection.refusal;
    try {
        if (inspection.adopt()) {
            adoptLegacyStore(inspection.copiedStore(environment.legacyStoreURL), environment.storeURL);
            return true;
        }
        createStore(environment.storeURL);
        return false;
    } catch (const std::exception&) {
        return Refusal{Case::storePreparationFailed, std::string(messages::storePreparationFailed), {}};
    }
}

}  // namespace

TesselStoreStartupResult openTesselStore(const TesselStoreEnvironment& environment) {
    if (environment.kind == TesselStoreEnvironmentKind::debugUnavailable) {
        return TesselUnavailableStoreState{environment.storeURL, environment.backupRootURL,
                                           std::string(description(environment.kind)), std::nullopt,
                                           detailsText(std::nullopt)};
    }
    std::string legacyResult(legacy::none);
    const auto placed = placeStoreFile(environment, legacyResult);
    if (const auto* refusal = std::get_if<Refusal>(&placed)) return unavailable(environment, *refusal);
    const bool storeExists = std::get<bool>(placed);

    std::unique_ptr<SQLite::Database> db;
    std::optional<TesselStoreBackup> backup;
    std::optional<StoreMetadataSummary> metadata;
    // Taken before anything reads the store: a change after this point makes the next open back up again.
    const std::string storeFingerprint = store_backups::fingerprint(environment.storeURL);
    try {
        db = std::make_unique<SQLite::Database>(environment.storeURL.string(), SQLite::OPEN_READWRITE);
        configureConnection(*db);
    } catch (const std::exception& error) {
        return unavailable(environment, {Case::storeOpenFailed, std::string(messages::storeOpenFailed), std::nullopt, error.what()});
    }
    try {
        if (storeExists) {
            auto check = checkBeforeOpening(environment, *db, storeFingerprint);
            if (const auto* refusal = std::get_if<Refusal>(&check)) return unavailable(environment, *refusal);
            auto& passed = std::get<PreOpenCheck>(check);
            metadata = passed.metadata;
            if (const auto refusal = refusalFor(*metadata)) return unavailable(environment, *refusal);
            if (passed.pending) {
                backup = passed.pending->commit();
                store_backups::prune(*environment.backupRootURL, std::chrono::system_clock::now());
            } else {
                backup = std::move(passed.reused);
            }
        }
    } catch (const std::exception& error) {
        return unavailable(environment, {Case::backupFailed, std::string(messages::backupFailed), std::nullopt, error.what()});
    }

    try {
        migrate(*db);
        return std::make_unique<TesselStore>(environment, std::move(db), std::move(backup), legacyResult);
    } catch (const std::exception& error) {
        return unavailable(environment, {Case::storeOpenFailed, std::string(messages::storeOpenFailed), metadata, error.what()});
    }
}

}  // namespace tessel
