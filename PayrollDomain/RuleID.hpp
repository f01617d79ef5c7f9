#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "DomainError.hpp"

namespace tessel {

enum class RuleIDValidationErrorCase { containsWhitespace, emptyValue };

class RuleIDValidationError : public CaseError<RuleIDValidationErrorCase> {
public:
    using Case = RuleIDValidationErrorCase;
    static RuleIDValidationError containsWhitespace(const std::string& text);
    static RuleIDValidationError emptyValue();

private:
    using CaseError::CaseError;
};

// A stable dotted identifier of a rule or provision, such as "production.band.straight-time".
// The text is taken as given: a padded identifier is refused for its whitespace, not trimmed.
class RuleID {
public:
    using ValidationError = RuleIDValidationError;

    explicit RuleID(std::string value);

    const std::string& value() const noexcept { return value_; }
    auto operator<=>(const RuleID&) const = default;

private:
    std::string value_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::RuleID> {
    std::size_t operator()(const tessel::RuleID& id) const noexcept { return std::hash<std::string>{}(id.value()); }
};
