#include "Positions.hpp"

#include <algorithm>
#include <map>

#include "App/model/EntryText.hpp"
#include "App/model/JSONFields.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel::positions {
namespace {

using namespace columns;

const char* tableOf(PositionScope scope) { return scope == PositionScope::saved ? "PositionPreset" : "ProductionPosition"; }

// Stored defaults as far as they can be read: the terms resolver is where unreadable ones are reported.
PositionPayrollDefaults defaultsFrom(const std::string& data) {
    try {
        return position_defaults::read(data);
    } catch (const MalformedInputError&) {
        return {};
    }
}

PositionRecord readSaved(SQLite::Statement& row) {
    PositionRecord p{.id = uuid(row.getColumn(0)), .scope = PositionScope::saved};
    p.positionName = text(row.getColumn(1));
    p.occupationCode = optionalText(row.getColumn(2));
    p.dailyDefaultsData = blob(row.getColumn(3));
    p.weeklyDefaultsData = blob(row.getColumn(4));
    p.displayOrder = integer(row.getColumn(5));
    p.modifiedAt = instant(row.getColumn(6));
    p.dailyDefaults = defaultsFrom(p.dailyDefaultsData);
    return p;
}

PositionRecord readProduction(SQLite::Statement& row) {
    PositionRecord p{.id = uuid(row.getColumn(0)), .scope = PositionScope::production};
    p.productionID = uuid(row.getColumn(1));
    p.positionName = text(row.getColumn(2));
    p.occupationCode = optionalText(row.getColumn(3));
    p.dailyDefaultsData = blob(row.getColumn(4));
    p.weeklyDefaultsData = blob(row.getColumn(5));
    p.displayOrder = integer(row.getColumn(6));
    p.modifiedAt = instant(row.getColumn(7));
    p.sourceRatePackageID = optionalUuid(row.getColumn(8));
    p.sourcePackagePositionID = optionalUuid(row.getColumn(9));
    p.isActive = boolean(row.getColumn(10));
    p.reviewedFingerprint = optionalText(row.getColumn(11));
    p.legacyDefaultsAllowed = boolean(row.getColumn(12));
    p.dailyDefaults = defaultsFrom(p.dailyDefaultsData);
    return p;
}

constexpr const char* savedColumns = "id, positionName, occupationCode, dailyDefaultsData, weeklyDefaultsData, displayOrder, modifiedAt";
constexpr const char* productionColumns =
    "id, productionID, positionName, occupationCode, dailyDefaultsData, weeklyDefaultsData, displayOrder, modifiedAt, sourceRatePackageID, "
    "sourcePackagePositionID, isActive, reviewedFingerprint, legacyDefaultsAllowed";

void write(ModelContext& context, const PositionRecord& p, bool insert) {
    if (p.scope == PositionScope::saved) {
        auto& statement = context.prepare(
            insert ? "INSERT INTO PositionPreset (id, positionName, occupationCode, dailyDefaultsData, weeklyDefaultsData, displayOrder, modifiedAt, "
                     "createdAt) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?7)"
                   : "UPDATE PositionPreset SET positionName = ?2, occupationCode = ?3, dailyDefaultsData = ?4, weeklyDefaultsData = ?5, "
                     "displayOrder = ?6, modifiedAt = ?7 WHERE id = ?1");
        bindAll(statement, p.id, p.positionName, p.occupationCode);
        bindBlob(statement, 4, p.dailyDefaultsData);
        bindBlob(statement, 5, p.weeklyDefaultsData);
        bind(statement, 6, p.displayOrder);
        bind(statement, 7, p.modifiedAt);
        statement.exec();
        return;
    }
    auto& statement = context.prepare(
        insert ? "INSERT INTO ProductionPosition (id, productionID, positionName, occupationCode, dailyDefaultsData, weeklyDefaultsData, displayOrder, "
                 "modifiedAt, sourceRatePackageID, sourcePackagePositionID, isActive, reviewedFingerprint, legacyDefaultsAllowed) VALUES (?1, ?2, ?3, "
                 "?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13)"
               : "UPDATE ProductionPosition SET productionID = ?2, positionName = ?3, occupationCode = ?4, dailyDefaultsData = ?5, weeklyDefaultsData "
                 "= ?6, displayOrder = ?7, modifiedAt = ?8, sourceRatePackageID = ?9, sourcePackagePositionID = ?10, isActive = ?11, "
                 "reviewedFingerprint = ?12, legacyDefaultsAllowed = ?13 WHERE id = ?1");
    bindAll(statement, p.id, *p.productionID, p.positionName, p.occupationCode);
    bindBlob(statement, 5, p.dailyDefaultsData);
    bindBlob(statement, 6, p.weeklyDefaultsData);
    bind(statement, 7, p.displayOrder);
    bind(statement, 8, p.modifiedAt);
    bind(statement, 9, p.sourceRatePackageID);
    bind(statement, 10, p.sourcePackagePositionID);
    bind(statement, 11, p.isActive);
    bind(statement, 12, p.reviewedFingerprint);
    bind(statement, 13, p.legacyDefaultsAllowed);
    statement.exec();
}

// The edit applied to a position, checked whole before anything is written.
}  // namespace

