#include <gtest/gtest.h>

#include "../support/TemporaryFolder.hpp"
#include "../support/StoreTest.hpp"
#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "ReviewWeek.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/expected/GoldenHourAdvisory.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/model/TesselPersistence.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;

using namespace review_week;

// WorkdayDurationDeriver on its own.
struct DeriveCase {
    const char* name;
    const char* call;
    const char* lunchOut;
    const char* lunchIn;
    const char* wrap;
    const char* incomplete;  // nullptr: derived
};

class Derivation : public ::testing::TestWithParam<DeriveCase> {};

TEST_P(Derivation, ChecksTheTimelineInOrder) {
    const auto& c = GetParam();
    DTSCalculationInput input{Uuid::generate(), monday};
    const auto time = [](const char* text) { return text ? payroll_decimal_time::parseTimeOfDay(text, monday) : std::nullopt; };
    input.call = time(c.call);
    input.lunchOut = time(c.lunchOut);
    input.lunchIn = time(c.lunchIn);
    input.wrap = time(c.wrap);
    const auto result = WorkdayDurationDeriver::derive(input);
    if (c.incomplete) {
        ASSERT_TRUE(std::holds_alternative<WorkdayIncompleteReason>(result));
        EXPECT_EQ(description(std::get<WorkdayIncompleteReason>(result)), c.incomplete);
    } else {
        EXPECT_TRUE(std::holds_alternative<DerivedWorkdayDurations>(result));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Timelines, Derivation,
    ::testing::Values(DeriveCase{"ordinary", "7.0", "13.0", "13.5", "19.0", nullptr},
                      DeriveCase{"noMeal", "7.0", nullptr, nullptr, "13.0", nullptr},
                      DeriveCase{"lunchInEqualsOut", "7.0", "13.0", "13.0", "19.0", "Lunch In must be later than Lunch Out."},
                      DeriveCase{"wrapBeforeLunchIn", "7.0", "13.0", "13.5", "13.2", "Wrap must be later than Lunch In."},
                      DeriveCase{"callNextDay", "24.0", nullptr, nullptr, "30.0", "Call must be between 0.0 and 23.9."},
                      DeriveCase{"noCall", nullptr, nullptr, nullptr, "19.0", "Call is missing"},
                      DeriveCase{"noWrap", "7.0", nullptr, nullptr, nullptr, "Wrap is missing"},
                      DeriveCase{"noLunchIn", "7.0", "13.0", nullptr, "19.0", "Lunch In is missing"},
                      DeriveCase{"noLunchOut", "7.0", nullptr, "13.0", "19.0", "Lunch Out is missing"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Derivation, GivesTheDurationsAndTimeline) {
    DTSCalculationInput input{Uuid::generate(), monday};
    input.call = at(monday, "7.0");
    input.lunchOut = at(monday, "13.0");
    input.lunchIn = at(monday, "13.5");
    input.wrap = at(monday, "19.0");
    const auto durations = std::get<DerivedWorkdayDurations>(WorkdayDurationDeriver::derive(input));
    EXPECT_EQ(durations.elapsed, WorkDuration::hours(12));
    EXPECT_EQ(durations.deductibleMeal, WorkDuration(1800));
    EXPECT_EQ(durations.worked, WorkDuration(41400));
    ASSERT_EQ(durations.allocationInput.segments.size(), 3u);
    EXPECT_EQ(durations.allocationInput.segments[2].duration, WorkDuration(19800));
}

// From stored facts to weekly totals.
class ExpectedPayroll : public testing::StoreTest {
protected:
    Production production = ProductionSetup::createProduction(context, "Harbor Lights", {}, sys_days(monday));
    Uuid revision = *ProductionRulesets::revisionInForce(context, production.id, monday);

    CrewMember hire(const std::string& name, const char* rate, std::optional<std::int64_t> precall = std::nullopt,
                    std::optional<RulesLocality> locality = std::nullopt) {
        const auto member = crew_repository::createCrewMember(context, production.id, name);
        auto engagement = crew_repository::createEngagement(context, production.id, member.id, monday);
        engagement.regularPrecallDurationSeconds = precall;
        engagement.rulesLocalityOverride = locality;
        crew_repository::updateEngagement(context, engagement);
        if (rate) crew_repository::addPayRate(context, engagement.id, monday, rate, "USD");
        return member;
    }
    Workday dts(int offset, const char* call, const char* lunchOut, const char* lunchIn, const char* wrap) {
        const CalendarDate date = dayOf(offset);
        const Workday workday = DailyTimeSheets::create(context, production.id, date);
        if (call) DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(date, call));
        if (lunchOut) DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchOut, at(date, lunchOut));
        DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchIn, lunchIn ? std::optional(at(date, lunchIn)) : std::nullopt);
        if (wrap) DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::wrap, at(date, wrap));
        return workday;
    }
    WeeklyCrewPayrollReview weekOf(const CrewMember& member) {
        const auto week = ProductionWeekCalendars::findOrCreateWeek(context, production.id, monday);
        return ExpectedPayrollReview(context, production.id).weekly(week.id, member.id);
    }
    void changeRules(const std::function<void(PayrollRuleConfiguration&)>& change) {
        auto configuration = ProductionRulesets::readConfiguration(context, production.id, revision);
        change(configuration);
        ProductionRulesets::apply(context, production.id, revision, configuration, sys_days(monday));
    }
    static std::vector<std::string> amounts(const DailyPayrollReview& day) {
        std::vector<std::string> text;
        for (const auto& c : day.categories) text.push_back(c.label + " " + (c.compensation ? c.compensation->amount().toString() : "-"));
        return text;
    }
};

