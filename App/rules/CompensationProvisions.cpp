#include "CompensationProvisions.hpp"

#include <algorithm>
#include <array>
#include <map>

#include "App/model/EntryText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/rules/ProductionRulesets.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;
namespace messages = ruleset_messages;

constexpr std::array<std::string_view, 7> eligibilityColumns{
    "timedWorkDayEligible", "workedEligible", "prepEligible", "idleAvailableEligible",
    "travelEligible",       "holidayEligible", "personalUnavailableEligible"};

std::array<bool, 7> flagsOf(const ProductionCompensationProvisionDraft& d) {
    return {d.timedWorkDayEligible, d.workedEligible, d.prepEligible, d.idleAvailableEligible,
            d.travelEligible,       d.holidayEligible, d.personalUnavailableEligible};
}

std::string trimmed(const std::string& text) { return std::string(entry_text::trimmed(text)); }

// Decimal hours typed in a rule editor, in whole seconds (negative stays negative); nothing when the
// text is not a number or not a whole number of seconds.
std::optional<std::int64_t> hoursToSeconds(const std::string& text) {
    const auto hours = Decimal::parse(text);
    if (!hours) return std::nullopt;
    return (*hours * Decimal(3600)).toInt64();
}

}  // namespace

std::string_view toRawValue(CompensationProvisionOverrideMode mode) noexcept {
    switch (mode) {
        case CompensationProvisionOverrideMode::productionDefault: return "productionDefault";
        case CompensationProvisionOverrideMode::personalAmount: return "personalAmount";
        case CompensationProvisionOverrideMode::notEligible: return "notEligible";
    }
    return {};
}

std::optional<CompensationProvisionOverrideMode> overrideModeFromRawValue(std::string_view raw) noexcept {
    for (auto mode : {CompensationProvisionOverrideMode::productionDefault, CompensationProvisionOverrideMode::personalAmount,
                      CompensationProvisionOverrideMode::notEligible}) {
        if (toRawValue(mode) == raw) return mode;
    }
    return std::nullopt;
}

std::vector<ProductionCompensationProvisionDraft> CompensationProvisions::productionDrafts(ModelContext& context,
                                                                                          const Uuid& productionID,
                                                                                          CalendarDate date) {
    // The latest configuration of each kind on or before the date; between two of one date, the later written.
    auto& statement = context.prepare(
        "SELECT provisionKindRawValue, isEnabled, dailyAmount, currencyCode, timedWorkDayEligible, workedEligible, "
        "prepEligible, idleAvailableEligible, travelEligible, holidayEligible, personalUnavailableEligible "
        "FROM ProductionCompensationProvisionConfiguration WHERE productionID = ?1 AND effectiveDate <= ?2 "
        "ORDER BY effectiveDate, rowid");
    columns::bindAll(statement, productionID, date);
    std::map<std::string, ProductionCompensationProvisionDraft> latest;
    std::vector<std::string> order;
    while (statement.executeStep()) {
        ProductionCompensationProvisionDraft d{statement.getColumn(0).getString(), columns::boolean(statement.getColumn(1)),
                                               columns::decimal(statement.getColumn(2)), statement.getColumn(3).getString()};
        d.timedWorkDayEligible = columns::boolean(statement.getColumn(4));
        d.workedEligible = columns::boolean(statement.getColumn(5));
        d.prepEligible = columns::boolean(statement.getColumn(6));
        d.idleAvailableEligible = columns::boolean(statement.getColumn(7));
        d.travelEligible = columns::boolean(statement.getColumn(8));
        d.holidayEligible = columns::boolean(statement.getColumn(9));
        d.personalUnavailableEligible = columns::boolean(statement.getColumn(10));
        if (!latest.contains(d.kind)) order.push_back(d.kind);
        latest[d.kind] = d;
    }
    std::vector<ProductionCompensationProvisionDraft> drafts;
    for (const auto& kind : order) drafts.push_back(latest[kind]);
    return drafts;
}

