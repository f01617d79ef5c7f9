#include "ProductionRulesets.hpp"

#include <algorithm>
#include <array>
#include <set>

#include "App/model/EntryText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/rules/CompensationProvisions.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using Error = ProductionRulesetValidationError;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;

// The flat columns of one locality's ordinary schedule, in the order they are read and written.
constexpr std::array<std::string_view, 19> scheduleColumns{
    "straightTimeRuleID",         "timeAndAHalfRuleID",           "doubleTimeRuleID",
    "dailyMinimumRuleID",         "finalBandMinimumRuleID",       "bandMinimumTargetRuleID",
    "straightTimeUpperSeconds",   "timeAndAHalfUpperSeconds",     "straightTimeMultiplier",
    "timeAndAHalfMultiplier",     "doubleTimeMultiplier",         "dailyMinimumEnabled",
    "dailyMinimumSeconds",        "finalBandMinimumEnabled",      "finalBandMinimumSeconds",
    "straightTimeThresholdBasisRawValue", "overtimeThresholdBasisRawValue", "doubleTimeThresholdBasisRawValue",
    "thirdBandEnabled"};

std::string distantColumn(std::string_view local) {
    std::string name(local);
    name[0] = static_cast<char>(name[0] - 'a' + 'A');
    return "distant" + name;
}

std::string columnList() {
    std::string list = "name, sourceNotes, effectiveFrom, defaultRulesLocalityRawValue";
    for (auto column : scheduleColumns) list += ", " + std::string(column);
    for (auto column : scheduleColumns) list += ", " + distantColumn(column);
    return list + ", localSixthDayScheduleData, localSeventhDayScheduleData, distantSixthDayScheduleData, distantSeventhDayScheduleData";
}

// Reads one locality's schedule from its 19 columns; an absent distant value falls back to the local one.
OrdinaryDayScheduleDraft readSchedule(SQLite::Statement& row, int first, const OrdinaryDayScheduleDraft* fallback) {
    const auto column = [&](int i) { return row.getColumn(first + i); };
    const auto text = [&](int i, const std::string& fallbackValue) {
        return column(i).isNull() ? fallbackValue : column(i).getString();
    };
    const auto integer = [&](int i, std::int64_t fallbackValue) { return column(i).isNull() ? fallbackValue : column(i).getInt64(); };
    const auto decimal = [&](int i, const Decimal& fallbackValue) {
        if (column(i).isNull()) return fallbackValue;
        if (const auto value = Decimal::parse(column(i).getString())) return *value;
        throw StoreCorruptionError("A stored pay band multiplier is not a decimal number.");
    };
    const auto basis = [&](int i, DurationBasis fallbackValue) {
        if (column(i).isNull()) return fallbackValue;
        return durationBasisFromRawValue(column(i).getString()).value_or(fallbackValue);
    };
    const OrdinaryDayScheduleDraft base = fallback ? *fallback : OrdinaryDayScheduleDraft{};
    const auto baseBand = [&](std::size_t i) { return base.bands.size() > i ? base.bands[i] : RulesetPayBandDraft{}; };

    const std::int64_t stUpper = integer(6, baseBand(0).upperBoundSeconds.value_or(0));
    const std::int64_t tahUpper = integer(7, baseBand(1).upperBoundSeconds.value_or(0));
    OrdinaryDayScheduleDraft schedule;
    schedule.bands = {
        {text(0, baseBand(0).ruleID), 0, stUpper, decimal(8, baseBand(0).multiplier), basis(15, baseBand(0).entryThresholdBasis)},
        {text(1, baseBand(1).ruleID), stUpper, tahUpper, decimal(9, baseBand(1).multiplier), basis(16, baseBand(1).entryThresholdBasis)},
        {text(2, baseBand(2).ruleID), tahUpper, std::nullopt, decimal(10, baseBand(2).multiplier), basis(17, baseBand(2).entryThresholdBasis)}};
    schedule.dailyMinimumRuleID = text(3, base.dailyMinimumRuleID);
    schedule.finalBandMinimumRuleID = text(4, base.finalBandMinimumRuleID);
    if (!column(5).isNull()) {
        schedule.bandMinimumTargetRuleID = column(5).getString();
    } else if (fallback && base.bandMinimumTargetRuleID) {
        // The local target carries over only where it names a band of this schedule; otherwise an absent
        // target means the final band, as it always does.
        const bool names = std::any_of(schedule.bands.begin(), schedule.bands.end(),
                                       [&](const auto& band) { return band.ruleID == *base.bandMinimumTargetRuleID; });
        if (names) schedule.bandMinimumTargetRuleID = base.bandMinimumTargetRuleID;
    }
    schedule.dailyMinimumEnabled = integer(11, base.dailyMinimumEnabled) != 0;
    schedule.dailyMinimumSeconds = integer(12, base.dailyMinimumSeconds);
    schedule.finalBandMinimumEnabled = integer(13, base.finalBandMinimumEnabled) != 0;
    schedule.finalBandMinimumSeconds = integer(14, base.finalBandMinimumSeconds);
    if (!column(18).isNull()) {
        schedule.thirdBandEnabled = column(18).getInt() != 0;
    } else if (fallback) {
        schedule.thirdBandEnabled = base.thirdBandEnabled;
    }
    return schedule;
}

