#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tessel {

// An entity identifier in its standard upper-case text form ("0F8C…-…"). The 36 characters are held in
// place rather than in a string of their own: a review reads thousands of identifiers, and each would
// otherwise be an allocation.
class Uuid {
public:
    static Uuid generate();
    // Accepts either case; refuses anything that is not the 8-4-4-4-12 hexadecimal form.
    static std::optional<Uuid> parse(std::string_view text);

    std::string text() const { return std::string(view()); }
    std::string_view view() const noexcept { return {characters_.data(), characters_.size()}; }
    // Byte order, which is the order of the text; memcmp rather than a character loop, since reviews
    // keep their facts in maps keyed by identifier.
    std::strong_ordering operator<=>(const Uuid& other) const noexcept {
        return std::memcmp(characters_.data(), other.characters_.data(), characters_.size()) <=> 0;
    }
    bool operator==(const Uuid& other) const noexcept {
        return std::memcmp(characters_.data(), other.characters_.data(), characters_.size()) == 0;
    }

private:
    using Characters = std::array<char, 36>;
    explicit Uuid(const Characters& characters) noexcept : characters_(characters) {}
    Characters characters_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::Uuid> {
    // All 36 characters in five word-sized loads, mixed: identifiers from other sources (an archive's,
    // say) need not be random at any one place, and std::hash of the text costs a byte loop per lookup.
    std::size_t operator()(const tessel::Uuid& id) const noexcept {
        const char* text = id.view().data();
        std::uint64_t hash = 0x9E3779B97F4A7C15ULL;
        for (std::size_t offset : {0, 8, 16, 24, 28}) {
            std::uint64_t word = 0;
            std::memcpy(&word, text + offset, sizeof word);
            hash = (hash ^ word) * 0xff51afd7ed558ccdULL;
            hash ^= hash >> 32;
        }
        return static_cast<std::size_t>(hash);
    }
};
