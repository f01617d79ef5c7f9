#include <benchmark/benchmark.h>

#include "PayrollEngine/PayBandAllocator.hpp"

namespace tessel {
namespace {

PayBandSchedule threeBands() {
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

// One day of 6 h work, a 1 h meal and 6 h work over straight time, time and a half and double time.
void allocateThreeSegmentDay(benchmark::State& state) {
    using Kind = PayBandAllocationTimelineSegment::Kind;
    const PayBandSchedule schedule = threeBands();
    const PayBandAllocationInput day{{{Kind::compensableWork, WorkDuration(21600)},
                                      {Kind::nonCompensableElapsed, WorkDuration(3600)},
                                      {Kind::compensableWork, WorkDuration(21600)}}};
    for (auto _ : state) {
        benchmark::DoNotOptimize(PayBandAllocator::allocate(day, schedule));
    }
}
BENCHMARK(allocateThreeSegmentDay);

}  // namespace
}  // namespace tessel