void bindSchedule(SQLite::Statement& statement, int first, const OrdinaryDayScheduleDraft& s) {
    const auto& b = s.bands;
    const auto optionalThird = s.thirdBandEnabled ? std::optional<std::int64_t>(*s.thirdBandEnabled) : std::nullopt;
    columns::bind(statement, first + 0, b[0].ruleID);
    columns::bind(statement, first + 1, b[1].ruleID);
    columns::bind(statement, first + 2, b[2].ruleID);
    columns::bind(statement, first + 3, s.dailyMinimumRuleID);
    columns::bind(statement, first + 4, s.finalBandMinimumRuleID);
    columns::bind(statement, first + 5, s.bandMinimumTargetRuleID);
    columns::bind(statement, first + 6, b[0].upperBoundSeconds.value_or(0));
    columns::bind(statement, first + 7, b[1].upperBoundSeconds.value_or(b[2].lowerBoundSeconds));
    columns::bind(statement, first + 8, b[0].multiplier);
    columns::bind(statement, first + 9, b[1].multiplier);
    columns::bind(statement, first + 10, b[2].multiplier);
    columns::bind(statement, first + 11, s.dailyMinimumEnabled);
    columns::bind(statement, first + 12, s.dailyMinimumSeconds);
    columns::bind(statement, first + 13, s.finalBandMinimumEnabled);
    columns::bind(statement, first + 14, s.finalBandMinimumSeconds);
    columns::bind(statement, first + 15, std::string(toRawValue(b[0].entryThresholdBasis)));
    columns::bind(statement, first + 16, std::string(toRawValue(b[1].entryThresholdBasis)));
    columns::bind(statement, first + 17, std::string(toRawValue(b[2].entryThresholdBasis)));
    columns::bind(statement, first + 18, optionalThird);
}

std::optional<OrdinaryDayScheduleDraft> readAlternate(const SQLite::Column& column) {
    if (column.isNull()) return std::nullopt;
    try {
        const std::string text(static_cast<const char*>(column.getBlob()), static_cast<std::size_t>(column.getBytes()));
        return rules_json::scheduleDraft(decimal_json::parse<Json>(text), "schedule");
    } catch (const std::exception&) {
        throw RulesPayloadError(std::string(ruleset_messages::alternateDayInvalid));
    }
}

void bindAlternate(SQLite::Statement& statement, int index, const std::optional<OrdinaryDayScheduleDraft>& schedule) {
    if (!schedule) return statement.bind(index);
    const std::string json = decimal_json::dump(rules_json::toJSON(*schedule));
    statement.bind(index, json.data(), static_cast<int>(json.size()));
}

std::optional<std::string> payloadOf(ModelContext& context, std::string_view table, const Uuid& revisionID) {
    const auto fields = satellites::find(context, satelliteTable(table), revisionID);
    if (!fields) return std::nullopt;
    for (const auto& [column, value] : *fields) {
        if (column != "configurationData") continue;
        if (const auto* bytes = std::get_if<std::vector<unsigned char>>(&value)) return std::string(bytes->begin(), bytes->end());
        if (const auto* text = std::get_if<std::string>(&value)) return *text;
    }
    return std::nullopt;
}

