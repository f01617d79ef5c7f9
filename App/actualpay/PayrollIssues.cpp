#include "PayrollIssues.hpp"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"

namespace tessel {
namespace {

using State = PayrollIssueState;
namespace words = payroll_issue_words;

constexpr std::string_view issueColumns =
    "id, identityKey, productionID, crewID, weekID, categoryKey, actualLineID, title, nature, expectedAmount, actualAmount, "
    "differenceAmount, currency, fingerprint, stateRaw, note, createdAt, updatedAt, reportedAt, resolvedAt, resolutionReason";

PayrollIssue readIssue(SQLite::Statement& row) {
    using namespace columns;
    const auto at = [&](int index) { return row.getColumn(index); };
    return {uuid(at(0)),           text(at(1)),           uuid(at(2)),          uuid(at(3)),           uuid(at(4)),
            text(at(5)),           optionalUuid(at(6)),   text(at(7)),          text(at(8)),           optionalDecimal(at(9)),
            optionalDecimal(at(10)), optionalDecimal(at(11)), text(at(12)),     text(at(13)),          text(at(14)),
            text(at(15)),          instant(at(16)),       instant(at(17)),      optionalInstant(at(18)), optionalInstant(at(19)),
            optionalText(at(20))};
}

// Inserts the issue, or replaces the stored one of the same id.
void save(ModelContext& context, const PayrollIssue& issue) {
    auto& statement = context.prepare("INSERT OR REPLACE INTO PayrollIssue (" + std::string(issueColumns) +
                                      ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14, ?15, ?16, ?17, ?18, ?19, ?20, ?21)");
    using columns::bind;
    columns::bindAll(statement, issue.id, issue.identityKey, issue.productionID, issue.crewID, issue.weekID, issue.categoryKey, issue.actualLineID,
                     issue.title, issue.nature, issue.expectedAmount, issue.actualAmount, issue.differenceAmount, issue.currency,
                     issue.fingerprint, issue.stateRaw, issue.note, issue.createdAt, issue.updatedAt, issue.reportedAt, issue.resolvedAt,
                     issue.resolutionReason);
    statement.exec();
}

std::string amountText(const std::optional<Decimal>& amount) { return amount ? amount->toString() : std::string("-"); }

bool isMatch(PayComparisonLineStatus status) {
    return status == PayComparisonLineStatus::matches || status == PayComparisonLineStatus::withinTolerance;
}

// The new state of an existing issue whose observed values changed.
State afterChange(State state, const std::string& newNature) {
    if (state == State::needsAttention || state == State::reported) return state;
    if (state == State::noted && newNature == label(PayComparisonLineStatus::overpaid)) return State::noted;
    return State::needsAttention;
}

std::vector<PayrollWeek> weeksWithConfirmedPay(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT DISTINCT payrollWeekID FROM ConfirmedPayStubActualPay WHERE productionID = ?1");
    columns::bind(statement, 1, productionID);
    std::set<Uuid> confirmed;
    while (statement.executeStep()) confirmed.insert(columns::uuid(statement.getColumn(0)));
    std::vector<PayrollWeek> weeks;
    for (const auto& week : payroll_week_repository::weeks(context, productionID)) {
        if (confirmed.contains(week.id)) weeks.push_back(week);
    }
    return weeks;
}

CalendarDate startOf(const PayrollWeek& week) { return CalendarDate(std::chrono::floor<std::chrono::days>(week.startDate)); }

}  // namespace

std::string_view toRawValue(PayrollIssueState state) noexcept {
    switch (state) {
        case State::needsAttention: return "needsAttention";
        case State::reported: return "reported";
        case State::noAction: return "noAction";
        case State::resolved: return "resolved";
        case State::noted: return "noted";
    }
    return {};
}

std::optional<PayrollIssueState> payrollIssueStateFromRaw(std::string_view raw) noexcept {
    for (const auto state : {State::needsAttention, State::reported, State::noAction, State::resolved, State::noted}) {
        if (toRawValue(state) == raw) return state;
    }
    return std::nullopt;
}

std::string_view label(PayrollIssueState state) noexcept {
    switch (state) {
        case State::needsAttention: return "Needs Attention";
        case State::reported: return "Reported to Payroll";
        case State::noAction: return "No Action Needed";
        case State::resolved: return "Resolved";
        case State::noted: return "Noted";
    }
    return {};
}

bool PayrollIssue::open() const noexcept {
    const auto current = state();
    return current == State::needsAttention || current == State::reported;
}

namespace payroll_issues {

std::string identityKey(const Uuid& productionID, const Uuid& crewID, const Uuid& weekID, const std::string& categoryKey,
                        const std::optional<Uuid>& actualLineID) {
    return productionID.text() + "|" + crewID.text() + "|" + weekID.text() + "|" + categoryKey + "|" + (actualLineID ? actualLineID->text() : "");
}

std::string fingerprint(const PayrollIssueObservation& o) {
    return o.nature + "|" + amountText(o.expected) + "|" + amountText(o.actual) + "|" + amountText(o.difference) + "|" + o.currency;
}

std::vector<PayrollIssueObservation> observations(const CrewPayComparison& comparison) {
    std::vector<PayrollIssueObservation> observed;
    for (const auto& line : comparison.lines) {
        if (isMatch(line.status)) continue;
        observed.push_back({line.issueCategoryKey, std::nullopt, line.title, std::string(label(line.status)), expectedAmount(line),
                            actualAmount(line), line.difference, comparison.currency});
    }
    for (const auto& printed : comparison.unmappedActual) {
        observed.push_back({std::string(words::unmappedCategory), printed.id, printed.label, std::string(label(PayComparisonLineStatus::review)),
                            std::nullopt, printed.amount, std::nullopt, comparison.currency});
    }
    return observed;
}

std::vector<PayrollIssue> list(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT " + std::string(issueColumns) +
                                      " FROM PayrollIssue i WHERE productionID = ?1 ORDER BY (SELECT w.startDate FROM PayrollWeek w WHERE w.id = "
                                      "i.weekID), (SELECT c.displayOrder FROM CrewMember c WHERE c.id = i.crewID), categoryKey, createdAt, id");
    columns::bind(statement, 1, productionID);
    return columns::readAll<PayrollIssue>(statement, readIssue);
}

std::optional<PayrollIssue> find(ModelContext& context, const Uuid& productionID, const Uuid& issueID) {
    auto& statement = context.prepare("SELECT " + std::string(issueColumns) + " FROM PayrollIssue WHERE productionID = ?1 AND id = ?2");
    columns::bindAll(statement, productionID, issueID);
    return columns::readFirst(statement, readIssue);
}

bool hasConfirmedPay(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT EXISTS (SELECT 1 FROM ConfirmedPayStubActualPay WHERE productionID = ?1)");
    columns::bind(statement, 1, productionID);
    return columns::readFirst(statement, [](SQLite::Statement& row) { return row.getColumn(0).getInt() != 0; }).value_or(false);
}

void keepCurrent(ModelContext& context, const Uuid& productionID, Instant now) {
    if (!hasConfirmedPay(context, productionID)) return;
    const auto production = production_repository::fetch(context, productionID);
    if (!production) return;
    try {
        synchronize(context, *production, now);
    } catch (const PayrollReviewError&) {
    } catch (const DomainError&) {
    }
}

SyncReport synchronize(ModelContext& context, const Production& production, Instant now) {
    SyncReport report;
    std::map<std::string, PayrollIssue> byIdentity;
    // Every issue, in no particular order: the synchronisation finds them by identity.
    auto& stored = context.prepare("SELECT " + std::string(issueColumns) + " FROM PayrollIssue WHERE productionID = ?1");
    columns::bind(stored, 1, production.id);
    for (auto& issue : columns::readAll<PayrollIssue>(stored, readIssue)) byIdentity.emplace(issue.identityKey, std::move(issue));
    ExpectedPayrollReview review(context, production.id);
    std::set<std::string> observed;
    std::vector<const PayrollIssue*> changed;
    std::vector<PayrollIssue> created;
    for (const auto& week : weeksWithConfirmedPay(context, production.id)) {
        ++report.weeks;
        for (const auto& comparison : compareWeek(context, review, production, week, CalculationWords::omit).comparisons) {
            for (const auto& o : observations(comparison)) {
                const std::string key = identityKey(production.id, comparison.crewID, week.id, o.categoryKey, o.actualLineID);
                observed.insert(key);
                const std::string print = fingerprint(o);
                const auto existing = byIdentity.find(key);
                if (existing == byIdentity.end()) {
                    created.push_back({Uuid::generate(), key, production.id, comparison.crewID, week.id, o.categoryKey, o.actualLineID, o.title,
                                       o.nature, o.expected, o.actual, o.difference, o.currency, print, std::string(toRawValue(State::needsAttention)),
                                       "", now, now});
                    ++report.created;
                    continue;
                }
                PayrollIssue& issue = existing->second;
                // A difference that was reconciled and comes back is reopened even with the values it had.
                const bool reappeared = issue.resolutionReason == words::reconciled;
                if (issue.fingerprint == print && !reappeared) continue;
                const State before = issue.state().value_or(State::needsAttention);
                const State after = reappeared ? State::needsAttention : afterChange(before, o.nature);
                issue.title = o.title;
                issue.nature = o.nature;
                issue.expectedAmount = o.expected;
                issue.actualAmount = o.actual;
                issue.differenceAmount = o.difference;
                issue.currency = o.currency;
                issue.fingerprint = print;
                issue.updatedAt = now;
                if (after != before || reappeared) {
                    issue.stateRaw = std::string(toRawValue(after));
                    issue.resolutionReason = std::string(words::reopened);
                    ++report.reopened;
                } else {
                    ++report.changed;
                }
                changed.push_back(&issue);
            }
        }
    }
    for (auto& [key, issue] : byIdentity) {
        if (!issue.open() || observed.contains(key)) continue;
        issue.stateRaw = std::string(toRawValue(State::resolved));
        issue.resolutionReason = std::string(words::reconciled);
        issue.resolvedAt = now;
        issue.updatedAt = now;
        changed.push_back(&issue);
        ++report.reconciled;
    }
    for (const auto* issue : changed) save(context, *issue);
    for (const auto& issue : created) save(context, issue);
    return report;
}

void setState(ModelContext& context, const std::vector<PayrollIssue>& issues, PayrollIssueState state, const std::optional<std::string>& note,
              Instant now) {
    for (auto issue : issues) {
        issue.stateRaw = std::string(toRawValue(state));
        issue.updatedAt = now;
        issue.resolutionReason.reset();
        if (state == State::reported) issue.reportedAt = now;
        if (state == State::resolved) {
            issue.resolvedAt = now;
            issue.resolutionReason = std::string(words::resolvedByUser);
        }
        if (note) issue.note = *note;
        save(context, issue);
    }
}

std::optional<Decimal> PayrollIssueGroup::difference() const {
    Decimal sum;
    for (const auto& member : members) {
        if (!member.differenceAmount) return std::nullopt;
        sum = sum + *member.differenceAmount;
    }
    return sum;
}

std::vector<PayrollIssueGroup> groups(ModelContext& context, const Uuid& productionID, const std::vector<PayrollIssue>& issues) {
    std::set<Uuid> crew;
    for (const auto& member : crew_repository::crewMembers(context, productionID)) crew.insert(member.id);
    std::map<Uuid, CalendarDate> weekStarts;
    for (const auto& week : payroll_week_repository::weeks(context, productionID)) weekStarts.emplace(week.id, startOf(week));
    std::vector<PayrollIssueGroup> result;
    for (const auto& issue : issues) {
        const auto start = weekStarts.find(issue.weekID);
        const CalendarDate weekStart = start == weekStarts.end() ? CalendarDate{} : start->second;
        std::string key = calendar_text::formatDate(weekStart) + "|" + issue.categoryKey + "|" + issue.nature + "|" + issue.currency;
        std::optional<Uuid> unknown;
        if (!crew.contains(issue.crewID)) {
            unknown = issue.crewID;
            key += "|crew=" + issue.crewID.text();
        }
        // Unmapped printed lines are grouped by their printed label.
        if (issue.actualLineID) key += "|" + issue.title;
        auto group = std::find_if(result.begin(), result.end(), [&](const PayrollIssueGroup& g) { return g.key == key; });
        if (group == result.end()) {
            result.push_back({key, issue.title, weekStart, unknown, {}});
            group = std::prev(result.end());
        }
        group->members.push_back(issue);
    }
    return result;
}

namespace {

std::string memberName(const std::map<Uuid, std::string>& names, const PayrollIssue& issue) {
    const auto found = names.find(issue.crewID);
    return found == names.end() ? std::string(words::unavailableCrew) : found->second;
}

std::string issueAmount(const PayrollIssue& issue) {
    if (issue.differenceAmount) return signedAmount(issue.differenceAmount) + " " + issue.currency;
    if (issue.actualAmount) return issue.actualAmount->toString() + " " + issue.currency + " paid";
    if (issue.expectedAmount) return issue.expectedAmount->toString() + " " + issue.currency + " expected";
    return "-";
}

void writeGroups(std::ostringstream& out, const std::vector<PayrollIssueGroup>& groups, const std::map<Uuid, std::string>& names) {
    for (const auto& group : groups) {
        const auto& first = group.members.front();
        std::set<Uuid> people;
        for (const auto& member : group.members) people.insert(member.crewID);
        out << "- " << group.title << " (" << first.nature << ", " << first.currency << "): " << people.size() << " crew";
        if (const auto difference = group.difference()) out << ", total " << signedAmount(difference) << " " << first.currency;
        out << "\n";
        for (const auto& member : group.members) {
            out << "    " << memberName(names, member) << ": " << issueAmount(member) << " \u00B7 "
                << label(member.state().value_or(State::needsAttention));
            if (!member.note.empty()) out << " \u00B7 Note: " << member.note;
            out << "\n";
        }
    }
}

std::map<Uuid, std::string> crewNames(ModelContext& context, const Uuid& productionID) {
    std::map<Uuid, std::string> names;
    for (const auto& member : crew_repository::crewMembers(context, productionID)) names.emplace(member.id, member.displayName);
    return names;
}

}  // namespace

std::string summaryText(ModelContext& context, const Production& production, const CalendarDate& weekDate) {
    std::ostringstream out;
    out << words::summaryHeading << " " << production.name << "\n";
    const auto weeks = payroll_week_repository::weeks(context, production.id);
    if (weeks.empty()) {
        out << words::noWeeks << "\n";
        return out.str();
    }
    const auto selected = std::find_if(weeks.rbegin(), weeks.rend(), [&](const PayrollWeek& w) { return startOf(w) <= weekDate; });
    if (selected == weeks.rend()) {
        out << words::noWeeks << "\n";
        return out.str();
    }
    const CalendarDate selectedStart = startOf(*selected);
    out << "Week of " << calendar_text::formatDate(selectedStart) << "\n";
    std::vector<PayrollIssue> outstanding;
    for (auto& issue : list(context, production.id)) {
        if (issue.open()) outstanding.push_back(std::move(issue));
    }
    const auto names = crewNames(context, production.id);
    const auto all = groups(context, production.id, outstanding);
    std::vector<PayrollIssueGroup> thisWeek, earlier;
    for (const auto& group : all) {
        if (group.weekStart == selectedStart) thisWeek.push_back(group);
        if (group.weekStart < selectedStart) earlier.push_back(group);
    }
    if (thisWeek.empty() && earlier.empty()) {
        out << words::noneOutstanding << "\n";
        return out.str();
    }
    out << "\n" << words::thisWeek << "\n";
    if (thisWeek.empty()) out << "None.\n";
    writeGroups(out, thisWeek, names);
    if (earlier.empty()) return out.str();
    out << "\n" << words::earlierWeeks << "\n";
    for (auto from = earlier.begin(); from != earlier.end();) {
        const auto to = std::find_if(from, earlier.end(), [&](const PayrollIssueGroup& g) { return g.weekStart != from->weekStart; });
        out << "Week of " << calendar_text::formatDate(from->weekStart) << "\n";
        writeGroups(out, std::vector<PayrollIssueGroup>(from, to), names);
        from = to;
    }
    return out.str();
}

std::string claimText(ModelContext& context, ExpectedPayrollReview& review, const Production& production, const PayrollWeek& week,
                      const std::vector<PayrollIssueState>& states) {
    const CalendarDate start = startOf(week);
    const CalendarDate end(std::chrono::sys_days(start) + std::chrono::days(6));
    std::ostringstream out;
    out << "Pay corrections requested for " << production.name << "\n"
        << "Payroll Week " << calendar_text::formatDate(start) << " to " << calendar_text::formatDate(end) << "\n"
        << "Differences are actual pay minus expected pay; a minus sign means less was paid than the work earned.\n";
    std::vector<PayrollIssue> claimed;
    for (auto& issue : list(context, production.id)) {
        const auto state = issue.state();
        if (issue.weekID == week.id && state && std::find(states.begin(), states.end(), *state) != states.end()) claimed.push_back(std::move(issue));
    }
    if (claimed.empty()) {
        out << "\nNo payroll issues in this week are in the chosen states.\n";
        return out.str();
    }
    const auto comparisons = compareWeek(context, review, production, week).comparisons;
    const auto names = crewNames(context, production.id);
    std::optional<Uuid> person;
    for (const auto& issue : claimed) {
        if (issue.crewID != person) {
            out << "\n" << memberName(names, issue) << "\n";
            person = issue.crewID;
        }
        out << "  " << issue.title << " \u2014 " << issue.nature << "\n"
            << "    Expected " << (issue.expectedAmount ? issue.expectedAmount->toString() : std::string("nothing")) << ", paid "
            << (issue.actualAmount ? issue.actualAmount->toString() : std::string("nothing"));
        if (issue.differenceAmount) out << ", difference " << signedAmount(issue.differenceAmount);
        out << " " << issue.currency << "\n";
        const auto comparison = std::find_if(comparisons.begin(), comparisons.end(), [&](const CrewPayComparison& c) { return c.crewID == issue.crewID; });
        if (issue.actualLineID) {
            out << "    The printed line \u201C" << issue.title << "\u201D has no expected counterpart; please tell us what it pays.\n";
            continue;
        }
        if (comparison == comparisons.end()) continue;
        const auto line = std::find_if(comparison->lines.begin(), comparison->lines.end(),
                                       [&](const PayComparisonLine& l) { return l.issueCategoryKey == issue.categoryKey; });
        if (line == comparison->lines.end() || line->expected.empty()) continue;
        out << "    How the expected amount is calculated:\n";
        for (const auto& expected : line->expected) {
            for (const auto& detail : expected.calculationDetails) out << "      " << detail << "\n";
        }
    }
    return out.str();
}

std::vector<PayrollIssue> inState(ModelContext& context, const Uuid& productionID, PayrollIssueState state, const std::optional<Uuid>& weekID) {
    std::vector<PayrollIssue> found;
    for (auto& issue : list(context, productionID)) {
        if (issue.state() == state && (!weekID || issue.weekID == *weekID)) found.push_back(std::move(issue));
    }
    return found;
}

std::string detailText(const PayrollIssue& issue) {
    const auto amount = [](const std::optional<Decimal>& value) { return value ? value->toString() : std::string("-"); };
    const auto state = issue.state().value_or(PayrollIssueState::needsAttention);
    std::ostringstream out;
    out << issue.title << " \u2014 " << issue.nature << "\n"
        << "  Expected " << amount(issue.expectedAmount) << ", actual " << amount(issue.actualAmount) << ", difference "
        << signedAmount(issue.differenceAmount) << " " << issue.currency << "\n"
        << "  State: " << label(state);
    if (issue.resolutionReason) out << " (" << *issue.resolutionReason << ")";
    out << "\n  First observed " << calendar_text::formatInstant(issue.createdAt) << ", last changed " << calendar_text::formatInstant(issue.updatedAt)
        << "\n";
    if (issue.reportedAt) {
        out << (state != PayrollIssueState::reported ? "  Previously reported " : "  Reported ") << calendar_text::formatInstant(*issue.reportedAt) << "\n";
    }
    if (!issue.note.empty()) out << "  Previous workflow note: " << issue.note << "\n";
    return out.str();
}

}  // namespace payroll_issues
}  // namespace tessel
