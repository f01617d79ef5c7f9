#include <gtest/gtest.h>

#include "../support/TemporaryFolder.hpp"
#include "../support/StoreTest.hpp"
#include "App/model/TesselPersistence.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
const CalendarDate november1 = 2026y / November / 1;
const Instant now = sys_days(november1) + hours(9);

class Rulesets : public testing::StoreTest {
protected:
    Production production = ProductionSetup::createProduction(context, "Night Harbor", {}, now);
    Uuid revision = *ProductionRulesets::currentRevision(context, production.id, november1);

    PayrollRuleConfiguration current() { return ProductionRulesets::readConfiguration(context, production.id, revision); }
};

TEST_F(Rulesets, ANewProductionGetsTheExampleDefaults) {
    const auto configuration = current();
    const auto& rules = configuration.payrollRules;
    EXPECT_EQ(rules.name, "Custom Production Rules");
    EXPECT_EQ(rules.sourceNotes, "Current example defaults; not a source-backed agreement preset.");
    EXPECT_EQ(rules.effectiveFrom, 2025y / January / 1);
    EXPECT_EQ(rules.localSchedule, ProductionRulesets::exampleSchedule(RulesLocality::local));
    EXPECT_EQ(rules.distantSchedule.bands[0].ruleID, "production.distant.band.straight-time");
    EXPECT_EQ(configuration.mealPenaltyRules, MealPenaltyRules::defaults());
    EXPECT_EQ(configuration.mealPenaltyRules.schedules[0].earlyOrdinalAmounts[3], Decimal("13.50"));
    EXPECT_EQ(ProductionRulesets::setupStatusLine(ProductionRulesets::setupState(context, revision)),
              "Review the payroll rules for this production.");
}

TEST_F(Rulesets, ApplyingAndReadingBackRoundTrips) {
    auto configuration = current();
    configuration.payrollRules.name = "Feature Agreement";
    configuration.payrollRules.localSchedule.bands[2].entryThresholdBasis = DurationBasis::elapsed;
    configuration.payrollRules.localSchedule.bandMinimumTargetRuleID = "production.band.double-time";
    configuration.payrollRules.distantSchedule.thirdBandEnabled = false;
    configuration.payrollRules.localSixthDaySchedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
    configuration.payrollRules.localSixthDaySchedule->bands[0].multiplier = Decimal("1.5");
    configuration.mealPenaltyRules.timingRules = MealPenaltyTimingRulesDraft{};
    configuration.idleCompensation = IdleCompensationRuleDraft{28800, Decimal("1")};
    configuration.holidayCompensation.emplace(HolidayRuleContext::dailyLocal,
                                              UnworkedHolidayRule(UnworkedHolidayRule::Formula::fixedStraightTimeDuration, 28800, Decimal(1)));
    configuration.additionalCompensation.push_back({"perDiem", true, Decimal("60.00"), "USD", false, true});
    ProductionRulesets::apply(context, production.id, revision, configuration, now);
    const auto stored = current();
    EXPECT_EQ(rules_json::toJSON(stored), rules_json::toJSON(configuration));
    EXPECT_EQ(ProductionRulesets::setupStatusLine(ProductionRulesets::setupState(context, revision)),
              "Payroll rules have been reviewed for this production.");
}

TEST_F(Rulesets, ApplyingToADeletedRevisionIsRefused) {
    const auto configuration = current();
    store->database().exec("DELETE FROM ProductionRulesetRevision");
    try {
        ProductionRulesets::apply(context, production.id, revision, configuration, now);
        FAIL();
    } catch (const ProductionRulesetValidationError& error) {
        EXPECT_EQ(error.description(), "This Ruleset revision is no longer available. Close the editor and reopen the Ruleset.");
    }
}

