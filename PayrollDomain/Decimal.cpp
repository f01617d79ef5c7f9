#include "Decimal.hpp"

#include <cstring>

#define DECIMAL_CALL_BY_REFERENCE 0
#define DECIMAL_GLOBAL_ROUNDING 0
#define DECIMAL_GLOBAL_EXCEPTION_FLAGS 0
extern "C" {
#include <bid_conf.h>
#include <bid_functions.h>
}

namespace tessel {
namespace {

// Arithmetic rounds to nearest, ties to even, as IEEE 754 prescribes for decimal arithmetic;
// only results beyond 34 digits (such as 1 ÷ 3) are ever rounded.
constexpr _IDEC_round arithmeticRounding = BID_ROUNDING_TO_NEAREST;
constexpr _IDEC_flags invalidFlag = BID_INVALID_EXCEPTION;
constexpr _IDEC_flags inexactFlag = BID_INEXACT_EXCEPTION;

template <typename Bits>
BID_UINT128 toBID(const Bits& bits) noexcept {
    BID_UINT128 value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template <typename Bits>
Bits fromBID(const BID_UINT128& value) noexcept {
    Bits bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }

// Scans -?digits(.digits)? and, where allowed, an exponent [eE][+-]?digits; counts the mantissa's
// digits from its first non-zero one so that nothing beyond 34 significant digits is rounded away.
bool isDecimalText(std::string_view text, bool allowExponent) noexcept {
    std::size_t i = 0;
    if (i < text.size() && text[i] == '-') ++i;
    const std::size_t integerStart = i;
    while (i < text.size() && isDigit(text[i])) ++i;
    if (i == integerStart) return false;
    if (i < text.size() && text[i] == '.') {
        const std::size_t fractionStart = ++i;
        while (i < text.size() && isDigit(text[i])) ++i;
        if (i == fractionStart) return false;
    }
    const std::string_view mantissa = text.substr(0, i);
    if (allowExponent && i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
        ++i;
        if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
        const std::size_t exponentStart = i;
        while (i < text.size() && isDigit(text[i])) ++i;
        // Far beyond any amount this program handles, and well inside decimal128's exponent range.
        if (i == exponentStart || i - exponentStart > 4) return false;
    }
    if (i != text.size()) return false;

    int significant = 0;
    bool seenNonZero = false;
    for (char c : mantissa) {
        if (!isDigit(c)) continue;
        seenNonZero = seenNonZero || c != '0';
        if (seenNonZero) ++significant;
    }
    return significant <= Decimal::significantDigits;
}

// Turns the library's scientific form ("+1250E-2") into plain text ("12.50").
std::string plainText(const std::string& scientific) {
    const bool negative = scientific.front() == '-';
    const std::size_t e = scientific.find('E');
    std::string digits = scientific.substr(1, e - 1);
    const long exponent = std::stol(scientific.substr(e + 1));

    std::string text;
    if (exponent >= 0) {
        text = digits;
        if (digits != "0") text.append(static_cast<std::size_t>(exponent), '0');
    } else {
        const auto scale = static_cast<std::size_t>(-exponent);
        if (digits.size() <= scale) digits.insert(0, scale - digits.size() + 1, '0');
        text = digits.substr(0, digits.size() - scale) + "." + digits.substr(digits.size() - scale);
    }
    const bool zero = text.find_first_not_of("0.") == std::string::npos;
    return (negative && !zero) ? "-" + text : text;
}

}  // namespace

Decimal::Decimal() noexcept : Decimal(std::int64_t{0}) {}

Decimal::Decimal(std::int64_t value) noexcept : bits_(fromBID<Bits>(bid128_from_int64(value))) {}

Decimal::Decimal(std::string_view posixText) : Decimal() {
    const auto parsed = parse(posixText);
    if (!parsed) throw std::invalid_argument("not a POSIX decimal: " + std::string(posixText));
    *this = *parsed;
}

std::optional<Decimal> Decimal::parse(std::string_view posixText) noexcept {
    if (!isDecimalText(posixText, false)) return std::nullopt;
    return fromCheckedText(posixText);
}

std::optional<Decimal> Decimal::parseJSONNumber(std::string_view token) noexcept {
    if (!isDecimalText(token, true)) return std::nullopt;
    // An exponent can reach values (1E79) whose plain text holds more digits than a Decimal keeps; such
    // a value could be written but never read back, so it is refused here.
    auto value = fromCheckedText(token);
    try {
        if (value && !isDecimalText(value->toString(), false)) return std::nullopt;
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
    return value;
}

std::optional<Decimal> Decimal::fromCheckedText(std::string_view checked) noexcept {
    std::string text(checked);
    _IDEC_flags flags = 0;
    const BID_UINT128 value = bid128_from_string(text.data(), arithmeticRounding, &flags);
    if (flags & (invalidFlag | inexactFlag) || !bid128_isFinite(value)) return std::nullopt;
    return Decimal(fromBID<Bits>(value));
}

Decimal Decimal::nan() noexcept { return Decimal(fromBID<Bits>(bid128_nan(""))); }

Decimal Decimal::finiteOrNaN(Bits bits) noexcept {
    return bid128_isFinite(toBID(bits)) ? Decimal(bits) : nan();
}

bool Decimal::isNaN() const noexcept { return bid128_isNaN(toBID(bits_)) != 0; }

bool Decimal::isZero() const noexcept { return bid128_isZero(toBID(bits_)) != 0; }

bool Decimal::isNegative() const noexcept { return !isNaN() && !isZero() && bid128_isSigned(toBID(bits_)); }

std::string Decimal::toString() const {
    if (isNaN()) return "NaN";
    char buffer[128];
    _IDEC_flags flags = 0;
    bid128_to_string(buffer, toBID(bits_), &flags);
    return plainText(buffer);
}

std::optional<std::int64_t> Decimal::toInt64() const noexcept {
    if (isNaN()) return std::nullopt;
    _IDEC_flags flags = 0;
    const BID_SINT64 value = bid128_to_int64_xint(toBID(bits_), &flags);
    if (flags & (invalidFlag | inexactFlag)) return std::nullopt;
    return value;
}

Decimal Decimal::roundedToWholeNumber(RoundingMethod method) const noexcept {
    _IDEC_flags flags = 0;
    const BID_UINT128 x = toBID(bits_);
    switch (method) {
        case RoundingMethod::nearestAwayFromZero:
            return finiteOrNaN(fromBID<Bits>(bid128_round_integral_nearest_away(x, &flags)));
        case RoundingMethod::nearestTiesToEven:
            return finiteOrNaN(fromBID<Bits>(bid128_round_integral_nearest_even(x, &flags)));
        case RoundingMethod::towardZero:
            return finiteOrNaN(fromBID<Bits>(bid128_round_integral_zero(x, &flags)));
        case RoundingMethod::awayFromZero:
            return finiteOrNaN(fromBID<Bits>(isNegative() ? bid128_round_integral_negative(x, &flags)
                                                          : bid128_round_integral_positive(x, &flags)));
    }
    return nan();
}

Decimal Decimal::withPlacesOf(const Decimal& exemplar) const noexcept {
    _IDEC_flags flags = 0;
    const BID_UINT128 result = bid128_quantize(toBID(bits_), toBID(exemplar.bits_), arithmeticRounding, &flags);
    if (flags & (invalidFlag | inexactFlag)) return nan();
    return finiteOrNaN(fromBID<Bits>(result));
}

Decimal Decimal::operator-() const noexcept { return finiteOrNaN(fromBID<Bits>(bid128_negate(toBID(bits_)))); }

Decimal operator+(const Decimal& lhs, const Decimal& rhs) noexcept {
    _IDEC_flags flags = 0;
    return Decimal::finiteOrNaN(
        fromBID<Decimal::Bits>(bid128_add(toBID(lhs.bits_), toBID(rhs.bits_), arithmeticRounding, &flags)));
}

Decimal operator-(const Decimal& lhs, const Decimal& rhs) noexcept {
    _IDEC_flags flags = 0;
    return Decimal::finiteOrNaN(
        fromBID<Decimal::Bits>(bid128_sub(toBID(lhs.bits_), toBID(rhs.bits_), arithmeticRounding, &flags)));
}

Decimal operator*(const Decimal& lhs, const Decimal& rhs) noexcept {
    _IDEC_flags flags = 0;
    return Decimal::finiteOrNaN(
        fromBID<Decimal::Bits>(bid128_mul(toBID(lhs.bits_), toBID(rhs.bits_), arithmeticRounding, &flags)));
}

Decimal operator/(const Decimal& lhs, const Decimal& rhs) noexcept {
    _IDEC_flags flags = 0;
    return Decimal::finiteOrNaN(
        fromBID<Decimal::Bits>(bid128_div(toBID(lhs.bits_), toBID(rhs.bits_), arithmeticRounding, &flags)));
}

bool operator==(const Decimal& lhs, const Decimal& rhs) noexcept {
    if (lhs.isNaN() || rhs.isNaN()) return lhs.isNaN() && rhs.isNaN();
    _IDEC_flags flags = 0;
    return bid128_quiet_equal(toBID(lhs.bits_), toBID(rhs.bits_), &flags) != 0;
}

std::partial_ordering operator<=>(const Decimal& lhs, const Decimal& rhs) noexcept {
    if (lhs.isNaN() || rhs.isNaN()) return std::partial_ordering::unordered;
    _IDEC_flags flags = 0;
    if (bid128_quiet_less(toBID(lhs.bits_), toBID(rhs.bits_), &flags)) return std::partial_ordering::less;
    if (bid128_quiet_greater(toBID(lhs.bits_), toBID(rhs.bits_), &flags)) return std::partial_ordering::greater;
    return std::partial_ordering::equivalent;
}

std::size_t Decimal::hash() const noexcept {
    // Equal numbers of different scale (12.5, 12.50) must hash alike, so hash the shortest text.
    std::string text = toString();
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') text.pop_back();
    }
    return std::hash<std::string>{}(text);
}

}  // namespace tessel