void writePayload(ModelContext& context, std::string_view table, const Uuid& revisionID, const Json& payload, Instant now) {
    const std::string json = decimal_json::dump(payload);
    const std::string stamp = calendar_text::formatInstant(now);
    StoreFields fields{{"configurationData", std::vector<unsigned char>(json.begin(), json.end())}, {"modifiedAt", stamp}};
    if (!satellites::find(context, satelliteTable(table), revisionID)) fields.emplace_back("createdAt", stamp);
    satellites::write(context, satelliteTable(table), revisionID, fields);
}

// ---- validation ----

void validateBands(const OrdinaryDayScheduleDraft& schedule, bool flat) {
    if (flat && schedule.bands.size() != 3) throw Error::invalidPayBand(std::string(ruleset_messages::payBandOrder));
    const auto bands = schedule.enabledBands();
    if (bands.empty() || bands.front().lowerBoundSeconds != 0) throw Error::invalidPayBand(std::string(ruleset_messages::payBandOrder));
    for (std::size_t i = 0; i < bands.size(); ++i) {
        const auto& band = bands[i];
        const bool last = i + 1 == bands.size();
        if (i > 0 && (!bands[i - 1].upperBoundSeconds || band.lowerBoundSeconds != *bands[i - 1].upperBoundSeconds)) {
            throw Error::invalidPayBand(std::string(ruleset_messages::payBandOrder));
        }
        if (band.upperBoundSeconds && *band.upperBoundSeconds <= band.lowerBoundSeconds) {
            throw Error::invalidPayBand(std::string(ruleset_messages::payBandOrder));
        }
        if (!last && !band.upperBoundSeconds) throw Error::invalidPayBand(std::string(ruleset_messages::payBandOrder));
    }
    if (bands.back().upperBoundSeconds) throw Error::invalidPayBand(std::string(ruleset_messages::finalBandOpen));
}

void validateTarget(const OrdinaryDayScheduleDraft& schedule) {
    if (!schedule.bandMinimumTargetRuleID) return;
    const auto bands = schedule.enabledBands();
    const bool found = std::any_of(bands.begin(), bands.end(),
                                   [&](const auto& band) { return band.ruleID == *schedule.bandMinimumTargetRuleID; });
    if (!found) throw Error::invalidPayBand(std::string(ruleset_messages::goldenHourTarget));
}

// Every schedule of the draft with whether it is stored flat (exactly three bands).
std::vector<std::pair<const OrdinaryDayScheduleDraft*, bool>> schedulesOf(const ProductionRulesetDraft& draft) {
    std::vector<std::pair<const OrdinaryDayScheduleDraft*, bool>> schedules{{&draft.localSchedule, true}, {&draft.distantSchedule, true}};
    for (const auto* alternate : {&draft.localSixthDaySchedule, &draft.localSeventhDaySchedule, &draft.distantSixthDaySchedule,
                                  &draft.distantSeventhDaySchedule}) {
        if (*alternate) schedules.emplace_back(&**alternate, false);
    }
    return schedules;
}

std::string trimmed(const std::string& text) { return std::string(entry_text::trimmed(text)); }

}  // namespace

std::string ruleset_ids::prefix(RulesLocality locality, DayKind day) {
    const bool distant = locality == RulesLocality::distant;
    switch (day) {
        case DayKind::ordinary: return distant ? std::string(distantPrefix) : "production";
        case DayKind::sixthDay: return std::string(distant ? distantSixthDayPrefix : localSixthDayPrefix);
        case DayKind::seventhDay: return std::string(distant ? distantSeventhDayPrefix : localSeventhDayPrefix);
    }
    return "production";
}

