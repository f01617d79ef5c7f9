#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "PayBandSchedule.hpp"

namespace tessel {

// One stretch of a day's timeline, counted from call.
struct PayBandAllocationTimelineSegment {
    enum class Kind {
        compensableWork,         // paid work: advances worked and elapsed time
        nonCompensableElapsed,   // a meal or other unpaid clock time: advances elapsed time only
        guaranteedCompensation,  // paid but not worked, such as guaranteed hours: advances worked time only
    };
    Kind kind = Kind::compensableWork;
    WorkDuration duration;

    bool advancesWorkedTime() const noexcept { return kind != Kind::nonCompensableElapsed; }
    bool advancesElapsedTime() const noexcept { return kind != Kind::guaranteedCompensation; }
    bool operator==(const PayBandAllocationTimelineSegment&) const noexcept = default;
};

std::string_view toRawValue(PayBandAllocationTimelineSegment::Kind kind) noexcept;
std::optional<PayBandAllocationTimelineSegment::Kind> segmentKindFromRawValue(std::string_view raw) noexcept;

struct PayBandAllocationInput {
    std::vector<PayBandAllocationTimelineSegment> segments;  // in timeline order, starting at call
    bool operator==(const PayBandAllocationInput&) const noexcept = default;
};

struct PayBandAllocationComponent {
    RuleID ruleID;
    WorkDuration allocatedDuration;
    RateMultiplier multiplier;
    bool operator==(const PayBandAllocationComponent&) const noexcept = default;
};

struct PayBandAllocationTraceEntry {
    RuleID ruleID;
    WorkDuration inclusiveLowerBound;
    std::optional<WorkDuration> exclusiveUpperBound;
    std::optional<DurationBasis> exclusiveUpperBoundBasis;
    WorkDuration allocatedDuration;
    RateMultiplier multiplier;
    DurationBasis entryThresholdBasis = DurationBasis::worked;
    bool operator==(const PayBandAllocationTraceEntry&) const noexcept = default;
};

struct PayBandAllocationTrace {
    enum class BoundaryConvention { inclusiveLowerExclusiveUpper };

    WorkDuration inputDuration;    // compensable work plus guaranteed compensation
    WorkDuration elapsedDuration;  // compensable work plus non-compensable elapsed time
    BoundaryConvention boundaryConvention = BoundaryConvention::inclusiveLowerExclusiveUpper;
    std::vector<PayBandAllocationTraceEntry> entries;  // one per component, in component order
    bool operator==(const PayBandAllocationTrace&) const noexcept = default;
};

std::string_view toRawValue(PayBandAllocationTrace::BoundaryConvention convention) noexcept;

struct PayBandAllocationResult {
    std::vector<PayBandAllocationComponent> components;  // bands that received time, in order of first receipt
    PayBandAllocationTrace trace;
    PayBandSchedule schedule;
    PayBandAllocationInput input;
};

}  // namespace tessel
