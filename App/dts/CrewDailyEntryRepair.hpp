#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"

namespace tessel {

// A person has at most one row per DTS. At start the repair removes rows that duplicate another row
// with identical entered facts, and reports, without touching them, duplicates whose facts differ.
class CrewDailyEntryRepair {
public:
    struct Conflict {
        std::optional<Uuid> workdayID;
        std::optional<Uuid> engagementID;
        std::vector<Uuid> entryIDs;
    };
    struct Report {
        std::vector<Uuid> removedEntryIDs;
        std::vector<Conflict> conflicts;
    };

    // Whether any person has more than one row on a DTS: a read, so that a start with nothing to repair
    // takes no write lock.
    static bool hasDuplicateRows(ModelContext& context);
    // Runs over every row of the store; the caller saves once (one transaction).
    static Report run(ModelContext& context);

    static constexpr std::string_view alertTitle = "DTS Data Integrity Warning";
    static constexpr std::string_view checkFailedPrefix = "Tessel could not finish its startup data-integrity check:";
    // "Tessel found DTS data that needs review." and the count of conflicts; nothing when there are none.
    static std::optional<std::string> alertText(const Report& report);
};

}  // namespace tessel
