#include "PayrollWeekRepository.hpp"

#include "App/model/SatelliteRepository.hpp"

namespace tessel::payroll_week_repository {
namespace {

using namespace columns;
using store_schema::SatelliteOwner;

void execute(ModelContext& context, const std::string& sql, const Uuid& first, const std::optional<Uuid>& second = {}) {
    auto& statement = context.prepare(sql);
    bind(statement, 1, first);
    if (second) bind(statement, 2, *second);
    statement.exec();
}

constexpr const char* weekColumns =
    "id, productionID, startDate, workweekSourceDefinitionID, workweekStartWeekday, workweekStartHour, workweekStartMinute";

PayrollWeek readWeek(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)), uuid(row.getColumn(1)), instant(row.getColumn(2)), uuid(row.getColumn(3)),
            static_cast<int>(integer(row.getColumn(4))), static_cast<int>(integer(row.getColumn(5))),
            static_cast<int>(integer(row.getColumn(6)))};
}

constexpr const char* workdayColumns =
    "id, payrollWeekID, calendarDate, generalCrewCall, generalCrewCallWasAutofilled, officialLunchOut, "
    "officialLunchOutWasAutofilled, firstMealGraceWasCalled, officialLunchIn, officialLunchInWasAutofilled, wrap, "
    "sharedTravelDurationSeconds";

Workday readWorkday(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)),
            uuid(row.getColumn(1)),
            date(row.getColumn(2)),
            optionalInstant(row.getColumn(3)),
            boolean(row.getColumn(4)),
            optionalInstant(row.getColumn(5)),
            boolean(row.getColumn(6)),
            boolean(row.getColumn(7)),
            optionalInstant(row.getColumn(8)),
            boolean(row.getColumn(9)),
            optionalInstant(row.getColumn(10)),
            optionalInteger(row.getColumn(11))};
}

constexpr const char* entryColumns =
    "id, workdayID, crewMemberID, engagementID, callOverride, lunchOutOverride, lunchInOverride, wrapOverride, "
    "rulesLocalityOverrideRawValue, nonDeductibleBreakfast, displayOrder, callOverrideWasAutofilled, "
    "wrapOverrideWasAutofilled";

CrewDailyEntry readEntry(SQLite::Statement& row) {
    const auto locality = optionalText(row.getColumn(8));
    return {uuid(row.getColumn(0)),
            uuid(row.getColumn(1)),
            optionalUuid(row.getColumn(2)),
            optionalUuid(row.getColumn(3)),
            optionalInstant(row.getColumn(4)),
            optionalInstant(row.getColumn(5)),
            optionalInstant(row.getColumn(6)),
            optionalInstant(row.getColumn(7)),
            locality ? fromRawValue<RulesLocality>(*locality) : std::nullopt,
            boolean(row.getColumn(9)),
            integer(row.getColumn(10)),
            boolean(row.getColumn(11)),
            boolean(row.getColumn(12))};
}

std::optional<std::string> localityText(const std::optional<RulesLocality>& locality) {
    if (!locality) return std::nullopt;
    return std::string(toRawValue(*locality));
}

// Binds every column in the order of workdayColumns / entryColumns, for both inserting and updating.
void bindWorkday(SQLite::Statement& statement, const Workday& w) {
    bindAll(statement, w.id, w.payrollWeekID, w.calendarDate, w.generalCrewCall, w.generalCrewCallWasAutofilled,
            w.officialLunchOut, w.officialLunchOutWasAutofilled, w.firstMealGraceWasCalled, w.officialLunchIn,
            w.officialLunchInWasAutofilled, w.wrap, w.sharedTravelDurationSeconds);
}

void bindEntry(SQLite::Statement& statement, const CrewDailyEntry& e) {
    bindAll(statement, e.id, e.workdayID, e.crewMemberID, e.engagementID, e.callOverride, e.lunchOutOverride,
            e.lunchInOverride, e.wrapOverride, localityText(e.rulesLocalityOverride), e.nonDeductibleBreakfast,
            e.displayOrder, e.callOverrideWasAutofilled, e.wrapOverrideWasAutofilled);
}

constexpr const char* activityColumns =
    "id, payrollWeekID, calendarDate, kindRawValue, travelDurationSeconds, crewMemberID, engagementID";

