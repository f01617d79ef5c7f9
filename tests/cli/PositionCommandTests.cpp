#include <gtest/gtest.h>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

class PositionCommands : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
    }
};

TEST_F(PositionCommands, ASavedRateCardAppliedBecomesTheProductionsOwn) {
    ASSERT_EQ(run({"position", "add", "Gaffer", "--code", "1234", "--hourly", "52.20", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "create", "2026 Basic", "--from", "2026-01-01", "--saved"}).status, 0);
    EXPECT_NE(run({"ratecard", "show", "2026 Basic", "--saved"}).out.find("Incomplete \u2014 no Position Scale rates."), std::string::npos);
    EXPECT_EQ(run({"ratecard", "apply", "2026 Basic"}).err, "This card has no Scale rates. Complete it in the Rate Card library first.\n");
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Gaffer", "52.20", "--saved"}).status, 0);

    const auto applied = run({"ratecard", "apply", "2026 Basic"});
    ASSERT_EQ(applied.status, 0) << applied.err;
    EXPECT_EQ(applied.out.substr(0, applied.out.find('\n')),
              "Tessel copies the rates and contract setup into this Production, so future changes to the saved Rate Card won\u2019t affect this show.");
    const Json positions = run({"--json", "position", "list"}).json();
    ASSERT_EQ(positions.size(), 1u);
    EXPECT_EQ(positions[0]["readiness"], "needsReview");
    ASSERT_EQ(run({"position", "set", "Gaffer"}).status, 0);
    EXPECT_EQ(run({"--json", "position", "list"}).json()[0]["readiness"], "ready");
    EXPECT_NE(run({"position", "show", "Gaffer"}).out.find("  Scale, Rate Card 2026 Basic (2026-01-01 to open, daily): 52.20/hr\n"), std::string::npos);
}

TEST_F(PositionCommands, RefuseWhatTheEditorsRefuse) {
    EXPECT_EQ(run({"position", "add", "Best Boy", "--code", "12A"}).err, "Occupation Code may contain digits only.\n");
    ASSERT_EQ(run({"position", "add", "Dolly Grip"}).status, 0);
    EXPECT_EQ(run({"ratecard", "scale", "Local", "Dolly Grip", "40.005", "--from", "2026-01-01"}).err,
              "Scale hourly rates may contain no more than two decimal places.\n");
    ASSERT_EQ(run({"ratecard", "scale", "Local", "Dolly Grip", "40", "--from", "2026-01-01"}).status, 0);
    EXPECT_EQ(run({"ratecard", "scale", "Local", "Dolly Grip", "41", "--from", "2026-01-01"}).err,
              "A rate already exists for this effective date. Edit the existing rate instead.\n");
    ASSERT_EQ(run({"ratecard", "scale", "Other", "Dolly Grip", "42", "--from", "2026-03-01"}).status, 0);
    EXPECT_NE(run({"position", "list"}).out.find("Dolly Grip  conflictingScale: Two daily Scale rates of this Position overlap from 2026-03-01.\n"),
              std::string::npos);
    ASSERT_EQ(run({"position", "remove", "Dolly Grip"}).status, 0);
    EXPECT_EQ(run({"position", "list"}).out, "This Production has no Positions.\n");
}

