#include "EntryText.hpp"

#include <array>
#include <cstdint>

namespace tessel::entry_text {
namespace {

// Unicode white space as UTF-8: the separators of categories Zs, Zl and Zp beyond ASCII, and NEL.
constexpr std::array<std::string_view, 20> wideSpaces{
    "\u0085", "\u00A0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006",
    "\u2007", "\u2008", "\u2009", "\u200A", "\u2028", "\u2029", "\u202F", "\u205F", "\u3000", " "};

bool isASCIISpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The length of the white space that starts (or, with `atEnd`, ends) the text; 0 when there is none.
std::size_t spaceLength(std::string_view text, bool atEnd) noexcept {
    if (text.empty()) return 0;
    if (isASCIISpace(atEnd ? text.back() : text.front())) return 1;
    for (const auto space : wideSpaces) {
        if (atEnd ? text.ends_with(space) : text.starts_with(space)) return space.size();
    }
    return 0;
}

}  // namespace

std::string_view trimmed(std::string_view text) noexcept {
    while (const auto n = spaceLength(text, false)) text.remove_prefix(n);
    while (const auto n = spaceLength(text, true)) text.remove_suffix(n);
    return text;
}

bool isBlank(std::string_view text) noexcept { return trimmed(text).empty(); }

std::optional<Decimal> decimal(std::string_view text) noexcept {
    const auto entry = trimmed(text);
    if (entry.empty()) return std::nullopt;
    const auto value = Decimal::parse(entry);
    if (!value || value->isNaN()) return std::nullopt;
    return value;
}

std::string quoted(std::string_view text) { return "\u201C" + std::string(text) + "\u201D"; }

}  // namespace tessel::entry_text