OrdinaryDayScheduleDraft ProductionRulesets::exampleSchedule(RulesLocality locality) {
    const std::string p = ruleset_ids::prefix(locality, DayKind::ordinary);
    OrdinaryDayScheduleDraft schedule;
    schedule.bands = {{p + ".band.straight-time", 0, 28800, Decimal("1"), DurationBasis::worked},
                      {p + ".band.time-and-a-half", 28800, 43200, Decimal("1.5"), DurationBasis::worked},
                      {p + ".band.double-time", 43200, std::nullopt, Decimal("2"), DurationBasis::worked}};
    schedule.dailyMinimumRuleID = p + ".guarantee.daily-minimum";
    schedule.dailyMinimumEnabled = true;
    schedule.dailyMinimumSeconds = 28800;
    schedule.finalBandMinimumRuleID = p + ".guarantee.final-band-minimum";
    schedule.finalBandMinimumEnabled = true;
    schedule.finalBandMinimumSeconds = 3600;
    return schedule;
}

ProductionRulesetDraft ProductionRulesets::exampleDraft(CalendarDate effectiveFrom, std::string_view name) {
    ProductionRulesetDraft draft;
    draft.name = std::string(name);
    draft.sourceNotes = std::string(ruleset_messages::exampleNotes);
    draft.effectiveFrom = effectiveFrom;
    draft.localSchedule = exampleSchedule(RulesLocality::local);
    draft.distantSchedule = exampleSchedule(RulesLocality::distant);
    draft.turnaroundRules = TurnaroundRulesDraft{};
    return draft;
}

PayrollRuleConfiguration ProductionRulesets::exampleConfiguration(CalendarDate effectiveFrom) {
    return {exampleDraft(effectiveFrom), MealPenaltyRules::defaults(), {}, std::nullopt, {}};
}

void ProductionRulesets::validateSchedule(const OrdinaryDayScheduleDraft& schedule) {
    validateBands(schedule, false);
    validateTarget(schedule);
    if (schedule.dailyMinimumSeconds < 0 || schedule.finalBandMinimumSeconds < 0) throw Error::invalidDuration();
}

void ProductionRulesets::validate(const PayrollRuleConfiguration& configuration) {
    const ProductionRulesetDraft& draft = configuration.payrollRules;
    if (trimmed(draft.name).empty()) throw Error::nameRequired();
    const auto schedules = schedulesOf(draft);
    for (const auto& [schedule, flat] : schedules) validateBands(*schedule, flat);
    for (const auto& [schedule, flat] : schedules) validateTarget(*schedule);
    for (const auto& [schedule, flat] : schedules) {
        if (schedule->dailyMinimumSeconds < 0 || schedule->finalBandMinimumSeconds < 0) throw Error::invalidDuration();
    }
    if (draft.turnaroundRules) TurnaroundRules::validate(*draft.turnaroundRules);
    std::set<std::string> kinds;
    for (const auto& provision : configuration.additionalCompensation) {
        if (trimmed(provision.kind).empty() || !fromRawValue<CompensationProvisionKind>(provision.kind)) {
            throw Error::invalidProvisionID(provision.kind);
        }
        if (!kinds.insert(provision.kind).second) throw Error::duplicateProvisionID(provision.kind);
        if (provision.amount.isNaN() || provision.amount.isNegative()) {
            throw CompensationRuleInputError(std::string(provision_messages::amountInvalid));
        }
    }
    // Rules that pass the checks above must still make a calculation configuration for every locality and
    // day kind; building each refuses, with the value's own sentence, what no calculation accepts (a
    // negative multiplier, for one) before anything is written.
    const Uuid probe = Uuid::generate();
    for (const auto locality : {RulesLocality::local, RulesLocality::distant}) {
        for (const auto day : {DayKind::ordinary, DayKind::sixthDay, DayKind::seventhDay}) sandboxFor(configuration, probe, locality, day, std::nullopt);
    }
}

