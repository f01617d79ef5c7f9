#include "StoreBackups.hpp"

#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <utility>
#include <unistd.h>

#include "App/model/CalendarText.hpp"

namespace tessel::store_backups {
namespace {

constexpr std::string_view stagingPrefix = "incomplete-";
constexpr std::string_view removingPrefix = "removing-";
constexpr std::string_view fingerprintFile = ".source-fingerprint";

bool isBackupFolder(const fs::path& folder) { return folder.filename().string().starts_with(std::string(folderPrefix) + "-"); }

// Closes a connection opened for one snapshot, whatever happens in between.
struct Connection {
    sqlite3* handle = nullptr;
    ~Connection() { sqlite3_close_v2(handle); }
};

[[noreturn]] void fail(sqlite3* connection, int resultCode, std::string_view what) {
    const int primary = resultCode & 0xFF;
    std::string reason(what);
    reason += ": ";
    reason += connection ? sqlite3_errmsg(connection) : sqlite3_errstr(resultCode);
    throw SnapshotError(reason, primary == SQLITE_NOTADB || primary == SQLITE_CORRUPT);
}

// Makes a written file durable before it is renamed into place, so that a backup is never counted
// while its bytes are still only in memory.
void flush(const fs::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) throw SnapshotError("the backup could not be reopened to flush it", false);
    const int result = ::fsync(descriptor);
    ::close(descriptor);
    if (result != 0) throw SnapshotError("the backup could not be flushed to disk", false);
}

std::string stampOf(std::chrono::system_clock::time_point now) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(now);
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(now - seconds).count();
    std::string stamp = calendar_text::formatInstant(seconds);
    std::erase_if(stamp, [](char c) { return c == '-' || c == ':'; });
    stamp.insert(stamp.size() - 1, "." + std::to_string(1000 + millis).substr(1));
    return stamp;  // 20261102T090000.123Z: names sort as their instants do
}

// The UTC day of a backup folder, from its name ("pre-open-backup-20261102T…").
std::optional<std::chrono::sys_days> dayOf(const fs::path& folder) {
    const std::string name = folder.filename().string();
    const std::size_t start = folderPrefix.size() + 1;
    if (name.size() < start + 8) return std::nullopt;
    const std::string digits = name.substr(start, 8);
    if (!std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; })) return std::nullopt;
    const std::chrono::year_month_day day{std::chrono::year(std::stoi(digits.substr(0, 4))),
                                          std::chrono::month(static_cast<unsigned>(std::stoi(digits.substr(4, 2)))),
                                          std::chrono::day(static_cast<unsigned>(std::stoi(digits.substr(6, 2))))};
    if (!day.ok()) return std::nullopt;
    return std::chrono::sys_days(day);
}

// Renames a folder out of the backup names first, so that no reader ever sees a half-removed backup.
void removeFolder(const fs::path& folder) {
    std::error_code ignored;
    const fs::path doomed = folder.parent_path() / (std::string(removingPrefix) + folder.filename().string());
    fs::rename(folder, doomed, ignored);
    if (!ignored) fs::remove_all(doomed, ignored);
}

bool processIsGone(std::string_view stagingName) {
    const std::string rest(stagingName.substr(stagingPrefix.size()));
    const auto dash = rest.find('-');
    if (dash == std::string::npos || dash == 0) return false;
    try {
        const long pid = std::stol(rest.substr(0, dash));
        return pid > 0 && ::kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH;
    } catch (const std::exception&) {
        return false;
    }
}

std::string describeFile(const fs::path& file) {
    struct stat status {};
    if (::stat(file.c_str(), &status) != 0) return file.filename().string() + " absent";
    return file.filename().string() + " " + std::to_string(status.st_ino) + " " + std::to_string(status.st_size) + " " +
           std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec) + " " +
           std::to_string(status.st_ctim.tv_sec) + "." + std::to_string(status.st_ctim.tv_nsec);
}

std::string readFingerprint(const fs::path& folder) {
    std::ifstream in(folder / fingerprintFile);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    return in.bad() ? std::string() : text;
}

}  // namespace

