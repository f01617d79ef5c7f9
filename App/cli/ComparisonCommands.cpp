#include "ComparisonCommands.hpp"

#include <sstream>

#include "App/actualpay/PayrollIssues.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using command_actions::dateArgument;
using command_actions::now;
namespace issue_words = payroll_issue_words;

// The payroll issues' own commands change only issues; they do not start another synchronisation.
template <typename Action>
int actOnIssues(CommandSession& session, Action&& action) {
    return command_actions::actThen(session, std::forward<Action>(action), [](ModelContext&, const Production&) {});
}

PayrollWeek weekOn(ModelContext& context, const Production& production, const std::string& dateText) {
    const auto week = weekHolding(context, production.id, dateArgument(dateText));
    if (!week) throw Refused{"weekNotFound", "There is no Payroll Week with a DTS or activity on " + dateText + "."};
    return *week;
}

Json optionalDecimal(const std::optional<Decimal>& value) { return value ? Json(value->toString()) : Json(); }
std::string text(const std::optional<Decimal>& value) { return value ? value->toString() : std::string("-"); }

Json expectedLineJSON(const PayComparisonExpectedLine& line) {
    return {{"id", line.id},
            {"title", line.title},
            {"concept", line.concept_ ? Json(std::string(toRawValue(*line.concept_))) : Json()},
            {"amount", optionalDecimal(line.amount)},
            {"hours", optionalDecimal(line.hours)},
            {"rate", optionalDecimal(line.rate)},
            {"calculationDetails", line.calculationDetails},
            {"issueCategoryKey", line.issueCategoryKey}};
}

Json actualLineJSON(const PayComparisonActualLine& line) {
    return {{"id", line.id.text()}, {"label", line.label}, {"amount", line.amount.toString()}, {"hours", optionalDecimal(line.hours)},
            {"rate", optionalDecimal(line.rate)}};
}

template <typename Line, typename Encode>
Json listJSON(const std::vector<Line>& lines, Encode encode) {
    Json list = Json::array();
    for (const auto& line : lines) list.push_back(encode(line));
    return list;
}

Json comparisonJSON(const CrewPayComparison& c) {
    Json json{{"crewID", c.crewID.text()},
              {"crewName", c.crewName},
              {"weekID", c.weekID.text()},
              {"comparable", c.comparable},
              {"reconciliationAvailable", c.reconciliationAvailable},
              {"tolerance", c.tolerance.toString()},
              {"currency", c.currency},
              {"issues", c.issues},
              {"grossDifference", optionalDecimal(c.grossDifference)},
              {"grossStatus", c.grossStatus ? Json(std::string(toRawValue(*c.grossStatus))) : Json()},
              {"accuracy", std::string(dashboardLabel(c.outcome))},
              {"unmappedActual", listJSON(c.unmappedActual, actualLineJSON)}};
    if (c.expected) {
        json["expected"] = {{"gross", optionalDecimal(c.expected->gross)},
                            {"hours", optionalDecimal(c.expected->hours)},
                            {"complete", c.expected->complete},
                            {"lines", listJSON(c.expected->lines, expectedLineJSON)}};
    }
    if (c.actual) {
        json["actual"] = {{"gross", c.actual->gross.toString()}, {"hours", optionalDecimal(c.actual->hours)}, {"lines", listJSON(c.actual->lines, actualLineJSON)}};
    }
    json["hours"] = {{"expected", c.expected ? optionalDecimal(c.expected->hours) : Json()},
                     {"actual", c.actual ? optionalDecimal(c.actual->hours) : Json()},
                     {"detailText", std::string(pay_comparison_words::hoursNotDifferenced)}};
    Json lines = Json::array();
    for (const auto& line : c.lines) {
        lines.push_back({{"id", line.id},
                         {"title", line.title},
                         {"expected", listJSON(line.expected, expectedLineJSON)},
                         {"actual", listJSON(line.actual, actualLineJSON)},
                         {"tolerance", line.tolerance.toString()},
                         {"comparable", line.comparable},
                         {"status", std::string(toRawValue(line.status))},
                         {"statusLabel", std::string(label(line.status))},
                         {"difference", optionalDecimal(line.difference)}});
    }
    json["lines"] = lines;
    return json;
}

