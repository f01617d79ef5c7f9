#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/PersistenceModels.hpp"

namespace tessel {

// A DTS action Tessel refuses or could not carry out: an optional alert title and its sentence.
class DTSWorkflowError : public std::runtime_error {
public:
    explicit DTSWorkflowError(const std::string& message, std::string title = "")
        : std::runtime_error(message), title_(std::move(title)) {}
    const std::string& title() const noexcept { return title_; }

private:
    std::string title_;
};

enum class DTSTimeField { call, lunchOut, lunchIn, wrap };
std::string_view toRawValue(DTSTimeField field) noexcept;
std::optional<DTSTimeField> dtsTimeFieldFromRawValue(std::string_view raw) noexcept;

// Where a row's effective time comes from.
enum class EffectiveTimeSource { inherited, explicitOverride, autofilled };
std::string_view toRawValue(EffectiveTimeSource source) noexcept;

struct EffectiveTime {
    std::optional<Instant> value;
    EffectiveTimeSource source = EffectiveTimeSource::inherited;
};

struct EffectiveRowTimes {
    EffectiveTime call, lunchOut, lunchIn, wrap;
    const EffectiveTime& operator[](DTSTimeField field) const noexcept;
};

namespace dts_messages {
inline constexpr std::string_view createFailedTitle = "Couldn\u2019t Create Daily Time Sheet";
inline constexpr std::string_view createFailed = "The Daily Time Sheet could not be created.";
inline constexpr std::string_view deleteFailedTitle = "Couldn\u2019t Delete DTS";
inline constexpr std::string_view deleteFailed = "The DTS could not be deleted.";
inline constexpr std::string_view deleteConfirmation =
    "This DTS contains entered shared or crew-specific data. Deleting it also deletes its crew-entry rows.";
inline constexpr std::string_view deleting = "Removing this DTS and its dated supporting records\u2026";
inline constexpr std::string_view noCrew = "No Crew on this DTS";
inline constexpr std::string_view unusualMealTitle = "Unusual meal length";
inline constexpr std::string_view workLocationRule =
    "If any location work occurs during the day, use Location for the entire workday.";
inline constexpr std::string_view defaultNDBNote =
    "Initializes newly created crew rows only. Existing DTS facts are never rewritten.";
inline constexpr std::string_view revertToAutofill = "Revert to Autofill";
inline constexpr std::string_view nothingToRevert = "This time has no autofill value to revert to.";
inline constexpr std::string_view mileageInvalid = "Enter mileage as a number of miles, such as 12.5.";
}  // namespace dts_messages

// One DTS: the times shared by the crew and each row's own facts, with the program's autofill.
// A row's call is filled from General Crew Call less the engagement's regular precall and its wrap from
// Wrap plus the regular wrap-out; Official Lunch In is filled from Lunch Out plus the production's lunch
// length. Autofilled values follow their source when it changes; a typed value is never rewritten.
class DailyTimeSheets {
public:
    static std::optional<Workday> find(ModelContext& context, const Uuid& productionID, CalendarDate date);
    static Workday fetch(ModelContext& context, const Uuid& workdayID);

    // Creates the DTS of the date in its payroll week (created when needed), with a row for every active
    // full-time crew member whose engagement is in force and who may appear on a DTS from that date, in
    // crew order. Refuses a second DTS for a date.
    // People with a non-DTS activity on the date get no row.
    static Workday create(ModelContext& context, const Uuid& productionID, CalendarDate date);
    // A row for the crew member under the engagement: the production's default NDB, crew order, and the
    // call and wrap under autofill when the engagement has a regular precall or wrap-out.
    static CrewDailyEntry addEntry(ModelContext& context, const Workday& workday, const CrewMember& member,
                                   const ProductionEngagement& engagement);
    // Whether deleting it needs the user's confirmation: any shared fact, or any row fact that differs
    // from what a new row starts with.
    static bool hasEnteredData(ModelContext& context, const Workday& workday);
    // Deletes the DTS with its rows and every satellite of both.
    static void remove(ModelContext& context, const Uuid& workdayID);

