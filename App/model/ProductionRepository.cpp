#include "ProductionRepository.hpp"

#include "App/model/EntryText.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel {
namespace {

using namespace columns;

template <typename Enum>
std::optional<Enum> optionalRaw(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    return fromRawValue<Enum>(column.getString());
}

template <typename Enum>
std::optional<std::string> rawText(const std::optional<Enum>& value) {
    if (!value) return std::nullopt;
    return std::string(toRawValue(*value));
}

constexpr const char* productionColumns =
    "id, name, createdAt, startDate, dtsTimeDisplayRawValue, defaultLunchDurationSeconds, currencyCode";

Production readProduction(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)),
            text(row.getColumn(1)),
            instant(row.getColumn(2)),
            optionalDate(row.getColumn(3)),
            fromRawValue<DTSTimeDisplay>(text(row.getColumn(4))).value_or(DTSTimeDisplay::payrollDecimal),
            integer(row.getColumn(5)),
            text(row.getColumn(6))};
}

constexpr const char* crewColumns = "id, productionID, displayName, retiredAt, displayOrder";

CrewMember readCrewMember(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)), uuid(row.getColumn(1)), text(row.getColumn(2)), optionalInstant(row.getColumn(3)),
            integer(row.getColumn(4))};
}

constexpr const char* engagementColumns =
    "id, productionID, crewMemberID, classificationID, effectiveFrom, effectiveThrough, notes, "
    "employmentScheduleRawValue, employmentLocationRawValue, crewParticipationRawValue, rulesLocalityOverrideRawValue, "
    "dtsEligibilityStartsAt, regularPrecallDurationSeconds, regularWrapoutDurationSeconds";

ProductionEngagement readEngagement(SQLite::Statement& row) {
    return {uuid(row.getColumn(0)),
            uuid(row.getColumn(1)),
            optionalUuid(row.getColumn(2)),
            optionalUuid(row.getColumn(3)),
            date(row.getColumn(4)),
            optionalDate(row.getColumn(5)),
            text(row.getColumn(6)),
            fromRawValue<EmploymentSchedule>(text(row.getColumn(7))).value_or(EmploymentSchedule::daily),
            optionalRaw<EmploymentLocation>(row.getColumn(8)),
            fromRawValue<CrewParticipation>(text(row.getColumn(9))).value_or(CrewParticipation::fullTime),
            optionalRaw<RulesLocality>(row.getColumn(10)),
            optionalDate(row.getColumn(11)),
            optionalInteger(row.getColumn(12)),
            optionalInteger(row.getColumn(13))};
}

// Binds every column in the order of engagementColumns, for both inserting and updating.
void bindEngagement(SQLite::Statement& statement, const ProductionEngagement& e) {
    bindAll(statement, e.id, e.productionID, e.crewMemberID, e.classificationID, e.effectiveFrom, e.effectiveThrough,
            e.notes, std::string(toRawValue(e.employmentSchedule)), rawText(e.employmentLocation),
            std::string(toRawValue(e.crewParticipation)), rawText(e.rulesLocalityOverride), e.dtsEligibilityStartsAt,
            e.regularPrecallDurationSeconds, e.regularWrapoutDurationSeconds);
}

void execute(ModelContext& context, const std::string& sql, const Uuid& id) {
    auto& statement = context.prepare(sql);
    bind(statement, 1, id);
    statement.exec();
}

std::int64_t nextCrewOrder(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT COALESCE(MAX(displayOrder) + 1, 0) FROM CrewMember WHERE productionID = ?1");
    bind(statement, 1, productionID);
    statement.executeStep();
    return integer(statement.getColumn(0));
}

}  // namespace