void writeComparison(std::ostringstream& out, const CrewPayComparison& c) {
    namespace words = pay_comparison_words;
    out << "\n" << c.crewName << " \u2014 " << dashboardLabel(c.outcome) << "\n";
    for (const auto& issue : c.issues) out << "  " << issue << "\n";
    out << "  Gross: expected " << text(c.expected ? c.expected->gross : std::nullopt) << ", actual "
        << (c.actual ? c.actual->gross.toString() : std::string("-")) << ", ";
    if (!c.grossDifference) {
        out << words::grossUnavailable << "\n";
    } else {
        out << "Difference (Actual \u2212 Expected) " << signedAmount(c.grossDifference) << " " << c.currency << " \u2014 ";
        const bool linesOpen = std::any_of(c.lines.begin(), c.lines.end(), [](const PayComparisonLine& l) {
            return l.status != PayComparisonLineStatus::matches && l.status != PayComparisonLineStatus::withinTolerance;
        });
        if (*c.grossStatus == PayComparisonLineStatus::withinTolerance) {
            out << words::grossWithinTolerance;
        } else {
            out << label(*c.grossStatus);
        }
        if ((*c.grossStatus == PayComparisonLineStatus::matches || *c.grossStatus == PayComparisonLineStatus::withinTolerance) &&
            (linesOpen || !c.unmappedActual.empty())) {
            out << ". " << words::grossMatchesLinesDoNot;
        }
        out << "\n";
    }
    out << "  Hours: expected paid " << text(c.expected ? c.expected->hours : std::nullopt) << ", printed "
        << text(c.actual ? c.actual->hours : std::nullopt) << "\n";
    if (!c.reconciliationAvailable) {
        out << "  " << words::grossOnlyReview << "\n";
        return;
    }
    if (!c.lines.empty()) {
        out << "  " << review_text::padded("Line", 24) << review_text::padded("Expected", 12) << review_text::padded("Actual", 12)
            << review_text::padded("Difference", 13) << "Status\n";
    }
    for (const auto& line : c.lines) {
        out << "  " << review_text::padded(line.title, 24) << review_text::padded(text(expectedAmount(line)), 12)
            << review_text::padded(text(actualAmount(line)), 12) << review_text::padded(signedAmount(line.difference), 13) << label(line.status);
        if (line.status == PayComparisonLineStatus::expectedOnly) out << " (" << words::expectedOnlyDetail << ")";
        out << "\n";
    }
    if (!c.unmappedActual.empty()) {
        out << "  " << words::noSupportedMapping << "\n";
        for (const auto& line : c.unmappedActual) out << "    " << line.label << " " << line.amount.toString() << "\n";
    }
}

int compareWeekCommand(CommandSession& session, const ComparisonCommandArguments& a) {
    return command_actions::actThen(
        session,
        [&](ModelContext& context, const Production& production) {
            const auto week = weekOn(context, production, a.week);
            ExpectedPayrollReview review(context, production.id);
            auto result = compareWeek(context, review, production, week);
            if (!a.crew.empty()) {
                const auto member = crewMemberNamed(context, production.id, a.crew);
                std::erase_if(result.comparisons, [&](const CrewPayComparison& c) { return c.crewID != member.id; });
                if (result.comparisons.empty()) throw Refused{"noConfirmedPay", std::string(pay_comparison_words::noActual)};
            }
            const auto settings = pay_comparison_settings::read(context, production.id);
            Json comparisons = Json::array();
            for (const auto& c : result.comparisons) comparisons.push_back(comparisonJSON(c));
            Json waiting = Json::array();
            for (const auto& [id, name] : result.waiting) waiting.push_back({{"crewID", id.text()}, {"name", name}});
            std::ostringstream out;
            out << "Payroll Week " << calendar_text::formatPeriod(result.start, result.end) << " \u00B7 " << label(settings.profile)
                << " \u00B7 rounding tolerance " << settings.tolerance.toString() << "\n"
                << result.stubsConfirmed << " pay stubs confirmed of " << result.peopleInWeek << " people in this Payroll Week\n"
                << "Needs Attention " << result.needsAttention << " \u00B7 Unable to Compare " << result.unableToCompare << " \u00B7 No Action Needed "
                << result.noActionNeeded << " \u00B7 Waiting for Pay Stubs " << result.waiting.size() << "\n";
            if (!result.waiting.empty()) {
                out << "Awaiting Pay Stub (" << result.waiting.size() << "):";
                for (std::size_t i = 0; i < result.waiting.size(); ++i) out << (i ? ", " : " ") << result.waiting[i].second;
                out << "\n";
            }
            for (const auto& c : result.comparisons) writeComparison(out, c);
            out << "\n" << pay_comparison_words::hoursNotDifferenced << "\n";
            session.answer(Json{{"weekStart", calendar_text::formatDate(result.start)},
                                {"weekEnd", calendar_text::formatDate(result.end)},
                                {"profile", std::string(toRawValue(settings.profile))},
                                {"tolerance", settings.tolerance.toString()},
                                {"dashboard",
                                 {{"peopleInWeek", result.peopleInWeek},
                                  {"stubsConfirmed", result.stubsConfirmed},
                                  {"needsAttention", result.needsAttention},
                                  {"unableToCompare", result.unableToCompare},
                                  {"noActionNeeded", result.noActionNeeded},
                                  {"waiting", waiting}}},
                                {"comparisons", comparisons}},
                           out.str());
            return exitSuccess;
        },
        [](ModelContext&, const Production&) {});
}

