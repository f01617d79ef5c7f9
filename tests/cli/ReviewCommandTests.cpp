#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

using Outcome = testing::CommandOutcome;

class ReviewCommandsBase : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Rowan Vale", "--from", "2026-11-02", "--rate", "45.00"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Ada Quill", "--from", "2026-11-02"}).status, 0);
        ASSERT_EQ(run({"dts", "create", "2026-11-03"}).status, 0);
        ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "7.0", "--lunch-out", "13.0", "--lunch-in", "13.5", "--wrap", "19.0"}).status, 0);
    }
};

class ReviewCommands : public ReviewCommandsBase {};

TEST_F(ReviewCommands, AWeekReviewCoversEveryCrewMemberWithTheirCategories) {
    const auto outcome = run({"review", "week", "2026-11-05", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json reviews = outcome.json()["weeklyReviews"];
    ASSERT_EQ(reviews.size(), 2u);
    const Json& rowan = reviews[0]["crewName"] == "Rowan Vale" ? reviews[0] : reviews[1];
    EXPECT_EQ(rowan["weekStartDate"], "2026-11-02");
    EXPECT_EQ(rowan["categories"][1]["label"], "Time and a Half");
    EXPECT_EQ(rowan["categories"][1]["compensation"]["amount"], "236.25");
    EXPECT_EQ(rowan["estimatedGross"]["amount"], "596.25");
    const Json& ada = &rowan == &reviews[0] ? reviews[1] : reviews[0];
    EXPECT_EQ(ada["estimatedGrossLabel"], "Estimated Gross (Partial)");
    EXPECT_EQ(ada["estimatedGross"]["amount"], "0.00");
    EXPECT_EQ(ada["issues"][0]["kind"], "missingRate");
}

TEST_F(ReviewCommands, TheTextReviewNamesTheDayAndItsTotal) {
    const auto outcome = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("Rowan Vale, week of 2026-11-02"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("Day total (hours in the pay bands): 596.25"), std::string::npos) << outcome.out;
    EXPECT_EQ(outcome.out.find("Ada Quill"), std::string::npos);
    ASSERT_EQ(run({"crew", "add", "Bo Park", "--from", "2026-11-04"}).status, 0);
    EXPECT_NE(run({"review", "week", "2026-11-03", "--crew", "Bo Park"}).out.find("  No DTS row or activity in this Payroll Week.\n"),
              std::string::npos);
}

TEST_F(ReviewCommands, TheTextReviewHidesMoneyWhenTheUserAsks) {
    ASSERT_EQ(run({"settings", "set", "userSettings.showMonetaryDetails", "false"}).status, 0);
    const auto outcome = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"});
    EXPECT_NE(outcome.out.find("      OT  3.5 h x1.5\n"), std::string::npos) << outcome.out;
    for (const char* money : {"236.25", "Day total", "Estimated Gross"}) EXPECT_EQ(outcome.out.find(money), std::string::npos) << money;
    // The records keep their money.
    EXPECT_EQ(run({"review", "week", "2026-11-03", "--crew", "Rowan Vale", "--json"}).json()["weeklyReviews"][0]["estimatedGross"]["amount"],
              "596.25");
}

TEST_F(ReviewCommands, TheTextReviewNamesAllowancesAsTheyAreCalled) {
    Json rules = run({"rules", "show", "--json"}).json();
    rules["additionalCompensation"] =
        Json::array({Json{{"kind", "perDiem"}, {"isEnabled", true}, {"amount", "40.00"}, {"currencyCode", "USD"}, {"timedWorkDayEligible", true},
                          {"workedEligible", true}, {"prepEligible", true}, {"idleAvailableEligible", false}, {"travelEligible", false},
                          {"holidayEligible", false}, {"personalUnavailableEligible", false}}});
    const auto path = (folder.path() / "rules.json").string();
    testing::writeFile(path, rules.dump());
    ASSERT_EQ(run({"rules", "set", path}).status, 0);
    const auto outcome = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"});
    EXPECT_NE(outcome.out.find("      Per Diem 40.00 (timed work day)\n"), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("    Per Diem  1 day                40.00\n"), std::string::npos) << outcome.out;
    EXPECT_NE(run({"rules", "show"}).out.find("  Per Diem: 40.00 USD a day"), std::string::npos);
}

TEST_F(ReviewCommands, TheWeekShowsSixthDayHoursUnderTheirOwnSchedule) {
    Json rules = run({"rules", "show", "--json"}).json();
    Json sixth = rules["payrollRules"]["localSchedule"];
    for (auto& band : sixth["bands"]) {
        band["ruleID"] = "production.sixth-day." + band["ruleID"].get<std::string>().substr(std::string("production.").size());
    }
    sixth["bands"][0]["multiplier"] = "1.5";
    rules["payrollRules"]["localSixthDaySchedule"] = sixth;
    const auto path = (folder.path() / "rules.json").string();
    testing::writeFile(path, rules.dump());
    const auto applied = run({"rules", "set", path});
    ASSERT_EQ(applied.status, 0) << applied.err;
    for (const char* date : {"2026-11-02", "2026-11-04", "2026-11-05", "2026-11-06", "2026-11-07"}) {
        ASSERT_EQ(run({"dts", "create", date}).status, 0);
        ASSERT_EQ(run({"dts", "set", date, "--call", "7.0", "--lunch-out", "13.0", "--lunch-in", "13.5", "--wrap", "17.0"}).status, 0);
    }
    const auto weekText = [&] {
        const auto outcome = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"});
        return outcome.out.substr(outcome.out.find("  Week:"));
    };
    // Monday to Friday: 8 h straight time each, and 1.5 h (Tuesday 3.5 h) at time and a half.
    EXPECT_NE(weekText().find("    Unassigned Classification\n"
                              "    ST  40.0 h x 45.00 x1    1800.00\n"
                              "    OT   9.5 h x 45.00 x1.5   641.25\n"
                              "    Sixth-day schedule:\n"
                              "    OT   8.0 h x 45.00 x1.5   540.00\n"
                              "    OT   1.5 h x 45.00 x1.5   101.25\n"),
              std::string::npos)
        << weekText();
    // Labelled by multiplier instead, as the user may prefer.
    ASSERT_EQ(run({"settings", "set", "userSettings.straightTimeLabel", "multiplier"}).status, 0);
    ASSERT_EQ(run({"settings", "set", "userSettings.overtimeLabel", "multiplier"}).status, 0);
    EXPECT_NE(weekText().find("    1x    40.0 h x 45.00 x1    1800.00\n"
                              "    1.5x   9.5 h x 45.00 x1.5   641.25\n"
                              "    Sixth-day schedule:\n"
                              "    1.5x   8.0 h x 45.00 x1.5   540.00\n"),
              std::string::npos)
        << weekText();
}

TEST_F(ReviewCommands, AGoldenHourAdvisoryOnceDismissedStaysDismissed) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--wrap", ""}).status, 0);
    const auto advised = [&] {
        const Json rows = run({"review", "golden-hour", "2026-11-03", "--at", "18.7", "--json"}).json()["rows"];
        std::vector<std::string> names;
        for (const auto& row : rows) {
            if (row.contains("advisory")) names.push_back(row["crewName"]);
        }
        return names;
    };
    EXPECT_EQ(advised(), (std::vector<std::string>{"Rowan Vale", "Ada Quill"}));
    const auto dismissal = run({"review", "golden-hour", "2026-11-03", "--at", "18.7", "--dismiss", "Ada Quill"});
    ASSERT_EQ(dismissal.status, 0) << dismissal.err;
    EXPECT_NE(dismissal.out.find("Dismissed the Golden Hour advisory for Ada Quill on 2026-11-03."), std::string::npos);
    EXPECT_EQ(advised(), (std::vector<std::string>{"Rowan Vale"}));
}

struct RefusedReview {
    const char* name;
    std::vector<std::string> arguments;
    int status;
    const char* sentence;
};

class RefusedReviewCommand : public ReviewCommands, public ::testing::WithParamInterface<RefusedReview> {};

TEST_P(RefusedReviewCommand, ExitsOneWithTheSentence) {
    const auto outcome = run(GetParam().arguments);
    EXPECT_EQ(outcome.status, GetParam().status);
    EXPECT_EQ(outcome.err, std::string(GetParam().sentence) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Arguments, RefusedReviewCommand,
    ::testing::Values(RefusedReview{"unknownCrew", {"review", "week", "2026-11-03", "--crew", "Nobody"}, 1,
                                                    "There is no crew member named \u201CNobody\u201D on this production."},
                      RefusedReview{"badDate", {"review", "week", "3 Nov"}, 2, "Enter the date as YYYY-MM-DD, such as 2026-11-02."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ReviewCommands, CalcDayPricesAStandaloneDayUnderTheProductionsRules) {
    const auto outcome = run({"calc", "day", "--call", "7.0", "--lunch-out", "15.0", "--lunch-in", "15.5", "--wrap", "19.0", "--rate", "40.00", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json day = outcome.json();
    EXPECT_EQ(day["categories"][0]["compensation"]["amount"], "320.00");
    EXPECT_EQ(day["mealPeriods"][0]["occurrences"].size(), 4u);
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// The work mode chooses only which days the daily minimum pays for; meal penalties follow the times
// entered, whatever the mode.
class MealPenaltiesInEveryWorkMode : public ReviewCommandsBase, public ::testing::WithParamInterface<const char*> {};

TEST_P(MealPenaltiesInEveryWorkMode, ALateLunchPaysItsPenalties) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--lunch-out", "15.1", "--lunch-in", "15.6"}).status, 0);
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Rowan Vale", "--mode", GetParam()}).status, 0);
    const auto outcome = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.json()["weeklyReviews"][0]["mealPenalties"]["occurrences"].size(), 5u) << outcome.out;
}

INSTANTIATE_TEST_SUITE_P(Modes, MealPenaltiesInEveryWorkMode, ::testing::Values("timed", "worked", "prep"));

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A holiday rule missing for the person's kind of hire is named in words, not by its stored value.
TEST_F(ReviewCommandsBase, AMissingHolidayRuleNamesTheKindOfHireInWords) {
    Json rules = run({"rules", "show", "--json"}).json();
    rules["holidayCompensation"] = Json{{"dailyDistant", Json{{"formula", "fixedStraightTimeDuration"}, {"compensatedSeconds", 28800},
                                                              {"rateMultiplier", "1"}}}};
    ASSERT_EQ(run({"rules", "set", write(rules)}).status, 0);
    ASSERT_EQ(run({"activity", "add", "2026-11-04", "holiday", "Rowan Vale"}).status, 0);
    const auto review = run({"review", "week", "2026-11-04", "--crew", "Rowan Vale"});
    ASSERT_EQ(review.status, 0) << review.err;
    EXPECT_NE(review.out.find("This Ruleset does not define Unworked Holiday Pay for local daily hires."), std::string::npos)
        << review.out;
    EXPECT_EQ(review.out.find("dailyLocal"), std::string::npos);
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A sixth day with no schedule of its own is paid under the ordinary one, and the review says so.
TEST_F(ReviewCommandsBase, ASixthDayWithoutItsOwnScheduleSaysItIsPaidUnderTheOrdinaryOne) {
    for (const char* date : {"2026-11-02", "2026-11-04", "2026-11-05", "2026-11-06", "2026-11-07"}) {
        ASSERT_EQ(run({"dts", "create", date}).status, 0);
        ASSERT_EQ(run({"dts", "set", date, "--call", "7.0", "--lunch-out", "13.0", "--lunch-in", "13.5", "--wrap", "17.0"}).status, 0);
    }
    const auto review = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"});
    ASSERT_EQ(review.status, 0) << review.err;
    EXPECT_NE(review.out.find("Day 6 of the workweek, sixth day, ordinary schedule, local"), std::string::npos) << review.out;
    EXPECT_EQ(review.out.find("sixth-day schedule"), std::string::npos) << review.out;
    EXPECT_EQ(review.out.find("Sixth-day schedule:"), std::string::npos) << review.out;
    EXPECT_EQ(run({"review", "week", "2026-11-03", "--crew", "Rowan Vale", "--json"}).json()["weeklyReviews"][0]["days"][5]["scheduleDayKind"],
              "ordinary");
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A week of local and distant days pays a straight-time line under each schedule; each says which.
TEST_F(ReviewCommandsBase, LocalAndDistantLinesOfOneWeekAreToldApart) {
    ASSERT_EQ(run({"dts", "create", "2026-11-04"}).status, 0);
    ASSERT_EQ(run({"dts", "set", "2026-11-04", "--call", "7.0", "--lunch-out", "13.0", "--lunch-in", "13.5", "--wrap", "15.0"}).status, 0);
    ASSERT_EQ(run({"dts", "row", "2026-11-04", "Rowan Vale", "--locality", "distant"}).status, 0);
    const auto review = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"});
    ASSERT_EQ(review.status, 0) << review.err;
    const std::string week = review.out.substr(review.out.find("  Week:"));
    EXPECT_NE(week.find("    ST local    8.0 h x 45.00 x1    360.00\n"), std::string::npos) << week;
    EXPECT_NE(week.find("    ST distant  8.0 h x 45.00 x1    360.00  (0.5 h guaranteed)\n"), std::string::npos) << week;
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A raise on Thursday splits the week's lines by rate, so that hours times rate gives each amount.
TEST_F(ReviewCommandsBase, ARateChangedWithinTheWeekSplitsItsLinesByRate) {
    for (const char* date : {"2026-11-05", "2026-11-06"}) {
        ASSERT_EQ(run({"dts", "create", date}).status, 0);
        ASSERT_EQ(run({"dts", "set", date, "--call", "7.0", "--lunch-out", "13.0", "--lunch-in", "13.5", "--wrap", "15.5"}).status, 0);
    }
    ASSERT_EQ(run({"crew", "rate", "Rowan Vale", "50.00", "--from", "2026-11-05"}).status, 0);
    const auto review = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale", "--json"});
    ASSERT_EQ(review.status, 0) << review.err;
    std::vector<std::pair<std::string, std::string>> straight;  // rate, amount
    const Json answer = review.json();
    for (const auto& category : answer["weeklyReviews"][0]["categories"]) {
        if (category["label"] == "Straight Time") {
            straight.emplace_back(category["baseHourlyRate"]["amount"], category["compensation"]["amount"]);
        }
    }
    EXPECT_EQ(straight, (std::vector<std::pair<std::string, std::string>>{{"45.00", "360.00"}, {"50.00", "800.00"}}));
    const auto text = run({"review", "week", "2026-11-03", "--crew", "Rowan Vale"}).out;
    EXPECT_NE(text.find("    ST  16.0 h x 50.00 x1    800.00\n"), std::string::npos) << text;
}

}  // namespace
}  // namespace tessel
