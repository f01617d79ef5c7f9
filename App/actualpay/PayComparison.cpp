#include "PayComparison.hpp"

#include <algorithm>
#include <map>
#include <utility>

#include "App/actualpay/StubText.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel {
namespace {

using Concept = PayComparisonConcept;
using Status = PayComparisonLineStatus;

constexpr Concept conceptOrder[] = {Concept::straight, Concept::overtime, Concept::doubleTime, Concept::meal,   Concept::mileage,
                                    Concept::cellPhone, Concept::vacation, Concept::boxRental, Concept::holiday};

// The EP earning labels beyond the concept titles, as payroll companies print them. One table: adding a
// label a payroll company prints is one line here.
const std::map<std::string, Concept>& printedLabels() {
    static const std::map<std::string, Concept> labels = [] {
        std::map<std::string, Concept> table;
        const std::pair<const char*, Concept> entries[] = {
            {"REGULAR", Concept::straight},        {"REG", Concept::straight},          {"STRAIGHT TIME", Concept::straight},
            {"STRAIGHT", Concept::straight},       {"ST", Concept::straight},           {"REGULAR HOURS", Concept::straight},
            {"OVERTIME", Concept::overtime},       {"OT", Concept::overtime},           {"OT 1.5X", Concept::overtime},
            {"OT 1.5", Concept::overtime},         {"OVERTIME 1.5X", Concept::overtime}, {"TIME AND A HALF", Concept::overtime},
            {"DOUBLE TIME", Concept::doubleTime},  {"DOUBLETIME", Concept::doubleTime}, {"DT", Concept::doubleTime},
            {"OT 2X", Concept::doubleTime},        {"OT 2.0X", Concept::doubleTime},    {"DOUBLE TIME 2X", Concept::doubleTime},
            {"MEAL PENALTY", Concept::meal},       {"MEAL PEN", Concept::meal},         {"MEAL PENALTIES", Concept::meal},
            {"MP", Concept::meal},                 {"MILEAGE", Concept::mileage},       {"MILEAGE ALLOWANCE", Concept::mileage},
            {"CELL PHONE", Concept::cellPhone},    {"CELL PHONE ALLOWANCE", Concept::cellPhone}, {"PHONE ALLOWANCE", Concept::cellPhone},
            {"VACATION", Concept::vacation},       {"VACATION PAY", Concept::vacation}, {"VAC", Concept::vacation},
            {"BOX RENTAL", Concept::boxRental},    {"KIT RENTAL", Concept::boxRental},  {"BOX / KIT RENTAL", Concept::boxRental},
            {"BOX/KIT RENTAL", Concept::boxRental}, {"EQUIPMENT RENTAL", Concept::boxRental}, {"HOLIDAY", Concept::holiday},
            {"HOLIDAY PAY", Concept::holiday},     {"HOL", Concept::holiday}};
        for (const auto& [text, concept_] : entries) table.emplace(stub_text::normalized(text), concept_);
        for (const Concept concept_ : conceptOrder) table.emplace(stub_text::normalized(title(concept_)), concept_);
        return table;
    }();
    return labels;
}

std::string categoryKeyOf(const std::optional<Concept>& concept_, const std::string& lineID) {
    if (!concept_) return "expected:" + lineID.substr(0, lineID.find('@'));
    // Box rental is keyed by its expected category, not its concept: issues recorded under that key keep it.
    if (*concept_ == Concept::boxRental) return "expected:box";
    return "semantic:" + std::string(toRawValue(*concept_));
}

// Hours as payroll writes them, with at least one decimal place ("10.0 h", "2.25 h").
std::string hoursWords(WorkDuration duration) {
    const std::string hours = duration.inHours().toString();
    return hours + (hours.find('.') == std::string::npos ? ".0" : "") + " h";
}

// Money with at least its two places: a rate of 52.00 × 1.5 reads 78.00, not 78.000.
std::string moneyWords(const Decimal& amount) {
    const Decimal cents = amount.withPlacesOf(Decimal("0.01"));
    return (cents.isNaN() ? amount : cents).toString();
}

// Each day's part of a category in words: "2026-11-03: 2.5 h × 67.50 (45.00 × 1.5) = 168.75 — Overtime";
// a flat amount (a meal penalty, an allowance) is the day and the amount.
std::vector<std::string> calculationDetails(const PayrollReviewCategory& category) {
    std::vector<std::string> details;
    const std::string multiplier = category.multiplier.value().toString();
    for (const auto& part : category.contributors) {
        std::string words = calendar_text::formatDate(part.calendarDate) + ":";
        const bool timed = part.paidDuration.seconds() > 0;
        if (timed) words += " " + hoursWords(part.paidDuration);
        if (timed && category.baseHourlyRate) {
            const Decimal rate = category.baseHourlyRate->amount() * category.multiplier.value();
            words += " \u00D7 " + moneyWords(rate) + " (" + category.baseHourlyRate->amount().toString() + " \u00D7 " + multiplier + ")";
        }
        if (part.compensation) words += (timed ? " = " : " ") + moneyWords(part.compensation->amount());
        if (part.guaranteedDuration.seconds() > 0) words += ", of which " + hoursWords(part.guaranteedDuration) + " guaranteed";
        details.push_back(words + " \u2014 " + category.label);
    }
    if (details.empty() && category.compensation) details.push_back(category.label + ": " + category.compensation->amount().toString());
    return details;
}

bool isBand(const PayrollReviewCategory& category) {
    return category.comparisonConcept == Concept::straight || category.comparisonConcept == Concept::overtime ||
           category.comparisonConcept == Concept::doubleTime;
}

bool periodDiffers(const ConfirmedPayStubActualPay& stub) {
    return (stub.printedPayPeriodStart && *stub.printedPayPeriodStart != stub.payrollWeekStart) ||
           (stub.printedPayPeriodEnd && *stub.printedPayPeriodEnd != stub.payrollWeekEnd);
}

// Expected lines grouped by concept in the concepts' order, each line without a concept on its own; the
// printed lines joined to their concept, the rest unmapped.
void pairLines(CrewPayComparison& comparison) {
    std::map<Concept, PayComparisonLine> byConcept;
    std::vector<PayComparisonLine> ownLines;
    for (const auto& line : comparison.expected->lines) {
        if (!line.concept_) {
            PayComparisonLine own{line.id, line.title, {line}, {}, comparison.tolerance};
            own.issueCategoryKey = line.issueCategoryKey;
            ownLines.push_back(std::move(own));
            continue;
        }
        auto& paired = byConcept[*line.concept_];
        paired.expected.push_back(line);
    }
    for (const auto& printed : comparison.actual->lines) {
        const auto concept_ = conceptOfPrintedLabel(printed.label);
        if (!concept_) {
            comparison.unmappedActual.push_back(printed);
            continue;
        }
        byConcept[*concept_].actual.push_back(printed);
    }
    for (const Concept concept_ : conceptOrder) {
        const auto found = byConcept.find(concept_);
        if (found == byConcept.end()) continue;
        PayComparisonLine line = std::move(found->second);
        line.id = std::string(toRawValue(concept_));
        line.title = std::string(title(concept_));
        line.tolerance = comparison.tolerance;
        line.issueCategoryKey = categoryKeyOf(concept_, line.expected.empty() ? line.id : line.expected.front().id);
        comparison.lines.push_back(std::move(line));
    }
    for (auto& line : ownLines) comparison.lines.push_back(std::move(line));
    for (auto& line : comparison.lines) {
        line.comparable = comparison.comparable;
        const auto expected = expectedAmount(line);
        if (line.expected.empty()) {
            line.status = Status::actualOnly;
            line.difference = actualAmount(line);
        } else if (!line.comparable || !expected) {
            line.status = Status::review;
        } else if (line.actual.empty()) {
            line.status = Status::expectedOnly;
            line.difference = -*expected;
        } else {
            line.difference = *actualAmount(line) - *expected;
            line.status = statusOfDifference(*line.difference, line.tolerance);
        }
    }
}

PayComparisonOutcome outcomeOf(const CrewPayComparison& comparison) {
    if (!comparison.reconciliationAvailable || !comparison.issues.empty() || !comparison.comparable || !comparison.grossStatus) {
        return PayComparisonOutcome::unavailable;
    }
    bool rounding = *comparison.grossStatus == Status::withinTolerance;
    bool discrepancy = *comparison.grossStatus == Status::underpaid || *comparison.grossStatus == Status::overpaid;
    for (const auto& line : comparison.lines) {
        discrepancy = discrepancy || (line.status != Status::matches && line.status != Status::withinTolerance);
        rounding = rounding || line.status == Status::withinTolerance;
    }
    discrepancy = discrepancy || !comparison.unmappedActual.empty();
    if (discrepancy) return PayComparisonOutcome::discrepancy;
    return rounding ? PayComparisonOutcome::roundingMatch : PayComparisonOutcome::exact;
}

}  // namespace

