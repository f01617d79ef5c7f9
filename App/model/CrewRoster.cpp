#include "CrewRoster.hpp"

#include <algorithm>

#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel::crew_roster {
namespace {

using namespace std::chrono;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;

CrewMember member(ModelContext& context, const Uuid& id) {
    if (auto found = crew_repository::fetchCrewMember(context, id)) return *found;
    throw ModelValidationError("The crew member could not be found.");
}

ProductionEngagement engagement(ModelContext& context, const Uuid& id) {
    if (auto found = crew_repository::fetchEngagement(context, id)) return *found;
    throw ModelValidationError("The engagement could not be found.");
}

bool overlaps(const ProductionEngagement& a, const ProductionEngagement& b) {
    const auto endOf = [](const ProductionEngagement& e) { return e.effectiveThrough ? sys_days(*e.effectiveThrough) : sys_days::max(); };
    return sys_days(a.effectiveFrom) <= endOf(b) && sys_days(b.effectiveFrom) <= endOf(a);
}

Decimal amountEntry(const std::string& text, std::string_view invalid) {
    const auto amount = entry_text::decimal(text);
    if (!amount || amount->isNegative()) throw ModelValidationError(std::string(invalid));
    return *amount;
}

struct TermTable {
    const char* table;
    const char* dateColumn;
    const char* ownerColumn;
};

TermTable tableOf(DatedTermKind kind) {
    switch (kind) {
        case DatedTermKind::rate: return {"EngagementPayRate", "effectiveDate", "engagementID"};
        case DatedTermKind::guarantee: return {"EngagementDailyGuaranteeTerm", "effectiveDate", "engagementID"};
        case DatedTermKind::boxRental: return {"EngagementBoxRentalTerm", "effectiveDate", "engagementID"};
    }
    return {};
}

// Removes the term of the kind on that date; how many there were.
int removeTerm(ModelContext& context, const Uuid& engagementID, DatedTermKind kind, CalendarDate date) {
    const TermTable t = tableOf(kind);
    auto& statement = context.prepare(std::string("DELETE FROM ") + t.table + " WHERE " + t.ownerColumn + " = ?1 AND " +
                                      t.dateColumn + " = ?2");
    columns::bindAll(statement, engagementID, date);
    return statement.exec();
}

std::vector<DatedEngagementTerm> terms(ModelContext& context, const Uuid& engagementID, DatedTermKind kind) {
    std::string sql;
    switch (kind) {
        case DatedTermKind::rate:
            sql = "SELECT effectiveDate, hourlyAmount, NULL, currencyCode FROM EngagementPayRate";
            break;
        case DatedTermKind::guarantee:
            sql = "SELECT effectiveDate, NULL, minimumPaidDurationSeconds, '' FROM EngagementDailyGuaranteeTerm";
            break;
        case DatedTermKind::boxRental:
            sql = "SELECT effectiveDate, dailyAmount, NULL, currencyCode FROM EngagementBoxRentalTerm";
            break;
    }
    auto& statement = context.prepare(sql + " WHERE engagementID = ?1 ORDER BY effectiveDate, rowid");
    columns::bind(statement, 1, engagementID);
    return columns::readAll<DatedEngagementTerm>(statement, [](SQLite::Statement& row) {
        return DatedEngagementTerm{columns::date(row.getColumn(0)),
                                   row.getColumn(1).isNull() ? std::nullopt : std::optional(columns::decimal(row.getColumn(1))),
                                   columns::optionalInteger(row.getColumn(2)), columns::text(row.getColumn(3))};
    });
}

std::optional<std::string> labelName(ModelContext& context, const std::string& table, const std::optional<Uuid>& id) {
    if (!id) return std::nullopt;
    auto& statement = context.prepare("SELECT name FROM " + table + " WHERE id = ?1");
    columns::bind(statement, 1, *id);
    return columns::readFirst(statement, [](SQLite::Statement& row) { return columns::text(row.getColumn(0)); });
}

// The production's label of that name, created when it has none yet.
Uuid labelNamed(ModelContext& context, const std::string& table, const Uuid& productionID, const std::string& name) {
    auto& statement = context.prepare("SELECT id FROM " + table + " WHERE productionID = ?1 AND name = ?2 ORDER BY id");
    columns::bindAll(statement, productionID, name);
    if (const auto id = columns::readFirst(statement, [](SQLite::Statement& row) { return columns::uuid(row.getColumn(0)); })) return *id;
    return table == "EmploymentClassification" ? crew_repository::createClassification(context, productionID, name)
                                               : crew_repository::createCondition(context, productionID, name);
}

void applyLabels(ModelContext& context, ProductionEngagement& e, const EngagementLabels& labels) {
    if (labels.classification) {
        const std::string name(entry_text::trimmed(*labels.classification));
        e.classificationID = name.empty() ? std::nullopt
                                          : std::optional(labelNamed(context, "EmploymentClassification", e.productionID, name));
    }
    if (!labels.conditions) return;
    std::vector<Uuid> ids;
    for (const auto& text : *labels.conditions) {
        const std::string name(entry_text::trimmed(text));
        if (name.empty()) continue;  // --condition "" leaves the engagement without conditions
        ids.push_back(labelNamed(context, "EmploymentCondition", e.productionID, name));
    }
    auto& clear = context.prepare("DELETE FROM EngagementEmploymentCondition WHERE engagementID = ?1");
    columns::bind(clear, 1, e.id);
    clear.exec();
    for (const auto& id : ids) crew_repository::addCondition(context, e.id, id);
}

}  // namespace

