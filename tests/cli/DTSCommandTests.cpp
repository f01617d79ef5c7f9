#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

using Outcome = testing::CommandOutcome;

class DTSCommands : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Rowan Vale", "--from", "2026-11-02", "--rate", "45.00", "--precall", "0.5"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Ada Quill", "--from", "2026-11-02", "--rate", "38.50"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Nell Ash", "--from", "2026-11-02", "--dayplayer"}).status, 0);
        ASSERT_EQ(run({"dts", "create", "2026-11-03"}).status, 0);
    }

    Json show() { return run({"dts", "show", "2026-11-03", "--json"}).json(); }
};

struct RefusedEntry {
    const char* name;
    std::vector<std::string> arguments;
    const char* sentence;
};

class RefusedDTSEntry : public DTSCommands, public ::testing::WithParamInterface<RefusedEntry> {};

TEST_P(RefusedDTSEntry, ExitsOneWithTheSentenceAndChangesNothing) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "7.0", "--wrap", "19.0"}).status, 0);
    const Json before = show();
    const auto refused = run(GetParam().arguments);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, std::string(GetParam().sentence) + "\n");
    EXPECT_EQ(show(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Entries, RefusedDTSEntry,
    ::testing::Values(
        RefusedEntry{"callPastMidnight", {"dts", "set", "2026-11-03", "--call", "24.0"}, "Call must be between 0.0 and 23.9."},
        RefusedEntry{"wrapNotInTenths", {"dts", "set", "2026-11-03", "--lunch-out", "13.0", "--wrap", "19.25"}, "Enter time in payroll tenths."},
        RefusedEntry{"rowCallText", {"dts", "row", "2026-11-03", "Ada Quill", "--call", "seven"}, "Call must be between 0.0 and 23.9."},
        RefusedEntry{"travelText", {"dts", "set", "2026-11-03", "--call", "6.0", "--travel", "1,5"},
                     "Enter Travel Duration in payroll-decimal hours, such as 5.0."},
        RefusedEntry{"duplicateCrewName", {"crew", "add", "Ada Quill", "--from", "2026-11-02"},
                     "There is already a crew member named \u201CAda Quill\u201D on this production."},
        RefusedEntry{"unknownCrewName", {"dts", "row", "2026-11-03", "Ada", "--call", "6.0"},
                     "There is no crew member named \u201CAda\u201D on this production."},
        RefusedEntry{"emptyDTSName", {"dts", "row", "2026-11-03", "Ada Quill", "--call", "6.0", "--dts-name", ""}, "Enter a DTS Name."},
        RefusedEntry{"deleteWithData", {"dts", "delete", "2026-11-03"},
                     "This DTS contains entered shared or crew-specific data. Deleting it also deletes its crew-entry rows. Run again "
                     "with --yes to delete it."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(DTSCommands, ShowsEffectiveTimesWithTheirSources) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "7.0", "--lunch-out", "13.0", "--wrap", "19.0"}).status, 0);
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Ada Quill", "--wrap", "20.5", "--ndb"}).status, 0);
    const Json dts = show();
    EXPECT_EQ(dts["shared"]["officialLunchIn"]["text"], "13.5");
    EXPECT_EQ(dts["shared"]["officialLunchIn"]["autofilled"], true);
    const Json& rowan = dts["rows"][0];
    EXPECT_EQ(rowan["call"]["text"], "6.5");
    EXPECT_EQ(rowan["call"]["source"], "autofilled");
    const Json& ada = dts["rows"][1];
    EXPECT_EQ(ada["wrap"]["text"], "20.5");
    EXPECT_EQ(ada["wrap"]["source"], "override");
    EXPECT_EQ(ada["call"]["source"], "inherited");
    EXPECT_EQ(ada["nonDeductibleBreakfast"], true);

    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Ada Quill", "--mileage", "22.4", "--box-rental", "--locality", "distant"}).status, 0);
    EXPECT_EQ(show()["rows"][1]["mileage"], "22.4");
    EXPECT_EQ(show()["rows"][1]["boxRental"], true);
    EXPECT_EQ(show()["rows"][1]["rulesLocalityOverride"], "distant");
    ASSERT_EQ(run({"dts", "reorder", "2026-11-03", "Ada Quill", "Rowan Vale"}).status, 0);
    EXPECT_EQ(show()["rows"][0]["crewMember"], "Ada Quill");
    EXPECT_EQ(run({"dts", "reorder", "2026-11-03", "Ada Quill"}).err, "Rowan Vale is on the DTS but not in the new order; name every person on it.\n");
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Ada Quill", "--clear", "wrap"}).status, 0);
    EXPECT_EQ(show()["rows"][0]["wrap"]["source"], "inherited");
    ASSERT_EQ(run({"dts", "remove-row", "2026-11-03", "Ada Quill"}).status, 0);
    EXPECT_EQ(show()["rows"].size(), 1u);
    EXPECT_EQ(run({"dts", "delete", "2026-11-03", "--yes"}).status, 0);
    EXPECT_EQ(run({"dts", "show", "2026-11-03"}).status, 1);
}