TEST_F(ExpectedPayroll, AShortDayIsPaidItsDailyMinimum) {
    const auto rowan = hire("Rowan Vale", "45.00");
    dts(0, "7.0", nullptr, nullptr, "12.0");
    const auto day = weekOf(rowan).days.at(0);
    EXPECT_EQ(amounts(day), (std::vector<std::string>{"Straight Time 360.00"}));
    EXPECT_EQ(day.categories[0].guaranteedDuration, WorkDuration::hours(3));
    EXPECT_EQ(day.dailyMinimumTrace->reason, DailyMinimumGuaranteeTraceEntry::Reason::appliedMinimumNotMet);
    EXPECT_EQ(day.dailyMinimumSource, DailyMinimumGuaranteeSource::rulesetDailyGuarantee);
}

TEST_F(ExpectedPayroll, APersonalDailyGuaranteeTakesThePlaceOfTheRulesets) {
    const auto rowan = hire("Rowan Vale", "45.00");
    const auto engagement = crew_repository::engagementsOf(context, rowan.id).front();
    satellite_repository::add(context, store_schema::satelliteTable("EngagementDailyGuaranteeTerm"), engagement.id,
                              {{"effectiveDate", std::string("2026-11-01T00:00:00Z")}, {"minimumPaidDurationSeconds", std::int64_t{36000}}});
    dts(0, "7.0", nullptr, nullptr, "12.0");
    const auto day = weekOf(rowan).days.at(0);
    EXPECT_EQ(day.dailyMinimumSource, DailyMinimumGuaranteeSource::personalDailyGuarantee);
    EXPECT_EQ(day.compensation->amount().toString(), "495.00");  // 8 h at 45.00 and 2 h at 67.50
}

TEST_F(ExpectedPayroll, DoubleTimeResumesAfterAMealWhenItsElapsedThresholdPassesDuringIt) {
    changeRules([](auto& c) {
        c.payrollRules.localSchedule.bands[2].entryThresholdBasis = DurationBasis::elapsed;
        c.payrollRules.localSchedule.finalBandMinimumEnabled = false;
    });
    const auto rowan = hire("Rowan Vale", "40.00");
    dts(0, "7.0", "18.0", "20.0", "21.0");  // 11 h work, a 2-hour meal passing 12 h elapsed, 1 h more
    EXPECT_EQ(amounts(weekOf(rowan).days.at(0)),
              (std::vector<std::string>{"Straight Time 320.00", "Time and a Half 180.00", "Double Time 80.00"}));
}