namespace production_repository {

Production create(ModelContext& context, const std::string& name, const NewProductionDefaults& defaults, Instant now) {
    if (entry_text::isBlank(name)) throw ModelValidationError("Enter a Production name.");
    const Production production{Uuid::generate(), name, now, std::nullopt, defaults.timeDisplay,
                                defaults.lunchDurationSeconds, defaults.currencyCode};
    auto& insert = context.prepare("INSERT INTO Production (" + std::string(productionColumns) +
                                   ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7)");
    bindAll(insert, production.id, production.name, production.createdAt, production.startDate,
            std::string(toRawValue(production.dtsTimeDisplay)), production.defaultLunchDurationSeconds,
            production.currencyCode);
    insert.exec();

    const CalendarDate today(std::chrono::floor<std::chrono::days>(now));
    auto& workweek = context.prepare("INSERT INTO ProductionWorkweekDefinition (id, productionID, effectiveFrom, "
                                     "startWeekday, startHour, startMinute, isCurrent) VALUES (?1, ?2, ?3, ?4, 0, 0, 1)");
    bindAll(workweek, Uuid::generate(), production.id, today, std::int64_t{defaults.workweekWeekday});
    workweek.exec();

    namespace satellites = satellite_repository;
    using store_schema::satelliteTable;
    satellites::write(context, satelliteTable("ProductionPayrollCalendar"), production.id,
                      {{"startWeekday", std::int64_t{defaults.workweekWeekday}}});
    if (!defaults.department.empty()) {
        satellites::write(context, satelliteTable("ProductionIdentityConfiguration"), production.id,
                          {{"department", defaults.department}});
    }
    satellites::write(context, satelliteTable("ProductionPayComparisonSettings"), production.id,
                      {{"roundingTolerance", defaults.roundingTolerance.toString()}});
    return production;
}

std::optional<Production> fetch(ModelContext& context, const Uuid& id) {
    auto& statement = context.prepare("SELECT " + std::string(productionColumns) + " FROM Production WHERE id = ?1");
    bind(statement, 1, id);
    return readFirst(statement, readProduction);
}

std::vector<Production> list(ModelContext& context) {
    auto& statement = context.prepare("SELECT " + std::string(productionColumns) + " FROM Production ORDER BY createdAt, name");
    return readAll<Production>(statement, readProduction);
}

void update(ModelContext& context, const Production& production) {
    if (entry_text::isBlank(production.name)) {
        throw ModelValidationError("Enter a Production name.");
    }
    auto& statement = context.prepare("UPDATE Production SET name = ?2, startDate = ?3, dtsTimeDisplayRawValue = ?4, "
                                      "defaultLunchDurationSeconds = ?5, currencyCode = ?6 WHERE id = ?1");
    bindAll(statement, production.id, production.name, production.startDate,
            std::string(toRawValue(production.dtsTimeDisplay)), production.defaultLunchDurationSeconds,
            production.currencyCode);
    statement.exec();
}

bool remove(ModelContext& context, const Uuid& id) {
    if (!fetch(context, id)) return false;
    satellite_repository::removeAllOfProduction(context, id);
    execute(context, "DELETE FROM Production WHERE id = ?1", id);
    return true;
}

}  // namespace production_repository

namespace crew_repository {

CrewMember createCrewMember(ModelContext& context, const Uuid& productionID, const std::string& displayName) {
    const CrewMember member{Uuid::generate(), productionID, displayName, std::nullopt, nextCrewOrder(context, productionID)};
    auto& statement = context.prepare("INSERT INTO CrewMember (" + std::string(crewColumns) + ") VALUES (?1, ?2, ?3, ?4, ?5)");
    bindAll(statement, member.id, member.productionID, member.displayName, member.retiredAt, member.displayOrder);
    statement.exec();
    return member;
}

std::optional<CrewMember> fetchCrewMember(ModelContext& context, const Uuid& id) {
    auto& statement = context.prepare("SELECT " + std::string(crewColumns) + " FROM CrewMember WHERE id = ?1");
    bind(statement, 1, id);
    return readFirst(statement, readCrewMember);
}

std::vector<CrewMember> crewMembers(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT " + std::string(crewColumns) +
                                      " FROM CrewMember WHERE productionID = ?1 ORDER BY displayOrder, displayName");
    bind(statement, 1, productionID);
    return readAll<CrewMember>(statement, readCrewMember);
}

