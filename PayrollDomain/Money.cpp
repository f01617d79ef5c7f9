#include "Money.hpp"

namespace tessel {

MoneyArithmeticError MoneyArithmeticError::currencyMismatch(const CurrencyCode& left, const CurrencyCode& right) {
    return MoneyArithmeticError(Case::currencyMismatch, "currencyMismatch",
                                "Amounts in " + left.code() + " and " + right.code() + " cannot be combined.",
                                {{"left", left.code()}, {"right", right.code()}});
}

MoneyArithmeticError MoneyArithmeticError::invalidDecimalResult() {
    return MoneyArithmeticError(Case::invalidDecimalResult, "invalidDecimalResult",
                                "The amount could not be calculated.");
}

Money::Money(Decimal amount, CurrencyCode currency) : amount_(amount), currency_(std::move(currency)) {
    if (amount_.isNaN()) throw ArithmeticError::invalidDecimalResult();
}

void Money::requireSameCurrency(const Money& other) const {
    if (currency_ != other.currency_) throw ArithmeticError::currencyMismatch(currency_, other.currency_);
}

Money Money::operator+(const Money& other) const {
    requireSameCurrency(other);
    return Money(amount_ + other.amount_, currency_);
}

Money Money::operator-(const Money& other) const {
    requireSameCurrency(other);
    return Money(amount_ - other.amount_, currency_);
}

Money Money::operator*(const Decimal& factor) const { return Money(amount_ * factor, currency_); }

}  // namespace tessel
