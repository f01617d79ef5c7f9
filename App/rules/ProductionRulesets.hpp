#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/rules/MealPenaltyRules.hpp"
#include "App/rules/PayComparisonConcept.hpp"
#include "App/rules/RulesetDrafts.hpp"
#include "App/rules/RulesetValidationError.hpp"
#include "PayrollDomain/DailyMinimumGuarantee.hpp"
#include "PayrollDomain/MinimumBandGuarantee.hpp"
#include "PayrollDomain/PayBandSchedule.hpp"
#include "PayrollDomain/RoundingRule.hpp"

namespace tessel {

// The rule identifiers the calculation labels its lines with; they stay stable across edits.
namespace ruleset_ids {
inline constexpr std::string_view straightTime = "production.band.straight-time";
inline constexpr std::string_view timeAndAHalf = "production.band.time-and-a-half";
inline constexpr std::string_view doubleTime = "production.band.double-time";
inline constexpr std::string_view dailyMinimum = "production.guarantee.daily-minimum";
inline constexpr std::string_view finalBandMinimum = "production.guarantee.final-band-minimum";
inline constexpr std::string_view distantPrefix = "production.distant";
// Alternate-day schedules: a prefix per locality and day kind, then the same suffixes. The local
// prefixes follow the form of the distant ones.
inline constexpr std::string_view localSixthDayPrefix = "production.sixth-day";
inline constexpr std::string_view localSeventhDayPrefix = "production.seventh-day";
inline constexpr std::string_view distantSixthDayPrefix = "production.distant.sixth-day";
inline constexpr std::string_view distantSeventhDayPrefix = "production.distant.seventh-day";
inline constexpr std::string_view personalDailyGuarantee = "engagement.personal-daily-guarantee";
std::string prefix(RulesLocality locality, DayKind day);
}  // namespace ruleset_ids

namespace ruleset_messages {
inline constexpr std::string_view payBandOrder =
    "Pay bands must begin at zero, remain ordered without gaps or overlaps, and end with an open band.";
inline constexpr std::string_view finalBandOpen = "The final pay band must be open-ended.";
inline constexpr std::string_view goldenHourTarget = "Golden Hour must target an enabled pay band.";
inline constexpr std::string_view noRevision = "This Production does not have a Ruleset revision.";
inline constexpr std::string_view exampleName = "Custom Production Rules";
inline constexpr std::string_view newLibraryRulesetName = "New Ruleset";
inline constexpr std::string_view exampleNotes = "Current example defaults; not a source-backed agreement preset.";
inline constexpr std::string_view alternateDayInvalid = "An alternate-day schedule is invalid.";
inline constexpr std::string_view idleBothFields =
    "Enter both Idle compensated hours and rate, or clear both fields to remove Idle Compensation.";
inline constexpr std::string_view idleMultiplierInvalid = "Enter a valid Idle rate multiplier.";
inline constexpr std::string_view idleHoursNotPositive = "Idle compensated hours must be greater than zero.";
inline constexpr std::string_view idleMultiplierNotPositive = "Idle straight-time multiplier must be greater than zero.";
inline constexpr std::string_view holidayBothFields =
    "Enter positive Holiday compensated hours and multiplier, or clear both fields.";
inline constexpr std::string_view holidayNotPositive = "Holiday compensated hours and multiplier must be greater than zero.";
}  // namespace ruleset_messages

enum class ProductionRulesetOrigin { automaticDefault, savedRulesetCopy, legacyUnknown };

struct ProductionRulesetSetupState {
    ProductionRulesetOrigin origin = ProductionRulesetOrigin::legacyUnknown;
    std::optional<std::string> sourceSavedRulesetName;
    std::optional<Instant> manuallyReviewedAt;
};

// A ruleset revision as the engine uses it for one locality and day kind.
struct SandboxConfiguration {
    Uuid revisionID;
    std::string name;
    std::string sourceNotes;
    CalendarDate effectiveFrom;
    RulesLocality rulesLocality = RulesLocality::local;
    DayKind dayKind = DayKind::ordinary;
    PayBandSchedule schedule;
    DayKind scheduleDayKind = DayKind::ordinary;  // whose schedule pays the day: its own, or the ordinary one
    std::optional<DailyMinimumGuarantee> configuredDailyMinimumGuarantee{};
    std::vector<MinimumBandGuarantee> bandGuarantees{};
    RoundingRule moneyRoundingRule = RoundingRule::cents();
    std::map<std::string, std::string> labelsByRuleID{};
    std::map<std::string, PayComparisonConcept> comparisonConceptsByRuleID{};
    std::optional<FixedDollarMealPenaltySchedule> mealPenaltySchedule{};
    std::string mealPenaltyScheduleName{};  // as the rules name it: "Schedule A"
    std::optional<std::string> mealPenaltyProblem{};  // why there is no schedule ("Meal Penalty Rules are incomplete.")
    std::int64_t mealPenaltyFixedDollarWeeklyLimit = 20;
    std::optional<MealPenaltyTimingRules> mealPenaltyTimingRules{};
    TurnaroundRulesDraft turnaroundRules{};
};

// A production's ruleset revisions: the example defaults, validation, reading and applying drafts, and
// the engine configuration of a day.
class ProductionRulesets {
public:
    static OrdinaryDayScheduleDraft exampleSchedule(RulesLocality locality);
    static ProductionRulesetDraft exampleDraft(CalendarDate effectiveFrom, std::string_view name = ruleset_messages::exampleName);
    static PayrollRuleConfiguration exampleConfiguration(CalendarDate effectiveFrom);

