#include <gtest/gtest.h>

#include "App/actualpay/PayrollIssues.hpp"

// Expected pay beside confirmed pay, without a store: the status of a difference, the printed labels'
// concepts, the preconditions, line pairing and the observations that become payroll issues.
namespace tessel {
namespace {

using Status = PayComparisonLineStatus;

struct DifferenceCase {
    const char *difference, *tolerance;
    Status status;
};

class DifferenceStatus : public ::testing::TestWithParam<DifferenceCase> {};

TEST_P(DifferenceStatus, FollowsZeroThenToleranceThenSign) {
    const auto& c = GetParam();
    EXPECT_EQ(statusOfDifference(Decimal(c.difference), Decimal(c.tolerance)), c.status);
}

INSTANTIATE_TEST_SUITE_P(
    Differences, DifferenceStatus,
    ::testing::Values(DifferenceCase{"0.00", "0.00", Status::matches}, DifferenceCase{"0.01", "0.00", Status::overpaid},
                      DifferenceCase{"-0.01", "0.00", Status::underpaid}, DifferenceCase{"0.01", "0.01", Status::withinTolerance},
                      DifferenceCase{"-0.01", "0.01", Status::withinTolerance}, DifferenceCase{"0.02", "0.01", Status::overpaid},
                      DifferenceCase{"-67.50", "0.01", Status::underpaid}, DifferenceCase{"0", "-1", Status::matches},
                      DifferenceCase{"0.01", "-1", Status::overpaid}));

struct LabelCase {
    const char* printed;
    std::optional<PayComparisonConcept> concept_;
};

class PrintedLabels : public ::testing::TestWithParam<LabelCase> {};

TEST_P(PrintedLabels, MapToTheirConceptInTheReadersNormalForm) { EXPECT_EQ(conceptOfPrintedLabel(GetParam().printed), GetParam().concept_); }

using C = PayComparisonConcept;
INSTANTIATE_TEST_SUITE_P(
    EP, PrintedLabels,
    ::testing::Values(LabelCase{"REGULAR", C::straight}, LabelCase{"Straight Time", C::straight}, LabelCase{"ST", C::straight},
                      LabelCase{"OT 1.5X", C::overtime}, LabelCase{"OVERTIME", C::overtime}, LabelCase{"DOUBLE TIME", C::doubleTime},
                      LabelCase{"DT", C::doubleTime}, LabelCase{"  meal   pen ", C::meal}, LabelCase{"MEAL PENALTY", C::meal},
                      LabelCase{"CELL PHONE", C::cellPhone}, LabelCase{"BOX RENTAL", C::boxRental}, LabelCase{"KIT RENTAL", C::boxRental},
                      LabelCase{"Box / Kit Rental", C::boxRental}, LabelCase{"VACATION", C::vacation}, LabelCase{"HOLIDAY", C::holiday},
                      LabelCase{"MILEAGE", C::mileage}, LabelCase{"BONUS", std::nullopt}, LabelCase{"FICA", std::nullopt}));

// A week of expected pay: each category with its concept (none for a per diem) and amount.
WeeklyCrewPayrollReview weekOf(const Uuid& crew, std::initializer_list<std::tuple<std::optional<C>, const char*, const char*, const char*>> lines) {
    WeeklyCrewPayrollReview review{crew};
    Money gross = Money::zero(CurrencyCode("USD"));
    for (const auto& [concept_, rule, title, amount] : lines) {
        PayrollReviewCategory category{concept_, RuleID(rule), title, RateMultiplier::one()};
        category.compensation = Money(Decimal(amount), CurrencyCode("USD"));
        gross = gross + *category.compensation;
        review.categories.push_back(std::move(category));
    }
    review.estimatedGross = gross;
    return review;
}

ConfirmedPayStubActualPay stubOf(const Uuid& crew, const Uuid& week, const char* gross,
                                 std::initializer_list<std::pair<const char*, const char*>> lines) {
    ConfirmedPayStubActualPay stub{Uuid::generate(), Uuid::generate(), crew, week, CalendarDate(std::chrono::year(2026) / 11 / 2),
                                   CalendarDate(std::chrono::year(2026) / 11 / 8), "DANA RIVERA", std::nullopt, std::nullopt, "GAFFER",
                                   std::nullopt, Decimal(gross), "", "stub.pdf", Instant{}, Instant{}, Instant{}, {}};
    for (const auto& [label, amount] : lines) stub.lines.push_back({Uuid::generate(), stub.id, label, std::nullopt, std::nullopt, Decimal(amount), 0});
    return stub;
}

struct Week {
    Uuid crew = Uuid::generate(), week = Uuid::generate();
    WeeklyCrewPayrollReview review = weekOf(crew, {{C::straight, "band.st", "Straight Time", "1800.00"},
                                                  {C::overtime, "band.ot", "Time and a Half", "337.50"},
                                                  {C::boxRental, "engagement.box-rental", "Box / Kit Rental", "35.00"},
                                                  {std::nullopt, "production.provision.perDiem", "Per Diem", "40.00"}});
    CrewPayComparison compared(const ConfirmedPayStubActualPay& stub, PayComparisonProfile profile = PayComparisonProfile::ep,
                               const char* currency = "USD", const char* tolerance = "0.01") {
        return compare(crew, week, "Dana Rivera", &review, {&stub}, {profile, Decimal(tolerance)}, currency);
    }
};

TEST(PayComparison, PairsLinesByConceptAndKeepsUnmappedLinesApart) {
    Week w;
    const auto stub = w.compared(stubOf(w.crew, w.week, "2197.50", {{"REGULAR", "1800.00"}, {"OT 1.5X", "270.00"}, {"KIT RENTAL", "35.00"},
                                                                    {"BONUS", "50.00"}, {"RETRO", "42.50"}}));
    EXPECT_TRUE(stub.comparable);
    EXPECT_EQ(stub.grossDifference, Decimal("-15.00"));  // 2197.50 − 2212.50
    EXPECT_EQ(stub.grossStatus, Status::underpaid);
    ASSERT_EQ(stub.lines.size(), 4u);
    EXPECT_EQ(stub.lines[0].title, "Straight Time");
    EXPECT_EQ(stub.lines[0].status, Status::matches);
    EXPECT_EQ(stub.lines[1].status, Status::underpaid);
    EXPECT_EQ(stub.lines[1].difference, Decimal("-67.50"));
    EXPECT_EQ(stub.lines[2].issueCategoryKey, "expected:box");  // box rental's key, never a semantic one
    EXPECT_EQ(stub.lines[2].status, Status::matches);
    EXPECT_EQ(stub.lines[3].title, "Per Diem");
    EXPECT_EQ(stub.lines[3].status, Status::expectedOnly);
    EXPECT_EQ(stub.lines[3].issueCategoryKey, "expected:production.provision.perDiem");
    ASSERT_EQ(stub.unmappedActual.size(), 2u);
    EXPECT_EQ(stub.outcome, PayComparisonOutcome::discrepancy);

    // Two unmapped printed lines are two issues, told apart by their line.
    const auto observed = payroll_issues::observations(stub);
    ASSERT_EQ(observed.size(), 4u);  // overtime, per diem, two unmapped lines
    EXPECT_EQ(observed[0].categoryKey, "semantic:overtime");
    EXPECT_EQ(observed[0].nature, "Underpaid");
    const Uuid production = Uuid::generate();
    EXPECT_NE(payroll_issues::identityKey(production, w.crew, w.week, observed[2].categoryKey, observed[2].actualLineID),
              payroll_issues::identityKey(production, w.crew, w.week, observed[3].categoryKey, observed[3].actualLineID));
}

TEST(PayComparison, KeepsTheExactDifferenceOfARoundingMatch) {
    Week w;
    const auto stub = w.compared(stubOf(w.crew, w.week, "2212.51", {{"REGULAR", "1800.01"}, {"OVERTIME", "337.50"}, {"BOX RENTAL", "35.00"},
                                                                    {"PER DIEM", "40.00"}}));
    EXPECT_EQ(stub.lines[0].status, Status::withinTolerance);
    EXPECT_EQ(stub.lines[0].difference, Decimal("0.01"));
    EXPECT_EQ(stub.grossStatus, Status::withinTolerance);
    // The per diem has no EP concept: its printed line is unmapped, and the expected one stands alone.
    EXPECT_EQ(stub.unmappedActual.size(), 1u);
    const auto exact = w.compared(stubOf(w.crew, w.week, "2212.51", {{"REGULAR", "1800.01"}}), PayComparisonProfile::ep, "USD", "0.00");
    EXPECT_EQ(exact.lines[0].status, Status::overpaid);
}

TEST(PayComparison, SaysWhyItCannotCompare) {
    Week w;
    const auto stub = stubOf(w.crew, w.week, "2212.50", {{"REGULAR", "1800.00"}});
    const auto euros = w.compared(stub, PayComparisonProfile::ep, "EUR");
    EXPECT_EQ(euros.issues, std::vector<std::string>{"The EP earnings profile requires USD."});
    EXPECT_FALSE(euros.reconciliationAvailable);
    EXPECT_TRUE(euros.lines.empty());
    EXPECT_EQ(euros.outcome, PayComparisonOutcome::unavailable);

    const auto grossOnly = w.compared(stub, PayComparisonProfile::grossOnly);
    EXPECT_EQ(grossOnly.grossStatus, Status::matches);
    EXPECT_TRUE(grossOnly.lines.empty());
    EXPECT_EQ(grossOnly.outcome, PayComparisonOutcome::unavailable);  // no line reconciliation

    w.review.estimatedGrossIsPartial = true;
    const auto partial = w.compared(stub);
    EXPECT_EQ(partial.issues, std::vector<std::string>{"Expected Payroll is incomplete; resolve its source/rate issues first."});
    EXPECT_FALSE(partial.grossDifference);
    for (const auto& line : partial.lines) EXPECT_EQ(line.status, Status::review) << line.title;

    const auto none = compare(w.crew, w.week, "Dana Rivera", nullptr, {&stub, &stub}, {}, "USD");
    EXPECT_EQ(none.issues, (std::vector<std::string>{"Expected Payroll is unavailable for this crew identity/week.",
                                                     "Multiple confirmed stubs exist for this crew/week; comparison is unavailable."}));
}

TEST(PayComparison, FlagsAPrintedPeriodOtherThanTheWeekButStillCompares) {
    Week w;
    auto stub = stubOf(w.crew, w.week, "2212.50", {{"REGULAR", "1800.00"}});
    stub.printedPayPeriodStart = CalendarDate(std::chrono::year(2026) / 11 / 1);
    const auto flagged = w.compared(stub);
    EXPECT_EQ(flagged.issues, std::vector<std::string>{"The confirmed stub's printed period differs from this Payroll Week."});
    EXPECT_TRUE(flagged.comparable);
    EXPECT_EQ(flagged.grossStatus, Status::matches);
}

TEST(PayrollIssueFingerprint, ChangesWithAnyValueAndOnlyThen) {
    PayrollIssueObservation o{"semantic:overtime", std::nullopt, "Overtime", "Underpaid", Decimal("337.50"), Decimal("270.00"), Decimal("-67.50"), "USD"};
    const auto print = payroll_issues::fingerprint(o);
    EXPECT_EQ(payroll_issues::fingerprint(o), print);
    auto cent = o;
    cent.difference = Decimal("-67.49");
    EXPECT_NE(payroll_issues::fingerprint(cent), print);
    auto nature = o;
    nature.nature = "Overpaid";
    EXPECT_NE(payroll_issues::fingerprint(nature), print);
}

}  // namespace
}  // namespace tessel
