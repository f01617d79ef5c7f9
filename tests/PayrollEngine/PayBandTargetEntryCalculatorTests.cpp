#include <gtest/gtest.h>

#include "../support/PayBands.hpp"
#include "PayrollEngine/PayBandTargetEntryCalculator.hpp"

namespace tessel {
namespace {

using namespace tessel::testing;

MinimumBandGuarantee guaranteeOn(const std::string& band) {
    return MinimumBandGuarantee(RuleID("production.guarantee.final-band-minimum"), RuleID(band), hours(2));
}

std::optional<PayBandTargetEntry> entryInto(const std::string& band,
                                            std::vector<PayBandAllocationTimelineSegment> segments) {
    return PayBandTargetEntryCalculator::entry(segments, threeBandSchedule(), guaranteeOn(band));
}

struct EntryCase {
    const char* name;
    const char* band;
    std::vector<PayBandAllocationTimelineSegment> segments;
    std::int64_t expectedEntrySeconds;
    std::int64_t expectedFirstQualifyingSeconds;
};

class TargetEntry : public ::testing::TestWithParam<EntryCase> {};

TEST_P(TargetEntry, FindsTheEntryCountedFromCall) {
    const auto& c = GetParam();
    const auto entry = entryInto(c.band, c.segments);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->elapsedDurationFromCall.seconds(), c.expectedEntrySeconds);
    EXPECT_EQ(entry->firstQualifyingElapsedDurationFromCall.seconds(), c.expectedFirstQualifyingSeconds);
}

INSTANTIATE_TEST_SUITE_P(
    Bases, TargetEntry,
    ::testing::Values(
        // Elapsed basis counts the meal: double time at 12 h from call; a tenth boundary moves to the next.
        EntryCase{"elapsedBasis", "production.band.double-time", {work(6), meal(1), work(6)}, 43200, 43560},
        // Worked basis skips the meal: 8 h worked is reached 9 h after call.
        EntryCase{"workedBasis", "production.band.time-and-a-half", {work(6), meal(1), work(6)}, 32400, 32760},
        EntryCase{"firstBandAtCall", "production.band.straight-time", {work(1)}, 0, 360},
        EntryCase{"reachedAtTheVeryEnd", "production.band.time-and-a-half", {work(8)}, 28800, 29160},
        EntryCase{"betweenTenths", "production.band.time-and-a-half", {meal(0.25), work(8)}, 29700, 29880}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(TargetEntry, CarriesTheGuaranteeAndTheBand) {
    const auto entry = entryInto("production.band.double-time", {work(13)});
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->payBandRuleID.value(), "production.band.double-time");
    EXPECT_EQ(entry->guaranteeRuleID.value(), "production.guarantee.final-band-minimum");
    EXPECT_EQ(entry->minimumPaidDuration, hours(2));
    EXPECT_EQ(entry->multiplier.value(), Decimal(2));
    EXPECT_EQ(entry->threshold.basis, DurationBasis::elapsed);
}

TEST(TargetEntry, IsAbsentWhenTheBandIsNeverReachedOrUnknown) {
    EXPECT_FALSE(entryInto("production.band.double-time", {work(6), meal(1), work(4)}).has_value());
    EXPECT_FALSE(entryInto("production.band.unknown", {work(14)}).has_value());
    EXPECT_FALSE(entryInto("production.band.straight-time", {}).has_value());
    // Guaranteed time advances neither the worked counter nor the clock.
    EXPECT_FALSE(entryInto("production.band.time-and-a-half", {work(6), guaranteed(4)}).has_value());
}

}  // namespace
}  // namespace tessel