    // Throws ProductionRulesetValidationError, the first failure in the documented order.
    static void validate(const PayrollRuleConfiguration& configuration);
    // Everything applying a configuration checks: the ruleset, then the meal penalty timing and schedules,
    // idle and holiday pay (MealPenaltyRulesError, CompensationRuleInputError).
    static void validateWhole(const PayrollRuleConfiguration& configuration);
    // One schedule on its own (a position's): its bands, Golden Hour target and durations.
    static void validateSchedule(const OrdinaryDayScheduleDraft& schedule);

    // A new revision from the example defaults, with its payloads and "automaticDefault" metadata.
    static Uuid createDefaultRevision(ModelContext& context, const Uuid& productionID, CalendarDate effectiveFrom, Instant now);
    // The latest revision effective on or before the date.
    static std::optional<Uuid> revisionInForce(ModelContext& context, const Uuid& productionID, CalendarDate date);
    // The revision in force on the date, else the earliest one (a production whose rules start later).
    static std::optional<Uuid> currentRevision(ModelContext& context, const Uuid& productionID, CalendarDate today);

    static ProductionRulesetDraft readDraft(ModelContext& context, const Uuid& revisionID);
    static PayrollRuleConfiguration readConfiguration(ModelContext& context, const Uuid& productionID, const Uuid& revisionID);
    // Validates, then writes the revision, its payloads and the production's provisions; refuses a
    // revision deleted meanwhile with revisionUnavailable. Marks the rules reviewed.
    static void apply(ModelContext& context, const Uuid& productionID, const Uuid& revisionID,
                      const PayrollRuleConfiguration& configuration, Instant now);

    static ProductionRulesetSetupState setupState(ModelContext& context, const Uuid& revisionID);
    static std::string setupStatusLine(const ProductionRulesetSetupState& state);

    static SandboxConfiguration sandbox(ModelContext& context, const Uuid& productionID, CalendarDate date,
                                        std::optional<RulesLocality> locality, DayKind day,
                                        std::optional<MealWorkLocation> workLocation);
    // The same from a configuration in hand (a rules file, the example defaults), without a store. A
    // day paid by a position's own schedule gives it as `scheduleInstead`.
    static SandboxConfiguration sandboxFor(const PayrollRuleConfiguration& configuration, const Uuid& revisionID,
                                           std::optional<RulesLocality> locality, DayKind day,
                                           std::optional<MealWorkLocation> workLocation,
                                           const OrdinaryDayScheduleDraft* scheduleInstead = nullptr);
    static PayBandSchedule engineSchedule(const OrdinaryDayScheduleDraft& schedule);
};

// Creating a production gives it its first ruleset revision from the example defaults.
class ProductionSetup {
public:
    static Production createProduction(ModelContext& context, const std::string& name, const NewProductionDefaults& defaults,
                                       Instant now);
};

}  // namespace tessel
