#include "SatelliteRepository.hpp"

namespace tessel::satellite_repository {
namespace {

using store_schema::SatelliteOwner;

// All columns but the owner key and id, read from the current row.
SatelliteFields readFields(SQLite::Statement& statement, const SatelliteTable& table) {
    SatelliteFields fields;
    for (int i = 0; i < statement.getColumnCount(); ++i) {
        const std::string name = statement.getColumnName(i);
        if (name == table.ownerColumn || name == "id") continue;
        fields.emplace_back(name, columns::readValue(statement.getColumn(i)));
    }
    return fields;
}

std::string ownerClause(const SatelliteTable& table) { return " WHERE " + std::string(table.ownerColumn) + " = ?1"; }

void insert(ModelContext& context, const SatelliteTable& table, const Uuid& owner, const SatelliteFields& fields) {
    std::string columns = std::string(table.ownerColumn);
    std::string placeholders = "?1";
    int index = 1;
    if (table.hasID) {
        columns += ", id";
        placeholders += ", ?" + std::to_string(++index);
    }
    for (const auto& [name, value] : fields) {
        columns += ", " + name;
        placeholders += ", ?" + std::to_string(++index);
    }
    auto& statement = context.prepare("INSERT INTO " + std::string(table.table) + " (" + columns + ") VALUES (" +
                                      placeholders + ")");
    index = 1;
    columns::bind(statement, index, owner);
    if (table.hasID) columns::bind(statement, ++index, Uuid::generate());
    for (const auto& [name, value] : fields) columns::bindValue(statement, ++index, value);
    statement.exec();
}

std::string ownersOfKind(SatelliteOwner kind) {
    switch (kind) {
        case SatelliteOwner::production: return "SELECT ?1";
        case SatelliteOwner::rulesetRevision: return "SELECT id FROM ProductionRulesetRevision WHERE productionID = ?1";
        case SatelliteOwner::engagement:
            return "SELECT id FROM ProductionEngagement WHERE productionID = ?1 "
                   "OR crewMemberID IN (SELECT id FROM CrewMember WHERE productionID = ?1)";
        case SatelliteOwner::workday:
            return "SELECT w.id FROM Workday w JOIN PayrollWeek p ON w.payrollWeekID = p.id WHERE p.productionID = ?1";
        case SatelliteOwner::crewDailyEntry:
            return "SELECT e.id FROM CrewDailyEntry e JOIN Workday w ON e.workdayID = w.id "
                   "JOIN PayrollWeek p ON w.payrollWeekID = p.id WHERE p.productionID = ?1";
    }
    return {};
}

}  // namespace

namespace {
template <typename T>
std::optional<T> typed(const std::optional<SatelliteFields>& fields, std::string_view column) {
    if (!fields) return std::nullopt;
    for (const auto& [name, value] : *fields) {
        if (name == column && std::holds_alternative<T>(value)) return std::get<T>(value);
    }
    return std::nullopt;
}
}  // namespace

std::optional<std::string> text(const std::optional<SatelliteFields>& fields, std::string_view column) {
    return typed<std::string>(fields, column);
}

std::optional<std::int64_t> integer(const std::optional<SatelliteFields>& fields, std::string_view column) {
    return typed<std::int64_t>(fields, column);
}

std::optional<SatelliteFields> find(ModelContext& context, const SatelliteTable& table, const Uuid& owner) {
    // Undated satellites are unique per owner; the order makes any duplicate from elsewhere read consistently.
    auto& statement = context.prepare("SELECT * FROM " + std::string(table.table) + ownerClause(table) +
                                      (table.hasID ? " ORDER BY id" : "") + " LIMIT 1");
    columns::bind(statement, 1, owner);
    if (!statement.executeStep()) return std::nullopt;
    return readFields(statement, table);
}

std::optional<SatelliteFields> findInForce(ModelContext& context, const SatelliteTable& table, const Uuid& owner,
                                           CalendarDate date) {
    const std::string dateColumn(table.dateColumn);
    auto& statement = context.prepare("SELECT * FROM " + std::string(table.table) + ownerClause(table) + " AND " +
                                      dateColumn + " <= ?2 ORDER BY " + dateColumn + " DESC, rowid DESC LIMIT 1");
    columns::bindAll(statement, owner, date);
    if (!statement.executeStep()) return std::nullopt;
    return readFields(statement, table);
}

void write(ModelContext& context, const SatelliteTable& table, const Uuid& owner, const SatelliteFields& fields) {
    if (!find(context, table, owner)) return insert(context, table, owner, fields);
    std::string assignments;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        assignments += (i ? ", " : "") + fields[i].first + " = ?" + std::to_string(i + 2);
    }
    if (assignments.empty()) return;
    auto& statement = context.prepare("UPDATE " + std::string(table.table) + " SET " + assignments + ownerClause(table));
    columns::bind(statement, 1, owner);
    for (std::size_t i = 0; i < fields.size(); ++i) columns::bindValue(statement, static_cast<int>(i) + 2, fields[i].second);
    statement.exec();
}

void add(ModelContext& context, const SatelliteTable& table, const Uuid& owner, const SatelliteFields& fields) {
    insert(context, table, owner, fields);
}

void removeAll(ModelContext& context, const SatelliteTable& table, const Uuid& owner) {
    auto& statement = context.prepare("DELETE FROM " + std::string(table.table) + ownerClause(table));
    columns::bind(statement, 1, owner);
    statement.exec();
}

void removeOwnedBy(ModelContext& context, SatelliteOwner owner, const std::string& ownerIDsSQL, const Uuid& parameter) {
    for (const auto& table : store_schema::satelliteTables()) {
        if (table.owner != owner) continue;
        auto& statement = context.prepare("DELETE FROM " + std::string(table.table) + " WHERE " +
                                          std::string(table.ownerColumn) + " IN (" + ownerIDsSQL + ")");
        columns::bind(statement, 1, parameter);
        statement.exec();
    }
}

void removeAllOfProduction(ModelContext& context, const Uuid& productionID) {
    for (auto kind : {SatelliteOwner::crewDailyEntry, SatelliteOwner::workday, SatelliteOwner::engagement,
                      SatelliteOwner::rulesetRevision, SatelliteOwner::production}) {
        removeOwnedBy(context, kind, ownersOfKind(kind), productionID);
    }
}

}  // namespace tessel::satellite_repository
