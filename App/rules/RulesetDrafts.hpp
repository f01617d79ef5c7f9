#pragma once

#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "App/model/JSONFields.hpp"
#include "App/model/PersistenceModels.hpp"
#include "PayrollDomain/DurationBasis.hpp"
#include "PayrollDomain/SupplementalCompensation.hpp"

// The editable values of a production's payroll rules, with their JSON forms. Keys are exactly the
// field names; decimals are written as text and read from text or a JSON number; dates as "2026-11-02".
namespace tessel {

struct RulesetPayBandDraft {
    std::string ruleID;
    std::int64_t lowerBoundSeconds = 0;
    std::optional<std::int64_t> upperBoundSeconds;  // absent: open band
    Decimal multiplier{1};
    DurationBasis entryThresholdBasis = DurationBasis::worked;
    bool operator==(const RulesetPayBandDraft&) const = default;
};

struct OrdinaryDayScheduleDraft {
    std::vector<RulesetPayBandDraft> bands;  // ascending
    std::string dailyMinimumRuleID;
    bool dailyMinimumEnabled = false;
    std::int64_t dailyMinimumSeconds = 0;
    std::string finalBandMinimumRuleID;
    bool finalBandMinimumEnabled = false;
    std::int64_t finalBandMinimumSeconds = 0;
    std::optional<std::string> bandMinimumTargetRuleID;  // absent: the final band
    std::optional<bool> thirdBandEnabled;                // absent reads as enabled

    // The bands in use: without the third band, the first two, the second made open.
    std::vector<RulesetPayBandDraft> enabledBands() const;
    bool operator==(const OrdinaryDayScheduleDraft&) const = default;
};

struct PositionException {
    std::string occupationCode;
    std::string positionName;
    std::int64_t localRestSeconds = 0;
    std::int64_t distantRestSeconds = 0;
    bool operator==(const PositionException&) const = default;
};

struct TurnaroundRulesDraft {
    std::string localDPOrOperatorRuleID = "production.turnaround.local.dp-operator";
    std::int64_t localDPOrOperatorRestSeconds = 0;
    std::string localAllOthersRuleID = "production.turnaround.local.all-others";
    std::int64_t localAllOthersRestSeconds = 0;
    std::string distantDPOrOperatorRuleID = "production.turnaround.distant.dp-operator";
    std::int64_t distantDPOrOperatorRestSeconds = 0;
    std::string distantAllOthersRuleID = "production.turnaround.distant.all-others";
    std::int64_t distantAllOthersRestSeconds = 0;
    std::set<Uuid> dpOrOperatorClassificationIDs;
    std::optional<std::vector<PositionException>> positionExceptions;
    bool operator==(const TurnaroundRulesDraft&) const = default;
};

enum class DayKind { ordinary, sixthDay, seventhDay };
std::string_view toRawValue(DayKind kind) noexcept;
std::optional<DayKind> dayKindFromRawValue(std::string_view raw) noexcept;

struct ProductionRulesetDraft {
    std::string name;
    std::string sourceNotes;
    CalendarDate effectiveFrom;
    RulesLocality defaultRulesLocality = RulesLocality::local;
    OrdinaryDayScheduleDraft localSchedule;
    OrdinaryDayScheduleDraft distantSchedule;
    std::optional<OrdinaryDayScheduleDraft> localSixthDaySchedule;
    std::optional<OrdinaryDayScheduleDraft> localSeventhDaySchedule;
    std::optional<OrdinaryDayScheduleDraft> distantSixthDaySchedule;
    std::optional<OrdinaryDayScheduleDraft> distantSeventhDaySchedule;
    std::optional<TurnaroundRulesDraft> turnaroundRules;

