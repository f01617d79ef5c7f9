#include <gtest/gtest.h>

#include "../support/PayBands.hpp"
#include "PayrollEngine/DailyMinimumGuaranteeAdjuster.hpp"
#include "PayrollEngine/MinimumBandGuaranteeAdjuster.hpp"
#include "PayrollEngine/PayBandAllocator.hpp"

namespace tessel {
namespace {

using namespace tessel::testing;
using DailyReason = DailyMinimumGuaranteeTraceEntry::Reason;
using BandReason = MinimumBandGuaranteeTraceEntry::Reason;
constexpr auto worked = DurationBasis::worked;
constexpr auto elapsed = DurationBasis::elapsed;
constexpr auto actualWorkRequired = DailyMinimumGuaranteeEligibility::actualWorkRequired;
constexpr auto confirmedWorkedDay = DailyMinimumGuaranteeEligibility::confirmedWorkedDay;

PayBandSchedule straightAndOvertime() {
    return PayBandSchedule({band("st", 0, worked, 8, "1"), band("ot", 8, worked, std::nullopt, "1.5")});
}

DailyMinimumGuarantee dailyMinimum(double h) {
    return DailyMinimumGuarantee(RuleID("production.guarantee.daily-minimum"), hours(h));
}

DailyMinimumGuaranteeAdjustmentResult adjustDaily(std::vector<PayBandAllocationTimelineSegment> day,
                                                  const PayBandSchedule& schedule, std::optional<double> minimum,
                                                  DailyMinimumGuaranteeEligibility eligibility = actualWorkRequired) {
    std::optional<DailyMinimumGuarantee> guarantee;
    if (minimum) guarantee = dailyMinimum(*minimum);
    return DailyMinimumGuaranteeAdjuster::adjust(PayBandAllocator::allocate({std::move(day)}, schedule), guarantee,
                                                 eligibility);
}

// band: actual, daily minimum, band-specific, paid (hours)
using Paid = std::tuple<std::string, double, double, double, double>;

std::vector<Paid> paid(const std::vector<PayBandCompensationBasisComponent>& components) {
    std::vector<Paid> rows;
    for (const auto& c : components) {
        rows.emplace_back(c.payBandRuleID.value(), c.actualAllocatedDuration.seconds() / 3600.0,
                          c.dailyMinimumGuaranteedDuration.seconds() / 3600.0,
                          c.bandSpecificGuaranteedDuration.seconds() / 3600.0, c.paidDuration.seconds() / 3600.0);
    }
    return rows;
}

TEST(DailyMinimum, TopsAShortDayUpInTheBandInForceAtItsEnd) {
    const auto result = adjustDaily({work(5)}, straightAndOvertime(), 8);
    EXPECT_EQ(paid(result.components), (std::vector<Paid>{{"st", 5, 3, 0, 8}}));
    ASSERT_TRUE(result.traceEntry.has_value());
    EXPECT_EQ(result.traceEntry->reason, DailyReason::appliedMinimumNotMet);
    EXPECT_EQ(result.traceEntry->guaranteedAdditionalDuration, hours(3));
    EXPECT_EQ(result.traceEntry->compensationBasisDuration, hours(8));
    EXPECT_EQ(result.components[0].appliedGuaranteeRuleID, RuleID("production.guarantee.daily-minimum"));
}

TEST(DailyMinimum, GuaranteedTimeCrossesIntoTheNextWorkedBand) {
    const auto result = adjustDaily({work(6)}, straightAndOvertime(), 10);
    EXPECT_EQ(paid(result.components), (std::vector<Paid>{{"st", 6, 2, 0, 8}, {"ot", 0, 2, 0, 2}}));
}

TEST(DailyMinimum, GuaranteedTimeNeverReachesAnElapsedBandByItself) {
    const PayBandSchedule schedule({band("st", 0, worked, 8, "1"), band("dt", 8, elapsed, std::nullopt, "2")});
    const auto result = adjustDaily({work(6)}, schedule, 10);
    EXPECT_EQ(paid(result.components), (std::vector<Paid>{{"st", 6, 4, 0, 10}}));
}

struct DailyCase {
    const char* name;
    double workedHours;
    DailyMinimumGuaranteeEligibility eligibility;
    DailyReason reason;
    double paidHours;
};

class DailyMinimumReasons : public ::testing::TestWithParam<DailyCase> {};

TEST_P(DailyMinimumReasons, DecideWhetherTimeIsAdded) {
    const auto& c = GetParam();
    std::vector<PayBandAllocationTimelineSegment> day;
    if (c.workedHours > 0) day.push_back(work(c.workedHours));
    const auto result = adjustDaily(day, straightAndOvertime(), 8, c.eligibility);
    ASSERT_TRUE(result.traceEntry.has_value());
    EXPECT_EQ(result.traceEntry->reason, c.reason);
    EXPECT_EQ(result.compensationBasisAllocation.trace.inputDuration, hours(c.paidHours));
}

INSTANTIATE_TEST_SUITE_P(
    Eligibility, DailyMinimumReasons,
    ::testing::Values(DailyCase{"noWorkNotConfirmed", 0, actualWorkRequired, DailyReason::notAppliedNoActualWork, 0},
                      DailyCase{"noWorkConfirmed", 0, confirmedWorkedDay, DailyReason::appliedConfirmedWorkedDay, 8},
                      DailyCase{"metExactly", 8, actualWorkRequired, DailyReason::notAppliedMinimumMetOrExceeded, 8},
                      DailyCase{"exceeded", 9, confirmedWorkedDay, DailyReason::notAppliedMinimumMetOrExceeded, 9},
                      DailyCase{"short", 7.5, actualWorkRequired, DailyReason::appliedMinimumNotMet, 8}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(DailyMinimum, WithoutAGuaranteePaysTheAllocationAsItIs) {
    const auto result = adjustDaily({work(9)}, straightAndOvertime(), std::nullopt);
    EXPECT_FALSE(result.traceEntry.has_value());
    EXPECT_EQ(paid(result.components), (std::vector<Paid>{{"st", 8, 0, 0, 8}, {"ot", 1, 0, 0, 1}}));
}

MinimumBandGuaranteeAdjustmentResult adjustBands(const DailyMinimumGuaranteeAdjustmentResult& daily,
                                                 const std::vector<MinimumBandGuarantee>& guarantees) {
    return MinimumBandGuaranteeAdjuster::adjust(daily.actualAllocation, daily.components, guarantees);
}

MinimumBandGuarantee bandMinimum(const std::string& target, double h, const std::string& id = "band-minimum") {
    return MinimumBandGuarantee(RuleID(id), RuleID(target), hours(h));
}

TEST(BandMinimum, TopsUpAReachedBand) {
    const auto daily = adjustDaily({work(12.5)}, threeBandSchedule(), std::nullopt);
    const auto result = adjustBands(daily, {bandMinimum("production.band.double-time", 2)});
    EXPECT_EQ(paid(result.components).back(), (Paid{"production.band.double-time", 0.5, 0, 1.5, 2}));
    EXPECT_EQ(result.components.back().appliedGuaranteeRuleID, RuleID("band-minimum"));
    EXPECT_EQ(result.traceEntries.at(0).reason, BandReason::appliedMinimumNotMet);
    EXPECT_EQ(result.traceEntries.at(0).guaranteedAdditionalDuration, hours(1.5));
}

TEST(BandMinimum, DoesNotCreateABandThatWasNeverReached) {
    const auto daily = adjustDaily({work(10)}, threeBandSchedule(), std::nullopt);
    const auto result = adjustBands(daily, {bandMinimum("production.band.double-time", 2)});
    EXPECT_EQ(result.components.size(), 2u);
    EXPECT_EQ(result.traceEntries.at(0).reason, BandReason::notAppliedNoCompensationBasisAllocation);
}

TEST(BandMinimum, CountsTimeTheDailyMinimumAlreadyPaid) {
    // 9 h worked topped up to 12 h: overtime has 1 h actual and 3 h from the daily minimum.
    const auto daily = adjustDaily({work(9)}, straightAndOvertime(), 12);
    const auto satisfied = adjustBands(daily, {bandMinimum("ot", 3)});
    EXPECT_EQ(satisfied.traceEntries.at(0).reason, BandReason::notAppliedMinimumSatisfiedByExistingPaidDuration);
    EXPECT_EQ(satisfied.traceEntries.at(0).preBandGuaranteePaidDuration, hours(4));
    EXPECT_EQ(paid(satisfied.components).back(), (Paid{"ot", 1, 3, 0, 4}));

    const auto toppedUp = adjustBands(daily, {bandMinimum("ot", 5)});
    EXPECT_EQ(paid(toppedUp.components).back(), (Paid{"ot", 1, 3, 1, 5}));
    EXPECT_EQ(toppedUp.components.back().guaranteedAdditionalDuration, hours(4));

    const auto met = adjustBands(daily, {bandMinimum("ot", 1)});
    EXPECT_EQ(met.traceEntries.at(0).reason, BandReason::notAppliedMinimumMetOrExceeded);
}

struct ListCase {
    const char* name;
    std::vector<MinimumBandGuarantee> guarantees;
    MinimumBandGuaranteeAdjuster::AdjustmentError::Case expected;
};

class BandMinimumList : public ::testing::TestWithParam<ListCase> {};

TEST_P(BandMinimumList, IsCheckedBeforeAnythingIsAdjusted) {
    const auto daily = adjustDaily({work(13)}, threeBandSchedule(), std::nullopt);
    try {
        adjustBands(daily, GetParam().guarantees);
        FAIL() << "list accepted";
    } catch (const MinimumBandGuaranteeAdjuster::AdjustmentError& error) {
        EXPECT_EQ(error.errorCase(), GetParam().expected);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Errors, BandMinimumList,
    ::testing::Values(
        ListCase{"duplicateID",
                 {bandMinimum("production.band.double-time", 2, "g"), bandMinimum("production.band.unknown", 2, "g")},
                 MinimumBandGuaranteeAdjuster::AdjustmentError::Case::duplicateGuaranteeRuleID},
        ListCase{"twoForOneBand",
                 {bandMinimum("production.band.unknown", 2, "g1"), bandMinimum("production.band.unknown", 3, "g2")},
                 MinimumBandGuaranteeAdjuster::AdjustmentError::Case::multipleGuaranteesForTargetPayBand},
        ListCase{"unknownBand",
                 {bandMinimum("production.band.unknown", 2)},
                 MinimumBandGuaranteeAdjuster::AdjustmentError::Case::targetPayBandNotFound}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(GuaranteeRecords, RefuseZeroMinimumsAndSelfTargets) {
    EXPECT_THROW(DailyMinimumGuarantee(RuleID("d"), WorkDuration()), DailyMinimumGuarantee::ValidationError);
    EXPECT_THROW(MinimumBandGuarantee(RuleID("b"), RuleID("x"), WorkDuration()), MinimumBandGuarantee::ValidationError);
    EXPECT_THROW(MinimumBandGuarantee(RuleID("x"), RuleID("x"), hours(1)), MinimumBandGuarantee::ValidationError);
}

}  // namespace
}  // namespace tessel
