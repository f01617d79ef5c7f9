#include <gtest/gtest.h>

#include <sstream>

#include "App/model/JSONFields.hpp"
#include "App/cli/CommandLine.hpp"

namespace tessel {
namespace {

const std::string bands = R"([
  {"ruleID":"st","entryThresholdSeconds":0,"entryThresholdBasis":"worked","upperBoundSeconds":28800,"multiplier":"1"},
  {"ruleID":"ot","entryThresholdSeconds":28800,"entryThresholdBasis":"worked","upperBoundSeconds":43200,"multiplier":"1.5"},
  {"ruleID":"dt","entryThresholdSeconds":43200,"entryThresholdBasis":"elapsed","multiplier":"2"}])";
const std::string cents = R"({"increment":"0.01","method":"nearestAwayFromZero"})";
const std::string thirtyDollars = R"({"amount":"30.00","currency":"USD"})";
const std::string mealRule =
    R"({"ruleID":"meal.first.deadline","dueAfterClockStartSeconds":21600,"penaltyIntervalSeconds":1800,"grace":{"protectedExtensionSeconds":720,"retroactiveIfExceeded":false}})";

// A week's meal penalty period whose evaluated result holds one penalty with the given number and status.
std::string weekWithPenalty(const std::string& occurrenceOrdinal, const std::string& statusCase) {
    return R"({"days":[],"currency":"USD","mealPenaltyPeriods":[{"sourceDayID":"d1","productionDate":"2026-11-02",
        "schedule":{"ruleID":"meal.schedule","earlyOrdinalAmounts":[{"amount":"7.50","currency":"USD"}],"repeatingAmount":{"amount":"10.00","currency":"USD"}},
        "fixedDollarWeeklyLimit":10,
        "result":{"mealPeriodOrdinal":1,"status":{"case":")" + statusCase + R"("},"trace":{"ruleID":"meal.first.deadline"},
                  "occurrences":[{"id":{"mealPeriodOrdinal":1,"mealPeriodOccurrenceOrdinal":)" + occurrenceOrdinal + R"(},
                                  "intervalStart":"2026-11-02T13:00:00Z","intervalEnd":"2026-11-02T13:30:00Z"}]}}]})";
}

struct CommandCase {
    const char* name;
    std::string command;
    std::string input;
    int status;
    std::string pointer;  // a JSON pointer into the answer
    Json expected;
};

class CompensationCommand : public ::testing::TestWithParam<CommandCase> {};

TEST_P(CompensationCommand, AnswersWithTheRecord) {
    const auto& c = GetParam();
    std::istringstream in(c.input);
    std::ostringstream out, err;
    EXPECT_EQ(runCommandLine({"calc", c.command}, {in, out, err}), c.status) << err.str() << out.str();
    if (c.status == 2) {
        EXPECT_TRUE(out.str().empty());
        EXPECT_FALSE(err.str().empty());
        return;
    }
    const Json answer = Json::parse(out.str());
    EXPECT_EQ(answer.at(Json::json_pointer(c.pointer)), c.expected) << answer.dump(2);
}

