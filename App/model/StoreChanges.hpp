#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "App/model/TesselPersistence.hpp"

// The row changes one saved user action made, kept so that the action can be undone and redone. They are
// recorded by SQLite's session extension while the action runs, so every service's writes are covered
// without any service knowing about undo, cascades and the payroll-issue follow-up included.
namespace tessel {

// An undo or redo that could not be applied because the rows it would restore have changed since (by
// another Tessel process, say). Nothing was changed.
class StoreChangesConflict : public std::runtime_error {
public:
    StoreChangesConflict();
};

// The changes of one action, as a SQLite changeset. Empty when the action changed nothing.
class StoreChangeset {
public:
    StoreChangeset() = default;
    explicit StoreChangeset(std::string bytes) : bytes_(std::move(bytes)) {}
    bool empty() const noexcept { return bytes_.empty(); }
    const std::string& bytes() const noexcept { return bytes_; }
    // The changeset that takes the store back to before these changes.
    StoreChangeset inverted() const;

private:
    std::string bytes_;
};

// Records every row change made through the database while it lives.
class StoreChangeRecording {
public:
    explicit StoreChangeRecording(SQLite::Database& database);
    ~StoreChangeRecording();
    StoreChangeRecording(const StoreChangeRecording&) = delete;
    StoreChangeRecording& operator=(const StoreChangeRecording&) = delete;

    StoreChangeset changeset() const;

private:
    struct Session;
    std::unique_ptr<Session> session_;
};

namespace store_changes {

// Runs one user action through the store, as TesselStore::perform does, and returns what it changed.
template <typename Action>
StoreChangeset performRecorded(TesselStore& store, Action&& action) {
    StoreChangeRecording recording(store.database());
    store.perform(std::forward<Action>(action));
    return recording.changeset();
}

// Applies the changes in one transaction; throws StoreChangesConflict, with nothing changed, when a row
// no longer holds what the changeset expects.
void apply(TesselStore& store, const StoreChangeset& changes);

}  // namespace store_changes
}  // namespace tessel
