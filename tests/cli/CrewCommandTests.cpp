#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

class CrewCommands : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Rowan Vale", "--from", "2026-11-02", "--rate", "40.00"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Ada Quill", "--from", "2026-11-02", "--rate", "38.50"}).status, 0);
    }

    Json crew(const std::string& name) { return run({"crew", "show", name, "--json"}).json(); }

    std::string storeBytes() {
        std::ifstream file(folder.path() / "data" / "canonical-store" / "Tessel.store", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
};

TEST_F(CrewCommands, ARaiseOnWednesdayPricesEachDayAtTheRateInForce) {
    ASSERT_EQ(run({"crew", "rate", "Rowan Vale", "45.00", "--from", "2026-11-04"}).status, 0);
    for (const char* date : {"2026-11-02", "2026-11-03", "2026-11-04", "2026-11-05"}) {
        ASSERT_EQ(run({"dts", "create", date}).status, 0);
        ASSERT_EQ(run({"dts", "set", date, "--call", "7.0", "--lunch-out", "13.0", "--wrap", "17.5"}).status, 0);
    }
    const Json review = run({"review", "week", "2026-11-02", "--crew", "Rowan Vale", "--json"}).json();
    const Json days = review["weeklyReviews"][0]["days"];
    ASSERT_EQ(days.size(), 4u);
    const std::vector<std::string> expected{"40.00", "40.00", "45.00", "45.00"};
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(days[i]["applicableRate"]["amount"], expected[i]) << i;

    // Clearing the raise puts the whole week back on the first rate.
    ASSERT_EQ(run({"crew", "rate", "Rowan Vale", "--clear", "2026-11-04"}).status, 0);
    EXPECT_EQ(crew("Rowan Vale")["engagements"][0]["payRates"].size(), 1u);
}

TEST_F(CrewCommands, EngagementsAndDatedTermsAreShownWithTheirDates) {
    ASSERT_EQ(run({"crew", "engagement", "Rowan Vale", "--on", "2026-11-02", "--through", "2026-11-30", "--classification", "Grip",
                   "--condition", "Local Hire", "--locality", "distant", "--precall", "0.5", "--dts-from", "2026-11-03"})
                  .status,
              0);
    ASSERT_EQ(run({"crew", "engage", "Rowan Vale", "--from", "2026-12-07", "--dayplayer", "--schedule", "weekly"}).status, 0);
    ASSERT_EQ(run({"crew", "guarantee", "Rowan Vale", "10.0", "--from", "2026-11-02"}).status, 0);
    ASSERT_EQ(run({"crew", "box-rental", "Rowan Vale", "25.00", "--from", "2026-11-09"}).status, 0);
    ASSERT_EQ(run({"crew", "provision", "Rowan Vale", "perDiem", "--from", "2026-11-02", "--mode", "personalAmount", "--amount", "60.00"}).status, 0);
    ASSERT_EQ(run({"crew", "turnaround", "Rowan Vale", "10.0"}).status, 0);

    const Json shown = crew("Rowan Vale");
    ASSERT_EQ(shown["engagements"].size(), 2u);
    const Json& first = shown["engagements"][0];
    EXPECT_EQ(first["effectiveThrough"], "2026-11-30");
    EXPECT_EQ(first["classification"], "Grip");
    EXPECT_EQ(first["conditions"], Json::array({"Local Hire"}));
    EXPECT_EQ(first["rulesLocalityOverride"], "distant");
    EXPECT_EQ(first["regularPrecallDurationSeconds"], 1800);
    EXPECT_EQ(first["dtsEligibilityStartsAt"], "2026-11-03");
    EXPECT_EQ(first["dailyGuarantees"][0]["minimumPaidDurationSeconds"], 36000);
    EXPECT_EQ(first["boxRentals"][0]["amount"]["amount"], "25.00");
    EXPECT_EQ(first["requiredRestSeconds"], 36000);
    EXPECT_EQ(shown["provisionTerms"][0]["personalDailyAmount"]["amount"], "60.00");
    EXPECT_EQ(shown["engagements"][1]["crewParticipation"], "dayplayer");
    EXPECT_EQ(shown["engagements"][1]["employmentSchedule"], "weekly");

    ASSERT_EQ(run({"crew", "set", "Ada Quill", "--order", "1", "--name", "Ada Quill-Marsh"}).status, 0);
    EXPECT_EQ(run({"crew", "list", "--json"}).json()["crew"][0]["displayName"], "Ada Quill-Marsh");
    ASSERT_EQ(run({"crew", "set", "Ada Quill-Marsh", "--retire"}).status, 0);
    EXPECT_EQ(run({"crew", "list", "--json"}).json()["crew"][0]["retired"], true);
    ASSERT_EQ(run({"crew", "remove", "Ada Quill-Marsh"}).status, 0);  // no time sheet names her yet
    EXPECT_EQ(run({"crew", "list", "--json"}).json()["crew"].size(), 2u);  // Rowan's two engagements
}

TEST_F(CrewCommands, TheProductionShowsEveryFactItWasGiven) {
    ASSERT_EQ(run({"production", "set", "--department", "Grip", "--company", "Lantern Pictures", "--work-state", "CA",
                   "--department-head", "Mara Stone", "--default-ndb", "on", "--lunch-length", "1.0", "--start-date", "2026-10-26"})
                  .status,
              0);
    const Json shown = run({"production", "show", "Night Harbor", "--json"}).json();
    EXPECT_EQ(shown["department"], "Grip");
    EXPECT_EQ(shown["company"], "Lantern Pictures");
    EXPECT_EQ(shown["defaultWorkState"], "CA");
    EXPECT_EQ(shown["departmentHeadName"], "Mara Stone");
    EXPECT_EQ(shown["defaultNonDeductibleBreakfast"], true);
    EXPECT_EQ(shown["defaultLunchDurationSeconds"], 3600);
    EXPECT_EQ(shown["startDate"], "2026-10-26");
}

struct RefusedCrewEntry {
    const char* name;
    std::vector<std::string> arguments;
    const char* sentence;
};

class RefusedCrewCommand : public CrewCommands, public ::testing::WithParamInterface<RefusedCrewEntry> {};

TEST_P(RefusedCrewCommand, SaysWhyAndLeavesTheStoreByteForByteUnchanged) {
    ASSERT_EQ(run({"dts", "create", "2026-11-03"}).status, 0);
    const std::string before = storeBytes();
    const auto refused = run(GetParam().arguments);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, std::string(GetParam().sentence) + "\n");
    EXPECT_EQ(storeBytes(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Entries, RefusedCrewCommand,
    ::testing::Values(
        RefusedCrewEntry{"negativeRate", {"crew", "rate", "Ada Quill", "-1", "--from", "2026-11-04"}, "Enter a non-negative hourly rate."},
        RefusedCrewEntry{"textRate", {"crew", "rate", "Ada Quill", "lots", "--from", "2026-11-04"}, "Enter a valid hourly rate."},
        RefusedCrewEntry{"zeroGuarantee", {"crew", "guarantee", "Ada Quill", "0", "--from", "2026-11-04"},
                         "Enter a daily guarantee of more than zero hours, such as 10.0."},
        RefusedCrewEntry{"clearMissingTerm", {"crew", "box-rental", "Ada Quill", "--clear", "2026-11-04"},
                         "There is no box / kit rental from 2026-11-04 to clear."},
        RefusedCrewEntry{"personalWithoutAmount", {"crew", "provision", "Ada Quill", "perDiem", "--from", "2026-11-04", "--mode", "personalAmount"},
                         "Enter the personal daily amount, such as 5.00."},
        RefusedCrewEntry{"overlappingEngagement", {"crew", "engage", "Ada Quill", "--from", "2026-11-10"},
                         "Ada Quill already has an engagement from 2026-11-02 in force on those dates; end it before the new one starts."},
        RefusedCrewEntry{"endsBeforeItStarts", {"crew", "engagement", "Ada Quill", "--on", "2026-11-03", "--through", "2026-11-01"},
                         "The engagement\u2019s last day must be on or after its first day."},
        RefusedCrewEntry{"removeWithHistory", {"crew", "remove", "Ada Quill"},
                         "Ada Quill appears on time sheets or pay records of this production, so they cannot be removed; retire them "
                         "instead to keep that history."},
        RefusedCrewEntry{"renameToAnother", {"crew", "set", "Ada Quill", "--name", "Rowan Vale"},
                         "There is already a crew member named \u201CRowan Vale\u201D on this production."},
        RefusedCrewEntry{"orderOutOfRange", {"crew", "set", "Ada Quill", "--order", "3"}, "Choose a place in the crew order from 1 to 2."},
        RefusedCrewEntry{"currencyWithPay", {"production", "set", "--currency", "EUR"},
                         "The currency cannot change to EUR: crew pay is already recorded in USD."},
        RefusedCrewEntry{"currencyWord", {"production", "set", "--currency", "dollars"},
                         "Enter the currency as a three-letter ISO 4217 code, such as USD."},
        RefusedCrewEntry{"blankProductionName", {"production", "set", "--name", "\u00A0"}, "Enter a Production name."},
        RefusedCrewEntry{"zeroLunch", {"production", "set", "--lunch-length", "0"}, "Enter a lunch length of more than zero hours, such as 0.5."},
        RefusedCrewEntry{"twelveHourClock", {"production", "set", "--time-display", "clock12Hour"},
                         "Tessel shows clock time on the 24-hour clock; choose payrollDecimal or clockTime."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel
