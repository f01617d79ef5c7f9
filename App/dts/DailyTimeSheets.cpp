#include "DailyTimeSheets.hpp"

#include <set>

#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;

std::optional<ProductionEngagement> engagementOf(ModelContext& context, const CrewDailyEntry& entry) {
    if (!entry.engagementID) return std::nullopt;
    return crew_repository::fetchEngagement(context, *entry.engagementID);
}

// The value autofill gives a row's call or wrap, if it has a source.
std::optional<Instant> rowAutofillValue(const Workday& workday, const std::optional<ProductionEngagement>& engagement,
                                        DTSTimeField field) {
    if (!engagement) return std::nullopt;
    if (field == DTSTimeField::call && engagement->regularPrecallDurationSeconds && workday.generalCrewCall) {
        return *workday.generalCrewCall - seconds(*engagement->regularPrecallDurationSeconds);
    }
    if (field == DTSTimeField::wrap && engagement->regularWrapoutDurationSeconds && workday.wrap) {
        return *workday.wrap + seconds(*engagement->regularWrapoutDurationSeconds);
    }
    return std::nullopt;
}

// Refills a row's call and wrap from their sources while they are under autofill. A row is under autofill
// from its creation when its engagement has a regular precall (or wrap-out), even while the shared time is
// still empty; typing, clearing or a missing source takes the field out of autofill, and only "Revert to
// Autofill" brings it back. So a call the user cleared stays cleared when a shared time changes.
void refreshRowAutofill(ModelContext& context, const Workday& workday, CrewDailyEntry& entry) {
    const auto engagement = engagementOf(context, entry);
    const auto refresh = [&](DTSTimeField field, std::optional<Instant>& value, bool autofilled) {
        if (autofilled) value = rowAutofillValue(workday, engagement, field);
    };
    refresh(DTSTimeField::call, entry.callOverride, entry.callOverrideWasAutofilled);
    refresh(DTSTimeField::wrap, entry.wrapOverride, entry.wrapOverrideWasAutofilled);
}

void refreshAllRows(ModelContext& context, const Workday& workday) {
    for (auto entry : weeks::entries(context, workday.id)) {
        const CrewDailyEntry before = entry;
        refreshRowAutofill(context, workday, entry);
        if (entry.callOverride != before.callOverride || entry.wrapOverride != before.wrapOverride ||
            entry.callOverrideWasAutofilled != before.callOverrideWasAutofilled ||
            entry.wrapOverrideWasAutofilled != before.wrapOverrideWasAutofilled) {
            weeks::updateEntry(context, entry);
        }
    }
}

std::int64_t lunchLength(ModelContext& context, const Workday& workday) {
    const auto production = production_repository::fetch(context, DailyTimeSheets::productionOf(context, workday));
    return production ? production->defaultLunchDurationSeconds : 1800;
}

// The engagement under which a crew member works a date: full time, in force, and eligible for a DTS.
std::optional<ProductionEngagement> fullTimeEngagementOn(ModelContext& context, const CrewMember& member, CalendarDate date) {
    std::optional<ProductionEngagement> chosen;
    for (const auto& engagement : crew_repository::engagementsOf(context, member.id)) {
        const bool eligible = !engagement.dtsEligibilityStartsAt || sys_days(*engagement.dtsEligibilityStartsAt) <= sys_days(date);
        if (engagement.appliesOn(date) && eligible && engagement.crewParticipation == CrewParticipation::fullTime) {
            chosen = engagement;  // engagements come in start order; the latest in force wins
        }
    }
    return chosen;
}

// The Official Lunch In that autofill gives: Lunch Out plus the production's lunch length.
std::optional<Instant> lunchInAutofillValue(ModelContext& context, const Workday& workday) {
    if (!workday.officialLunchOut) return std::nullopt;
    return *workday.officialLunchOut + seconds(lunchLength(context, workday));
}