void updateCrewMember(ModelContext& context, const CrewMember& member) {
    auto& statement = context.prepare("UPDATE CrewMember SET displayName = ?2, retiredAt = ?3, displayOrder = ?4 WHERE id = ?1");
    bindAll(statement, member.id, member.displayName, member.retiredAt, member.displayOrder);
    statement.exec();
}

void removeCrewMember(ModelContext& context, const Uuid& id) {
    satellite_repository::removeOwnedBy(context, store_schema::SatelliteOwner::engagement,
                                        "SELECT id FROM ProductionEngagement WHERE crewMemberID = ?1", id);
    execute(context, "DELETE FROM CrewMember WHERE id = ?1", id);
}

ProductionEngagement createEngagement(ModelContext& context, const Uuid& productionID, const Uuid& crewMemberID,
                                      CalendarDate effectiveFrom) {
    ProductionEngagement engagement{Uuid::generate(), productionID, crewMemberID, std::nullopt, effectiveFrom,
                                    std::nullopt,     "",           EmploymentSchedule::daily, std::nullopt,
                                    CrewParticipation::fullTime, std::nullopt, std::nullopt, std::nullopt, std::nullopt};
    auto& statement = context.prepare("INSERT INTO ProductionEngagement (" + std::string(engagementColumns) +
                                      ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14)");
    bindEngagement(statement, engagement);
    statement.exec();
    return engagement;
}

std::optional<ProductionEngagement> fetchEngagement(ModelContext& context, const Uuid& id) {
    auto& statement = context.prepare("SELECT " + std::string(engagementColumns) + " FROM ProductionEngagement WHERE id = ?1");
    bind(statement, 1, id);
    return readFirst(statement, readEngagement);
}

std::vector<ProductionEngagement> engagementsOf(ModelContext& context, const Uuid& crewMemberID) {
    auto& statement = context.prepare("SELECT " + std::string(engagementColumns) +
                                      " FROM ProductionEngagement WHERE crewMemberID = ?1 ORDER BY effectiveFrom");
    bind(statement, 1, crewMemberID);
    return readAll<ProductionEngagement>(statement, readEngagement);
}

std::vector<ProductionEngagement> engagements(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare("SELECT " + std::string(engagementColumns) +
                                      " FROM ProductionEngagement WHERE productionID = ?1 ORDER BY effectiveFrom");
    bind(statement, 1, productionID);
    return readAll<ProductionEngagement>(statement, readEngagement);
}

void updateEngagement(ModelContext& context, const ProductionEngagement& e) {
    auto& statement = context.prepare(
        "UPDATE ProductionEngagement SET productionID = ?2, crewMemberID = ?3, classificationID = ?4, effectiveFrom = ?5, "
        "effectiveThrough = ?6, notes = ?7, employmentScheduleRawValue = ?8, employmentLocationRawValue = ?9, "
        "crewParticipationRawValue = ?10, rulesLocalityOverrideRawValue = ?11, dtsEligibilityStartsAt = ?12, "
        "regularPrecallDurationSeconds = ?13, regularWrapoutDurationSeconds = ?14 WHERE id = ?1");
    bindEngagement(statement, e);
    statement.exec();
}

void removeEngagement(ModelContext& context, const Uuid& id) {
    satellite_repository::removeOwnedBy(context, store_schema::SatelliteOwner::engagement, "SELECT ?1", id);
    execute(context, "DELETE FROM ProductionEngagement WHERE id = ?1", id);
}

