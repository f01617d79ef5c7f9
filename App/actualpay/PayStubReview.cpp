#include "PayStubReview.hpp"

#include <algorithm>
#include <sstream>

#include "App/actualpay/StubNumbers.hpp"
#include "App/actualpay/StubText.hpp"

namespace tessel {
namespace {

namespace words = pay_stub_review_words;

std::vector<std::string> wordsOf(std::string_view name) {
    std::vector<std::string> result;
    std::istringstream in{stub_text::normalized(name)};
    for (std::string word; in >> word;) {
        std::erase_if(word, [](char c) { return c == '.' || c == ','; });
        if (!word.empty()) result.push_back(word);
    }
    return result;
}

bool sameWord(const std::string& a, const std::string& b) {
    if (a.size() == 1 || b.size() == 1) return a.front() == b.front();  // an initial
    return a == b;
}

// The shorter name's words in the longer one, in order, first to first and last to last.
bool wordsMatch(const std::vector<std::string>& a, const std::vector<std::string>& b) {
    const auto& shorter = a.size() <= b.size() ? a : b;
    const auto& longer = a.size() <= b.size() ? b : a;
    if (shorter.size() < 2 || !sameWord(shorter.front(), longer.front()) || !sameWord(shorter.back(), longer.back())) return false;
    std::size_t at = 1;
    for (std::size_t i = 1; i + 1 < shorter.size(); ++i) {
        while (at + 1 < longer.size() && !sameWord(shorter[i], longer[at])) ++at;
        if (at + 1 >= longer.size()) return false;
        ++at;
    }
    return true;
}

PayStubReviewedText reviewedText(const EPInterpretedText& v) { return {v.value, v.evidence, v.reviewReason, false}; }
PayStubReviewedDate reviewedDate(const EPInterpretedDate& v) { return {v.value, v.evidence, v.reviewReason, false}; }

// A value that did not resolve keeps the text it was read from, so the person sees what to settle.
PayStubReviewedDecimal reviewedDecimal(const EPInterpretedDecimal& v, bool required) {
    std::string raw = v.value ? v.value->toString() : v.evidence.empty() ? std::string() : v.evidence.front().rawText;
    return {std::move(raw), v.evidence, v.reviewReason, false, required};
}

void checkDecimal(const PayStubReviewedDecimal& field, const std::string& name, std::vector<std::string>& items) {
    const bool blank = field.rawValue.find_first_not_of(' ') == std::string::npos;
    if (blank) {
        if (field.isRequired) items.push_back(name + ": " + std::string(words::valueRequired));
        return;
    }
    if (!field.value()) items.push_back(name + ": " + std::string(words::oneDecimal));
}

bool blank(const std::optional<std::string>& text) { return !text || text->find_first_not_of(' ') == std::string::npos; }

std::string lineName(const PayStubReviewedEarningLine& line) { return "Earning line " + std::to_string(line.displayOrder + 1); }

}  // namespace

PayStubCrewMatch matchCrew(std::string_view printedName, const std::vector<PayStubCrewOption>& crew) {
    const std::string printed = stub_text::normalized(printedName);
    if (printed.empty()) return {std::nullopt, std::string(words::chooseCrew)};
    std::vector<Uuid> equal;
    for (const auto& person : crew) {
        if (stub_text::normalized(person.displayName) == printed) equal.push_back(person.id);
    }
    if (equal.size() == 1) return {equal.front(), std::nullopt};
    if (equal.size() > 1) return {std::nullopt, std::string(words::sameName)};
    const auto printedWords = wordsOf(printed);
    if (printedWords.size() < 2) return {std::nullopt, std::string(words::chooseCrew)};
    std::vector<Uuid> candidates;
    for (const auto& person : crew) {
        if (wordsMatch(printedWords, wordsOf(person.displayName))) candidates.push_back(person.id);
    }
    if (candidates.size() == 1) return {candidates.front(), std::nullopt};
    return {std::nullopt, std::string(candidates.empty() ? words::chooseCrew : words::notUnambiguous)};
}

std::optional<Decimal> PayStubReviewedDecimal::value() const {
    if (rawValue.find_first_not_of(' ') == std::string::npos) return std::nullopt;
    return interpretStubNumber(rawValue).resolved();
}

PayStubReviewSession startReview(const EPPayStubInterpretation& stub, const PayStubWeek& week, std::vector<PayStubCrewOption> crew,
                                 std::string filename, std::string pdf, Instant importedAt) {
    PayStubReviewSession session{Uuid::generate(),
                                 week,
                                 std::move(pdf),
                                 std::move(filename),
                                 importedAt,
                                 {},
                                 reviewedText(stub.printedEmployeeName),
                                 reviewedDate(stub.payPeriodStart),
                                 reviewedDate(stub.payPeriodEnd),
                                 reviewedText(stub.printedOccupation),
                                 {},
                                 {},
                                 {},
                                 std::nullopt,
                                 std::nullopt,
                                 false,
                                 false,
                                 std::nullopt};
    for (const auto& line : stub.earningLines) {
        session.earningLines.push_back({line.id, reviewedText(line.printedLabel), reviewedDecimal(line.hours, false), reviewedDecimal(line.rate, false),
                                        reviewedDecimal(line.amount, true), line.arithmetic, line.displayOrder});
    }
    session.totalHours = reviewedDecimal(stub.totalHours, false);
    session.gross = reviewedDecimal(stub.gross, true);
    const auto match = matchCrew(session.printedEmployeeName.value.value_or(""), crew);
    session.selectedCrewMemberID = match.proposedCrewMemberID;
    session.crewReviewReason = match.reviewReason;
    session.crewOptions = std::move(crew);
    return session;
}

PayStubReviewSession reviewOfConfirmed(const ConfirmedPayStubActualPay& stub, std::vector<PayStubCrewOption> crew) {
    const auto text = [](const std::string& value) { return PayStubReviewedText{value, {}, std::nullopt, false}; };
    const auto date = [](const std::optional<CalendarDate>& value) { return PayStubReviewedDate{value, {}, std::nullopt, false}; };
    const auto number = [](const std::optional<Decimal>& value, bool required) {
        return PayStubReviewedDecimal{value ? value->toString() : std::string(), {}, std::nullopt, false, required};
    };
    PayStubReviewSession session{stub.id,
                                 {stub.productionID, stub.payrollWeekID, stub.payrollWeekStart, stub.payrollWeekEnd},
                                 stub.sourcePDFData,
                                 stub.sourceFilename,
                                 stub.importedAt,
                                 std::move(crew),
                                 text(stub.printedEmployeeName),
                                 date(stub.printedPayPeriodStart),
                                 date(stub.printedPayPeriodEnd),
                                 text(stub.printedOccupation),
                                 {},
                                 number(stub.totalHours, false),
                                 number(stub.gross, true),
                                 stub.crewMemberID,
                                 std::nullopt,
                                 false,
                                 true,
                                 stub.confirmedAt};
    session.weekMismatchAcknowledged = !periodMatchesWeek(session);
    for (const auto& line : stub.lines) {
        session.earningLines.push_back({line.id.text(), text(line.printedLabel), number(line.hours, false), number(line.rate, false),
                                        number(line.amount, true), {}, static_cast<int>(line.displayOrder)});
    }
    return session;
}

void chooseCrewMember(PayStubReviewSession& session, const Uuid& crewMemberID) {
    session.selectedCrewMemberID = crewMemberID;
    session.crewReviewReason.reset();
}

void correct(PayStubReviewedText& field, std::string value) {
    field.value = std::move(value);
    field.reviewReason.reset();
    field.wasUserCorrected = true;
}

void correct(PayStubReviewedDate& field, CalendarDate value) {
    field.value = value;
    field.reviewReason.reset();
    field.wasUserCorrected = true;
}

void correct(PayStubReviewedDecimal& field, std::string value) {
    field.rawValue = std::move(value);
    field.reviewReason.reset();
    field.wasUserCorrected = true;
}

bool periodMatchesWeek(const PayStubReviewSession& s) {
    return s.payPeriodStart.value == s.week.start && s.payPeriodEnd.value == s.week.end;
}

namespace {
void renumber(PayStubReviewSession& session) {
    int order = 0;
    for (auto& line : session.earningLines) line.displayOrder = order++;
}
}  // namespace

std::string choiceText(const PayStubCrewOption& option) { return option.displayName + (option.isDTSParticipant ? " \u00B7 DTS participant" : ""); }

PayStubReviewedEarningLine& addEarningLine(PayStubReviewSession& session) {
    PayStubReviewedEarningLine line{"added-" + std::to_string(session.earningLines.size()), {}, {}, {}, {}, {}, 0};
    line.amount.isRequired = true;
    session.earningLines.push_back(std::move(line));
    renumber(session);
    return session.earningLines.back();
}

void removeEarningLine(PayStubReviewSession& session, std::size_t index) {
    if (index >= session.earningLines.size()) return;
    session.earningLines.erase(session.earningLines.begin() + static_cast<std::ptrdiff_t>(index));
    renumber(session);
}

std::vector<std::string> periodProblems(const PayStubReviewSession& s) {
    if (!s.payPeriodStart.value || !s.payPeriodEnd.value) return {std::string(words::periodRequired)};
    std::vector<std::string> problems;
    if (*s.payPeriodStart.value > *s.payPeriodEnd.value) problems.emplace_back(words::startFollowsEnd);
    if (!periodMatchesWeek(s) && !s.weekMismatchAcknowledged) problems.emplace_back(words::periodMismatch);
    return problems;
}

std::vector<std::string> valueReviewReasons(const PayStubReviewSession& r) {
    std::vector<std::string> reasons;
    const auto add = [&](const std::optional<std::string>& reason, const std::string& field) {
        if (!reason) return;
        auto line = field + ": " + *reason;
        if (std::find(reasons.begin(), reasons.end(), line) == reasons.end()) reasons.push_back(std::move(line));
    };
    add(r.printedEmployeeName.reviewReason, "Printed employee name");
    add(r.printedOccupation.reviewReason, "Printed occupation");
    add(r.payPeriodStart.reviewReason, "Pay period start");
    add(r.payPeriodEnd.reviewReason, "Pay period end");
    for (const auto& line : r.earningLines) {
        const std::string name = lineName(line);
        add(line.printedLabel.reviewReason, name);
        add(line.hours.reviewReason, name + " hours");
        add(line.rate.reviewReason, name + " rate");
        add(line.amount.reviewReason, name + " amount");
    }
    add(r.totalHours.reviewReason, "Total hours");
    add(r.gross.reviewReason, "Gross");
    return reasons;
}

std::vector<std::string> unresolvedItems(const PayStubReviewSession& s) {
    std::vector<std::string> items;
    if (!s.selectedCrewMemberID) items.emplace_back(words::chooseCorrectCrew);
    if (blank(s.printedEmployeeName.value)) items.push_back("Printed employee name: " + std::string(words::valueRequired));
    if (!s.payPeriodStart.value) items.push_back("Pay period start: " + std::string(words::dateRequired));
    if (!s.payPeriodEnd.value) items.push_back("Pay period end: " + std::string(words::dateRequired));
    if (s.payPeriodStart.value && s.payPeriodEnd.value) {
        for (auto& problem : periodProblems(s)) items.push_back(std::move(problem));
    }
    if (s.earningLines.empty()) items.emplace_back(words::oneLineRequired);
    for (const auto& line : s.earningLines) {
        if (blank(line.printedLabel.value)) items.push_back(lineName(line) + ": " + std::string(words::labelRequired));
        checkDecimal(line.hours, lineName(line) + " hours", items);
        checkDecimal(line.rate, lineName(line) + " rate", items);
        if (!line.amount.value()) items.push_back(lineName(line) + ": " + std::string(words::amountInvalid));
    }
    checkDecimal(s.totalHours, "Total hours", items);
    checkDecimal(s.gross, "Gross", items);
    // Exactly, with no tolerance: a stub whose lines do not add up to its gross is not yet understood.
    if (const auto gross = s.gross.value(); gross && !s.earningLines.empty()) {
        Decimal sum(0);
        bool complete = true;
        for (const auto& line : s.earningLines) {
            const auto amount = line.amount.value();
            complete = complete && amount.has_value();
            if (amount) sum = sum + *amount;
        }
        if (complete && !(sum == *gross)) items.emplace_back(words::grossNotSum);
    }
    return items;
}

PayStubReviewError::PayStubReviewError(std::vector<std::string> unresolved)
    : std::runtime_error([&] {
          std::string text(words::remainingItems);
          for (const auto& item : unresolved) text += "\n- " + item;
          return text;
      }()),
      unresolved_(std::move(unresolved)) {}

ConfirmedPayStubActualPay confirmedRecord(const PayStubReviewSession& s, Instant now) {
    if (auto items = unresolvedItems(s); !items.empty()) throw PayStubReviewError(std::move(items));
    ConfirmedPayStubActualPay record{s.recordID,
                                     s.week.productionID,
                                     *s.selectedCrewMemberID,
                                     s.week.payrollWeekID,
                                     s.week.start,
                                     s.week.end,
                                     *s.printedEmployeeName.value,
                                     s.payPeriodStart.value,
                                     s.payPeriodEnd.value,
                                     s.printedOccupation.value.value_or(""),
                                     s.totalHours.value(),
                                     *s.gross.value(),
                                     s.sourcePDFData,
                                     s.sourceFilename,
                                     std::min(s.importedAt, now),
                                     std::min(s.confirmedAt.value_or(now), now),
                                     now,
                                     {}};
    std::int64_t order = 0;
    for (const auto& line : s.earningLines) {
        record.lines.push_back({Uuid::generate(), record.id, *line.printedLabel.value, line.hours.value(), line.rate.value(), *line.amount.value(), order++});
    }
    return record;
}

}  // namespace tessel