Uuid ProductionRulesets::createDefaultRevision(ModelContext& context, const Uuid& productionID, CalendarDate effectiveFrom,
                                               Instant now) {
    const Uuid id = Uuid::generate();
    auto& insert = context.prepare(
        "INSERT INTO ProductionRulesetRevision (id, productionID, name, sourceNotes, effectiveFrom, createdAt, modifiedAt, "
        "straightTimeRuleID, timeAndAHalfRuleID, doubleTimeRuleID, dailyMinimumRuleID, finalBandMinimumRuleID, "
        "straightTimeUpperSeconds, timeAndAHalfUpperSeconds, straightTimeMultiplier, timeAndAHalfMultiplier, "
        "doubleTimeMultiplier, dailyMinimumEnabled, dailyMinimumSeconds, finalBandMinimumEnabled, finalBandMinimumSeconds) "
        "VALUES (?1, ?2, '', '', ?3, ?4, ?4, '', '', '', '', '', 0, 0, '1', '1', '1', 0, 0, 0, 0)");
    columns::bindAll(insert, id, productionID, effectiveFrom, now);
    insert.exec();
    apply(context, productionID, id, exampleConfiguration(effectiveFrom), now);
    // The example defaults have not been reviewed by anyone.
    satellites::write(context, satelliteTable("ProductionRulesetSetupMetadata"), id,
                      {{"originRawValue", std::string("automaticDefault")}, {"manuallyReviewedAt", StoreValue{}}});
    return id;
}

std::optional<Uuid> ProductionRulesets::revisionInForce(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    auto& statement = context.prepare("SELECT id FROM ProductionRulesetRevision WHERE productionID = ?1 AND effectiveFrom <= ?2 "
                                      "ORDER BY effectiveFrom DESC, modifiedAt DESC, id LIMIT 1");
    columns::bindAll(statement, productionID, date);
    if (!statement.executeStep()) return std::nullopt;
    return columns::uuid(statement.getColumn(0));
}

std::optional<Uuid> ProductionRulesets::currentRevision(ModelContext& context, const Uuid& productionID, CalendarDate today) {
    if (auto inForce = revisionInForce(context, productionID, today)) return inForce;
    auto& statement = context.prepare(
        "SELECT id FROM ProductionRulesetRevision WHERE productionID = ?1 ORDER BY effectiveFrom, id LIMIT 1");
    columns::bind(statement, 1, productionID);
    if (!statement.executeStep()) return std::nullopt;
    return columns::uuid(statement.getColumn(0));
}

ProductionRulesetDraft ProductionRulesets::readDraft(ModelContext& context, const Uuid& revisionID) {
    auto& row = context.prepare("SELECT " + columnList() + " FROM ProductionRulesetRevision WHERE id = ?1");
    columns::bind(row, 1, revisionID);
    if (!row.executeStep()) throw Error::revisionUnavailable();
    ProductionRulesetDraft draft;
    draft.name = row.getColumn(0).getString();
    draft.sourceNotes = row.getColumn(1).getString();
    draft.effectiveFrom = columns::date(row.getColumn(2));
    const auto locality = columns::optionalText(row.getColumn(3));
    // An absent or unknown default locality reads as local.
    draft.defaultRulesLocality = locality ? fromRawValue<RulesLocality>(*locality).value_or(RulesLocality::local) : RulesLocality::local;
    draft.localSchedule = readSchedule(row, 4, nullptr);
    draft.distantSchedule = readSchedule(row, 4 + static_cast<int>(scheduleColumns.size()), &draft.localSchedule);
    const int blobs = 4 + 2 * static_cast<int>(scheduleColumns.size());
    draft.localSixthDaySchedule = readAlternate(row.getColumn(blobs));
    draft.localSeventhDaySchedule = readAlternate(row.getColumn(blobs + 1));
    draft.distantSixthDaySchedule = readAlternate(row.getColumn(blobs + 2));
    draft.distantSeventhDaySchedule = readAlternate(row.getColumn(blobs + 3));
    if (const auto turnaround = payloadOf(context, "ProductionTurnaroundRulesConfiguration", revisionID)) {
        try {
            draft.turnaroundRules = rules_json::turnaroundDraft(decimal_json::parse<Json>(*turnaround), "turnaroundRules");
        } catch (const std::exception&) {
            throw RulesPayloadError(std::string(turnaround_messages::invalid));
        }
    }
    return draft;
}