Json issueJSON(const PayrollIssue& issue, const std::string& group) {
    return {{"id", issue.id.text()},
            {"crewID", issue.crewID.text()},
            {"weekID", issue.weekID.text()},
            {"categoryKey", issue.categoryKey},
            {"actualLineID", issue.actualLineID ? Json(issue.actualLineID->text()) : Json()},
            {"title", issue.title},
            {"nature", issue.nature},
            {"expected", optionalDecimal(issue.expectedAmount)},
            {"actual", optionalDecimal(issue.actualAmount)},
            {"difference", optionalDecimal(issue.differenceAmount)},
            {"currency", issue.currency},
            {"state", issue.stateRaw},
            {"note", issue.note},
            {"createdAt", calendar_text::formatInstant(issue.createdAt)},
            {"updatedAt", calendar_text::formatInstant(issue.updatedAt)},
            {"reportedAt", issue.reportedAt ? Json(calendar_text::formatInstant(*issue.reportedAt)) : Json()},
            {"resolvedAt", issue.resolvedAt ? Json(calendar_text::formatInstant(*issue.resolvedAt)) : Json()},
            {"resolutionReason", issue.resolutionReason ? Json(*issue.resolutionReason) : Json()},
            {"group", group}};
}

std::string syncWords(const payroll_issues::SyncReport& r) {
    return "Payroll issues updated across " + std::to_string(r.weeks) + " confirmed week" + (r.weeks == 1 ? "" : "s") + ": " +
           std::to_string(r.created) + " new, " + std::to_string(r.changed) + " changed, " + std::to_string(r.reopened) + " reopened, " +
           std::to_string(r.reconciled) + " reconciled.\n";
}

int syncCommand(CommandSession& session) {
    return actOnIssues(session, [&](ModelContext& context, const Production& production) {
        const auto report = payroll_issues::synchronize(context, production, now());
        session.answer(Json{{"weeks", report.weeks}, {"created", report.created}, {"changed", report.changed}, {"reopened", report.reopened},
                            {"reconciled", report.reconciled}},
                       syncWords(report));
        return exitSuccess;
    });
}

PayrollIssueState stateArgument(const std::string& text) {
    const auto state = payrollIssueStateFromRaw(text);
    if (!state) throw Refused{"invalidState", "Choose the state needsAttention, reported, noAction, resolved or noted."};
    return *state;
}

