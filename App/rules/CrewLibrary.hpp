#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/model/ProductionRepository.hpp"

// The crew library: people a timekeeper works with from show to show, each with a preferred position and
// DTS title, kept on the installation. A production's crew member may be linked to a library person;
// changes to the library never reach a production's crew or payroll history.
namespace tessel {

struct CrewLibraryPerson {
    Uuid id;
    std::string displayName;
    std::optional<Uuid> preferredRatePackagePositionID{};
    std::optional<std::string> preferredPositionName{}, preferredDTSTitle{};
    std::int64_t displayOrder = 0;
    Instant createdAt{}, modifiedAt{};
};

struct CrewLibraryImportConflict {
    CrewLibraryPerson imported;
    Uuid existingID;
    std::string existingDisplayName;
    std::optional<std::string> existingPreferredPositionName{}, existingPreferredDTSTitle{};
};

struct CrewLibraryImportPlan {
    std::vector<CrewLibraryPerson> newPeople;
    std::vector<CrewLibraryImportConflict> conflicts;
    int exactIdentityMatchCount = 0;
};

enum class CrewLibraryImportResolution { useExisting, importSeparate };

struct CrewLibraryImportReport {
    int imported = 0, usedExisting = 0, keptSeparate = 0, skipped = 0;
    // "Imported 2 people.", "Used 1 existing match.", … one sentence for each count, singular for one.
    std::vector<std::string> sentences() const;
};

namespace crew_library_words {
inline constexpr std::string_view blankName = "A Crew Library name is blank.";
inline constexpr std::string_view chooseEveryMatch = "Choose how to handle every possible Crew Library match.";
inline constexpr std::string_view importComplete = "Crew Library Import Complete";
inline constexpr std::string_view deleteNote = "Existing Production crew and payroll history will not be changed.";
inline constexpr std::string_view defaultFileName = "Tessel-Crew-Library.tesselcrewlibrary";
}  // namespace crew_library_words

namespace crew_library {

std::vector<CrewLibraryPerson> list(ModelContext& context);
// The person of that name (compared as `sameName` does); refused with a sentence when none or several.
CrewLibraryPerson named(ModelContext& context, const std::string& name);
CrewLibraryPerson add(ModelContext& context, const std::string& name, const std::optional<std::string>& position,
                      const std::optional<std::string>& dtsTitle, Instant now);
// Removes the person and the links to them; the productions' crew members stay as they are.
void remove(ModelContext& context, const CrewLibraryPerson& person);

// Two names are the same person's when they match ignoring case and the spacing between words.
bool sameName(const std::string& a, const std::string& b);

// People already in the library by identity are skipped; people with the name of someone in it are
// possible matches to resolve; the rest are new.
CrewLibraryImportPlan plan(ModelContext& context, const std::vector<CrewLibraryPerson>& people);
// Adds the new people and, per resolution keyed by the imported person's id, either nothing (the
// existing person is used) or the imported person beside the existing one. Refused, adding nobody,
// while a possible match has no resolution.
CrewLibraryImportReport apply(ModelContext& context, const CrewLibraryImportPlan& plan,
                              const std::map<Uuid, CrewLibraryImportResolution>& resolutions, Instant now);

// "Imported 2 people.": the verb, the count and the noun, singular for one.
std::string counted(std::string_view verb, int count, std::string_view what, std::string_view one, std::string_view many);

// Links a production's crew member to a library person (replacing an earlier link).
void link(ModelContext& context, const Uuid& productionID, const Uuid& crewMemberID, const CrewLibraryPerson& person, Instant now);
std::optional<CrewLibraryPerson> linkedPerson(ModelContext& context, const Uuid& crewMemberID);

}  // namespace crew_library
}  // namespace tessel
