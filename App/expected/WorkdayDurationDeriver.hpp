#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "App/model/PersistenceModels.hpp"
#include "PayrollDomain/DailyMinimumGuarantee.hpp"
#include "PayrollDomain/PayBandAllocation.hpp"

namespace tessel {

// One crew member's DTS day as the calculation sees it: the effective times (the row's own, else the
// shared ones) and the facts that shape its pay.
struct DTSCalculationInput {
    Uuid workdayID;
    CalendarDate calendarDate;
    std::optional<Uuid> crewMemberID{};
    std::optional<Uuid> engagementID{};
    std::optional<Instant> call{};
    std::optional<Instant> lunchOut{};
    std::optional<Instant> lunchIn{};
    std::optional<Instant> wrap{};
    std::optional<RulesLocality> rulesLocalityOverride{};
    std::optional<Instant> generalCrewCall{};
    std::optional<Instant> officialLunchOut{};
    bool firstMealGraceWasCalled = false;
    bool nonDeductibleBreakfast = false;
    CrewDailyWorkMode workMode = CrewDailyWorkMode::timed;
    bool operator==(const DTSCalculationInput&) const = default;
};

enum class DTSTimelineEventKind { call, lunchOut, lunchIn, wrap };
// "Call", "Lunch Out", "Lunch In", "Wrap".
std::string_view toRawValue(DTSTimelineEventKind kind) noexcept;

struct DTSTimelineValidationFailure {
    enum class Case { notAfter, callOutsideShootDay };
    Case kind = Case::notAfter;
    DTSTimelineEventKind event = DTSTimelineEventKind::call;
    DTSTimelineEventKind prior = DTSTimelineEventKind::call;
    bool operator==(const DTSTimelineValidationFailure&) const = default;
};

struct WorkdayIncompleteReason {
    enum class Case { invalidTimeline, missingCall, missingWrap, missingLunchOut, missingLunchIn, invalidMeal, invalidDuration };
    Case kind = Case::missingCall;
    std::optional<DTSTimelineValidationFailure> timeline;  // invalidTimeline
    bool operator==(const WorkdayIncompleteReason&) const = default;
};

std::string_view toRawValue(WorkdayIncompleteReason::Case kind) noexcept;
// The words shown beside the day: "Lunch In must be later than Lunch Out.", "Wrap is missing", …
std::string description(const WorkdayIncompleteReason& reason);

struct DerivedWorkdayDurations {
    WorkDuration elapsed;
    WorkDuration worked;
    WorkDuration deductibleMeal;
    PayBandAllocationInput allocationInput;
};

// Turns a day's times into the durations and timeline the calculation core consumes, or says why it
// cannot. A timed day with neither Lunch Out nor Lunch In is a day without a meal; a Worked or Prep day
// with no times at all is a confirmed day with no recorded work.
class WorkdayDurationDeriver {
public:
    using IncompleteReason = WorkdayIncompleteReason;
    static std::variant<DerivedWorkdayDurations, IncompleteReason> derive(const DTSCalculationInput& input);
    // A confirmed Worked or Prep day receives its daily minimum even without recorded work.
    static DailyMinimumGuaranteeEligibility eligibility(CrewDailyWorkMode mode) noexcept;
};

}  // namespace tessel