std::string revertLabel(ModelContext& context, const Workday& workday, Instant value) {
    const auto production = production_repository::fetch(context, DailyTimeSheets::productionOf(context, workday));
    const auto display = production ? production->dtsTimeDisplay : DTSTimeDisplay::payrollDecimal;
    return std::string(dts_messages::revertToAutofill) + " (" +
           payroll_decimal_time::formatForDisplay(display, value, workday.calendarDate) + ")";
}

bool activeOn(const CrewMember& member, CalendarDate date) {
    return !member.retiredAt || *member.retiredAt > Instant(sys_days(date));
}

}  // namespace

std::string_view toRawValue(DTSTimeField field) noexcept {
    switch (field) {
        case DTSTimeField::call: return "call";
        case DTSTimeField::lunchOut: return "lunchOut";
        case DTSTimeField::lunchIn: return "lunchIn";
        case DTSTimeField::wrap: return "wrap";
    }
    return {};
}

std::optional<DTSTimeField> dtsTimeFieldFromRawValue(std::string_view raw) noexcept {
    for (auto field : {DTSTimeField::call, DTSTimeField::lunchOut, DTSTimeField::lunchIn, DTSTimeField::wrap}) {
        if (toRawValue(field) == raw) return field;
    }
    return std::nullopt;
}

std::string_view toRawValue(EffectiveTimeSource source) noexcept {
    switch (source) {
        case EffectiveTimeSource::inherited: return "inherited";
        case EffectiveTimeSource::explicitOverride: return "override";
        case EffectiveTimeSource::autofilled: return "autofilled";
    }
    return {};
}

const EffectiveTime& EffectiveRowTimes::operator[](DTSTimeField field) const noexcept {
    switch (field) {
        case DTSTimeField::call: return call;
        case DTSTimeField::lunchOut: return lunchOut;
        case DTSTimeField::lunchIn: return lunchIn;
        case DTSTimeField::wrap: return wrap;
    }
    return call;
}

Uuid DailyTimeSheets::productionOf(ModelContext& context, const Workday& workday) {
    const auto week = weeks::fetchWeek(context, workday.payrollWeekID);
    if (!week) throw DTSWorkflowError("The Payroll Week is not attached to a Production.");
    return week->productionID;
}

std::optional<Workday> DailyTimeSheets::find(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    return weeks::workdayOn(context, productionID, date);
}

Workday DailyTimeSheets::fetch(ModelContext& context, const Uuid& workdayID) {
    if (const auto workday = weeks::fetchWorkday(context, workdayID)) return *workday;
    throw DTSWorkflowError("The DTS could not be found.");
}

CrewDailyEntry DailyTimeSheets::fetchEntry(ModelContext& context, const Uuid& entryID) {
    auto& statement = context.prepare("SELECT workdayID FROM CrewDailyEntry WHERE id = ?1");
    columns::bind(statement, 1, entryID);
    if (statement.executeStep()) {
        const Uuid workdayID = columns::uuid(statement.getColumn(0));
        for (const auto& entry : weeks::entries(context, workdayID)) {
            if (entry.id == entryID) return entry;
        }
    }
    throw DTSWorkflowError("The DTS crew row could not be found.");
}

Workday DailyTimeSheets::create(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    if (find(context, productionID, date)) {
        throw DTSWorkflowError("A DTS already exists for " + calendar_text::formatDate(date) + ".",
                               std::string(dts_messages::createFailedTitle));
    }
    const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, productionID, date);
    Workday workday{Uuid::generate(), week.id, date};
    workday.officialLunchInWasAutofilled = true;  // follows Lunch Out until the user types or clears it
    weeks::createWorkday(context, workday);
    std::set<Uuid> withActivity;
    for (const auto& activity : NonDTSActivities::onDate(context, productionID, date)) {
        if (activity.crewMemberID) withActivity.insert(*activity.crewMemberID);
    }
    for (const auto& member : crew_repository::crewMembers(context, productionID)) {
        // Someone travelling, idle or off that day is recorded by the activity, never also by a row.
        if (!activeOn(member, date) || withActivity.contains(member.id)) continue;
        if (const auto engagement = fullTimeEngagementOn(context, member, date)) addEntry(context, workday, member, *engagement);
    }
    return workday;
}