TEST_F(ExpectedPayroll, AnNDBPrecallStartsTheMealClockAtGeneralCrewCall) {
    const auto teo = hire("Teodor Vance", "45.00", 1800);
    const Workday workday = dts(0, "7.0", "13.2", "13.7", "19.0");
    const auto rowWithoutNDB = weekOf(teo).days.at(0);
    EXPECT_EQ(rowWithoutNDB.mealPeriods.at(0).occurrences.size(), 2u);  // 6.7 h after the 6.5 precall
    const auto entry = weeks::entries(context, workday.id).at(0);
    DailyTimeSheets::setNonDeductibleBreakfast(context, entry.id, true);
    const auto withNDB = weekOf(teo).days.at(0);
    EXPECT_EQ(withNDB.mealPeriods.at(0).trace.firstMealClockResolution, FirstMealClockResolution::generalCrewCallBecauseNDB);
    EXPECT_EQ(withNDB.mealPeriods.at(0).occurrences.size(), 1u);
}

TEST_F(ExpectedPayroll, GraceProtectsAndThenCountsFromTheOriginalDeadline) {
    const auto rowan = hire("Rowan Vale", "45.00");
    const Workday protectedDay = dts(0, "7.0", "13.2", "13.7", "19.0");
    const Workday exceededDay = dts(1, "7.0", "13.3", "13.8", "19.0");
    DailyTimeSheets::setGraceCalled(context, protectedDay.id, true);
    DailyTimeSheets::setGraceCalled(context, exceededDay.id, true);
    const auto week = weekOf(rowan);
    EXPECT_EQ(week.days[0].mealPeriods[0].trace.firstMealGraceDisposition, FirstMealGraceDisposition::protected_);
    EXPECT_TRUE(week.days[0].mealPeriods[0].occurrences.empty());
    EXPECT_EQ(week.days[1].mealPeriods[0].trace.firstMealGraceDisposition, FirstMealGraceDisposition::exceeded);
    ASSERT_EQ(week.days[1].mealPeriods[0].occurrences.size(), 1u);
    EXPECT_EQ(week.days[1].mealPeriods[0].occurrences[0].intervalStart, at(dayOf(1), "13.0"));
    EXPECT_EQ(week.mealPenalties.fixedDollarSubtotal->amount().toString(), "8.50");
}

TEST_F(ExpectedPayroll, TheTwentyFirstMealPenaltyOfAWeekNeedsContractVerification) {
    const auto rowan = hire("Rowan Vale", "45.00");
    for (int d = 0; d < 6; ++d) dts(d, "7.0", "15.0", "15.5", "16.0");  // 2 h late: four penalties a day
    const auto week = weekOf(rowan);
    ASSERT_EQ(week.mealPenalties.occurrences.size(), 24u);
    EXPECT_EQ(week.mealPenalties.occurrences[20].compensation.kind, WeeklyMealPenaltyOccurrence::Compensation::Case::prevailingRateUnverified);
    EXPECT_EQ(week.mealPenalties.unresolvedPrevailingRateCount, 4);
    EXPECT_EQ(week.mealPenalties.fixedDollarSubtotal->amount().toString(), "232.50");  // twenty priced penalties: five days of 8.50 + 11.00 + 13.50 + 13.50
}

TEST_F(ExpectedPayroll, ADayWithoutARateMakesTheWeekPartial) {
    const auto dara = hire("Dara Whitcombe", nullptr);
    dts(0, "7.0", "13.0", "13.5", "19.0");
    const auto week = weekOf(dara);
    EXPECT_TRUE(week.estimatedGrossIsPartial);
    EXPECT_EQ(week.missingRateDates, std::vector{monday});
    EXPECT_FALSE(week.days[0].compensation.has_value());
    EXPECT_EQ(week.days[0].categories.size(), 2u);  // the time is still allocated
    ASSERT_FALSE(week.issues.empty());
    EXPECT_EQ(week.issues[0].kind, PayrollReviewIssue::Kind::missingRate);
    EXPECT_EQ(week.issues[0].destination, dara.id);
}

