#include "CurrencyCode.hpp"

namespace tessel {

CurrencyCodeValidationError::CurrencyCodeValidationError(std::string text)
    : CaseError(Case::invalidCode, "invalidCode", quoted(text) + " is not a three-letter currency code.",
                {{"text", text}}),
      text_(std::move(text)) {}

CurrencyCode::CurrencyCode(std::string_view code) {
    std::string upper(code);
    for (char& c : upper) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    // Counting bytes refuses non-ASCII letters, whose UTF-8 form is longer than one byte.
    bool valid = upper.size() == 3;
    for (char c : upper) valid = valid && c >= 'A' && c <= 'Z';
    if (!valid) throw ValidationError(std::string(code));
    code_ = std::move(upper);
}

}  // namespace tessel
