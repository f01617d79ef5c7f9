#include <gtest/gtest.h>

#include "../support/StoreTest.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/rules/RateCards.hpp"

namespace tessel {
namespace {

using namespace std::chrono;

CalendarDate day(int month, int d) { return CalendarDate(year(2026) / month / d); }

struct AmountCase {
    const char* text;
    const char* refusal;  // nullptr: accepted
};

class ScaleAmounts : public ::testing::TestWithParam<AmountCase> {};

TEST_P(ScaleAmounts, AreNonNegativeWithAtMostTwoPlaces) {
    if (!GetParam().refusal) {
        EXPECT_EQ(positions::validatedScaleAmount(GetParam().text), *Decimal::parse(GetParam().text));
        return;
    }
    try {
        positions::validatedScaleAmount(GetParam().text);
        FAIL() << GetParam().text;
    } catch (const ModelValidationError& error) {
        EXPECT_STREQ(error.what(), GetParam().refusal);
    }
}

INSTANTIATE_TEST_SUITE_P(Typed, ScaleAmounts,
                         ::testing::Values(AmountCase{"12.34", nullptr}, AmountCase{"12", nullptr}, AmountCase{"0", nullptr},
                                           AmountCase{"12.345", "Scale hourly rates may contain no more than two decimal places."},
                                           AmountCase{"-1.00", "Enter a valid non-negative scale hourly rate."},
                                           AmountCase{"about 50", "Enter a valid non-negative scale hourly rate."}));

TEST(OccupationCodes, AreDigitsOnly) {
    EXPECT_EQ(positions::validatedOccupationCode("1234"), "1234");
    EXPECT_EQ(positions::validatedOccupationCode(""), std::nullopt);
    EXPECT_THROW(positions::validatedOccupationCode("12A"), ModelValidationError);
}

class RateCards : public testing::StoreTest {
protected:
    Production production = production_repository::create(context, "Harbor Lights", {}, Instant{});
    Instant now = Instant(sys_days(day(11, 1)));

