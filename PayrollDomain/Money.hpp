#pragma once

#include "CurrencyCode.hpp"
#include "Decimal.hpp"
#include "DomainError.hpp"

namespace tessel {

enum class MoneyArithmeticErrorCase { currencyMismatch, invalidDecimalResult };

class MoneyArithmeticError : public CaseError<MoneyArithmeticErrorCase> {
public:
    using Case = MoneyArithmeticErrorCase;
    static MoneyArithmeticError currencyMismatch(const CurrencyCode& left, const CurrencyCode& right);
    static MoneyArithmeticError invalidDecimalResult();

private:
    using CaseError::CaseError;
};

// An exact amount in one currency. Amounts are combined only within one currency.
class Money {
public:
    using ArithmeticError = MoneyArithmeticError;

    // A NaN amount is refused with invalidDecimalResult.
    Money(Decimal amount, CurrencyCode currency);
    static Money zero(CurrencyCode currency) { return Money(Decimal(), std::move(currency)); }

    const Decimal& amount() const noexcept { return amount_; }
    const CurrencyCode& currency() const noexcept { return currency_; }

    Money operator+(const Money& other) const;
    Money operator-(const Money& other) const;
    // Scales by hours, a multiplier's value or a percentage fraction, keeping the currency.
    Money operator*(const Decimal& factor) const;

    bool operator==(const Money&) const noexcept = default;

private:
    void requireSameCurrency(const Money& other) const;
    Decimal amount_;
    CurrencyCode currency_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::Money> {
    std::size_t operator()(const tessel::Money& m) const noexcept {
        return m.amount().hash() * 31 + std::hash<tessel::CurrencyCode>{}(m.currency());
    }
};
