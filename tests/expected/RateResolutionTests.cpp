#include <gtest/gtest.h>

#include "App/expected/RateResolution.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using Source = ResolvedRate::Source;
using Kind = ResolvedRate::Warning::Kind;

const Uuid card = Uuid::generate(), gaffer = Uuid::generate(), operatorPosition = Uuid::generate();

OverScaleRate own(const char* amount, const char* currency = "USD") { return {*Decimal::parse(amount), currency, CalendarDate(year(2026) / 11 / 1)}; }
PositionOnDate scaled(const Uuid& id, const char* name, const char* amount) {
    return {id, name, ScaleOnDate{*Decimal::parse(amount), "USD", card, "2026 Basic", CalendarDate(year(2026) / 1 / 1)}};
}
PositionOnDate unscaled(const Uuid& id, const char* name) { return {id, name, std::nullopt}; }

struct ResolutionCase {
    const char* name;
    RateFacts facts;
    std::optional<const char*> paid;  // the hourly amount, or no rate
    std::optional<Source> source;
    std::optional<Kind> warning;
    const char* words;  // the warning in words, or ""
};

class RateResolutions : public ::testing::TestWithParam<ResolutionCase> {};

TEST_P(RateResolutions, PayTheRightSourceAndSayWhy) {
    const auto& c = GetParam();
    const auto resolution = resolveRate(c.facts);
    ASSERT_EQ(resolution.rate.has_value(), c.paid.has_value());
    if (c.paid) {
        EXPECT_EQ(resolution.rate->hourlyAmount.toString(), *c.paid);
        EXPECT_EQ(resolution.rate->source, *c.source);
        EXPECT_EQ(resolution.rate->warning.has_value(), c.warning.has_value());
    }
    ASSERT_EQ(resolution.warning.has_value(), c.warning.has_value());
    if (c.warning) {
        EXPECT_EQ(resolution.warning->kind, *c.warning);
        EXPECT_EQ(rateWarningWords(*resolution.warning, resolution.rate.has_value()), c.words);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sources, RateResolutions,
    ::testing::Values(
        ResolutionCase{"ownRateOnly", {own("45.00")}, "45.00", Source::overScale, std::nullopt, ""},
        ResolutionCase{"nothing", {}, std::nullopt, std::nullopt, std::nullopt, ""},
        ResolutionCase{"overScaleAboveScale", {own("60.00"), scaled(gaffer, "Gaffer", "52.20")}, "60.00", Source::overScale, std::nullopt, ""},
        ResolutionCase{"scaleOnly", {std::nullopt, scaled(gaffer, "Gaffer", "52.20")}, "52.20", Source::positionScale, std::nullopt, ""},
        ResolutionCase{"followsScale", {own("60.00"), scaled(gaffer, "Gaffer", "52.20"), true}, "52.20", Source::positionScale, std::nullopt, ""},
        ResolutionCase{"overScaleBelowScale", {own("45.00"), scaled(gaffer, "Gaffer", "52.20")}, "52.20", Source::scaleFloor,
                       Kind::overScaleBelowScale,
                       "Over-Scale Rate is below Scale: The stored individual rate of 45.00/hr is below the applicable 52.20/hr Scale Rate. Payroll uses "
                       "the Scale floor."},
        ResolutionCase{"currencyMismatch", {own("45.00", "CAD"), scaled(gaffer, "Gaffer", "52.20")}, "45.00", Source::overScale, Kind::currencyMismatch,
                       "The Over-Scale rate is in CAD but the Scale of Gaffer is in USD; payroll uses the Over-Scale rate."},
        ResolutionCase{"positionWithoutScale", {own("45.00"), unscaled(gaffer, "Gaffer")}, "45.00", Source::overScale, Kind::positionScaleMissing,
                       "No applicable Daily Scale rate was found for Gaffer. Payroll provisionally uses the existing Over-Scale rate."},
        ResolutionCase{"positionWithoutScaleOrRate", {std::nullopt, unscaled(gaffer, "Gaffer")}, std::nullopt, std::nullopt, Kind::positionScaleMissing,
                       "No applicable Daily Scale rate was found for Gaffer; this day has no resolved rate."},
        ResolutionCase{"jobAtAHigherScale", {own("45.00"), scaled(gaffer, "Gaffer", "52.20"), false, scaled(operatorPosition, "Operator", "70.00")},
                       "70.00", Source::dailyJobPositionScale, std::nullopt, ""},
        ResolutionCase{"jobBelowCurrentPay", {own("80.00"), std::nullopt, false, scaled(operatorPosition, "Operator", "70.00")}, "80.00",
                       Source::dailyJobOverScale, Kind::dailyJobBelowCurrentPay,
                       "Job for Today below current pay rate: 70.00/hr; payroll continues using $80.00/hr."},
        ResolutionCase{"jobWithoutScale", {own("45.00"), std::nullopt, false, unscaled(operatorPosition, "Operator")}, "45.00", Source::dailyJobOverScale,
                       Kind::dailyJobPositionScaleMissing, "Job for Today scale is missing; payroll provisionally uses the existing Over-Scale rate."},
        ResolutionCase{"jobWithoutScaleOrRate", {std::nullopt, std::nullopt, false, unscaled(operatorPosition, "Operator")}, std::nullopt, std::nullopt,
                       Kind::dailyJobPositionScaleMissing, "Job for Today scale is missing; this day has no resolved rate."},
        ResolutionCase{"rerate", {own("45.00"), std::nullopt, false, std::nullopt, scaled(operatorPosition, "Operator", "70.00")}, "70.00",
                       Source::reratedPositionScale, std::nullopt, ""},
        ResolutionCase{"rerateBelowCurrentPay", {own("80.00"), std::nullopt, false, std::nullopt, scaled(operatorPosition, "Operator", "70.00")}, "80.00",
                       Source::rerateOverScale, Kind::rerateBelowCurrentPay,
                       "Rerate below current pay rate: 70.00/hr; payroll continues using $80.00/hr."},
        ResolutionCase{"rerateWithoutScale", {own("45.00"), std::nullopt, false, std::nullopt, unscaled(operatorPosition, "Operator")}, "45.00",
                       Source::rerateOverScale, Kind::reratedPositionScaleMissing,
                       "No applicable Daily Scale rate was found for Operator. Payroll provisionally uses the existing Over-Scale rate."},
        ResolutionCase{"jobBeforeRerate",
                       {own("45.00"), std::nullopt, false, scaled(gaffer, "Gaffer", "52.20"), scaled(operatorPosition, "Operator", "70.00")}, "52.20",
                       Source::dailyJobPositionScale, std::nullopt, ""}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
