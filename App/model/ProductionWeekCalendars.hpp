#pragma once

#include <optional>
#include <string_view>

#include "App/model/ModelContext.hpp"
#include "App/model/PersistenceModels.hpp"
#include "PayrollDomain/DomainError.hpp"

namespace tessel {

enum class PayrollWeekRebuildErrorCase { confirmedAuthority, duplicatePeriods, historicalWorkWeek };

class PayrollWeekRebuildError : public CaseError<PayrollWeekRebuildErrorCase> {
public:
    using Case = PayrollWeekRebuildErrorCase;
    explicit PayrollWeekRebuildError(Case errorCase);
};

// A week operation that could not be carried out, with its sentence.
class PayrollWeekError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct PayrollWeekRebuildSummary {
    int movedRecords = 0;
    int createdWeeks = 0;
    int removedWeeks = 0;  // weeks the rebuild emptied are removed
};

// The payroll weeks of a production. The payroll week (pay period) begins on the production's "Payroll
// Week starts on" weekday; the contract's work week is a separate, dated definition that each payroll
// week keeps a copy of, so that later edits never move existing weeks. All dates are of the one UTC
// calendar, so a date is the same day on every machine.
class ProductionWeekCalendars {
public:
    using RebuildError = PayrollWeekRebuildError;

    static constexpr std::string_view startWeekdayChangeNote =
        "Applies to new Payroll Weeks. Existing periods and confirmed pay stubs stay unchanged.";
    static constexpr std::string_view rebuildExplanation =
        "Use the current Payroll Week start day to regroup existing dates. Entered DTS data, crew rows, and Non-DTS "
        "Activity will be preserved. Repairs affecting confirmed pay stubs are refused.";
    static constexpr std::string_view duplicateStartDateLabel = "Duplicate start date";
    static constexpr std::string_view deleteFailed = "The payroll week could not be deleted.";
    static constexpr std::string_view weekWithoutProduction = "The Payroll Week is not attached to a Production.";

    // 1 = Sunday … 7 = Saturday.
    static int weekdayOf(CalendarDate date);
    // The latest day on or before the date whose weekday is the start weekday.
    static CalendarDate payrollWeekStart(CalendarDate date, int startWeekday);

    // The production's payroll start weekday (Monday when it has none stored).
    static int payrollStartWeekday(ModelContext& context, const Uuid& productionID);
    // Only weeks created from now on use the new weekday.
    static void setPayrollStartWeekday(ModelContext& context, const Uuid& productionID, int weekday);

    // The definition marked current, else the latest in force on the date; one is created (Monday,
    // midnight) for a production that has none.
    static ProductionWorkweekDefinition workweekInForce(ModelContext& context, const Uuid& productionID, CalendarDate date);

    // The payroll week holding the date, created with the work-week snapshot in force when there is none.
    static PayrollWeek findOrCreateWeek(ModelContext& context, const Uuid& productionID, CalendarDate date);

    // Regroups every DTS and activity into the week the current start weekday gives its date.
    // Throws RebuildError, with nothing changed, in the three refused situations.
    static PayrollWeekRebuildSummary rebuild(ModelContext& context, const Uuid& productionID);

    // Deletes the week with its DTSes, crew rows and activities.
    static void deleteWeek(ModelContext& context, const Uuid& weekID);
    // Deletes every payroll week, DTS, crew row and activity of the production; crew, engagements and
    // rates stay. Returns how many weeks were deleted.
    static int deleteAllWeeks(ModelContext& context, const Uuid& productionID);
};

}  // namespace tessel
