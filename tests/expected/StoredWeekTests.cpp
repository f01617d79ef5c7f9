#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>

#include "../support/StoreTest.hpp"
#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "ReviewWeek.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/rules/RateCards.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/CrewRoster.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

// Stored weeks with hand-computed pay: every paid category with its comparison concept and amount, and
// the gross they add up to. Rates are 45.00/hr unless a case says otherwise; the example rules pay
// 8 h straight time, then time and a half to 12 h, then double time, with Schedule A meal penalties
// of 8.50, 11.00, 13.50, 13.50 and 25.00 after that.
namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;

using namespace review_week;

ProductionCompensationProvisionDraft onTimedDays(const char* kind, const char* amount) {
    return {kind, true, Decimal(amount), "USD", true, false, false, false, false, false, false};
}
ProductionCompensationProvisionDraft vacation() { return {"vacationPay", true, Decimal("4"), "USD", true, true, true, true, true, true, true}; }

class StoredWeek : public testing::StoreTest {
public:
    using StoreTest::context;
    Production production = ProductionSetup::createProduction(context, "Harbor Lights", {}, sys_days(monday));
    Uuid revision = *ProductionRulesets::revisionInForce(context, production.id, monday);
    CrewMember rowan = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    ProductionEngagement engagement = crew_repository::createEngagement(context, production.id, rowan.id, monday);

    void rate(int fromDay, const char* amount) { crew_repository::addPayRate(context, engagement.id, dayOf(fromDay), amount, "USD"); }
    void rules(const std::function<void(PayrollRuleConfiguration&)>& change) {
        auto configuration = ProductionRulesets::readConfiguration(context, production.id, revision);
        change(configuration);
        ProductionRulesets::apply(context, production.id, revision, configuration, sys_days(monday));
    }
    // A DTS with the shared times and Rowan's row; the row's id.
    Uuid dts(int offset, const char* call, const char* lunchOut, const char* lunchIn, const char* wrap) {
        const CalendarDate date = dayOf(offset);
        const Workday workday = DailyTimeSheets::create(context, production.id, date);
        DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(date, call));
        if (lunchOut) DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchOut, at(date, lunchOut));
        DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchIn, lunchIn ? std::optional(at(date, lunchIn)) : std::nullopt);
        DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::wrap, at(date, wrap));
        return weeks::entries(context, workday.id).at(0).id;
    }
    Uuid eightHourDay(int offset) { return dts(offset, "7.0", "12.0", "12.5", "15.5"); }
    void activity(int offset, PayrollDayActivityKind kind) {
        NonDTSActivities::save(context, production.id, {dayOf(offset), kind, true, "", {}, {engagement.id}, std::nullopt});
    }
    WeeklyCrewPayrollReview review() {
        const auto week = ProductionWeekCalendars::findOrCreateWeek(context, production.id, monday);
        return ExpectedPayrollReview(context, production.id).weekly(week.id, rowan.id);
    }
};

struct WeekCase {
    const char* name;
    std::function<void(StoredWeek&)> facts;
    std::vector<std::string> categories;  // "concept label amount"; "-" for no concept or no amount
    const char* gross;                    // with " (Partial)" when it is
};

class StoredWeeks : public StoredWeek, public ::testing::WithParamInterface<WeekCase> {};

std::string described(const PayrollReviewCategory& c) {
    return std::string(c.comparisonConcept ? toRawValue(*c.comparisonConcept) : "-") + " " + c.label + " " +
           (c.compensation ? c.compensation->amount().toString() : "-");
}

TEST_P(StoredWeeks, PayEveryCategoryAndAddUpToTheGross) {
    GetParam().facts(*this);
    const auto week = review();
    std::vector<std::string> categories;
    for (const auto& c : week.categories) categories.push_back(described(c));
    EXPECT_EQ(categories, GetParam().categories);
    ASSERT_TRUE(week.estimatedGross.has_value());
    EXPECT_EQ(week.estimatedGross->amount().toString() + (week.estimatedGrossIsPartial ? " (Partial)" : ""), GetParam().gross);
}

