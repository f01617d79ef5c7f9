#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/rules/RulesetDrafts.hpp"

namespace tessel {

enum class CompensationProvisionOverrideMode { productionDefault, personalAmount, notEligible };
std::string_view toRawValue(CompensationProvisionOverrideMode mode) noexcept;
std::optional<CompensationProvisionOverrideMode> overrideModeFromRawValue(std::string_view raw) noexcept;

// The kinds of day a provision may apply on.
enum class ProvisionDayKind { timedWorkDay, worked, prep, idleAvailable, travel, holiday, personalUnavailable };

// An engagement's own term for a provision kind from a date on.
struct EngagementProvisionTerm {
    std::string kind;
    CalendarDate effectiveDate;
    std::optional<CompensationProvisionOverrideMode> mode;  // unknown stored modes read as absent
    std::optional<Decimal> personalDailyAmount;
    std::string currencyCode;
};

struct ResolvedCompensationProvision {
    CompensationProvisionKind kind;
    Decimal amount;
    std::string currencyCode;
    CompensationProvisionOverrideMode amountOrigin = CompensationProvisionOverrideMode::productionDefault;
    bool operator==(const ResolvedCompensationProvision&) const = default;
};

namespace provision_messages {
inline constexpr std::string_view amountInvalid = "A compensation provision amount is invalid.";
inline constexpr std::string_view vacationPayChangesInWeek =
    "Vacation Pay percentage changes within this Payroll Week. Use a Payroll Week boundary for the effective change.";
inline constexpr std::string_view inheritNote = "Engagements inherit these Ruleset values unless they have an individual override.";
inline constexpr std::string_view addOnlyUsed = "Add only the compensation provisions this Production uses.";
inline constexpr std::string_view idleMeaning =
    "Each idle day pays the compensated hours \u00D7 the applicable straight-time rate. Compensated idle hours are not worked hours.";
inline constexpr std::string_view holidayMeaning =
    "Fixed straight-time duration \u00D7 hourly rate \u00D7 multiplier. Compensated hours are not worked hours.";
}  // namespace provision_messages

// An entry in the idle or holiday fields that cannot be saved; the message is the editor's sentence.
class CompensationRuleInputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Fixed additional compensation (cell phone allowance, per diem, mileage, vacation pay) set per
// production and effective-dated, overridden per engagement; and the idle and unworked holiday rules of
// a ruleset revision.
class CompensationProvisions {
public:
    // Of each kind, the production's configuration in force on the date.
    static std::vector<ProductionCompensationProvisionDraft> productionDrafts(ModelContext& context, const Uuid& productionID,
                                                                              CalendarDate date);
    // Writes the drafts effective from the date. A kind configured before but left out is written
    // disabled, so that earlier dates keep their history and later ones pay nothing.
    static void replaceProductionDrafts(ModelContext& context, const Uuid& productionID, CalendarDate effectiveDate,
                                        const std::vector<ProductionCompensationProvisionDraft>& drafts);

    static void setEngagementTerm(ModelContext& context, const Uuid& engagementID, CompensationProvisionKind kind,
                                  CalendarDate effectiveDate, CompensationProvisionOverrideMode mode,
                                  const std::optional<Decimal>& personalDailyAmount, const std::string& currencyCode);

    // Every term of the engagement, in effective-date order.
    // Removes the engagement's term of the kind that starts on the date; false when there is none.
    static bool removeEngagementTerm(ModelContext& context, const Uuid& engagementID, CompensationProvisionKind kind, CalendarDate effectiveDate);
    static std::vector<EngagementProvisionTerm> engagementTerms(ModelContext& context, const Uuid& engagementID);
    // Every engagement's terms in one production, each engagement's in date order.
    static std::map<Uuid, std::vector<EngagementProvisionTerm>> engagementTermsOfProduction(ModelContext& context, const Uuid& productionID);

    // What an engagement is paid of a kind on a day, if anything.
    static std::optional<ResolvedCompensationProvision> resolve(ModelContext& context, const Uuid& productionID,
                                                                const Uuid& engagementID, CompensationProvisionKind kind,
                                                                CalendarDate date, ProvisionDayKind dayKind);
    // The same from facts already read: the production's configurations in force on the date and the
    // engagement's terms.
    static std::optional<ResolvedCompensationProvision> resolveFrom(const std::vector<ProductionCompensationProvisionDraft>& production,
                                                                    const std::vector<EngagementProvisionTerm>& terms,
                                                                    CompensationProvisionKind kind, CalendarDate date,
                                                                    ProvisionDayKind dayKind);
    // The vacation pay percentage may change only at a payroll week boundary; percentageOn gives the
    // percentage in force on a day (nothing when none is).
    static std::optional<std::string> vacationPayChangeWithinWeek(
        const std::function<std::optional<Decimal>(CalendarDate)>& percentageOn, CalendarDate weekStart);
    static std::optional<std::string> vacationPayChangeWithinWeek(ModelContext& context, const Uuid& productionID,
                                                                 const Uuid& engagementID, CalendarDate weekStart);

    static std::optional<IdleCompensationRuleDraft> idleRule(ModelContext& context, const Uuid& revisionID);
    static void setIdleRule(ModelContext& context, const Uuid& revisionID, const std::optional<IdleCompensationRuleDraft>& rule);
    static void validateIdle(const IdleCompensationRuleDraft& rule);
    static HolidayCompensationRulesDraft holidayRules(ModelContext& context, const Uuid& revisionID);
    static void setHolidayRules(ModelContext& context, const Uuid& revisionID, const HolidayCompensationRulesDraft& rules);
    // Every holiday rule pays a duration and a multiplier above zero.
    static void validateHoliday(const HolidayCompensationRulesDraft& rules);

    // The editor's text fields: both empty removes the rule; otherwise both must be positive numbers.
    static std::optional<IdleCompensationRuleDraft> idleFromText(const std::string& hoursText, const std::string& multiplierText);
    static std::optional<UnworkedHolidayRule> holidayFromText(const std::string& hoursText, const std::string& multiplierText);
};

}  // namespace tessel
