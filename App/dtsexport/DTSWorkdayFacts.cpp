#include "DTSWorkdayFacts.hpp"

#include "App/dts/CrewOnDTS.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/rules/Positions.hpp"
#include "App/rules/RateCards.hpp"

namespace tessel {
namespace {

// The Job for Today's position as the row recorded it: its name and code.
std::optional<std::pair<std::string, std::optional<std::string>>> jobForToday(ModelContext& context, const Uuid& entryID) {
    auto& statement = context.prepare("SELECT positionName, occupationCode FROM CrewDailyJobConfiguration WHERE crewDailyEntryID = ?1");
    columns::bind(statement, 1, entryID);
    return columns::readFirst(statement, [](SQLite::Statement& row) {
        return std::pair(columns::text(row.getColumn(0)), columns::optionalText(row.getColumn(1)));
    });
}

void readPosition(ModelContext& context, const Production& production, DTSCrewRowFacts& row) {
    if (const auto job = jobForToday(context, row.entryID)) {
        row.position = job->first;
        row.occupationCode = job->second;
        return;
    }
    if (!row.engagementID) return;
    const auto engaged = rate_cards::engagementPosition(context, *row.engagementID);
    if (!engaged) return;
    row.position = engaged->positionName;
    if (const auto position = positions::find(context, PositionScope::production, production.id, engaged->positionID)) {
        row.occupationCode = position->occupationCode;
    }
}

DTSCrewRowFacts rowFacts(ModelContext& context, const Production& production, const Workday& workday, const CrewDailyEntry& entry) {
    DTSCrewRowFacts row{.entryID = entry.id, .crewMemberID = entry.crewMemberID, .engagementID = entry.engagementID};
    if (entry.crewMemberID) {
        if (const auto member = crew_repository::fetchCrewMember(context, *entry.crewMemberID)) row.crewName = member->displayName;
    }
    row.dtsName = CrewOnDTS::dtsNameForToday(context, entry.id);
    const auto engagement = entry.engagementID ? crew_repository::fetchEngagement(context, *entry.engagementID) : std::nullopt;
    row.locality = entry.rulesLocalityOverride;
    if (engagement) {
        if (!row.locality) row.locality = engagement->rulesLocalityOverride;
        row.schedule = engagement->employmentSchedule;
    }
    readPosition(context, production, row);
    row.times = DailyTimeSheets::effectiveTimes(workday, entry);
    row.nonDeductibleBreakfast = entry.nonDeductibleBreakfast;
    row.boxRental = DailyTimeSheets::boxRental(context, entry.id);
    row.mileage = DailyTimeSheets::rowMileage(context, entry.id);
    row.workMode = DailyTimeSheets::workMode(context, entry.id);
    row.dayplayer = CrewOnDTS::isDayplayerRow(context, entry);
    return row;
}

}  // namespace

DTSWorkdayFacts DTSWorkdayFacts::read(ModelContext& context, const Workday& workday) {
    const Uuid productionID = DailyTimeSheets::productionOf(context, workday);
    auto production = production_repository::fetch(context, productionID);
    if (!production) throw ProductionDTSExportError(ProductionDTSExportError::Case::missingProduction);
    DTSWorkdayFacts facts{*production, production_profile::identity(context, productionID), workday};
    facts.workState = DailyTimeSheets::workState(context, workday.id);
    if (facts.workState.empty()) facts.workState = facts.identity.defaultWorkState;
    facts.notes = DailyTimeSheets::notes(context, workday.id);
    facts.workLocation = DailyTimeSheets::workLocation(context, workday.id);
    facts.departmentMileage = DailyTimeSheets::departmentMileage(context, workday.id);
    facts.signatureImage = dts_export::signature(context, productionID);
    for (const auto& entry : payroll_week_repository::entries(context, workday.id)) facts.rows.push_back(rowFacts(context, *production, workday, entry));
    return facts;
}

}  // namespace tessel
