#include "CrewDailyEntryRepair.hpp"

#include <map>
#include <tuple>

#include "App/model/PayrollWeekRepository.hpp"

namespace tessel {
namespace {

struct Row {
    Uuid id;
    std::optional<Uuid> workdayID;
    std::optional<Uuid> engagementID;
    std::int64_t displayOrder;
    std::tuple<std::optional<std::string>, std::optional<std::string>, std::optional<std::string>,
               std::optional<std::string>, bool, bool>
        facts;  // call, lunch out, lunch in, wrap, call autofilled, wrap autofilled
};

std::vector<Row> allRows(ModelContext& context) {
    auto& statement = context.prepare(
        "SELECT id, workdayID, engagementID, displayOrder, callOverride, lunchOutOverride, lunchInOverride, wrapOverride, "
        "callOverrideWasAutofilled, wrapOverrideWasAutofilled FROM CrewDailyEntry ORDER BY displayOrder, id");
    std::vector<Row> rows;
    while (statement.executeStep()) {
        rows.push_back({columns::uuid(statement.getColumn(0)), columns::optionalUuid(statement.getColumn(1)),
                        columns::optionalUuid(statement.getColumn(2)), columns::integer(statement.getColumn(3)),
                        {columns::optionalText(statement.getColumn(4)), columns::optionalText(statement.getColumn(5)),
                         columns::optionalText(statement.getColumn(6)), columns::optionalText(statement.getColumn(7)),
                         columns::boolean(statement.getColumn(8)), columns::boolean(statement.getColumn(9))}});
    }
    return rows;
}

}  // namespace

bool CrewDailyEntryRepair::hasDuplicateRows(ModelContext& context) {
    // GROUP BY puts rows missing the DTS or engagement together, as the repair's grouping does.
    auto& statement = context.prepare("SELECT 1 FROM CrewDailyEntry GROUP BY workdayID, engagementID HAVING COUNT(*) > 1 LIMIT 1");
    const bool found = statement.executeStep();
    statement.reset();
    return found;
}

CrewDailyEntryRepair::Report CrewDailyEntryRepair::run(ModelContext& context) {
    // Rows are grouped by DTS and engagement; a row missing either is compared with the rows missing the same.
    std::map<std::pair<std::optional<Uuid>, std::optional<Uuid>>, std::vector<Row>> groups;
    for (auto& row : allRows(context)) groups[{row.workdayID, row.engagementID}].push_back(std::move(row));

    Report report;
    for (const auto& [key, rows] : groups) {
        if (rows.size() < 2) continue;
        const bool identical = std::all_of(rows.begin(), rows.end(), [&](const Row& row) { return row.facts == rows.front().facts; });
        if (!identical) {
            Conflict conflict{key.first, key.second, {}};
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