INSTANTIATE_TEST_SUITE_P(
    HandComputed, StoredWeeks,
    ::testing::Values(
        // 11.5 h: 8 h at 45.00, 3.5 h at 67.50; per diem; 4% of 360.00.
        WeekCase{"anOrdinaryDayWithPerDiemAndVacation",
                 [](StoredWeek& w) {
                     w.rules([](auto& c) { c.additionalCompensation = {onTimedDays("perDiem", "40.00"), vacation()}; });
                     w.rate(0, "45.00");
                     w.dts(0, "7.0", "13.0", "13.5", "19.0");
                 },
                 {"straight Straight Time 360.00", "overtime Time and a Half 236.25", "- Per Diem 40.00", "vacation Vacation Pay 14.40"},
                 "650.65"},
        // The work mode chooses only the daily minimum: lunch 2.1 h late still pays five penalties.
        WeekCase{"aWorkedModeRowKeepsItsMealPenalties",
                 [](StoredWeek& w) {
                     w.rate(0, "45.00");
                     DailyTimeSheets::setWorkMode(w.context, w.dts(0, "7.0", "15.1", "15.6", "19.0"), CrewDailyWorkMode::worked);
                 },
                 {"straight Straight Time 360.00", "overtime Time and a Half 236.25", "meal Meal Penalty 71.50"},
                 "667.75"},
        // A sixth-day schedule whose first band pays x1.5 is time and a half, and outside the vacation basis.
        WeekCase{"aSixthDayAtTimeAndAHalfIsNotStraightTime",
                 [](StoredWeek& w) {
                     w.rules([](auto& c) {
                         c.payrollRules.localSixthDaySchedule = ProductionRulesets::exampleSchedule(RulesLocality::local);
                         for (auto& band : c.payrollRules.localSixthDaySchedule->bands) {
                             band.ruleID.replace(0, std::string("production").size(), "production.sixth-day");
                         }
                         c.payrollRules.localSixthDaySchedule->bands[0].multiplier = Decimal("1.5");
                         c.additionalCompensation = {vacation()};
                     });
                     w.rate(0, "40.00");
                     for (int d = 0; d < 6; ++d) w.eightHourDay(d);
                 },
                 {"straight Straight Time 1600.00", "overtime Time and a Half 480.00", "vacation Vacation Pay 64.00"},
                 "2144.00"},
        // Idle and holiday pay 8 h at the straight-time rate; neither is straight-time earnings.
        WeekCase{"idleAndHolidayPay",
                 [](StoredWeek& w) {
                     w.rules([](auto& c) {
                         c.idleCompensation = IdleCompensationRuleDraft{28800, Decimal(1)};
                         c.holidayCompensation.emplace(HolidayRuleContext::dailyLocal,
                                                       UnworkedHolidayRule(UnworkedHolidayRule::Formula::fixedStraightTimeDuration, 28800, Decimal(1)));
                         c.additionalCompensation = {vacation()};
                     });
                     w.rate(0, "45.00");
                     w.eightHourDay(0);
                     w.activity(1, PayrollDayActivityKind::idleAvailable);
                     w.activity(2, PayrollDayActivityKind::holiday);
                 },
                 {"straight Straight Time 360.00", "- Idle Pay 360.00", "holiday Holiday Pay 360.00", "vacation Vacation Pay 14.40"},
                 "1094.40"},
        // Box rental on the row, a cell phone allowance, and 10 miles at 0.70.
        WeekCase{"boxRentalCellPhoneAndMileage",
                 [](StoredWeek& w) {
                     w.rules([](auto& c) { c.additionalCompensation = {onTimedDays("cellPhoneAllowance", "5.00"), onTimedDays("mileage", "0.70")}; });
                     w.rate(0, "45.00");
                     crew_roster::setBoxRental(w.context, w.engagement.id, monday, "25.00", "USD");
                     const Uuid row = w.eightHourDay(0);
                     DailyTimeSheets::setBoxRental(w.context, row, true);
                     DailyTimeSheets::setRowMileage(w.context, row, Decimal("10"));
                 },
                 {"straight Straight Time 360.00", "boxRental Box / Kit Rental 25.00", "cellPhone Cell Phone Allowance 5.00",
                  "mileage Mileage 7.00"},
                 "397.00"},
        // A raise on Wednesday: one straight-time line per rate.
        WeekCase{"aRaiseWithinTheWeekSplitsTheLineByRate",
                 [](StoredWeek& w) {
                     w.rate(0, "45.00");
                     w.rate(2, "50.00");
                     w.eightHourDay(0);
                     w.eightHourDay(2);
                 },
                 {"straight Straight Time 360.00", "straight Straight Time 400.00"}, "760.00"},
        // Without a rate the hours are still allocated; the gross holds only what can be priced.
        WeekCase{"aMissingRateLeavesTheGrossPartial",
                 [](StoredWeek& w) {
                     w.rules([](auto& c) { c.additionalCompensation = {onTimedDays("perDiem", "40.00")}; });
                     w.eightHourDay(0);
                 },
                 {"straight Straight Time -", "- Per Diem 40.00"}, "40.00 (Partial)"},
        // 8.5 h a day and twenty-four penalties: the twenty priced at fixed dollars are a category; the rest
        // need the contract, so the gross is partial.
        WeekCase{"penaltiesPastTheWeeklyLimitLeaveTheGrossPartial",
                 [](StoredWeek& w) {
                     w.rate(0, "45.00");
                     for (int d = 0; d < 6; ++d) w.dts(d, "7.0", "15.0", "15.5", "16.0");
                 },
                 {"straight Straight Time 2160.00", "overtime Time and a Half 202.50", "meal Meal Penalty 232.50"}, "2595.00 (Partial)"}),
    [](const auto& info) { return std::string(info.param.name); });

