#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include <SQLiteCpp/Database.h>

#include "../support/CommandRun.hpp"

// Pay stubs imported and confirmed against a production like the demo's: eight crew, a DTS in the
// Payroll Week of 2026-11-02, and the generated week of stubs for them (tools/stub-fixtures).
namespace tessel {
namespace {

const std::filesystem::path stubs = std::filesystem::path(TESSEL_STUB_FIXTURES) / "demo-week";
const std::string week = "2026-11-02";

class PayStubCommands : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
        for (const char* name : {"Marisol Quint", "Teodor Vance", "Priya Lindqvist", "Oskar Bellamy", "Nell Achterberg", "Fenwick Osei",
                                 "Dara Whitcombe", "Jules Marr"}) {
            ASSERT_EQ(run({"crew", "add", name, "--from", "2026-11-01", "--rate", "45.00"}).status, 0) << name;
        }
        ASSERT_EQ(run({"dts", "create", week}).status, 0);
    }
    std::string stub(const char* name) const { return (stubs / name).string(); }
    Json confirmedList() { return run({"--json", "stub", "list", "--week", week}).json(); }
};

std::map<std::string, std::string> statuses(const Json& batch) {
    std::map<std::string, std::string> byFile;
    for (const auto& c : batch["candidates"]) byFile[c["file"]] = c["status"];
    return byFile;
}

TEST_F(PayStubCommands, ImportAWeekConfirmTheReadyOnesAndSeeThemAsConfirmed) {
    const auto first = run({"--json", "stub", "import", stubs.string(), "--week", week});
    ASSERT_EQ(first.status, 0) << first.err;
    EXPECT_EQ(statuses(first.json()), (std::map<std::string, std::string>{{"01-quint.pdf", "ready"},
                                                                          {"02-vance.pdf", "ready"},
                                                                          {"03-lindqvist.pdf", "ready"},
                                                                          {"04-bellamy.pdf", "ready"},
                                                                          {"05-achterberg.pdf", "earnings"},
                                                                          {"06-osei.pdf", "wrongPeriod"},
                                                                          {"07-whitcombe-scan.pdf", "ready"},
                                                                          {"08-marr.pdf", "ready"},
                                                                          {"09-blackwood.pdf", "noMatch"},
                                                                          {"10-quint-again.pdf", "duplicate"},
                                                                          {"11-notes.pdf", "failed"}}));
    EXPECT_NE(first.err.find("10/10\n"), std::string::npos) << first.err;  // progress; the duplicate is not read again
    EXPECT_TRUE(confirmedList().empty());  // importing alone stores nothing

    const auto confirmed = run({"stub", "import", stubs.string(), "--week", week, "--confirm-ready"});
    ASSERT_EQ(confirmed.status, 0) << confirmed.err;
    EXPECT_NE(confirmed.out.find("Confirmed 6 pay stubs.\n"), std::string::npos) << confirmed.out;
    EXPECT_NE(confirmed.out.find("  05-achterberg.pdf      Review Earnings     Nell Achterberg"), std::string::npos) << confirmed.out;
    EXPECT_NE(confirmed.out.find("      Earning line 1 amount: Rate × hours does not reconcile to the printed amount.\n"), std::string::npos);
    EXPECT_EQ(confirmedList().size(), 6u);

    const auto again = statuses(run({"--json", "stub", "import", stubs.string(), "--week", week}).json());
    EXPECT_EQ(again.at("01-quint.pdf"), "existing");
    EXPECT_EQ(again.at("06-osei.pdf"), "wrongPeriod");
}

