#include "ProductionWeekCalendars.hpp"

#include <map>
#include <set>
#include <tuple>

#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
using Error = PayrollWeekRebuildError;

Instant midnight(CalendarDate date) { return Instant(sys_days(date)); }

using Snapshot = std::tuple<int, int, int>;  // weekday, hour, minute
Snapshot snapshotOf(const PayrollWeek& week) {
    return {week.workweekStartWeekday, week.workweekStartHour, week.workweekStartMinute};
}

std::vector<ProductionWorkweekDefinition> workweekDefinitions(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT id, productionID, effectiveFrom, startWeekday, startHour, startMinute, "
                                      "isCurrent FROM ProductionWorkweekDefinition WHERE productionID = ?1 "
                                      "ORDER BY effectiveFrom DESC, id");
    columns::bind(statement, 1, productionID);
    std::vector<ProductionWorkweekDefinition> definitions;
    while (statement.executeStep()) {
        definitions.push_back({columns::uuid(statement.getColumn(0)), columns::uuid(statement.getColumn(1)),
                               columns::date(statement.getColumn(2)), statement.getColumn(3).getInt(),
                               statement.getColumn(4).getInt(), statement.getColumn(5).getInt(),
                               columns::boolean(statement.getColumn(6))});
    }
    return definitions;
}

bool weekHasConfirmedPay(ModelContext& context, const Uuid& weekID) {
    auto& statement = context.prepare("SELECT 1 FROM ConfirmedPayStubActualPay WHERE payrollWeekID = ?1 LIMIT 1");
    columns::bind(statement, 1, weekID);
    return statement.executeStep();
}

// One DTS or activity to be regrouped: its record, its date and the week it is in now.
struct Grouped {
    bool isWorkday;
    Uuid id;
    CalendarDate date;
    PayrollWeek week;
};

std::vector<Grouped> groupedRecords(ModelContext& context, const std::vector<PayrollWeek>& allWeeks) {
    std::vector<Grouped> records;
    for (const auto& week : allWeeks) {
        for (const auto& workday : weeks::workdays(context, week.id)) records.push_back({true, workday.id, workday.calendarDate, week});
        for (const auto& activity : weeks::activities(context, week.id)) {
            records.push_back({false, activity.id, activity.calendarDate, week});
        }
    }
    return records;
}

}  // namespace

PayrollWeekRebuildError::PayrollWeekRebuildError(Case errorCase)
    : CaseError(errorCase,
                errorCase == Case::confirmedAuthority ? "confirmedAuthority"
                : errorCase == Case::duplicatePeriods ? "duplicatePeriods"
                                                      : "historicalWorkWeek",
                errorCase == Case::confirmedAuthority
                    ? "Payroll Weeks cannot be rebuilt because this would change a period with confirmed Actual Pay. "
                      "Confirmed pay stubs have not been moved or changed."
                : errorCase == Case::duplicatePeriods
                    ? "Resolve duplicate Payroll Week start dates before rebuilding. No data was changed."
                    : "These historical records have differing Work Week snapshots. Rebuilding would change "
                      "contractual sequencing, so no data was changed.") {}

int ProductionWeekCalendars::weekdayOf(CalendarDate date) {
    return static_cast<int>(weekday(sys_days(date)).c_encoding()) + 1;
}

CalendarDate ProductionWeekCalendars::payrollWeekStart(CalendarDate date, int startWeekday) {
    const int daysBack = ((weekdayOf(date) - startWeekday) + 7) % 7;
    return CalendarDate(sys_days(date) - days(daysBack));
}

int ProductionWeekCalendars::payrollStartWeekday(ModelContext& context, const Uuid& productionID) {
    const auto calendar =
        satellite_repository::find(context, store_schema::satelliteTable("ProductionPayrollCalendar"), productionID);
    if (calendar) {
        for (const auto& [column, value] : *calendar) {
            const auto* weekdayNumber = std::get_if<std::int64_t>(&value);
            if (column == "startWeekday" && weekdayNumber && *weekdayNumber >= 1 && *weekdayNumber <= 7) {
                return static_cast<int>(*weekdayNumber);
            }
        }
    }
    return 2;
}

void ProductionWeekCalendars::setPayrollStartWeekday(ModelContext& context, const Uuid& productionID, int weekdayNumber) {
    if (weekdayNumber < 1 || weekdayNumber > 7) throw PayrollWeekError("Choose a weekday from Sunday to Saturday.");
    satellite_repository::write(context, store_schema::satelliteTable("ProductionPayrollCalendar"), productionID,
                                {{"startWeekday", std::int64_t{weekdayNumber}}});
}

