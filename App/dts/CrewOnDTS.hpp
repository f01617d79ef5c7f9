#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/dts/DailyTimeSheets.hpp"

namespace tessel {

namespace crew_on_dts_messages {
inline constexpr std::string_view dayplayerLabel = "Dayplayer \u2022 Today";
inline constexpr std::string_view addDayplayerFailed = "Couldn\u2019t Add Dayplayer";
inline constexpr std::string_view dayplayerRowUnresolved = "The Dayplayer DTS row could not be resolved.";
inline constexpr std::string_view noAvailableDayplayers = "No Available Dayplayers";
inline constexpr std::string_view emptyDTSName = "Enter a DTS Name.";
inline constexpr std::string_view emptyRerateWording = "Enter DTS rerate wording.";
inline constexpr std::string_view missingJobPosition = "A Job for Today references a missing Production Position.";
inline constexpr std::string_view missingReratePosition = "The position paid for this rerate could not be found.";
inline constexpr std::string_view orderNotSaved = "The DTS crew order could not be saved.";
inline constexpr std::string_view removeRowTitle = "Remove Crew Row from This DTS?";
inline constexpr std::string_view removeRowExplanation =
    "This removes only this dated DTS row. The crew member remains on the Production and can appear on future DTS records.";
inline constexpr std::string_view removeRowAction = "Remove from This DTS";
// The data-integrity findings of a DTS's rows and of the settings kept beside them.
inline constexpr std::string_view rowWithoutEngagement = "This DTS crew row is not attached to a Production engagement.";
inline constexpr std::string_view jobForMissingRow = "A Job for Today references a missing DTS crew row.";
inline constexpr std::string_view invalidJobSnapshot = "A Job for Today Position snapshot is invalid.";
inline constexpr std::string_view titleForMissingRow = "A DTS Name for Today references a missing DTS crew row.";
inline constexpr std::string_view emptyTitle = "A DTS Name for Today is empty.";
inline constexpr std::string_view invalidClassificationSnapshot = "Classification for Today has an invalid snapshot.";
// Why a position that would otherwise be removed is kept.
inline constexpr std::string_view keptForJobHistory = "Kept because it is used by Job for Today history.";
inline constexpr std::string_view keptForRerateHistory = "Kept because it is used by DTS rerate history.";
inline constexpr std::string_view classificationNote =
    "Classification for Today controls payroll. DTS Name for Today is the label shown on today's DTS.";
}  // namespace crew_on_dts_messages

// Who is on a DTS and in what capacity for that day.
class CrewOnDTS {
public:
    // Adds a row for a crew member (full time or dayplayer) under the engagement in force on the DTS date,
    // with the production's default NDB and the row autofill. Refuses a second row for one person.
    static CrewDailyEntry addRow(ModelContext& context, const Uuid& workdayID, const Uuid& crewMemberID);
    // The production's dayplayers with an engagement in force on the date who are not on the DTS yet.
    static std::vector<CrewMember> availableDayplayers(ModelContext& context, const Uuid& workdayID);
    static bool isDayplayerRow(ModelContext& context, const CrewDailyEntry& entry);

    // Job for Today: the production position worked today, with a snapshot of it.
    static void setJobForToday(ModelContext& context, const Uuid& entryID, const Uuid& productionPositionID);
    // A rerate to a saved position, worded on the DTS by its display title.
    static void setRerate(ModelContext& context, const Uuid& entryID, const Uuid& positionPresetID,
                          const std::string& displayTitle, const std::string& kindRawValue);
    // The row is paid in its engagement's position again.
    static void clearJobForToday(ModelContext& context, const Uuid& entryID);
    static void clearRerate(ModelContext& context, const Uuid& entryID);
    static void setDTSNameForToday(ModelContext& context, const Uuid& entryID, const std::string& name);
    static std::optional<std::string> dtsNameForToday(ModelContext& context, const Uuid& entryID);

    // Removes only this row with its satellites; the crew member stays on the production.
    static void removeRow(ModelContext& context, const Uuid& entryID);
    // The data-integrity findings of one DTS's rows, each with the crew member it concerns (empty when the
    // row names nobody): a row without an engagement, an empty DTS Name for Today, a Job for Today whose
    // position is gone or whose snapshot cannot be read.
    struct IntegrityFinding {
        std::string crewMember;
        std::string text;
    };
    static std::vector<IntegrityFinding> integrityFindings(ModelContext& context, const Uuid& workdayID);
    // Job for Today and DTS Name for Today settings left behind by rows that no longer exist, store-wide.
    static std::vector<std::string> orphanedRowSettings(ModelContext& context);
    // Why a production position (Job for Today) or a saved position (rerate) must be kept: nothing when
    // no DTS history uses it.
    static std::optional<std::string> positionKeptReason(ModelContext& context, const Uuid& positionID);

    // Writes the rows' order; the list must name every row of the DTS exactly once.
    static void reorderRows(ModelContext& context, const Uuid& workdayID, const std::vector<Uuid>& orderedEntryIDs);
};

}  // namespace tessel