int listCommand(CommandSession& session, const ComparisonCommandArguments& a) {
    return actOnIssues(session, [&](ModelContext& context, const Production& production) {
        std::optional<Uuid> weekID;
        if (!a.week.empty()) weekID = weekOn(context, production, a.week).id;
        const auto state = a.state.empty() ? std::nullopt : std::optional(stateArgument(a.state));
        std::vector<PayrollIssue> shown;
        for (auto& issue : payroll_issues::list(context, production.id)) {
            if (weekID && issue.weekID != *weekID) continue;
            if (state && issue.state() != state) continue;
            shown.push_back(std::move(issue));
        }
        std::map<Uuid, std::string> names;
        for (const auto& member : crew_repository::crewMembers(context, production.id)) names.emplace(member.id, member.displayName);
        Json json = Json::array();
        std::ostringstream out;
        for (const auto& group : payroll_issues::groups(context, production.id, shown)) {
            out << "Group " << group.key << "\n";
            for (const auto& issue : group.members) {
                json.push_back(issueJSON(issue, group.key));
                const auto name = names.find(issue.crewID);
                out << "  " << issue.id.text().substr(0, 8) << "  " << review_text::padded(name == names.end() ? std::string(issue_words::unavailableCrew) : name->second, 22)
                    << review_text::padded(issue.title, 22) << review_text::padded(issue.nature, 15)
                    << review_text::padded(signedAmount(issue.differenceAmount), 11) << label(issue.state().value_or(PayrollIssueState::needsAttention));
                if (issue.resolutionReason) out << " (" << *issue.resolutionReason << ")";
                if (!issue.note.empty()) out << " \u00B7 Note: " << issue.note;
                out << "\n";
            }
        }
        if (shown.empty()) out << "No payroll issues.\n";
        session.answer(json, out.str());
        return exitSuccess;
    });
}

// The issues an action applies to: one issue by its identifier (or the first eight characters of it
// when they name one issue), or every member of a group.
std::vector<PayrollIssue> targetsOf(ModelContext& context, const Production& production, const std::string& id, const std::string& group) {
    const auto all = payroll_issues::list(context, production.id);
    if (!group.empty()) {
        for (const auto& g : payroll_issues::groups(context, production.id, all)) {
            if (g.key == group) return g.members;
        }
        throw Refused{"groupNotFound", "There is no payroll issue group \u201C" + group + "\u201D; see \u201Ctessel issues list\u201D."};
    }
    std::vector<PayrollIssue> found;
    for (const auto& issue : all) {
        if (id.size() >= 8 && issue.id.text().compare(0, id.size(), id) == 0) found.push_back(issue);
    }
    if (found.size() != 1) throw Refused{"issueNotFound", "There is no payroll issue \u201C" + id + "\u201D; see \u201Ctessel issues list\u201D."};
    return found;
}

// The bulk actions: every issue in one state (of one week, when given) moved to another, as "Needs
// Attention as Reported" and "Reported as Resolved" do.
std::vector<PayrollIssue> inState(ModelContext& context, const Production& production, PayrollIssueState state, const std::string& weekDate) {
    const auto weekID = weekDate.empty() ? std::nullopt : std::optional(weekOn(context, production, weekDate).id);
    auto found = payroll_issues::inState(context, production.id, state, weekID);
    if (found.empty()) throw Refused{"issueNotFound", "No payroll issue is in the state " + std::string(toRawValue(state)) + "."};
    return found;
}

int setCommand(CommandSession& session, const ComparisonCommandArguments& a) {
    return actOnIssues(session, [&](ModelContext& context, const Production& production) {
        const bool byIdentifier = a.group.empty() && a.state.empty();
        if (a.targets.size() != (byIdentifier ? 2u : 1u)) {
            throw Refused{"missingValue", "Give the issue and the state, or --group KEY (or --from-state S) and the state."};
        }
        const auto state = stateArgument(a.targets.back());
        const auto issues = !a.state.empty() ? inState(context, production, stateArgument(a.state), a.week)
                                             : targetsOf(context, production, byIdentifier ? a.targets.front() : std::string(), a.group);
        const auto note = a.note.empty() ? std::nullopt : std::optional(a.note);
        payroll_issues::setState(context, issues, state, note, now());
        Json ids = Json::array();
        for (const auto& issue : issues) ids.push_back(issue.id.text());
        session.answer(Json{{"updated", ids}, {"state", std::string(toRawValue(state))}},
                       std::to_string(issues.size()) + (issues.size() == 1 ? " payroll issue is now " : " payroll issues are now ") +
                           std::string(label(state)) + ".\n");
        return exitSuccess;
    });
}

