#pragma once

#include "Decimal.hpp"
#include "DomainError.hpp"

namespace tessel {

enum class RateMultiplierValidationErrorCase { negativeValue, invalidDecimal };

class RateMultiplierValidationError : public CaseError<RateMultiplierValidationErrorCase> {
public:
    using Case = RateMultiplierValidationErrorCase;
    explicit RateMultiplierValidationError(Case errorCase);
};

// A premium factor (1, 1.5, 2 …). Zero is allowed; NaN and negative values are not.
class RateMultiplier {
public:
    using ValidationError = RateMultiplierValidationError;

    explicit RateMultiplier(Decimal value);
    static RateMultiplier one() { return RateMultiplier(Decimal(1)); }

    const Decimal& value() const noexcept { return value_; }
    bool operator==(const RateMultiplier&) const noexcept = default;

private:
    Decimal value_;
};

}  // namespace tessel
