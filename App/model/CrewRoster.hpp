#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/model/ProductionRepository.hpp"

namespace tessel {

// A dated term of an engagement: a rate, a daily guarantee or a box / kit rental from a date on. The
// latest one on or before a date is in force that day.
struct DatedEngagementTerm {
    CalendarDate effectiveDate;
    std::optional<Decimal> amount{};            // rate and box rental
    std::optional<std::int64_t> seconds{};      // guarantee
    std::string currencyCode{};
};

// Everything a crew member's engagements and dated terms say, for showing.
struct EngagementRecord {
    ProductionEngagement engagement;
    std::optional<std::string> classification;
    std::vector<std::string> conditions{};
    std::vector<DatedEngagementTerm> rates{}, guarantees{}, boxRentals{};
    std::optional<std::int64_t> requiredRestSeconds{};
};

// The production's crew list and each person's engagements with their dated terms: the editors' rules.
// Every function validates its whole entry before it writes, and refuses with ModelValidationError.
namespace crew_roster {

// A new crew member with their first engagement from `from` (and its rate from that day, when given).
// People are named by their display name, so two people of a production may not share one.
struct NewCrewMember {
    std::string displayName;
    CalendarDate from;
    CrewParticipation participation = CrewParticipation::fullTime;
    std::optional<std::int64_t> regularPrecallSeconds{};
    std::optional<std::int64_t> regularWrapoutSeconds{};
    std::string rate{};  // empty: no rate yet
};
std::pair<CrewMember, ProductionEngagement> add(ModelContext& context, const Uuid& productionID, const NewCrewMember& person,
                                                const std::string& currencyCode);
void rename(ModelContext& context, const Uuid& crewMemberID, const std::string& displayName);
// Moves the person to place `position` (1 = first) in crew order; the others keep their order.
void moveTo(ModelContext& context, const Uuid& crewMemberID, std::int64_t position);
// Retired people leave the crew list for new DTSes and keep all their history.
void retire(ModelContext& context, const Uuid& crewMemberID, Instant now);
void unretire(ModelContext& context, const Uuid& crewMemberID);
// Removes the person with their engagements; refused while any DTS row or activity names them.
void remove(ModelContext& context, const Uuid& crewMemberID);
bool hasHistory(ModelContext& context, const Uuid& crewMemberID);

// Adds or changes an engagement: its last day is on or after its first, and no two engagements of one
// person are in force on one date. Classification and conditions are named; a new name creates the
// production's label, an empty classification removes it.
struct EngagementLabels {
    std::optional<std::string> classification;          // absent: unchanged
    std::optional<std::vector<std::string>> conditions;  // absent: unchanged
};
ProductionEngagement saveEngagement(ModelContext& context, const ProductionEngagement& engagement, const EngagementLabels& labels);
// The engagement in force on the date, else the person's latest engagement starting before it.
std::optional<ProductionEngagement> engagementOn(ModelContext& context, const Uuid& crewMemberID, CalendarDate date);
std::vector<EngagementRecord> records(ModelContext& context, const Uuid& crewMemberID);

// Dated terms. A term on a date that already has one replaces it. Clearing names the date of the term.
void setRate(ModelContext& context, const Uuid& engagementID, CalendarDate from, const std::string& amountText,
             const std::string& currencyCode);
void setGuarantee(ModelContext& context, const Uuid& engagementID, CalendarDate from, std::int64_t seconds);
void setBoxRental(ModelContext& context, const Uuid& engagementID, CalendarDate from, const std::string& amountText,
                  const std::string& currencyCode);
enum class DatedTermKind { rate, guarantee, boxRental };
// Refused with a sentence when the engagement has no such term on that date.
void clearTerm(ModelContext& context, const Uuid& engagementID, DatedTermKind kind, CalendarDate from);
// The person's own required rest between wrap and the next call; nothing removes it.
void setRequiredRest(ModelContext& context, const Uuid& engagementID, std::optional<std::int64_t> seconds, Instant now);

// The currencies the production's crew pay is recorded in (rates, box rentals, personal allowances).
std::vector<std::string> recordedCurrencies(ModelContext& context, const Uuid& productionID);

}  // namespace crew_roster
}  // namespace tessel