TEST_F(DTSCommands, EachRowShowsItsGoldenHourWrapFromItsOwnCall) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "7.0", "--lunch-out", "13.0", "--lunch-in", "13.5"}).status, 0);
    const Json rows = show()["rows"];
    EXPECT_EQ(rows[0]["goldenHourWrap"]["text"], "19.1");  // Rowan's precall moves his twelfth worked hour to 19.0
    EXPECT_EQ(rows[1]["goldenHourWrap"]["text"], "19.6");
    EXPECT_NE(run({"dts", "show", "2026-11-03"}).out.find("    Golden Hour Wrap: 19.6\n"), std::string::npos);
}

TEST_F(DTSCommands, ActivitiesAreRecordedAndRemoved) {
    const auto travel = run({"activity", "add", "2026-11-04", "travel", "Ada Quill", "Rowan Vale", "--travel-each", "5.0,2.5"});
    ASSERT_EQ(travel.status, 0) << travel.err;
    const Json listed = run({"activity", "list", "--json"}).json()["activities"];
    ASSERT_EQ(listed.size(), 2u);
    // In crew order: Rowan was engaged first.
    EXPECT_EQ(listed[0]["crewMember"], "Rowan Vale");
    EXPECT_EQ(listed[0]["travelDurationSeconds"], 9000);
    EXPECT_EQ(listed[1]["travelDurationSeconds"], 18000);
    EXPECT_EQ(run({"activity", "add", "2026-11-03", "holiday", "Ada Quill"}).err,
              "Ada Quill is already on the DTS for this date. Remove that DTS row before assigning a non-DTS activity.\n");
    ASSERT_EQ(run({"activity", "remove", "2026-11-04", "Ada Quill"}).status, 0);
    EXPECT_EQ(run({"activity", "list", "--json"}).json()["activities"].size(), 1u);
    ASSERT_EQ(run({"activity", "remove", "2026-11-04"}).status, 0);
    EXPECT_EQ(run({"activity", "list", "--json"}).json()["activities"].size(), 0u);
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

TEST_F(DTSCommands, APersonWithAnActivityGetsNoRowAndARowRefusesTheActivity) {
    ASSERT_EQ(run({"activity", "add", "2026-11-05", "travel", "Ada Quill", "--travel", "4.0"}).status, 0);
    const auto created = run({"dts", "create", "2026-11-05", "--json"});
    ASSERT_EQ(created.status, 0) << created.err;
    EXPECT_EQ(created.json()["rowCount"], 1);
    EXPECT_EQ(created.json()["leftOffForActivity"], Json::array({"Ada Quill"}));
    EXPECT_EQ(run({"dts", "row", "2026-11-05", "Ada Quill", "--call", "6.0"}).err,
              "Ada Quill already has a non-DTS activity on this date. Edit or remove it first.\n");
    EXPECT_EQ(run({"dts", "show", "2026-11-05", "--json"}).json()["rows"].size(), 1u);
    const auto options = run({"activity", "options", "2026-11-05", "--json"}).json()["options"];
    EXPECT_EQ(options[0]["unavailableReason"], "Already on this date\u2019s DTS");
}

TEST_F(DTSCommands, OneSaveNeverGivesOnePersonTwoActivities) {
    EXPECT_EQ(run({"activity", "add", "2026-11-05", "travel", "Ada Quill", "Rowan Vale", "Ada Quill", "--travel", "1.0"}).err,
              "Ada Quill already has a non-DTS activity on this date. Edit or remove it first.\n");
    EXPECT_EQ(run({"activity", "list", "--json"}).json()["activities"].size(), 0u);
    EXPECT_EQ(run({"activity", "add", "2026-11-05", "travel", "Ada Quill", "--travel", "1.0", "--travel-each", "1.0"}).status, 2);
}

TEST_F(DTSCommands, AutofillNeverBringsBackATimeTheUserCleared) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "7.0", "--lunch-out", "13.0", "--wrap", "19.0"}).status, 0);
    EXPECT_EQ(show()["rows"][0]["call"]["text"], "6.5");
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Rowan Vale", "--clear", "call"}).status, 0);
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "8.0"}).status, 0);
    Json rowan = show()["rows"][0];
    EXPECT_EQ(rowan["call"]["text"], "8.0");
    EXPECT_EQ(rowan["call"]["source"], "inherited");
    EXPECT_EQ(rowan["call"]["revertToAutofillLabel"], "Revert to Autofill (7.5)");
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Rowan Vale", "--revert", "call"}).status, 0);
    rowan = show()["rows"][0];
    EXPECT_EQ(rowan["call"]["text"], "7.5");
    EXPECT_FALSE(rowan["call"].contains("revertToAutofillLabel"));
    // Ada has no regular precall: nothing to revert to, so nothing is offered and a revert is refused.
    EXPECT_FALSE(show()["rows"][1]["call"].contains("revertToAutofillLabel"));
    EXPECT_EQ(run({"dts", "row", "2026-11-03", "Ada Quill", "--revert", "call"}).err, "This time has no autofill value to revert to.\n");

    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--lunch-in", ""}).status, 0);
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--lunch-out", "12.0"}).status, 0);
    Json lunchIn = show()["shared"]["officialLunchIn"];
    EXPECT_EQ(lunchIn["text"], "");
    EXPECT_EQ(lunchIn["revertToAutofillLabel"], "Revert to Autofill (12.5)");
    ASSERT_EQ(run({"production", "set", "--time-display", "clockTime"}).status, 0);
    EXPECT_EQ(show()["shared"]["officialLunchIn"]["revertToAutofillLabel"], "Revert to Autofill (12:30)");
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--revert", "lunchIn"}).status, 0);
    lunchIn = show()["shared"]["officialLunchIn"];
    EXPECT_EQ(lunchIn["text"], "12.5");
    EXPECT_EQ(lunchIn["autofilled"], true);
}

