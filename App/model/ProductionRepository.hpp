#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/PersistenceModels.hpp"

namespace tessel {

// A user's entry that Tessel refuses; the message is the sentence shown, and nothing was written.
class ModelValidationError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What a new production starts with, taken from the user settings when it is created.
struct NewProductionDefaults {
    DTSTimeDisplay timeDisplay = DTSTimeDisplay::payrollDecimal;
    std::int64_t lunchDurationSeconds = 1800;
    std::string currencyCode = "USD";
    int workweekWeekday = 2;  // Monday
    std::string department;
    Decimal roundingTolerance{"0.01"};
};

namespace production_repository {

// Refuses an empty name with "Enter a Production name.". Also gives the production its first work-week
// definition and payroll calendar (both starting on the default weekday), its department and its
// pay-comparison tolerance.
Production create(ModelContext& context, const std::string& name, const NewProductionDefaults& defaults, Instant now);
std::optional<Production> fetch(ModelContext& context, const Uuid& id);
std::vector<Production> list(ModelContext& context);  // oldest first
void update(ModelContext& context, const Production& production);
// Deletes the production with everything it owns, satellites included. False when there was none.
bool remove(ModelContext& context, const Uuid& id);

}  // namespace production_repository

namespace crew_repository {

CrewMember createCrewMember(ModelContext& context, const Uuid& productionID, const std::string& displayName);
std::optional<CrewMember> fetchCrewMember(ModelContext& context, const Uuid& id);
std::vector<CrewMember> crewMembers(ModelContext& context, const Uuid& productionID);  // in crew order
void updateCrewMember(ModelContext& context, const CrewMember& member);
void removeCrewMember(ModelContext& context, const Uuid& id);

// A new engagement is daily and full time.
ProductionEngagement createEngagement(ModelContext& context, const Uuid& productionID, const Uuid& crewMemberID,
                                      CalendarDate effectiveFrom);
std::optional<ProductionEngagement> fetchEngagement(ModelContext& context, const Uuid& id);
std::vector<ProductionEngagement> engagementsOf(ModelContext& context, const Uuid& crewMemberID);
std::vector<ProductionEngagement> engagements(ModelContext& context, const Uuid& productionID);
void updateEngagement(ModelContext& context, const ProductionEngagement& engagement);
void removeEngagement(ModelContext& context, const Uuid& id);

// Refuses a non-number with "Enter a valid hourly rate." and a negative one with
// "Enter a non-negative hourly rate.".
EngagementPayRate addPayRate(ModelContext& context, const Uuid& engagementID, CalendarDate effectiveDate,
                             const std::string& hourlyAmountText, const std::string& currencyCode);
std::vector<EngagementPayRate> payRates(ModelContext& context, const Uuid& engagementID);  // by effective date
// Every engagement's rates in one production, each engagement's by effective date.
std::map<Uuid, std::vector<EngagementPayRate>> payRatesOfProduction(ModelContext& context, const Uuid& productionID);

Uuid createClassification(ModelContext& context, const Uuid& productionID, const std::string& name);
Uuid createCondition(ModelContext& context, const Uuid& productionID, const std::string& name);
void addCondition(ModelContext& context, const Uuid& engagementID, const Uuid& conditionID);
std::vector<Uuid> conditionsOf(ModelContext& context, const Uuid& engagementID);
// Removes the label from the engagements that named it; the engagements stay.
void removeClassification(ModelContext& context, const Uuid& id);
void removeCondition(ModelContext& context, const Uuid& id);

}  // namespace crew_repository
}  // namespace tessel
