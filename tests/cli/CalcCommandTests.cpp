#include <gtest/gtest.h>

#include <sstream>

#include "../support/CommandRun.hpp"


namespace tessel {
namespace {

using Outcome = testing::CommandOutcome;

Outcome run(const std::vector<std::string>& arguments, const std::string& input = "") { return testing::runCommand(arguments, input); }

const std::string threeBands = R"([
  {"ruleID":"production.band.straight-time","entryThresholdSeconds":0,"entryThresholdBasis":"worked","upperBoundSeconds":28800,"multiplier":"1"},
  {"ruleID":"production.band.time-and-a-half","entryThresholdSeconds":28800,"entryThresholdBasis":"worked","upperBoundSeconds":43200,"multiplier":1.5},
  {"ruleID":"production.band.double-time","entryThresholdSeconds":43200,"entryThresholdBasis":"elapsed","multiplier":"2"}])";

const std::string dayWithMeal = R"([
  {"kind":"compensableWork","durationSeconds":21600},
  {"kind":"nonCompensableElapsed","durationSeconds":3600},
  {"kind":"compensableWork","durationSeconds":21600}])";

TEST(CalcAllocate, AnswersWithComponentsAndTrace) {
    const auto outcome = run({"calc", "allocate"}, R"({"bands":)" + threeBands + R"(,"segments":)" + dayWithMeal + "}");
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json answer = outcome.json();
    ASSERT_EQ(answer["components"].size(), 3u);
    EXPECT_EQ(answer["components"][1]["allocatedDurationSeconds"], 10800);
    EXPECT_EQ(answer["components"][1]["multiplier"], "1.5");
    EXPECT_EQ(answer["trace"]["boundaryConvention"], "inclusiveLowerExclusiveUpper");
    EXPECT_EQ(answer["trace"]["elapsedDurationSeconds"], 46800);
    EXPECT_FALSE(answer["trace"]["entries"][2].contains("exclusiveUpperBoundSeconds"));
}

struct RefusalCase {
    const char* name;
    std::string input;
    Json expected;  // every field of the error except its message
};

class CalcAllocateRefusal : public ::testing::TestWithParam<RefusalCase> {};

TEST_P(CalcAllocateRefusal, ExitsOneWithTheErrorCaseAndItsPayload) {
    const auto outcome = run({"calc", "allocate"}, GetParam().input);
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    Json answer = outcome.json();
    EXPECT_FALSE(answer["message"].get<std::string>().empty());
    answer.erase("message");
    EXPECT_EQ(answer, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Contract, CalcAllocateRefusal,
    ::testing::Values(
        RefusalCase{"gap",
                    R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"worked","upperBoundSeconds":100,"multiplier":"1"},
                                 {"ruleID":"b","entryThresholdSeconds":200,"entryThresholdBasis":"worked","multiplier":"1.5"}],"segments":[]})",
                    Json{{"error", "gap"}, {"previous", "a"}, {"current", "b"}}},
        RefusalCase{"coverage",
                    R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"worked","upperBoundSeconds":36000,"multiplier":"1"}],
                        "segments":[{"kind":"compensableWork","durationSeconds":39600}]})",
                    Json{{"error", "durationExceedsCoverage"}, {"coveredThroughSeconds", 36000}}},
        RefusalCase{"negativeDuration",
                    R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"worked","multiplier":"1"}],
                        "segments":[{"kind":"compensableWork","durationSeconds":-1}]})",
                    Json{{"error", "negativeDuration"}}},
        RefusalCase{"negativeMultiplier",
                    R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"worked","multiplier":"-1"}],"segments":[]})",
                    Json{{"error", "negativeValue"}}},
        RefusalCase{"whitespaceRuleID",
                    R"({"bands":[{"ruleID":"a b","entryThresholdSeconds":0,"entryThresholdBasis":"worked","multiplier":"1"}],"segments":[]})",
                    Json{{"error", "containsWhitespace"}, {"text", "a b"}}}),
    [](const auto& info) { return std::string(info.param.name); });

class CalcAllocateMalformed : public ::testing::TestWithParam<std::string> {};

TEST_P(CalcAllocateMalformed, ExitsTwoWithOneSentenceOnStandardError) {
    const auto outcome = run({"calc", "allocate"}, GetParam());
    EXPECT_EQ(outcome.status, 2);
    EXPECT_TRUE(outcome.out.empty());
    ASSERT_FALSE(outcome.err.empty());
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << outcome.err;
    EXPECT_EQ(outcome.err[outcome.err.size() - 2], '.');
}

INSTANTIATE_TEST_SUITE_P(Contract, CalcAllocateMalformed,
                         ::testing::Values("", "{\"bands\": [", "[]", R"({"segments":[]})",
                                           R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"sideways","multiplier":"1"}],"segments":[]})",
                                           R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"worked","multiplier":"1,5"}],"segments":[]})",
                                           R"({"bands":[{"ruleID":"a","entryThresholdSeconds":0,"entryThresholdBasis":"worked","multiplier":"1"}],"segments":[{"kind":"compensableWork","durationSeconds":"60"}]})"));

TEST(CalcAllocateMalformedDocument, NamesTheDocumentWhenItIsNoObject) {
    EXPECT_EQ(run({"calc", "allocate"}, "[]").err, "The document must be a JSON object.\n");
}

TEST(CalcTargetEntry, AnswersWithTheEntryOrNull) {
    const std::string guarantee =
        R"("guarantee":{"ruleID":"production.guarantee.final-band-minimum","targetPayBandRuleID":"production.band.double-time","minimumPaidDurationSeconds":7200})";
    const auto reached = run({"calc", "target-entry"},
                             R"({"bands":)" + threeBands + R"(,"segments":)" + dayWithMeal + "," + guarantee + "}");
    ASSERT_EQ(reached.status, 0) << reached.err;
    EXPECT_EQ(reached.json()["entry"]["elapsedDurationFromCallSeconds"], 43200);
    EXPECT_EQ(reached.json()["entry"]["firstQualifyingElapsedDurationFromCallSeconds"], 43560);
    EXPECT_EQ(reached.json()["entry"]["threshold"]["basis"], "elapsed");

    const auto shortDay = run({"calc", "target-entry"},
                              R"({"bands":)" + threeBands +
                                  R"(,"segments":[{"kind":"compensableWork","durationSeconds":3600}],)" + guarantee + "}");
    ASSERT_EQ(shortDay.status, 0);
    EXPECT_TRUE(shortDay.json()["entry"].is_null());
}

TEST(CommandLine, HelpAndVersionSucceedAndUsageErrorsExitTwo) {
    EXPECT_EQ(run({"--version"}).status, 0);
    const auto help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("calc"), std::string::npos);
    EXPECT_EQ(run({}).status, 2);
    EXPECT_EQ(run({"calc", "bogus"}).status, 2);
    EXPECT_EQ(run({"nonsense"}).status, 2);
}

}  // namespace
}  // namespace tessel
