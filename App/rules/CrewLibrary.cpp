#include "CrewLibrary.hpp"

#include <algorithm>
#include <cctype>

#include "App/model/EntryText.hpp"

namespace tessel::crew_library {
namespace {

using namespace columns;

constexpr const char* personColumns =
    "id, displayName, preferredRatePackagePositionID, preferredPositionName, preferredDTSTitle, displayOrder, createdAt, modifiedAt";

CrewLibraryPerson readPerson(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)), text(row.getColumn(1)),      optionalUuid(row.getColumn(2)), optionalText(row.getColumn(3)),
            optionalText(row.getColumn(4)), integer(row.getColumn(5)), instant(row.getColumn(6)),     instant(row.getColumn(7))};
}

void insert(ModelContext& context, const CrewLibraryPerson& p) {
    auto& statement = context.prepare(std::string("INSERT INTO CrewLibraryPerson (") + personColumns + ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)");
    bindAll(statement, p.id, p.displayName, p.preferredRatePackagePositionID, p.preferredPositionName, p.preferredDTSTitle, p.displayOrder,
            p.createdAt, p.modifiedAt);
    statement.exec();
}

// Lower case with runs of spaces as one, trimmed.
std::string folded(const std::string& name) {
    std::string result;
    for (const char c : entry_text::trimmed(name)) {
        if (std::isspace(static_cast<unsigned char>(c))) {
            if (!result.empty() && result.back() != ' ') result += ' ';
            continue;
        }
        result += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return result;
}

std::optional<std::string> given(const std::optional<std::string>& text) {
    if (!text || entry_text::isBlank(*text)) return std::nullopt;
    return std::string(entry_text::trimmed(*text));
}

}  // namespace

std::string counted(std::string_view verb, int count, std::string_view what, std::string_view one, std::string_view many) {
    return std::string(verb) + " " + std::to_string(count) + (what.empty() ? "" : " " + std::string(what)) + " " +
           std::string(count == 1 ? one : many) + ".";
}

bool sameName(const std::string& a, const std::string& b) { return folded(a) == folded(b); }

std::vector<CrewLibraryPerson> list(ModelContext& context) {
    auto& statement = context.prepare(std::string("SELECT ") + personColumns + " FROM CrewLibraryPerson ORDER BY displayOrder, displayName, id");
    return readAll<CrewLibraryPerson>(statement, readPerson);
}

CrewLibraryPerson named(ModelContext& context, const std::string& name) {
    std::vector<CrewLibraryPerson> found;
    for (auto& person : list(context)) {
        if (sameName(person.displayName, name)) found.push_back(std::move(person));
    }
    if (found.empty()) throw ModelValidationError("There is no one named " + entry_text::quoted(name) + " in the Crew Library.");
    if (found.size() > 1) throw ModelValidationError("More than one person in the Crew Library is named " + entry_text::quoted(name) + ".");
    return found.front();
}

CrewLibraryPerson add(ModelContext& context, const std::string& name, const std::optional<std::string>& position,
                      const std::optional<std::string>& dtsTitle, Instant now) {
    if (entry_text::isBlank(name)) throw ModelValidationError(std::string(crew_library_words::blankName));
    const CrewLibraryPerson person{Uuid::generate(), std::string(entry_text::trimmed(name)), std::nullopt, given(position), given(dtsTitle),
                                   static_cast<std::int64_t>(list(context).size()), now, now};
    insert(context, person);
    return person;
}

void remove(ModelContext& context, const CrewLibraryPerson& person) {
    for (const char* sql : {"DELETE FROM ProductionCrewLibraryLink WHERE crewLibraryPersonID = ?1", "DELETE FROM CrewLibraryPerson WHERE id = ?1"}) {
        auto& statement = context.prepare(sql);
        bind(statement, 1, person.id);
        statement.exec();
    }
}

CrewLibraryImportPlan plan(ModelContext& context, const std::vector<CrewLibraryPerson>& people) {
    const auto library = list(context);
    CrewLibraryImportPlan result;
    for (const auto& person : people) {
        if (std::any_of(library.begin(), library.end(), [&](const auto& p) { return p.id == person.id; })) {
            ++result.exactIdentityMatchCount;
            continue;
        }
        const auto match = std::find_if(library.begin(), library.end(), [&](const auto& p) { return sameName(p.displayName, person.displayName); });
        if (match == library.end()) {
            result.newPeople.push_back(person);
        } else {
            result.conflicts.push_back({person, match->id, match->displayName, match->preferredPositionName, match->preferredDTSTitle});
        }
    }
    return result;
}

CrewLibraryImportReport apply(ModelContext& context, const CrewLibraryImportPlan& plan,
                              const std::map<Uuid, CrewLibraryImportResolution>& resolutions, Instant now) {
    for (const auto& conflict : plan.conflicts) {
        if (!resolutions.contains(conflict.imported.id)) throw ModelValidationError(std::string(crew_library_words::chooseEveryMatch));
    }
    CrewLibraryImportReport report;
    report.skipped = plan.exactIdentityMatchCount;
    auto order = static_cast<std::int64_t>(list(context).size());
    const auto added = [&](CrewLibraryPerson person) {
        person.displayOrder = order++;
        person.createdAt = person.modifiedAt = now;
        insert(context, person);
    };
    for (const auto& person : plan.newPeople) {
        added(person);
        ++report.imported;
    }
    for (const auto& conflict : plan.conflicts) {
        if (resolutions.at(conflict.imported.id) == CrewLibraryImportResolution::useExisting) {
            ++report.usedExisting;
            continue;
        }
        added(conflict.imported);
        ++report.keptSeparate;
    }
    return report;
}

void link(ModelContext& context, const Uuid& productionID, const Uuid& crewMemberID, const CrewLibraryPerson& person, Instant now) {
    auto& statement = context.prepare(
        "INSERT OR REPLACE INTO ProductionCrewLibraryLink (id, productionID, crewMemberID, crewLibraryPersonID, createdAt) VALUES (?1, ?2, ?3, ?4, ?5)");
    bindAll(statement, Uuid::generate(), productionID, crewMemberID, person.id, now);
    statement.exec();
}

std::optional<CrewLibraryPerson> linkedPerson(ModelContext& context, const Uuid& crewMemberID) {
    auto& statement = context.prepare(
        "SELECT p.id, p.displayName, p.preferredRatePackagePositionID, p.preferredPositionName, p.preferredDTSTitle, p.displayOrder, p.createdAt, "
        "p.modifiedAt FROM ProductionCrewLibraryLink l JOIN CrewLibraryPerson p ON p.id = l.crewLibraryPersonID WHERE l.crewMemberID = ?1");
    bind(statement, 1, crewMemberID);
    return readFirst(statement, readPerson);
}

}  // namespace tessel::crew_library

namespace tessel {

std::vector<std::string> CrewLibraryImportReport::sentences() const {
    return {crew_library::counted("Imported", imported, "", "person", "people"), crew_library::counted("Used", usedExisting, "existing", "match", "matches"),
            crew_library::counted("Kept", keptSeparate, "separate", "person", "people"), crew_library::counted("Skipped", skipped, "already-present", "record", "records")};
}

}  // namespace tessel
