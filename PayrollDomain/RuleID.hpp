#pragma once

#include <compare>
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
// Identifiers are few and copied into every band line of every day, so each distinct text is kept
// once for the life of the program and an identifier is a reference to it: copies and comparisons
// for equality cost a pointer.
class RuleID {
public:
    using ValidationError = RuleIDValidationError;

    explicit RuleID(std::string value);

    const std::string& value() const noexcept { return *value_; }
    bool operator==(const RuleID& other) const noexcept { return value_ == other.value_; }
    std::strong_ordering operator<=>(const RuleID& other) const noexcept {
        return value_ == other.value_ ? std::strong_ordering::equal : *value_ <=> *other.value_;
    }

private:
    const std::string* value_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::RuleID> {
    std::size_t operator()(const tessel::RuleID& id) const noexcept { return std::hash<const void*>{}(&id.value()); }
};