std::pair<CrewMember, ProductionEngagement> add(ModelContext& context, const Uuid& productionID, const NewCrewMember& person,
                                                const std::string& currencyCode) {
    const std::string name(entry_text::trimmed(person.displayName));
    if (name.empty()) throw ModelValidationError("Enter a crew member name.");
    for (const auto& other : crew_repository::crewMembers(context, productionID)) {
        if (other.displayName == name) throw ModelValidationError("There is already a crew member named \u201C" + name + "\u201D on this production.");
    }
    const auto member = crew_repository::createCrewMember(context, productionID, name);
    auto engagement = crew_repository::createEngagement(context, productionID, member.id, person.from);
    engagement.crewParticipation = person.participation;
    engagement.regularPrecallDurationSeconds = person.regularPrecallSeconds;
    engagement.regularWrapoutDurationSeconds = person.regularWrapoutSeconds;
    crew_repository::updateEngagement(context, engagement);
    if (!entry_text::isBlank(person.rate)) setRate(context, engagement.id, person.from, person.rate, currencyCode);
    return {member, engagement};
}

void rename(ModelContext& context, const Uuid& crewMemberID, const std::string& displayName) {
    CrewMember m = member(context, crewMemberID);
    const std::string name(entry_text::trimmed(displayName));
    if (name.empty()) throw ModelValidationError("Enter a crew member name.");
    m.displayName = name;
    crew_repository::updateCrewMember(context, m);
}

void moveTo(ModelContext& context, const Uuid& crewMemberID, std::int64_t position) {
    const CrewMember moved = member(context, crewMemberID);
    auto crew = crew_repository::crewMembers(context, moved.productionID);
    if (position < 1 || position > static_cast<std::int64_t>(crew.size())) {
        throw ModelValidationError("Choose a place in the crew order from 1 to " + std::to_string(crew.size()) + ".");
    }
    std::erase_if(crew, [&](const CrewMember& m) { return m.id == crewMemberID; });
    crew.insert(crew.begin() + (position - 1), moved);
    for (std::size_t i = 0; i < crew.size(); ++i) {
        if (crew[i].displayOrder == static_cast<std::int64_t>(i)) continue;
        crew[i].displayOrder = static_cast<std::int64_t>(i);
        crew_repository::updateCrewMember(context, crew[i]);
    }
}

