// The session extension's declarations are compiled only when both of these are defined; Debian's SQLite
// library is built with them.
#define SQLITE_ENABLE_SESSION 1
#define SQLITE_ENABLE_PREUPDATE_HOOK 1
#include <sqlite3.h>

#include "App/model/StoreChanges.hpp"

namespace tessel {
namespace {

struct FreedBySQLite {
    void operator()(void* memory) const noexcept { sqlite3_free(memory); }
};

std::string takeBuffer(int size, void* buffer) {
    std::unique_ptr<void, FreedBySQLite> owned(buffer);
    if (size <= 0 || !buffer) return {};
    return std::string(static_cast<const char*>(buffer), static_cast<std::size_t>(size));
}

int abortOnConflict(void*, int, sqlite3_changeset_iter*) { return SQLITE_CHANGESET_ABORT; }

}  // namespace

StoreChangesConflict::StoreChangesConflict()
    : std::runtime_error("This change can no longer be undone, because the data it touched has changed since.") {}

struct StoreChangeRecording::Session {
    sqlite3_session* handle = nullptr;
    ~Session() {
        if (handle) sqlite3session_delete(handle);
    }
};

StoreChangeRecording::StoreChangeRecording(SQLite::Database& database) : session_(std::make_unique<Session>()) {
    int status = sqlite3session_create(database.getHandle(), "main", &session_->handle);
    if (status == SQLITE_OK) status = sqlite3session_attach(session_->handle, nullptr);  // every table
    if (status != SQLITE_OK) throw StoreActionError(status);
}

StoreChangeRecording::~StoreChangeRecording() = default;

StoreChangeset StoreChangeRecording::changeset() const {
    int size = 0;
    void* buffer = nullptr;
    const int status = sqlite3session_changeset(session_->handle, &size, &buffer);
    if (status != SQLITE_OK) {
        sqlite3_free(buffer);
        throw StoreActionError(status);
    }
    return StoreChangeset(takeBuffer(size, buffer));
}

StoreChangeset StoreChangeset::inverted() const {
    if (bytes_.empty()) return {};
    int size = 0;
    void* buffer = nullptr;
    const int status = sqlite3changeset_invert(static_cast<int>(bytes_.size()), const_cast<char*>(bytes_.data()), &size, &buffer);
    if (status != SQLITE_OK) {
        sqlite3_free(buffer);
        throw StoreActionError(status);
    }
    return StoreChangeset(takeBuffer(size, buffer));
}

// The changeset already holds every row a cascade touched, so it is applied with the foreign-key actions
// off (they would delete or null rows a second time and make the changeset conflict with itself); the
// result is then checked, and anything left dangling refuses the whole apply.
void store_changes::apply(TesselStore& store, const StoreChangeset& changes) {
    if (changes.empty()) return;
    SQLite::Database& database = store.database();
    const bool foreignKeysWereOn = database.execAndGet("PRAGMA foreign_keys").getInt() != 0;
    database.exec("PRAGMA foreign_keys = OFF");
    const auto restoreForeignKeys = [&] {
        if (foreignKeysWereOn) database.exec("PRAGMA foreign_keys = ON");
    };
    try {
        store.perform([&](ModelContext& context) {
            const int status = sqlite3changeset_apply(context.database().getHandle(), static_cast<int>(changes.bytes().size()),
                                                      const_cast<char*>(changes.bytes().data()), nullptr, abortOnConflict, nullptr);
            if (status == SQLITE_ABORT || status == SQLITE_CONSTRAINT) throw StoreChangesConflict();
            if (status != SQLITE_OK) throw StoreActionError(status);
            SQLite::Statement dangling(context.database(), "PRAGMA foreign_key_check");
            if (dangling.executeStep()) throw StoreChangesConflict();
        });
    } catch (...) {
        restoreForeignKeys();
        throw;
    }
    restoreForeignKeys();
}

}  // namespace tessel
