#include "PayBandAllocator.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "PayrollDomain/RoundingRule.hpp"

namespace tessel {
namespace {

using Segment = PayBandAllocationTimelineSegment;

// The two running positions of the walk along the timeline.
struct Position {
    WorkDuration worked;
    WorkDuration elapsed;

    WorkDuration on(DurationBasis basis) const noexcept { return basis == DurationBasis::worked ? worked : elapsed; }
    bool hasReached(const PayBand& band) const noexcept {
        return on(band.entryThreshold().basis) >= band.entryThreshold().duration;
    }
};

// The last band in schedule order whose threshold has been reached; the first band if none.
std::size_t currentBandIndex(const std::vector<PayBand>& bands, const Position& position) {
    for (std::size_t i = bands.size(); i-- > 1;) {
        if (position.hasReached(bands[i])) return i;
    }
    return 0;
}

// The length of the next piece: up to the nearest threshold still ahead, or the whole remainder.
// Elapsed thresholds do not come closer while guaranteed time is paid, so they are ignored then.
std::int64_t nextPieceSeconds(const std::vector<PayBand>& bands, std::size_t current, const Position& position,
                              const Segment& segment, std::int64_t remaining) {
    std::int64_t piece = remaining;
    for (std::size_t i = current + 1; i < bands.size(); ++i) {
        const PayBandEntryThreshold& threshold = bands[i].entryThreshold();
        if (!segment.advancesElapsedTime() && threshold.basis == DurationBasis::elapsed) continue;
        const std::int64_t distance = threshold.duration.seconds() - position.on(threshold.basis).seconds();
        if (distance >= 1) piece = std::min(piece, distance);
    }
    return piece;
}

std::optional<DurationBasis> upperBoundBasis(const std::vector<PayBand>& bands, std::size_t index) {
    if (index + 1 < bands.size()) return bands[index + 1].entryThreshold().basis;
    if (bands[index].upperBound()) return bands[index].entryThreshold().basis;
    return std::nullopt;
}

void checkCoverage(const PayBand& finalBand, const Position& position) {
    const auto& upperBound = finalBand.upperBound();
    if (upperBound && *upperBound < position.on(finalBand.entryThreshold().basis)) {
        throw PayBandAllocationError(*upperBound);
    }
}

std::string hoursText(WorkDuration duration) {
    return RoundingRule(Decimal("0.01"), RoundingMethod::nearestAwayFromZero).round(duration.inHours()).toString();
}

}  // namespace

PayBandAllocationError::PayBandAllocationError(WorkDuration coveredThrough)
    : CaseError(Case::durationExceedsCoverage, "durationExceedsCoverage",
                "The day runs past the end of the pay band schedule, which covers only the first " +
                    hoursText(coveredThrough) + " hours.",
                {{"coveredThroughSeconds", coveredThrough.seconds()}}),
      coveredThrough_(coveredThrough) {}

PayBandAllocationResult PayBandAllocator::allocate(const PayBandAllocationInput& input, const PayBandSchedule& schedule) {
    const std::vector<PayBand>& bands = schedule.bands();
    std::vector<std::int64_t> allocated(bands.size(), 0);
    std::vector<std::size_t> firstReceiptOrder;
    firstReceiptOrder.reserve(bands.size());
    Position position;
    WorkDuration inputDuration;

    for (const Segment& segment : input.segments) {
        if (!segment.advancesWorkedTime()) {
            position.elapsed += segment.duration;
            continue;
        }
        inputDuration += segment.duration;
        for (std::int64_t remaining = segment.duration.seconds(); remaining > 0;) {
            const std::size_t current = currentBandIndex(bands, position);
            const std::int64_t piece = nextPieceSeconds(bands, current, position, segment, remaining);
            if (allocated[current] == 0) firstReceiptOrder.push_back(current);
            allocated[current] += piece;
            remaining -= piece;
            position.worked += WorkDuration(piece);
            if (segment.advancesElapsedTime()) position.elapsed += WorkDuration(piece);
        }
    }
    checkCoverage(bands.back(), position);

    PayBandAllocationResult result{{}, {}, schedule, input};
    result.components.reserve(firstReceiptOrder.size());
    result.trace.entries.reserve(firstReceiptOrder.size());
    for (std::size_t index : firstReceiptOrder) {
        const PayBand& band = bands[index];
        const WorkDuration duration(allocated[index]);
        result.components.push_back({band.ruleID(), duration, band.multiplier()});
        result.trace.entries.push_back({band.ruleID(), band.entryThreshold().duration, band.upperBound(),
                                        upperBoundBasis(bands, index), duration, band.multiplier(),
                                        band.entryThreshold().basis});
    }
    result.trace.inputDuration = inputDuration;
    result.trace.elapsedDuration = position.elapsed;
    return result;
}

}  // namespace tessel