TEST_F(ExpectedPayroll, TheSixthDayUsesTheSixthDaySchedule) {
    changeRules([](auto& c) {
        c.payrollRules.localSixthDaySchedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
        for (auto& band : c.payrollRules.localSixthDaySchedule->bands) band.ruleID.replace(0, std::string("production").size(), "production.sixth-day");
        c.payrollRules.localSixthDaySchedule->bands[0].multiplier = Decimal("1.5");
        c.additionalCompensation.push_back({"vacationPay", true, Decimal("4"), "USD", true, true, true, true, true, true, true});
    });
    const auto rowan = hire("Rowan Vale", "40.00");
    for (int d = 0; d < 6; ++d) dts(d, "7.0", "12.0", "12.5", "15.5");
    const auto week = weekOf(rowan);
    EXPECT_EQ(week.days[4].workdaySequence->classification(), CrewWorkdaySequencePosition::Classification::ordinary);
    EXPECT_EQ(week.days[5].dayKind, "sixthDay");
    // The sixth day's first band pays x1.5: time and a half, never straight time, and so not in the
    // vacation basis (five days of 8 h at 40.00).
    EXPECT_EQ(amounts(week.days[5]), (std::vector<std::string>{"Time and a Half 480.00"}));
    EXPECT_EQ(week.days[5].categories.at(0).comparisonConcept, PayComparisonConcept::overtime);
    EXPECT_EQ(week.additionalCompensation.back().compensation.amount().toString(), "64.00");
    EXPECT_EQ(week.estimatedGross->amount().toString(), "2144.00");
}

TEST_F(ExpectedPayroll, ADistantEngagementIsPaidUnderTheDistantSchedule) {
    changeRules([](auto& c) { c.payrollRules.distantSchedule.bands[1].multiplier = Decimal("1.75"); });
    const auto ada = hire("Ada Quill", "40.00", std::nullopt, RulesLocality::distant);
    dts(0, "7.0", nullptr, nullptr, "17.0");
    const auto day = weekOf(ada).days.at(0);
    EXPECT_EQ(day.rulesLocality, RulesLocality::distant);
    EXPECT_EQ(day.categories[1].ruleID, RuleID("production.distant.band.time-and-a-half"));
    EXPECT_EQ(day.compensation->amount().toString(), "460.00");
    EXPECT_EQ(day.mealPenaltySchedule->ruleID(), RuleID("production.meal-penalty.schedule-b"));
}

TEST_F(ExpectedPayroll, AnIncompleteDayHasItsReasonAnIssueAndNoCategories) {
    const auto rowan = hire("Rowan Vale", "45.00");
    const Workday workday = dts(0, "7.0", "13.0", nullptr, "19.0");
    const auto week = weekOf(rowan);
    const auto& day = week.days.at(0);
    EXPECT_EQ(day.status.kind, DailyPayrollStatus::Case::incomplete);
    EXPECT_EQ(description(*day.status.reason), "Lunch In is missing");
    EXPECT_TRUE(day.categories.empty());
    ASSERT_EQ(week.issues.size(), 1u);
    EXPECT_EQ(week.issues[0].kind, PayrollReviewIssue::Kind::dtsSource);
    EXPECT_EQ(week.issues[0].destination, workday.id);
    // The uncalculated day is owed pay that the gross cannot count, though no rate is missing.
    EXPECT_TRUE(week.estimatedGrossIsPartial);
    EXPECT_TRUE(week.missingRateDates.empty());
}

TEST_F(ExpectedPayroll, TurnaroundLooksAtTheNextDaysCall) {
    changeRules([](auto& c) { c.payrollRules.turnaroundRules->localAllOthersRestSeconds = 36000; });
    const auto rowan = hire("Rowan Vale", "45.00");
    dts(0, "7.0", "13.0", "13.5", "23.0");
    dts(1, "8.0", "14.0", "14.5", "19.0");
    dts(4, "8.0", "14.0", "14.5", "19.0");
    const auto week = weekOf(rowan);
    const auto& status = week.days[0].turnaround->result.status;
    EXPECT_EQ(status.kind, TurnaroundEvaluationStatus::Case::shortfall);
    EXPECT_EQ(status.shortfallDuration, WorkDuration::hours(1));
    // Tuesday: no call on Wednesday; Friday: the weekend follows.
    EXPECT_EQ(week.days[1].turnaround->result.status.kind, TurnaroundEvaluationStatus::Case::noNextCall);
    EXPECT_EQ(week.days[1].turnaround->note, "No call on the following day, so turnaround was not evaluated.");
    EXPECT_EQ(week.days[2].turnaround->note, "Weekend turnaround is not currently calculated.");
    EXPECT_FALSE(week.days[0].turnaround->note.has_value());
}