EngagementPayRate addPayRate(ModelContext& context, const Uuid& engagementID, CalendarDate effectiveDate,
                             const std::string& hourlyAmountText, const std::string& currencyCode) {
    const auto amount = entry_text::decimal(hourlyAmountText);
    if (!amount) throw ModelValidationError("Enter a valid hourly rate.");
    if (amount->isNegative()) throw ModelValidationError("Enter a non-negative hourly rate.");
    const EngagementPayRate rate{Uuid::generate(), engagementID, effectiveDate, *amount, currencyCode};
    auto& statement = context.prepare("INSERT INTO EngagementPayRate (id, engagementID, effectiveDate, hourlyAmount, "
                                      "currencyCode) VALUES (?1, ?2, ?3, ?4, ?5)");
    bindAll(statement, rate.id, rate.engagementID, rate.effectiveDate, rate.hourlyAmount, rate.currencyCode);
    statement.exec();
    return rate;
}

EngagementPayRate readPayRate(SQLite::Statement& row) {
    return EngagementPayRate{uuid(row.getColumn(0)), uuid(row.getColumn(1)), date(row.getColumn(2)), decimal(row.getColumn(3)),
                             text(row.getColumn(4))};
}

std::vector<EngagementPayRate> payRates(ModelContext& context, const Uuid& engagementID) {
    auto& statement = context.prepare("SELECT id, engagementID, effectiveDate, hourlyAmount, currencyCode FROM "
                                      "EngagementPayRate WHERE engagementID = ?1 ORDER BY effectiveDate");
    bind(statement, 1, engagementID);
    return readAll<EngagementPayRate>(statement, readPayRate);
}

std::map<Uuid, std::vector<EngagementPayRate>> payRatesOfProduction(ModelContext& context, const Uuid& productionID) {
    auto& statement = context.prepare(
        "SELECT r.id, r.engagementID, r.effectiveDate, r.hourlyAmount, r.currencyCode FROM EngagementPayRate r "
        "JOIN ProductionEngagement e ON r.engagementID = e.id WHERE e.productionID = ?1 ORDER BY r.engagementID, r.effectiveDate");
    bind(statement, 1, productionID);
    std::map<Uuid, std::vector<EngagementPayRate>> rates;
    while (statement.executeStep()) {
        auto rate = readPayRate(statement);
        rates[rate.engagementID].push_back(std::move(rate));
    }
    return rates;
}

Uuid createClassification(ModelContext& context, const Uuid& productionID, const std::string& name) {
    const Uuid id = Uuid::generate();
    auto& statement = context.prepare("INSERT INTO EmploymentClassification (id, productionID, name) VALUES (?1, ?2, ?3)");
    bindAll(statement, id, productionID, name);
    statement.exec();
    return id;
}

Uuid createCondition(ModelContext& context, const Uuid& productionID, const std::string& name) {
    const Uuid id = Uuid::generate();
    auto& statement = context.prepare("INSERT INTO EmploymentCondition (id, productionID, name) VALUES (?1, ?2, ?3)");
    bindAll(statement, id, productionID, name);
    statement.exec();
    return id;
}

void addCondition(ModelContext& context, const Uuid& engagementID, const Uuid& conditionID) {
    auto& statement = context.prepare("INSERT OR IGNORE INTO EngagementEmploymentCondition (engagementID, conditionID) VALUES (?1, ?2)");
    bindAll(statement, engagementID, conditionID);
    statement.exec();
}

std::vector<Uuid> conditionsOf(ModelContext& context, const Uuid& engagementID) {
    auto& statement = context.prepare("SELECT conditionID FROM EngagementEmploymentCondition WHERE engagementID = ?1 ORDER BY conditionID");
    bind(statement, 1, engagementID);
    return readAll<Uuid>(statement, [](SQLite::Statement& row) { return uuid(row.getColumn(0)); });
}

void removeClassification(ModelContext& context, const Uuid& id) {
    execute(context, "DELETE FROM EmploymentClassification WHERE id = ?1", id);
}

void removeCondition(ModelContext& context, const Uuid& id) { execute(context, "DELETE FROM EmploymentCondition WHERE id = ?1", id); }

}  // namespace crew_repository
}  // namespace tessel