PayrollRuleConfiguration ProductionRulesets::readConfiguration(ModelContext& context, const Uuid& productionID,
                                                               const Uuid& revisionID) {
    PayrollRuleConfiguration configuration;
    configuration.payrollRules = readDraft(context, revisionID);
    configuration.mealPenaltyRules = MealPenaltyRules::defaults();
    if (const auto meal = payloadOf(context, "ProductionMealPenaltyRulesConfiguration", revisionID)) {
        try {
            configuration.mealPenaltyRules = rules_json::mealPenaltyDraft(decimal_json::parse<Json>(*meal), "mealPenaltyRules");
        } catch (const std::exception&) {
            throw RulesPayloadError(std::string(meal_rules_messages::invalid));
        }
    }
    configuration.additionalCompensation =
        CompensationProvisions::productionDrafts(context, productionID, configuration.payrollRules.effectiveFrom);
    configuration.idleCompensation = CompensationProvisions::idleRule(context, revisionID);
    configuration.holidayCompensation = CompensationProvisions::holidayRules(context, revisionID);
    return configuration;
}

void ProductionRulesets::apply(ModelContext& context, const Uuid& productionID, const Uuid& revisionID,
                               const PayrollRuleConfiguration& configuration, Instant now) {
    validateWhole(configuration);

    const ProductionRulesetDraft& d = configuration.payrollRules;
    std::string assignments = "name = ?2, sourceNotes = ?3, effectiveFrom = ?4, defaultRulesLocalityRawValue = ?5, modifiedAt = ?6";
    int index = 7;
    for (auto column : scheduleColumns) assignments += ", " + std::string(column) + " = ?" + std::to_string(index++);
    for (auto column : scheduleColumns) assignments += ", " + distantColumn(column) + " = ?" + std::to_string(index++);
    for (auto column : {"localSixthDayScheduleData", "localSeventhDayScheduleData", "distantSixthDayScheduleData",
                        "distantSeventhDayScheduleData"}) {
        assignments += std::string(", ") + column + " = ?" + std::to_string(index++);
    }
    auto& update = context.prepare("UPDATE ProductionRulesetRevision SET " + assignments + " WHERE id = ?1");
    columns::bindAll(update, revisionID, d.name, d.sourceNotes, d.effectiveFrom, std::string(toRawValue(d.defaultRulesLocality)), now);
    bindSchedule(update, 7, d.localSchedule);
    bindSchedule(update, 7 + static_cast<int>(scheduleColumns.size()), d.distantSchedule);
    const int blobs = 7 + 2 * static_cast<int>(scheduleColumns.size());
    bindAlternate(update, blobs, d.localSixthDaySchedule);
    bindAlternate(update, blobs + 1, d.localSeventhDaySchedule);
    bindAlternate(update, blobs + 2, d.distantSixthDaySchedule);
    bindAlternate(update, blobs + 3, d.distantSeventhDaySchedule);
    if (update.exec() == 0) throw Error::revisionUnavailable();

    writePayload(context, "ProductionMealPenaltyRulesConfiguration", revisionID, rules_json::toJSON(configuration.mealPenaltyRules), now);
    if (d.turnaroundRules) {
        writePayload(context, "ProductionTurnaroundRulesConfiguration", revisionID, rules_json::toJSON(*d.turnaroundRules), now);
    } else {
        satellites::removeAll(context, satelliteTable("ProductionTurnaroundRulesConfiguration"), revisionID);
    }
    CompensationProvisions::replaceProductionDrafts(context, productionID, d.effectiveFrom, configuration.additionalCompensation);
    CompensationProvisions::setIdleRule(context, revisionID, configuration.idleCompensation);
    CompensationProvisions::setHolidayRules(context, revisionID, configuration.holidayCompensation);
    const auto state = setupState(context, revisionID);
    satellites::write(context, satelliteTable("ProductionRulesetSetupMetadata"), revisionID,
                      {{"originRawValue", std::string(state.origin == ProductionRulesetOrigin::automaticDefault ? "automaticDefault"
                                                      : state.origin == ProductionRulesetOrigin::savedRulesetCopy ? "savedRulesetCopy"
                                                                                                                  : "legacyUnknown")},
                       {"manuallyReviewedAt", calendar_text::formatInstant(now)}});
}

