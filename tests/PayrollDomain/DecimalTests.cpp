#include <gtest/gtest.h>

#include <limits>

#include "PayrollDomain/Decimal.hpp"

namespace tessel {
namespace {

class DecimalRoundTrip : public ::testing::TestWithParam<const char*> {};

TEST_P(DecimalRoundTrip, KeepsItsTextAndScale) {
    const auto parsed = Decimal::parse(GetParam());
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->toString(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(PosixText, DecimalRoundTrip,
                         ::testing::Values("12.50", "-0.5", "3", "0.000", "330.00", "0.0001",
                                           "1234567890123456789012345678901234",
                                           "-98765432109876543210.12345678901234"));

class DecimalRefusal : public ::testing::TestWithParam<const char*> {};

TEST_P(DecimalRefusal, RefusesTextThatIsNotAPosixDecimal) { EXPECT_FALSE(Decimal::parse(GetParam()).has_value()); }

INSTANTIATE_TEST_SUITE_P(NotPosix, DecimalRefusal,
                         ::testing::Values("1,5", " ", "", "abc", "1e3", "-", ".5", "5.", "+1", " 1", "1 ",
                                           "1.2.3", "NaN", "Infinity", "1_000", "٣",
                                           // 35 significant digits would be rounded, so they are refused
                                           "12345678901234567890123456789012345"));

TEST(Decimal, NegativeZeroIsWrittenWithoutSign) { EXPECT_EQ(Decimal("-0.00").toString(), "0.00"); }

TEST(Decimal, ArithmeticIsExactInBaseTen) {
    EXPECT_EQ((Decimal("0.1") + Decimal("0.2")).toString(), "0.3");
    EXPECT_EQ((Decimal("330.00") - Decimal("0.01")).toString(), "329.99");
    EXPECT_EQ((Decimal("45.00") * Decimal("1.5")).toString(), "67.500");
    EXPECT_EQ((Decimal("10") / Decimal("4")).toString(), "2.5");
    EXPECT_EQ((Decimal("100") * Decimal("10")).toString(), "1000");
    EXPECT_EQ((-Decimal("2.5")).toString(), "-2.5");
}

TEST(Decimal, OneThirdHasThirtyFourSignificantDigits) {
    EXPECT_EQ((Decimal(1) / Decimal(3)).toString(), "0.3333333333333333333333333333333333");
}

TEST(Decimal, EqualValuesOfDifferentScaleCompareAndHashAlike) {
    EXPECT_EQ(Decimal("12.5"), Decimal("12.50"));
    EXPECT_EQ(Decimal("12.5").hash(), Decimal("12.50").hash());
    EXPECT_EQ(Decimal("0").hash(), Decimal("-0.000").hash());
    EXPECT_LT(Decimal("-1"), Decimal("0.5"));
    EXPECT_GT(Decimal("12.51"), Decimal("12.5"));
}

TEST(Decimal, OperationsWithoutAFiniteResultAreNaN) {
    EXPECT_TRUE((Decimal(1) / Decimal(0)).isNaN());
    EXPECT_TRUE((Decimal(0) / Decimal(0)).isNaN());
    EXPECT_TRUE((Decimal::nan() + Decimal(1)).isNaN());
    EXPECT_EQ(Decimal::nan().toString(), "NaN");
    EXPECT_FALSE(Decimal::nan() < Decimal(0));
    EXPECT_FALSE(Decimal::nan() > Decimal(0));
    EXPECT_NE(Decimal::nan(), Decimal(0));
    EXPECT_FALSE(Decimal::nan().isNegative());
}

struct WholeNumberCase {
    const char* value;
    RoundingMethod method;
    const char* expected;
};

class DecimalWholeNumberRounding : public ::testing::TestWithParam<WholeNumberCase> {};

TEST_P(DecimalWholeNumberRounding, RoundsWithTheMethod) {
    EXPECT_EQ(Decimal(GetParam().value).roundedToWholeNumber(GetParam().method), Decimal(GetParam().expected));
}

INSTANTIATE_TEST_SUITE_P(
    EachMethodBothSigns, DecimalWholeNumberRounding,
    ::testing::Values(WholeNumberCase{"2.5", RoundingMethod::nearestAwayFromZero, "3"},
                      WholeNumberCase{"-2.5", RoundingMethod::nearestAwayFromZero, "-3"},
                      WholeNumberCase{"2.4", RoundingMethod::nearestAwayFromZero, "2"},
                      WholeNumberCase{"2.5", RoundingMethod::nearestTiesToEven, "2"},
                      WholeNumberCase{"3.5", RoundingMethod::nearestTiesToEven, "4"},
                      WholeNumberCase{"-2.5", RoundingMethod::nearestTiesToEven, "-2"},
                      WholeNumberCase{"2.9", RoundingMethod::towardZero, "2"},
                      WholeNumberCase{"-2.9", RoundingMethod::towardZero, "-2"},
                      WholeNumberCase{"2.1", RoundingMethod::awayFromZero, "3"},
                      WholeNumberCase{"-2.1", RoundingMethod::awayFromZero, "-3"},
                      WholeNumberCase{"7", RoundingMethod::awayFromZero, "7"}));

TEST(Decimal, ConvertsExactWholeNumbersToAndFromSixtyFourBits) {
    constexpr auto max = std::numeric_limits<std::int64_t>::max();
    constexpr auto min = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(Decimal(max).toInt64(), max);
    EXPECT_EQ(Decimal(min).toInt64(), min);
    EXPECT_EQ(Decimal("42.00").toInt64(), 42);
    EXPECT_FALSE(Decimal("2.5").toInt64().has_value());
    EXPECT_FALSE(Decimal("9223372036854775808").toInt64().has_value());
    EXPECT_FALSE(Decimal::nan().toInt64().has_value());
}

TEST(Decimal, ReadsJSONNumberTokensWithExponent) {
    EXPECT_EQ(Decimal::parseJSONNumber("1.5e2"), Decimal("150"));
    EXPECT_EQ(Decimal::parseJSONNumber("-25E-1"), Decimal("-2.5"));
    EXPECT_FALSE(Decimal::parseJSONNumber("1e").has_value());
    EXPECT_FALSE(Decimal::parseJSONNumber("1e99999").has_value());
    // Found by fuzzing: 1E79 is 80 digits of plain text, which no Decimal text can hold or read back.
    EXPECT_FALSE(Decimal::parseJSONNumber("1E79").has_value());
    const auto largest = Decimal::parseJSONNumber("1E33");
    ASSERT_TRUE(largest.has_value());
    EXPECT_EQ(Decimal::parse(largest->toString()), largest);
}

TEST(Decimal, TakesThePlacesOfAnExemplar) {
    EXPECT_EQ(Decimal("10").withPlacesOf(Decimal("0.01")).toString(), "10.00");
    EXPECT_TRUE(Decimal("10.005").withPlacesOf(Decimal("0.01")).isNaN());
}

}  // namespace
}  // namespace tessel