TEST(SetupStatusLine, SaysWhereTheRulesCameFrom) {
    using Origin = ProductionRulesetOrigin;
    const auto line = [](Origin origin, std::optional<std::string> name, bool reviewed) {
        return ProductionRulesets::setupStatusLine({origin, std::move(name), reviewed ? std::optional(now) : std::nullopt});
    };
    EXPECT_EQ(line(Origin::savedRulesetCopy, "Feature Agreement", true), "Based on a copy of ‘Feature Agreement’, reviewed for this production.");
    EXPECT_EQ(line(Origin::automaticDefault, std::nullopt, true), "Payroll rules have been reviewed for this production.");
    EXPECT_EQ(line(Origin::automaticDefault, std::nullopt, false), "Review the payroll rules for this production.");
    EXPECT_EQ(line(Origin::savedRulesetCopy, "Feature Agreement", false), "Using a copy of ‘Feature Agreement’.");
    EXPECT_EQ(line(Origin::savedRulesetCopy, std::nullopt, false), "Review the existing payroll rules for this production.");
    EXPECT_EQ(line(Origin::legacyUnknown, std::nullopt, false), "Review the existing payroll rules for this production.");
}

TEST_F(Rulesets, AbsentDistantValuesFallBackToLocalOnes) {
    auto configuration = current();
    configuration.payrollRules.localSchedule.bands[0].multiplier = Decimal("1.25");
    ProductionRulesets::apply(context, production.id, revision, configuration, now);
    store->database().exec("UPDATE ProductionRulesetRevision SET distantStraightTimeMultiplier = NULL, distantDailyMinimumSeconds = NULL, "
                           "defaultRulesLocalityRawValue = 'lunar'");
    const auto draft = ProductionRulesets::readDraft(context, revision);
    EXPECT_EQ(draft.distantSchedule.bands[0].multiplier, Decimal("1.25"));
    EXPECT_EQ(draft.distantSchedule.dailyMinimumSeconds, 28800);
    EXPECT_EQ(draft.distantSchedule.bands[0].ruleID, "production.distant.band.straight-time");
    EXPECT_EQ(draft.defaultRulesLocality, RulesLocality::local);
}

struct ValidationCase {
    const char* name;
    std::function<void(PayrollRuleConfiguration&)> change;
    const char* message;
};

class RulesetValidation : public Rulesets, public ::testing::WithParamInterface<ValidationCase> {};

TEST_P(RulesetValidation, RefusesWithItsSentenceAndChangesNothing) {
    auto configuration = current();
    GetParam().change(configuration);
    const auto before = rules_json::toJSON(current());
    try {
        store->perform([&](ModelContext& c) { ProductionRulesets::apply(c, production.id, revision, configuration, now); });
        FAIL() << "accepted";
    } catch (const ProductionRulesetValidationError& error) {
        EXPECT_EQ(error.description(), GetParam().message);
    }
    EXPECT_EQ(rules_json::toJSON(current()), before);
}

