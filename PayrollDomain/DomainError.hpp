#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tessel {

// One piece of an error's payload, named as its field is named in the error case
// (a duration payload is named with "Seconds" appended, as everywhere in machine output).
struct ErrorField {
    std::string name;
    std::variant<std::string, std::int64_t> value;
};

// Base of every typed error the calculation core throws: a case name, the payload the case carries,
// and a one-sentence description for logs and the command line.
class DomainError : public std::exception {
public:
    const std::string& caseName() const noexcept { return caseName_; }
    const std::string& description() const noexcept { return description_; }
    const std::vector<ErrorField>& payload() const noexcept { return payload_; }
    const char* what() const noexcept override { return description_.c_str(); }

protected:
    DomainError(std::string caseName, std::string description, std::vector<ErrorField> payload = {})
        : caseName_(std::move(caseName)), description_(std::move(description)), payload_(std::move(payload)) {}

private:
    std::string caseName_;
    std::string description_;
    std::vector<ErrorField> payload_;
};

// An error enumeration: one type per enumeration, holding its case.
template <typename Case>
class CaseError : public DomainError {
public:
    Case errorCase() const noexcept { return case_; }

protected:
    CaseError(Case errorCase, std::string caseName, std::string description, std::vector<ErrorField> payload = {})
        : DomainError(std::move(caseName), std::move(description), std::move(payload)), case_(errorCase) {}

private:
    Case case_;
};

// Quotes a name in an error sentence the way the program's messages quote names.
inline std::string quoted(const std::string& text) { return "\u201C" + text + "\u201D"; }

}  // namespace tessel