CrewDailyEntry DailyTimeSheets::addEntry(ModelContext& context, const Workday& workday, const CrewMember& member,
                                         const ProductionEngagement& engagement) {
    CrewDailyEntry entry{Uuid::generate(), workday.id, member.id, engagement.id};
    entry.nonDeductibleBreakfast = defaultNonDeductibleBreakfast(context, productionOf(context, workday));
    entry.displayOrder = member.displayOrder;
    entry.callOverrideWasAutofilled = engagement.regularPrecallDurationSeconds.has_value();
    entry.wrapOverrideWasAutofilled = engagement.regularWrapoutDurationSeconds.has_value();
    refreshRowAutofill(context, workday, entry);
    return weeks::createEntry(context, entry);
}

bool DailyTimeSheets::hasEnteredData(ModelContext& context, const Workday& w) {
    if (w.generalCrewCall || w.officialLunchOut || w.officialLunchIn || w.wrap || w.firstMealGraceWasCalled ||
        w.sharedTravelDurationSeconds) {
        return true;
    }
    const bool defaultNDB = defaultNonDeductibleBreakfast(context, productionOf(context, w));
    for (const auto& table : store_schema::satelliteTables()) {
        if (table.owner == store_schema::SatelliteOwner::workday && satellites::find(context, table, w.id)) return true;
    }
    for (const auto& entry : weeks::entries(context, w.id)) {
        if (entry.callOverride || entry.lunchOutOverride || entry.lunchInOverride || entry.wrapOverride ||
            entry.rulesLocalityOverride || entry.nonDeductibleBreakfast != defaultNDB) {
            return true;
        }
        // DTS Name for Today, mileage, box rental, work mode, Job for Today, rerate: each is the user's entry.
        for (const auto& table : store_schema::satelliteTables()) {
            if (table.owner == store_schema::SatelliteOwner::crewDailyEntry && satellites::find(context, table, entry.id)) return true;
        }
    }
    return false;
}

void DailyTimeSheets::remove(ModelContext& context, const Uuid& workdayID) {
    if (!weeks::fetchWorkday(context, workdayID)) {
        throw DTSWorkflowError(std::string(dts_messages::deleteFailed), std::string(dts_messages::deleteFailedTitle));
    }
    weeks::removeWorkday(context, workdayID);
}

void DailyTimeSheets::setSharedTime(ModelContext& context, const Uuid& workdayID, DTSTimeField field,
                                    std::optional<Instant> value) {
    Workday w = fetch(context, workdayID);
    switch (field) {
        case DTSTimeField::call:
            w.generalCrewCall = value;
            w.generalCrewCallWasAutofilled = false;
            break;
        case DTSTimeField::lunchOut:
            w.officialLunchOut = value;
            w.officialLunchOutWasAutofilled = false;
            // Lunch In follows while it is under autofill; one the user typed or cleared stays as it is.
            if (w.officialLunchInWasAutofilled) w.officialLunchIn = lunchInAutofillValue(context, w);
            break;
        case DTSTimeField::lunchIn:
            w.officialLunchIn = value;
            w.officialLunchInWasAutofilled = false;
            break;
        case DTSTimeField::wrap:
            w.wrap = value;
            break;
    }
    weeks::updateWorkday(context, w);
    refreshAllRows(context, w);
}

void DailyTimeSheets::revertSharedToAutofill(ModelContext& context, const Uuid& workdayID, DTSTimeField field) {
    Workday w = fetch(context, workdayID);
    const auto filled = field == DTSTimeField::lunchIn ? lunchInAutofillValue(context, w) : std::nullopt;
    if (!filled) throw DTSWorkflowError(std::string(dts_messages::nothingToRevert));
    w.officialLunchIn = filled;
    w.officialLunchInWasAutofilled = true;
    weeks::updateWorkday(context, w);
}

