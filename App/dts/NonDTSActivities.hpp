#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "App/dts/DailyTimeSheets.hpp"
#include "PayrollDomain/DomainError.hpp"

namespace tessel {

enum class NonDTSActivityErrorCase {
    noCrewSelected,
    invalidTravelDuration,
    idleCompensationUnavailable,
    alreadyOnDTS,
    alreadyHasActivity,
};

class NonDTSActivityError : public CaseError<NonDTSActivityErrorCase> {
public:
    using Case = NonDTSActivityErrorCase;
    NonDTSActivityError(Case errorCase, const std::string& personName = "");
};

namespace activity_messages {
inline constexpr std::string_view alreadyOnDTSOption = "Already on this date\u2019s DTS";
inline constexpr std::string_view removeOneTitle = "Remove Non-DTS Activity?";
inline constexpr std::string_view removeOneExplanation =
    "Only this activity record will be removed. Crew membership and DTS history will not change.";
inline constexpr std::string_view removeDayTitle = "Remove All Activity for This Date?";
inline constexpr std::string_view removeDayExplanation =
    "This removes every Non-DTS Activity record for the date. DTS records, crew, and the Payroll Week are unchanged.";
}  // namespace activity_messages

// What the activity editor saves.
struct NonDTSActivityDraft {
    CalendarDate date;
    PayrollDayActivityKind kind = PayrollDayActivityKind::travel;
    bool sharedTravelTime = true;          // "Shared Travel Time", else "Individual Travel Times"
    std::string sharedTravelText;
    std::map<Uuid, std::string> individualTravelTexts;  // by engagement id
    std::vector<Uuid> selectedEngagementIDs;
    std::optional<Uuid> existingActivityID;             // editing one activity in place
};

// A person the editor may offer, with the reason they cannot be chosen, if any.
struct NonDTSActivityOption {
    ProductionEngagement engagement;
    CrewMember crewMember;
    std::optional<std::string> unavailableReason;
};

// Days paid or recorded without a DTS row: travel, idle, personal / unavailable, holiday. A person has at
// most one activity per date, and never an activity and a DTS row on the same date.
class NonDTSActivities {
public:
    using Error = NonDTSActivityError;

    // Everyone with an engagement in force on the date, in crew order.
    static std::vector<NonDTSActivityOption> options(ModelContext& context, const Uuid& productionID, CalendarDate date);
    // Checks every selected person first and writes all of them or none.
    static std::vector<PayrollDayActivity> save(ModelContext& context, const Uuid& productionID, const NonDTSActivityDraft& draft);
    static std::vector<PayrollDayActivity> onDate(ModelContext& context, const Uuid& productionID, CalendarDate date);
    static void remove(ModelContext& context, const Uuid& activityID);
    // Every activity of the date; DTS records, crew and the week are unchanged.
    static int removeAllOnDate(ModelContext& context, const Uuid& productionID, CalendarDate date);
};

}  // namespace tessel