void retire(ModelContext& context, const Uuid& crewMemberID, Instant now) {
    CrewMember m = member(context, crewMemberID);
    if (m.retiredAt) return;
    m.retiredAt = now;
    crew_repository::updateCrewMember(context, m);
}

void unretire(ModelContext& context, const Uuid& crewMemberID) {
    CrewMember m = member(context, crewMemberID);
    m.retiredAt.reset();
    crew_repository::updateCrewMember(context, m);
}

bool hasHistory(ModelContext& context, const Uuid& crewMemberID) {
    auto& statement = context.prepare(
        "SELECT EXISTS (SELECT 1 FROM CrewDailyEntry WHERE crewMemberID = ?1) OR "
        "EXISTS (SELECT 1 FROM PayrollDayActivity WHERE crewMemberID = ?1) OR "
        "EXISTS (SELECT 1 FROM ConfirmedPayStubActualPay WHERE crewMemberID = ?1)");
    columns::bind(statement, 1, crewMemberID);
    statement.executeStep();
    const bool found = statement.getColumn(0).getInt() != 0;
    statement.reset();
    return found;
}

void remove(ModelContext& context, const Uuid& crewMemberID) {
    const CrewMember m = member(context, crewMemberID);
    if (hasHistory(context, crewMemberID)) {
        throw ModelValidationError(m.displayName + " appears on time sheets or pay records of this production, so they cannot be "
                                   "removed; retire them instead to keep that history.");
    }
    crew_repository::removeCrewMember(context, crewMemberID);
}

ProductionEngagement saveEngagement(ModelContext& context, const ProductionEngagement& draft, const EngagementLabels& labels) {
    if (draft.effectiveThrough && sys_days(*draft.effectiveThrough) < sys_days(draft.effectiveFrom)) {
        throw ModelValidationError("The engagement\u2019s last day must be on or after its first day.");
    }
    if (!draft.crewMemberID) throw ModelValidationError("The crew member could not be found.");
    const CrewMember m = member(context, *draft.crewMemberID);
    for (const auto& other : crew_repository::engagementsOf(context, m.id)) {
        if (other.id != draft.id && overlaps(other, draft)) {
            throw ModelValidationError(m.displayName + " already has an engagement from " + calendar_text::formatDate(other.effectiveFrom) +
                                       " in force on those dates; end it before the new one starts.");
        }
    }
    ProductionEngagement saved = draft;
    if (!crew_repository::fetchEngagement(context, draft.id)) {
        const auto created = crew_repository::createEngagement(context, draft.productionID, m.id, draft.effectiveFrom);
        saved.id = created.id;
    }
    applyLabels(context, saved, labels);
    crew_repository::updateEngagement(context, saved);
    return saved;
}

std::optional<ProductionEngagement> engagementOn(ModelContext& context, const Uuid& crewMemberID, CalendarDate date) {
    std::optional<ProductionEngagement> chosen;
    for (const auto& e : crew_repository::engagementsOf(context, crewMemberID)) {
        if (sys_days(e.effectiveFrom) <= sys_days(date) || !chosen) chosen = e;  // come in start order
        if (e.appliesOn(date)) return e;
    }
    return chosen;
}

std::vector<EngagementRecord> records(ModelContext& context, const Uuid& crewMemberID) {
    std::vector<EngagementRecord> found;
    for (const auto& e : crew_repository::engagementsOf(context, crewMemberID)) {
        EngagementRecord record{e, labelName(context, "EmploymentClassification", e.classificationID)};
        for (const auto& id : crew_repository::conditionsOf(context, e.id)) {
            if (auto name = labelName(context, "EmploymentCondition", id)) record.conditions.push_back(*name);
        }
        std::sort(record.conditions.begin(), record.conditions.end());
        record.rates = terms(context, e.id, DatedTermKind::rate);
        record.guarantees = terms(context, e.id, DatedTermKind::guarantee);
        record.boxRentals = terms(context, e.id, DatedTermKind::boxRental);
        record.requiredRestSeconds =
            satellites::integer(satellites::find(context, satelliteTable("EngagementTurnaroundConfiguration"), e.id), "requiredRestSeconds");
        found.push_back(std::move(record));
    }
    return found;
}