std::optional<std::string> DailyTimeSheets::sharedRevertToAutofillLabel(ModelContext& context, const Workday& w,
                                                                      DTSTimeField field) {
    if (field != DTSTimeField::lunchIn) return std::nullopt;
    const auto filled = lunchInAutofillValue(context, w);
    if (!filled || (w.officialLunchInWasAutofilled && w.officialLunchIn == filled)) return std::nullopt;
    return revertLabel(context, w, *filled);
}

void DailyTimeSheets::setGraceCalled(ModelContext& context, const Uuid& workdayID, bool called) {
    Workday w = fetch(context, workdayID);
    w.firstMealGraceWasCalled = called;
    weeks::updateWorkday(context, w);
}

void DailyTimeSheets::setSharedTravel(ModelContext& context, const Uuid& workdayID, std::optional<std::int64_t> seconds) {
    Workday w = fetch(context, workdayID);
    w.sharedTravelDurationSeconds = seconds;
    weeks::updateWorkday(context, w);
}

void DailyTimeSheets::setDepartmentMileage(ModelContext& context, const Uuid& workdayID, const std::optional<Decimal>& miles) {
    const auto& table = satelliteTable("WorkdayMileageConfiguration");
    if (!miles) return satellites::removeAll(context, table, workdayID);
    if (miles->isNaN() || miles->isNegative()) throw DTSWorkflowError(std::string(dts_messages::mileageInvalid));
    satellites::write(context, table, workdayID, {{"miles", miles->toString()}});
}

std::optional<Decimal> DailyTimeSheets::departmentMileage(ModelContext& context, const Uuid& workdayID) {
    const auto miles = satellites::text(satellites::find(context, satelliteTable("WorkdayMileageConfiguration"), workdayID), "miles");
    return miles ? Decimal::parse(*miles) : std::nullopt;
}

void DailyTimeSheets::setWorkLocation(ModelContext& context, const Uuid& workdayID, MealWorkLocation location, Instant now) {
    satellites::write(context, satelliteTable("WorkdayMealLocationConfiguration"), workdayID,
                      {{"workLocationRawValue", std::string(toRawValue(location))},
                       {"modifiedAt", calendar_text::formatInstant(now)}});
}

std::optional<MealWorkLocation> DailyTimeSheets::workLocation(ModelContext& context, const Uuid& workdayID) {
    const auto raw = satellites::text(satellites::find(context, satelliteTable("WorkdayMealLocationConfiguration"), workdayID),
                                      "workLocationRawValue");
    return raw ? fromRawValue<MealWorkLocation>(*raw) : std::nullopt;
}

void DailyTimeSheets::setWorkState(ModelContext& context, const Uuid& workdayID, const std::string& workState) {
    fetch(context, workdayID);
    satellites::write(context, satelliteTable("WorkdayDTSExportConfiguration"), workdayID, {{"workStateOverride", workState}});
}

void DailyTimeSheets::setNotes(ModelContext& context, const Uuid& workdayID, const std::string& notes) {
    fetch(context, workdayID);
    satellites::write(context, satelliteTable("WorkdayDTSNotes"), workdayID, {{"text", notes}});
}

std::string DailyTimeSheets::workState(ModelContext& context, const Uuid& workdayID) {
    return satellites::text(satellites::find(context, satelliteTable("WorkdayDTSExportConfiguration"), workdayID), "workStateOverride")
        .value_or("");
}

std::string DailyTimeSheets::notes(ModelContext& context, const Uuid& workdayID) {
    return satellites::text(satellites::find(context, satelliteTable("WorkdayDTSNotes"), workdayID), "text").value_or("");
}

void DailyTimeSheets::acceptSharedSuggestion(ModelContext& context, const Uuid& workdayID, DTSTimeField field, Instant value) {
    setSharedTime(context, workdayID, field, value);
    Workday w = fetch(context, workdayID);
    if (field == DTSTimeField::call) w.generalCrewCallWasAutofilled = true;
    if (field == DTSTimeField::lunchOut) w.officialLunchOutWasAutofilled = true;
    if (field == DTSTimeField::lunchIn) w.officialLunchInWasAutofilled = true;
    weeks::updateWorkday(context, w);
}