PayrollDayActivity readActivity(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)), uuid(row.getColumn(1)), date(row.getColumn(2)), text(row.getColumn(3)),
            optionalInteger(row.getColumn(4)), optionalUuid(row.getColumn(5)), optionalUuid(row.getColumn(6))};
}

}  // namespace

PayrollWeek createWeek(ModelContext& context, const PayrollWeek& week) {
    auto& statement = context.prepare("INSERT INTO PayrollWeek (" + std::string(weekColumns) + ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    bindAll(statement, week.id, week.productionID, week.startDate, week.workweekSourceDefinitionID,
            std::int64_t{week.workweekStartWeekday}, std::int64_t{week.workweekStartHour},
            std::int64_t{week.workweekStartMinute});
    statement.exec();
    return week;
}

std::optional<PayrollWeek> fetchWeek(ModelContext& context, const Uuid& id) {
    auto& statement = context.prepare("SELECT " + std::string(weekColumns) + " FROM PayrollWeek WHERE id = ?1");
    bind(statement, 1, id);
    return readFirst(statement, readWeek);
}

std::vector<PayrollWeek> weeks(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT " + std::string(weekColumns) +
                                      " FROM PayrollWeek WHERE productionID = ?1 ORDER BY startDate, id");
    bind(statement, 1, productionID);
    return readAll<PayrollWeek>(statement, readWeek);
}

std::vector<PayrollWeek> weeksStartingAt(ModelContext& context, const Uuid& productionID, Instant startDate) {
    auto& statement = context.prepare("SELECT " + std::string(weekColumns) +
                                      " FROM PayrollWeek WHERE productionID = ?1 AND startDate = ?2 ORDER BY id");
    bindAll(statement, productionID, startDate);
    return readAll<PayrollWeek>(statement, readWeek);
}

void removeWeek(ModelContext& context, const Uuid& id) {
    satellite_repository::removeOwnedBy(context, SatelliteOwner::crewDailyEntry,
                                        "SELECT e.id FROM CrewDailyEntry e JOIN Workday w ON e.workdayID = w.id "
                                        "WHERE w.payrollWeekID = ?1",
                                        id);
    satellite_repository::removeOwnedBy(context, SatelliteOwner::workday,
                                        "SELECT id FROM Workday WHERE payrollWeekID = ?1", id);
    execute(context, "DELETE FROM PayrollWeek WHERE id = ?1", id);
}

Workday createWorkday(ModelContext& context, const Workday& w) {
    auto& statement = context.prepare("INSERT INTO Workday (" + std::string(workdayColumns) +
                                      ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)");
    bindWorkday(statement, w);
    statement.exec();
    return w;
}

std::optional<Workday> fetchWorkday(ModelContext& context, const Uuid& id) {
    auto& statement = context.prepare("SELECT " + std::string(workdayColumns) + " FROM Workday WHERE id = ?1");
    bind(statement, 1, id);
    return readFirst(statement, readWorkday);
}

std::vector<Workday> workdays(ModelContext& context, const Uuid& payrollWeekID) {
    auto& statement = context.prepare("SELECT " + std::string(workdayColumns) +
                                      " FROM Workday WHERE payrollWeekID = ?1 ORDER BY calendarDate, id");
    bind(statement, 1, payrollWeekID);
    return readAll<Workday>(statement, readWorkday);
}

std::optional<Workday> workdayOn(ModelContext& context, const Uuid& productionID, CalendarDate day) {
    auto& statement = context.prepare("SELECT w.id FROM Workday w JOIN PayrollWeek p ON w.payrollWeekID = p.id "
                                      "WHERE p.productionID = ?1 AND w.calendarDate = ?2 ORDER BY w.id LIMIT 1");
    bindAll(statement, productionID, day);
    if (!statement.executeStep()) return std::nullopt;
    const Uuid id = uuid(statement.getColumn(0));
    return fetchWorkday(context, id);
}

void updateWorkday(ModelContext& context, const Workday& w) {
    auto& statement = context.prepare(
        "UPDATE Workday SET payrollWeekID = ?2, calendarDate = ?3, generalCrewCall = ?4, generalCrewCallWasAutofilled = ?5, "
        "officialLunchOut = ?6, officialLunchOutWasAutofilled = ?7, firstMealGraceWasCalled = ?8, officialLunchIn = ?9, "
        "officialLunchInWasAutofilled = ?10, wrap = ?11, sharedTravelDurationSeconds = ?12 WHERE id = ?1");
    bindWorkday(statement, w);
    statement.exec();
}

