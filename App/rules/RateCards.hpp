#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/model/PersistenceModels.hpp"
#include "App/rules/Positions.hpp"

// Rate Cards: the contract's scale rates (the hourly floor) per position for a period. A reusable card
// lives on the installation; applying it copies its positions, scales and contract setup into the
// production, which keeps its own cards from then on.
namespace tessel {


// A production's card for one effective period. Several cards may share a label, one per period.
struct ProductionRateCard {
    Uuid id;
    Uuid productionID;
    std::string label;
    CalendarDate effectiveStart;
    std::optional<CalendarDate> effectiveEnd{};
    std::optional<std::string> sourceNotes{};
    bool requiresExplicitPositionTerms = false;
    bool covers(CalendarDate date) const { return date >= effectiveStart && (!effectiveEnd || date <= *effectiveEnd); }
};

struct PositionScaleRate {
    Uuid id;
    Uuid rateCardID;
    Uuid positionID;  // the production position it prices
    EmploymentSchedule schedule = EmploymentSchedule::daily;
    Decimal hourlyAmount;
    std::string currencyCode;
};

// A reusable card and its positions, each with its daily and weekly scale.
struct SavedRateCardPosition {
    Uuid id;
    std::string positionName{};
    std::optional<std::string> occupationCode{};
    std::optional<Decimal> dailyScale{}, weeklyScale{};
    std::string currencyCode = "USD";
    std::string dailyDefaultsData{}, weeklyDefaultsData{};
};

struct SavedRateCard {
    Uuid id;
    std::string displayName;
    CalendarDate effectiveStart;
    std::optional<CalendarDate> effectiveEnd{};
    std::optional<std::string> sourceNotes{};
    std::vector<SavedRateCardPosition> positions;
};

enum class ProductionPositionReadiness { ready, needsReview, missingScale, missingContractSetup, conflictingScale };
std::string_view toRawValue(ProductionPositionReadiness readiness) noexcept;

struct PositionReadiness {
    ProductionPositionReadiness state = ProductionPositionReadiness::ready;
    std::optional<std::string> reason;  // in words, for every state but ready
};

namespace rate_card_words {
inline constexpr std::string_view copies =
    "Tessel copies the rates and contract setup into this Production, so future changes to the saved Rate Card won\u2019t affect this show.";
inline constexpr std::string_view incomplete = "Incomplete \u2014 no Position Scale rates.";
inline constexpr std::string_view savedCardHasNoScales = "This card has no Scale rates. Complete it in the Rate Card library first.";
inline constexpr std::string_view rateExists = "A rate already exists for this effective date. Edit the existing rate instead.";
inline constexpr std::string_view noScale = "No Scale Rate is available for this Position";
inline constexpr std::string_view distinctPositions = "Choose a distinct Production Position for each mapped Rate Card Position.";
}  // namespace rate_card_words

// The contract setup (payroll defaults) that governs a position on a card: the card's own terms for the
// position, else (when the card allows it) a fallback whose source is recorded.
struct PositionTermsResult {
    enum class Kind { resolved, conflict, invalid, missing, unavailable };
    enum class Provenance { explicitTerms, dayJobSnapshot, engagementSnapshot, positionDefaults, productionRules };
    Kind kind = Kind::unavailable;
    std::optional<Provenance> provenance{};
    std::string defaultsData{};              // the governing PositionPayrollDefaults as stored (JSON)
    std::optional<Uuid> termsID{}, cardID{};  // explicit terms
    std::vector<Uuid> competingTermsIDs{};   // conflict
    std::string message{};                   // invalid, missing, unavailable
};
std::string_view toRawValue(PositionTermsResult::Provenance provenance) noexcept;

// Two scale rates of one position and schedule whose cards' periods overlap: neither can be the floor.
struct ScaleConflict {
    Uuid positionID;
    EmploymentSchedule schedule;
    CalendarDate from;                  // where the periods begin to overlap
    std::optional<CalendarDate> through;
    std::vector<Uuid> rateIDs;
};

namespace rate_cards {

// ---- the production's cards ----
std::vector<ProductionRateCard> cards(ModelContext& context, const Uuid& productionID);  // by label, then start
std::vector<PositionScaleRate> scales(ModelContext& context, const Uuid& productionID);
// A new card for a period; refused when a card of that label already starts on that date. A card of the
// same label that is still in force on that date ends the day before: its new period replaces it.
ProductionRateCard create(ModelContext& context, const Uuid& productionID, const std::string& label, CalendarDate from,
                          std::optional<CalendarDate> through);
// The scale of a position on the card of that label starting on `from` (made, open-ended, when there is
// none yet); refused when the card already has a rate for the position and schedule.
PositionScaleRate addScale(ModelContext& context, const Uuid& productionID, const std::string& label, const PositionRecord& position,
                           const std::string& amountText, CalendarDate from, EmploymentSchedule schedule);
std::vector<ScaleConflict> conflicts(ModelContext& context, const Uuid& productionID);
// The scale of a position and schedule on a date, if exactly one card in force prices it.
std::optional<PositionScaleRate> scaleOn(ModelContext& context, const Uuid& productionID, const Uuid& positionID, EmploymentSchedule schedule,
                                         CalendarDate date);
// Tested in this order: overlapping scales, no scale at all, a card in force that needs terms it lacks,
// a state that differs from the one the user last reviewed; else ready.
PositionReadiness readiness(ModelContext& context, const PositionRecord& position);

// Engages a person's engagement in a production position from a date: the engagement's payroll
// position (with a snapshot of the position) and, from that date, whether its rate follows the
// position's scale (the scale then pays, whatever the person's own rate) or the own rate stands as
// over-scale with the scale as its floor.
void engageInPosition(ModelContext& context, const Uuid& engagementID, const PositionRecord& position, CalendarDate from, bool followsScale,
                      Instant now);

// The contract setup of one position on one of the production's cards.
struct CardPositionTerms {
    Uuid id, cardID, positionID;
    std::string dailyDefaultsData;
};
std::vector<CardPositionTerms> terms(ModelContext& context, const Uuid& productionID);

// The position an engagement is paid in: from each date whether its rate follows the scale, and the
// person's own changes of its schedule.
struct EngagementPosition {
    Uuid positionID;
    std::string positionName;
    std::vector<std::pair<CalendarDate, bool>> followsScaleFrom;
    PositionScheduleOverrides personalChanges;
};
std::optional<EngagementPosition> engagementPosition(ModelContext& context, const Uuid& engagementID);

// A person's own changes of the schedule of the position their engagement is engaged in, over the
// position's; refused for an engagement without a position, and for changes that leave no schedule.
// Changes that are all inherited remove them.
void setPersonalScheduleChanges(ModelContext& context, const Uuid& engagementID, const PositionScheduleOverrides& changes, Instant now);
PositionScheduleOverrides personalScheduleChanges(ModelContext& context, const Uuid& engagementID);

// The terms of a position on a card. More than one terms record is a conflict ("Duplicate card/Position
// terms authority."); one is resolved explicitly unless it cannot be read. Without one, a card that
// requires explicit terms has them missing; otherwise the fallback is, in this order, the Job for Today's
// snapshot, the engagement's snapshot (each when given), the position's own defaults when it has any, and
// the production's rules; only the production's rules when the position does not allow its own defaults.
// Defaults that cannot be read are `invalid`.
PositionTermsResult resolveTerms(ModelContext& context, const Uuid& cardID, const PositionRecord& position,
                                 const std::optional<std::string>& dayJobSnapshot = std::nullopt,
                                 const std::optional<std::string>& engagementSnapshot = std::nullopt);
// The same from records in hand; without a card (none in force) the fallback applies.
PositionTermsResult resolveTerms(const ProductionRateCard* card, const std::vector<CardPositionTerms>& productionTerms, const PositionRecord& position,
                                 const std::optional<std::string>& dayJobSnapshot = std::nullopt,
                                 const std::optional<std::string>& engagementSnapshot = std::nullopt);

// ---- the installation's reusable cards ----
std::vector<SavedRateCard> savedCards(ModelContext& context);
SavedRateCard createSaved(ModelContext& context, const std::string& label, CalendarDate from, std::optional<CalendarDate> through, Instant now);
// Sets a position's scale on a saved card: the card position of that name, else a new one taking the
// code and defaults of the Saved Position of that name when there is one.
void setSavedScale(ModelContext& context, const std::string& label, const std::string& positionName, const std::string& amountText,
                   EmploymentSchedule schedule, Instant now);
SavedRateCard savedNamed(ModelContext& context, const std::string& label);
// Adds a saved card as it stands (read from a rate-card file), with its positions; refused when the
// library holds a card of that identity or name.
void addSaved(ModelContext& context, const SavedRateCard& card, Instant now);

// Copies a saved card into the production: a card with its period, and for each card position the
// production position with that occupation code (else that name), or a new copy, with its scales and
// its contract setup as the card's terms. Refused for a card without scales.
ProductionRateCard apply(ModelContext& context, const Uuid& productionID, const SavedRateCard& card, Instant now);

}  // namespace rate_cards
}  // namespace tessel