void DailyTimeSheets::acceptRowSuggestion(ModelContext& context, const Uuid& entryID, DTSTimeField field, Instant value) {
    setRowTime(context, entryID, field, value);
    CrewDailyEntry e = fetchEntry(context, entryID);
    if (field == DTSTimeField::call) e.callOverrideWasAutofilled = true;
    if (field == DTSTimeField::wrap) e.wrapOverrideWasAutofilled = true;
    weeks::updateEntry(context, e);
}

void DailyTimeSheets::setRowMileage(ModelContext& context, const Uuid& entryID, const std::optional<Decimal>& miles) {
    fetchEntry(context, entryID);
    const auto& table = satelliteTable("CrewDailyMileageEntry");
    if (!miles) return satellites::removeAll(context, table, entryID);
    if (miles->isNaN() || miles->isNegative()) throw DTSWorkflowError(std::string(dts_messages::mileageInvalid));
    satellites::write(context, table, entryID, {{"miles", miles->toString()}});
}

std::optional<Decimal> DailyTimeSheets::rowMileage(ModelContext& context, const Uuid& entryID) {
    const auto miles = satellites::text(satellites::find(context, satelliteTable("CrewDailyMileageEntry"), entryID), "miles");
    return miles ? Decimal::parse(*miles) : std::nullopt;
}

void DailyTimeSheets::setBoxRental(ModelContext& context, const Uuid& entryID, bool applies) {
    fetchEntry(context, entryID);
    satellites::write(context, satelliteTable("CrewDailyBoxRentalSelection"), entryID, {{"applies", std::int64_t{applies}}});
}

bool DailyTimeSheets::boxRental(ModelContext& context, const Uuid& entryID) {
    return satellites::integer(satellites::find(context, satelliteTable("CrewDailyBoxRentalSelection"), entryID), "applies").value_or(0) != 0;
}

void DailyTimeSheets::setRowLocality(ModelContext& context, const Uuid& entryID, std::optional<RulesLocality> locality) {
    CrewDailyEntry e = fetchEntry(context, entryID);
    e.rulesLocalityOverride = locality;
    weeks::updateEntry(context, e);
}

void DailyTimeSheets::setRowTime(ModelContext& context, const Uuid& entryID, DTSTimeField field, std::optional<Instant> value) {
    CrewDailyEntry e = fetchEntry(context, entryID);
    switch (field) {
        case DTSTimeField::call:
            e.callOverride = value;
            e.callOverrideWasAutofilled = false;
            break;
        case DTSTimeField::lunchOut: e.lunchOutOverride = value; break;
        case DTSTimeField::lunchIn: e.lunchInOverride = value; break;
        case DTSTimeField::wrap:
            e.wrapOverride = value;
            e.wrapOverrideWasAutofilled = false;
            break;
    }
    weeks::updateEntry(context, e);
}

void DailyTimeSheets::revertRowToAutofill(ModelContext& context, const Uuid& entryID, DTSTimeField field) {
    CrewDailyEntry e = fetchEntry(context, entryID);
    const auto filled = rowAutofillValue(fetch(context, e.workdayID), engagementOf(context, e), field);
    if (!filled) throw DTSWorkflowError(std::string(dts_messages::nothingToRevert));
    if (field == DTSTimeField::call) {
        e.callOverride = filled;
        e.callOverrideWasAutofilled = true;
    } else {
        e.wrapOverride = filled;
        e.wrapOverrideWasAutofilled = true;
    }
    weeks::updateEntry(context, e);
}