void CompensationProvisions::replaceProductionDrafts(ModelContext& context, const Uuid& productionID, CalendarDate effectiveDate,
                                                     const std::vector<ProductionCompensationProvisionDraft>& drafts) {
    const auto before = productionDrafts(context, productionID, effectiveDate);
    auto& clear = context.prepare(
        "DELETE FROM ProductionCompensationProvisionConfiguration WHERE productionID = ?1 AND effectiveDate = ?2");
    columns::bindAll(clear, productionID, effectiveDate);
    clear.exec();
    std::vector<ProductionCompensationProvisionDraft> written = drafts;
    for (auto earlier : before) {
        const bool kept = std::any_of(drafts.begin(), drafts.end(), [&](const auto& d) { return d.kind == earlier.kind; });
        if (!kept && earlier.isEnabled) {
            earlier.isEnabled = false;
            written.push_back(earlier);
        }
    }
    std::string names = "id, productionID, provisionKindRawValue, effectiveDate, isEnabled, dailyAmount, currencyCode";
    for (auto column : eligibilityColumns) names += ", " + std::string(column);
    auto& insert = context.prepare("INSERT INTO ProductionCompensationProvisionConfiguration (" + names +
                                   ") VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13, ?14)");
    for (const auto& d : written) {
        insert.reset();
        columns::bindAll(insert, Uuid::generate(), productionID, d.kind, effectiveDate, d.isEnabled, d.amount, d.currencyCode);
        const auto flags = flagsOf(d);
        for (std::size_t i = 0; i < flags.size(); ++i) columns::bind(insert, static_cast<int>(i) + 8, flags[i]);
        insert.exec();
    }
}

void CompensationProvisions::setEngagementTerm(ModelContext& context, const Uuid& engagementID, CompensationProvisionKind kind,
                                               CalendarDate effectiveDate, CompensationProvisionOverrideMode mode,
                                               const std::optional<Decimal>& personalDailyAmount, const std::string& currencyCode) {
    satellites::add(context, satelliteTable("EngagementCompensationProvisionTerm"), engagementID,
                    {{"provisionKindRawValue", std::string(toRawValue(kind))},
                     {"effectiveDate", calendar_text::formatInstant(Instant(sys_days(effectiveDate)))},
                     {"overrideModeRawValue", std::string(toRawValue(mode))},
                     {"personalDailyAmount", personalDailyAmount ? StoreValue{personalDailyAmount->toString()} : StoreValue{}},
                     {"currencyCode", currencyCode}});
}

bool CompensationProvisions::removeEngagementTerm(ModelContext& context, const Uuid& engagementID, CompensationProvisionKind kind,
                                                  CalendarDate effectiveDate) {
    auto& statement = context.prepare("DELETE FROM EngagementCompensationProvisionTerm WHERE engagementID = ?1 AND "
                                      "provisionKindRawValue = ?2 AND effectiveDate = ?3");
    columns::bindAll(statement, engagementID, std::string(toRawValue(kind)), effectiveDate);
    return statement.exec() > 0;
}

namespace {
constexpr const char* termColumns = "t.provisionKindRawValue, t.effectiveDate, t.overrideModeRawValue, t.personalDailyAmount, t.currencyCode";

EngagementProvisionTerm readTerm(SQLite::Statement& row) {
    return {row.getColumn(0).getString(), columns::date(row.getColumn(1)), overrideModeFromRawValue(row.getColumn(2).getString()),
            row.getColumn(3).isNull() ? std::nullopt : std::optional(columns::decimal(row.getColumn(3))), row.getColumn(4).getString()};
}
}  // namespace

std::vector<EngagementProvisionTerm> CompensationProvisions::engagementTerms(ModelContext& context, const Uuid& engagementID) {
    auto& statement = context.prepare(std::string("SELECT ") + termColumns +
                                      " FROM EngagementCompensationProvisionTerm t WHERE t.engagementID = ?1 ORDER BY t.effectiveDate, t.rowid");
    columns::bind(statement, 1, engagementID);
    std::vector<EngagementProvisionTerm> terms;
    while (statement.executeStep()) terms.push_back(readTerm(statement));
    return terms;
}

std::map<Uuid, std::vector<EngagementProvisionTerm>> CompensationProvisions::engagementTermsOfProduction(ModelContext& context,
                                                                                                       const Uuid& productionID) {
    // The engagement's id follows the term's columns.
    auto& statement = context.prepare(std::string("SELECT ") + termColumns +
                                      ", t.engagementID FROM EngagementCompensationProvisionTerm t JOIN ProductionEngagement e ON "
                                      "t.engagementID = e.id WHERE e.productionID = ?1 ORDER BY t.engagementID, t.effectiveDate, t.rowid");
    columns::bind(statement, 1, productionID);
    std::map<Uuid, std::vector<EngagementProvisionTerm>> terms;
    while (statement.executeStep()) terms[columns::uuid(statement.getColumn(5))].push_back(readTerm(statement));
    return terms;
}

