#pragma once

#include "PayrollDomain/PayBandSchedule.hpp"

namespace tessel::bench {

// Straight time to 8 h worked, time and a half to 12 h worked, double time from 12 h elapsed.
inline PayBandSchedule threeBandSchedule() {
    const auto band = [](const char* id, std::int64_t from, DurationBasis basis, std::optional<std::int64_t> to,
                         const char* multiplier) {
        std::optional<WorkDuration> upper;
        if (to) upper = WorkDuration(*to);
        return PayBand(RuleID(id), {WorkDuration(from), basis}, upper, RateMultiplier(Decimal(multiplier)));
    };
    return PayBandSchedule({band("production.band.straight-time", 0, DurationBasis::worked, 28800, "1"),
                            band("production.band.time-and-a-half", 28800, DurationBasis::worked, 43200, "1.5"),
                            band("production.band.double-time", 43200, DurationBasis::elapsed, std::nullopt, "2")});
}

}  // namespace tessel::bench
