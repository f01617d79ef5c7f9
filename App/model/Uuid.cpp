#include "Uuid.hpp"

#include <algorithm>

#include <uuid/uuid.h>

namespace tessel {

Uuid Uuid::generate() {
    uuid_t bytes;
    uuid_generate_random(bytes);
    char text[37];
    uuid_unparse_upper(bytes, text);
    Characters characters;
    std::copy_n(text, characters.size(), characters.begin());
    return Uuid(characters);
}

namespace {

// Each character's upper-case hexadecimal digit, or 0 for anything else.
constexpr std::array<char, 256> hexDigits = [] {
    std::array<char, 256> digits{};
    for (char c = '0'; c <= '9'; ++c) digits[static_cast<unsigned char>(c)] = c;
    for (char c = 'A'; c <= 'F'; ++c) digits[static_cast<unsigned char>(c)] = c;
    for (char c = 'a'; c <= 'f'; ++c) digits[static_cast<unsigned char>(c)] = static_cast<char>(c - 'a' + 'A');
    return digits;
}();

}  // namespace

std::optional<Uuid> Uuid::parse(std::string_view text) {
    Characters upper;
    if (text.size() != upper.size()) return std::nullopt;
    for (std::size_t i = 0; i < upper.size(); ++i) {
        const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
        const char c = dash ? (text[i] == '-' ? '-' : '\0') : hexDigits[static_cast<unsigned char>(text[i])];
        if (c == '\0') return std::nullopt;
        upper[i] = c;
    }
    return Uuid(upper);
}

}  // namespace tessel
