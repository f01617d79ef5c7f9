#pragma once

#include "Money.hpp"
#include "WorkDuration.hpp"

namespace tessel {

enum class HourlyPayRateValidationErrorCase { negativeAmount, invalidAmount };

class HourlyPayRateValidationError : public CaseError<HourlyPayRateValidationErrorCase> {
public:
    using Case = HourlyPayRateValidationErrorCase;
    explicit HourlyPayRateValidationError(Case errorCase);
};

// Pay for one hour of straight time. A zero rate is allowed.
class HourlyPayRate {
public:
    using ValidationError = HourlyPayRateValidationError;

    HourlyPayRate(Decimal amountPerHour, CurrencyCode currency);
    explicit HourlyPayRate(const Money& amountPerHour) : HourlyPayRate(amountPerHour.amount(), amountPerHour.currency()) {}

    const Money& amountPerHour() const noexcept { return amountPerHour_; }
    // seconds × rate × multiplier ÷ 3600, unrounded. The division comes last so that no repeating
    // fraction of an hour enters the product.
    Money priceOf(WorkDuration duration, const Decimal& multiplier) const;
    bool operator==(const HourlyPayRate&) const noexcept = default;

private:
    static Money validated(Decimal amount, CurrencyCode currency);
    Money amountPerHour_;
};

}  // namespace tessel