    // A typed shared time (or its clearing): stored with its flag cleared; rows following it by autofill
    // follow the new value.
    static void setSharedTime(ModelContext& context, const Uuid& workdayID, DTSTimeField field, std::optional<Instant> value);
    // Official Lunch In back to Lunch Out plus the production's lunch length, flagged as autofilled.
    static void revertSharedToAutofill(ModelContext& context, const Uuid& workdayID, DTSTimeField field);
    // "Revert to Autofill (13.5)" for Official Lunch In, in the production's time notation, exactly when the
    // revert would put a different value or flag back.
    static std::optional<std::string> sharedRevertToAutofillLabel(ModelContext& context, const Workday& workday, DTSTimeField field);
    static void setGraceCalled(ModelContext& context, const Uuid& workdayID, bool called);
    static void setSharedTravel(ModelContext& context, const Uuid& workdayID, std::optional<std::int64_t> seconds);
    static void setDepartmentMileage(ModelContext& context, const Uuid& workdayID, const std::optional<Decimal>& miles);
    static void setWorkLocation(ModelContext& context, const Uuid& workdayID, MealWorkLocation location, Instant now);
    static std::optional<MealWorkLocation> workLocation(ModelContext& context, const Uuid& workdayID);
    // Work State on the exported form (empty: the production's default) and the DTS notes.
    static void setWorkState(ModelContext& context, const Uuid& workdayID, const std::string& workState);
    static void setNotes(ModelContext& context, const Uuid& workdayID, const std::string& notes);
    static std::string workState(ModelContext& context, const Uuid& workdayID);
    static std::string notes(ModelContext& context, const Uuid& workdayID);
    // A suggested value the user accepted: stored with its autofilled flag set.
    static void acceptSharedSuggestion(ModelContext& context, const Uuid& workdayID, DTSTimeField field, Instant value);
    static void acceptRowSuggestion(ModelContext& context, const Uuid& entryID, DTSTimeField field, Instant value);
    static std::optional<Decimal> departmentMileage(ModelContext& context, const Uuid& workdayID);

    // A typed row time (or its clearing, after which the row follows the shared time again).
    static void setRowTime(ModelContext& context, const Uuid& entryID, DTSTimeField field, std::optional<Instant> value);
    static void revertRowToAutofill(ModelContext& context, const Uuid& entryID, DTSTimeField field);
    // "Revert to Autofill (6.5)" in the production's time notation, exactly when revertRowToAutofill would
    // succeed and change something; nothing otherwise.
    static std::optional<std::string> revertToAutofillLabel(ModelContext& context, const Uuid& entryID, DTSTimeField field);
    static void setNonDeductibleBreakfast(ModelContext& context, const Uuid& entryID, bool given);
    static void setWorkMode(ModelContext& context, const Uuid& entryID, CrewDailyWorkMode mode);
    static CrewDailyWorkMode workMode(ModelContext& context, const Uuid& entryID);  // timed when never set
    // The row's own miles; nothing means "Use Department Mileage".
    static void setRowMileage(ModelContext& context, const Uuid& entryID, const std::optional<Decimal>& miles);
    static std::optional<Decimal> rowMileage(ModelContext& context, const Uuid& entryID);
    // "Pay Box / Kit Rental for this DTS".
    static void setBoxRental(ModelContext& context, const Uuid& entryID, bool applies);
    static bool boxRental(ModelContext& context, const Uuid& entryID);
    // The rules locality for this day only; nothing means the engagement's.
    static void setRowLocality(ModelContext& context, const Uuid& entryID, std::optional<RulesLocality> locality);

    static CrewDailyEntry fetchEntry(ModelContext& context, const Uuid& entryID);
    static EffectiveRowTimes effectiveTimes(const Workday& workday, const CrewDailyEntry& entry);

    // The advisory for a meal of unusual length (anything but 0.5 and 1.0 hours); never a refusal.
    static std::optional<std::string> unusualMealAdvisory(const std::optional<Instant>& lunchOut,
                                                          const std::optional<Instant>& lunchIn);

    // The default NDB of new rows ("Default NDB for new daily entries").
    static bool defaultNonDeductibleBreakfast(ModelContext& context, const Uuid& productionID);
    static void setDefaultNonDeductibleBreakfast(ModelContext& context, const Uuid& productionID, bool given, Instant now);

    // The production that owns the DTS.
    static Uuid productionOf(ModelContext& context, const Workday& workday);
};

}  // namespace tessel
