#pragma once

#include <optional>
#include <string_view>

#include "CompensationPercentage.hpp"
#include "DurationBasis.hpp"
#include "RateMultiplier.hpp"
#include "RoundingRule.hpp"
#include "WorkDuration.hpp"

namespace tessel {

struct FixedDailyCompensationTrace {
    std::optional<Money> configuredAmount;
    bool applies = false;
    std::optional<Money> compensation;
};

struct FixedDailyCompensationResult {
    std::optional<Money> compensation;
    FixedDailyCompensationTrace trace;
};

struct IdleCompensationTrace {
    WorkDuration compensatedDuration;
    RateMultiplier straightTimeRateMultiplier;
    Money straightTimeHourlyRate;
    Money unroundedAmount;
    Money roundedAmount;
    RoundingRule roundingRule;
};

struct IdleCompensationResult {
    Money compensation;
    IdleCompensationTrace trace;
};

enum class UnworkedHolidayRuleValidationErrorCase { invalidDuration, invalidMultiplier };

class UnworkedHolidayRuleValidationError : public CaseError<UnworkedHolidayRuleValidationErrorCase> {
public:
    using Case = UnworkedHolidayRuleValidationErrorCase;
    explicit UnworkedHolidayRuleValidationError(Case errorCase);
};

// A holiday not worked, paid at straight time for a fixed duration and multiplier.
class UnworkedHolidayRule {
public:
    enum class Formula { fixedStraightTimeDuration };
    using ValidationError = UnworkedHolidayRuleValidationError;

    UnworkedHolidayRule(Formula formula, std::int64_t compensatedSeconds, Decimal rateMultiplier);

    Formula formula() const noexcept { return formula_; }
    std::int64_t compensatedSeconds() const noexcept { return compensatedSeconds_; }
    const Decimal& rateMultiplier() const noexcept { return rateMultiplier_; }

private:
    Formula formula_;
    std::int64_t compensatedSeconds_;
    Decimal rateMultiplier_;
};

std::string_view toRawValue(UnworkedHolidayRule::Formula formula) noexcept;
std::optional<UnworkedHolidayRule::Formula> unworkedHolidayFormulaFromRawValue(std::string_view raw) noexcept;

struct UnworkedHolidayTrace {
    UnworkedHolidayRule rule;
    Money straightTimeHourlyRate;
    Money unroundedAmount;
    Money roundedAmount;
    RoundingRule roundingRule;
};

struct UnworkedHolidayResult {
    Money compensation;
    UnworkedHolidayTrace trace;
};

struct PercentageCompensationTrace {
    PercentageCompensationBasis basis = PercentageCompensationBasis::straightTimeEarnings;
    CompensationPercentage percentage;
    Money basisAmount;
    Money unroundedAmount;
    RoundingResult<Money> rounding;
};

struct PercentageCompensationResult {
    Money compensation;
    PercentageCompensationTrace trace;
};

}  // namespace tessel