ProductionWorkweekDefinition ProductionWeekCalendars::workweekInForce(ModelContext& context, const Uuid& productionID,
                                                                      CalendarDate date) {
    const auto definitions = workweekDefinitions(context, productionID);
    for (const auto& definition : definitions) {
        if (definition.isCurrent) return definition;
    }
    for (const auto& definition : definitions) {
        if (sys_days(definition.effectiveFrom) <= sys_days(date)) return definition;
    }
    const ProductionWorkweekDefinition created{Uuid::generate(), productionID, date, 2, 0, 0, true};
    auto& insert = context.prepare("INSERT INTO ProductionWorkweekDefinition (id, productionID, effectiveFrom, "
                                   "startWeekday, startHour, startMinute, isCurrent) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    columns::bindAll(insert, created.id, created.productionID, created.effectiveFrom, std::int64_t{created.startWeekday},
                     std::int64_t{created.startHour}, std::int64_t{created.startMinute}, created.isCurrent);
    insert.exec();
    return created;
}

PayrollWeek ProductionWeekCalendars::findOrCreateWeek(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    const CalendarDate start = payrollWeekStart(date, payrollStartWeekday(context, productionID));
    const auto existing = weeks::weeksStartingAt(context, productionID, midnight(start));
    if (!existing.empty()) return existing.front();
    const ProductionWorkweekDefinition workweek = workweekInForce(context, productionID, start);
    return weeks::createWeek(context, {Uuid::generate(), productionID, midnight(start), workweek.id,
                                       workweek.startWeekday, workweek.startHour, workweek.startMinute});
}

PayrollWeekRebuildSummary ProductionWeekCalendars::rebuild(ModelContext& context, const Uuid& productionID) {
    const auto allWeeks = weeks::weeks(context, productionID);
    std::set<Instant> starts;
    for (const auto& week : allWeeks) {
        if (!starts.insert(week.startDate).second) throw Error(Error::Case::duplicatePeriods);
    }

    const int startWeekday = payrollStartWeekday(context, productionID);
    std::vector<std::pair<Grouped, Instant>> moving;
    for (auto& record : groupedRecords(context, allWeeks)) {
        const Instant target = midnight(payrollWeekStart(record.date, startWeekday));
        if (target != record.week.startDate) moving.emplace_back(std::move(record), target);
    }
    if (moving.empty()) return {};

    // The moved records and the existing weeks that receive them must share one work-week snapshot.
    std::map<Instant, const PayrollWeek*> weekByStart;
    for (const auto& week : allWeeks) weekByStart[week.startDate] = &week;
    std::set<Snapshot> snapshots;
    for (const auto& [record, target] : moving) {
        snapshots.insert(snapshotOf(record.week));
        if (const auto destination = weekByStart.find(target); destination != weekByStart.end()) {
            snapshots.insert(snapshotOf(*destination->second));
        }
    }
    if (snapshots.size() > 1) throw Error(Error::Case::historicalWorkWeek);

    // A week with confirmed Actual Pay may neither lose nor gain records.
    for (const auto& [record, target] : moving) {
        const auto destination = weekByStart.find(target);
        if (weekHasConfirmedPay(context, record.week.id) ||
            (destination != weekByStart.end() && weekHasConfirmedPay(context, destination->second->id))) {
            throw Error(Error::Case::confirmedAuthority);
        }
    }

    PayrollWeekRebuildSummary summary;
    std::map<Instant, Uuid> destinations;
    for (const auto& [start, week] : weekByStart) destinations.emplace(start, week->id);
    std::set<Uuid> sources;
    for (const auto& [record, target] : moving) {
        auto destination = destinations.find(target);
        if (destination == destinations.end()) {
            const PayrollWeek& from = record.week;
            const PayrollWeek created = weeks::createWeek(context, {Uuid::generate(), productionID, target,
                                                                    from.workweekSourceDefinitionID, from.workweekStartWeekday,
                                                                    from.workweekStartHour, from.workweekStartMinute});
            destination = destinations.emplace(target, created.id).first;
            ++summary.createdWeeks;
        }
        if (record.isWorkday) {
            weeks::setWorkdayWeek(context, record.id, destination->second);
        } else {
            weeks::setActivityWeek(context, record.id, destination->second);
        }
        sources.insert(record.week.id);
        ++summary.movedRecords;
    }
    for (const auto& source : sources) {
        if (weeks::workdays(context, source).empty() && weeks::activities(context, source).empty()) {
            weeks::removeWeek(context, source);
            ++summary.removedWeeks;
        }
    }
    return summary;
}

void ProductionWeekCalendars::deleteWeek(ModelContext& context, const Uuid& weekID) {
    if (!weeks::fetchWeek(context, weekID)) throw PayrollWeekError(std::string(deleteFailed));
    weeks::removeWeek(context, weekID);
}

int ProductionWeekCalendars::deleteAllWeeks(ModelContext& context, const Uuid& productionID) {
    const auto all = weeks::weeks(context, productionID);
    for (const auto& week : all) weeks::removeWeek(context, week.id);
    return static_cast<int>(all.size());
}

}  // namespace tessel