std::optional<Decimal> expectedAmount(const PayComparisonLine& line) {
    if (line.expected.empty()) return std::nullopt;
    Decimal total;
    for (const auto& expected : line.expected) {
        if (!expected.amount) return std::nullopt;
        total = total + *expected.amount;
    }
    return total;
}

std::optional<Decimal> actualAmount(const PayComparisonLine& line) {
    if (line.actual.empty()) return std::nullopt;
    Decimal total;
    for (const auto& actual : line.actual) total = total + actual.amount;
    return total;
}

std::string signedAmount(const std::optional<Decimal>& difference) {
    if (!difference) return "-";
    if (difference->isNegative()) return "\u2212" + (-*difference).toString();
    return (difference->isZero() ? "" : "+") + difference->toString();
}

std::string_view toRawValue(PayComparisonProfile profile) noexcept {
    switch (profile) {
        case PayComparisonProfile::unspecified: return "unspecified";
        case PayComparisonProfile::grossOnly: return "grossOnly";
        case PayComparisonProfile::ep: return "ep";
    }
    return {};
}

std::optional<PayComparisonProfile> payComparisonProfileFromRaw(std::string_view raw) noexcept {
    for (const auto profile : {PayComparisonProfile::unspecified, PayComparisonProfile::grossOnly, PayComparisonProfile::ep}) {
        if (toRawValue(profile) == raw) return profile;
    }
    return std::nullopt;
}

