#pragma once

#include <optional>
#include <string>
#include <vector>

#include "PayrollDomain/PayBandAllocation.hpp"

// Short builders for schedules and timelines in hours, as a payroll rulebook states them.
namespace tessel::testing {

inline WorkDuration hours(double h) { return WorkDuration(static_cast<std::int64_t>(h * 3600)); }

inline PayBand band(const std::string& id, double fromHours, DurationBasis basis, std::optional<double> toHours,
                    const char* multiplier) {
    std::optional<WorkDuration> upper;
    if (toHours) upper = hours(*toHours);
    return PayBand(RuleID(id), {hours(fromHours), basis}, upper, RateMultiplier(Decimal(multiplier)));
}

// Straight time to 8 h worked, time and a half to 12 h worked, double time from 12 h elapsed.
inline PayBandSchedule threeBandSchedule() {
    return PayBandSchedule({band("production.band.straight-time", 0, DurationBasis::worked, 8, "1"),
                            band("production.band.time-and-a-half", 8, DurationBasis::worked, 12, "1.5"),
                            band("production.band.double-time", 12, DurationBasis::elapsed, std::nullopt, "2")});
}

using SegmentKind = PayBandAllocationTimelineSegment::Kind;

inline PayBandAllocationTimelineSegment work(double h) { return {SegmentKind::compensableWork, hours(h)}; }
inline PayBandAllocationTimelineSegment meal(double h) { return {SegmentKind::nonCompensableElapsed, hours(h)}; }
inline PayBandAllocationTimelineSegment guaranteed(double h) { return {SegmentKind::guaranteedCompensation, hours(h)}; }

}  // namespace tessel::testing