TEST_F(PayStubCommands, ConfirmOneStubOnceItsDoubtsAreSettled) {
    const auto refused = run({"stub", "confirm", stub("06-osei.pdf"), "--week", week});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, "Review the remaining pay-stub items before confirming:\n"
                           "- The printed pay period does not match the selected Tessel Payroll Week.\n");
    EXPECT_TRUE(confirmedList().empty());
    ASSERT_EQ(run({"stub", "confirm", stub("06-osei.pdf"), "--week", week, "--accept-period"}).status, 0);

    // The regular line is a cent off; corrected, the gross no longer adds up until it is corrected too.
    const std::vector<std::string> line{"stub", "confirm", stub("05-achterberg.pdf"), "--week", week, "--line", "1=REGULAR,40.00,41.50,1660.00"};
    const auto sum = run(line);
    EXPECT_EQ(sum.err, "Review the remaining pay-stub items before confirming:\n- Gross does not match the sum of earning amounts.\n");
    auto withGross = line;
    withGross.insert(withGross.end(), {"--gross", "2400.88"});
    const auto done = run(withGross);
    ASSERT_EQ(done.status, 0) << done.err;
    EXPECT_NE(done.out.find("  1. REGULAR  40.00 h  at 41.50  1660.00 (corrected)\n"), std::string::npos) << done.out;
    EXPECT_NE(done.out.find("  Gross: 2400.88 (corrected)\n"), std::string::npos);
    EXPECT_EQ(confirmedList().size(), 2u);

    EXPECT_EQ(run({"stub", "confirm", stub("09-blackwood.pdf"), "--week", week, "--crew", "Nobody"}).err,
              "There is no crew member named \u201CNobody\u201D on this production.\n");
    EXPECT_EQ(run({"stub", "confirm", stub("11-notes.pdf"), "--week", week}).err, "The selected pay stub is not a readable PDF.\n");
    EXPECT_EQ(run({"stub", "confirm", stub("01-quint.pdf"), "--week", week, "--line", "1=REGULAR"}).status, 1);
    EXPECT_EQ(confirmedList().size(), 2u);
}

TEST_F(PayStubCommands, ReplacementIsExplicitAndKeepsOneStubPerPersonAndWeek) {
    ASSERT_EQ(run({"stub", "confirm", stub("01-quint.pdf"), "--week", week}).status, 0);
    const auto second = run({"stub", "confirm", stub("01-quint.pdf"), "--week", week});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(second.err, "A confirmed pay stub already exists for this crew member and Payroll Week. Give --replace to replace it with this PDF.\n");
    const auto id = confirmedList()[0]["id"];
    ASSERT_EQ(run({"stub", "confirm", stub("01-quint.pdf"), "--week", week, "--replace"}).status, 0);
    const auto list = confirmedList();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_NE(list[0]["id"], id);
    EXPECT_EQ(list[0]["crewMember"], "Marisol Quint");
}

TEST_F(PayStubCommands, ShowTheStubWithItsPdfAndRemoveItOnlyWhenAsked) {
    ASSERT_EQ(run({"stub", "confirm", stub("02-vance.pdf"), "--week", week}).status, 0);
    const auto pdf = (folder.path() / "vance.pdf").string();
    const auto shown = run({"stub", "show", "Teodor Vance", "--week", week, "--pdf", pdf});
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_NE(shown.out.find("  Printed name: TEODOR VANCE\n"), std::string::npos) << shown.out;
    std::ifstream original(stub("02-vance.pdf"), std::ios::binary), written(pdf, std::ios::binary);
    std::ostringstream a, b;
    a << original.rdbuf();
    b << written.rdbuf();
    EXPECT_EQ(a.str(), b.str());
    EXPECT_EQ(run({"stub", "show", "Teodor Vance", "--week", week, "--pdf", pdf}).status, 1);  // never over a file

    const auto asked = run({"stub", "remove", "Teodor Vance", "--week", week});
    EXPECT_EQ(asked.status, 1);
    EXPECT_EQ(asked.err, "Remove Confirmed Pay Stub?\nThis removes Actual Pay authority for this crew member and Payroll Week. Expected Payroll is "
                         "unchanged.\nNothing was changed; run the command again with --yes to confirm.\n");
    EXPECT_EQ(confirmedList().size(), 1u);
    ASSERT_EQ(run({"stub", "remove", "Teodor Vance", "--week", week, "--yes"}).status, 0);
    EXPECT_TRUE(confirmedList().empty());
    EXPECT_EQ(run({"stub", "show", "Teodor Vance", "--week", week}).err, "Teodor Vance has no confirmed pay stub for this Payroll Week.\n");
}

TEST_F(PayStubCommands, RefuseWhatCannotBeImported) {
    const auto empty = folder.path() / "empty";
    std::filesystem::create_directories(empty);
    EXPECT_EQ(run({"stub", "import", empty.string(), "--week", week}).err, "No PDF files were found in the selected folder.\n");
    EXPECT_EQ(run({"stub", "import", stub("01-quint.pdf"), "--week", "2027-01-04"}).err,
              "There is no Payroll Week with a DTS or activity on 2027-01-04.\n");
    ASSERT_EQ(run({"production", "create", "Empty Show"}).status, 0);
    ASSERT_EQ(run({"dts", "create", week}).status, 0);
    EXPECT_EQ(run({"stub", "import", stub("01-quint.pdf"), "--week", week}).err, "Add Production crew before importing pay stubs.\n");
}

