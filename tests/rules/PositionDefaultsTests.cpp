#include <gtest/gtest.h>

#include "App/rules/PositionDefaults.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel {
namespace {

using Mode = PositionProvisionMode;

// The bands of a schedule as "ruleID lower-upper xmultiplier basis", the open band ending in "-".
std::vector<std::string> bandsOf(const OrdinaryDayScheduleDraft& schedule) {
    std::vector<std::string> bands;
    for (const auto& band : schedule.enabledBands()) {
        const auto place = band.ruleID.substr(band.ruleID.rfind('.') + 1);
        bands.push_back(place + " " + std::to_string(band.lowerBoundSeconds / 360) + "-" +
                        (band.upperBoundSeconds ? std::to_string(*band.upperBoundSeconds / 360) : "") + " x" + band.multiplier.toString() + " " +
                        std::string(toRawValue(band.entryThresholdBasis)));
    }
    return bands;
}

struct AdjustmentCase {
    const char* name;
    PositionScheduleOverrides changes;
    bool thirdBandEnabled;
    std::vector<std::string> bands;  // in tenths of an hour
};

class ScheduleChanges : public ::testing::TestWithParam<AdjustmentCase> {};

TEST_P(ScheduleChanges, MoveDropOrReviveTheBands) {
    auto schedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
    schedule.thirdBandEnabled = GetParam().thirdBandEnabled;
    EXPECT_EQ(bandsOf(position_defaults::adjusted(schedule, GetParam().changes)), GetParam().bands);
}

INSTANTIATE_TEST_SUITE_P(
    Positions, ScheduleChanges,
    ::testing::Values(
        AdjustmentCase{"NothingChanged", {}, true, {"straight-time 0-80 x1 worked", "time-and-a-half 80-120 x1.5 worked", "double-time 120- x2 worked"}},
        AdjustmentCase{"OvertimeLater",
                       {{}, {Mode::custom, 36000, std::nullopt, std::nullopt}, {}},
                       true,
                       {"straight-time 0-100 x1 worked", "time-and-a-half 100-120 x1.5 worked", "double-time 120- x2 worked"}},
        AdjustmentCase{"OvertimeWithItsMultiplierAndBasis",
                       {{}, {Mode::custom, 28800, Decimal("1.75"), DurationBasis::elapsed}, {}},
                       true,
                       {"straight-time 0-80 x1 worked", "time-and-a-half 80-120 x1.75 elapsed", "double-time 120- x2 worked"}},
        AdjustmentCase{"NoOvertime", {{}, {Mode::none}, {}}, true, {"straight-time 0-120 x1 worked", "double-time 120- x2 worked"}},
        AdjustmentCase{"NoDoubleTime", {{}, {}, {Mode::none}}, true, {"straight-time 0-80 x1 worked", "time-and-a-half 80- x1.5 worked"}},
        // A double-time band switched off in the production's schedule is revived by the position.
        AdjustmentCase{"DoubleTimeRevived",
                       {{}, {}, {Mode::custom, 50400, std::nullopt, std::nullopt}},
                       false,
                       {"straight-time 0-80 x1 worked", "time-and-a-half 80-140 x1.5 worked", "double-time 140- x2 worked"}},
        AdjustmentCase{"StraightTimeOnly", {{}, {Mode::none}, {Mode::none}}, true, {"straight-time 0- x1 worked"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PositionScheduleChanges, ThatLeaveNoScheduleAreRefusedWithTheEditorsSentence) {
    const auto schedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
    // Double time at 9 hours comes before overtime at 10.
    const PositionScheduleOverrides changes{{}, {Mode::custom, 36000}, {Mode::custom, 32400}};
    try {
        position_defaults::adjusted(schedule, changes);
        FAIL();
    } catch (const ProductionRulesetValidationError& error) {
        EXPECT_STREQ(error.what(), "Pay bands must begin at zero, remain ordered without gaps or overlaps, and end with an open band.");
    }
    EXPECT_THROW(position_defaults::adjusted(schedule, {{}, {Mode::custom, 0}, {}}), ProductionRulesetValidationError);
}

TEST(PositionScheduleChanges, SetOrRemoveTheMinimumCall) {
    const auto schedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
    const auto longer = position_defaults::adjusted(schedule, {{Mode::custom, 36000}, {}, {}});
    EXPECT_TRUE(longer.dailyMinimumEnabled);
    EXPECT_EQ(longer.dailyMinimumSeconds, 36000);
    EXPECT_FALSE(position_defaults::adjusted(schedule, {{Mode::none}, {}, {}}).dailyMinimumEnabled);
}

TEST(PositionScheduleChanges, APersonsChangesWinProvisionByProvision) {
    const PositionScheduleOverrides position{{Mode::custom, 36000}, {Mode::custom, 36000}, {}};
    const PositionScheduleOverrides person{{}, {Mode::none}, {Mode::custom, 43200}};
    const auto merged = position_defaults::merged(position, person);
    EXPECT_EQ(merged.minimumCall, position.minimumCall);
    EXPECT_EQ(merged.overtime.mode, Mode::none);
    EXPECT_EQ(merged.doubleTime, person.doubleTime);
}

TEST(PositionDefaultsData, KeepsKeysItDoesNotReadAndReadsWhatItWrites) {
    const std::string stored = R"({"hourlyAmount":"52.20","currencyCode":"USD","futureKey":[1,2]})";
    const PositionScheduleOverrides changes{{}, {Mode::custom, 36000, Decimal("1.5"), DurationBasis::elapsed}, {Mode::none}};
    const std::string written = position_defaults::withOverrides(stored, changes);
    EXPECT_NE(written.find(R"("futureKey":[1,2])"), std::string::npos);
    const auto read = position_defaults::read(written);
    EXPECT_EQ(read.scheduleOverrides, changes);
    EXPECT_EQ(read.hourlyAmount, Decimal("52.20"));
    EXPECT_TRUE(read.changesSchedule());
    // Removing every change removes the key.
    EXPECT_FALSE(position_defaults::read(position_defaults::withOverrides(written, PositionScheduleOverrides{})).scheduleOverrides);
    EXPECT_EQ(position_defaults::readOverrides(position_defaults::writeOverrides(changes)), changes);
}

TEST(PositionDefaultsData, ReadsAMultiplierWrittenAsANumberExactly) {
    const auto read = position_defaults::read(
        R"({"scheduleOverrides":{"overtimeMode":"custom","overtimeThresholdSeconds":36000,"overtimeMultiplier":1.75}})");
    ASSERT_TRUE(read.scheduleOverrides);
    EXPECT_EQ(read.scheduleOverrides->overtime.multiplier, Decimal("1.75"));
}

TEST(PositionDefaultsData, RefusesWhatItCannotRead) {
    for (const char* stored : {R"([1])", R"({"hourlyAmount": )", R"({"scheduleOverrides":{"overtimeMode":"sometimes"}})",
                               R"({"scheduleOverrides":{"overtimeMode":"custom"}})", R"({"scheduleOverrides":{"minimumCallSeconds":-1}})",
                               R"({"ordinaryDaySchedule":{"bands":3}})"}) {
        EXPECT_THROW(position_defaults::read(stored), MalformedInputError) << stored;
    }
}

}  // namespace
}  // namespace tessel