std::string_view label(PayComparisonProfile profile) noexcept {
    switch (profile) {
        case PayComparisonProfile::unspecified: return "Not configured \u2014 Gross only";
        case PayComparisonProfile::grossOnly: return "Gross only (Production currency)";
        case PayComparisonProfile::ep: return "EP earnings (USD)";
    }
    return {};
}

namespace pay_comparison_settings {

PayComparisonSettings read(ModelContext& context, const Uuid& productionID) {
    using store_schema::satelliteTable;
    PayComparisonSettings settings;
    const auto profile = satellite_repository::text(
        satellite_repository::find(context, satelliteTable("ProductionPayrollTerminology"), productionID), "profileCode");
    if (profile) settings.profile = payComparisonProfileFromRaw(*profile).value_or(PayComparisonProfile::unspecified);
    const auto tolerance = satellite_repository::text(
        satellite_repository::find(context, satelliteTable("ProductionPayComparisonSettings"), productionID), "roundingTolerance");
    if (tolerance) {
        if (const auto amount = Decimal::parse(*tolerance); amount && !amount->isNegative()) settings.tolerance = *amount;
    }
    return settings;
}

void setProfile(ModelContext& context, const Uuid& productionID, PayComparisonProfile profile) {
    satellite_repository::write(context, store_schema::satelliteTable("ProductionPayrollTerminology"), productionID,
                                {{"profileCode", std::string(toRawValue(profile))}});
}

Decimal validatedTolerance(const std::string& text) {
    const auto amount = Decimal::parse(text);
    if (!amount || amount->isNegative()) throw ModelValidationError(std::string(pay_comparison_words::invalidTolerance));
    return *amount;
}

void setTolerance(ModelContext& context, const Uuid& productionID, const Decimal& tolerance) {
    if (tolerance.isNaN() || tolerance.isNegative()) throw ModelValidationError(std::string(pay_comparison_words::invalidTolerance));
    satellite_repository::write(context, store_schema::satelliteTable("ProductionPayComparisonSettings"), productionID,
                                {{"roundingTolerance", tolerance.toString()}});
}

}  // namespace pay_comparison_settings

