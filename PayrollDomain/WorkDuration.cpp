#include "WorkDuration.hpp"

namespace tessel {
namespace {

using Case = WorkDurationValidationErrorCase;

std::int64_t checkedAdd(std::int64_t a, std::int64_t b) {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) throw WorkDurationValidationError(Case::arithmeticOverflow);
    return sum;
}

std::int64_t checkedMultiply(std::int64_t a, std::int64_t b) {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) throw WorkDurationValidationError(Case::arithmeticOverflow);
    return product;
}

}  // namespace

WorkDurationValidationError::WorkDurationValidationError(Case errorCase)
    : CaseError(errorCase,
                errorCase == Case::negativeDuration ? "negativeDuration" : "arithmeticOverflow",
                errorCase == Case::negativeDuration ? "A duration cannot be negative."
                                                    : "The duration is too long to calculate with.") {}

WorkDuration::WorkDuration(std::int64_t seconds) : seconds_(seconds) {
    if (seconds < 0) throw ValidationError(Case::negativeDuration);
}

WorkDuration WorkDuration::fromHoursMinutesSeconds(std::int64_t hours, std::int64_t minutes, std::int64_t seconds) {
    if (hours < 0 || minutes < 0 || seconds < 0) throw ValidationError(Case::negativeDuration);
    const std::int64_t total =
        checkedAdd(checkedAdd(checkedMultiply(hours, secondsPerHour), checkedMultiply(minutes, 60)), seconds);
    return WorkDuration(total);
}

Decimal WorkDuration::inHours() const noexcept { return Decimal(seconds_) / Decimal(secondsPerHour); }

WorkDuration WorkDuration::operator+(WorkDuration other) const { return WorkDuration(checkedAdd(seconds_, other.seconds_)); }

WorkDuration WorkDuration::operator-(WorkDuration other) const {
    // Both operands are non-negative, so the difference cannot overflow; it can only go below zero.
    return WorkDuration(seconds_ - other.seconds_);
}

WorkDuration WorkDuration::scaledBy(std::int64_t factor) const {
    return WorkDuration(checkedMultiply(seconds_, factor));
}

}  // namespace tessel
