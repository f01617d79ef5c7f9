#include "SupplementalCompensationCalculator.hpp"

namespace tessel {

FixedDailyCompensationResult SupplementalCompensationCalculator::fixedDaily(const std::optional<Money>& configuredAmount,
                                                                            bool applies) {
    const std::optional<Money> compensation = applies ? configuredAmount : std::nullopt;
    return {compensation, {configuredAmount, applies, compensation}};
}

IdleCompensationResult SupplementalCompensationCalculator::idle(WorkDuration compensatedDuration,
                                                                const HourlyPayRate& straightTimeHourlyRate,
                                                                const RateMultiplier& straightTimeRateMultiplier,
                                                                const RoundingRule& rounding) {
    const Money unrounded = straightTimeHourlyRate.priceOf(compensatedDuration, straightTimeRateMultiplier.value());
    const Money rounded = rounding.apply(unrounded).after;
    return {rounded,
            {compensatedDuration, straightTimeRateMultiplier, straightTimeHourlyRate.amountPerHour(), unrounded, rounded,
             rounding}};
}

UnworkedHolidayResult SupplementalCompensationCalculator::unworkedHoliday(const UnworkedHolidayRule& rule,
                                                                          const HourlyPayRate& straightTimeHourlyRate,
                                                                          const RoundingRule& rounding) {
    const Money unrounded =
        straightTimeHourlyRate.priceOf(WorkDuration(rule.compensatedSeconds()), rule.rateMultiplier());
    const Money rounded = rounding.apply(unrounded).after;
    return {rounded, {rule, straightTimeHourlyRate.amountPerHour(), unrounded, rounded, rounding}};
}

PercentageCompensationResult SupplementalCompensationCalculator::percentage(const CompensationPercentage& percentage,
                                                                            const Money& basisAmount,
                                                                            const RoundingRule& rounding) {
    const Money unrounded = basisAmount * percentage.fraction();
    RoundingResult<Money> rounded = rounding.apply(unrounded);
    const Money compensation = rounded.after;
    return {compensation,
            {PercentageCompensationBasis::straightTimeEarnings, percentage, basisAmount, unrounded, std::move(rounded)}};
}

}  // namespace tessel
