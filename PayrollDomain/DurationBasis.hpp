#pragma once

#include <optional>
#include <string_view>

namespace tessel {

// How a threshold is measured: on time actually worked (meals and other unpaid stretches excluded)
// or on clock time elapsed since call (everything included).
enum class DurationBasis { worked, elapsed };

// What a percentage provision is a percentage of.
enum class PercentageCompensationBasis { straightTimeEarnings };

std::string_view toRawValue(DurationBasis basis) noexcept;
std::optional<DurationBasis> durationBasisFromRawValue(std::string_view raw) noexcept;

std::string_view toRawValue(PercentageCompensationBasis basis) noexcept;
std::optional<PercentageCompensationBasis> percentageCompensationBasisFromRawValue(std::string_view raw) noexcept;

}  // namespace tessel