void setWorkdayWeek(ModelContext& context, const Uuid& workdayID, const Uuid& payrollWeekID) {
    execute(context, "UPDATE Workday SET payrollWeekID = ?2 WHERE id = ?1", workdayID, payrollWeekID);
}

void removeWorkday(ModelContext& context, const Uuid& id) {
    satellite_repository::removeOwnedBy(context, SatelliteOwner::crewDailyEntry,
                                        "SELECT id FROM CrewDailyEntry WHERE workdayID = ?1", id);
    satellite_repository::removeOwnedBy(context, SatelliteOwner::workday, "SELECT ?1", id);
    execute(context, "DELETE FROM Workday WHERE id = ?1", id);
}

CrewDailyEntry createEntry(ModelContext& context, const CrewDailyEntry& e) {
    auto& statement = context.prepare("INSERT INTO CrewDailyEntry (" + std::string(entryColumns) +
                                      ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13)");
    bindEntry(statement, e);
    statement.exec();
    return e;
}

std::vector<CrewDailyEntry> entries(ModelContext& context, const Uuid& workdayID) {
    auto& statement = context.prepare("SELECT " + std::string(entryColumns) +
                                      " FROM CrewDailyEntry WHERE workdayID = ?1 ORDER BY displayOrder, id");
    bind(statement, 1, workdayID);
    return readAll<CrewDailyEntry>(statement, readEntry);
}

void updateEntry(ModelContext& context, const CrewDailyEntry& e) {
    auto& statement = context.prepare(
        "UPDATE CrewDailyEntry SET workdayID = ?2, crewMemberID = ?3, engagementID = ?4, callOverride = ?5, "
        "lunchOutOverride = ?6, lunchInOverride = ?7, wrapOverride = ?8, rulesLocalityOverrideRawValue = ?9, "
        "nonDeductibleBreakfast = ?10, displayOrder = ?11, callOverrideWasAutofilled = ?12, "
        "wrapOverrideWasAutofilled = ?13 WHERE id = ?1");
    bindEntry(statement, e);
    statement.exec();
}

void removeEntry(ModelContext& context, const Uuid& id) {
    satellite_repository::removeOwnedBy(context, SatelliteOwner::crewDailyEntry, "SELECT ?1", id);
    execute(context, "DELETE FROM CrewDailyEntry WHERE id = ?1", id);
}

PayrollDayActivity createActivity(ModelContext& context, const PayrollDayActivity& a) {
    auto& statement = context.prepare("INSERT INTO PayrollDayActivity (" + std::string(activityColumns) +
                                      ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    bindAll(statement, a.id, a.payrollWeekID, a.calendarDate, a.kindRawValue, a.travelDurationSeconds, a.crewMemberID,
            a.engagementID);
    statement.exec();
    return a;
}

std::vector<PayrollDayActivity> activities(ModelContext& context, const Uuid& payrollWeekID) {
    // By date, then in crew order, so that a day's activities read like its DTS.
    auto& statement = context.prepare(
        "SELECT a.id, a.payrollWeekID, a.calendarDate, a.kindRawValue, a.travelDurationSeconds, a.crewMemberID, "
        "a.engagementID FROM PayrollDayActivity a LEFT JOIN CrewMember c ON a.crewMemberID = c.id "
        "WHERE a.payrollWeekID = ?1 ORDER BY a.calendarDate, COALESCE(c.displayOrder, 0), c.displayName, a.id");
    bind(statement, 1, payrollWeekID);
    return readAll<PayrollDayActivity>(statement, readActivity);
}

void setActivityWeek(ModelContext& context, const Uuid& activityID, const Uuid& payrollWeekID) {
    execute(context, "UPDATE PayrollDayActivity SET payrollWeekID = ?2 WHERE id = ?1", activityID, payrollWeekID);
}

void removeActivity(ModelContext& context, const Uuid& id) {
    execute(context, "DELETE FROM PayrollDayActivity WHERE id = ?1", id);
}

}  // namespace tessel::payroll_week_repository
