#pragma once

#include "App/rules/RulesetDrafts.hpp"
#include "PayrollDomain/MealPeriod.hpp"
#include "PayrollDomain/WeeklyMealPenalty.hpp"

namespace tessel {

namespace meal_rules_messages {
inline constexpr std::string_view incomplete = "Meal Penalty Rules are incomplete.";
inline constexpr std::string_view invalid = "Meal Penalty Rules are invalid.";
inline constexpr std::string_view timingNotPositive = "Meal Penalty timing durations must be positive.";
inline constexpr std::string_view weeklyLimitNote =
    "The agreement switches to a prevailing-rate calculation after 20 meal penalties in a workweek.";
inline constexpr std::string_view studioLocationNote =
    "Studio/Location is a workday fact and is independent of each crew member\u2019s Local/Distant payroll locality.";
}  // namespace meal_rules_messages

// A meal penalty rule payload that cannot be used as it stands; the message is its sentence.
class MealPenaltyRulesError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The engine's meal rules: the first meal (its grace counting from the original due time when
// exceeded) and every later meal.
struct MealPenaltyTimingRules {
    MealPeriodRule firstMeal;
    MealPeriodRule subsequentMeal;
};

class MealPenaltyRules {
public:
    // Schedules A and B, A for local days and B for distant ones, US dollars, 20 a week.
    static MealPenaltyCompensationRulesDraft defaults();
    // Used when a payload has no timing rules: 6 hours to each meal, 30-minute intervals, 12-minute grace.
    static MealPenaltyTimingRulesDraft defaultTimingRules();

    // The selected schedule id of a day. With one schedule for every workday, the all-workdays selection
    // wins over the locality's when both are set; with Studio and Location schedules, the workday's
    // location decides (a workday without one counts as Studio).
    static std::string selectedScheduleRuleID(const MealPenaltyCompensationRulesDraft& draft, RulesLocality locality,
                                              std::optional<MealWorkLocation> workLocation);
    // The engine schedule of that selection; throws MealPenaltyRulesError("Meal Penalty Rules are
    // incomplete.") for a missing schedule or a weekly limit below 1, and the value types' errors.
    static FixedDollarMealPenaltySchedule engineSchedule(const MealPenaltyCompensationRulesDraft& draft, RulesLocality locality,
                                                         std::optional<MealWorkLocation> workLocation);
    // Throws MealPenaltyRulesError("Meal Penalty timing durations must be positive.").
    static void validateTiming(const MealPenaltyTimingRulesDraft& timing);
    static MealPenaltyTimingRules engineTimingRules(const MealPenaltyCompensationRulesDraft& draft);
};

namespace turnaround_messages {
inline constexpr std::string_view invalid = "Turnaround Defaults are invalid.";
inline constexpr std::string_view notConfigured = "Turnaround is not configured for this engagement";
inline constexpr std::string_view engagementValueInvalid = "An engagement Turnaround value is invalid.";
}  // namespace turnaround_messages

struct TurnaroundSuggestion {
    std::int64_t requiredRestSeconds = 0;
    std::string origin;  // "Production Default · Local", "… exception"
    std::string ruleID;
    bool operator==(const TurnaroundSuggestion&) const = default;
};

class TurnaroundRules {
public:
    // Throws ProductionRulesetValidationError in the documented order.
    static void validate(const TurnaroundRulesDraft& draft);
    // The rest an engagement is offered; nothing when the applicable rest is below one second.
    static std::optional<TurnaroundSuggestion> suggestion(const TurnaroundRulesDraft& draft, RulesLocality locality,
                                                          const std::string& occupationCode,
                                                          const std::optional<Uuid>& classificationID);
};

}  // namespace tessel
