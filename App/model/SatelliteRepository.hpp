#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/StoreSchema.hpp"

namespace tessel {

// A satellite's stored fields by column name, the owner key and id excepted.
using SatelliteFields = StoreFields;

// Settings kept beside an owner and looked up by the owner's identifier. An owner without a satellite
// has the default, which the typed readers of each setting supply.
namespace satellite_repository {

using store_schema::SatelliteTable;

// The one satellite of an undated kind, if the owner has one.
std::optional<SatelliteFields> find(ModelContext& context, const SatelliteTable& table, const Uuid& owner);
// Of a dated kind, the one with the latest effective date on or before the date; between two with
// the same date, the one written last.
std::optional<SatelliteFields> findInForce(ModelContext& context, const SatelliteTable& table, const Uuid& owner,
                                           CalendarDate date);
// A column of fields read from the store, when present and of that type.
std::optional<std::string> text(const std::optional<SatelliteFields>& fields, std::string_view column);
std::optional<std::int64_t> integer(const std::optional<SatelliteFields>& fields, std::string_view column);

// Undated kinds: creates the satellite on first write and updates it afterwards.
void write(ModelContext& context, const SatelliteTable& table, const Uuid& owner, const SatelliteFields& fields);
// Dated kinds: adds one more dated term.
void add(ModelContext& context, const SatelliteTable& table, const Uuid& owner, const SatelliteFields& fields);
void removeAll(ModelContext& context, const SatelliteTable& table, const Uuid& owner);

// Satellites are not reached by the store's cascades, so deleting an owner deletes them through these:
// every satellite of the owners that the subquery (with ?1 bound to the given identifier) selects.
void removeOwnedBy(ModelContext& context, store_schema::SatelliteOwner owner, const std::string& ownerIDsSQL,
                   const Uuid& parameter);
// Every satellite of a production and of everything it owns.
void removeAllOfProduction(ModelContext& context, const Uuid& productionID);

}  // namespace satellite_repository
}  // namespace tessel