void checkScheduleChanges(ModelContext& context, const PositionRecord& p, const PositionScheduleOverrides& overrides, CalendarDate today) {
    std::vector<OrdinaryDayScheduleDraft> schedules;
    if (p.dailyDefaults.ordinaryDaySchedule) {
        schedules.push_back(*p.dailyDefaults.ordinaryDaySchedule);
    } else if (const auto revision = p.productionID ? ProductionRulesets::currentRevision(context, *p.productionID, today) : std::nullopt) {
        const auto draft = ProductionRulesets::readDraft(context, *revision);
        schedules = {draft.localSchedule, draft.distantSchedule};
    } else {
        schedules.push_back(ProductionRulesets::exampleSchedule(RulesLocality::local));
    }
    try {
        for (const auto& schedule : schedules) position_defaults::adjusted(schedule, overrides);
    } catch (const ProductionRulesetValidationError& error) {
        throw ModelValidationError(error.what());
    }
}

namespace {

PositionRecord edited(ModelContext& context, PositionRecord p, const PositionEdit& edit, CalendarDate today) {
    if (edit.positionName) {
        const auto name = *edit.positionName;
        if (name.find_first_not_of(" \t") == std::string::npos) throw ModelValidationError("Enter a Position name.");
        for (const auto& other : list(context, p.scope, p.productionID)) {
            if (other.id != p.id && other.positionName == name) throw ModelValidationError("A Position named " + entry_text::quoted(name) + " already exists.");
        }
        p.positionName = name;
    }
    if (edit.occupationCode) {
        p.occupationCode = *edit.occupationCode ? validatedOccupationCode(**edit.occupationCode) : std::nullopt;
        if (p.occupationCode && p.scope == PositionScope::saved) {
            for (const auto& other : list(context, PositionScope::saved, std::nullopt)) {
                if (other.id != p.id && other.occupationCode == p.occupationCode) {
                    throw ModelValidationError("Occupation code " + *p.occupationCode + " is already used by Saved Position " + entry_text::quoted(other.positionName) + ".");
                }
            }
        }
    }
    if (edit.minimumCall || edit.overtime || edit.doubleTime) {
        auto overrides = p.dailyDefaults.scheduleOverrides.value_or(PositionScheduleOverrides{});
        if (edit.minimumCall) overrides.minimumCall = *edit.minimumCall;
        if (edit.overtime) overrides.overtime = *edit.overtime;
        if (edit.doubleTime) overrides.doubleTime = *edit.doubleTime;
        checkScheduleChanges(context, p, overrides, today);
        p.dailyDefaultsData = position_defaults::withOverrides(p.dailyDefaultsData, overrides);
        p.dailyDefaults.scheduleOverrides = overrides.empty() ? std::nullopt : std::optional(overrides);
    }
    if (edit.legacyDefaultsAllowed) p.legacyDefaultsAllowed = *edit.legacyDefaultsAllowed;
    if (edit.hourlyAmount) {
        p.dailyDefaults.hourlyAmount = *edit.hourlyAmount ? std::optional(validatedScaleAmount(**edit.hourlyAmount)) : std::nullopt;
        p.dailyDefaultsData = position_defaults::withHourlyAmount(p.dailyDefaultsData, p.dailyDefaults.hourlyAmount, p.dailyDefaults.currencyCode);
    }
    return p;
}

bool used(ModelContext& context, const Uuid& positionID) {
    auto& statement = context.prepare(
        "SELECT EXISTS (SELECT 1 FROM CrewDailyJobConfiguration WHERE productionPositionID = ?1) OR EXISTS (SELECT 1 FROM "
        "CrewDailyRerateConfiguration WHERE positionPresetID = ?1) OR EXISTS (SELECT 1 FROM EngagementPositionConfiguration WHERE sourcePresetID = ?1)");
    bind(statement, 1, positionID);
    return readFirst(statement, [](SQLite::Statement& row) { return row.getColumn(0).getInt() != 0; }).value_or(false);
}

}  // namespace

std::optional<std::string> validatedOccupationCode(const std::string& text) {
    if (text.empty()) return std::nullopt;
    if (!std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= '0' && c <= '9'; })) {
        throw ModelValidationError(std::string(position_words::digitsOnly));
    }
    return text;
}

Decimal validatedScaleAmount(const std::string& text) {
    const auto amount = Decimal::parse(text);
    if (!amount || amount->isNaN() || *amount < Decimal(0)) throw ModelValidationError(std::string(position_words::invalidScale));
    const auto point = text.find('.');
    if (point != std::string::npos && text.size() - point - 1 > 2) throw ModelValidationError(std::string(position_words::twoPlaces));
    return *amount;
}

