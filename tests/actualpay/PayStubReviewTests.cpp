#include <gtest/gtest.h>

#include "App/actualpay/PayStubImport.hpp"

namespace tessel {
namespace {

using namespace std::chrono;

const Uuid dana = Uuid::generate(), danny = Uuid::generate(), lee = Uuid::generate(), lee2 = Uuid::generate();

std::vector<PayStubCrewOption> crew() {
    return {{dana, "Dana Rivera", true}, {danny, "Danny Rivera", false}, {lee, "Sam Lee", false}, {lee2, "Sam Lee", false}};
}

struct MatchCase {
    const char* name;
    const char* printed;
    std::optional<Uuid> proposed;
    std::optional<std::string_view> reason;
};

class CrewMatches : public ::testing::TestWithParam<MatchCase> {};

TEST_P(CrewMatches, ProposeOnlyWhatTheNameSettles) {
    const auto match = matchCrew(GetParam().printed, crew());
    EXPECT_EQ(match.proposedCrewMemberID, GetParam().proposed);
    EXPECT_EQ(match.reviewReason, GetParam().reason);
}

namespace w = pay_stub_review_words;
INSTANTIATE_TEST_SUITE_P(
    PrintedNames, CrewMatches,
    ::testing::Values(MatchCase{"equalNormalised", "DANA  RIVERA", dana, std::nullopt},
                      MatchCase{"middleInitial", "DANA M. RIVERA", dana, std::nullopt},
                      MatchCase{"initialFirstName", "DANNY J RIVERA", danny, std::nullopt},
                      MatchCase{"initialMatchesBoth", "D RIVERA", std::nullopt, w::notUnambiguous},
                      MatchCase{"sameNameTwice", "SAM LEE", std::nullopt, w::sameName},
                      MatchCase{"surnameFirst", "RIVERA DANA", std::nullopt, w::chooseCrew},
                      MatchCase{"oneWord", "RIVERA", std::nullopt, w::chooseCrew},
                      MatchCase{"nobody", "CORA BLACKWOOD", std::nullopt, w::chooseCrew},
                      MatchCase{"empty", "", std::nullopt, w::chooseCrew}),
    [](const auto& info) { return std::string(info.param.name); });

EPInterpretedDecimal number(const char* text) { return {Decimal::parse(text), {}, std::nullopt}; }

// A stub read without doubt: Dana's week of 2026-11-02 to 2026-11-08, two lines adding up to the gross.
EPPayStubInterpretation stub(const char* gross = "100.00", const char* second = "40.00") {
    EPPayStubInterpretation s;
    s.printedEmployeeName = {std::string("DANA M RIVERA"), {}, std::nullopt};
    s.printedOccupation = {std::string("KEY GRIP"), {}, std::nullopt};
    s.payPeriodStart = {CalendarDate(year(2026) / 11 / 2), {}, std::nullopt};
    s.payPeriodEnd = {CalendarDate(year(2026) / 11 / 8), {}, std::nullopt};
    s.earningLines = {{"l0", {std::string("REGULAR"), {}, std::nullopt}, number("8"), number("7.50"), number("60.00"), {}, 0},
                      {"l1", {std::string("BOX RENTAL"), {}, std::nullopt}, {}, {}, number(second), {}, 1}};
    s.gross = number(gross);
    return s;
}

const PayStubWeek week{Uuid::generate(), Uuid::generate(), CalendarDate(year(2026) / 11 / 2), CalendarDate(year(2026) / 11 / 8)};

PayStubReviewSession review(const EPPayStubInterpretation& s) { return startReview(s, week, crew(), "dana.pdf", "%PDF", Instant{}); }

PayStubBatchStatus statusOf(const PayStubReviewSession& r, std::set<Uuid> existing = {}) {
    const PayStubBatchSession batch{week, crew(), {}, std::move(existing), false, 1, std::nullopt};
    return statusOf(PayStubBatchCandidate{"c", "dana.pdf", r, std::nullopt, false, false}, batch);
}

TEST(PayStubReview, AStubReadWithoutDoubtIsReadyAndConfirmsAsPrinted) {
    const auto r = review(stub());
    EXPECT_EQ(r.selectedCrewMemberID, dana);
    EXPECT_EQ(statusOf(r), PayStubBatchStatus::ready);
    EXPECT_EQ(statusOf(r, {dana}), PayStubBatchStatus::existing);
    const auto record = confirmedRecord(r, Instant(sys_days(year(2026) / 11 / 10)));
    EXPECT_EQ(record.id, r.recordID);
    EXPECT_EQ(record.crewMemberID, dana);
    EXPECT_EQ(record.gross.toString(), "100.00");
    ASSERT_EQ(record.lines.size(), 2u);
    EXPECT_EQ(record.lines[1].printedLabel, "BOX RENTAL");
    EXPECT_FALSE(record.lines[1].hours.has_value());
    EXPECT_EQ(record.lines[1].displayOrder, 1);
    EXPECT_LE(record.importedAt, record.confirmedAt);
}

TEST(PayStubReview, GrossMustEqualTheSumOfItsLinesExactly) {
    auto r = review(stub("100.00", "39.99"));
    EXPECT_EQ(statusOf(r), PayStubBatchStatus::earnings);
    try {
        confirmedRecord(r, Instant{});
        FAIL() << "confirmed";
    } catch (const PayStubReviewError& error) {
        EXPECT_EQ(error.unresolved(), std::vector<std::string>{"Gross does not match the sum of earning amounts."});
        EXPECT_STREQ(error.what(), "Review the remaining pay-stub items before confirming:\n- Gross does not match the sum of earning amounts.");
    }
    correct(r.gross, "99.99");
    EXPECT_TRUE(unresolvedItems(r).empty());
    EXPECT_TRUE(r.gross.wasUserCorrected);
}

TEST(PayStubReview, APeriodADayOffWaitsForItsAssociation) {
    auto s = stub();
    s.payPeriodStart.value = CalendarDate(year(2026) / 11 / 1);
    s.payPeriodEnd.value = CalendarDate(year(2026) / 11 / 7);
    auto r = review(s);
    EXPECT_EQ(statusOf(r), PayStubBatchStatus::wrongPeriod);
    EXPECT_EQ(unresolvedItems(r), std::vector<std::string>{"The printed pay period does not match the selected Tessel Payroll Week."});
    r.weekMismatchAcknowledged = true;
    EXPECT_EQ(statusOf(r), PayStubBatchStatus::ready);
    const auto record = confirmedRecord(r, Instant{});
    EXPECT_EQ(record.printedPayPeriodStart, CalendarDate(year(2026) / 11 / 1));  // as printed
    EXPECT_EQ(record.payrollWeekStart, week.start);
}

TEST(PayStubReview, ListsEverythingLeftBeforeConfirming) {
    auto s = stub();
    s.printedEmployeeName.value = "CORA BLACKWOOD";
    s.payPeriodEnd.value.reset();
    s.earningLines[0].printedLabel.value.reset();
    s.earningLines[1].amount = {std::nullopt, {{PayStubTextSource::embeddedPDFText, "1,234", "1,234"}}, std::nullopt};
    s.gross.value.reset();
    s.gross.evidence.clear();
    auto r = review(s);
    EXPECT_EQ(statusOf(r), PayStubBatchStatus::noMatch);
    EXPECT_EQ(r.earningLines[1].amount.rawValue, "1,234");  // the ambiguous text stays for the person to settle
    EXPECT_EQ(unresolvedItems(r), (std::vector<std::string>{"Choose the correct Production crew member.", "Pay period end: A date is required.",
                                                            "Earning line 1: A printed earning label is required.",
                                                            "Earning line 2: An earning amount is invalid.", "Gross: A value is required."}));
    r.earningLines.clear();
    chooseCrewMember(r, lee);
    EXPECT_FALSE(r.crewReviewReason.has_value());
    EXPECT_EQ(unresolvedItems(r)[1], "At least one earning line is required.");
}

TEST(PayStubReview, AStartAfterTheEndIsNamed) {
    auto s = stub();
    s.payPeriodStart.value = CalendarDate(year(2026) / 11 / 9);
    EXPECT_EQ(periodProblems(review(s)), (std::vector<std::string>{"Printed Start must not follow Printed End.",
                                                                    "The printed pay period does not match the selected Tessel Payroll Week."}));
    s.payPeriodStart.value.reset();
    EXPECT_EQ(periodProblems(review(s)), std::vector<std::string>{"The pay-period dates are required."});
}

}  // namespace
}  // namespace tessel
