#include <gtest/gtest.h>

#include <SQLiteCpp/Database.h>

#include <filesystem>

#include "../support/CommandRun.hpp"

// The whole cycle from stored time sheets and a confirmed stub to payroll issues: compared line by line,
// tracked through the user's choices, reconciled or reopened by a correction of the DTS.
namespace tessel {
namespace {

const std::string week = "2026-11-02";
const std::string stubPDF = (std::filesystem::path(TESSEL_STUB_FIXTURES) / "demo-week" / "08-marr.pdf").string();

class PayrollIssueCycle : public testing::CommandTest {
protected:
    // Two days at 40.00 an hour; Monday's call is entered as 7.0 where the crew was called at 6.5. Payroll
    // paid Monday as called (a meal penalty, four hours of overtime) and left out Tuesday's overtime.
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Cycle"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Jules Marr", "--from", "2026-11-01", "--rate", "40.00"}).status, 0);
        ASSERT_EQ(run({"dts", "create", "2026-11-02"}).status, 0);
        ASSERT_EQ(run({"dts", "set", "2026-11-02", "--call", "7.0", "--lunch-out", "13.0", "--wrap", "19.0"}).status, 0);
        ASSERT_EQ(run({"dts", "create", "2026-11-03"}).status, 0);
        ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "7.0", "--lunch-out", "12.5", "--wrap", "17.0"}).status, 0);
        const auto confirmed = run({"stub", "confirm", stubPDF, "--week", week, "--line", "1=REGULAR,16.0,40.00,640.00", "--line",
                                    "2=OVERTIME,4.0,60.00,240.00", "--line", "3=MEAL PENALTY,,,8.50", "--gross", "888.50", "--total-hours", "20.0"});
        ASSERT_EQ(confirmed.status, 0) << confirmed.err;
    }

    Json issues() { return run({"--json", "issues", "list"}).json(); }
    static Json titled(const Json& list, const std::string& title) {
        for (const auto& issue : list) {
            if (issue["title"] == title) return issue;
        }
        return Json();
    }
};

TEST_F(PayrollIssueCycle, ComparesLinesTracksChoicesAndFollowsACorrectionOfTheDTS) {
    EXPECT_TRUE(issues().empty()) << "without payroll terminology only gross is compared";
    ASSERT_EQ(run({"production", "set", "--terminology", "ep", "--tolerance", "0.01"}).status, 0);

    const auto compared = run({"--json", "compare", "week", week}).json();
    EXPECT_EQ(compared["dashboard"]["stubsConfirmed"], 1);
    EXPECT_EQ(compared["dashboard"]["needsAttention"], 1);
    const auto& lines = compared["comparisons"][0]["lines"];
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_EQ(lines[0]["statusLabel"], "Matches");
    EXPECT_EQ(lines[1]["statusLabel"], "Underpaid");
    EXPECT_EQ(lines[1]["difference"], "-60.00");
    EXPECT_EQ(lines[2]["statusLabel"], "Actual Only");

    // The terminology change alone brought the issues up to date.
    auto list = issues();
    ASSERT_EQ(list.size(), 2u);
    const std::string overtime = titled(list, "Overtime")["id"];
    EXPECT_EQ(titled(list, "Overtime")["state"], "needsAttention");
    EXPECT_EQ(titled(list, "Meal Penalty")["nature"], "Actual Only");
    ASSERT_EQ(run({"issues", "set", overtime.substr(0, 8), "noAction", "--note", "Tuesday was a short day."}).status, 0);

    const auto claim = run({"issues", "claim", "--week", week, "--state", "needsAttention"}).out;
    EXPECT_NE(claim.find("  Meal Penalty \u2014 Actual Only\n    Expected nothing, paid 8.50, difference +8.50 USD\n"), std::string::npos) << claim;

    // Monday's call corrected: the meal penalty now matches (reconciled) and the overtime changes (reopened).
    ASSERT_EQ(run({"dts", "set", "2026-11-02", "--call", "6.5"}).status, 0);
    list = issues();
    EXPECT_EQ(titled(list, "Meal Penalty")["state"], "resolved");
    EXPECT_EQ(titled(list, "Meal Penalty")["resolutionReason"], "reconciled");
    EXPECT_EQ(titled(list, "Overtime")["state"], "needsAttention");
    EXPECT_EQ(titled(list, "Overtime")["difference"], "-90.00");
    EXPECT_EQ(titled(list, "Overtime")["resolutionReason"], "Discrepancy changed or reappeared; review again.");
    EXPECT_EQ(titled(list, "Overtime")["note"], "Tuesday was a short day.");

    const auto summary = run({"issues", "summary", "--week", week}).out;
    EXPECT_EQ(summary.rfind("Payroll Issues \u2014 Cycle\n", 0), 0u) << summary;
    EXPECT_NE(summary.find("- Overtime (Underpaid, USD): 1 crew, total \u221290.00 USD\n    Jules Marr: \u221290.00 USD \u00B7 Needs Attention"),
              std::string::npos)
        << summary;
    const auto claimed = run({"issues", "claim", "--week", week}).out;
    EXPECT_NE(claimed.find("      2026-11-02: 4.0 h \u00D7 60.00 (40.00 \u00D7 1.5) = 240.00 \u2014 "), std::string::npos) << claimed;

    // Payroll's correction a cent short reopens an issue the user had resolved.
    ASSERT_EQ(run({"issues", "set", overtime, "resolved"}).status, 0);
    EXPECT_EQ(titled(issues(), "Overtime")["resolutionReason"], "Marked resolved by the user.");
    const auto edited = run({"stub", "edit", "Jules Marr", "--week", week, "--line", "2=OVERTIME,4.0,60.00,240.01", "--gross", "888.51"});
    ASSERT_EQ(edited.status, 0) << edited.err;
    list = issues();
    EXPECT_EQ(titled(list, "Overtime")["state"], "needsAttention");
    EXPECT_EQ(titled(list, "Overtime")["difference"], "-89.99");
}

TEST_F(PayrollIssueCycle, GroupsAnIssueOfADeletedCrewMemberAlone) {
    ASSERT_EQ(run({"production", "set", "--terminology", "ep"}).status, 0);
    ASSERT_EQ(issues().size(), 2u);
    {
        SQLite::Database store((folder.path() / "data" / "canonical-store" / "Tessel.store").string(), SQLite::OPEN_READWRITE);
        store.exec("UPDATE PayrollIssue SET crewID = '00000000-0000-4000-8000-000000000001' WHERE title = 'Overtime'");
    }
    const auto list = run({"issues", "list"}).out;
    EXPECT_NE(list.find("Group 2026-11-02|semantic:overtime|Underpaid|USD|crew=00000000-0000-4000-8000-000000000001\n"), std::string::npos) << list;
    EXPECT_NE(list.find("Unavailable crew"), std::string::npos) << list;
}

TEST_F(PayrollIssueCycle, RefusesABadToleranceOrStateInOneSentence) {
    const auto tolerance = run({"production", "set", "--tolerance", "-0.01"});
    EXPECT_EQ(tolerance.status, 1);
    EXPECT_EQ(tolerance.err, "Enter a non-negative amount, such as 0.00 or 0.01.\n");
    const auto state = run({"issues", "set", "--group", "nothing", "closed"});
    EXPECT_EQ(state.err, "Choose the state needsAttention, reported, noAction, resolved or noted.\n");
    const auto group = run({"issues", "set", "--group", "nothing", "reported"});
    EXPECT_EQ(group.err, "There is no payroll issue group \u201Cnothing\u201D; see \u201Ctessel issues list\u201D.\n");
}

}  // namespace
}  // namespace tessel
