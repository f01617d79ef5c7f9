#include <gtest/gtest.h>

#include "../support/PayBands.hpp"

namespace tessel {
namespace {

using namespace tessel::testing;
using Case = PayBandSchedule::ValidationError::Case;
constexpr auto worked = DurationBasis::worked;
constexpr auto elapsed = DurationBasis::elapsed;

struct ScheduleCase {
    const char* name;
    std::vector<PayBand> bands;
    Case expected;
    std::vector<std::string> expectedRuleIDs;  // the rule identifiers the error names, in order
};

class ScheduleValidation : public ::testing::TestWithParam<ScheduleCase> {};

TEST_P(ScheduleValidation, ReportsTheFirstProblemFound) {
    const auto& c = GetParam();
    try {
        PayBandSchedule schedule(c.bands);
        FAIL() << "schedule accepted";
    } catch (const PayBandSchedule::ValidationError& error) {
        EXPECT_EQ(error.errorCase(), c.expected) << error.description();
        std::vector<std::string> named;
        for (const auto& field : error.payload()) {
            if (auto text = std::get_if<std::string>(&field.value)) named.push_back(*text);
        }
        EXPECT_EQ(named, c.expectedRuleIDs);
    }
}

INSTANTIATE_TEST_SUITE_P(
    EachCase, ScheduleValidation,
    ::testing::Values(
        ScheduleCase{"empty", {}, Case::emptyBands, {}},
        ScheduleCase{"firstNotAtZero", {band("a", 1, worked, std::nullopt, "1")}, Case::firstBandMustBeginAtZero, {}},
        // A repeated identifier is refused even where every bound is valid.
        ScheduleCase{"duplicate",
                     {band("a", 0, worked, 8, "1"), band("a", 8, worked, std::nullopt, "1.5")},
                     Case::duplicateRuleID,
                     {"a"}},
        ScheduleCase{"duplicateBeforeOrder",
                     {band("a", 0, worked, 8, "1"), band("b", 10, worked, 12, "1"), band("a", 9, worked, 20, "2")},
                     Case::duplicateRuleID,
                     {"a"}},
        ScheduleCase{"outOfOrder",
                     {band("a", 0, worked, 8, "1"), band("b", 8, worked, 12, "1.5"), band("c", 6, elapsed, 20, "2")},
                     Case::bandsOutOfOrder,
                     {"b", "c"}},
        ScheduleCase{"openEndedNotFinal",
                     {band("a", 0, worked, std::nullopt, "1"), band("b", 8, worked, std::nullopt, "1.5")},
                     Case::openEndedBandMustBeFinal,
                     {"a"}},
        ScheduleCase{"gap",
                     {band("a", 0, worked, 8, "1"), band("b", 9, worked, std::nullopt, "1.5")},
                     Case::gap,
                     {"a", "b"}},
        ScheduleCase{"overlap",
                     {band("a", 0, worked, 8, "1"), band("b", 7, worked, std::nullopt, "1.5")},
                     Case::overlap,
                     {"a", "b"}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PayBandSchedule, FirstBandErrorCarriesTheActualThreshold) {
    try {
        PayBandSchedule({band("a", 1.5, worked, std::nullopt, "1")});
        FAIL();
    } catch (const PayBandSchedule::ValidationError& error) {
        ASSERT_EQ(error.payload().size(), 1u);
        EXPECT_EQ(error.payload()[0].name, "actualSeconds");
        EXPECT_EQ(std::get<std::int64_t>(error.payload()[0].value), 5400);
    }
}

TEST(PayBandSchedule, AcceptsMixedBasesAndAClosedFinalBand) {
    EXPECT_NO_THROW(threeBandSchedule());
    EXPECT_NO_THROW(PayBandSchedule({band("a", 0, worked, 8, "1"), band("b", 8, elapsed, 10, "1.5")}));
}

TEST(PayBand, UpperBoundMustLieAboveTheThreshold) {
    EXPECT_THROW(band("a", 8, worked, 8, "1"), PayBand::ValidationError);
    EXPECT_THROW(band("a", 8, worked, 7, "1"), PayBand::ValidationError);
    EXPECT_NO_THROW(band("a", 8, worked, 8.1, "1"));
}

}  // namespace
}  // namespace tessel
