#pragma once

#include <optional>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/PersistenceModels.hpp"

namespace tessel::payroll_week_repository {

PayrollWeek createWeek(ModelContext& context, const PayrollWeek& week);
std::optional<PayrollWeek> fetchWeek(ModelContext& context, const Uuid& id);
std::vector<PayrollWeek> weeks(ModelContext& context, const Uuid& productionID);  // by start date
std::vector<PayrollWeek> weeksStartingAt(ModelContext& context, const Uuid& productionID, Instant startDate);
// Deletes the week with its DTSes, their crew rows and its activities, satellites included.
void removeWeek(ModelContext& context, const Uuid& id);

Workday createWorkday(ModelContext& context, const Workday& workday);
std::optional<Workday> fetchWorkday(ModelContext& context, const Uuid& id);
std::vector<Workday> workdays(ModelContext& context, const Uuid& payrollWeekID);  // by date
std::optional<Workday> workdayOn(ModelContext& context, const Uuid& productionID, CalendarDate date);
void updateWorkday(ModelContext& context, const Workday& workday);
void setWorkdayWeek(ModelContext& context, const Uuid& workdayID, const Uuid& payrollWeekID);
void removeWorkday(ModelContext& context, const Uuid& id);

CrewDailyEntry createEntry(ModelContext& context, const CrewDailyEntry& entry);
std::vector<CrewDailyEntry> entries(ModelContext& context, const Uuid& workdayID);  // in row order
void updateEntry(ModelContext& context, const CrewDailyEntry& entry);
void removeEntry(ModelContext& context, const Uuid& id);

PayrollDayActivity createActivity(ModelContext& context, const PayrollDayActivity& activity);
std::vector<PayrollDayActivity> activities(ModelContext& context, const Uuid& payrollWeekID);  // by date
void setActivityWeek(ModelContext& context, const Uuid& activityID, const Uuid& payrollWeekID);
void removeActivity(ModelContext& context, const Uuid& id);

}  // namespace tessel::payroll_week_repository
