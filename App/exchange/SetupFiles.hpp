#pragma once

#include <string>
#include <vector>

#include "App/rules/CrewLibrary.hpp"
#include "App/rules/RateCards.hpp"

// The two files reusable setup travels in between installations: the crew library
// (".tesselcrewlibrary") and a saved Rate Card (".tesselratepackage"). Both are pretty printed JSON with
// sorted keys and ISO 8601 dates; both are read with the production archive's errors and sentences.
namespace tessel::setup_files {

inline constexpr std::string_view rateCardExtension = ".tesselratepackage";

std::string writeCrewLibrary(const std::vector<CrewLibraryPerson>& people, Instant exportedAt);
// Throws ProductionArchiveError: not JSON or not the document, a version other than 1, a blank name.
std::vector<CrewLibraryPerson> readCrewLibrary(const std::string& bytes);

std::string writeRateCard(const SavedRateCard& card);
// Throws ProductionArchiveError: not JSON or not the document, a version other than 1, a blank name, a
// position that is not valid, an occupation code twice.
SavedRateCard readRateCard(const std::string& bytes);

}  // namespace tessel::setup_files
