#include <gtest/gtest.h>

#include "App/actualpay/StubFacts.hpp"
#include "App/actualpay/StubText.hpp"

namespace tessel {
namespace {

struct BadFacts {
    const char* name;
    const char* json;
    const char* sentence;
};

class ReferenceFactsFiles : public ::testing::TestWithParam<BadFacts> {};

TEST_P(ReferenceFactsFiles, AreRefusedInOneSentence) {
    try {
        readReferenceFacts(GetParam().json);
        FAIL() << "read";
    } catch (const PayStubReferenceFactsError& error) {
        EXPECT_STREQ(error.what(), GetParam().sentence);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Refused, ReferenceFactsFiles,
    ::testing::Values(BadFacts{"notJSON", "{\"gross\": ", "The facts file is not well-formed JSON (at byte 11)."},
                      BadFacts{"notAnObject", "[1, 2]", "The facts file must be a JSON object."},
                      BadFacts{"nameNotText", "{\"printedEmployeeName\": 12}", "\u201CprintedEmployeeName\u201D in the facts file must be text."},
                      BadFacts{"dateNotISO", "{\"payPeriodStart\": \"11/02/2026\"}",
                               "\u201CpayPeriodStart\u201D in the facts file must be a date written YYYY-MM-DD."},
                      BadFacts{"grossNotANumber", "{\"gross\": \"about 600\"}",
                               "\u201Cgross\u201D in the facts file must be a number, not \u201Cabout 600\u201D."},
                      BadFacts{"grossABoolean", "{\"gross\": true}", "\u201Cgross\u201D in the facts file must be a number, or a number written as text."},
                      BadFacts{"lineTooShort", "{\"earningLines\": [[\"REGULAR\", 45.00, 8]]}",
                               "\u201CearningLines\u201D in the facts file must be a list of [label, rate, hours, amount] lists."},
                      BadFacts{"lineWithoutAmount", "{\"earningLines\": [[\"REGULAR\", null, null, null]]}",
                               "\u201CearningLines\u201D in the facts file must be lists whose amount is given."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ReferenceFacts, KeepNumbersAsWritten) {
    const auto facts = readReferenceFacts(
        R"({"gross": 604.750, "totalHours": "1,011.5", "payPeriodEnd": "2026-11-08", "earningLines": [["MEAL PENALTY", null, null, 8.50], ["REGULAR", "45.00", 8, "360.00"]]})");
    EXPECT_EQ(facts.gross, "604.750");
    EXPECT_EQ(facts.totalHours, "1,011.5");
    EXPECT_FALSE(facts.printedEmployeeName.has_value());
    EXPECT_EQ(facts.payPeriodEnd, CalendarDate(std::chrono::year(2026) / 11 / 8));
    ASSERT_EQ(facts.earningLines.size(), 2u);
    EXPECT_FALSE(facts.earningLines[0].rate.has_value());
    EXPECT_EQ(facts.earningLines[0].amount, "8.50");
    EXPECT_EQ(facts.earningLines[1].hours, "8");
}

// One reading of a small stub, words at page-relative places on one line each.
PayStubTextEvidence reading(const std::vector<std::vector<std::pair<double, const char*>>>& lines) {
    PayStubTextEvidence evidence{PayStubTextSource::tesseractOCR, 1, {}};
    double y = 0.05;
    for (const auto& line : lines) {
        for (const auto& [x, text] : line) {
            const double width = 0.008 * static_cast<double>(std::string_view(text).size());
            evidence.tokens.push_back({"t" + std::to_string(evidence.tokens.size()), text, stub_text::normalized(text), 0, {x, y, width, 0.012},
                                       PayStubTextSource::tesseractOCR, 0.9f});
        }
        y += 0.025;
    }
    return evidence;
}

TEST(FactRecovery, ClassifiesEveryFactAndCountsEachClass) {
    const auto evidence = reading({{{0.05, "Dana"}, {0.10, "M"}, {0.12, "Rivera"}, {0.25, "SSN:"}},
                                   {{0.05, "Occupation"}, {0.16, "Title:"}, {0.22, "KEY"}, {0.26, "GRLP"}},
                                   {{0.05, "Start:"}, {0.12, "11/02/26"}, {0.22, "End:"}, {0.28, "11/08/26"}},
                                   {{0.05, "DESC"}, {0.40, "RATE"}, {0.52, "HOURS"}, {0.64, "AMOUNT"}},
                                   {{0.05, "REGULAR"}, {0.40, "45.00"}, {0.52, "8.0"}, {0.64, "360.00"}},
                                   {{0.05, "TOTALS"}, {0.52, "8.0"}, {0.64, "360.00"}}});
    PayStubReferenceFacts facts;
    facts.printedEmployeeName = "DANA M RIVERA";
    facts.printedOccupation = "KEY GRIP";
    facts.payPeriodStart = CalendarDate(std::chrono::year(2026) / 11 / 2);
    facts.payPeriodEnd = CalendarDate(std::chrono::year(2026) / 11 / 9);
    facts.totalHours = "8";
    facts.gross = "360.00";
    facts.earningLines = {{"REGULAR", "45.00", "8.0", "360.00"}, {"MEAL PENALTY", std::nullopt, std::nullopt, "8.50"}};
    const auto report = recoverFacts(evidence, facts);

    std::vector<std::string> classes;
    for (const auto& fact : report.facts) classes.push_back(fact.id + " " + std::string(toRawValue(fact.classification)));
    EXPECT_EQ(classes, (std::vector<std::string>{"printedEmployeeName normalizedCorrect", "printedOccupation incorrect", "payPeriodStart exact",
                                                 "payPeriodEnd incorrect", "totalHours normalizedCorrect", "gross exact",
                                                 "earningLines[0].label exact", "earningLines[0].rate exact", "earningLines[0].hours exact",
                                                 "earningLines[0].amount exact", "earningLines[1].label missing",
                                                 "earningLines[1].amount missing"}));
    EXPECT_EQ(report.facts[0].observed, "Dana M Rivera");  // as read, before normalisation
    EXPECT_EQ(report.facts[3].observed, "2026-11-08");
    const auto& s = report.summary;
    EXPECT_EQ(s.source, PayStubTextSource::tesseractOCR);
    EXPECT_EQ(std::vector<int>({s.totalCount, s.exactCount, s.normalizedCount, s.incorrectCount, s.missingCount}), std::vector<int>({12, 6, 2, 2, 2}));
    EXPECT_TRUE(s.earningsReconcile);
}

TEST(FactRecovery, EarningsThatDoNotAddUpDoNotReconcile) {
    const auto evidence = reading({{{0.05, "DESC"}, {0.40, "RATE"}, {0.52, "HOURS"}, {0.64, "AMOUNT"}},
                                   {{0.05, "REGULAR"}, {0.40, "45.00"}, {0.52, "8.0"}, {0.64, "360.00"}},
                                   {{0.05, "TOTALS"}, {0.52, "8.0"}, {0.64, "361.00"}}});
    EXPECT_FALSE(recoverFacts(evidence, {}).summary.earningsReconcile);
    EXPECT_FALSE(recoverFacts(reading({{{0.05, "Nothing"}}}), {}).summary.earningsReconcile);  // no table at all
    EXPECT_EQ(recoverFacts(evidence, {}).summary.totalCount, 0);
}

}  // namespace
}  // namespace tessel
