#include <gtest/gtest.h>

#include <SQLiteCpp/Database.h>
#include <csignal>
#include <set>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../support/TemporaryFolder.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/StoreSchema.hpp"
#include "App/model/TesselPersistence.hpp"

namespace tessel {
namespace {

using testing::TemporaryFolder;
using testing::snapshotFiles;
using testing::writeFile;

const Instant someInstant = std::chrono::sys_days(std::chrono::November / 2 / 2026) + std::chrono::hours(9);

std::unique_ptr<TesselStore> open(const TesselStoreEnvironment& environment) {
    auto result = openTesselStore(environment);
    if (auto* unavailableState = std::get_if<TesselUnavailableStoreState>(&result)) {
        ADD_FAILURE() << unavailableState->errorDescription << " " << unavailableState->details;
        return nullptr;
    }
    return std::move(std::get<std::unique_ptr<TesselStore>>(result));
}

TesselUnavailableStoreState refused(const TesselStoreEnvironment& environment) {
    auto result = openTesselStore(environment);
    EXPECT_TRUE(std::holds_alternative<TesselUnavailableStoreState>(result)) << "the store opened";
    if (!std::holds_alternative<TesselUnavailableStoreState>(result)) return {};
    return std::get<TesselUnavailableStoreState>(result);
}

class StoreOpening : public ::testing::Test {
protected:
    TemporaryFolder folder;
    TesselStoreEnvironment environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path());
};

TEST_F(StoreOpening, CreatesAFreshStoreAtTheCurrentSchema) {
    auto store = open(environment);
    ASSERT_TRUE(store);
    EXPECT_EQ(store->schemaVersion(), "40.2.0");
    EXPECT_FALSE(store->preOpenBackup().has_value());
    EXPECT_EQ(store->legacyStoreInspectionResult(), "No store exists at the former shared path.");
    EXPECT_EQ(store->database().execAndGet("PRAGMA application_id").getInt(), store_schema::applicationID);
    EXPECT_EQ(store->database().execAndGet("PRAGMA foreign_keys").getInt(), 1);
}

void addProduction(TesselStore& store, const std::string& name) {
    store.perform([&](ModelContext& context) { production_repository::create(context, name, {}, someInstant); });
}

std::size_t productionsIn(const fs::path& storeFile) {
    SQLite::Database db(storeFile.string(), SQLite::OPEN_READONLY);
    return static_cast<std::size_t>(db.execAndGet("SELECT COUNT(*) FROM Production").getInt());
}

TEST_F(StoreOpening, BacksUpAChangedStoreOnceAndReusesThatBackupWhileNothingChanges) {
    addProduction(*open(environment), "First");
    const auto first = open(environment)->preOpenBackup();
    ASSERT_TRUE(first);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(open(environment)->preOpenBackup()->directoryURL, first->directoryURL);
    EXPECT_EQ(listStoreBackups(environment).size(), 1u);

    addProduction(*open(environment), "Second");
    const auto second = open(environment)->preOpenBackup();
    EXPECT_NE(second->directoryURL, first->directoryURL);
    EXPECT_EQ(listStoreBackups(environment).size(), 2u);
    EXPECT_EQ(productionsIn(second->directoryURL / "Tessel.store"), 2u);
}

// A backup must hold what another process committed but has not yet moved out of its write-ahead log,
// and must open on its own, without the log beside it.
TEST_F(StoreOpening, TheBackupHoldsTransactionsStillInAnotherProcesssLogAndOpensAlone) {
    open(environment).reset();
    SQLite::Database writer(environment.storeURL.string(), SQLite::OPEN_READWRITE);
    writer.exec("PRAGMA wal_autocheckpoint = 0");
    writer.exec("INSERT INTO Production (id, name, createdAt) VALUES ('0F8C2B1E-3C47-4D2A-9E61-6B1F5A0C9D11', 'In the log', "
                "'2026-11-02T09:00:00Z')");
    const auto backup = open(environment)->preOpenBackup();
    ASSERT_TRUE(backup);
    const fs::path alone = folder.path() / "alone" / "Tessel.store";
    fs::create_directories(alone.parent_path());
    fs::copy_file(backup->directoryURL / "Tessel.store", alone);
    EXPECT_EQ(productionsIn(alone), 1u);
    EXPECT_EQ(backup->copiedFileNames, std::vector<std::string>{"Tessel.store"});
}

TEST_F(StoreOpening, RefusedOpensLeaveEveryGoodBackupInPlace) {
    addProduction(*open(environment), "Kept");
    open(environment).reset();
    const auto before = listStoreBackups(environment);
    ASSERT_EQ(before.size(), 1u);
    writeFile(environment.storeURL, "damaged beyond reading");
    fs::remove(fs::path(environment.storeURL.string() + "-wal"));
    for (int i = 0; i < 7; ++i) refused(environment);
    const auto after = listStoreBackups(environment);
    ASSERT_EQ(after.size(), 1u);
    EXPECT_EQ(after.front().directoryURL, before.front().directoryURL);
    EXPECT_EQ(productionsIn(after.front().directoryURL / "Tessel.store"), 1u);
    EXPECT_EQ(fs::directory_iterator(*environment.backupRootURL)->path(), before.front().directoryURL);
}

// A backup that cannot be written whole (here, a file-size limit standing in for a full disk) is
// refused and leaves no folder that could pass for a backup.
TEST_F(StoreOpening, AFailedBackupLeavesNoFolderBehind) {
    {
        auto store = open(environment);
        for (int i = 0; i < 400; ++i) addProduction(*store, "Production " + std::to_string(i) + std::string(200, 'x'));
    }
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{16 * 1024, 16 * 1024};
        setrlimit(RLIMIT_FSIZE, &limit);
        auto result = openTesselStore(environment);
        const auto* state = std::get_if<TesselUnavailableStoreState>(&result);
        _exit(state && state->errorCase == TesselPersistenceErrorCase::backupFailed ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the open was not refused as a failed backup";
    EXPECT_TRUE(fs::is_empty(*environment.backupRootURL));
}

TEST_F(StoreOpening, FoldersThatHoldNoWholeBackupAreNotListed) {
    open(environment).reset();
    fs::create_directories(*environment.backupRootURL / "pre-open-backup-20260101T000000.000Z");
    fs::create_directories(*environment.backupRootURL / "incomplete-1-abcdef");
    EXPECT_TRUE(listStoreBackups(environment).empty());
}

TEST(StoreBackupRetention, KeepsTheFiveNewestAndTheNewestOfEachOfTheLastSevenDays) {
    TemporaryFolder root;
    const auto made = [&](const std::string& stamp) {
        writeFile(root.path() / ("pre-open-backup-" + stamp) / "Tessel.store", "backup");
        return "pre-open-backup-" + stamp;
    };
    std::set<std::string> expected;
    for (int i = 0; i < 8; ++i) {
        const std::string name = made("20261122T0" + std::to_string(i) + "0000.000Z");
        if (i >= 3) expected.insert(name);  // the five newest
    }
    for (int day = 21; day >= 12; --day) {
        made("202611" + std::to_string(day) + "T080000.000Z");
        const std::string newestOfDay = made("202611" + std::to_string(day) + "T200000.000Z");
        if (day >= 15) expected.insert(newestOfDay);  // the six days before today, and the last one before the week
    }
    store_backups::prune(root.path(), std::chrono::sys_days(std::chrono::November / 22 / 2026) + std::chrono::hours(12));
    std::set<std::string> kept;
    for (const auto& entry : fs::directory_iterator(root.path())) kept.insert(entry.path().filename().string());
    EXPECT_EQ(kept, expected);
}

TEST_F(StoreOpening, MigratesAStoreWrittenAtTheEarlierGeneration) {
    fs::create_directories(environment.storeURL.parent_path());
    {
        SQLite::Database old(environment.storeURL.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        old.exec("PRAGMA application_id = " + std::to_string(store_schema::applicationID));
        old.exec("CREATE TABLE TesselStoreMetadata (key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL)");
        old.exec(std::string(store_schema::earliestGenerationSchema()));
        old.exec("INSERT INTO TesselStoreMetadata VALUES ('modelIdentifier', 'app.tessel.model'), ('schemaVersion', '40.1.0')");
        old.exec("INSERT INTO Production (id, name, createdAt) VALUES "
                 "('0F8C2B1E-3C47-4D2A-9E61-6B1F5A0C9D11', 'Older Production', '2025-03-01T08:00:00Z')");
    }
    auto store = open(environment);
    ASSERT_TRUE(store);
    EXPECT_EQ(store->schemaVersion(), "40.2.0");
    const auto production = production_repository::fetch(store->context(), *Uuid::parse("0F8C2B1E-3C47-4D2A-9E61-6B1F5A0C9D11"));
    ASSERT_TRUE(production.has_value());
    EXPECT_EQ(production->name, "Older Production");
    EXPECT_EQ(production->currencyCode, "USD");
    EXPECT_EQ(store->database().execAndGet("SELECT COUNT(*) FROM PayrollIssue").getInt(), 0);
    // The backup holds the store as it was before the migration.
    SQLite::Database backup((store->preOpenBackup()->directoryURL / "Tessel.store").string(), SQLite::OPEN_READONLY);
    EXPECT_EQ(backup.execAndGet("SELECT value FROM TesselStoreMetadata WHERE key = 'schemaVersion'").getString(), "40.1.0");
}

// A store written before a lookup index existed gains it when it opens, at the same schema version.
TEST_F(StoreOpening, AddsTheLookupIndexesAStoreLacks) {
    open(environment).reset();
    {
        SQLite::Database db(environment.storeURL.string(), SQLite::OPEN_READWRITE);
        for (const auto& index : store_schema::lookupIndexes()) db.exec("DROP INDEX " + std::string(index.name));
    }
    auto store = open(environment);
    ASSERT_TRUE(store);
    EXPECT_EQ(store->schemaVersion(), "40.2.0");
    for (const auto& index : store_schema::lookupIndexes()) {
        SQLite::Statement exists(store->database(), "SELECT COUNT(*) FROM sqlite_master WHERE type = 'index' AND name = ?1");
        exists.bind(1, std::string(index.name));
        ASSERT_TRUE(exists.executeStep());
        EXPECT_EQ(exists.getColumn(0).getInt(), 1) << index.name;
    }
}

struct RefusalCase {
    const char* name;
    std::function<void(const TesselStoreEnvironment&)> arrange;
    TesselPersistenceErrorCase errorCase;
    const char* message;
    const char* detailsFragment;
};

class StoreRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(StoreRefusal, ChangesNoFileAndSaysWhy) {
    TemporaryFolder folder;
    const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, folder.path());
    GetParam().arrange(environment);
    const auto storeFiles = [&] {
        auto files = snapshotFiles(environment.storeURL.parent_path());
        files.merge(snapshotFiles(environment.legacyStoreURL));
        return files;
    };
    const auto before = storeFiles();

    const auto state = refused(environment);
    EXPECT_EQ(state.errorCase, GetParam().errorCase);
    EXPECT_EQ(state.errorDescription, GetParam().message);
    EXPECT_EQ(state.storeURL, environment.storeURL);
    EXPECT_TRUE(state.details.starts_with("Expected Tessel schema: 40.2.0 (migration sources include V1-V40 and "
                                          "transitional historical generations)."))
        << state.details;
    EXPECT_NE(state.details.find(GetParam().detailsFragment), std::string::npos) << state.details;
    EXPECT_EQ(storeFiles(), before);
}

void writeForeignSQLite(const TesselStoreEnvironment& environment) {
    fs::create_directories(environment.storeURL.parent_path());
    SQLite::Database db(environment.storeURL.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    db.exec("CREATE TABLE Recipes (id INTEGER PRIMARY KEY, title TEXT); INSERT INTO Recipes VALUES (1, 'Soup')");
}

void writeNewerSchema(const TesselStoreEnvironment& environment) {
    open(environment).reset();
    SQLite::Database db(environment.storeURL.string(), SQLite::OPEN_READWRITE);
    db.exec("UPDATE TesselStoreMetadata SET value = '41.0.0' WHERE key = 'schemaVersion'");
}

// An earlier-generation store that its migration cannot bring forward (here a column the step adds is
// already there): the metadata was read, and it is the open that failed.
void writeUnmigratableStore(const TesselStoreEnvironment& environment) {
    fs::create_directories(environment.storeURL.parent_path());
    SQLite::Database old(environment.storeURL.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    old.exec("PRAGMA application_id = " + std::to_string(store_schema::applicationID));
    old.exec("CREATE TABLE TesselStoreMetadata (key TEXT PRIMARY KEY NOT NULL, value TEXT NOT NULL)");
    old.exec(std::string(store_schema::earliestGenerationSchema()));
    old.exec("ALTER TABLE Production ADD COLUMN currencyCode TEXT");
    old.exec("INSERT INTO TesselStoreMetadata VALUES ('modelIdentifier', 'app.tessel.model'), ('schemaVersion', '40.1.0')");
}

INSTANTIATE_TEST_SUITE_P(
    Refusals, StoreRefusal,
    ::testing::Values(
        RefusalCase{"migrationFails", writeUnmigratableStore, TesselPersistenceErrorCase::storeOpenFailed,
                    "Tessel could not open or migrate the data store. No automatic reset was attempted.",
                    ". The store could not be opened: "},
        RefusalCase{"anotherApplicationsDatabase", writeForeignSQLite, TesselPersistenceErrorCase::storeOpenFailed,
                    "The existing store contains a foreign model and was not opened.",
                    "Store model identifiers: none. Store entities: Recipes."},
        RefusalCase{"notADatabase",
                    [](const TesselStoreEnvironment& e) { writeFile(e.storeURL, "these are not the bytes of a database\n"); },
                    TesselPersistenceErrorCase::storeOpenFailed,
                    "Tessel could not open or migrate the data store. No automatic reset was attempted.",
                    "Store metadata could not be read:"},
        RefusalCase{"newerSchema", writeNewerSchema, TesselPersistenceErrorCase::storeOpenFailed,
                    "Tessel could not open or migrate the data store. No automatic reset was attempted.",
                    "Store model identifiers: app.tessel.model 41.0.0."},
        RefusalCase{"storeFolderUnusable",
                    [](const TesselStoreEnvironment& e) { writeFile(e.storeURL.parent_path(), "a file where the folder belongs"); },
                    TesselPersistenceErrorCase::storePreparationFailed,
                    "Tessel could not safely prepare its application-specific data store.", "Store metadata is unavailable."},
        RefusalCase{"backupImpossible",
                    [](const TesselStoreEnvironment& e) {
                        open(e).reset();
                        writeFile(*e.backupRootURL, "a file where the backups belong");
                    },
                    TesselPersistenceErrorCase::backupFailed,
                    "Tessel could not preserve a pre-open backup, so the data store was not opened.",
                    "Store metadata is unavailable."},
        RefusalCase{"foreignLegacyStore", [](const TesselStoreEnvironment& e) { writeFile(e.legacyStoreURL, "someone else's data"); },
                    TesselPersistenceErrorCase::legacyStoreConflict,
                    "The former shared data-store path contains data from another application, so Tessel did not "
                    "create or replace a store.",
                    "Store metadata could not be read:"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(StoreOpening, RefusingTheForeignLegacyStoreCreatesNothing) {
    writeFile(environment.legacyStoreURL, "someone else's data");
    refused(environment);
    EXPECT_FALSE(fs::exists(environment.storeURL));
}

// The former store's last transactions may still be in its write-ahead log, as a killed process leaves it.
TEST_F(StoreOpening, AdoptsATesselStoreFromTheFormerPathWithItsLogAndLeavesItUnchanged) {
    addProduction(*open(environment), "Checkpointed");
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        SQLite::Database writer(environment.storeURL.string(), SQLite::OPEN_READWRITE);
        writer.exec("PRAGMA wal_autocheckpoint = 0");
        writer.exec("INSERT INTO Production (id, name, createdAt) VALUES ('0F8C2B1E-3C47-4D2A-9E61-6B1F5A0C9D11', "
                    "'Only in the log', '2026-11-02T09:00:00Z')");
        raise(SIGKILL);
    }
    waitpid(child, nullptr, 0);
    for (const char* suffix : {"", "-wal", "-shm"}) {
        if (fs::exists(environment.storeURL.string() + suffix)) {
            fs::rename(environment.storeURL.string() + suffix, environment.legacyStoreURL.string() + suffix);
        }
    }
    ASSERT_TRUE(fs::exists(environment.legacyStoreURL.string() + "-wal"));
    const auto legacyFiles = [&] {
        auto files = snapshotFiles(environment.rootURL);
        std::erase_if(files, [](const auto& file) { return !file.first.starts_with("default.store"); });
        return files;
    };
    const auto before = legacyFiles();

    auto store = open(environment);
    ASSERT_TRUE(store);
    EXPECT_TRUE(store->legacyStoreInspectionResult().starts_with("Recognizable Tessel store."));
    EXPECT_EQ(production_repository::list(store->context()).size(), 2u);
    EXPECT_EQ(legacyFiles(), before);
}

TEST_F(StoreOpening, TheDebugFixtureIsAlwaysUnavailable) {
    const auto fixture = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::debugUnavailable, folder.path());
    const auto state = refused(fixture);
    EXPECT_EQ(state.errorDescription, "Debug unavailable-store fixture");
    EXPECT_FALSE(fs::exists(fixture.storeURL));
}

TEST_F(StoreOpening, TheTestStoreIsPhysicallySeparate) {
    const auto test = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::test, folder.path());
    open(test)->perform([](ModelContext& context) { production_repository::create(context, "Trial", {}, someInstant); });
    EXPECT_TRUE(production_repository::list(open(environment)->context()).empty());
    EXPECT_NE(test.storeURL, environment.storeURL);
}

// A writer killed in the middle of its transaction leaves all or none of it.
void writeAndDie(const TesselStoreEnvironment& environment, bool commitFirst) {
    auto store = open(environment);
    if (commitFirst) {
        store->perform([](ModelContext& context) {
            for (int i = 0; i < 200; ++i) production_repository::create(context, "P" + std::to_string(i), {}, someInstant);
        });
        raise(SIGKILL);
    }
    store->perform([](ModelContext& context) {
        for (int i = 0; i < 200; ++i) production_repository::create(context, "P" + std::to_string(i), {}, someInstant);
        raise(SIGKILL);
    });
}

class KilledWriter : public StoreOpening, public ::testing::WithParamInterface<bool> {};

TEST_P(KilledWriter, LeavesAllOrNoneOfItsTransaction) {
    open(environment).reset();
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        writeAndDie(environment, GetParam());
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    auto store = open(environment);
    ASSERT_TRUE(store);
    EXPECT_EQ(production_repository::list(store->context()).size(), GetParam() ? 200u : 0u);
    EXPECT_EQ(store->database().execAndGet("PRAGMA integrity_check").getString(), "ok");
}

INSTANTIATE_TEST_SUITE_P(CommittedOrNot, KilledWriter, ::testing::Bool());

}  // namespace
}  // namespace tessel