std::optional<ResolvedCompensationProvision> CompensationProvisions::resolveFrom(
    const std::vector<ProductionCompensationProvisionDraft>& production, const std::vector<EngagementProvisionTerm>& terms,
    CompensationProvisionKind kind, CalendarDate date, ProvisionDayKind dayKind) {
    const std::string_view kindText = toRawValue(kind);
    const auto configured = std::find_if(production.begin(), production.end(), [&](const auto& d) { return d.kind == kindText; });
    if (configured == production.end() || !configured->isEnabled) return std::nullopt;
    if (!flagsOf(*configured)[static_cast<std::size_t>(dayKind)]) return std::nullopt;
    // The engagement's latest term of the kind on or before the date; terms come in date order.
    const EngagementProvisionTerm* term = nullptr;
    for (const auto& candidate : terms) {
        if (candidate.kind == kindText && sys_days(candidate.effectiveDate) <= sys_days(date)) term = &candidate;
    }
    if (term && term->mode == CompensationProvisionOverrideMode::notEligible) return std::nullopt;
    if (term && term->mode == CompensationProvisionOverrideMode::personalAmount && term->personalDailyAmount) {
        return ResolvedCompensationProvision{kind, *term->personalDailyAmount, term->currencyCode,
                                             CompensationProvisionOverrideMode::personalAmount};
    }
    return ResolvedCompensationProvision{kind, configured->amount, configured->currencyCode,
                                         CompensationProvisionOverrideMode::productionDefault};
}

std::optional<ResolvedCompensationProvision> CompensationProvisions::resolve(ModelContext& context, const Uuid& productionID,
                                                                             const Uuid& engagementID,
                                                                             CompensationProvisionKind kind, CalendarDate date,
                                                                             ProvisionDayKind dayKind) {
    return resolveFrom(productionDrafts(context, productionID, date), engagementTerms(context, engagementID), kind, date, dayKind);
}

std::optional<std::string> CompensationProvisions::vacationPayChangeWithinWeek(
    const std::function<std::optional<Decimal>(CalendarDate)>& percentageOn, CalendarDate weekStart) {
    const auto first = percentageOn(weekStart);
    for (int day = 1; day < 7; ++day) {
        if (!(percentageOn(CalendarDate(sys_days(weekStart) + days(day))) == first)) {
            return std::string(provision_messages::vacationPayChangesInWeek);
        }
    }
    return std::nullopt;
}

std::optional<std::string> CompensationProvisions::vacationPayChangeWithinWeek(ModelContext& context, const Uuid& productionID,
                                                                              const Uuid& engagementID, CalendarDate weekStart) {
    const auto terms = engagementTerms(context, engagementID);
    return vacationPayChangeWithinWeek(
        [&](CalendarDate date) -> std::optional<Decimal> {
            // The percentage in force, whatever kinds of day it applies on.
            for (int dayKind = 0; dayKind < 7; ++dayKind) {
                if (const auto resolved = resolveFrom(productionDrafts(context, productionID, date), terms,
                                                      CompensationProvisionKind::vacationPay, date, static_cast<ProvisionDayKind>(dayKind))) {
                    return resolved->amount;
                }
            }
            return std::nullopt;
        },
        weekStart);
}

std::optional<IdleCompensationRuleDraft> CompensationProvisions::idleRule(ModelContext& context, const Uuid& revisionID) {
    const auto fields = satellites::find(context, satelliteTable("ProductionIdleCompensationConfiguration"), revisionID);
    if (!fields) return std::nullopt;
    IdleCompensationRuleDraft rule;
    if (const auto seconds = satellites::integer(fields, "compensatedSecondsPerDay")) rule.compensatedSecondsPerDay = *seconds;
    if (const auto text = satellites::text(fields, "straightTimeRateMultiplier")) {
        const auto multiplier = Decimal::parse(*text);
        if (!multiplier) throw StoreCorruptionError("An Idle Compensation multiplier is invalid.");
        rule.straightTimeRateMultiplier = *multiplier;
    }
    return rule;
}

void CompensationProvisions::validateIdle(const IdleCompensationRuleDraft& rule) {
    if (rule.compensatedSecondsPerDay <= 0) throw CompensationRuleInputError(std::string(messages::idleHoursNotPositive));
    if (rule.straightTimeRateMultiplier.isNaN() || !(rule.straightTimeRateMultiplier > Decimal())) {
        throw CompensationRuleInputError(std::string(messages::idleMultiplierNotPositive));
    }
}