TEST_F(PayStubCommands, EditAConfirmedStubKeepingItsIdentity) {
    ASSERT_EQ(run({"stub", "confirm", stub("01-quint.pdf"), "--week", week}).status, 0);
    const Json before = confirmedList()[0];
    const auto refused = run({"stub", "edit", "Marisol Quint", "--week", week, "--gross", "3002.01"});
    EXPECT_EQ(refused.err, "Review the remaining pay-stub items before confirming:\n- Gross does not match the sum of earning amounts.\n");
    const auto edited = run({"stub", "edit", "Marisol Quint", "--week", week, "--line", "3=MEAL PENALTY,,,25.01", "--gross", "3002.01"});
    ASSERT_EQ(edited.status, 0) << edited.err;
    EXPECT_NE(edited.out.find("  3. MEAL PENALTY  25.01 (corrected)\n"), std::string::npos) << edited.out;
    Json after = confirmedList()[0];
    EXPECT_EQ(after["id"], before["id"]);
    EXPECT_EQ(after["gross"], "3002.01");
    EXPECT_EQ(after["confirmedAt"], before["confirmedAt"]);
    EXPECT_EQ(after["earningLines"][0]["amount"], before["earningLines"][0]["amount"]);  // the rest as confirmed

    ASSERT_EQ(run({"stub", "edit", "Marisol Quint", "--week", week, "--crew", "Teodor Vance"}).status, 0);
    EXPECT_EQ(confirmedList()[0]["crewMember"], "Teodor Vance");
    ASSERT_EQ(run({"stub", "confirm", stub("03-lindqvist.pdf"), "--week", week}).status, 0);
    EXPECT_EQ(run({"stub", "edit", "Teodor Vance", "--week", week, "--crew", "Priya Lindqvist"}).err,
              "A confirmed pay stub already exists for this crew member and Payroll Week.\n");
    {
        SQLite::Database db((folder.path() / "data" / "canonical-store" / "Tessel.store").string(), SQLite::OPEN_READWRITE);
        db.exec("UPDATE ConfirmedPayStubActualPay SET sourcePDFData = x'00'");
    }
    EXPECT_EQ(run({"stub", "edit", "Teodor Vance", "--week", week, "--gross", "1"}).err,
              "The pay stub could not be opened.\nThe original pay-stub PDF is invalid.\n");
}

// A confirmed stub pins its Payroll Week: a new start day applies to new weeks only.
TEST_F(PayStubCommands, AConfirmedStubPinsItsWeek) {
    ASSERT_EQ(run({"stub", "confirm", stub("01-quint.pdf"), "--week", week}).status, 0);
    ASSERT_EQ(run({"week", "start-weekday", "1"}).status, 0);
    const auto rebuild = run({"week", "rebuild"});
    EXPECT_EQ(rebuild.status, 1);
    EXPECT_EQ(rebuild.err, "Payroll Weeks cannot be rebuilt because this would change a period with confirmed Actual Pay. Confirmed pay stubs "
                           "have not been moved or changed.\n");
    const auto list = confirmedList();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0]["payrollWeekStart"], week);
}

// A stored stub changed behind Tessel's back is reported by store info, one sentence per finding.
TEST_F(PayStubCommands, StoreInfoReportsStubsChangedOutsideTessel) {
    ASSERT_EQ(run({"stub", "confirm", stub("02-vance.pdf"), "--week", week}).status, 0);
    {
        SQLite::Database db((folder.path() / "data" / "canonical-store" / "Tessel.store").string(), SQLite::OPEN_READWRITE);
        db.exec("UPDATE ConfirmedPayStubActualPay SET gross = 'lots', importedAt = '2099-01-01T00:00:00Z', sourcePDFData = x'00'");
        db.exec("DELETE FROM CrewMember WHERE displayName = 'Teodor Vance'");
    }
    const auto info = run({"--json", "store", "info"});
    ASSERT_EQ(info.status, 0) << info.err;
    const Json answer = info.json();
    std::vector<std::string> findings;
    for (const auto& finding : answer["dataIntegrity"]) findings.push_back(finding);
    EXPECT_EQ(findings, (std::vector<std::string>{"A confirmed pay stub references missing crew.", "A confirmed pay stub source PDF is invalid.",
                                                  "A confirmed pay stub gross is invalid.", "A confirmed pay stub timestamp sequence is invalid."}));
}

}  // namespace
}  // namespace tessel