void setRate(ModelContext& context, const Uuid& engagementID, CalendarDate from, const std::string& amountText,
             const std::string& currencyCode) {
    engagement(context, engagementID);
    // addPayRate validates the amount; a refusal rolls the removal back with the rest of the action.
    removeTerm(context, engagementID, DatedTermKind::rate, from);
    crew_repository::addPayRate(context, engagementID, from, amountText, currencyCode);
}

void setGuarantee(ModelContext& context, const Uuid& engagementID, CalendarDate from, std::int64_t seconds) {
    engagement(context, engagementID);
    if (seconds <= 0) throw ModelValidationError("Enter a daily guarantee of more than zero hours, such as 10.0.");
    removeTerm(context, engagementID, DatedTermKind::guarantee, from);
    satellites::add(context, satelliteTable("EngagementDailyGuaranteeTerm"), engagementID,
                    {{"effectiveDate", calendar_text::formatInstant(Instant(sys_days(from)))}, {"minimumPaidDurationSeconds", seconds}});
}

void setBoxRental(ModelContext& context, const Uuid& engagementID, CalendarDate from, const std::string& amountText,
                  const std::string& currencyCode) {
    engagement(context, engagementID);
    const Decimal amount = amountEntry(amountText, "Enter the box / kit rental as a non-negative daily amount, such as 25.00.");
    removeTerm(context, engagementID, DatedTermKind::boxRental, from);
    satellites::add(context, satelliteTable("EngagementBoxRentalTerm"), engagementID,
                    {{"effectiveDate", calendar_text::formatInstant(Instant(sys_days(from)))},
                     {"dailyAmount", amount.toString()},
                     {"currencyCode", currencyCode}});
}

void clearTerm(ModelContext& context, const Uuid& engagementID, DatedTermKind kind, CalendarDate from) {
    if (removeTerm(context, engagementID, kind, from) > 0) return;
    const char* noun = kind == DatedTermKind::rate ? "rate" : kind == DatedTermKind::guarantee ? "daily guarantee" : "box / kit rental";
    throw ModelValidationError(std::string("There is no ") + noun + " from " + calendar_text::formatDate(from) + " to clear.");
}

void setRequiredRest(ModelContext& context, const Uuid& engagementID, std::optional<std::int64_t> seconds, Instant now) {
    engagement(context, engagementID);
    const auto& table = satelliteTable("EngagementTurnaroundConfiguration");
    if (!seconds) return satellites::removeAll(context, table, engagementID);
    if (*seconds <= 0) throw ModelValidationError("Enter a required rest of more than zero hours, such as 10.0.");
    const std::string stamp = calendar_text::formatInstant(now);
    StoreFields fields{{"requiredRestSeconds", *seconds}, {"wasAutofilled", std::int64_t{0}}, {"modifiedAt", stamp}};
    if (!satellites::find(context, table, engagementID)) fields.emplace_back("createdAt", stamp);
    satellites::write(context, table, engagementID, fields);
}

std::vector<std::string> recordedCurrencies(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare(
        "SELECT currencyCode FROM EngagementPayRate WHERE engagementID IN (SELECT id FROM ProductionEngagement WHERE productionID = ?1) "
        "UNION SELECT currencyCode FROM EngagementBoxRentalTerm WHERE engagementID IN "
        "(SELECT id FROM ProductionEngagement WHERE productionID = ?1) "
        "UNION SELECT currencyCode FROM EngagementCompensationProvisionTerm WHERE personalDailyAmount IS NOT NULL AND engagementID IN "
        "(SELECT id FROM ProductionEngagement WHERE productionID = ?1) ORDER BY 1");
    columns::bind(statement, 1, productionID);
    return columns::readAll<std::string>(statement, [](SQLite::Statement& row) { return columns::text(row.getColumn(0)); });
}

}  // namespace tessel::crew_roster