INSTANTIATE_TEST_SUITE_P(
    Calc, CompensationCommand,
    ::testing::Values(
        CommandCase{"grossTotal", "gross",
                    R"({"bands":)" + bands + R"(,"segments":[{"kind":"compensableWork","durationSeconds":36000}],"hourlyRate":)" +
                        thirtyDollars + R"(,"rounding":)" + cents + "}",
                    0, "/total", Json{{"amount", "330.00"}, {"currency", "USD"}}},
        CommandCase{"grossConfirmedDay", "gross",
                    R"({"bands":)" + bands + R"(,"segments":[],"dailyMinimum":{"ruleID":"d","minimumPaidDurationSeconds":28800},"eligibility":"confirmedWorkedDay","hourlyRate":)" +
                        thirtyDollars + R"(,"rounding":)" + cents + "}",
                    0, "/trace/dailyMinimumGuaranteeAdjustment/reason", "appliedConfirmedWorkedDay"},
        CommandCase{"grossBandOnUnknownBand", "gross",
                    R"({"bands":)" + bands + R"(,"segments":[],"bandGuarantees":[{"ruleID":"g","targetPayBandRuleID":"xx","minimumPaidDurationSeconds":60}],"hourlyRate":)" +
                        thirtyDollars + R"(,"rounding":)" + cents + "}",
                    1, "/error", "targetPayBandNotFound"},
        CommandCase{"grossNegativeRate", "gross",
                    R"({"bands":)" + bands + R"(,"segments":[],"hourlyRate":{"amount":"-1","currency":"USD"},"rounding":)" + cents + "}",
                    1, "/error", "negativeAmount"},
        CommandCase{"grossBadCurrency", "gross",
                    R"({"bands":)" + bands + R"(,"segments":[],"hourlyRate":{"amount":"1","currency":"US"},"rounding":)" + cents + "}",
                    1, "/text", "US"},
        CommandCase{"grossUnknownMethod", "gross",
                    R"({"bands":)" + bands + R"(,"segments":[],"hourlyRate":)" + thirtyDollars +
                        R"(,"rounding":{"increment":"0.01","method":"up"}})",
                    2, "", nullptr},
        CommandCase{"mealProtected", "meal",
                    R"({"rule":)" + mealRule + R"(,"firstMeal":{"employeeCall":"2026-11-02T07:00:00Z","generalCrewCall":"2026-11-02T07:00:00Z","mealOut":"2026-11-02T13:10:00Z","graceWasCalled":true}})",
                    0, "/trace/firstMealGraceDisposition", "protected"},
        CommandCase{"mealLaterPeriod", "meal",
                    R"({"rule":)" + mealRule + R"(,"period":{"mealPeriodOrdinal":2,"clockStart":{"kind":"mealIn","timestamp":"2026-11-02T13:30:00Z"},"satisfactionEvent":{"kind":"wrap","timestamp":"2026-11-02T20:30:00Z"}}})",
                    0, "/trace/occurrenceCount", 2},
        CommandCase{"mealIncomplete", "meal", R"({"rule":)" + mealRule + R"(,"firstMeal":{}})", 0, "/status",
                    Json{{"case", "incomplete"}, {"reason", "missingClockStart"}}},
        CommandCase{"mealThirtyYearsLate", "meal",
                    R"({"rule":)" + mealRule + R"(,"firstMeal":{"employeeCall":"2026-11-02T07:00:00Z","mealOut":"2056-11-02T13:09:00Z"}})",
                    2, "", nullptr},
        CommandCase{"mealBadInstant", "meal", R"({"rule":)" + mealRule + R"(,"firstMeal":{"mealOut":"13:00"}})", 2, "", nullptr},
        CommandCase{"mealBothForms", "meal", R"({"rule":)" + mealRule + R"(,"firstMeal":{},"period":{"mealPeriodOrdinal":1}})", 2, "", nullptr},
        CommandCase{"mealZeroInterval", "meal",
                    R"({"rule":{"ruleID":"m","dueAfterClockStartSeconds":60,"penaltyIntervalSeconds":0},"firstMeal":{}})",
                    1, "/error", "penaltyIntervalMustBePositive"},
        CommandCase{"turnaroundExact", "turnaround",
                    R"({"rule":{"ruleID":"r","requiredRestSeconds":36000,"valueOrigin":"engagement.turnaround.required-rest"},"priorWrap":"2026-11-02T23:00:00Z","nextCall":"2026-11-03T09:00:00+00:00"})",
                    0, "/status/explanation", "Call exactly at required turnaround"},
        CommandCase{"turnaroundBeyondAnyInstant", "turnaround",
                    R"({"rule":{"ruleID":"r","requiredRestSeconds":9223372036854775000,"valueOrigin":"engagement.turnaround.required-rest"},"priorWrap":"2026-11-02T23:00:00Z","nextCall":"2026-11-03T09:00:00Z"})",
                    1, "/error", "arithmeticOverflow"},
        CommandCase{"weekPenaltyPriced", "week", weekWithPenalty("1", "evaluated"), 0, "/mealPenalties/fixedDollarSubtotal/amount", "7.50"},
        CommandCase{"weekPenaltyNumberedZero", "week", weekWithPenalty("0", "evaluated"), 2, "", nullptr},
        CommandCase{"weekPenaltyNumberBeyondInt", "week", weekWithPenalty("4294967297", "evaluated"), 2, "", nullptr},
        CommandCase{"weekMealNotEvaluated", "week", weekWithPenalty("1", "incomplete"), 2, "", nullptr},
        CommandCase{"weekDayIndexBeyondInt", "week",
                    R"({"currency":"USD","days":[{"dayIndex":4294967296,"actualWorkedDurationSeconds":60,"components":[],"compensationAmount":{"amount":"0","currency":"USD"}}]})",
                    2, "", nullptr},
        CommandCase{"turnaroundUnconfigured", "turnaround", R"({"priorWrap":"2026-11-02T23:00:00Z"})", 0, "/status/case",
                    "incompleteUnconfiguredRequiredRest"},
        CommandCase{"weekInconsistentMultiplier", "week",
                    R"({"days":[{"dayIndex":0,"actualWorkedDurationSeconds":60,"components":[{"ruleID":"ot","actualAllocatedDurationSeconds":60,"paidDurationSeconds":60,"multiplier":"1.5","roundedAmount":{"amount":"1","currency":"USD"}}],"compensationAmount":{"amount":"1","currency":"USD"}},
                                {"dayIndex":1,"actualWorkedDurationSeconds":60,"components":[{"ruleID":"ot","actualAllocatedDurationSeconds":60,"paidDurationSeconds":60,"multiplier":"2","roundedAmount":{"amount":"1","currency":"USD"}}],"compensationAmount":{"amount":"1","currency":"USD"}}]})",
                    1, "/ruleID", "ot"},
        CommandCase{"weekEmpty", "week", R"({"days":[],"currency":"CAD"})", 0, "/payroll/totalCompensation/currency", "CAD"},
        CommandCase{"weekEmptyNoCurrency", "week", R"({"days":[]})", 1, "/error", "emptyWeekRequiresCurrency"},
        CommandCase{"sequenceSixth", "sequence",
                    R"({"dates":["2026-11-02","2026-11-03","2026-11-04","2026-11-05","2026-11-06"],"date":"2026-11-07"})", 0,
                    "/classification", "sixth"},
        CommandCase{"sequenceBadDate", "sequence", R"({"dates":["2026-02-30"],"date":"2026-11-07"})", 2, "", nullptr},
        CommandCase{"percentage", "percentage",
                    R"({"percentage":"4","basisAmount":{"amount":"1234.56","currency":"USD"},"rounding":)" + cents + "}", 0,
                    "/compensation/amount", "49.38"},
        CommandCase{"idle", "idle",
                    R"({"compensatedSeconds":28800,"straightTimeHourlyRate":{"amount":"45.00","currency":"USD"},"straightTimeRateMultiplier":"1","rounding":)" +
                        cents + "}",
                    0, "/compensation/amount", "360.00"},
        CommandCase{"holiday", "holiday",
                    R"({"rule":{"formula":"fixedStraightTimeDuration","compensatedSeconds":28800,"rateMultiplier":"1"},"straightTimeHourlyRate":{"amount":"40.00","currency":"USD"},"rounding":)" +
                        cents + "}",
                    0, "/compensation/amount", "320.00"},
        CommandCase{"fixedDailyNotApplying", "fixed-daily", R"({"configuredAmount":{"amount":"25.00","currency":"USD"},"applies":false})",
                    0, "/trace/applies", false}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