TEST_F(ExpectedPayroll, IdleAndVacationPayJoinTheWeek) {
    changeRules([](auto& c) {
        c.idleCompensation = IdleCompensationRuleDraft{28800, Decimal(1)};
        c.additionalCompensation.push_back({"vacationPay", true, Decimal("4"), "USD", true, true, true, true, true, true, true});
    });
    const auto rowan = hire("Rowan Vale", "45.00");
    dts(0, "7.0", "12.0", "12.5", "15.5");
    const auto engagement = crew_repository::engagementsOf(context, rowan.id).front();
    NonDTSActivities::save(context, production.id, {dayOf(1), PayrollDayActivityKind::idleAvailable, true, "", {}, {engagement.id}, std::nullopt});
    const auto week = weekOf(rowan);
    ASSERT_EQ(week.idleCompensation.size(), 1u);
    EXPECT_EQ(week.idleCompensation[0].result->compensation.amount().toString(), "360.00");
    EXPECT_EQ(week.additionalCompensation.back().compensation.amount().toString(), "14.40");  // 4% of 360.00 straight time
    EXPECT_EQ(week.estimatedGross->amount().toString(), "734.40");
    EXPECT_FALSE(week.estimatedGrossIsPartial);
}

TEST_F(ExpectedPayroll, VacationPayOnStraightTimeThatIsNotKnownIsUnavailableNotZero) {
    changeRules([](auto& c) { c.additionalCompensation.push_back({"vacationPay", true, Decimal("4"), "USD", true, true, true, true, true, true, true}); });
    const auto ada = hire("Ada Quill", nullptr);
    dts(0, "7.0", "12.0", "12.5", "15.5");
    const auto week = weekOf(ada);
    EXPECT_TRUE(std::none_of(week.additionalCompensation.begin(), week.additionalCompensation.end(),
                             [](const auto& item) { return item.kind == CompensationProvisionKind::vacationPay; }));
    EXPECT_TRUE(week.estimatedGrossIsPartial);
    EXPECT_TRUE(std::any_of(week.issues.begin(), week.issues.end(), [](const auto& issue) {
        return issue.message == "Vacation Pay is unavailable: the week's straight-time earnings are not known without the missing hourly rate.";
    }));
}

TEST_F(ExpectedPayroll, AnIdleDayWithoutARateLeavesTheGrossPartial) {
    changeRules([](auto& c) { c.idleCompensation = IdleCompensationRuleDraft{28800, Decimal(1)}; });
    const auto ada = hire("Ada Quill", nullptr);
    const auto engagement = crew_repository::engagementsOf(context, ada.id).front();
    NonDTSActivities::save(context, production.id, {dayOf(1), PayrollDayActivityKind::idleAvailable, true, "", {}, {engagement.id}, std::nullopt});
    const auto week = weekOf(ada);
    ASSERT_EQ(week.idleCompensation.size(), 1u);
    EXPECT_EQ(week.idleCompensation[0].status, IdlePayrollContribution::Status::missingRate);
    EXPECT_TRUE(week.estimatedGrossIsPartial);
    ASSERT_EQ(week.issues.size(), 1u);  // fixed by giving Ada a rate
    EXPECT_EQ(week.issues[0].kind, PayrollReviewIssue::Kind::missingRate);
    EXPECT_EQ(week.issues[0].message, "No applicable straight-time rate for Idle");
    EXPECT_EQ(week.issues[0].destination, ada.id);
}

