#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/model/ProductionProfile.hpp"

// Everything a DTS form prints about one day, read from the store in one go: the production's identity,
// the day's shared times and facts, and each crew row as it stands, in crew-row order.
namespace tessel {

struct DTSCrewRowFacts {
    Uuid entryID;
    std::optional<Uuid> crewMemberID{}, engagementID{};
    std::string crewName{};                    // empty when the row names nobody
    std::optional<std::string> dtsName{};      // the DTS Name for Today
    std::optional<std::string> position{};     // the Job for Today's position, else the engagement's
    std::optional<std::string> occupationCode{};
    std::optional<RulesLocality> locality{};   // the row's, else the engagement's own
    std::optional<EmploymentSchedule> schedule{};
    EffectiveRowTimes times{};
    bool nonDeductibleBreakfast = false;
    bool boxRental = false;
    std::optional<Decimal> mileage{};
    CrewDailyWorkMode workMode = CrewDailyWorkMode::timed;
    bool dayplayer = false;
};

struct DTSWorkdayFacts {
    Production production;
    ProductionIdentity identity;
    Workday workday;
    std::string workState{};  // the day's own, else the production's default
    std::string notes{};
    std::optional<MealWorkLocation> workLocation{};
    std::optional<Decimal> departmentMileage{};
    std::optional<std::string> signatureImage{};  // the department head's signature as stored
    std::vector<DTSCrewRowFacts> rows{};

    // Refused with ProductionDTSExportError (missingProduction) for a DTS whose production is gone.
    static DTSWorkdayFacts read(ModelContext& context, const Workday& workday);
};

}  // namespace tessel