    PositionRecord position(const std::string& name, std::optional<std::string> code = std::nullopt) {
        PositionEdit edit{name, std::optional(code), std::nullopt};
        return positions::add(context, PositionScope::production, production.id, edit, now);
    }
    PositionReadiness readinessOf(const std::string& name) {
        return rate_cards::readiness(context, positions::named(context, PositionScope::production, production.id, name));
    }
};

TEST_F(RateCards, AScaledPositionIsReadyAndTwoOverlappingScalesConflict) {
    const auto gaffer = position("Gaffer", "1234");
    EXPECT_EQ(readinessOf("Gaffer").state, ProductionPositionReadiness::missingScale);
    EXPECT_EQ(readinessOf("Gaffer").reason, "No Scale Rate is available for this Position.");
    rate_cards::addScale(context, production.id, "2026 Basic", gaffer, "52.20", day(1, 1), EmploymentSchedule::daily);
    EXPECT_EQ(readinessOf("Gaffer").state, ProductionPositionReadiness::ready);
    EXPECT_EQ(rate_cards::scaleOn(context, production.id, gaffer.id, EmploymentSchedule::daily, day(11, 2))->hourlyAmount.toString(), "52.20");
    EXPECT_THROW(rate_cards::addScale(context, production.id, "2026 Basic", gaffer, "53.00", day(1, 1), EmploymentSchedule::daily),
                 ModelValidationError);  // "A rate already exists for this effective date."

    rate_cards::addScale(context, production.id, "Local 728", gaffer, "55.00", day(6, 1), EmploymentSchedule::daily);
    const auto conflicts = rate_cards::conflicts(context, production.id);
    ASSERT_EQ(conflicts.size(), 1u);
    EXPECT_EQ(conflicts[0].from, day(6, 1));
    EXPECT_EQ(readinessOf("Gaffer").state, ProductionPositionReadiness::conflictingScale);
    EXPECT_FALSE(rate_cards::scaleOn(context, production.id, gaffer.id, EmploymentSchedule::daily, day(11, 2)).has_value());
    EXPECT_TRUE(rate_cards::scaleOn(context, production.id, gaffer.id, EmploymentSchedule::daily, day(3, 2)).has_value());
}

TEST_F(RateCards, ANewPeriodOfACardEndsTheOneBefore) {
    const auto grip = position("Dolly Grip");
    rate_cards::addScale(context, production.id, "2026 Basic", grip, "40.00", day(1, 1), EmploymentSchedule::daily);
    rate_cards::addScale(context, production.id, "2026 Basic", grip, "41.00", day(8, 1), EmploymentSchedule::daily);
    EXPECT_TRUE(rate_cards::conflicts(context, production.id).empty());
    EXPECT_EQ(rate_cards::scaleOn(context, production.id, grip.id, EmploymentSchedule::daily, day(7, 31))->hourlyAmount.toString(), "40.00");
    EXPECT_EQ(rate_cards::scaleOn(context, production.id, grip.id, EmploymentSchedule::daily, day(8, 1))->hourlyAmount.toString(), "41.00");
    EXPECT_EQ(rate_cards::cards(context, production.id)[0].effectiveEnd, day(7, 31));
}

TEST_F(RateCards, AnAppliedCardIsTheProductionsOwnCopy) {
    positions::add(context, PositionScope::saved, std::nullopt, {"Gaffer", std::optional<std::optional<std::string>>("1234"), std::nullopt}, now);
    auto saved = rate_cards::createSaved(context, "2026 Basic", day(1, 1), std::nullopt, now);
    EXPECT_THROW(rate_cards::apply(context, production.id, rate_cards::savedNamed(context, "2026 Basic"), now), ModelValidationError);  // no scales
    rate_cards::setSavedScale(context, "2026 Basic", "Gaffer", "52.20", EmploymentSchedule::daily, now);
    rate_cards::apply(context, production.id, rate_cards::savedNamed(context, "2026 Basic"), now);

    const auto copy = positions::named(context, PositionScope::production, production.id, "Gaffer");
    EXPECT_EQ(copy.occupationCode, "1234");
    EXPECT_EQ(copy.sourceRatePackageID, saved.id);
    EXPECT_EQ(rate_cards::readiness(context, copy).state, ProductionPositionReadiness::needsReview);
    positions::update(context, copy, {}, now);  // reviewed
    EXPECT_EQ(readinessOf("Gaffer").state, ProductionPositionReadiness::ready);

    // Later edits of the saved card never reach the production.
    rate_cards::setSavedScale(context, "2026 Basic", "Gaffer", "60.00", EmploymentSchedule::weekly, now);
    const auto scales = rate_cards::scales(context, production.id);
    ASSERT_EQ(scales.size(), 1u);
    EXPECT_EQ(scales[0].hourlyAmount.toString(), "52.20");
    EXPECT_EQ(scales[0].schedule, EmploymentSchedule::daily);
}

TEST_F(RateCards, TermsComeFromTheCardOrAFallbackThatSaysWhere) {
    using Kind = PositionTermsResult::Kind;
    positions::add(context, PositionScope::saved, std::nullopt, {"Gaffer", std::nullopt, std::nullopt}, now);
    rate_cards::createSaved(context, "2026 Basic", day(1, 1), std::nullopt, now);
    rate_cards::setSavedScale(context, "2026 Basic", "Gaffer", "52.20", EmploymentSchedule::daily, now);
    const auto applied = rate_cards::apply(context, production.id, rate_cards::savedNamed(context, "2026 Basic"), now);
    const auto gaffer = positions::named(context, PositionScope::production, production.id, "Gaffer");
    const auto fromCard = rate_cards::resolveTerms(context, applied.id, gaffer);
    EXPECT_EQ(fromCard.kind, Kind::resolved);
    EXPECT_EQ(fromCard.provenance, PositionTermsResult::Provenance::explicitTerms);

    // A card made in the production has no terms: the fallback says where the setup comes from.
    const auto grip = position("Grip");
    rate_cards::addScale(context, production.id, "Local", grip, "40.00", day(1, 1), EmploymentSchedule::daily);
    const auto local = rate_cards::cards(context, production.id);
    const auto localCard = std::find_if(local.begin(), local.end(), [](const auto& c) { return c.label == "Local"; });
    EXPECT_EQ(rate_cards::resolveTerms(context, localCard->id, grip).provenance, PositionTermsResult::Provenance::productionRules);
    EXPECT_EQ(rate_cards::resolveTerms(context, localCard->id, grip, std::nullopt, std::string("{}")).provenance,
              PositionTermsResult::Provenance::engagementSnapshot);
    EXPECT_EQ(rate_cards::resolveTerms(context, localCard->id, grip, std::string("{}"), std::string("{}")).provenance,
              PositionTermsResult::Provenance::dayJobSnapshot);

    // The applied card requires its own terms: a production position it prices without them is missing them.
    const auto bestBoy = position("Best Boy");
    rate_cards::addScale(context, production.id, "2026 Basic", bestBoy, "41.00", day(1, 1), EmploymentSchedule::daily);
    const auto missing = rate_cards::resolveTerms(context, applied.id, bestBoy);
    EXPECT_EQ(missing.kind, Kind::missing);
    EXPECT_EQ(readinessOf("Best Boy").state, ProductionPositionReadiness::missingContractSetup);
    EXPECT_EQ(readinessOf("Best Boy").reason, "This Position has no contract setup on Rate Card \u201C2026 Basic\u201D.");
}

// A card position with a code the production does not use yet is still its Position of that name.
TEST_F(RateCards, AnAppliedCardPositionIsTheProductionsOfTheSameCodeElseName) {
    const auto gaffer = position("Gaffer");  // made in the production, without a code
    positions::add(context, PositionScope::saved, std::nullopt, {"Gaffer", std::optional<std::optional<std::string>>("1234"), std::nullopt}, now);
    rate_cards::createSaved(context, "2026 Basic", day(1, 1), std::nullopt, now);
    rate_cards::setSavedScale(context, "2026 Basic", "Gaffer", "52.20", EmploymentSchedule::daily, now);
    rate_cards::apply(context, production.id, rate_cards::savedNamed(context, "2026 Basic"), now);
    const auto all = positions::list(context, PositionScope::production, production.id);
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].id, gaffer.id);
    EXPECT_EQ(rate_cards::scaleOn(context, production.id, gaffer.id, EmploymentSchedule::daily, day(11, 2))->hourlyAmount.toString(), "52.20");
}

TEST_F(RateCards, SavedPositionCodesAreUnique) {
    positions::add(context, PositionScope::saved, std::nullopt, {"Gaffer", std::optional<std::optional<std::string>>("1234"), std::nullopt}, now);
    try {
        positions::add(context, PositionScope::saved, std::nullopt, {"Chief", std::optional<std::optional<std::string>>("1234"), std::nullopt}, now);
        FAIL();
    } catch (const ModelValidationError& error) {
        EXPECT_STREQ(error.what(), "Occupation code 1234 is already used by Saved Position \u201CGaffer\u201D.");
    }
    position("Gaffer", "1234");
    position("Chief Lighting Technician", "1234");  // a production may hold both, and is told to review them
    EXPECT_EQ(positions::duplicateCodes(context, PositionScope::production, production.id),
              std::vector<std::string>{"1234: Gaffer, Chief Lighting Technician"});
}

}  // namespace
}  // namespace tessel