TEST_F(ExpectedPayroll, TheGoldenHourAdvisoryShowsWithinItsThresholdUntilTheTargetOrADismissal) {
    const auto rowan = hire("Rowan Vale", "45.00");
    const Workday workday = dts(0, "7.0", "13.0", "13.5", nullptr);
    const auto day = weekOf(rowan).days.at(0);
    ASSERT_TRUE(day.goldenHourTarget.has_value());
    EXPECT_EQ(day.goldenHourTarget->targetTime, at(monday, "19.6"));  // 12 h worked after a half-hour meal, next tenth
    const std::string key = golden_hour_advisory::key(workday.id, rowan.id);
    struct Case {
        const char* now;
        GoldenHourAdvisorySettings settings;
        std::optional<std::int64_t> remaining;
    };
    const std::vector<Case> cases{
        {"18.6", {}, 3600},                           // exactly the threshold away
        {"18.5", {}, std::nullopt},                   // too early
        {"19.6", {}, 0},                              // still open at the target itself
        {"19.7", {}, std::nullopt},                   // the target has passed
        {"18.7", {false, 3600, {}}, std::nullopt},    // turned off
        {"18.7", {true, 3600, {key}}, std::nullopt},  // dismissed for this row
        {"18.7", {true, 3600, {"goldenHour:other"}}, 3240},
    };
    for (const auto& c : cases) {
        const auto advisory = golden_hour_advisory::at(day, rowan.id, at(monday, c.now), c.settings);
        EXPECT_EQ(advisory ? std::optional(advisory->remainingSeconds) : std::nullopt, c.remaining) << c.now;
    }
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::wrap, at(monday, "19.0"));
    EXPECT_FALSE(golden_hour_advisory::at(weekOf(rowan).days.at(0), rowan.id, at(monday, "18.7"), {}).has_value());  // wrapped
}

TEST_F(ExpectedPayroll, AVacationPercentageChangingMidWeekFailsTheWeekWithItsSentence) {
    changeRules([](auto& c) { c.additionalCompensation.push_back({"vacationPay", true, Decimal("4"), "USD", true, true, true, true, true, true, true}); });
    const auto rowan = hire("Rowan Vale", "45.00");
    dts(0, "7.0", "12.0", "12.5", "15.5");
    auto drafts = CompensationProvisions::productionDrafts(context, production.id, monday);
    for (auto& draft : drafts) draft.amount = Decimal("5");
    CompensationProvisions::replaceProductionDrafts(context, production.id, dayOf(2), drafts);
    const auto week = weekOf(rowan);
    EXPECT_FALSE(week.estimatedGross.has_value());
    ASSERT_FALSE(week.issues.empty());
    EXPECT_EQ(week.issues.back().kind, PayrollReviewIssue::Kind::calculationFailure);
    EXPECT_EQ(week.issues.back().message,
              "Vacation Pay percentage changes within this Payroll Week. Use a Payroll Week boundary for the effective change.");
}

TEST_F(ExpectedPayroll, AllowancesFollowTheDayKindAndBoxRentalTheRow) {
    changeRules([](auto& c) {
        // Per diem on timed work days only.
        c.additionalCompensation.push_back({"perDiem", true, Decimal("40.00"), "USD", true, false, false, false, false, false, false});
    });
    const auto rowan = hire("Rowan Vale", "45.00");
    const auto engagement = crew_repository::engagementsOf(context, rowan.id).front();
    satellite_repository::add(context, store_schema::satelliteTable("EngagementBoxRentalTerm"), engagement.id,
                              {{"effectiveDate", std::string("2026-11-01T00:00:00Z")}, {"dailyAmount", std::string("25.00")},
                               {"currencyCode", std::string("USD")}});
    const Workday timed = dts(0, "7.0", "12.0", "12.5", "15.5");
    const Workday worked = dts(1, nullptr, nullptr, nullptr, nullptr);
    const auto entryOn = [&](const Workday& w) { return weeks::entries(context, w.id).at(0).id; };
    DailyTimeSheets::setBoxRental(context, entryOn(timed), true);
    DailyTimeSheets::setWorkMode(context, entryOn(worked), CrewDailyWorkMode::worked);
    const auto week = weekOf(rowan);
    ASSERT_EQ(week.days.at(0).additionalCompensation.size(), 1u);
    EXPECT_EQ(week.days[0].additionalCompensation[0].compensation.amount().toString(), "40.00");
    EXPECT_EQ(week.days[0].boxRentalCompensation->amount().toString(), "25.00");
    EXPECT_TRUE(week.days.at(1).additionalCompensation.empty());
    EXPECT_FALSE(week.days[1].boxRentalCompensation.has_value());
    EXPECT_EQ(week.estimatedGross->amount().toString(), "785.00");  // two 8-hour days at 360.00, per diem and box rental
}

}  // namespace
}  // namespace tessel
