#include <gtest/gtest.h>

#include "../actualpay/StubPdf.hpp"
#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

class StubCommands : public testing::CommandTest {
protected:
    testing::CommandOutcome run(const std::vector<std::string>& arguments) { return testing::runCommand(arguments); }
    std::string file(const std::string& name, const std::string& bytes) {
        const auto path = (folder.path() / name).string();
        testing::writeFile(path, bytes);
        return path;
    }
};

TEST_F(StubCommands, ReadAStubWithEveryValueAndItsEvidence) {
    const std::string pdf = testing::drawnPdf({{{72, 60, "Entertainment Partners"}, {72, 90, "DANA M RIVERA SSN: XXX-XX-1234"},
                                                {72, 108, "Occupation Title: Key Grip"}, {72, 126, "Pay Period Start: 11/02/26 End: 11/08/26"},
                                                {72, 170, "DESC"}, {250, 170, "RATE"}, {330, 170, "HOURS"}, {420, 170, "AMOUNT"},
                                                {72, 188, "REGULAR"}, {250, 188, "45.00"}, {330, 188, "8.0"}, {420, 188, "360.00"},
                                                {72, 214, "TOTALS"}, {330, 214, "8.0"}, {420, 214, "360.00"}, {72, 232, "GROSS"}}});
    const auto outcome = run({"stub", "read", file("stub.pdf", pdf), "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    const Json stub = outcome.json();
    EXPECT_EQ(stub["printedEmployeeName"]["value"], "DANA M RIVERA");
    EXPECT_EQ(stub["payPeriodEnd"]["value"], "2026-11-08");
    EXPECT_EQ(stub["earningLines"][0]["amount"]["value"], "360.00");
    EXPECT_EQ(stub["earningLines"][0]["arithmetic"][0]["status"], "exact");
    EXPECT_EQ(stub["ocrEvidence"]["label"], "Tesseract OCR");
    EXPECT_EQ(stub["embeddedEvidence"]["label"], "Downloaded PDF text");
    const auto layer = run({"stub", "read", file("stub.pdf", pdf), "--embedded", "ocr-layer"});
    EXPECT_NE(layer.out.find("read from Embedded OCR text"), std::string::npos) << layer.out;
}

TEST_F(StubCommands, ScoreEachReadingAgainstTheKnownFacts) {
    const std::string pdf = testing::drawnPdf({{{72, 90, "DANA M RIVERA SSN: XXX-XX-1234"}, {72, 108, "Occupation Title: Key Grip"},
                                                {72, 170, "DESC"}, {250, 170, "RATE"}, {330, 170, "HOURS"}, {420, 170, "AMOUNT"},
                                                {72, 188, "REGULAR"}, {250, 188, "45.00"}, {330, 188, "8.0"}, {420, 188, "360.00"},
                                                {72, 214, "TOTALS"}, {330, 214, "8.0"}, {420, 214, "360.00"}}});
    const auto stub = file("stub.pdf", pdf);
    const auto facts = file("stub.facts.json", R"({"printedEmployeeName": "DANA M RIVERA", "printedOccupation": "KEY GRIP", "gross": 360.00,
        "earningLines": [["REGULAR", "45.00", "8.0", "360.00"], ["MEAL PENALTY", null, null, "8.50"]]})");
    const auto text = run({"stub", "lab", stub, "--facts", facts});
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("Downloaded PDF text: 6 of 9 facts exact, 1 normalized, 0 incorrect, 2 missing; earnings reconcile\n"), std::string::npos)
        << text.out;
    EXPECT_NE(text.out.find("  printedOccupation: normalizedCorrect (expected \u201CKEY GRIP\u201D, read \u201CKey Grip\u201D)\n"), std::string::npos);
    EXPECT_NE(text.out.find("Tesseract OCR: "), std::string::npos);

    const auto json = run({"stub", "lab", stub, "--facts", facts, "--json"});
    ASSERT_EQ(json.status, 0) << json.err;
    const Json sources = json.json()["sources"];
    ASSERT_EQ(sources.size(), 2u);
    EXPECT_EQ(sources[0]["label"], "Downloaded PDF text");
    EXPECT_EQ(sources[0]["summary"]["missingCount"], 2);
    EXPECT_EQ(sources[0]["facts"].back()["classification"], "missing");
    EXPECT_EQ(sources[1]["source"], "tesseractOCR");

    const auto bad = run({"stub", "lab", stub, "--facts", file("bad.json", R"({"gross": "lots"})")});
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(bad.err, "\u201Cgross\u201D in the facts file must be a number, not \u201Clots\u201D.\n");
    EXPECT_NE(run({"stub", "lab", stub}).status, 0);  // the facts are required
}

TEST_F(StubCommands, RefuseUnreadableFilesInOneSentence) {
    const auto notPdf = run({"stub", "read", file("letter.pdf", "Dear payroll")});
    EXPECT_EQ(notPdf.status, 1);
    EXPECT_EQ(notPdf.err, "The selected pay stub is not a readable PDF.\n");
    const auto other = run({"stub", "read", file("other.pdf", testing::drawnPdf({{{72, 72, "Invoice"}}}))});
    EXPECT_EQ(other.status, 1);
    EXPECT_EQ(other.err, "Tessel doesn't recognize this pay-stub format yet.\n");
    EXPECT_EQ(run({"stub", "read", file("empty.pdf", "")}).err, "The selected pay stub is empty.\n");
}

}  // namespace
}  // namespace tessel
