#include "RoundingRule.hpp"

#include <array>
#include <utility>


namespace tessel {
namespace {

constexpr std::array<std::pair<RoundingMethod, std::string_view>, 4> methodNames{{
    {RoundingMethod::nearestAwayFromZero, "nearestAwayFromZero"},
    {RoundingMethod::nearestTiesToEven, "nearestTiesToEven"},
    {RoundingMethod::towardZero, "towardZero"},
    {RoundingMethod::awayFromZero, "awayFromZero"},
}};

}  // namespace

RoundingRuleValidationError::RoundingRuleValidationError(Case errorCase)
    : CaseError(errorCase, errorCase == Case::incrementMustBePositive ? "incrementMustBePositive" : "invalidDecimal",
                errorCase == Case::incrementMustBePositive ? "A rounding increment must be greater than zero."
                                                           : "A rounding increment must be a number.") {}

RoundingRuleApplicationError::RoundingRuleApplicationError()
    : CaseError(Case::invalidDecimalResult, "invalidDecimalResult", "The value could not be rounded.") {}

RoundingRule::RoundingRule(Decimal increment, Method method) : increment_(increment), method_(method) {
    if (increment_.isNaN()) throw ValidationError(ValidationError::Case::invalidDecimal);
    if (!(increment_ > Decimal())) throw ValidationError(ValidationError::Case::incrementMustBePositive);
}

Decimal RoundingRule::round(const Decimal& value) const {
    if (value.isNaN()) throw ApplicationError();
    const Decimal quotient = value / increment_;
    if (quotient.isNaN()) throw ApplicationError();
    // The increment sets the places of the result: 10 rounded to 0.01 reads "10.00".
    const Decimal rounded = (quotient.roundedToWholeNumber(method_) * increment_).withPlacesOf(increment_);
    if (rounded.isNaN()) throw ApplicationError();
    return rounded;
}

RoundingResult<Decimal> RoundingRule::apply(const Decimal& value) const { return {value, round(value), *this}; }

RoundingResult<Money> RoundingRule::apply(const Money& value) const {
    return {value, Money(round(value.amount()), value.currency()), *this};
}

std::string_view toRawValue(RoundingMethod method) noexcept {
    for (const auto& [candidate, name] : methodNames) {
        if (candidate == method) return name;
    }
    return {};
}

std::optional<RoundingMethod> roundingMethodFromRawValue(std::string_view raw) noexcept {
    for (const auto& [method, name] : methodNames) {
        if (name == raw) return method;
    }
    return std::nullopt;
}

}  // namespace tessel