// Each day of a stored week paid from its own source: the scale floor under a lower own rate, a Job for
// Today at a higher scale for that day only, and a raise mid-week above the scale.
TEST_F(PositionCommands, EachDayOfAWeekIsPaidFromItsSource) {
    ASSERT_EQ(run({"crew", "add", "Dana Rivera", "--from", "2026-11-01", "--rate", "45.00"}).status, 0);
    for (const char* name : {"Gaffer", "Operator"}) ASSERT_EQ(run({"position", "add", name}).status, 0);
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Gaffer", "52.20", "--from", "2026-01-01"}).status, 0);
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Operator", "70.00", "--from", "2026-01-01"}).status, 0);
    ASSERT_EQ(run({"crew", "position", "Dana Rivera", "Gaffer", "--from", "2026-11-01"}).status, 0);
    for (const char* date : {"2026-11-02", "2026-11-03", "2026-11-04"}) {
        ASSERT_EQ(run({"dts", "create", date}).status, 0);
        ASSERT_EQ(run({"dts", "set", date, "--call", "7", "--lunch-out", "13", "--wrap", "19"}).status, 0);
    }
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Dana Rivera", "--job", "Operator"}).status, 0);
    ASSERT_EQ(run({"crew", "rate", "Dana Rivera", "60.00", "--from", "2026-11-04"}).status, 0);

    const Json review = run({"--json", "review", "week", "2026-11-02"}).json();
    const auto& days = review["weeklyReviews"][0]["days"];
    ASSERT_EQ(days.size(), 3u);
    const auto source = [&](int i) { return days[i]["rateResolution"]["source"]["case"].get<std::string>() + " " + days[i]["rateResolution"]["hourlyAmount"].get<std::string>(); };
    EXPECT_EQ(source(0), "scaleFloor 52.20");
    EXPECT_EQ(days[0]["rateWarning"]["case"], "overScaleBelowScale");
    EXPECT_EQ(source(1), "dailyJobPositionScale 70.00");
    EXPECT_EQ(days[1]["rateResolution"]["source"]["positionName"], "Operator");
    EXPECT_EQ(source(2), "overScale 60.00");
    EXPECT_EQ(days[2]["rateResolution"]["applicableScale"], "52.20");

    const auto text = run({"review", "week", "2026-11-02"}).out;
    EXPECT_NE(text.find("Rate: Scale, Rate Card 2026 Basic: 52.20/hr (the Scale floor) \u2014 Over-Scale Rate is below Scale: The stored individual "
                        "rate of 45.00/hr is below the applicable 52.20/hr Scale Rate. Payroll uses the Scale floor.\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("Rate: Job for Today Operator, Scale, Rate Card 2026 Basic: 70.00/hr\n"), std::string::npos);
    // The week's bands are grouped by the classification each day was worked in.
    EXPECT_NE(text.find("    Gaffer:\n    ST  8.0 h x 52.20 x1    417.60\n"), std::string::npos) << text;
    EXPECT_NE(text.find("    Operator:\n    ST  8.0 h x 70.00 x1    560.00\n"), std::string::npos) << text;
    EXPECT_EQ(days[1]["classification"]["name"], "Operator");

    const auto shown = run({"dts", "show", "2026-11-03"}).out;
    EXPECT_NE(shown.find("    Job for Today: Operator\n    Rate: Job for Today Operator, Scale, Rate Card 2026 Basic: 70.00/hr\n"), std::string::npos)
        << shown;
    EXPECT_EQ(run({"--json", "dts", "show", "2026-11-03"}).json()["rows"][0]["rateResolution"]["hourlyAmount"], "70.00");

    // Without the Job for Today, Tuesday is paid at the floor again; the position cannot be removed while a row names it.
    EXPECT_EQ(run({"position", "remove", "Operator"}).err, "This Position is used by Production history and cannot be removed.\n");
    EXPECT_NE(run({"position", "show", "Operator"}).out.find("\n  Kept because it is used by Job for Today history.\n"), std::string::npos);
    ASSERT_EQ(run({"dts", "row", "2026-11-03", "Dana Rivera", "--no-job"}).status, 0);
    EXPECT_EQ(run({"--json", "review", "week", "2026-11-02"}).json()["weeklyReviews"][0]["days"][1]["rateResolution"]["source"]["case"], "scaleFloor");
}

TEST_F(PositionCommands, ADayplayerIsAddedInAPositionAndPaidItsScale) {
    ASSERT_EQ(run({"crew", "add", "Dana Rivera", "--from", "2026-11-01", "--rate", "45.00"}).status, 0);
    ASSERT_EQ(run({"position", "add", "Rigging Grip"}).status, 0);
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Rigging Grip", "48.00", "--from", "2026-01-01"}).status, 0);
    ASSERT_EQ(run({"dts", "create", "2026-11-02"}).status, 0);
    const auto added = run({"dts", "dayplayer", "2026-11-02", "Cole Vasquez", "--position", "Rigging Grip"});
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out, "Added Cole Vasquez (Dayplayer \u2022 Today) as Rigging Grip to the DTS for 2026-11-02.\n");
    const Json shown = run({"--json", "dts", "show", "2026-11-02"}).json();
    const auto& row = shown["rows"][1];
    EXPECT_EQ(row["dayplayer"], true);
    EXPECT_EQ(row["dtsNameForToday"], "Rigging Grip");
    EXPECT_EQ(row["rateResolution"]["source"]["case"], "positionScale");
    EXPECT_EQ(run({"dts", "dayplayer", "2026-11-02", "Dana Rivera", "--position", "Rigging Grip"}).err,
              "Dana Rivera is engaged full time on 2026-11-02; add the row with \u201Ctessel dts row\u201D.\n");
    // A second day reuses the dayplayer's engagement.
    ASSERT_EQ(run({"dts", "create", "2026-11-03"}).status, 0);
    ASSERT_EQ(run({"dts", "dayplayer", "2026-11-03", "Cole Vasquez", "--position", "Rigging Grip", "--dts-name", "Rigger"}).status, 0);
    EXPECT_EQ(run({"--json", "crew", "engagements", "Cole Vasquez"}).json()["engagements"].size(), 1u);
}

// A position's changes of the schedule pay every day worked in it; a person's own changes pay theirs;
// changes that leave no schedule are refused and change nothing.
TEST_F(PositionCommands, APositionsScheduleChangesPayItsDays) {
    for (const char* name : {"Dana Rivera", "Lee Park"}) ASSERT_EQ(run({"crew", "add", name, "--from", "2026-11-01", "--rate", "50.00"}).status, 0);
    ASSERT_EQ(run({"position", "add", "Gaffer"}).status, 0);
    const auto set = run({"position", "set", "Gaffer", "--overtime", "10", "--minimum-call", "10"});
    ASSERT_EQ(set.status, 0) << set.err;
    EXPECT_EQ(set.out.substr(0, set.out.find("  missingScale")), "Gaffer  [minimum call 10.0 h; overtime after 10.0 h]");
    EXPECT_EQ(run({"position", "set", "Gaffer", "--double-time", "9"}).err,
              "Pay bands must begin at zero, remain ordered without gaps or overlaps, and end with an open band.\n");
    EXPECT_EQ(run({"position", "set", "Gaffer", "--overtime", "ten"}).err,
              "--overtime takes payroll hours with an optional multiplier and basis (8,1.5,worked), none, or rules.\n");
    for (const char* name : {"Dana Rivera", "Lee Park"}) ASSERT_EQ(run({"crew", "position", name, "Gaffer", "--from", "2026-11-01"}).status, 0);
    EXPECT_EQ(run({"crew", "position-terms", "Lee Park", "--double-time", "none"}).out, "Lee Park\u2019s own schedule: no double time.\n");
    EXPECT_NE(run({"crew", "engagements", "Lee Park"})
                  .out.find("    Position Gaffer\n      from 2026-11-01: own rate as over-scale, the scale as its floor\n      Own schedule: no double time\n"),
              std::string::npos);
    ASSERT_EQ(run({"dts", "create", "2026-11-02"}).status, 0);
    ASSERT_EQ(run({"dts", "set", "2026-11-02", "--call", "7", "--lunch-out", "13", "--wrap", "20"}).status, 0);

    const auto bands = [&] {
        std::vector<std::string> lines;
        const Json review = run({"--json", "review", "week", "2026-11-02"}).json();
        for (const auto& week : review["weeklyReviews"]) {
            std::string line = week["days"][0].value("scheduleTerms", std::string("production rules")) + ":";
            for (const auto& c : week["days"][0]["categories"]) line += " " + c["label"].get<std::string>() + " " + c["compensation"]["amount"].get<std::string>();
            lines.push_back(line);
        }
        return lines;
    };
    // 12.5 hours worked: straight time to 10, then time and a half; double time from 12 for Dana only.
    EXPECT_EQ(bands(), (std::vector<std::string>{
                           "Gaffer\u2019s own defaults: minimum call 10.0 h; overtime after 10.0 h: Straight Time 500.00 Time and a Half 150.00 Double Time 100.00",
                           "Gaffer\u2019s own defaults with this person\u2019s changes: minimum call 10.0 h; overtime after 10.0 h; no double time: "
                           "Straight Time 500.00 Time and a Half 187.50"}));
    EXPECT_NE(run({"review", "week", "2026-11-02"}).out.find("      Schedule: Gaffer\u2019s own defaults: minimum call 10.0 h; overtime after 10.0 h\n"),
              std::string::npos);

    // Without its own defaults allowed, the production's rules pay the position (the person's changes still apply).
    ASSERT_EQ(run({"position", "set", "Gaffer", "--legacy-defaults", "off"}).status, 0);
    EXPECT_EQ(bands()[0], "production rules: Straight Time 400.00 Time and a Half 300.00 Double Time 100.00");
    ASSERT_EQ(run({"crew", "position-terms", "Lee Park", "--clear"}).status, 0);
    EXPECT_EQ(bands()[1], "production rules: Straight Time 400.00 Time and a Half 300.00 Double Time 100.00");
}

// The contract setup copied with a saved card governs the production's position, whatever the
// position's own defaults say later.
TEST_F(PositionCommands, ARateCardsContractSetupGovernsItsPosition) {
    ASSERT_EQ(run({"position", "add", "Gaffer", "--code", "1234", "--saved"}).status, 0);
    ASSERT_EQ(run({"position", "set", "Gaffer", "--overtime", "10", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "create", "2026 Basic", "--from", "2026-01-01", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Gaffer", "50.00", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "apply", "2026 Basic"}).status, 0);
    ASSERT_EQ(run({"position", "set", "Gaffer", "--overtime", "rules"}).status, 0);
    ASSERT_EQ(run({"crew", "add", "Dana Rivera", "--from", "2026-11-01", "--rate", "50.00"}).status, 0);
    ASSERT_EQ(run({"crew", "position", "Dana Rivera", "Gaffer", "--from", "2026-11-01"}).status, 0);
    ASSERT_EQ(run({"dts", "create", "2026-11-02"}).status, 0);
    ASSERT_EQ(run({"dts", "set", "2026-11-02", "--call", "7", "--lunch-out", "13", "--wrap", "18"}).status, 0);
    const Json day = run({"--json", "review", "week", "2026-11-02"}).json()["weeklyReviews"][0]["days"][0];
    EXPECT_EQ(day["scheduleTerms"], "Gaffer\u2019s contract setup on Rate Card \u201C2026 Basic\u201D: overtime after 10.0 h");
    // 10.5 hours worked: straight time to 10 under the card's setup (not to 8 as the production's rules say).
    ASSERT_EQ(day["categories"].size(), 2u);
    EXPECT_EQ(day["categories"][0]["compensation"]["amount"], "500.00");
    EXPECT_EQ(day["categories"][1]["compensation"]["amount"], "37.50");
}

}  // namespace
}  // namespace tessel
