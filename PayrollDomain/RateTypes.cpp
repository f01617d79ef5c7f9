// Validation of the multiplier, hourly rate and percentage value types.
#include "CompensationPercentage.hpp"
#include "HourlyPayRate.hpp"
#include "RateMultiplier.hpp"

namespace tessel {

RateMultiplierValidationError::RateMultiplierValidationError(Case errorCase)
    : CaseError(errorCase, errorCase == Case::negativeValue ? "negativeValue" : "invalidDecimal",
                errorCase == Case::negativeValue ? "A rate multiplier cannot be negative."
                                                 : "A rate multiplier must be a number.") {}

RateMultiplier::RateMultiplier(Decimal value) : value_(value) {
    if (value_.isNaN()) throw ValidationError(ValidationError::Case::invalidDecimal);
    if (value_.isNegative()) throw ValidationError(ValidationError::Case::negativeValue);
}

HourlyPayRateValidationError::HourlyPayRateValidationError(Case errorCase)
    : CaseError(errorCase, errorCase == Case::negativeAmount ? "negativeAmount" : "invalidAmount",
                errorCase == Case::negativeAmount ? "An hourly rate cannot be negative."
                                                  : "An hourly rate must be a number.") {}

Money HourlyPayRate::validated(Decimal amount, CurrencyCode currency) {
    if (amount.isNaN()) throw ValidationError(ValidationError::Case::invalidAmount);
    if (amount.isNegative()) throw ValidationError(ValidationError::Case::negativeAmount);
    return Money(amount, std::move(currency));
}

HourlyPayRate::HourlyPayRate(Decimal amountPerHour, CurrencyCode currency)
    : amountPerHour_(validated(amountPerHour, std::move(currency))) {}

Money HourlyPayRate::priceOf(WorkDuration duration, const Decimal& multiplier) const {
    const Decimal amount = Decimal(duration.seconds()) * amountPerHour_.amount() * multiplier /
                           Decimal(WorkDuration::secondsPerHour);
    return Money(amount, amountPerHour_.currency());
}

CompensationPercentageValidationError::CompensationPercentageValidationError()
    : CaseError(Case::negativePercentage, "negativePercentage", "A percentage cannot be negative.") {}

CompensationPercentage::CompensationPercentage(Decimal percent) : percent_(percent) {
    // NaN is not "at least zero" either, and the type has no other case to report it with.
    if (percent_.isNaN() || percent_.isNegative()) throw ValidationError();
}

}  // namespace tessel
