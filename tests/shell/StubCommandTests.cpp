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