INSTANTIATE_TEST_SUITE_P(
    InOrder, RulesetValidation,
    ::testing::Values(
        ValidationCase{"blankName", [](auto& c) { c.payrollRules.name = "  "; }, "Ruleset name is required."},
        ValidationCase{"nameBeforeBands",
                       [](auto& c) {
                           c.payrollRules.name = "";
                           c.payrollRules.localSchedule.bands[2].upperBoundSeconds = 50000;
                       },
                       "Ruleset name is required."},
        ValidationCase{"gap", [](auto& c) { c.payrollRules.localSchedule.bands[1].lowerBoundSeconds = 30000; },
                       "Pay bands must begin at zero, remain ordered without gaps or overlaps, and end with an open band."},
        ValidationCase{"closedFinalBand", [](auto& c) { c.payrollRules.distantSchedule.bands[2].upperBoundSeconds = 50000; },
                       "The final pay band must be open-ended."},
        ValidationCase{"notFromZero", [](auto& c) { c.payrollRules.localSchedule.bands[0].lowerBoundSeconds = 60; },
                       "Pay bands must begin at zero, remain ordered without gaps or overlaps, and end with an open band."},
        ValidationCase{"targetOfDisabledBand",
                       [](auto& c) {
                           c.payrollRules.localSchedule.thirdBandEnabled = false;
                           c.payrollRules.localSchedule.bandMinimumTargetRuleID = "production.band.double-time";
                       },
                       "Golden Hour must target an enabled pay band."},
        ValidationCase{"negativeMinimum", [](auto& c) { c.payrollRules.localSchedule.dailyMinimumSeconds = -1; },
                       "Minimum durations must not be negative."},
        ValidationCase{"turnaroundDuplicate",
                       [](auto& c) { c.payrollRules.turnaroundRules->localAllOthersRuleID = c.payrollRules.turnaroundRules->localDPOrOperatorRuleID; },
                       "The provision identifier \u201CTurnaround\u201D is used more than once."},
        ValidationCase{"unknownProvision", [](auto& c) { c.additionalCompensation.push_back({"bonus", true, Decimal(1)}); },
                       "The provision identifier \u201Cbonus\u201D is invalid."},
        ValidationCase{"duplicateProvision",
                       [](auto& c) {
                           c.additionalCompensation.push_back({"perDiem", true, Decimal(1)});
                           c.additionalCompensation.push_back({"perDiem", true, Decimal(2)});
                       },
                       "The provision identifier \u201CperDiem\u201D is used more than once."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(Rulesets, ADisabledThirdBandLeavesTwoBandsTheSecondOpen) {
    OrdinaryDayScheduleDraft schedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
    schedule.thirdBandEnabled = false;
    const PayBandSchedule engine = ProductionRulesets::engineSchedule(schedule);
    ASSERT_EQ(engine.bands().size(), 2u);
    EXPECT_TRUE(engine.bands()[1].isOpenEnded());
    EXPECT_EQ(schedule.bands.size(), 3u);  // the stored band stays
}

TEST_F(Rulesets, TheSandboxTurnsARevisionIntoEngineInputs) {
    auto configuration = current();
    configuration.payrollRules.distantSchedule.bands[0].multiplier = Decimal("1.1");
    configuration.payrollRules.localSeventhDaySchedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
    configuration.payrollRules.localSeventhDaySchedule->bands[0].multiplier = Decimal("2");
    ProductionRulesets::apply(context, production.id, revision, configuration, now);

    const auto ordinary = ProductionRulesets::sandbox(context, production.id, 2026y / November / 3, std::nullopt, DayKind::ordinary, std::nullopt);
    EXPECT_EQ(ordinary.rulesLocality, RulesLocality::local);
    EXPECT_EQ(ordinary.schedule.bands().size(), 3u);
    EXPECT_EQ(ordinary.configuredDailyMinimumGuarantee->minimumPaidDuration(), WorkDuration(28800));
    ASSERT_EQ(ordinary.bandGuarantees.size(), 1u);
    EXPECT_EQ(ordinary.bandGuarantees[0].targetPayBandRuleID(), RuleID("production.band.double-time"));
    EXPECT_EQ(ordinary.mealPenaltySchedule->ruleID(), RuleID("production.meal-penalty.schedule-a"));
    EXPECT_EQ(ordinary.labelsByRuleID.at("production.band.time-and-a-half"), "Time and a Half");

    const auto distant = ProductionRulesets::sandbox(context, production.id, 2026y / November / 3, RulesLocality::distant, DayKind::ordinary, std::nullopt);
    EXPECT_EQ(distant.schedule.bands()[0].multiplier().value(), Decimal("1.1"));
    EXPECT_EQ(distant.mealPenaltySchedule->ruleID(), RuleID("production.meal-penalty.schedule-b"));
    const auto seventh = ProductionRulesets::sandbox(context, production.id, 2026y / November / 3, std::nullopt, DayKind::seventhDay, std::nullopt);
    EXPECT_EQ(seventh.schedule.bands()[0].multiplier().value(), Decimal("2"));
    EXPECT_THROW(ProductionRulesets::sandbox(context, production.id, 2024y / June / 1, std::nullopt, DayKind::ordinary, std::nullopt),
                 ModelValidationError);
}

TEST(MealPenaltyRules, SelectionFollowsApplicabilityAndRefusesAMissingSchedule) {
    auto draft = MealPenaltyRules::defaults();
    EXPECT_EQ(MealPenaltyRules::selectedScheduleRuleID(draft, RulesLocality::distant, std::nullopt), "production.meal-penalty.schedule-b");
    draft.allWorkdaysSelectedScheduleRuleID = "production.meal-penalty.schedule-a";
    EXPECT_EQ(MealPenaltyRules::selectedScheduleRuleID(draft, RulesLocality::distant, std::nullopt), "production.meal-penalty.schedule-a");
    draft.scheduleApplicability = MealPenaltyScheduleApplicability::studioAndLocation;
    draft.studioSelectedScheduleRuleID = "production.meal-penalty.schedule-a";
    draft.locationSelectedScheduleRuleID = "production.meal-penalty.schedule-b";
    EXPECT_EQ(MealPenaltyRules::engineSchedule(draft, RulesLocality::local, MealWorkLocation::location).ruleID(),
              RuleID("production.meal-penalty.schedule-b"));
    draft.schedules.pop_back();  // the location schedule was deleted
    try {
        MealPenaltyRules::engineSchedule(draft, RulesLocality::local, MealWorkLocation::location);
        FAIL();
    } catch (const MealPenaltyRulesError& error) {
        EXPECT_STREQ(error.what(), "Meal Penalty Rules are incomplete.");
    }
    auto noLimit = MealPenaltyRules::defaults();
    noLimit.fixedDollarWeeklyLimit = 0;
    EXPECT_THROW(MealPenaltyRules::engineSchedule(noLimit, RulesLocality::local, std::nullopt), MealPenaltyRulesError);
    MealPenaltyTimingRulesDraft timing;
    timing.penaltyIntervalSeconds = 0;
    EXPECT_THROW(MealPenaltyRules::validateTiming(timing), MealPenaltyRulesError);
}

TEST(TurnaroundRules, SuggestsByExceptionClassificationAndLocality) {
    TurnaroundRulesDraft draft;
    EXPECT_FALSE(TurnaroundRules::suggestion(draft, RulesLocality::local, "", std::nullopt).has_value());  // all rests 0
    const Uuid operatorClass = Uuid::generate();
    draft.localAllOthersRestSeconds = 36000;
    draft.localDPOrOperatorRestSeconds = 43200;
    draft.distantAllOthersRestSeconds = 32400;
    draft.dpOrOperatorClassificationIDs = {operatorClass};
    draft.positionExceptions = std::vector<PositionException>{{"1234", "Key Grip", 28800, 30000}};
    EXPECT_EQ(TurnaroundRules::suggestion(draft, RulesLocality::local, "", std::nullopt),
              (TurnaroundSuggestion{36000, "Production Default \u00B7 Local", "production.turnaround.local.all-others"}));
    EXPECT_EQ(TurnaroundRules::suggestion(draft, RulesLocality::local, "", operatorClass)->ruleID, "production.turnaround.local.dp-operator");
    EXPECT_EQ(TurnaroundRules::suggestion(draft, RulesLocality::distant, " 1234 \n", std::nullopt),
              (TurnaroundSuggestion{30000, "Production Default \u00B7 Distant exception", "production.turnaround.distant.all-others"}));
    EXPECT_FALSE(TurnaroundRules::suggestion(draft, RulesLocality::distant, "", operatorClass).has_value());  // distant DP rest is 0
    draft.positionExceptions->push_back({"1234 ", "Dolly Grip", 1, 1});
    EXPECT_THROW(TurnaroundRules::suggestion(draft, RulesLocality::local, "", std::nullopt), ProductionRulesetValidationError);
}

TEST(RulesPayloads, UndecodableDataIsReportedWithItsOwnSentence) {
    EXPECT_THROW(rules_json::configuration(decimal_json::parse<Json>(R"({"payrollRules": {}})")), MalformedInputError);
    const Json json = rules_json::toJSON(ProductionRulesets::exampleConfiguration(november1));
    EXPECT_EQ(rules_json::toJSON(rules_json::configuration(json)), json);
}

TEST_F(Rulesets, AStoredPayloadThatCannotBeReadSaysWhich) {
    store->database().exec("UPDATE ProductionMealPenaltyRulesConfiguration SET configurationData = X'7B7D'");
    try {
        current();
        FAIL();
    } catch (const RulesPayloadError& error) {
        EXPECT_STREQ(error.what(), "Meal Penalty Rules are invalid.");
    }
    store->database().exec("UPDATE ProductionRulesetRevision SET localSixthDayScheduleData = X'00'");
    EXPECT_THROW(ProductionRulesets::readDraft(context, revision), RulesPayloadError);
}

// ---- provisions ----

class Provisions : public Rulesets {
protected:
    Uuid engagement = [this] {
        const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
        return crew_repository::createEngagement(context, production.id, member.id, november1).id;
    }();
    void configurePerDiem() {
        ProductionCompensationProvisionDraft perDiem{"perDiem", true, Decimal("60.00"), "USD"};
        perDiem.workedEligible = true;
        perDiem.timedWorkDayEligible = true;
        CompensationProvisions::replaceProductionDrafts(context, production.id, november1, {perDiem});
    }
    std::optional<ResolvedCompensationProvision> perDiemOn(ProvisionDayKind day) {
        return CompensationProvisions::resolve(context, production.id, engagement, CompensationProvisionKind::perDiem,
                                               2026y / November / 3, day);
    }
};

TEST_F(Provisions, ResolveAcrossEligibilityAndOverrideModes) {
    EXPECT_FALSE(perDiemOn(ProvisionDayKind::worked).has_value());  // not configured
    configurePerDiem();
    EXPECT_EQ(perDiemOn(ProvisionDayKind::worked)->amount, Decimal("60.00"));
    EXPECT_FALSE(perDiemOn(ProvisionDayKind::travel).has_value());  // worked days only

    CompensationProvisions::setEngagementTerm(context, engagement, CompensationProvisionKind::perDiem, november1,
                                              CompensationProvisionOverrideMode::personalAmount, Decimal("75.00"), "USD");
    EXPECT_EQ(perDiemOn(ProvisionDayKind::worked)->amount, Decimal("75.00"));
    EXPECT_EQ(perDiemOn(ProvisionDayKind::worked)->amountOrigin, CompensationProvisionOverrideMode::personalAmount);
    CompensationProvisions::setEngagementTerm(context, engagement, CompensationProvisionKind::perDiem, 2026y / November / 2,
                                              CompensationProvisionOverrideMode::notEligible, std::nullopt, "USD");
    EXPECT_FALSE(perDiemOn(ProvisionDayKind::worked).has_value());
}

TEST_F(Provisions, AVacationPayChangeInsideAWeekIsReported) {
    ProductionCompensationProvisionDraft vacation{"vacationPay", true, Decimal("4"), "USD", true, true, true, true, true, true, true};
    CompensationProvisions::replaceProductionDrafts(context, production.id, november1, {vacation});
    EXPECT_FALSE(CompensationProvisions::vacationPayChangeWithinWeek(context, production.id, engagement, 2026y / November / 2));
    vacation.amount = Decimal("4.5");
    CompensationProvisions::replaceProductionDrafts(context, production.id, 2026y / November / 5, {vacation});
    EXPECT_EQ(CompensationProvisions::vacationPayChangeWithinWeek(context, production.id, engagement, 2026y / November / 2),
              "Vacation Pay percentage changes within this Payroll Week. Use a Payroll Week boundary for the effective change.");
    EXPECT_FALSE(CompensationProvisions::vacationPayChangeWithinWeek(context, production.id, engagement, 2026y / November / 9));
}

struct RuleTextCase {
    const char* hours;
    const char* multiplier;
    const char* message;  // nullptr: accepted
};

class IdleRuleText : public ::testing::TestWithParam<RuleTextCase> {};

TEST_P(IdleRuleText, GivesTheEditorsSentence) {
    try {
        CompensationProvisions::idleFromText(GetParam().hours, GetParam().multiplier);
        EXPECT_EQ(GetParam().message, nullptr);
    } catch (const CompensationRuleInputError& error) {
        ASSERT_NE(GetParam().message, nullptr);
        EXPECT_STREQ(error.what(), GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Fields, IdleRuleText,
    ::testing::Values(RuleTextCase{"", "", nullptr}, RuleTextCase{"8", "1", nullptr},
                      RuleTextCase{"8", "", "Enter both Idle compensated hours and rate, or clear both fields to remove Idle Compensation."},
                      RuleTextCase{"8", "one", "Enter a valid Idle rate multiplier."},
                      RuleTextCase{"0", "1", "Idle compensated hours must be greater than zero."},
                      RuleTextCase{"8", "0", "Idle straight-time multiplier must be greater than zero."}));

TEST(HolidayRuleText, RefusesHalfFilledOrNonPositiveFields) {
    EXPECT_FALSE(CompensationProvisions::holidayFromText("", "").has_value());
    EXPECT_EQ(CompensationProvisions::holidayFromText("8", "1")->compensatedSeconds(), 28800);
    EXPECT_THROW(CompensationProvisions::holidayFromText("8", ""), CompensationRuleInputError);
    EXPECT_THROW(CompensationProvisions::holidayFromText("0", "1"), CompensationRuleInputError);
}

}  // namespace
}  // namespace tessel
