#include <benchmark/benchmark.h>

#include "ThreeBandSchedule.hpp"
#include "PayrollEngine/PayBandAllocator.hpp"

namespace tessel {
namespace {

// One day of 6 h work, a 1 h meal and 6 h work over straight time, time and a half and double time.
void allocateThreeSegmentDay(benchmark::State& state) {
    using Kind = PayBandAllocationTimelineSegment::Kind;
    const PayBandSchedule schedule = bench::threeBandSchedule();
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
