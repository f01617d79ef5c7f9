#include "ProductionProfile.hpp"

#include <algorithm>

#include "App/model/CrewRoster.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel::production_profile {
namespace {

namespace satellites = satellite_repository;
using store_schema::satelliteTable;

std::string textIn(ModelContext& context, const char* table, const Uuid& productionID, std::string_view column) {
    return satellites::text(satellites::find(context, satelliteTable(table), productionID), column).value_or("");
}

}  // namespace

ProductionIdentity identity(ModelContext& context, const Uuid& productionID) {
    return {textIn(context, "ProductionIdentityConfiguration", productionID, "department"),
            textIn(context, "ProductionCompanyIdentity", productionID, "company"),
            textIn(context, "ProductionDTSExportConfiguration", productionID, "defaultWorkState"),
            textIn(context, "ProductionDTSExportConfiguration", productionID, "departmentHeadName")};
}

void setIdentity(ModelContext& context, const Uuid& productionID, const ProductionIdentity& identity) {
    const ProductionIdentity stored = production_profile::identity(context, productionID);
    if (identity.department != stored.department) {
        satellites::write(context, satelliteTable("ProductionIdentityConfiguration"), productionID, {{"department", identity.department}});
    }
    if (identity.company != stored.company) {
        satellites::write(context, satelliteTable("ProductionCompanyIdentity"), productionID, {{"company", identity.company}});
    }
    if (identity.defaultWorkState != stored.defaultWorkState || identity.departmentHeadName != stored.departmentHeadName) {
        satellites::write(context, satelliteTable("ProductionDTSExportConfiguration"), productionID,
                          {{"defaultWorkState", identity.defaultWorkState}, {"departmentHeadName", identity.departmentHeadName}});
    }
}

void validateCurrencyCode(const std::string& code) {
    if (code.size() != 3 || !std::all_of(code.begin(), code.end(), [](char c) { return c >= 'A' && c <= 'Z'; })) {
        throw ModelValidationError("Enter the currency as a three-letter ISO 4217 code, such as USD.");
    }
}

void checkCurrencyChange(ModelContext& context, const Uuid& productionID, const std::string& code) {
    validateCurrencyCode(code);
    for (const auto& recorded : crew_roster::recordedCurrencies(context, productionID)) {
        if (recorded != code) {
            throw ModelValidationError("The currency cannot change to " + code + ": crew pay is already recorded in " + recorded + ".");
        }
    }
}

void validateLunchLength(std::int64_t seconds) {
    if (seconds <= 0 || seconds >= 86400) throw ModelValidationError("Enter a lunch length of more than zero hours, such as 0.5.");
}

}  // namespace tessel::production_profile
