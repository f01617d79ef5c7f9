#include "PayBandTargetEntryCalculator.hpp"

namespace tessel {
namespace {

using Segment = PayBandAllocationTimelineSegment;

bool advancesThresholdCounter(const Segment& segment, DurationBasis basis) {
    return basis == DurationBasis::worked ? segment.kind == Segment::Kind::compensableWork
                                          : segment.advancesElapsedTime();
}

// The point of entry on the elapsed-from-call clock, if the threshold is ever reached.
std::optional<WorkDuration> entryPoint(const std::vector<Segment>& segments, const PayBandEntryThreshold& threshold) {
    WorkDuration counter;
    WorkDuration fromCall;
    for (const Segment& segment : segments) {
        if (counter >= threshold.duration) return fromCall;
        const bool advancesCounter = advancesThresholdCounter(segment, threshold.basis);
        if (advancesCounter && counter + segment.duration >= threshold.duration) {
            return segment.advancesElapsedTime() ? fromCall + (threshold.duration - counter) : fromCall;
        }
        if (advancesCounter) counter += segment.duration;
        if (segment.advancesElapsedTime()) fromCall += segment.duration;
    }
    return std::nullopt;
}

}  // namespace

std::optional<PayBandTargetEntry> PayBandTargetEntryCalculator::entry(const std::vector<Segment>& segments,
                                                                      const PayBandSchedule& schedule,
                                                                      const MinimumBandGuarantee& guarantee) {
    const auto index = schedule.indexOf(guarantee.targetPayBandRuleID());
    if (!index || segments.empty()) return std::nullopt;
    const PayBand& band = schedule.bands()[*index];
    const auto entered = entryPoint(segments, band.entryThreshold());
    if (!entered) return std::nullopt;

    // The first whole tenth strictly after entry: an entry exactly on a tenth moves to the next one.
    const WorkDuration firstQualifying((entered->seconds() / payrollTenthSeconds + 1) * payrollTenthSeconds);
    return PayBandTargetEntry{band.ruleID(),        guarantee.ruleID(),          *entered,
                              firstQualifying,      band.entryThreshold(),       guarantee.minimumPaidDuration(),
                              band.multiplier()};
}

}  // namespace tessel
