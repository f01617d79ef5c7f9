#pragma once

#include <optional>
#include <string>

#include "App/expected/PayrollReviewRecords.hpp"

// Which hourly rate pays a crew member's day, and why: the engagement's own (over-scale) rate, the scale
// of the position they are engaged in, or for the day only a Job for Today or a rerate.
namespace tessel {

// A position's scale on a date: the amount and the Rate Card it comes from.
struct ScaleOnDate {
    Decimal hourlyAmount;
    std::string currencyCode;
    Uuid rateCardID;
    std::string rateCardLabel;
    CalendarDate cardEffectiveStart;
};

// A position a day is paid in: the engagement's, a Job for Today's or a rerate's, with its scale if a
// Rate Card in force prices it.
struct PositionOnDate {
    Uuid positionID;
    std::string positionName;
    std::optional<ScaleOnDate> scale{};
};

struct OverScaleRate {
    Decimal hourlyAmount;
    std::string currencyCode;
    CalendarDate effectiveDate;
};

struct RateFacts {
    std::optional<OverScaleRate> individual{};    // the engagement's own dated rate in force
    std::optional<PositionOnDate> engagementPosition{};
    bool followsPositionScale = false;             // the engagement is paid its position's scale
    std::optional<PositionOnDate> jobForToday{};
    std::optional<PositionOnDate> rerate{};
};

// The precedence, for one day:
// 1. A Job for Today: its scale, unless the person's own rate is higher (kept, with the "below current
//    pay" warning); without a scale the day has no rate, or provisionally the own rate with the warning.
// 2. A rerate, the same way.
// 3. The engagement's position with a scale: the own rate when it is at least the scale; the scale when
//    the own rate is below it (the floor, with the warning) or when there is none or the engagement
//    follows the scale. A scale in another currency than the own rate leaves the own rate, with the warning.
// 4. The engagement's position without a scale: the own rate provisionally, with the warning; else none.
// 5. No position: the own rate, else none.
// A day without a resolved rate may still carry the warning that explains it.
struct RateResolution {
    std::optional<ResolvedRate> rate;
    std::optional<ResolvedRate::Warning> warning;  // also when there is no rate
};

RateResolution resolveRate(const RateFacts& facts);

// The warning in the review's words.
std::string rateWarningWords(const ResolvedRate::Warning& warning, bool hasRate);

}  // namespace tessel
