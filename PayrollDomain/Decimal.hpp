#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tessel {

// How a value is rounded to a whole number. The case names are the raw values stored in rules.
enum class RoundingMethod {
    nearestAwayFromZero,  // halves away from zero (plain rounding)
    nearestTiesToEven,    // halves to the even neighbour (bankers' rounding)
    towardZero,
    awayFromZero,
};

// An exact base-10 number with 34 significant digits and a NaN state, over IEEE 754 decimal128.
// It keeps its scale: "12.50" reads back as "12.50", yet compares equal to 12.5.
// Any operation that has no finite result (0 ÷ 0, 1 ÷ 0, arithmetic on NaN) yields NaN.
class Decimal {
public:
    static constexpr int significantDigits = 34;

    Decimal() noexcept;  // zero
    explicit Decimal(std::int64_t value) noexcept;
    // For literals in code; throws std::invalid_argument when the text is not a POSIX decimal.
    explicit Decimal(std::string_view posixText);

    // Reads POSIX decimal text: an optional minus sign, digits, optionally a point followed by digits.
    // No grouping, no exponent, no blanks, at most 34 significant digits; anything else is refused.
    static std::optional<Decimal> parse(std::string_view posixText) noexcept;
    // Reads the text of a JSON number token, which may carry an exponent ("1.5e2"); exact or refused.
    static std::optional<Decimal> parseJSONNumber(std::string_view token) noexcept;
    static Decimal nan() noexcept;

    bool isNaN() const noexcept;
    bool isZero() const noexcept;      // false for NaN
    bool isNegative() const noexcept;  // strictly below zero; false for NaN and for -0

    // Plain POSIX text that keeps the scale and never uses an exponent; NaN is written "NaN".
    std::string toString() const;
    // The value when it is a whole number within the 64-bit range, otherwise nothing.
    std::optional<std::int64_t> toInt64() const noexcept;

    Decimal roundedToWholeNumber(RoundingMethod method) const noexcept;
    // The same value written with the exemplar's number of places ("10" as "10.00" for 0.01);
    // NaN when that would change the value.
    Decimal withPlacesOf(const Decimal& exemplar) const noexcept;

    Decimal operator-() const noexcept;
    friend Decimal operator+(const Decimal& lhs, const Decimal& rhs) noexcept;
    friend Decimal operator-(const Decimal& lhs, const Decimal& rhs) noexcept;
    friend Decimal operator*(const Decimal& lhs, const Decimal& rhs) noexcept;
    friend Decimal operator/(const Decimal& lhs, const Decimal& rhs) noexcept;

    // Numeric equality (12.5 == 12.50). NaN equals NaN so that records holding a Decimal keep
    // ordinary value semantics; NaN is unordered against every number.
    friend bool operator==(const Decimal& lhs, const Decimal& rhs) noexcept;
    friend std::partial_ordering operator<=>(const Decimal& lhs, const Decimal& rhs) noexcept;

    std::size_t hash() const noexcept;

private:
    struct Bits {
        std::uint64_t w[2];
    };
    explicit Decimal(Bits bits) noexcept : bits_(bits) {}
    static Decimal finiteOrNaN(Bits bits) noexcept;
    static std::optional<Decimal> fromCheckedText(std::string_view checked) noexcept;

    Bits bits_;
};

}  // namespace tessel

template <>
struct std::hash<tessel::Decimal> {
    std::size_t operator()(const tessel::Decimal& value) const noexcept { return value.hash(); }
};