std::string_view title(PayComparisonConcept concept_) noexcept {
    switch (concept_) {
        case Concept::straight: return "Straight Time";
        case Concept::overtime: return "Overtime";
        case Concept::doubleTime: return "Double Time";
        case Concept::meal: return "Meal Penalty";
        case Concept::mileage: return "Mileage";
        case Concept::cellPhone: return "Cell Phone Allowance";
        case Concept::vacation: return "Vacation Pay";
        case Concept::boxRental: return "Box / Kit Rental";
        case Concept::holiday: return "Holiday Pay";
    }
    return {};
}

std::optional<PayComparisonConcept> conceptOfPrintedLabel(std::string_view printedLabel) {
    const auto found = printedLabels().find(stub_text::normalized(printedLabel));
    if (found == printedLabels().end()) return std::nullopt;
    return found->second;
}

std::string_view toRawValue(PayComparisonLineStatus status) noexcept {
    switch (status) {
        case Status::matches: return "matches";
        case Status::withinTolerance: return "withinTolerance";
        case Status::underpaid: return "underpaid";
        case Status::overpaid: return "overpaid";
        case Status::expectedOnly: return "expectedOnly";
        case Status::actualOnly: return "actualOnly";
        case Status::review: return "review";
    }
    return {};
}

std::string_view label(PayComparisonLineStatus status) noexcept {
    switch (status) {
        case Status::matches: return "Matches";
        case Status::withinTolerance: return "Matches within rounding tolerance";
        case Status::underpaid: return "Underpaid";
        case Status::overpaid: return "Overpaid";
        case Status::expectedOnly: return "Expected Only";
        case Status::actualOnly: return "Actual Only";
        case Status::review: return "Review";
    }
    return {};
}

PayComparisonLineStatus statusOfDifference(const Decimal& difference, const Decimal& tolerance) {
    if (difference.isZero()) return Status::matches;
    const Decimal bound = tolerance.isNegative() ? Decimal() : tolerance;
    const Decimal magnitude = difference.isNegative() ? -difference : difference;
    if (magnitude <= bound) return Status::withinTolerance;
    return difference.isNegative() ? Status::underpaid : Status::overpaid;
}

PayComparisonExpected expectedPay(const WeeklyCrewPayrollReview& review, const Uuid& weekID, CalculationWords words) {
    PayComparisonExpected expected{review.crewMemberID, weekID};
    if (review.estimatedGross) expected.gross = review.estimatedGross->amount();
    WorkDuration bandHours;
    for (const auto& category : review.categories) {
        PayComparisonExpectedLine line;
        line.id = category.ruleID.value() + "@" + std::string(category.rulesLocality == RulesLocality::local ? "local" : "distant");
        line.title = category.label;
        line.concept_ = category.comparisonConcept;
        if (category.compensation) line.amount = category.compensation->amount();
        if (category.paidDuration.seconds() > 0) line.hours = category.paidDuration.inHours();
        if (category.baseHourlyRate) line.rate = category.baseHourlyRate->amount() * category.multiplier.value();
        if (words == CalculationWords::include) line.calculationDetails = calculationDetails(category);
        line.issueCategoryKey = categoryKeyOf(line.concept_, line.id);
        if (isBand(category)) bandHours += category.paidDuration;
        expected.lines.push_back(std::move(line));
    }
    if (bandHours.seconds() > 0) expected.hours = bandHours.inHours();
    // A note that a position's terms fell back to the production's rules does not make the pay unknown.
    const bool sourcesResolved = std::all_of(review.issues.begin(), review.issues.end(),
                                             [](const PayrollReviewIssue& issue) { return issue.kind == PayrollReviewIssue::Kind::positionTerms; });
    expected.complete = expected.gross && !review.estimatedGrossIsPartial && sourcesResolved;
    return expected;
}

PayComparisonActual actualPay(const ConfirmedPayStubActualPay& stub) {
    PayComparisonActual actual{stub.crewMemberID, stub.payrollWeekID, stub.gross, stub.totalHours, {}};
    for (const auto& line : stub.lines) actual.lines.push_back({line.id, line.printedLabel, line.amount, line.hours, line.rate});
    return actual;
}

