#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Transaction.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/StoreBackups.hpp"

namespace tessel {

namespace fs = std::filesystem;

enum class TesselStoreEnvironmentKind { normal, test, debugUnavailable };

std::string_view toRawValue(TesselStoreEnvironmentKind kind) noexcept;
std::string_view description(TesselStoreEnvironmentKind kind) noexcept;

inline constexpr std::string_view testStoreControlsDebugOnly = "Test Store controls are available only in Debug builds.";

// Where one environment keeps its store. The test store is physically separate from the normal one.
struct TesselStoreEnvironment {
    TesselStoreEnvironmentKind kind = TesselStoreEnvironmentKind::normal;
    fs::path rootURL;                      // the environment's folder
    fs::path storeURL;                     // rootURL/canonical-store/Tessel.store
    std::optional<fs::path> backupRootURL;  // rootURL/Tessel Store Backups
    fs::path legacyStoreURL;               // the former shared store path, rootURL/default.store

    static TesselStoreEnvironment make(TesselStoreEnvironmentKind kind, const fs::path& applicationDataRoot);
};

// $TESSEL_STORE_ROOT when set, else $XDG_DATA_HOME/Tessel, else ~/.local/share/Tessel.
fs::path defaultApplicationDataRoot();

enum class TesselPersistenceErrorCase { backupFailed, legacyStoreConflict, storePreparationFailed, storeOpenFailed };

std::string_view toRawValue(TesselPersistenceErrorCase errorCase) noexcept;

// What the store's own metadata says, read from an isolated copy and never from the store in place.
struct StoreMetadataSummary {
    std::optional<std::string> readError;        // the metadata could not be read
    std::vector<std::string> modelIdentifiers;   // e.g. "app.tessel.model 40.2.0"
    std::vector<std::string> entityNames;        // the tables the store holds
    std::optional<std::string> schemaVersion;    // when the store is one of ours
    bool isTesselModel = false;
};

struct TesselUnavailableStoreState {
    static constexpr std::string_view title = "Tessel Data Store Unavailable";
    static constexpr std::string_view message =
        "Tessel could not safely open or migrate its data store. Your existing store was preserved and no automatic "
        "reset was attempted.";

    fs::path storeURL;
    std::optional<fs::path> backupRootURL;
    std::string errorDescription;
    std::optional<TesselPersistenceErrorCase> errorCase;  // absent for the debug fixture
    std::string details;
};

// A user action that the store could not carry out for a reason outside the action itself: the store is
// held by another Tessel process past the wait, the disk is full, the file cannot be written. Nothing of
// the action was written.
class StoreActionError : public std::runtime_error {
public:
    explicit StoreActionError(int sqliteResultCode);
};

// The opened store. Every user action runs in one transaction through perform().
class TesselStore {
public:
    TesselStore(TesselStoreEnvironment environment, std::unique_ptr<SQLite::Database> database,
                std::optional<TesselStoreBackup> preOpenBackup, std::string legacyStoreInspectionResult);

    SQLite::Database& database() noexcept { return *database_; }
    ModelContext& context() noexcept { return context_; }
    const TesselStoreEnvironment& environment() const noexcept { return environment_; }
    const std::optional<TesselStoreBackup>& preOpenBackup() const noexcept { return preOpenBackup_; }
    const std::string& legacyStoreInspectionResult() const noexcept { return legacyStoreInspectionResult_; }
    std::string schemaVersion() const;

    // Runs one user action in one transaction: committed when it returns, rolled back when it throws,
    // so a refused or failed action leaves the store as it was. The write lock is taken at the start, so
    // that an action waits for another Tessel process to finish rather than failing half-way; a failure
    // of the store itself arrives as a StoreActionError.
    template <typename Action>
    auto perform(Action&& action) -> decltype(action(std::declval<ModelContext&>())) {
        PerformingScope scope(*this);
        try {
            context_.finishReads();
            SQLite::Transaction transaction(*database_, SQLite::TransactionBehavior::IMMEDIATE);
            if constexpr (std::is_void_v<decltype(action(context_))>) {
                action(context_);
                transaction.commit();
                scope.committed();
            } else {
                auto result = action(context_);
                transaction.commit();
                scope.committed();
                return result;
            }
        } catch (const SQLite::Exception& error) {
            throw StoreActionError(error.getErrorCode());
        }
    }