void snapshot(sqlite3* source, const fs::path& destination) {
    Connection target;
    int result = sqlite3_open_v2(destination.c_str(), &target.handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    if (result != SQLITE_OK) fail(target.handle, result, "the backup file could not be created");
    sqlite3_backup* backup = sqlite3_backup_init(target.handle, "main", source, "main");
    if (!backup) fail(target.handle, sqlite3_errcode(target.handle), "the backup could not start");
    // One step copies every page under one read transaction of the source: a consistent snapshot.
    // Another process's write lock only delays the read; it is waited out.
    for (int attempt = 0;; ++attempt) {
        result = sqlite3_backup_step(backup, -1);
        if ((result != SQLITE_BUSY && result != SQLITE_LOCKED) || attempt == 300) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    sqlite3_backup_finish(backup);
    if (result != SQLITE_DONE) fail(source, result, "the store could not be read for its backup");
    result = sqlite3_exec(target.handle, "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr);
    if (result != SQLITE_OK) fail(target.handle, result, "the backup could not be finished");
    sqlite3_close_v2(target.handle);
    target.handle = nullptr;
    flush(destination);
}

void snapshot(const fs::path& source, const fs::path& destination) {
    Connection from;
    const int result = sqlite3_open_v2(source.c_str(), &from.handle, SQLITE_OPEN_READONLY, nullptr);
    if (result != SQLITE_OK) fail(from.handle, result, "the store could not be opened for its backup");
    sqlite3_busy_timeout(from.handle, 15000);
    snapshot(from.handle, destination);
}

std::string fingerprint(const fs::path& storeURL) {
    fs::path wal = storeURL;
    wal += "-wal";
    return describeFile(storeURL) + "\n" + describeFile(wal) + "\n";
}

std::vector<TesselStoreBackup> list(const fs::path& backupRoot, std::string_view storeFileName) {
    std::vector<TesselStoreBackup> backups;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(backupRoot, ignored)) {
        if (!entry.is_directory(ignored) || !isBackupFolder(entry.path())) continue;
        TesselStoreBackup backup{entry.path(), {}};
        for (const auto& file : fs::directory_iterator(entry.path(), ignored)) {
            const std::string name = file.path().filename().string();
            if (!name.starts_with('.')) backup.copiedFileNames.push_back(name);
        }
        // Folders that earlier builds left behind by a failed copy hold no store file: not a backup.
        if (std::find(backup.copiedFileNames.begin(), backup.copiedFileNames.end(), storeFileName) == backup.copiedFileNames.end()) {
            continue;
        }
        std::sort(backup.copiedFileNames.begin(), backup.copiedFileNames.end());
        backups.push_back(std::move(backup));
    }
    std::sort(backups.begin(), backups.end(), [](const auto& a, const auto& b) { return a.directoryURL < b.directoryURL; });
    return backups;
}

std::optional<TesselStoreBackup> unchangedBackup(const fs::path& backupRoot, std::string_view storeFileName,
                                                 const std::string& storeFingerprint) {
    // Only the newest whole backup matters: the folder names sort as their instants do.
    std::vector<fs::path> folders;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(backupRoot, ignored)) {
        if (isBackupFolder(entry.path())) folders.push_back(entry.path());
    }
    std::sort(folders.rbegin(), folders.rend());
    for (const auto& folder : folders) {
        if (!fs::exists(folder / storeFileName, ignored)) continue;
        if (readFingerprint(folder) != storeFingerprint) return std::nullopt;
        return TesselStoreBackup{folder, {std::string(storeFileName)}};
    }
    return std::nullopt;
}

PendingBackup PendingBackup::take(const fs::path& backupRoot, sqlite3* store, std::string_view storeFileName,
                                  const std::string& storeFingerprint) {
    fs::path staging;
    try {
        fs::create_directories(backupRoot);
        std::string pattern = (backupRoot / (std::string(stagingPrefix) + std::to_string(::getpid()) + "-XXXXXX")).string();
        if (!::mkdtemp(pattern.data())) throw SnapshotError("the backup folder could not be created", false);
        staging = pattern;
    } catch (const fs::filesystem_error& error) {
        throw SnapshotError(error.what(), false);
    }
    PendingBackup pending(backupRoot, staging, std::string(storeFileName));
    snapshot(store, pending.storeCopy());
    std::ofstream out(staging / fingerprintFile, std::ios::trunc);
    out << storeFingerprint;
    out.close();
    if (!out) throw SnapshotError("the backup could not record its source", false);
    return pending;
}

PendingBackup::PendingBackup(PendingBackup&& other) noexcept
    : root_(std::move(other.root_)), staging_(std::exchange(other.staging_, {})), storeFileName_(std::move(other.storeFileName_)) {}

PendingBackup::~PendingBackup() {
    if (staging_.empty()) return;
    std::error_code ignored;
    fs::remove_all(staging_, ignored);
}

TesselStoreBackup PendingBackup::commit() {
    const std::string stamp = stampOf(std::chrono::system_clock::now());
    for (int attempt = 0;; ++attempt) {
        const fs::path target = root_ / (std::string(folderPrefix) + "-" + stamp + (attempt ? "-" + std::to_string(attempt) : ""));
        // Never over another process's backup of the same millisecond.
        if (::renameat2(AT_FDCWD, staging_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
            staging_.clear();
            return {target, {storeFileName_}};
        }
        if (errno != EEXIST || attempt == 100) throw SnapshotError("the backup could not be put in place", false);
    }
}

void prune(const fs::path& backupRoot, std::chrono::system_clock::time_point now) {
    std::error_code ignored;
    std::vector<fs::path> backups;
    for (const auto& entry : fs::directory_iterator(backupRoot, ignored)) {
        const std::string name = entry.path().filename().string();
        if (isBackupFolder(entry.path())) {
            backups.push_back(entry.path());
        } else if ((name.starts_with(stagingPrefix) && processIsGone(name)) || name.starts_with(removingPrefix)) {
            fs::remove_all(entry.path(), ignored);
        }
    }
    std::sort(backups.begin(), backups.end());

    std::set<fs::path> kept;
    for (std::size_t i = backups.size() > keptNewest ? backups.size() - keptNewest : 0; i < backups.size(); ++i) {
        kept.insert(backups[i]);
    }
    const auto firstKeptDay = std::chrono::floor<std::chrono::days>(now) - std::chrono::days(keptDays - 1);
    std::map<std::chrono::sys_days, fs::path> newestOfDay;  // later folders of a day replace earlier ones
    std::optional<fs::path> newestBeforeTheWeek;
    for (const auto& backup : backups) {
        const auto day = dayOf(backup);
        if (!day) {
            kept.insert(backup);  // a name we cannot date is left alone
        } else if (*day >= firstKeptDay) {
            newestOfDay[*day] = backup;
        } else {
            newestBeforeTheWeek = backup;
        }
    }
    for (const auto& [day, backup] : newestOfDay) kept.insert(backup);
    if (newestBeforeTheWeek) kept.insert(*newestBeforeTheWeek);
    for (const auto& backup : backups) {
        if (!kept.contains(backup)) removeFolder(backup);
    }
}

}  // namespace tessel::store_backups