CrewPayComparison compare(const Uuid& crewID, const Uuid& weekID, const std::string& crewName, const WeeklyCrewPayrollReview* review,
                          const std::vector<const ConfirmedPayStubActualPay*>& stubs, const PayComparisonSettings& settings,
                          const std::string& currency, CalculationWords calculationWords) {
    namespace words = pay_comparison_words;
    CrewPayComparison comparison{crewID, weekID, crewName};
    comparison.tolerance = settings.tolerance;
    comparison.currency = currency;
    if (review) comparison.expected = expectedPay(*review, weekID, calculationWords);
    if (stubs.size() == 1) comparison.actual = actualPay(*stubs.front());
    if (!review) comparison.issues.emplace_back(words::noExpected);
    if (stubs.empty()) comparison.issues.emplace_back(words::noActual);
    if (stubs.size() > 1) comparison.issues.emplace_back(words::multipleStubs);
    if (comparison.expected && !comparison.expected->complete) comparison.issues.emplace_back(words::incompleteExpected);
    const bool epWithoutUSD = settings.profile == PayComparisonProfile::ep && currency != "USD";
    if (epWithoutUSD) comparison.issues.emplace_back(words::epNeedsUSD);
    const bool periodFlagged = stubs.size() == 1 && periodDiffers(*stubs.front());
    if (periodFlagged) comparison.issues.emplace_back(words::periodDiffers);
    // The printed period is flagged for review; it does not stop the comparison.
    comparison.comparable = comparison.issues.size() == (periodFlagged ? 1u : 0u);
    comparison.reconciliationAvailable = settings.profile == PayComparisonProfile::ep && !epWithoutUSD;
    if (comparison.comparable && comparison.expected->gross) {
        comparison.grossDifference = comparison.actual->gross - *comparison.expected->gross;
        comparison.grossStatus = statusOfDifference(*comparison.grossDifference, comparison.tolerance);
    }
    if (comparison.reconciliationAvailable && comparison.expected && comparison.actual) pairLines(comparison);
    comparison.outcome = outcomeOf(comparison);
    return comparison;
}

std::string_view dashboardLabel(PayComparisonOutcome outcome) noexcept {
    switch (outcome) {
        case PayComparisonOutcome::discrepancy: return "Needs Attention";
        case PayComparisonOutcome::unavailable: return "Unable to Compare";
        case PayComparisonOutcome::roundingMatch:
        case PayComparisonOutcome::exact: return "No Action Needed";
    }
    return {};
}

PayComparisonWeek compareWeek(ModelContext& context, ExpectedPayrollReview& review, const Production& production, const PayrollWeek& week,
                              CalculationWords words) {
    const CalendarDate start(std::chrono::floor<std::chrono::days>(week.startDate));
    PayComparisonWeek result{week, start, CalendarDate(std::chrono::sys_days(start) + std::chrono::days(6))};
    const auto settings = pay_comparison_settings::read(context, production.id);
    const auto stubs = confirmed_pay_stubs::forWeek(context, week.id);
    const auto reviews = review.weeklyForAll(week.id);
    for (const auto& member : crew_repository::crewMembers(context, production.id)) {
        const auto reviewed = std::find_if(reviews.begin(), reviews.end(), [&](const auto& r) { return r.crewMemberID == member.id; });
        std::vector<const ConfirmedPayStubActualPay*> own;
        for (const auto& stub : stubs) {
            if (stub.crewMemberID == member.id) own.push_back(&stub);
        }
        if (reviewed == reviews.end() && own.empty()) continue;
        ++result.peopleInWeek;
        if (own.empty()) {
            result.waiting.emplace_back(member.id, member.displayName);
            continue;
        }
        ++result.stubsConfirmed;
        auto comparison = compare(member.id, week.id, member.displayName, reviewed == reviews.end() ? nullptr : &*reviewed, own, settings,
                                  production.currencyCode, words);
        switch (comparison.outcome) {
            case PayComparisonOutcome::discrepancy: ++result.needsAttention; break;
            case PayComparisonOutcome::unavailable: ++result.unableToCompare; break;
            default: ++result.noActionNeeded; break;
        }
        result.comparisons.push_back(std::move(comparison));
    }
    return result;
}

}  // namespace tessel
