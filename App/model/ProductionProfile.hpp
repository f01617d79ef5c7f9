#pragma once

#include <string>

#include "App/model/ProductionRepository.hpp"

namespace tessel {

// What a production prints on its DTS about itself, kept beside the production.
struct ProductionIdentity {
    std::string department;          // ProductionIdentityConfiguration
    std::string company;             // ProductionCompanyIdentity
    std::string defaultWorkState;    // ProductionDTSExportConfiguration
    std::string departmentHeadName;  // ProductionDTSExportConfiguration
};

namespace production_profile {

ProductionIdentity identity(ModelContext& context, const Uuid& productionID);
void setIdentity(ModelContext& context, const Uuid& productionID, const ProductionIdentity& identity);

// A three-letter ISO 4217 code in capitals ("USD"); refused with a sentence otherwise.
void validateCurrencyCode(const std::string& code);
// Refuses a currency other than the one the crew's pay is already recorded in.
void checkCurrencyChange(ModelContext& context, const Uuid& productionID, const std::string& code);
// The lunch length that Official Lunch In autofill adds: more than zero and less than a day.
void validateLunchLength(std::int64_t seconds);

}  // namespace production_profile
}  // namespace tessel