// The text of one complex week, kept as a file so that a change of wording shows as a diff. Set
// TESSEL_UPDATE_SNAPSHOTS=1 to rewrite it after an intended change.
TEST_F(StoredWeek, TheTextOfAComplexWeekIsUnchanged) {
    rules([](auto& c) {
        c.additionalCompensation = {onTimedDays("perDiem", "40.00"), onTimedDays("mileage", "0.70"), vacation()};
        c.idleCompensation = IdleCompensationRuleDraft{28800, Decimal(1)};
        c.payrollRules.turnaroundRules = TurnaroundRulesDraft{};
        c.payrollRules.turnaroundRules->localAllOthersRestSeconds = 36000;
    });
    rate(0, "45.00");
    rate(3, "48.00");
    crew_roster::setBoxRental(context, engagement.id, monday, "25.00", "USD");
    DailyTimeSheets::setBoxRental(context, dts(0, "7.0", "13.0", "13.5", "19.0"), true);
    DailyTimeSheets::setWorkMode(context, dts(1, "7.0", "15.1", "15.6", "19.0"), CrewDailyWorkMode::worked);
    dts(2, "7.0", "13.0", "13.5", "20.3");
    DailyTimeSheets::setRowMileage(context, dts(3, "7.0", nullptr, nullptr, "12.0"), Decimal("12.5"));
    activity(4, PayrollDayActivityKind::idleAvailable);

    const std::string text = review_text::weekly(review(), {});
    const std::string path = std::string(TESSEL_TEST_SOURCE_DIR) + "/expected/snapshots/complex-week.txt";
    if (std::getenv("TESSEL_UPDATE_SNAPSHOTS")) std::ofstream(path, std::ios::binary) << text;
    std::ifstream file(path, std::ios::binary);
    std::stringstream kept;
    kept << file.rdbuf();
    EXPECT_EQ(text, kept.str()) << "The review text changed; if intended, run the test with TESSEL_UPDATE_SNAPSHOTS=1.";

    // --explain names the rule behind each line.
    const std::string explained = review_text::weekly(review(), {.explain = true});
    for (const char* rule : {"[production.band.straight-time]", "[production.meal-penalty.schedule-a]", "[production.provision.perDiem]",
                             "[production.idle]", "[overScale]", "[meal.first.deadline; production.meal-penalty.schedule-a]"}) {
        EXPECT_NE(explained.find(rule), std::string::npos) << rule << "\n" << explained;
    }
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A review kept between edits, told which DTS changed, answers exactly as a new review does.
class KeptReviews;
struct EditCase {
    const char* name;
    std::function<void(KeptReviews&, ExpectedPayrollReview&)> edit;  // makes the edit and tells the review
};

class KeptReviews : public StoredWeek, public ::testing::WithParamInterface<EditCase> {
public:
    std::vector<Uuid> rows;
    Uuid secondPerson = crew_repository::createCrewMember(context, production.id, "Ada Quill").id;

    void SetUp() override {
        rules([](auto& c) {
            c.additionalCompensation = {onTimedDays("perDiem", "40.00"), vacation()};
            c.idleCompensation = IdleCompensationRuleDraft{28800, Decimal(1)};
        });
        rate(0, "45.00");
        for (int d = 0; d < 3; ++d) rows.push_back(eightHourDay(d));
        const auto ada = crew_repository::createEngagement(context, production.id, secondPerson, monday);
        crew_repository::addPayRate(context, ada.id, monday, "38.00", "USD");
    }
    Uuid workdayOf(int offset) { return DailyTimeSheets::find(context, production.id, dayOf(offset))->id; }
    std::string everyone(ExpectedPayrollReview& review) {
        const auto week = ProductionWeekCalendars::findOrCreateWeek(context, production.id, monday);
        std::string text;
        for (const auto& r : review.weeklyForAll(week.id)) text += review_text::weekly(r, {.explain = true});
        return text;
    }
};

TEST_P(KeptReviews, AnswerAsANewReviewDoes) {
    ExpectedPayrollReview kept(context, production.id);
    const auto before = everyone(kept);
    GetParam().edit(*this, kept);
    ExpectedPayrollReview fresh(context, production.id);
    const auto after = everyone(fresh);
    EXPECT_NE(before, after);  // the edit shows
    EXPECT_EQ(everyone(kept), after);
}

INSTANTIATE_TEST_SUITE_P(
    Edits, KeptReviews,
    ::testing::Values(
        EditCase{"aSharedWrap",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     DailyTimeSheets::setSharedTime(w.context, w.workdayOf(1), DTSTimeField::wrap, at(dayOf(1), "20.3"));
                     kept.forgetTimeSheet(w.workdayOf(1));
                 }},
        // The next day's call shortens the rest after Monday: Monday's turnaround changes too.
        EditCase{"theNextDaysCall",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     DailyTimeSheets::setRowTime(w.context, w.rows[1], DTSTimeField::call, at(dayOf(1), "4.0"));
                     kept.forgetTimeSheet(w.workdayOf(1));
                 }},
        EditCase{"aRowsWorkMode",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     DailyTimeSheets::setWorkMode(w.context, w.rows[2], CrewDailyWorkMode::prep);
                     kept.forgetTimeSheet(w.workdayOf(2));
                 }},
        EditCase{"aRowAdded",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     CrewOnDTS::addRow(w.context, w.workdayOf(0), w.secondPerson);
                     kept.forgetTimeSheet(w.workdayOf(0));
                 }},
        // Without its Tuesday row, Rowan's Wednesday is the second day of the workweek.
        EditCase{"aRowRemoved",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     CrewOnDTS::removeRow(w.context, w.rows[1]);
                     kept.forgetTimeSheet(w.workdayOf(1));
                 }},
        EditCase{"aDTSDeleted",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     const Uuid tuesday = w.workdayOf(1);
                     DailyTimeSheets::remove(w.context, tuesday);
                     kept.forgetTimeSheet(tuesday);
                 }},
        // A Position with a scale above the rate: every day is paid the scale floor from then on.
        EditCase{"anEngagementsPositionAndScale",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     const auto gaffer = positions::add(w.context, PositionScope::production, w.production.id, {"Gaffer", std::nullopt, std::nullopt}, {});
                     rate_cards::addScale(w.context, w.production.id, "2026 Basic", gaffer, "52.20", dayOf(0), EmploymentSchedule::daily);
                     rate_cards::engageInPosition(w.context, w.engagement.id, gaffer, dayOf(0), false, {});
                     kept.forgetPositions();
                 }},
        EditCase{"aPositionsAndAPersonsScheduleChanges",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     PositionEdit edit{"Gaffer", std::nullopt, std::nullopt};
                     edit.overtime = PositionProvision{PositionProvisionMode::custom, 6 * 3600};
                     const auto gaffer = positions::add(w.context, PositionScope::production, w.production.id, edit, {});
                     rate_cards::engageInPosition(w.context, w.engagement.id, gaffer, dayOf(0), false, {});
                     rate_cards::setPersonalScheduleChanges(w.context, w.engagement.id, {{}, {}, {PositionProvisionMode::custom, 7 * 3600}}, {});
                     kept.forgetPositions();
                     w.everyone(kept);
                     // A second change of the same position is seen too.
                     PositionEdit later;
                     later.overtime = PositionProvision{PositionProvisionMode::custom, 5 * 3600};
                     positions::update(w.context, gaffer, later, {});
                     kept.forgetPositions();
                 }},
        EditCase{"aJobForToday",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     const auto op = positions::add(w.context, PositionScope::production, w.production.id, {"Operator", std::nullopt, std::nullopt}, {});
                     rate_cards::addScale(w.context, w.production.id, "2026 Basic", op, "70.00", dayOf(0), EmploymentSchedule::daily);
                     kept.forgetPositions();
                     CrewOnDTS::setJobForToday(w.context, w.rows[1], op.id);
                     kept.forgetTimeSheet(w.workdayOf(1));
                 }},
        EditCase{"aNewDTSAndAnActivity",
                 [](KeptReviews& w, ExpectedPayrollReview& kept) {
                     w.eightHourDay(3);
                     w.activity(4, PayrollDayActivityKind::idleAvailable);
                     kept.forgetTimeSheets();
                 }}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