void CompensationProvisions::setIdleRule(ModelContext& context, const Uuid& revisionID,
                                         const std::optional<IdleCompensationRuleDraft>& rule) {
    const auto& table = satelliteTable("ProductionIdleCompensationConfiguration");
    if (!rule) return satellites::removeAll(context, table, revisionID);
    validateIdle(*rule);
    satellites::write(context, table, revisionID,
                      {{"compensatedSecondsPerDay", rule->compensatedSecondsPerDay},
                       {"straightTimeRateMultiplier", rule->straightTimeRateMultiplier.toString()}});
}

HolidayCompensationRulesDraft CompensationProvisions::holidayRules(ModelContext& context, const Uuid& revisionID) {
    const auto fields = satellites::find(context, satelliteTable("ProductionHolidayCompensationConfiguration"), revisionID);
    if (!fields) return {};
    for (const auto& [column, value] : *fields) {
        const auto* bytes = std::get_if<std::vector<unsigned char>>(&value);
        if (column != "configurationData" || !bytes) continue;
        try {
            return rules_json::holidayDraft(decimal_json::parse<Json>(std::string(bytes->begin(), bytes->end())), "holidayCompensation");
        } catch (const std::exception&) {
            throw RulesPayloadError("Unworked Holiday Pay is not configured.");
        }
    }
    return {};
}

void CompensationProvisions::validateHoliday(const HolidayCompensationRulesDraft& rules) {
    // A zero would pay 0.00 for a holiday that is meant to be paid: refused, as idle refuses it.
    for (const auto& [context, rule] : rules) {
        if (rule.compensatedSeconds() <= 0 || rule.rateMultiplier().isNaN() || !(rule.rateMultiplier() > Decimal())) {
            throw CompensationRuleInputError(std::string(messages::holidayNotPositive));
        }
    }
}

void CompensationProvisions::setHolidayRules(ModelContext& context, const Uuid& revisionID, const HolidayCompensationRulesDraft& rules) {
    const auto& table = satelliteTable("ProductionHolidayCompensationConfiguration");
    if (rules.empty()) return satellites::removeAll(context, table, revisionID);
    validateHoliday(rules);
    const std::string json = decimal_json::dump(rules_json::toJSON(rules));
    satellites::write(context, table, revisionID, {{"configurationData", std::vector<unsigned char>(json.begin(), json.end())}});
}

std::optional<IdleCompensationRuleDraft> CompensationProvisions::idleFromText(const std::string& hoursText,
                                                                              const std::string& multiplierText) {
    const std::string hours = trimmed(hoursText), multiplier = trimmed(multiplierText);
    if (hours.empty() && multiplier.empty()) return std::nullopt;
    if (hours.empty() || multiplier.empty()) throw CompensationRuleInputError(std::string(messages::idleBothFields));
    const auto value = Decimal::parse(multiplier);
    if (!value) throw CompensationRuleInputError(std::string(messages::idleMultiplierInvalid));
    const auto seconds = hoursToSeconds(hours);
    if (!seconds || *seconds <= 0) throw CompensationRuleInputError(std::string(messages::idleHoursNotPositive));
    if (!(*value > Decimal())) throw CompensationRuleInputError(std::string(messages::idleMultiplierNotPositive));
    return IdleCompensationRuleDraft{*seconds, *value};
}

std::optional<UnworkedHolidayRule> CompensationProvisions::holidayFromText(const std::string& hoursText,
                                                                           const std::string& multiplierText) {
    const std::string hours = trimmed(hoursText), multiplier = trimmed(multiplierText);
    if (hours.empty() && multiplier.empty()) return std::nullopt;
    if (hours.empty() || multiplier.empty()) throw CompensationRuleInputError(std::string(messages::holidayBothFields));
    const auto seconds = hoursToSeconds(hours);
    const auto value = Decimal::parse(multiplier);
    if (!seconds || !value || *seconds <= 0 || !(*value > Decimal())) {
        throw CompensationRuleInputError(std::string(messages::holidayNotPositive));
    }
    return UnworkedHolidayRule(UnworkedHolidayRule::Formula::fixedStraightTimeDuration, *seconds, *value);
}

}  // namespace tessel