// Offered exactly when a revert would succeed and change something: the autofill value exists and the
// field does not already hold it under autofill.
std::optional<std::string> DailyTimeSheets::revertToAutofillLabel(ModelContext& context, const Uuid& entryID, DTSTimeField field) {
    if (field != DTSTimeField::call && field != DTSTimeField::wrap) return std::nullopt;
    const CrewDailyEntry e = fetchEntry(context, entryID);
    const Workday workday = fetch(context, e.workdayID);
    const auto filled = rowAutofillValue(workday, engagementOf(context, e), field);
    if (!filled) return std::nullopt;
    const bool call = field == DTSTimeField::call;
    if ((call ? e.callOverrideWasAutofilled : e.wrapOverrideWasAutofilled) && (call ? e.callOverride : e.wrapOverride) == filled) {
        return std::nullopt;
    }
    return revertLabel(context, workday, *filled);
}

void DailyTimeSheets::setNonDeductibleBreakfast(ModelContext& context, const Uuid& entryID, bool given) {
    CrewDailyEntry e = fetchEntry(context, entryID);
    e.nonDeductibleBreakfast = given;
    weeks::updateEntry(context, e);
}

void DailyTimeSheets::setWorkMode(ModelContext& context, const Uuid& entryID, CrewDailyWorkMode mode) {
    fetchEntry(context, entryID);
    satellites::write(context, satelliteTable("CrewDailyWorkModeConfiguration"), entryID,
                      {{"modeRawValue", std::string(toRawValue(mode))}});
}

CrewDailyWorkMode DailyTimeSheets::workMode(ModelContext& context, const Uuid& entryID) {
    const auto raw = satellites::text(satellites::find(context, satelliteTable("CrewDailyWorkModeConfiguration"), entryID), "modeRawValue");
    return fromRawValue<CrewDailyWorkMode>(raw.value_or("")).value_or(CrewDailyWorkMode::timed);
}

EffectiveRowTimes DailyTimeSheets::effectiveTimes(const Workday& w, const CrewDailyEntry& e) {
    const auto effective = [](const std::optional<Instant>& own, bool autofilled, const std::optional<Instant>& shared) {
        if (!own) return EffectiveTime{shared, EffectiveTimeSource::inherited};
        return EffectiveTime{own, autofilled ? EffectiveTimeSource::autofilled : EffectiveTimeSource::explicitOverride};
    };
    return {effective(e.callOverride, e.callOverrideWasAutofilled, w.generalCrewCall),
            effective(e.lunchOutOverride, false, w.officialLunchOut), effective(e.lunchInOverride, false, w.officialLunchIn),
            effective(e.wrapOverride, e.wrapOverrideWasAutofilled, w.wrap)};
}

std::optional<std::string> DailyTimeSheets::unusualMealAdvisory(const std::optional<Instant>& lunchOut,
                                                               const std::optional<Instant>& lunchIn) {
    if (!lunchOut || !lunchIn || *lunchIn <= *lunchOut) return std::nullopt;
    const auto length = (*lunchIn - *lunchOut).count();
    if (length == 1800 || length == 3600) return std::nullopt;
    return "Unusual meal length: " + payroll_decimal_time::formatDuration(length) +
           " hours. Most meal periods are 0.5 or 1.0 hours. Check Lunch Out and Lunch In.";
}

bool DailyTimeSheets::defaultNonDeductibleBreakfast(ModelContext& context, const Uuid& productionID) {
    const auto fields = satellites::find(context, satelliteTable("ProductionDTSWorkflowConfiguration"), productionID);
    return satellites::integer(fields, "defaultNonDeductibleBreakfast").value_or(0) != 0;
}

void DailyTimeSheets::setDefaultNonDeductibleBreakfast(ModelContext& context, const Uuid& productionID, bool given, Instant now) {
    const auto& table = satelliteTable("ProductionDTSWorkflowConfiguration");
    const std::string stamp = calendar_text::formatInstant(now);
    StoreFields fields{{"defaultNonDeductibleBreakfast", std::int64_t{given}}, {"modifiedAt", stamp}};
    if (!satellites::find(context, table, productionID)) fields.emplace_back("createdAt", stamp);
    satellites::write(context, table, productionID, fields);
}

}  // namespace tessel