void ProductionRulesets::validateWhole(const PayrollRuleConfiguration& configuration) {
    validate(configuration);
    if (configuration.mealPenaltyRules.timingRules) MealPenaltyRules::validateTiming(*configuration.mealPenaltyRules.timingRules);
    for (auto locality : {RulesLocality::local, RulesLocality::distant}) {
        for (auto location : {MealWorkLocation::studio, MealWorkLocation::location}) {
            MealPenaltyRules::engineSchedule(configuration.mealPenaltyRules, locality, location);
        }
    }
    if (configuration.idleCompensation) CompensationProvisions::validateIdle(*configuration.idleCompensation);
    CompensationProvisions::validateHoliday(configuration.holidayCompensation);
}

ProductionRulesetSetupState ProductionRulesets::setupState(ModelContext& context, const Uuid& revisionID) {
    ProductionRulesetSetupState state;
    const auto fields = satellites::find(context, satelliteTable("ProductionRulesetSetupMetadata"), revisionID);
    if (!fields) return state;
    for (const auto& [column, value] : *fields) {
        const auto* text = std::get_if<std::string>(&value);
        if (!text) continue;
        if (column == "originRawValue") {
            state.origin = *text == "automaticDefault"   ? ProductionRulesetOrigin::automaticDefault
                           : *text == "savedRulesetCopy" ? ProductionRulesetOrigin::savedRulesetCopy
                                                         : ProductionRulesetOrigin::legacyUnknown;
        }
        if (column == "sourceSavedRulesetName") state.sourceSavedRulesetName = *text;
        if (column == "manuallyReviewedAt") state.manuallyReviewedAt = calendar_text::parseInstant(*text);
    }
    return state;
}

std::string ProductionRulesets::setupStatusLine(const ProductionRulesetSetupState& state) {
    const bool namedCopy = state.origin == ProductionRulesetOrigin::savedRulesetCopy && state.sourceSavedRulesetName;
    if (state.manuallyReviewedAt) {
        return namedCopy ? "Based on a copy of \u2018" + *state.sourceSavedRulesetName + "\u2019, reviewed for this production."
                         : "Payroll rules have been reviewed for this production.";
    }
    if (state.origin == ProductionRulesetOrigin::automaticDefault) return "Review the payroll rules for this production.";
    if (namedCopy) return "Using a copy of \u2018" + *state.sourceSavedRulesetName + "\u2019.";
    return "Review the existing payroll rules for this production.";
}

PayBandSchedule ProductionRulesets::engineSchedule(const OrdinaryDayScheduleDraft& schedule) {
    std::vector<PayBand> bands;
    for (const auto& band : schedule.enabledBands()) {
        std::optional<WorkDuration> upper;
        if (band.upperBoundSeconds) upper = WorkDuration(*band.upperBoundSeconds);
        bands.emplace_back(RuleID(band.ruleID), PayBandEntryThreshold{WorkDuration(band.lowerBoundSeconds), band.entryThresholdBasis},
                           upper, RateMultiplier(band.multiplier));
    }
    return PayBandSchedule(std::move(bands));
}

SandboxConfiguration ProductionRulesets::sandbox(ModelContext& context, const Uuid& productionID, CalendarDate date,
                                                 std::optional<RulesLocality> locality, DayKind day,
                                                 std::optional<MealWorkLocation> workLocation) {
    const auto revisionID = revisionInForce(context, productionID, date);
    if (!revisionID) throw ModelValidationError(std::string(ruleset_messages::noRevision));
    return sandboxFor(readConfiguration(context, productionID, *revisionID), *revisionID, locality, day, workLocation);
}

