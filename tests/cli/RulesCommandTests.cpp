#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

using Outcome = testing::CommandOutcome;

class RulesCommands : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    }
};

TEST_F(RulesCommands, ShowSetShowRoundTrips) {
    Json rules = run({"rules", "show", "--json"}).json();
    EXPECT_EQ(rules["payrollRules"]["name"], "Custom Production Rules");
    rules["payrollRules"]["name"] = "Feature Rules";
    rules["payrollRules"]["localSchedule"]["bands"][2]["entryThresholdBasis"] = "elapsed";
    rules["mealPenaltyRules"]["fixedDollarWeeklyLimit"] = 12;
    rules["idleCompensation"] = Json{{"compensatedSecondsPerDay", 28800}, {"straightTimeRateMultiplier", 1.0}};
    const auto applied = run({"rules", "set", write(rules)});
    ASSERT_EQ(applied.status, 0) << applied.err;
    rules["idleCompensation"]["straightTimeRateMultiplier"] = "1.0";  // a number is read from its own digits
    // Compared without key order: the test added a key at the end.
    EXPECT_EQ(nlohmann::json::parse(run({"rules", "show", "--json"}).out), nlohmann::json::parse(rules.dump()));
    EXPECT_NE(run({"rules", "show"}).out.find("Payroll rules have been reviewed for this production."), std::string::npos);
}

struct RefusedRules {
    const char* name;
    std::function<void(Json&)> change;
    int status;
    const char* sentence;
};

class RefusedRulesDocument : public RulesCommands, public ::testing::WithParamInterface<RefusedRules> {};

TEST_P(RefusedRulesDocument, ExitsWithTheSentenceAndChangesNothing) {
    Json rules = run({"rules", "show", "--json"}).json();
    const Json before = rules;
    GetParam().change(rules);
    const auto refused = run({"rules", "set", write(rules)});
    EXPECT_EQ(refused.status, GetParam().status);
    EXPECT_EQ(refused.err, std::string(GetParam().sentence) + "\n");
    EXPECT_EQ(run({"rules", "show", "--json"}).json(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, RefusedRulesDocument,
    ::testing::Values(
        RefusedRules{"blankName", [](Json& r) { r["payrollRules"]["name"] = " "; }, 1, "Ruleset name is required."},
        RefusedRules{"closedFinalBand", [](Json& r) { r["payrollRules"]["distantSchedule"]["bands"][2]["upperBoundSeconds"] = 50000; }, 1,
                     "The final pay band must be open-ended."},
        RefusedRules{"zeroHolidayMultiplier",
                     [](Json& r) {
                         r["holidayCompensation"] = Json{{"dailyLocal", Json{{"formula", "fixedStraightTimeDuration"},
                                                                             {"compensatedSeconds", 28800}, {"rateMultiplier", "0"}}}};
                     },
                     1, "Holiday compensated hours and multiplier must be greater than zero."},
        RefusedRules{"deletedSchedule", [](Json& r) { r["mealPenaltyRules"]["schedules"].erase(1); }, 1, "Meal Penalty Rules are incomplete."},
        RefusedRules{"zeroInterval",
                     [](Json& r) {
                         r["mealPenaltyRules"]["timingRules"] = Json{{"firstMealDueSeconds", 21600}, {"subsequentMealDueSeconds", 21600},
                                                                     {"penaltyIntervalSeconds", 0}, {"calledFirstMealGraceSeconds", 720},
                                                                     {"subsequentMealGraceSeconds", 720},
                                                                     {"subsequentGraceIsRetroactiveIfExceeded", false}};
                     },
                     1, "Meal Penalty timing durations must be positive."},
        RefusedRules{"negativeMultiplier", [](Json& r) { r["payrollRules"]["localSchedule"]["bands"][1]["multiplier"] = "-1.5"; }, 1,
                     "A rate multiplier cannot be negative."},
        RefusedRules{"negativeProvision",
                     [](Json& r) {
                         r["additionalCompensation"] = Json::array({Json{{"kind", "perDiem"}, {"isEnabled", true}, {"amount", "-40.00"},
                                                                         {"currencyCode", "USD"}, {"timedWorkDayEligible", true},
                                                                         {"workedEligible", true}, {"prepEligible", true},
                                                                         {"idleAvailableEligible", false}, {"travelEligible", false},
                                                                         {"holidayEligible", false}, {"personalUnavailableEligible", false}}});
                     },
                     1, "A compensation provision amount is invalid."},
        RefusedRules{"missingKey", [](Json& r) { r["payrollRules"].erase("localSchedule"); }, 2,
                     "The field \u201CpayrollRules.localSchedule\u201D is missing."},
        RefusedRules{"unknownBasis", [](Json& r) { r["payrollRules"]["localSchedule"]["bands"][0]["entryThresholdBasis"] = "clock"; }, 2,
                     "The field \u201CpayrollRules.localSchedule.bands[0].entryThresholdBasis\u201D has the unknown value \u201Cclock\u201D."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(RulesCommands, TheSandboxGivesBandsThatTheCalculatorTakes) {
    const Json sandbox = run({"rules", "sandbox", "--date", "2026-11-03", "--locality", "distant", "--json"}).json();
    EXPECT_EQ(sandbox["rulesLocality"], "distant");
    EXPECT_EQ(sandbox["mealPenaltySchedule"]["ruleID"], "production.meal-penalty.schedule-b");
    // Pay comparison pairs each band with stub lines by these concepts; guaranteed time is paid inside the bands.
    EXPECT_EQ(nlohmann::json::parse(sandbox["comparisonConceptsByRuleID"].dump()),
              (nlohmann::json{{"production.distant.band.straight-time", "straight"},
                              {"production.distant.band.time-and-a-half", "overtime"},
                              {"production.distant.band.double-time", "double"}}));
    Json day{{"bands", sandbox["bands"]}, {"segments", Json::array({Json{{"kind", "compensableWork"}, {"durationSeconds", 36000}}})}};
    std::istringstream in(day.dump());
    std::ostringstream out, err;
    ASSERT_EQ(runCommandLine({"calc", "allocate"}, {in, out, err}), 0) << err.str();
    EXPECT_EQ(Json::parse(out.str())["components"][1]["ruleID"], "production.distant.band.time-and-a-half");
    EXPECT_EQ(run({"rules", "sandbox", "--date", "2020-01-01"}).err, "This Production does not have a Ruleset revision.\n");
    EXPECT_EQ(run({"rules", "sandbox", "--day", "eighthDay"}).status, 2);
}

}  // namespace
}  // namespace tessel
