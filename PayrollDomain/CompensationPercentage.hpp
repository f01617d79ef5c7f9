#pragma once

#include "Decimal.hpp"
#include "DomainError.hpp"

namespace tessel {

enum class CompensationPercentageValidationErrorCase { negativePercentage };

class CompensationPercentageValidationError : public CaseError<CompensationPercentageValidationErrorCase> {
public:
    using Case = CompensationPercentageValidationErrorCase;
    CompensationPercentageValidationError();
};

// A percentage in percent: 10 means ten per cent.
class CompensationPercentage {
public:
    using ValidationError = CompensationPercentageValidationError;

    explicit CompensationPercentage(Decimal percent);

    const Decimal& percent() const noexcept { return percent_; }
    // The multiplier the percentage stands for: 10 gives 0.10.
    Decimal fraction() const noexcept { return percent_ / Decimal(100); }
    bool operator==(const CompensationPercentage&) const noexcept = default;

private:
    Decimal percent_;
};

}  // namespace tessel
