#include "RecordRepository.hpp"

#include <algorithm>
#include <stdexcept>

#include "App/model/SatelliteRepository.hpp"

namespace tessel::record_repository {
namespace {

// Table and column names come from the program, never from input; they are still checked against
// the known tables so that no text reaches SQL unchecked.
std::string checkedTable(std::string_view table) {
    const auto& known = recordTables();
    if (std::find(known.begin(), known.end(), table) == known.end()) {
        throw std::invalid_argument("no record table " + std::string(table));
    }
    return std::string(table);
}

void checkColumn(const std::string& column) {
    const bool plain = !column.empty() && std::all_of(column.begin(), column.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
    if (!plain) throw std::invalid_argument("not a column name: " + column);
}

StoreFields readRow(SQLite::Statement& statement) {
    StoreFields fields;
    for (int i = 0; i < statement.getColumnCount(); ++i) {
        fields.emplace_back(statement.getColumnName(i), columns::readValue(statement.getColumn(i)));
    }
    return fields;
}

}  // namespace

const std::vector<std::string_view>& recordTables() {
    static const std::vector<std::string_view> tables{
        "ProductionRulesetRevision", "PayrollRulesLibraryItem", "PositionPreset", "RatePackage", "RatePackagePosition",
        "ProductionPosition", "ProductionRateCard", "PositionScaleRate", "ProductionRateCardPositionTerms",
        "CrewLibraryPerson", "ProductionCrewLibraryLink", "ConfirmedPayStubActualPay", "ConfirmedPayStubEarningLine",
        "PayrollIssue", "ProductionGenericDTSTemplate"};
    return tables;
}

Uuid create(ModelContext& context, std::string_view table, const StoreFields& fields) {
    const Uuid id = Uuid::generate();
    std::string names = "id";
    std::string placeholders = "?1";
    for (std::size_t i = 0; i < fields.size(); ++i) {
        checkColumn(fields[i].first);
        names += ", " + fields[i].first;
        placeholders += ", ?" + std::to_string(i + 2);
    }
    auto& statement = context.prepare("INSERT INTO " + checkedTable(table) + " (" + names + ") VALUES (" + placeholders + ")");
    columns::bind(statement, 1, id);
    for (std::size_t i = 0; i < fields.size(); ++i) columns::bindValue(statement, static_cast<int>(i) + 2, fields[i].second);
    statement.exec();
    return id;
}

std::optional<StoreFields> fetch(ModelContext& context, std::string_view table, const Uuid& id) {
    auto& statement = context.prepare("SELECT * FROM " + checkedTable(table) + " WHERE id = ?1");
    columns::bind(statement, 1, id);
    if (!statement.executeStep()) return std::nullopt;
    return readRow(statement);
}

std::vector<StoreFields> listWhere(ModelContext& context, std::string_view table, const std::string& column,
                                   const StoreValue& value) {
    checkColumn(column);
    auto& statement = context.prepare("SELECT * FROM " + checkedTable(table) + " WHERE " + column + " = ?1 ORDER BY rowid");
    columns::bindValue(statement, 1, value);
    std::vector<StoreFields> rows;
    while (statement.executeStep()) rows.push_back(readRow(statement));
    return rows;
}

void update(ModelContext& context, std::string_view table, const Uuid& id, const StoreFields& fields) {
    if (fields.empty()) return;
    std::string assignments;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        checkColumn(fields[i].first);
        assignments += (i ? ", " : "") + fields[i].first + " = ?" + std::to_string(i + 2);
    }
    auto& statement = context.prepare("UPDATE " + checkedTable(table) + " SET " + assignments + " WHERE id = ?1");
    columns::bind(statement, 1, id);
    for (std::size_t i = 0; i < fields.size(); ++i) columns::bindValue(statement, static_cast<int>(i) + 2, fields[i].second);
    statement.exec();
}

bool remove(ModelContext& context, std::string_view table, const Uuid& id) {
    // A revision's satellites hold its identifier as a plain field and are not reached by the cascade.
    if (table == "ProductionRulesetRevision") {
        satellite_repository::removeOwnedBy(context, store_schema::SatelliteOwner::rulesetRevision, "SELECT ?1", id);
    }
    auto& statement = context.prepare("DELETE FROM " + checkedTable(table) + " WHERE id = ?1");
    columns::bind(statement, 1, id);
    return statement.exec() > 0;
}

}  // namespace tessel::record_repository
