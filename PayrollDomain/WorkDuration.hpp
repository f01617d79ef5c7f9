#pragma once

#include <compare>
#include <cstdint>
#include <functional>

#include "Decimal.hpp"
#include "DomainError.hpp"

namespace tessel {

enum class WorkDurationValidationErrorCase { negativeDuration, arithmeticOverflow };

class WorkDurationValidationError : public CaseError<WorkDurationValidationErrorCase> {
public:
    using Case = WorkDurationValidationErrorCase;
    explicit WorkDurationValidationError(Case errorCase);
};

// An amount of time in whole seconds; never negative. Every sum and difference is checked.
class WorkDuration {
public:
    using ValidationError = WorkDurationValidationError;
    static constexpr std::int64_t secondsPerHour = 3600;

    constexpr WorkDuration() noexcept = default;  // zero, the neutral start of every sum
    explicit WorkDuration(std::int64_t seconds);
    static WorkDuration fromHoursMinutesSeconds(std::int64_t hours, std::int64_t minutes, std::int64_t seconds);
    static WorkDuration hours(std::int64_t hours) { return fromHoursMinutesSeconds(hours, 0, 0); }

    constexpr std::int64_t seconds() const noexcept { return seconds_; }
    // The duration in hours as an exact decimal where the quotient terminates (34 digits otherwise).
    Decimal inHours() const noexcept;

    WorkDuration operator+(WorkDuration other) const;
    WorkDuration operator-(WorkDuration other) const;  // refuses a negative result
    WorkDuration scaledBy(std::int64_t factor) const;
    WorkDuration& operator+=(WorkDuration other) { return *this = *this + other; }

    constexpr auto operator<=>(const WorkDuration&) const noexcept = default;

private:
    std::int64_t seconds_ = 0;
};

}  // namespace tessel

template <>
struct std::hash<tessel::WorkDuration> {
    std::size_t operator()(tessel::WorkDuration d) const noexcept { return std::hash<std::int64_t>{}(d.seconds()); }
};