SandboxConfiguration ProductionRulesets::sandboxFor(const PayrollRuleConfiguration& configuration, const Uuid& revisionID,
                                                    std::optional<RulesLocality> locality, DayKind day,
                                                    std::optional<MealWorkLocation> workLocation,
                                                    const OrdinaryDayScheduleDraft* scheduleInstead) {
    const ProductionRulesetDraft& draft = configuration.payrollRules;
    const RulesLocality chosen = locality.value_or(draft.defaultRulesLocality);
    const OrdinaryDayScheduleDraft& schedule = scheduleInstead ? *scheduleInstead : draft.schedule(chosen, day);

    SandboxConfiguration sandbox{revisionID, draft.name, draft.sourceNotes, draft.effectiveFrom, chosen, day,
                                 engineSchedule(schedule)};
    sandbox.scheduleDayKind = scheduleInstead ? DayKind::ordinary : draft.scheduleDayKind(chosen, day);
    if (schedule.dailyMinimumEnabled && schedule.dailyMinimumSeconds > 0) {
        sandbox.configuredDailyMinimumGuarantee =
            DailyMinimumGuarantee(RuleID(schedule.dailyMinimumRuleID), WorkDuration(schedule.dailyMinimumSeconds));
    }
    const auto enabled = schedule.enabledBands();
    if (schedule.finalBandMinimumEnabled && schedule.finalBandMinimumSeconds > 0) {
        sandbox.bandGuarantees.emplace_back(RuleID(schedule.finalBandMinimumRuleID),
                                            RuleID(schedule.bandMinimumTargetRuleID.value_or(enabled.back().ruleID)),
                                            WorkDuration(schedule.finalBandMinimumSeconds));
    }
    // A band is named and compared by what it pays, not by its place: a sixth day whose first band pays
    // x1.5 is time and a half, never straight time (which is also the vacation basis).
    for (const auto& band : enabled) {
        if (band.multiplier == Decimal(1)) {
            sandbox.labelsByRuleID[band.ruleID] = "Straight Time";
            sandbox.comparisonConceptsByRuleID[band.ruleID] = PayComparisonConcept::straight;
        } else if (band.multiplier == Decimal("1.5")) {
            sandbox.labelsByRuleID[band.ruleID] = "Time and a Half";
            sandbox.comparisonConceptsByRuleID[band.ruleID] = PayComparisonConcept::overtime;
        } else if (band.multiplier == Decimal(2)) {
            sandbox.labelsByRuleID[band.ruleID] = "Double Time";
            sandbox.comparisonConceptsByRuleID[band.ruleID] = PayComparisonConcept::doubleTime;
        } else {
            // Another premium has no standard payroll line to pair with; it is shown by its multiplier.
            sandbox.labelsByRuleID[band.ruleID] = band.multiplier.toString() + "x Pay";
        }
    }
    // Guaranteed time is paid inside the bands, so the guarantees have labels for their traces but no
    // comparison concept of their own.
    sandbox.labelsByRuleID[schedule.dailyMinimumRuleID] = "Daily Minimum";
    sandbox.labelsByRuleID[schedule.finalBandMinimumRuleID] = "Golden Hour";

    const MealPenaltyCompensationRulesDraft& meal = configuration.mealPenaltyRules;
    sandbox.mealPenaltyFixedDollarWeeklyLimit = meal.fixedDollarWeeklyLimit;
    try {
        sandbox.mealPenaltySchedule = MealPenaltyRules::engineSchedule(meal, chosen, workLocation);
        for (const auto& schedule : meal.schedules) {
            if (schedule.ruleID == sandbox.mealPenaltySchedule->ruleID().value()) sandbox.mealPenaltyScheduleName = schedule.name;
        }
    } catch (const MealPenaltyRulesError& error) {
        sandbox.mealPenaltyProblem = error.what();
    }
    try {
        sandbox.mealPenaltyTimingRules = MealPenaltyRules::engineTimingRules(meal);
    } catch (const MealPenaltyRulesError& error) {
        sandbox.mealPenaltyProblem = error.what();
    }
    sandbox.turnaroundRules = draft.turnaroundRules.value_or(TurnaroundRulesDraft{});
    return sandbox;
}

Production ProductionSetup::createProduction(ModelContext& context, const std::string& name, const NewProductionDefaults& defaults,
                                             Instant now) {
    const Production production = production_repository::create(context, name, defaults, now);
    // The example rules reach back to 1 January of the previous year, so that time sheets entered after
    // the fact (a production set up mid-shoot) have rules too.
    const CalendarDate created(floor<days>(now));
    ProductionRulesets::createDefaultRevision(context, production.id, (created.year() - years(1)) / January / 1, now);
    return production;
}

}  // namespace tessel
