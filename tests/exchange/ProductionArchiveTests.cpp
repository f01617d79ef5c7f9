#include <gtest/gtest.h>
#include <leptonica/allheaders.h>

#include <SQLiteCpp/SQLiteCpp.h>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <functional>
#include <set>
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
        ASSERT_EQ(run({"dts", "set", "2026-11-04", "--call", "7", "--lunch-out", "13", "--wrap", "19.5", "--notes", "Stage 4.", "--mileage", "12.5",
                       "--location", "location"})
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
    const auto any = [&](const char* collection, const char* key, const char* value) {
        const auto& records = document[collection];
        return std::any_of(records.begin(), records.end(), [&](const auto& r) { return r.contains(key) && r[key] == value; });
    };
    EXPECT_TRUE(any("payRates", "hourlyAmount", "12.50"));
    EXPECT_EQ(document["workdays"][0]["calendarDate"], "2026-11-04T00:00:00Z");
    EXPECT_EQ(document["workdays"][0]["generalCrewCall"], "2026-11-04T07:00:00Z");
    EXPECT_EQ(document["workdays"][0]["notes"], "Stage 4.");
    EXPECT_EQ(document["workdays"][0]["mealWorkLocationRawValue"], "location");
    EXPECT_EQ(document["workdayMileage"][0]["miles"], "12.5");
    EXPECT_EQ(document["crewDailyMileage"][0]["miles"], "3.25");
    EXPECT_EQ(document["crewDailyEntries"].size(), 2u);
    EXPECT_EQ(document["crewDailyJobs"][0]["positionName"], "Gaffer");
    EXPECT_EQ(document["boxRentalSelections"][0]["applies"], true);
    EXPECT_EQ(document["positionScaleRates"][0]["hourlyAmount"], "52.20");
    EXPECT_TRUE(any("engagements", "payrollPositionName", "Gaffer"));
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

// With a replacement draft waiting beside the approved template, the template in use is the one archived.
TEST_F(ProductionExport, CarriesTheApprovedTemplateWhileADraftWaits) {
    const std::string form = (fs::path(TESSEL_FORM_FIXTURES) / "typical.pdf").string();
    ASSERT_EQ(run({"template", "import", form}).status, 0);
    for (const char* field : {"workday.notes", "derived.pageXOfY"}) ASSERT_EQ(run({"template", "blank", field}).status, 0);
    ASSERT_EQ(run({"template", "rows", "confirm"}).status, 0);
    ASSERT_EQ(run({"template", "approve"}).status, 0);
    ASSERT_EQ(run({"template", "import", form}).status, 0);
    {
        // The approved one last in identity order, so that the order of identities alone would pick the draft.
        SQLite::Database store(storePath(), SQLite::OPEN_READWRITE);
        store.exec("UPDATE ProductionGenericDTSTemplate SET id = 'FFFFFFFF-FFFF-4FFF-8FFF-FFFFFFFFFFFF' "
                   "WHERE CAST(definitionData AS TEXT) LIKE '%\"approvalState\": \"approved\"%'");
        ASSERT_EQ(store.getChanges(), 1);
    }
    const auto archived = exported()["genericDTSTemplate"];
    ASSERT_TRUE(archived.is_object());
    const auto definition = nlohmann::json::parse(*base64::decode(archived["definitionData"].get<std::string>()));
    EXPECT_EQ(definition["approvalState"], "approved");
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

// An archive changed by `change`, imported into the test's store: the refusal, and whether the store's
// productions stayed as they were.
class ProductionImport : public ProductionExport {
protected:
    nlohmann::json original;
    void SetUp() override {
        ProductionExport::SetUp();
        original = exported();
    }
    std::string importChanged(const std::function<void(nlohmann::json&)>& change) {
        auto document = original;
        change(document);
        const auto file = folder.path() / "changed.tesselarchive";
        std::ofstream(file) << document.dump(2);
        const auto before = run({"production", "list"}).out;
        const auto result = run({"production", "import", file.string()});
        EXPECT_EQ(run({"production", "list"}).out, before) << "the store changed";
        return result.err;
    }
    static std::set<std::string> identities(const nlohmann::json& document) {
        std::set<std::string> ids;
        for (const auto& [key, value] : document.items()) {
            if (!value.is_array()) continue;
            for (const auto& record : value) {
                if (record.is_object() && record.contains("id")) ids.insert(record["id"].get<std::string>());
            }
        }
        ids.insert(document["production"]["id"].get<std::string>());
        return ids;
    }
};

TEST_F(ProductionImport, IntoAnotherStoreGivesTheSameArchiveBack) {
    ASSERT_EQ(run({"production", "set", "--department-head", "Morgan Hale"}).status, 0);
    original = exported();
    const auto elsewhere = (folder.path() / "elsewhere").string();
    const auto imported = testing::runCommand({"--store-root", elsewhere, "production", "import", archive.string()});
    ASSERT_EQ(imported.status, 0) << imported.err;
    EXPECT_EQ(imported.out,
              "Imported the production \u201CHarbor Lights\u201D.\nThis Production archive includes Department Head identity from another "
              "installation. It has been preserved, but it will not be used on DTS exports unless you accept it. Use it with \u201Ctessel "
              "production identity accept\u201D.\n");
    ASSERT_EQ(testing::runCommand({"--store-root", elsewhere, "production", "identity", "accept"}).status, 0);
    const auto again = folder.path() / "again.tesselarchive";
    ASSERT_EQ(testing::runCommand({"--store-root", elsewhere, "production", "export", "--output", again.string()}).status, 0);
    std::ifstream in(again);
    auto back = nlohmann::json::parse(in);
    back["metadata"].erase("exportedAt");
    auto sent = original;
    sent["metadata"].erase("exportedAt");
    EXPECT_EQ(back, sent);
}

TEST_F(ProductionImport, IntoTheSameStoreMakesACopySharingNothing) {
    const auto imported = run({"production", "import", archive.string()});
    ASSERT_EQ(imported.status, 0) << imported.err;
    EXPECT_NE(imported.out.find("Imported the production \u201CHarbor Lights (Imported Copy)\u201D as a copy"), std::string::npos);
    const auto copy = exported();  // the imported copy is now the current production
    EXPECT_EQ(copy["production"]["name"], "Harbor Lights (Imported Copy)");
    EXPECT_EQ(copy["crewDailyEntries"].size(), original["crewDailyEntries"].size());
    EXPECT_TRUE(std::any_of(copy["payRates"].begin(), copy["payRates"].end(), [](const auto& r) { return r["hourlyAmount"] == "12.50"; }));
    const auto first = identities(original), second = identities(copy);
    std::vector<std::string> shared;
    std::set_intersection(first.begin(), first.end(), second.begin(), second.end(), std::back_inserter(shared));
    EXPECT_TRUE(shared.empty()) << shared.size() << " records shared";
    // References follow the new identities: the copy's rows name the copy's crew.
    std::set<std::string> crew;
    for (const auto& member : copy["crewMembers"]) crew.insert(member["id"].get<std::string>());
    for (const auto& entry : copy["crewDailyEntries"]) EXPECT_TRUE(crew.contains(entry["crewMemberID"].get<std::string>()));
}

// A confirmed stub for the first crew member in the first week, imported, confirmed and modified at once.
nlohmann::json stubRecord(const nlohmann::json& d) {
    return {{"id", "F0000000-0000-4000-8000-00000000000A"},
            {"crewMemberID", d["crewMembers"][0]["id"]},
            {"payrollWeekID", d["payrollWeeks"][0]["id"]},
            {"payrollWeekStart", "2026-11-02T00:00:00Z"},
            {"payrollWeekEnd", "2026-11-08T00:00:00Z"},
            {"printedEmployeeName", "DANA RIVERA"},
            {"printedOccupation", "GAFFER"},
            {"gross", "100.00"},
            {"sourcePDFData", ""},
            {"sourceFilename", "a.pdf"},
            {"importedAt", "2026-11-10T00:00:00Z"},
            {"confirmedAt", "2026-11-10T00:00:00Z"},
            {"modifiedAt", "2026-11-10T00:00:00Z"},
            {"earningLines", nlohmann::json::array()}};
}

struct RefusalCase {
    const char* name;
    std::function<void(nlohmann::json&)> change;
    const char* refusal;
};

class ImportRefusals : public ProductionImport, public ::testing::WithParamInterface<RefusalCase> {};

TEST_P(ImportRefusals, RefuseWithTheirSentenceAndWriteNothing) {
    EXPECT_EQ(importChanged(GetParam().change), "Couldn\u2019t Import Production\n" + std::string(GetParam().refusal) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Archives, ImportRefusals,
    ::testing::Values(
        RefusalCase{"VersionZero", [](auto& d) { d["metadata"]["archiveFormatVersion"] = 0; },
                    "Tessel Archive version 0 is not supported by this version of Tessel."},
        RefusalCase{"VersionThree", [](auto& d) { d["metadata"]["archiveFormatVersion"] = 3; },
                    "Tessel Archive version 3 is not supported by this version of Tessel."},
        RefusalCase{"IdentityMismatch", [](auto& d) { d["metadata"]["productionID"] = "F0000000-0000-4000-8000-000000000009"; },
                    "The Tessel Archive is invalid. Production metadata identity does not match the payload."},
        RefusalCase{"MissingCrew", [](auto& d) { d["engagements"][0]["crewMemberID"] = "F0000000-0000-4000-8000-000000000009"; },
                    "The Tessel Archive is invalid. An engagement references missing crew."},
        RefusalCase{"RowWithoutWorkday",
                    [](auto& d) {
                        d["workdays"] = nlohmann::json::array();
                        d["workdayMileage"] = nlohmann::json::array();
                    },
                    "The Tessel Archive is invalid. A daily entry references a missing workday."},
        RefusalCase{"AmountNotADecimal", [](auto& d) { d["payRates"][0]["hourlyAmount"] = "twelve"; },
                    "The Tessel Archive is invalid. A pay rate amount is invalid."},
        RefusalCase{"AmountNotText", [](auto& d) { d["payRates"][0]["hourlyAmount"] = 12; },
                    "The Tessel Archive is invalid. The field \u201CpayRates[0].hourlyAmount\u201D must be a decimal number as text."},
        RefusalCase{"UnknownSchedule", [](auto& d) { d["engagements"][0]["employmentScheduleRawValue"] = "hourly"; },
                    "The Tessel Archive is invalid. An engagement has an unknown employment schedule."},
        RefusalCase{"UnknownExportForm", [](auto& d) { d["dtsExportTemplateMode"] = "kestrel"; },
                    "The Tessel Archive is invalid. Unsupported DTS export template selection."},
        RefusalCase{"WeekdayEight", [](auto& d) { d["payrollWeekStartWeekday"] = 8; },
                    "The Tessel Archive is invalid. Invalid Payroll Week start weekday."},
        RefusalCase{"EmptyDTSName",
                    [](auto& d) {
                        d["crewDailyDTSTitles"] = nlohmann::json::array(
                            {{{"id", "F0000000-0000-4000-8000-00000000000D"}, {"crewDailyEntryID", d["crewDailyEntries"][0]["id"]}, {"displayTitle", " "}}});
                    },
                    "The Tessel Archive is invalid. A DTS Name for Today is empty."},
        RefusalCase{"MissingKey", [](auto& d) { d["crewMembers"][0].erase("displayName"); },
                    "The Tessel Archive is invalid. The field \u201CcrewMembers[0].displayName\u201D is missing."},
        RefusalCase{"LongWorkState", [](auto& d) { d["production"]["defaultWorkState"] = std::string(201, 'C'); },
                    "The Tessel Archive is invalid. The default Work State is invalid."},
        RefusalCase{"SignatureTooLarge",
                    [](auto& d) { d["production"]["signatureImageData"] = base64::encode(std::string(5'000'001, 'x')); },
                    "The Tessel Archive is invalid. The DTS signature image is too large."},
        RefusalCase{"SignatureNotAnImage", [](auto& d) { d["production"]["signatureImageData"] = base64::encode("not an image"); },
                    "The Tessel Archive is invalid. The DTS signature image is invalid."},
        RefusalCase{"CompetingStubs",
                    [](auto& d) {
                        d["actualPayStubs"] = {stubRecord(d), stubRecord(d)};
                        d["actualPayStubs"][1]["id"] = "F0000000-0000-4000-8000-00000000000B";
                    },
                    "The Tessel Archive is invalid. Competing confirmed pay stubs exist for one crew member and Payroll Week."},
        RefusalCase{"StubConfirmedBeforeImported",
                    [](auto& d) {
                        d["actualPayStubs"] = {stubRecord(d)};
                        d["actualPayStubs"][0]["importedAt"] = "2026-11-10T00:00:01Z";
                    },
                    "The Tessel Archive is invalid. A confirmed pay stub timestamp sequence is invalid."},
        RefusalCase{"StubModifiedBeforeConfirmed",
                    [](auto& d) {
                        d["actualPayStubs"] = {stubRecord(d)};
                        d["actualPayStubs"][0]["modifiedAt"] = "2026-11-09T23:59:59Z";
                    },
                    "The Tessel Archive is invalid. A confirmed pay stub timestamp sequence is invalid."},
        RefusalCase{"TemplateModifiedBeforeCreated",
                    [](auto& d) {
                        d["genericDTSTemplate"] = {{"id", "F0000000-0000-4000-8000-00000000000E"},
                                                   {"sourcePDFData", base64::encode("%PDF-1.4\n")},
                                                   {"definitionData", base64::encode("{}")},
                                                   {"createdAt", "2026-11-10T00:00:00Z"},
                                                   {"modifiedAt", "2026-11-09T00:00:00Z"}};
                    },
                    "The Tessel Archive is invalid. The generic DTS template timestamps are invalid."},
        RefusalCase{"TwoPositionsWithOneID", [](auto& d) { d["productionPositions"].push_back(d["productionPositions"][0]); },
                    "The Tessel Archive is invalid. The archive holds two Production Position records with one identifier."},
        RefusalCase{"RateCardEndingBeforeItStarts", [](auto& d) { d["rateCards"][0]["effectiveEnd"] = "2025-12-31T00:00:00Z"; },
                    "The Tessel Archive is invalid. A rate-card effective period is invalid."},
        RefusalCase{"PayRateInNoCurrency", [](auto& d) { d["payRates"][0]["currencyCode"] = "dollars"; },
                    "The Tessel Archive is invalid. A pay rate could not be reconstructed."},
        RefusalCase{"ScaleRateInNoCurrency", [](auto& d) { d["positionScaleRates"][0]["currencyCode"] = "usd"; },
                    "The Tessel Archive is invalid. A Position scale rate could not be reconstructed."},
        RefusalCase{"TwoTermsForOneCardAndPosition",
                    [](auto& d) {
                        nlohmann::json terms{{"id", "F0000000-0000-4000-8000-00000000000C"},
                                             {"productionRateCardID", d["rateCards"][0]["id"]},
                                             {"productionPositionID", d["productionPositions"][0]["id"]},
                                             {"dailyDefaultsData", ""},
                                             {"weeklyDefaultsData", ""},
                                             {"payloadFormatVersion", 1},
                                             {"createdAt", "2026-11-10T00:00:00Z"},
                                             {"modifiedAt", "2026-11-10T00:00:00Z"}};
                        d["positionTerms"] = {terms, terms};
                        d["positionTerms"][1]["id"] = "F0000000-0000-4000-8000-00000000000D";
                    },
                    "The Tessel Archive is invalid. Duplicate card/Position terms authority."},
        RefusalCase{"UnreadablePositionSetup",
                    [](auto& d) { d["productionPositions"][0]["dailyDefaultsData"] = base64::encode(R"({"scheduleOverrides":{"overtimeMode":"often"}})"); },
                    "The Tessel Archive is invalid. A Production Position Daily setup is invalid."},
        RefusalCase{"UnreadableJobSnapshot", [](auto& d) { d["crewDailyJobs"][0]["snapshotData"] = base64::encode("{not json"); },
                    "The Tessel Archive is invalid. A Job for Today Position snapshot is invalid."},
        RefusalCase{"UnreadableMealPenaltyRules",
                    [](auto& d) { d["rulesetRevisions"][0]["mealPenaltyRulesData"] = base64::encode(R"({"schedules":3})"); },
                    "The Tessel Archive is invalid. Meal Penalty Rules are invalid."},
        RefusalCase{"RateHistoryNotObjects", [](auto& d) { d["engagements"][0]["payrollPositionRates"] = nlohmann::json::array({1}); },
                    "The Tessel Archive is invalid. The field \u201Cengagements[0].payrollPositionRates\u201D must be a list of objects."},
        RefusalCase{"RateHistoryFlagNotBoolean",
                    [](auto& d) {
                        d["engagements"][0]["payrollPositionRates"] = nlohmann::json::array(
                            {{{"effectiveDate", "2026-11-01T00:00:00Z"}, {"appliedScaleAmount", "52.20"}, {"currencyCode", "USD"}, {"followsPositionScale", "yes"}}});
                    },
                    "The Tessel Archive is invalid. The field \u201Cengagements[0].payrollPositionRates[0].followsPositionScale\u201D must be true or false."},
        RefusalCase{"NotJSON", [](auto& d) { d = "just text"; }, "The Tessel Archive is invalid. The document must be a JSON object."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(ProductionImport, AVersionOneArchiveWithoutTheLaterListsImports) {
    for (const char* key : {"boxRentalTerms", "boxRentalSelections", "dailyGuaranteeTerms", "crewDailyWorkModes", "crewDailyRerates", "crewDailyJobs",
                            "crewDailyDTSTitles", "crewDailyMileage", "workdayMileage", "compensationProvisionConfigurations",
                            "engagementCompensationProvisionTerms", "rateCards", "positionScaleRates", "productionPositions", "actualPayStubs",
                            "payrollIssues", "positionTerms", "dtsExportTemplateMode", "payrollWeekStartWeekday", "roundingTolerance"}) {
        original.erase(key);
    }
    for (auto& engagement : original["engagements"]) {
        for (const char* key : {"payrollPositionSourcePresetID", "payrollPositionName", "payrollPositionSnapshotData", "payrollPositionRates",
                                "payrollPositionRateEffectiveDate", "payrollPositionScaleAmount", "payrollPositionRateCurrencyCode",
                                "payrollPositionRateFollowsScale", "payrollPositionAppliedAt"}) {
            engagement.erase(key);
        }
    }
    original["metadata"]["archiveFormatVersion"] = 1;
    // A position from a writer that kept no provenance and no notes.
    original["productionPositions"] = nlohmann::json::array({{{"id", "F0000000-0000-4000-8000-00000000000C"}, {"positionName", "Best Boy"},
                                                              {"dailyDefaultsData", ""}, {"weeklyDefaultsData", ""}, {"displayOrder", 0},
                                                              {"isActive", true}, {"modifiedAt", "2026-11-01T00:00:00Z"}}});
    const auto file = folder.path() / "version1.tesselarchive";
    std::ofstream(file) << original.dump(2);
    const auto imported = run({"production", "import", file.string()});
    ASSERT_EQ(imported.status, 0) << imported.err;
    const auto copy = exported();
    EXPECT_EQ(copy["crewDailyEntries"].size(), 2u);
    EXPECT_TRUE(copy["crewDailyJobs"].empty());
    ASSERT_EQ(copy["productionPositions"].size(), 1u);
    EXPECT_EQ(copy["productionPositions"][0]["sourceNotes"], "Legacy Position; package provenance unknown.");
}

}  // namespace
}  // namespace tessel
