#include <gtest/gtest.h>
#include <leptonica/allheaders.h>

#include <SQLiteCpp/SQLiteCpp.h>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "../support/CommandRun.hpp"
#include "App/exchange/Base64.hpp"

namespace tessel {
namespace {

namespace fs = std::filesystem;

struct Base64Case {
    std::string bytes;
    std::string text;
};

class Base64Text : public ::testing::TestWithParam<Base64Case> {};

TEST_P(Base64Text, RoundTripsEveryLength) {
    EXPECT_EQ(base64::encode(GetParam().bytes), GetParam().text);
    EXPECT_EQ(base64::decode(GetParam().text), GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(Blobs, Base64Text,
                         ::testing::Values(Base64Case{"", ""}, Base64Case{"f", "Zg=="}, Base64Case{"fo", "Zm8="}, Base64Case{"foo", "Zm9v"},
                                           Base64Case{"foob", "Zm9vYg=="}, Base64Case{std::string("\0\xff\x80", 3), "AP+A"}));

TEST(Base64Text, RefusesWhatIsNotStrictBase64) {
    for (const char* text : {"Zg", "Zg=", "Z===", "Zm9v\n", "Zm9-", "=Zm9", "Zg=a"}) EXPECT_FALSE(base64::decode(text)) << text;
}

class ProductionExport : public testing::CommandTest {
protected:
    fs::path archive;
    void SetUp() override {
        CommandTest::SetUp();
        archive = folder.path() / "Tessel-Production.tesselarchive";
        ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
        ASSERT_EQ(run({"production", "set", "--company", "Lighthouse Pictures", "--export-form", "builtin", "--builtin-form", "on"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Dana Rivera", "--from", "2026-11-01", "--rate", "12.50"}).status, 0);
        ASSERT_EQ(run({"crew", "add", "Lee Park", "--from", "2026-11-01", "--rate", "45.00"}).status, 0);
        ASSERT_EQ(run({"position", "add", "Gaffer", "--code", "1234"}).status, 0);
        ASSERT_EQ(run({"position", "set", "Gaffer", "--overtime", "10,1.5"}).status, 0);
        ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Gaffer", "52.20", "--from", "2026-01-01"}).status, 0);
        ASSERT_EQ(run({"crew", "position", "Dana Rivera", "Gaffer"}).status, 0);
        ASSERT_EQ(run({"dts", "create", "2026-11-04"}).status, 0);
        ASSERT_EQ(run({"dts", "set", "2026-11-04", "--call", "7", "--lunch-out", "13", "--wrap", "19.5", "--notes", "Stage 4.", "--mileage", "12.5"})
                      .status,
                  0);
        ASSERT_EQ(run({"dts", "row", "2026-11-04", "Lee Park", "--job", "Gaffer", "--box-rental", "--mileage", "3.25"}).status, 0);
    }
    nlohmann::json exported() {
        const auto result = run({"production", "export", "--output", archive.string()});
        EXPECT_EQ(result.status, 0) << result.err;
        std::ifstream in(archive);
        return nlohmann::json::parse(in);
    }
    std::string storePath() const { return (folder.path() / "data" / "canonical-store" / "Tessel.store").string(); }
};

TEST_F(ProductionExport, WritesEveryRecordWithItsValuesAsText) {
    PIX* pix = pixCreate(40, 10, 32);
    pixSetAll(pix);
    const auto png = folder.path() / "signature.png";
    ASSERT_EQ(pixWrite(png.c_str(), pix, IFF_PNG), 0);
    pixDestroy(&pix);
    ASSERT_EQ(run({"production", "signature", png.string()}).status, 0);

    const auto document = exported();
    const auto& metadata = document["metadata"];
    EXPECT_EQ(metadata["archiveFormatVersion"], 2);
    EXPECT_EQ(metadata["productionID"], document["production"]["id"]);
    EXPECT_EQ(metadata["productionName"], "Harbor Lights");
    EXPECT_EQ(document["production"]["productionCompany"], "Lighthouse Pictures");
    EXPECT_EQ(document["dtsExportTemplateMode"], "legacyKestrel");
    // Decimals keep their scale as text; dates are ISO 8601 without fractions.
    EXPECT_EQ(document["payRates"][0]["hourlyAmount"], "12.50");
    EXPECT_EQ(document["workdays"][0]["calendarDate"], "2026-11-04T00:00:00Z");
    EXPECT_EQ(document["workdays"][0]["generalCrewCall"], "2026-11-04T07:00:00Z");
    EXPECT_EQ(document["workdays"][0]["notes"], "Stage 4.");
    EXPECT_EQ(document["workdayMileage"][0]["miles"], "12.5");
    EXPECT_EQ(document["crewDailyMileage"][0]["miles"], "3.25");
    EXPECT_EQ(document["crewDailyEntries"].size(), 2u);
    EXPECT_EQ(document["crewDailyJobs"][0]["positionName"], "Gaffer");
    EXPECT_EQ(document["boxRentalSelections"][0]["applies"], true);
    EXPECT_EQ(document["positionScaleRates"][0]["hourlyAmount"], "52.20");
    EXPECT_EQ(document["engagements"][0]["payrollPositionName"], "Gaffer");
    // A position's defaults and the signature travel as base64 of the stored bytes.
    const auto defaults = base64::decode(document["productionPositions"][0]["dailyDefaultsData"].get<std::string>());
    ASSERT_TRUE(defaults);
    EXPECT_NE(defaults->find("\"overtimeThresholdSeconds\":36000"), std::string::npos);
    std::ifstream in(png, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    EXPECT_EQ(base64::decode(document["production"]["signatureImageData"].get<std::string>()), bytes.str());

    // Pretty printed with sorted keys: the file is what dumping the parsed document sorted gives.
    std::ifstream file(archive);
    std::ostringstream text;
    text << file.rdbuf();
    EXPECT_EQ(text.str(), document.dump(2) + "\n");
}

TEST_F(ProductionExport, RefusesAProductionWithIncompleteRelationshipsAndWritesNothing) {
    {
        SQLite::Database store(storePath(), SQLite::OPEN_READWRITE);
        store.exec("UPDATE CrewDailyEntry SET crewMemberID = NULL WHERE displayOrder = 1");
    }
    const auto refused = run({"production", "export", "--output", archive.string()});
    EXPECT_EQ(refused.err, "Couldn\u2019t Export Production\nThe Production contains incomplete relationships and cannot be exported safely.\n");
    EXPECT_FALSE(fs::exists(archive));
}

TEST_F(ProductionExport, RefusesPositionTermsOwnedAcrossProductions) {
    {
        SQLite::Database store(storePath(), SQLite::OPEN_READWRITE);
        store.exec("INSERT INTO ProductionRateCardPositionTerms (id, productionRateCardID, productionPositionID, payloadFormatVersion, createdAt, "
                   "modifiedAt) SELECT 'F0000000-0000-4000-8000-000000000001', id, 'F0000000-0000-4000-8000-000000000002', 1, "
                   "'2026-11-01T00:00:00Z', '2026-11-01T00:00:00Z' FROM ProductionRateCard");
    }
    EXPECT_EQ(run({"production", "export", "--output", archive.string()}).err,
              "Couldn\u2019t Export Production\nPosition terms have missing or cross-Production ownership.\n");
    EXPECT_FALSE(fs::exists(archive));
}

}  // namespace
}  // namespace tessel
