#include "CrewDailyEntryRepair.hpp"

#include <map>
#include <tuple>

#include "App/model/PayrollWeekRepository.hpp"

namespace tessel {
namespace {

// Whose row it is: the person the row names, else the person of its engagement. A row keeps its person
// when its engagement is removed, so two people's rows are never taken for one person's duplicates.
constexpr std::string_view personColumn =
    "COALESCE(crewMemberID, (SELECT crewMemberID FROM ProductionEngagement WHERE id = CrewDailyEntry.engagementID))";

struct Row {
    Uuid id;
    std::optional<Uuid> workdayID;
    std::optional<Uuid> engagementID;
    std::optional<Uuid> personID;  // the row's crew member, else its engagement's
    std::int64_t displayOrder;
    std::tuple<std::optional<std::string>, std::optional<std::string>, std::optional<std::string>,
               std::optional<std::string>, bool, bool>
        facts;  // call, lunch out, lunch in, wrap, call autofilled, wrap autofilled
};

std::vector<Row> allRows(ModelContext& context) {
    auto& statement = context.prepare(
        "SELECT id, workdayID, engagementID, " + std::string(personColumn) + ", displayOrder, callOverride, lunchOutOverride, "
        "lunchInOverride, wrapOverride, callOverrideWasAutofilled, wrapOverrideWasAutofilled FROM CrewDailyEntry "
        "ORDER BY displayOrder, id");
    std::vector<Row> rows;
    while (statement.executeStep()) {
        rows.push_back({columns::uuid(statement.getColumn(0)), columns::optionalUuid(statement.getColumn(1)),
                        columns::optionalUuid(statement.getColumn(2)), columns::optionalUuid(statement.getColumn(3)),
                        columns::integer(statement.getColumn(4)),
                        {columns::optionalText(statement.getColumn(5)), columns::optionalText(statement.getColumn(6)),
                         columns::optionalText(statement.getColumn(7)), columns::optionalText(statement.getColumn(8)),
                         columns::boolean(statement.getColumn(9)), columns::boolean(statement.getColumn(10))}});
    }
    return rows;
}

}  // namespace

bool CrewDailyEntryRepair::hasDuplicateRows(ModelContext& context) {
    auto& statement = context.prepare("SELECT 1 FROM CrewDailyEntry WHERE workdayID IS NOT NULL AND " + std::string(personColumn) +
                                      " IS NOT NULL GROUP BY workdayID, " + std::string(personColumn) + " HAVING COUNT(*) > 1 LIMIT 1");
    const bool found = statement.executeStep();
    statement.reset();
    return found;
}

CrewDailyEntryRepair::Report CrewDailyEntryRepair::run(ModelContext& context) {
    // Rows are grouped by DTS and person. A row whose DTS or person is unknown cannot be anyone's
    // duplicate and is left alone.
    std::map<std::pair<Uuid, Uuid>, std::vector<Row>> groups;
    for (auto& row : allRows(context)) {
        if (row.workdayID && row.personID) groups[{*row.workdayID, *row.personID}].push_back(std::move(row));
    }

    Report report;
    for (const auto& [key, rows] : groups) {
        if (rows.size() < 2) continue;
        const auto& facts = rows.front().facts;
        const bool identical = std::all_of(rows.begin(), rows.end(), [&facts](const Row& row) { return row.facts == facts; });
        if (!identical) {
            Conflict conflict{key.first, rows.front().engagementID, {}};
            for (const auto& row : rows) conflict.entryIDs.push_back(row.id);
            report.conflicts.push_back(std::move(conflict));
            continue;
        }
        // Rows come by display order, then id: the first one stays.
        for (std::size_t i = 1; i < rows.size(); ++i) {
            payroll_week_repository::removeEntry(context, rows[i].id);
            report.removedEntryIDs.push_back(rows[i].id);
        }
    }
    return report;
}

std::optional<std::string> CrewDailyEntryRepair::alertText(const Report& report) {
    if (report.conflicts.empty()) return std::nullopt;
    return "Tessel found DTS data that needs review. " + std::to_string(report.conflicts.size()) +
           " DTS crew-row conflict(s) with different entered facts. Nothing in those groups was removed. Contact "
           "support before editing those rows.";
}

}  // namespace tessel
