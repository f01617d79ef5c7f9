#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/model/ModelContext.hpp"
#include "App/rules/PositionDefaults.hpp"

// Positions: the jobs crew are engaged in, each with its occupation code and payroll defaults. Saved
// Positions live on the installation for every show; each production keeps its own positions, copied
// from a Rate Card or made for the show, so that later edits elsewhere never change its history.
namespace tessel {

enum class PositionScope { saved, production };

struct PositionRecord {
    Uuid id;
    PositionScope scope = PositionScope::production;
    std::optional<Uuid> productionID{};  // production positions only
    std::string positionName{};
    std::optional<std::string> occupationCode{};
    // What the position defaults to when a crew member is engaged in it, read from the stored JSON (which
    // keeps keys this version does not read). Stored defaults that cannot be read read as none here; the
    // terms resolver reports them.
    PositionPayrollDefaults dailyDefaults{};
    std::string dailyDefaultsData{}, weeklyDefaultsData{};
    std::int64_t displayOrder = 0;
    Instant modifiedAt{};
    // Production positions: where the position was copied from, and the state the user last saw.
    std::optional<Uuid> sourceRatePackageID{}, sourcePackagePositionID{};
    bool isActive = true;
    std::optional<std::string> reviewedFingerprint{};
    // Whether, without contract setup on its Rate Card, the position's own defaults (and the snapshots
    // taken of it) may govern a day. Positions made for the show allow it; copies from a card do not,
    // so that the card's terms, not stale defaults, are the authority.
    bool legacyDefaultsAllowed = true;
};

// What the user enters for a position; absent fields are left as they are on an edit.
struct PositionEdit {
    std::optional<std::string> positionName;
    std::optional<std::optional<std::string>> occupationCode;  // an empty inner value removes the code
    std::optional<std::optional<std::string>> hourlyAmount;    // text as typed; an empty inner value removes it
    // Changes of the day's schedule; each given provision replaces the position's.
    std::optional<PositionProvision> minimumCall{}, overtime{}, doubleTime{};
    std::optional<bool> legacyDefaultsAllowed{};
};

namespace position_words {
inline constexpr std::string_view digitsOnly = "Occupation Code may contain digits only.";
inline constexpr std::string_view invalidScale = "Enter a valid non-negative scale hourly rate.";
inline constexpr std::string_view twoPlaces = "Scale hourly rates may contain no more than two decimal places.";
inline constexpr std::string_view usedByHistory = "This Position is used by Production history and cannot be removed.";
inline constexpr std::string_view duplicateSavedCodes = "Duplicate Saved Position occupation codes need review:";
inline constexpr std::string_view duplicateProductionCodes = "Duplicate assignable occupation codes require Production setup review:";
}  // namespace position_words

namespace positions {

// Digits only, and (among Saved Positions) used by no other saved position. Refuses with
// ModelValidationError and the sentence.
std::optional<std::string> validatedOccupationCode(const std::string& text);
// A non-negative decimal with at most two places, for scales and a position's hourly amount.
Decimal validatedScaleAmount(const std::string& text);

std::vector<PositionRecord> list(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID);
std::optional<PositionRecord> find(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID, const Uuid& id);
// The position carrying the name; refused with a sentence when none or several do.
PositionRecord named(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID, const std::string& name);

// Adds or changes a position as the user entered it: the user has then seen it, so its fingerprint is
// recorded. Names are unique within a scope.
PositionRecord add(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID, const PositionEdit& edit, Instant now);
PositionRecord update(ModelContext& context, const PositionRecord& position, const PositionEdit& edit, Instant now);
// Writes a production position copied from elsewhere as it is (not yet reviewed by the user).
void insertCopy(ModelContext& context, const PositionRecord& position);

// Refuses (ModelValidationError, with the schedule editor's sentence) changes of the day's schedule that
// would leave one of the schedules they meet no schedule at all: the position's own when it has one,
// else the production's ordinary schedules in force on `today` (the example schedule for a Saved Position).
void checkScheduleChanges(ModelContext& context, const PositionRecord& position, const PositionScheduleOverrides& changes, CalendarDate today);

// Refused while a DTS row's Job for Today or rerate, or an engagement, names the position; its scales
// and card terms go with it.
void remove(ModelContext& context, const PositionRecord& position);

// The state of a position the user reviews: its name, code and defaults.
std::string fingerprint(const PositionRecord& position);

// Occupation codes carried by more than one position of the scope, each as "1234: Gaffer, Chief Lighting".
std::vector<std::string> duplicateCodes(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID);

}  // namespace positions
}  // namespace tessel
