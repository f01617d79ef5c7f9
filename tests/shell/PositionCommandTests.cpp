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

}  // namespace
}  // namespace tessel
