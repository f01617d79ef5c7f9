#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "DomainError.hpp"

namespace tessel {

enum class CurrencyCodeValidationErrorCase { invalidCode };

class CurrencyCodeValidationError : public CaseError<CurrencyCodeValidationErrorCase> {
public:
    using Case = CurrencyCodeValidationErrorCase;
    // Carries the text as the caller gave it, before upper-casing.
    explicit CurrencyCodeValidationError(std::string text);
    const std::string& text() const noexcept { return text_; }

private:
    std::string text_;
};

// Three ASCII capital letters; lower-case input is accepted and stored upper-case.
class CurrencyCode {
public:
    using ValidationError = CurrencyCodeValidationError;

    explicit CurrencyCode(std::string_view code);
    static CurrencyCode usd() { return CurrencyCode("USD"); }

    const std::string& code() const noexcept { return code_; }
    bool operator==(const CurrencyCode&) const noexcept = default;

private:
    std::string code_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::CurrencyCode> {
    std::size_t operator()(const tessel::CurrencyCode& c) const noexcept { return std::hash<std::string>{}(c.code()); }
};