    // Whether a user action is being performed now (its transaction is open).
    bool isPerforming() const noexcept { return performing_; }
    // Work that may only happen once the action being performed is saved, such as telling the user it
    // was done: it runs right after the commit and is dropped when the action is refused or the commit
    // fails. Outside an action it runs at once.
    void afterCommit(std::function<void()> work);

private:
    // Marks the action under way and runs its after-commit work once it is saved.
    class PerformingScope {
    public:
        explicit PerformingScope(TesselStore& store) : store_(store) { store_.performing_ = true; }
        void committed();
        ~PerformingScope();

    private:
        TesselStore& store_;
    };

    bool performing_ = false;
    std::vector<std::function<void()>> afterCommit_;
    TesselStoreEnvironment environment_;
    std::unique_ptr<SQLite::Database> database_;
    ModelContext context_;  // after the database: its statements are finalised first
    std::optional<TesselStoreBackup> preOpenBackup_;
    std::string legacyStoreInspectionResult_;
};

using TesselStoreStartupResult = std::variant<std::unique_ptr<TesselStore>, TesselUnavailableStoreState>;

// Opens the environment's store, creating it when there is none, migrating it when it is older, and
// refusing (with every store file left as it was) when it cannot be opened safely.
TesselStoreStartupResult openTesselStore(const TesselStoreEnvironment& environment);

// The complete pre-open backups of the environment, oldest first.
std::vector<TesselStoreBackup> listStoreBackups(const TesselStoreEnvironment& environment);
// The newest complete pre-open backup, if any.
std::optional<TesselStoreBackup> newestStoreBackup(const TesselStoreEnvironment& environment);

// Reads a store's metadata on an isolated copy; the store itself is not opened.
StoreMetadataSummary inspectStoreMetadata(const fs::path& storeURL);
// "Store model identifiers: …. Store entities: …." or why the metadata could not be read.
std::string metadataSummaryText(const StoreMetadataSummary& metadata);

// What support needs to know about an environment's store, gathered from isolated copies without
// opening, creating or changing any store file.
struct StoreEnvironmentFacts {
    bool currentStoreExists = false;
    bool legacyStoreExists = false;
    std::string legacyStoreInspectionResult;
    std::optional<StoreMetadataSummary> legacyMetadata;  // when the former store's metadata was read
    std::optional<StoreMetadataSummary> currentMetadata;  // absent when there is no store
    std::string storeOpenError;                           // why an open would be refused; empty when it would not
    std::vector<fs::path> storeFiles;                     // the store file and the companion files beside it
    std::optional<TesselStoreBackup> newestBackup;
};
StoreEnvironmentFacts describeStoreEnvironment(const TesselStoreEnvironment& environment);

inline constexpr std::string_view resetTestStoreTitle = "Reset Test Store?";
inline constexpr std::string_view resetTestStoreExplanation =
    "Tessel will quit normally. The physically separate Test Store and its Test-only preferences will be deleted "
    "before the next Test Store launch. Normal Tessel data is never changed.";

// Marks the test store of this data folder for deletion at its next launch.
void requestTestStoreReset(const fs::path& applicationDataRoot);
// At a test store launch: when a reset was requested, deletes the test store with its backups and the
// given test-only preferences file, and clears the request. True when a reset was carried out.
bool applyPendingTestStoreReset(const TesselStoreEnvironment& testEnvironment, const fs::path& testPreferencesFile);

}  // namespace tessel
