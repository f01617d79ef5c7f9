#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "PayrollDomain/Decimal.hpp"

namespace tessel {

// What a person types into a field, before it is read: white space and line breaks at either end are
// not part of the entry. "White space" is every Unicode space separator (the no-break space a pasted
// "7.0" often carries included), the line and paragraph separators, tab, the line breaks and NEL.
namespace entry_text {

std::string_view trimmed(std::string_view text) noexcept;
// Nothing but white space: the entry that clears a field.
bool isBlank(std::string_view text) noexcept;
// A decimal typed by a person (" 12.5 " reads as 12.5); nothing when it is not one.
std::optional<Decimal> decimal(std::string_view text) noexcept;
// A name or value as the program's sentences quote it: “Key Grip”.
std::string quoted(std::string_view text);

}  // namespace entry_text
}  // namespace tessel
