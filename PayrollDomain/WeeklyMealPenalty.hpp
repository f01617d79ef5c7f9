#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "MealPeriod.hpp"
#include "Money.hpp"

namespace tessel {

enum class FixedDollarMealPenaltyScheduleValidationErrorCase { earlyAmountsRequired, negativeAmount, inconsistentCurrency };

class FixedDollarMealPenaltyScheduleValidationError
    : public CaseError<FixedDollarMealPenaltyScheduleValidationErrorCase> {
public:
    using Case = FixedDollarMealPenaltyScheduleValidationErrorCase;
    explicit FixedDollarMealPenaltyScheduleValidationError(Case errorCase);
};

// A fixed amount per occurrence that escalates with its place within its meal period.
class FixedDollarMealPenaltySchedule {
public:
    using ValidationError = FixedDollarMealPenaltyScheduleValidationError;

    FixedDollarMealPenaltySchedule(RuleID ruleID, std::vector<Money> earlyOrdinalAmounts, Money repeatingAmount);

    const RuleID& ruleID() const noexcept { return ruleID_; }
    const std::vector<Money>& earlyOrdinalAmounts() const noexcept { return earlyOrdinalAmounts_; }
    const Money& repeatingAmount() const noexcept { return repeatingAmount_; }
    const CurrencyCode& currency() const noexcept { return repeatingAmount_.currency(); }
    // The amount of the occurrence with this 1-based ordinal within its meal period.
    const Money& amountFor(int occurrenceOrdinal) const noexcept;

private:
    RuleID ruleID_;
    std::vector<Money> earlyOrdinalAmounts_;
    Money repeatingAmount_;
};

struct DatedMealPenaltyPeriod {
    std::string sourceDayID;
    CalendarDate productionDate;
    FixedDollarMealPenaltySchedule schedule;
    int fixedDollarWeeklyLimit = 20;
    MealPeriodEvaluationResult result;
};

struct WeeklyMealPenaltyOccurrence {
    struct Compensation {
        enum class Case { fixedDollar, prevailingRateUnverified };
        Case kind = Case::fixedDollar;
        std::optional<Money> amount;  // fixedDollar only
    };
    enum class Warning { prevailingRateRequiresContractVerification };

    std::string sourceDayID;
    CalendarDate productionDate;
    RuleID sourceMealPeriodRuleID;
    MealPeriodOrdinal mealPeriodOrdinal;
    int mealPeriodOccurrenceOrdinal = 1;
    int weeklyOrdinal = 1;
    Instant intervalStart;
    Instant intervalEnd;
    RuleID compensationScheduleRuleID;
    Compensation compensation;
    std::vector<Warning> warnings;
};

std::string_view toRawValue(WeeklyMealPenaltyOccurrence::Compensation::Case kind) noexcept;
std::string_view toRawValue(WeeklyMealPenaltyOccurrence::Warning warning) noexcept;

// The review's words for meal penalties past the weekly limit.
namespace meal_penalty_words {
inline constexpr std::string_view contractVerificationRequired = "Contract verification required";
inline constexpr std::string_view prevailingRateExplanation =
    "Occurrences after the fixed-dollar limit require contract verification; prevailing-rate pricing is not yet "
    "calculated.";
inline constexpr std::string_view fixedDollarSubtotal = "Fixed-dollar subtotal";
inline constexpr std::string_view fixedDollarWeeklyLimit = "Fixed-dollar weekly limit";
}  // namespace meal_penalty_words

struct WeeklyMealPenaltyResult {
    std::vector<WeeklyMealPenaltyOccurrence> occurrences;  // in weekly order
    std::optional<Money> fixedDollarSubtotal;              // absent when nothing was priced
    int unresolvedPrevailingRateCount = 0;
};

}  // namespace tessel