std::vector<PositionRecord> list(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID) {
    if (scope == PositionScope::saved) {
        auto& statement = context.prepare(std::string("SELECT ") + savedColumns + " FROM PositionPreset ORDER BY displayOrder, positionName, id");
        return readAll<PositionRecord>(statement, readSaved);
    }
    auto& statement = context.prepare(std::string("SELECT ") + productionColumns +
                                      " FROM ProductionPosition WHERE productionID = ?1 ORDER BY displayOrder, positionName, id");
    bind(statement, 1, *productionID);
    return readAll<PositionRecord>(statement, readProduction);
}

std::optional<PositionRecord> find(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID, const Uuid& id) {
    for (auto& p : list(context, scope, productionID)) {
        if (p.id == id) return std::move(p);
    }
    return std::nullopt;
}

PositionRecord named(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID, const std::string& name) {
    std::vector<PositionRecord> found;
    for (auto& p : list(context, scope, productionID)) {
        if (p.positionName == name) found.push_back(std::move(p));
    }
    if (found.empty()) {
        throw ModelValidationError(std::string(scope == PositionScope::saved ? "There is no Saved Position named " : "This Production has no Position named ") +
                                   entry_text::quoted(name) + ".");
    }
    if (found.size() > 1) throw ModelValidationError("More than one Position is named " + entry_text::quoted(name) + "; rename one to tell them apart.");
    return std::move(found.front());
}

PositionRecord add(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID, const PositionEdit& edit, Instant now) {
    if (!edit.positionName) throw ModelValidationError("Enter a Position name.");
    PositionRecord p{.id = Uuid::generate(), .scope = scope};
    p.productionID = scope == PositionScope::production ? productionID : std::nullopt;
    p.displayOrder = static_cast<std::int64_t>(list(context, scope, productionID).size());
    p.dailyDefaultsData = position_defaults::withHourlyAmount("", std::nullopt, "USD");
    p = edited(context, std::move(p), edit, CalendarDate(std::chrono::floor<std::chrono::days>(now)));
    p.modifiedAt = now;
    if (scope == PositionScope::production) p.reviewedFingerprint = fingerprint(p);
    write(context, p, true);
    return p;
}

PositionRecord update(ModelContext& context, const PositionRecord& position, const PositionEdit& edit, Instant now) {
    auto p = edited(context, position, edit, CalendarDate(std::chrono::floor<std::chrono::days>(now)));
    p.modifiedAt = now;
    if (p.scope == PositionScope::production) p.reviewedFingerprint = fingerprint(p);
    write(context, p, false);
    return p;
}

void insertCopy(ModelContext& context, const PositionRecord& position) { write(context, position, true); }

void remove(ModelContext& context, const PositionRecord& position) {
    if (position.scope == PositionScope::production && used(context, position.id)) {
        throw ModelValidationError(std::string(position_words::usedByHistory));
    }
    // Its scales and card terms price nothing else.
    if (position.scope == PositionScope::production) {
        for (const char* sql : {"DELETE FROM PositionScaleRate WHERE positionPresetID = ?1",
                                "DELETE FROM ProductionRateCardPositionTerms WHERE productionPositionID = ?1"}) {
            auto& statement = context.prepare(sql);
            bind(statement, 1, position.id);
            statement.exec();
        }
    }
    auto& statement = context.prepare(std::string("DELETE FROM ") + tableOf(position.scope) + " WHERE id = ?1");
    bind(statement, 1, position.id);
    statement.exec();
}

std::string fingerprint(const PositionRecord& p) {
    Json json{{"positionName", p.positionName},
              {"occupationCode", p.occupationCode ? Json(*p.occupationCode) : Json()},
              {"dailyDefaults", Json::parse(p.dailyDefaultsData.empty() ? "{}" : p.dailyDefaultsData, nullptr, false)},
              {"weeklyDefaults", Json::parse(p.weeklyDefaultsData.empty() ? "{}" : p.weeklyDefaultsData, nullptr, false)}};
    return json.dump();
}

std::vector<std::string> duplicateCodes(ModelContext& context, PositionScope scope, const std::optional<Uuid>& productionID) {
    std::map<std::string, std::vector<std::string>> byCode;
    for (const auto& p : list(context, scope, productionID)) {
        if (p.occupationCode) byCode[*p.occupationCode].push_back(p.positionName);
    }
    std::vector<std::string> duplicates;
    for (const auto& [code, names] : byCode) {
        if (names.size() < 2) continue;
        std::string line = code + ":";
        for (std::size_t i = 0; i < names.size(); ++i) line += (i ? ", " : " ") + names[i];
        duplicates.push_back(line);
    }
    return duplicates;
}

}  // namespace tessel::positions
