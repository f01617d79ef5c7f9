#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace tessel {

namespace fs = std::filesystem;

// One pre-open backup: a folder holding a copy of the store as it was before an open.
struct TesselStoreBackup {
    fs::path directoryURL;
    std::vector<std::string> copiedFileNames;
};

// The pre-open backups of a store. A backup is a consistent snapshot taken through SQLite's online
// backup, so it holds every committed transaction (including those still in the write-ahead log) and
// opens on its own as a single file. It is built in a staging folder and renamed into place only when
// complete, so a folder that carries the backup name is always a whole backup.
//
// Retention: the five newest backups, the newest of each of the last seven days (UTC), and the newest
// one older than that week, so that the store can be returned to its state of any of the last seven
// days. A store that has not changed since its newest backup is not backed up again.
namespace store_backups {

inline constexpr std::string_view folderPrefix = "pre-open-backup";
inline constexpr std::size_t keptNewest = 5;
inline constexpr int keptDays = 7;

// A snapshot that could not be taken. `notADatabase` says the store file is not a database SQLite can
// read; anything else (an unreadable file, a full disk) is a failure of the backup itself.
class SnapshotError : public std::runtime_error {
public:
    SnapshotError(std::string reason, bool notADatabase) : std::runtime_error(std::move(reason)), notADatabase_(notADatabase) {}
    bool notADatabase() const noexcept { return notADatabase_; }

private:
    bool notADatabase_;
};

// Copies the committed content of the open database into the single file `destination`, written in
// rollback-journal mode and flushed to disk. Throws SnapshotError.
void snapshot(sqlite3* source, const fs::path& destination);
// The same from a database file, opened read-only for the copy.
void snapshot(const fs::path& source, const fs::path& destination);

// What the store's files look like on disk (size, modification and change times, inode of the store
// file and its write-ahead log). Equal fingerprints mean no transaction was written in between; a
// checkpoint may change it without a change of content, which costs one extra backup, never a lost one.
std::string fingerprint(const fs::path& storeURL);

// The complete backups under the root, oldest first.
std::vector<TesselStoreBackup> list(const fs::path& backupRoot, std::string_view storeFileName);

// The newest backup when it was taken of a store whose fingerprint is the one given.
std::optional<TesselStoreBackup> unchangedBackup(const fs::path& backupRoot, std::string_view storeFileName,
                                                 const std::string& storeFingerprint);

// A snapshot in its staging folder: not a backup until committed, and removed when dropped uncommitted.
class PendingBackup {
public:
    // Snapshots the open store into a new staging folder under the root; throws SnapshotError.
    static PendingBackup take(const fs::path& backupRoot, sqlite3* store, std::string_view storeFileName,
                              const std::string& storeFingerprint);
    PendingBackup(PendingBackup&& other) noexcept;
    PendingBackup& operator=(PendingBackup&&) = delete;
    ~PendingBackup();

    fs::path storeCopy() const { return staging_ / storeFileName_; }
    // Moves the snapshot into place under its timestamped name; from here on it counts as a backup.
    TesselStoreBackup commit();

private:
    PendingBackup(fs::path root, fs::path staging, std::string storeFileName)
        : root_(std::move(root)), staging_(std::move(staging)), storeFileName_(std::move(storeFileName)) {}
    fs::path root_;
    fs::path staging_;  // empty once committed or moved from
    std::string storeFileName_;
};

// Removes the backups the retention does not keep, and staging folders of processes that are gone.
// Housekeeping only: a folder that cannot be removed now is removed by a later open.
void prune(const fs::path& backupRoot, std::chrono::system_clock::time_point now);

}  // namespace store_backups
}  // namespace tessel
