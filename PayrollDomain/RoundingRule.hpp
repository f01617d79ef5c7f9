#pragma once

#include <optional>
#include <string_view>

#include "Decimal.hpp"
#include "DomainError.hpp"
#include "Money.hpp"

namespace tessel {

enum class RoundingRuleValidationErrorCase { incrementMustBePositive, invalidDecimal };

class RoundingRuleValidationError : public CaseError<RoundingRuleValidationErrorCase> {
public:
    using Case = RoundingRuleValidationErrorCase;
    explicit RoundingRuleValidationError(Case errorCase);
};

enum class RoundingRuleApplicationErrorCase { invalidDecimalResult };

class RoundingRuleApplicationError : public CaseError<RoundingRuleApplicationErrorCase> {
public:
    using Case = RoundingRuleApplicationErrorCase;
    RoundingRuleApplicationError();
};

template <typename Value>
struct RoundingResult;

// Rounds to a multiple of an increment (0.01 to cents, 0.25 to quarters, 1 to whole units);
// the increment also sets the number of places of the result.
class RoundingRule {
public:
    using Method = RoundingMethod;
    using ValidationError = RoundingRuleValidationError;
    using ApplicationError = RoundingRuleApplicationError;

    RoundingRule(Decimal increment, Method method);
    static RoundingRule cents() { return RoundingRule(Decimal("0.01"), Method::nearestAwayFromZero); }

    const Decimal& increment() const noexcept { return increment_; }
    Method method() const noexcept { return method_; }

    Decimal round(const Decimal& value) const;
    RoundingResult<Decimal> apply(const Decimal& value) const;
    RoundingResult<Money> apply(const Money& value) const;

    bool operator==(const RoundingRule&) const noexcept = default;

private:
    Decimal increment_;
    Method method_;
};

// One rounding step: the value before, the value after, and the rule that was applied.
template <typename Value>
struct RoundingResult {
    Value before;
    Value after;
    RoundingRule rule;
};

std::string_view toRawValue(RoundingMethod method) noexcept;
std::optional<RoundingMethod> roundingMethodFromRawValue(std::string_view raw) noexcept;

}  // namespace tessel
