#include "DurationBasis.hpp"

namespace tessel {

std::string_view toRawValue(DurationBasis basis) noexcept { return basis == DurationBasis::worked ? "worked" : "elapsed"; }

std::optional<DurationBasis> durationBasisFromRawValue(std::string_view raw) noexcept {
    if (raw == "worked") return DurationBasis::worked;
    if (raw == "elapsed") return DurationBasis::elapsed;
    return std::nullopt;
}

std::string_view toRawValue(PercentageCompensationBasis) noexcept { return "straightTimeEarnings"; }

std::optional<PercentageCompensationBasis> percentageCompensationBasisFromRawValue(std::string_view raw) noexcept {
    if (raw == "straightTimeEarnings") return PercentageCompensationBasis::straightTimeEarnings;
    return std::nullopt;
}

}  // namespace tessel
