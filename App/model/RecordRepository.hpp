#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/model/ModelContext.hpp"

namespace tessel {

// The records of the tables that have no typed repository of their own yet (rules library, rate cards
// and positions, crew library, confirmed pay stubs, payroll issues, DTS templates, ruleset revisions):
// rows by identifier, with the table's own defaults, constraints and delete rules.
namespace record_repository {

// The tables this repository serves, each keyed by an "id" column.
const std::vector<std::string_view>& recordTables();

// Inserts a row with a new identifier; columns not given take the table's defaults. Throws
// SQLite::Exception when a constraint refuses the row (a duplicate identity key, a missing owner).
Uuid create(ModelContext& context, std::string_view table, const StoreFields& fields);
std::optional<StoreFields> fetch(ModelContext& context, std::string_view table, const Uuid& id);
// The rows whose column holds the value, in insertion order.
std::vector<StoreFields> listWhere(ModelContext& context, std::string_view table, const std::string& column,
                                   const StoreValue& value);
void update(ModelContext& context, std::string_view table, const Uuid& id, const StoreFields& fields);
// Deletes the row and, through the store's delete rules, what it owns.
bool remove(ModelContext& context, std::string_view table, const Uuid& id);

}  // namespace record_repository
}  // namespace tessel