// One issue in full, with what the user did with it before.
int showCommand(CommandSession& session, const ComparisonCommandArguments& a) {
    return actOnIssues(session, [&](ModelContext& context, const Production& production) {
        if (a.targets.size() != 1) throw Refused{"missingValue", "Give the issue's identifier."};
        const auto issue = targetsOf(context, production, a.targets.front(), {}).front();
        session.answer(issueJSON(issue, {}), payroll_issues::detailText(issue));
        return exitSuccess;
    });
}

int summaryCommand(CommandSession& session, const ComparisonCommandArguments& a) {
    return actOnIssues(session, [&](ModelContext& context, const Production& production) {
        const std::string summary = payroll_issues::summaryText(context, production, dateArgument(a.week));
        session.answer(Json{{"summary", summary}}, summary);
        return exitSuccess;
    });
}

int claimCommand(CommandSession& session, const ComparisonCommandArguments& a) {
    return actOnIssues(session, [&](ModelContext& context, const Production& production) {
        const auto week = weekOn(context, production, a.week);
        std::vector<PayrollIssueState> states;
        for (const auto& state : a.claimStates) states.push_back(stateArgument(state));
        if (states.empty()) states.push_back(PayrollIssueState::needsAttention);
        ExpectedPayrollReview review(context, production.id);
        const std::string claim = payroll_issues::claimText(context, review, production, week, states);
        session.answer(Json{{"claim", claim}}, claim);
        return exitSuccess;
    });
}

}  // namespace

void addComparisonCommands(CLI::App& app, CommandSession& session, ComparisonCommandArguments& a, int& exitStatus) {
    auto* compare = app.add_subcommand("compare", "Expected pay beside confirmed Actual Pay")->require_subcommand(1);
    auto* week = compare->add_subcommand("week", "The Payroll Week's dashboard and each crew member's gross and line comparison");
    week->add_option("DATE", a.week, "A date in the Payroll Week, YYYY-MM-DD")->required();
    week->add_option("--crew", a.crew, "Only this crew member");
    week->callback([&] { exitStatus = compareWeekCommand(session, a); });

    auto* issues = app.add_subcommand("issues", "Payroll issues: differences between expected and actual pay, tracked until resolved")
                       ->require_subcommand(1);
    issues->add_subcommand("sync", "Compare every week with confirmed pay and update the issues")->callback([&] { exitStatus = syncCommand(session); });
    auto* list = issues->add_subcommand("list", "The issues, by group");
    list->add_option("--week", a.week, "Only the Payroll Week holding this date");
    list->add_option("--state", a.state, "Only issues in this state: needsAttention, reported, noAction, resolved or noted");
    list->callback([&] { exitStatus = listCommand(session, a); });
    auto* set = issues->add_subcommand("set", "Set the state of one issue (ID STATE) or of a group (--group KEY STATE)");
    set->add_option("TARGET", a.targets, "The issue's identifier (its first eight characters are enough), then the state")->required();
    set->add_option("--group", a.group, "Every issue of this group, as \u201Cissues list\u201D names it");
    set->add_option("--from-state", a.state, "Every issue in this state (of --week, when given): needsAttention as reported, reported as resolved");
    set->add_option("--week", a.week, "With --from-state: only the Payroll Week holding this date");
    set->add_option("--note", a.note, "A workflow note, kept with each issue");
    set->callback([&] { exitStatus = setCommand(session, a); });
    auto* show = issues->add_subcommand("show", "One issue in full, with its earlier reporting and note");
    show->add_option("ID", a.targets, "The issue's identifier (its first eight characters are enough)")->required();
    show->callback([&] { exitStatus = showCommand(session, a); });
    auto* summary = issues->add_subcommand("summary", "The weekly summary, as Copy Full Summary copies it");
    summary->add_option("--week", a.week, "A date in the Payroll Week")->required();
    summary->callback([&] { exitStatus = summaryCommand(session, a); });
    auto* claim = issues->add_subcommand("claim", "A message for the payroll company with each issue's expected calculation in words");
    claim->add_option("--week", a.week, "A date in the Payroll Week")->required();
    claim->add_option("--state", a.claimStates, "The states of the issues claimed (default needsAttention)");
    claim->callback([&] { exitStatus = claimCommand(session, a); });
}

}  // namespace tessel
