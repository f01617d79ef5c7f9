#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "PayrollDomain/CompensationPercentage.hpp"
#include "PayrollDomain/DurationBasis.hpp"
#include "PayrollDomain/HourlyPayRate.hpp"
#include "PayrollDomain/RateMultiplier.hpp"
#include "PayrollDomain/RoundingRule.hpp"
#include "PayrollDomain/RuleID.hpp"
#include "PayrollDomain/WorkDuration.hpp"

namespace tessel {
namespace {

// Runs the action and returns the case name of the DomainError it threw ("" when none).
std::string thrownCase(const std::function<void()>& action) {
    try {
        action();
    } catch (const DomainError& error) {
        return error.caseName();
    }
    return "";
}

constexpr auto maxSeconds = std::numeric_limits<std::int64_t>::max();

struct RefusalCase {
    const char* name;
    std::function<void()> action;
    const char* expectedCase;
};

class ValueTypeRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(ValueTypeRefusal, RefusesWithItsOwnCase) { EXPECT_EQ(thrownCase(GetParam().action), GetParam().expectedCase); }

INSTANTIATE_TEST_SUITE_P(
    Construction, ValueTypeRefusal,
    ::testing::Values(
        RefusalCase{"negativeSeconds", [] { WorkDuration(-1); }, "negativeDuration"},
        RefusalCase{"negativeMinutes", [] { WorkDuration::fromHoursMinutesSeconds(1, -1, 0); }, "negativeDuration"},
        RefusalCase{"hoursOverflow", [] { WorkDuration::fromHoursMinutesSeconds(maxSeconds / 3600 + 1, 0, 0); },
                    "arithmeticOverflow"},
        RefusalCase{"sumOverflow", [] { WorkDuration(maxSeconds) + WorkDuration(1); }, "arithmeticOverflow"},
        RefusalCase{"scaleOverflow", [] { WorkDuration(maxSeconds / 2 + 1).scaledBy(2); }, "arithmeticOverflow"},
        RefusalCase{"negativeDifference", [] { WorkDuration(5) - WorkDuration(6); }, "negativeDuration"},
        RefusalCase{"twoLetterCurrency", [] { CurrencyCode("CA"); }, "invalidCode"},
        RefusalCase{"digitInCurrency", [] { CurrencyCode("C4D"); }, "invalidCode"},
        RefusalCase{"fourLetterCurrency", [] { CurrencyCode("USDX"); }, "invalidCode"},
        RefusalCase{"symbolInCurrency", [] { CurrencyCode("U$D"); }, "invalidCode"},
        RefusalCase{"nonAsciiCurrency", [] { CurrencyCode("ÜSD"); }, "invalidCode"},
        RefusalCase{"nanMoney", [] { Money(Decimal::nan(), CurrencyCode::usd()); }, "invalidDecimalResult"},
        RefusalCase{"negativeMultiplier", [] { RateMultiplier(Decimal("-0.5")); }, "negativeValue"},
        RefusalCase{"nanMultiplier", [] { RateMultiplier(Decimal::nan()); }, "invalidDecimal"},
        RefusalCase{"negativeRate", [] { HourlyPayRate(Decimal("-1"), CurrencyCode::usd()); }, "negativeAmount"},
        RefusalCase{"nanRate", [] { HourlyPayRate(Decimal::nan(), CurrencyCode::usd()); }, "invalidAmount"},
        RefusalCase{"negativePercentage", [] { CompensationPercentage(Decimal("-4")); }, "negativePercentage"},
        RefusalCase{"emptyRuleID", [] { RuleID(""); }, "emptyValue"},
        RefusalCase{"blankInRuleID", [] { RuleID("production.band straight"); }, "containsWhitespace"},
        RefusalCase{"paddedRuleID", [] { RuleID(" production.band"); }, "containsWhitespace"},
        RefusalCase{"noBreakSpaceInRuleID", [] { RuleID("production.\u00A0band"); }, "containsWhitespace"},
        RefusalCase{"zeroIncrement", [] { RoundingRule(Decimal("0"), RoundingMethod::towardZero); },
                    "incrementMustBePositive"},
        RefusalCase{"negativeIncrement", [] { RoundingRule(Decimal("-0.01"), RoundingMethod::towardZero); },
                    "incrementMustBePositive"},
        RefusalCase{"nanIncrement", [] { RoundingRule(Decimal::nan(), RoundingMethod::towardZero); },
                    "invalidDecimal"},
        RefusalCase{"roundingNaN", [] { RoundingRule::cents().apply(Decimal::nan()); }, "invalidDecimalResult"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ValueTypes, ZeroValuesAreValid) {
    EXPECT_EQ(WorkDuration(0), WorkDuration());
    EXPECT_EQ(RateMultiplier(Decimal(0)).value(), Decimal(0));
    EXPECT_EQ(HourlyPayRate(Decimal(0), CurrencyCode::usd()).amountPerHour().amount(), Decimal(0));
    EXPECT_EQ(WorkDuration::fromHoursMinutesSeconds(1, 30, 15).seconds(), 5415);
}

TEST(CurrencyCode, UpperCasesAndReportsTheTextAsGiven) {
    EXPECT_EQ(CurrencyCode("cad").code(), "CAD");
    try {
        CurrencyCode("ca");
        FAIL() << "two letters accepted";
    } catch (const CurrencyCode::ValidationError& error) {
        EXPECT_EQ(error.text(), "ca");
    }
}

TEST(Money, CombinesOnlyWithinOneCurrency) {
    const Money usd(Decimal("10"), CurrencyCode::usd());
    const Money cad(Decimal("5"), CurrencyCode("CAD"));
    try {
        (void)(usd + cad);
        FAIL() << "currencies mixed";
    } catch (const Money::ArithmeticError& error) {
        EXPECT_EQ(error.errorCase(), Money::ArithmeticError::Case::currencyMismatch);
        ASSERT_EQ(error.payload().size(), 2u);
        EXPECT_EQ(std::get<std::string>(error.payload()[0].value), "USD");
        EXPECT_EQ(std::get<std::string>(error.payload()[1].value), "CAD");
    }
    EXPECT_EQ((usd * Decimal("1.5")).amount(), Decimal("15"));
    EXPECT_EQ((usd - Money(Decimal("2.50"), CurrencyCode::usd())).amount().toString(), "7.50");
}

struct RoundingCase {
    const char* value;
    const char* increment;
    RoundingMethod method;
    const char* expected;
};

class IncrementRounding : public ::testing::TestWithParam<RoundingCase> {};

TEST_P(IncrementRounding, RoundsToAMultipleOfTheIncrementWithItsPlaces) {
    const auto& c = GetParam();
    const RoundingRule rule(Decimal(c.increment), c.method);
    const auto result = rule.apply(Decimal(c.value));
    EXPECT_EQ(result.after.toString(), c.expected);
    EXPECT_EQ(result.before.toString(), c.value);
    EXPECT_EQ(result.rule, rule);
}

INSTANTIATE_TEST_SUITE_P(
    EachMethodBothSigns, IncrementRounding,
    ::testing::Values(RoundingCase{"2.345", "0.01", RoundingMethod::nearestAwayFromZero, "2.35"},
                      RoundingCase{"2.345", "0.01", RoundingMethod::nearestTiesToEven, "2.34"},
                      RoundingCase{"2.345", "0.01", RoundingMethod::towardZero, "2.34"},
                      RoundingCase{"2.345", "0.01", RoundingMethod::awayFromZero, "2.35"},
                      RoundingCase{"-2.345", "0.01", RoundingMethod::nearestAwayFromZero, "-2.35"},
                      RoundingCase{"-2.345", "0.01", RoundingMethod::nearestTiesToEven, "-2.34"},
                      RoundingCase{"-2.345", "0.01", RoundingMethod::towardZero, "-2.34"},
                      RoundingCase{"-2.345", "0.01", RoundingMethod::awayFromZero, "-2.35"},
                      RoundingCase{"2.13", "0.25", RoundingMethod::nearestAwayFromZero, "2.25"},
                      RoundingCase{"2.13", "0.25", RoundingMethod::towardZero, "2.00"},
                      RoundingCase{"10", "0.01", RoundingMethod::nearestAwayFromZero, "10.00"},
                      RoundingCase{"67.5", "1", RoundingMethod::nearestTiesToEven, "68"}));

TEST(RoundingRule, RoundsMoneyKeepingItsCurrency) {
    const auto result = RoundingRule::cents().apply(Money(Decimal("12.345"), CurrencyCode("CAD")));
    EXPECT_EQ(result.after.amount().toString(), "12.35");
    EXPECT_EQ(result.after.currency().code(), "CAD");
}

TEST(RawValues, RoundTripEveryCase) {
    for (auto method : {RoundingMethod::nearestAwayFromZero, RoundingMethod::nearestTiesToEven,
                        RoundingMethod::towardZero, RoundingMethod::awayFromZero}) {
        EXPECT_EQ(roundingMethodFromRawValue(toRawValue(method)), method);
    }
    EXPECT_EQ(durationBasisFromRawValue("elapsed"), DurationBasis::elapsed);
    EXPECT_FALSE(durationBasisFromRawValue("Elapsed").has_value());
    EXPECT_FALSE(roundingMethodFromRawValue("bankers").has_value());
}

}  // namespace
}  // namespace tessel
