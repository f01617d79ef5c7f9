#include <gtest/gtest.h>

#include "../support/PayBands.hpp"
#include "PayrollEngine/PayBandAllocator.hpp"

namespace tessel {
namespace {

using namespace tessel::testing;
constexpr auto worked = DurationBasis::worked;
constexpr auto elapsed = DurationBasis::elapsed;

// Allocated hours per band, in component order.
std::vector<std::pair<std::string, double>> allocatedHours(const PayBandAllocationResult& result) {
    std::vector<std::pair<std::string, double>> hoursByBand;
    for (const auto& component : result.components) {
        hoursByBand.emplace_back(component.ruleID.value(), component.allocatedDuration.seconds() / 3600.0);
    }
    return hoursByBand;
}

PayBandAllocationResult allocate(std::vector<PayBandAllocationTimelineSegment> segments,
                                 const PayBandSchedule& schedule = threeBandSchedule()) {
    return PayBandAllocator::allocate({std::move(segments)}, schedule);
}

TEST(PayBandAllocator, SplitsADayWithAMealAcrossMixedBases) {
    const auto result = allocate({work(6), meal(1), work(6)});
    // Time and a half runs from 8 h worked until double time begins at 12 h elapsed (11 h worked).
    EXPECT_EQ(allocatedHours(result), (std::vector<std::pair<std::string, double>>{
                                          {"production.band.straight-time", 8},
                                          {"production.band.time-and-a-half", 3},
                                          {"production.band.double-time", 1}}));
    EXPECT_EQ(result.trace.inputDuration, hours(12));
    EXPECT_EQ(result.trace.elapsedDuration, hours(13));
    ASSERT_EQ(result.trace.entries.size(), 3u);
    EXPECT_EQ(result.trace.entries[0].exclusiveUpperBound, hours(8));
    EXPECT_EQ(result.trace.entries[0].exclusiveUpperBoundBasis, worked);
    EXPECT_EQ(result.trace.entries[1].inclusiveLowerBound, hours(8));
    EXPECT_EQ(result.trace.entries[1].exclusiveUpperBoundBasis, elapsed);  // the next band's basis
    EXPECT_EQ(result.trace.entries[2].exclusiveUpperBound, std::nullopt);
    EXPECT_EQ(result.trace.entries[2].exclusiveUpperBoundBasis, std::nullopt);
    EXPECT_EQ(result.trace.entries[2].entryThresholdBasis, elapsed);
}

TEST(PayBandAllocator, ResumesInDoubleTimeWhenItsThresholdPassesDuringAMeal) {
    const auto result = allocate({work(11), meal(2), work(1)});
    EXPECT_EQ(allocatedHours(result), (std::vector<std::pair<std::string, double>>{
                                          {"production.band.straight-time", 8},
                                          {"production.band.time-and-a-half", 3},
                                          {"production.band.double-time", 1}}));
}

TEST(PayBandAllocator, AMealAloneAllocatesNothing) {
    const auto result = allocate({meal(1)});
    EXPECT_TRUE(result.components.empty());
    EXPECT_TRUE(result.trace.entries.empty());
    EXPECT_EQ(result.trace.elapsedDuration, hours(1));
    EXPECT_EQ(result.trace.inputDuration, WorkDuration());
}

TEST(PayBandAllocator, GuaranteedTimeNeverEntersAnElapsedBandByItself) {
    const PayBandSchedule schedule({band("st", 0, worked, 8, "1"), band("dt", 8, elapsed, std::nullopt, "2")});
    const auto result = allocate({work(6), guaranteed(4)}, schedule);
    EXPECT_EQ(allocatedHours(result), (std::vector<std::pair<std::string, double>>{{"st", 10}}));
    EXPECT_EQ(result.trace.inputDuration, hours(10));
    EXPECT_EQ(result.trace.elapsedDuration, hours(6));
}

TEST(PayBandAllocator, GuaranteedTimeCrossesIntoTheNextWorkedBand) {
    const auto result = allocate({work(6), guaranteed(3)});
    EXPECT_EQ(allocatedHours(result), (std::vector<std::pair<std::string, double>>{
                                          {"production.band.straight-time", 8},
                                          {"production.band.time-and-a-half", 1}}));
}

TEST(PayBandAllocator, SkipsZeroLengthSegments) {
    const auto result = allocate({work(0), meal(0), work(2)});
    EXPECT_EQ(allocatedHours(result),
              (std::vector<std::pair<std::string, double>>{{"production.band.straight-time", 2}}));
}

TEST(PayBandAllocator, AClosedFinalBandLimitsTheDay) {
    const PayBandSchedule schedule({band("st", 0, worked, 8, "1"), band("ot", 8, worked, 10, "1.5")});
    EXPECT_NO_THROW(allocate({work(10)}, schedule));
    try {
        allocate({work(11)}, schedule);
        FAIL() << "an 11-hour day fitted a 10-hour schedule";
    } catch (const PayBandAllocator::AllocationError& error) {
        EXPECT_EQ(error.coveredThrough(), hours(10));
        EXPECT_EQ(error.caseName(), "durationExceedsCoverage");
    }
    const auto closed = allocate({work(9)}, schedule);
    EXPECT_EQ(closed.trace.entries.back().exclusiveUpperBoundBasis, worked);  // its own basis
}

TEST(PayBandAllocator, CoverageOfAClosedElapsedBandCountsMeals) {
    const PayBandSchedule schedule({band("st", 0, worked, 8, "1"), band("ot", 8, elapsed, 10, "1.5")});
    EXPECT_THROW(allocate({work(5), meal(2), work(4)}, schedule), PayBandAllocator::AllocationError);
}

TEST(PayBandAllocator, KeepsScheduleAndInputInTheResult) {
    const auto result = allocate({work(1)});
    EXPECT_EQ(result.schedule, threeBandSchedule());
    EXPECT_EQ(result.input.segments.size(), 1u);
}

}  // namespace
}  // namespace tessel
