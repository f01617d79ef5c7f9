#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace SQLite {
class Database;
}

namespace tessel::store_schema {

inline constexpr std::string_view currentSchemaVersion = "40.2.0";
inline constexpr std::string_view modelIdentifier = "app.tessel.model";
// Written to the SQLite header (PRAGMA application_id) so that our stores are recognisable without
// reading any table: "TSSL".
inline constexpr int applicationID = 0x5453534C;
inline constexpr std::string_view metadataTable = "TesselStoreMetadata";

// One step of the staged migration: brings a store at `fromVersion` to `toVersion` in one transaction.
struct MigrationStep {
    std::string_view fromVersion;
    std::string_view toVersion;
    std::function<void(SQLite::Database&)> apply;
};

// The earliest generation the migration plan starts from, and its complete schema.
inline constexpr std::string_view earliestSchemaVersion = "40.1.0";
std::string_view earliestGenerationSchema();

// The ordered steps from the earliest generation to the current one.
const std::vector<MigrationStep>& migrationPlan();

// Indexes for lookups that later versions make often (a week's confirmed stubs, a stub's lines). They
// hold no data, so a store of any version gains each missing one when it opens, without a new version.
struct LookupIndex {
    std::string_view name, definition;  // "CREATE INDEX IF NOT EXISTS …"
};
const std::vector<LookupIndex>& lookupIndexes();

// Compares dotted version texts numerically: negative, zero or positive. Unreadable parts count as 0.
int compareVersions(std::string_view a, std::string_view b);

// What owns a satellite: satellites carry their owner's identifier as a plain field, so whoever deletes
// an owner deletes them too.
enum class SatelliteOwner { production, rulesetRevision, engagement, workday, crewDailyEntry };

struct SatelliteTable {
    std::string_view table;
    std::string_view ownerColumn;
    SatelliteOwner owner;
    std::string_view dateColumn;  // empty for undated satellites, which exist at most once per owner
    bool hasID = true;            // a few satellites are identified by their owner alone

    bool isDated() const noexcept { return !dateColumn.empty(); }
};

// The satellite kind stored in this table; throws std::out_of_range for an unknown name.
const SatelliteTable& satelliteTable(std::string_view table);

const std::vector<SatelliteTable>& satelliteTables();

// Every table of the current schema that holds user data, in creation order (for counts and checks).
const std::vector<std::string_view>& entityTables();

}  // namespace tessel::store_schema