    // The schedule of a locality and day kind: the alternate-day one when set, else the ordinary one.
    const OrdinaryDayScheduleDraft& schedule(RulesLocality locality, DayKind day) const noexcept;
    // The day kind whose schedule that is: the day's own when one is configured, else ordinary.
    DayKind scheduleDayKind(RulesLocality locality, DayKind day) const noexcept;
    bool operator==(const ProductionRulesetDraft&) const = default;
};

struct FixedDollarMealPenaltyScheduleDraft {
    std::string ruleID;
    std::string name;
    std::vector<Decimal> earlyOrdinalAmounts;
    Decimal repeatingAmount;
    bool operator==(const FixedDollarMealPenaltyScheduleDraft&) const = default;
};

struct MealPenaltyTimingRulesDraft {
    std::int64_t firstMealDueSeconds = 21600;
    std::int64_t subsequentMealDueSeconds = 21600;
    std::int64_t penaltyIntervalSeconds = 1800;
    std::int64_t calledFirstMealGraceSeconds = 720;
    std::int64_t subsequentMealGraceSeconds = 720;
    bool subsequentGraceIsRetroactiveIfExceeded = false;
    bool operator==(const MealPenaltyTimingRulesDraft&) const = default;
};

enum class MealPenaltyScheduleApplicability { oneSchedule, studioAndLocation };

struct MealPenaltyCompensationRulesDraft {
    std::vector<FixedDollarMealPenaltyScheduleDraft> schedules;
    std::string localSelectedScheduleRuleID;
    std::string distantSelectedScheduleRuleID;
    std::string currencyCode = "USD";
    std::int64_t fixedDollarWeeklyLimit = 20;
    std::optional<MealPenaltyTimingRulesDraft> timingRules;
    std::optional<MealPenaltyScheduleApplicability> scheduleApplicability;
    std::optional<std::string> allWorkdaysSelectedScheduleRuleID;
    std::optional<std::string> studioSelectedScheduleRuleID;
    std::optional<std::string> locationSelectedScheduleRuleID;
    bool operator==(const MealPenaltyCompensationRulesDraft&) const = default;
};

struct ProductionCompensationProvisionDraft {
    std::string kind;  // a CompensationProvisionKind raw value; checked by validation
    bool isEnabled = false;
    Decimal amount;
    std::string currencyCode = "USD";
    bool timedWorkDayEligible = false;
    bool workedEligible = false;
    bool prepEligible = false;
    bool idleAvailableEligible = false;
    bool travelEligible = false;
    bool holidayEligible = false;
    bool personalUnavailableEligible = false;
    bool operator==(const ProductionCompensationProvisionDraft&) const = default;
};

struct IdleCompensationRuleDraft {
    std::int64_t compensatedSecondsPerDay = 0;
    Decimal straightTimeRateMultiplier{1};
    bool operator==(const IdleCompensationRuleDraft&) const = default;
};

enum class HolidayRuleContext { dailyLocal, weeklyLocal, dailyDistant, weeklyDistant };
std::string_view toRawValue(HolidayRuleContext context) noexcept;
std::optional<HolidayRuleContext> holidayRuleContextFromRawValue(std::string_view raw) noexcept;

using HolidayCompensationRulesDraft = std::map<HolidayRuleContext, UnworkedHolidayRule>;

// Everything the ruleset editor works on.
struct PayrollRuleConfiguration {
    ProductionRulesetDraft payrollRules;
    MealPenaltyCompensationRulesDraft mealPenaltyRules;
    std::vector<ProductionCompensationProvisionDraft> additionalCompensation;
    std::optional<IdleCompensationRuleDraft> idleCompensation;
    HolidayCompensationRulesDraft holidayCompensation;
};

// A stored payload that cannot be read back; the message names the payload ("Meal Penalty Rules are invalid.").
class RulesPayloadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

namespace rules_json {

Json toJSON(const OrdinaryDayScheduleDraft& schedule);
Json toJSON(const ProductionRulesetDraft& draft);
Json toJSON(const TurnaroundRulesDraft& draft);
Json toJSON(const MealPenaltyCompensationRulesDraft& draft);
Json toJSON(const ProductionCompensationProvisionDraft& draft);
Json toJSON(const IdleCompensationRuleDraft& draft);
Json toJSON(const HolidayCompensationRulesDraft& draft);
Json toJSON(const PayrollRuleConfiguration& configuration);

// Decoders throw MalformedInputError naming the field that is wrong.
OrdinaryDayScheduleDraft scheduleDraft(const Json& json, const std::string& path);
ProductionRulesetDraft rulesetDraft(const Json& json, const std::string& path);
TurnaroundRulesDraft turnaroundDraft(const Json& json, const std::string& path);
MealPenaltyCompensationRulesDraft mealPenaltyDraft(const Json& json, const std::string& path);
ProductionCompensationProvisionDraft provisionDraft(const Json& json, const std::string& path);
IdleCompensationRuleDraft idleDraft(const Json& json, const std::string& path);
HolidayCompensationRulesDraft holidayDraft(const Json& json, const std::string& path);
PayrollRuleConfiguration configuration(const Json& json);

}  // namespace rules_json
}  // namespace tessel