struct RowFact {
    const char* name;
    std::vector<std::string> options;
};

class DeletingADTSWithARowFact : public DTSCommands, public ::testing::WithParamInterface<RowFact> {};

TEST_P(DeletingADTSWithARowFact, NeedsConfirmation) {
    std::vector<std::string> arguments{"dts", "row", "2026-11-03", "Ada Quill"};
    arguments.insert(arguments.end(), GetParam().options.begin(), GetParam().options.end());
    ASSERT_EQ(run(arguments).status, 0);
    EXPECT_EQ(run({"dts", "delete", "2026-11-03"}).status, 1);
    EXPECT_EQ(run({"dts", "delete", "2026-11-03", "--yes"}).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Facts, DeletingADTSWithARowFact,
                         ::testing::Values(RowFact{"dtsName", {"--dts-name", "Key Grip"}}, RowFact{"mileage", {"--mileage", "3"}},
                                           RowFact{"boxRental", {"--box-rental"}}, RowFact{"workMode", {"--mode", "worked"}},
                                           RowFact{"ndb", {"--ndb"}}, RowFact{"locality", {"--locality", "distant"}}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(DTSCommands, TypedEntriesAreTrimmedAndOnlyAnEmptyEntryClears) {
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", "\u00A07.0\u00A0", "--mileage", " 12"}).status, 0);
    EXPECT_EQ(show()["shared"]["generalCrewCall"]["text"], "7.0");
    EXPECT_EQ(show()["shared"]["departmentMileage"], "12");
    EXPECT_EQ(run({"dts", "set", "2026-11-03", "--call", "\x01"}).err, "Call must be between 0.0 and 23.9.\n");
    EXPECT_EQ(show()["shared"]["generalCrewCall"]["text"], "7.0");
    ASSERT_EQ(run({"dts", "set", "2026-11-03", "--call", " "}).status, 0);
    EXPECT_EQ(show()["shared"]["generalCrewCall"]["text"], "");
}

INSTANTIATE_TEST_SUITE_P(
    Reorders, RefusedDTSEntry,
    ::testing::Values(
        RefusedEntry{"notOnTheDTS", {"dts", "reorder", "2026-11-03", "Ada Quill", "Rowan Vale", "Nell Ash"},
                     "Nell Ash is not on the DTS for 2026-11-03."},
        RefusedEntry{"namedTwice", {"dts", "reorder", "2026-11-03", "Ada Quill", "Ada Quill", "Rowan Vale"},
                     "Ada Quill is named twice; name each person on the DTS once."},
        RefusedEntry{"secondDTS", {"dts", "create", "2026-11-03"},
                     "Couldn\u2019t Create Daily Time Sheet\nA DTS already exists for 2026-11-03."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
