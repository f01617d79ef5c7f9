#include "ExpectedPayrollReview.hpp"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <tuple>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/expected/PaidCategories.hpp"
#include "App/expected/RateResolution.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/rules/RateCards.hpp"
#include "PayrollEngine/SupplementalCompensationCalculator.hpp"
#include "PayrollEngine/WeeklyMealPenaltyCompensator.hpp"
#include "PayrollEngine/WeeklyPayrollAggregator.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;

// Facts of one week's DTSes read in a few queries rather than one per row.
struct WeekFacts {
    std::vector<Workday> workdays;
    std::unordered_map<Uuid, std::vector<CrewDailyEntry>> entriesByWorkday;
    std::unordered_map<Uuid, CrewDailyWorkMode> workModes;  // by entry
    std::unordered_set<Uuid> boxRentals;                    // entries that pay box / kit rental
    std::unordered_map<Uuid, Decimal> rowMiles;             // by entry
    std::unordered_map<Uuid, Decimal> departmentMiles;      // by workday
    std::unordered_map<Uuid, MealWorkLocation> locations;   // by workday
    std::unordered_map<Uuid, std::pair<Uuid, std::string>> jobs;     // by entry: the production position worked today
    std::unordered_map<Uuid, std::pair<Uuid, std::string>> rerates;  // by entry: the saved position the row is rerated to
    std::vector<PayrollDayActivity> activities;
    std::unordered_map<Uuid, std::vector<std::pair<const Workday*, const CrewDailyEntry*>>> rowsByCrewMember;  // pointers into the above
};

template <typename Each>
void forEachRow(ModelContext& context, const std::string& sql, const Uuid& id, Each each) {
    auto& statement = context.prepare(sql);
    columns::bind(statement, 1, id);
    while (statement.executeStep()) each(statement);
}

// Which DTSes a read covers: every one of a payroll week, or one.
struct DTSScope {
    std::string workdayCondition;  // on the Workday aliased w
    Uuid id;
    static DTSScope week(const Uuid& weekID) { return {"w.payrollWeekID = ?1", weekID}; }
    static DTSScope workday(const Uuid& workdayID) { return {"w.id = ?1", workdayID}; }
};

// The rows' and DTSes' settings within the scope, added to the facts.
void readSettings(ModelContext& context, WeekFacts& facts, const DTSScope& scope) {
    const std::string rowsInScope = " JOIN CrewDailyEntry e ON s.crewDailyEntryID = e.id JOIN Workday w ON e.workdayID = w.id WHERE " +
                                    scope.workdayCondition;
    forEachRow(context, "SELECT s.crewDailyEntryID, s.modeRawValue FROM CrewDailyWorkModeConfiguration s" + rowsInScope, scope.id,
               [&](SQLite::Statement& row) {
                   const auto mode = fromRawValue<CrewDailyWorkMode>(row.getColumn(1).getString());
                   facts.workModes[columns::uuid(row.getColumn(0))] = mode.value_or(CrewDailyWorkMode::timed);
               });
    forEachRow(context, "SELECT s.crewDailyEntryID FROM CrewDailyBoxRentalSelection s" + rowsInScope + " AND s.applies != 0", scope.id,
               [&](SQLite::Statement& row) { facts.boxRentals.insert(columns::uuid(row.getColumn(0))); });
    forEachRow(context, "SELECT s.crewDailyEntryID, s.miles FROM CrewDailyMileageEntry s" + rowsInScope, scope.id,
               [&](SQLite::Statement& row) { facts.rowMiles.insert_or_assign(columns::uuid(row.getColumn(0)), columns::decimal(row.getColumn(1))); });
    forEachRow(context, "SELECT s.crewDailyEntryID, s.productionPositionID, s.positionName FROM CrewDailyJobConfiguration s" + rowsInScope, scope.id,
               [&](SQLite::Statement& row) {
                   facts.jobs.insert_or_assign(columns::uuid(row.getColumn(0)), std::pair(columns::uuid(row.getColumn(1)), row.getColumn(2).getString()));
               });
    forEachRow(context, "SELECT s.crewDailyEntryID, s.positionPresetID, s.positionName FROM CrewDailyRerateConfiguration s" + rowsInScope, scope.id,
               [&](SQLite::Statement& row) {
                   facts.rerates.insert_or_assign(columns::uuid(row.getColumn(0)), std::pair(columns::uuid(row.getColumn(1)), row.getColumn(2).getString()));
               });
    const std::string dtsInScope = " JOIN Workday w ON s.workdayID = w.id WHERE " + scope.workdayCondition;
    forEachRow(context, "SELECT s.workdayID, s.miles FROM WorkdayMileageConfiguration s" + dtsInScope, scope.id, [&](SQLite::Statement& row) {
        facts.departmentMiles.insert_or_assign(columns::uuid(row.getColumn(0)), columns::decimal(row.getColumn(1)));
    });
    forEachRow(context, "SELECT s.workdayID, s.workLocationRawValue FROM WorkdayMealLocationConfiguration s" + dtsInScope, scope.id,
               [&](SQLite::Statement& row) {
                   if (const auto location = fromRawValue<MealWorkLocation>(row.getColumn(1).getString())) {
                       facts.locations[columns::uuid(row.getColumn(0))] = *location;
                   }
               });
}

// Each person's rows of the week by DTS date, the first of a duplicate row only; read in place.
void indexRows(WeekFacts& facts) {
    facts.rowsByCrewMember.clear();
    for (const auto& workday : facts.workdays) {
        for (const auto& entry : facts.entriesByWorkday.at(workday.id)) {
            if (!entry.crewMemberID) continue;
            auto& rows = facts.rowsByCrewMember[*entry.crewMemberID];
            if (rows.empty() || rows.back().first != &workday) rows.emplace_back(&workday, &entry);
        }
    }
}

WeekFacts readWeek(ModelContext& context, const Uuid& weekID) {
    WeekFacts facts;
    facts.workdays = weeks::workdays(context, weekID);
    facts.activities = weeks::activities(context, weekID);
    for (const auto& workday : facts.workdays) facts.entriesByWorkday[workday.id] = weeks::entries(context, workday.id);
    readSettings(context, facts, DTSScope::week(weekID));
    return facts;
}

// One DTS of a week read again after an edit: its shared facts, its rows and their settings. False when
// the DTS is gone, so that the caller reads the week afresh.
bool rereadWorkday(ModelContext& context, WeekFacts& facts, const Uuid& workdayID) {
    const auto workday = std::find_if(facts.workdays.begin(), facts.workdays.end(), [&](const auto& w) { return w.id == workdayID; });
    const auto stored = weeks::fetchWorkday(context, workdayID);
    if (workday == facts.workdays.end() || !stored || stored->payrollWeekID != workday->payrollWeekID) return false;
    *workday = *stored;
    auto& entries = facts.entriesByWorkday.at(workdayID);
    for (const auto& entry : entries) {
        facts.workModes.erase(entry.id);
        facts.boxRentals.erase(entry.id);
        facts.rowMiles.erase(entry.id);
        facts.jobs.erase(entry.id);
        facts.rerates.erase(entry.id);
    }
    facts.departmentMiles.erase(workdayID);
    facts.locations.erase(workdayID);
    entries = weeks::entries(context, workdayID);
    readSettings(context, facts, DTSScope::workday(workdayID));
    indexRows(facts);
    return true;
}

DTSCalculationInput calculationInput(const Workday& workday, const CrewDailyEntry& entry, const WeekFacts& facts) {
    const EffectiveRowTimes times = DailyTimeSheets::effectiveTimes(workday, entry);
    const auto mode = facts.workModes.find(entry.id);
    return {workday.id,
            workday.calendarDate,
            entry.crewMemberID,
            entry.engagementID,
            times.call.value,
            times.lunchOut.value,
            times.lunchIn.value,
            times.wrap.value,
            entry.rulesLocalityOverride,
            workday.generalCrewCall,
            workday.officialLunchOut,
            workday.firstMealGraceWasCalled,
            entry.nonDeductibleBreakfast,
            mode == facts.workModes.end() ? CrewDailyWorkMode::timed : mode->second};
}

ProvisionDayKind provisionDayKind(CrewDailyWorkMode mode) {
    return mode == CrewDailyWorkMode::worked ? ProvisionDayKind::worked
           : mode == CrewDailyWorkMode::prep ? ProvisionDayKind::prep
                                             : ProvisionDayKind::timedWorkDay;
}

DayKind dayKindOf(const CrewWorkdaySequencePosition& position) {
    switch (position.classification()) {
        case CrewWorkdaySequencePosition::Classification::sixth: return DayKind::sixthDay;
        case CrewWorkdaySequencePosition::Classification::seventh:
        case CrewWorkdaySequencePosition::Classification::additional: return DayKind::seventhDay;
        case CrewWorkdaySequencePosition::Classification::ordinary: return DayKind::ordinary;
    }
    return DayKind::ordinary;
}

// Adds one day's categories into the week's, by rule in order of first appearance.
void addCategories(std::vector<PayrollReviewCategory>& week, const std::vector<PayrollReviewCategory>& day) {
    for (const auto& category : day) {
        // One line per rule and rate, so that hours x rate x multiplier gives the amount on every line
        // of a week whose rate changed.
        auto found = std::find_if(week.begin(), week.end(),
                                  [&](const auto& c) { return c.ruleID == category.ruleID && c.baseHourlyRate == category.baseHourlyRate; });
        if (found == week.end()) {
            week.push_back(category);
            continue;
        }
        found->actualDuration += category.actualDuration;
        found->guaranteedDuration += category.guaranteedDuration;
        found->paidDuration += category.paidDuration;
        if (category.compensation) {
            found->compensation = found->compensation ? *found->compensation + *category.compensation : *category.compensation;
        }
        found->contributors.insert(found->contributors.end(), category.contributors.begin(), category.contributors.end());
    }
}

}  // namespace

struct ExpectedPayrollReview::Session {
    ModelContext& context;
    Production production;
    std::unordered_map<Uuid, PayrollRuleConfiguration> configurations;  // by revision
    std::map<std::tuple<Uuid, RulesLocality, DayKind, std::optional<MealWorkLocation>>, SandboxConfiguration> sandboxes;
    std::unordered_map<Uuid, std::optional<ProductionEngagement>> engagements;
    std::unordered_map<Uuid, std::vector<EngagementPayRate>> payRates;
    std::unordered_map<Uuid, std::optional<CrewMember>> crew;
    std::unordered_map<Uuid, WeekFacts> weeksRead;
    std::map<CalendarDate, std::optional<Workday>> workdaysByDate;
    std::unordered_map<Uuid, std::vector<CrewDailyEntry>> entriesByWorkday;
    std::map<CalendarDate, std::optional<Uuid>> revisionsByDate;
    std::map<CalendarDate, std::vector<ProductionCompensationProvisionDraft>> provisionsByDate;
    std::unordered_map<Uuid, std::vector<EngagementProvisionTerm>> provisionTerms;
    std::unordered_map<Uuid, std::vector<std::pair<CalendarDate, std::int64_t>>> guaranteeTerms;
    std::unordered_map<Uuid, std::optional<std::int64_t>> turnaroundRests;
    // Positions and their scales: the engagement's position, whether it follows the scale (by date), the
    // production's Rate Cards, and each saved position's production counterpart for rerates.
    std::unordered_map<Uuid, std::pair<Uuid, std::string>> engagementPositions;
    std::unordered_map<Uuid, std::vector<std::pair<CalendarDate, bool>>> followsScale;
    std::optional<std::vector<ProductionRateCard>> rateCards;
    std::vector<PositionScaleRate> scaleRates;
    std::unordered_map<Uuid, std::optional<Uuid>> rerateTargets;
    std::map<std::pair<const SandboxConfiguration*, std::optional<Uuid>>, std::optional<TurnaroundRule>> turnaroundSuggestions;
    // The schedules positions shape: each position's terms and each person's changes, read when a day
    // first needs them, and the rules a day is calculated with under them.
    struct DayScheduleTerms {
        std::optional<OrdinaryDayScheduleDraft> schedule{};
        std::string key{};  // the shaped schedule as JSON: equal schedules share their rules
        std::optional<std::string> words{}, problem{};
    };
    std::optional<std::unordered_map<Uuid, PositionRecord>> productionPositions;
    std::vector<rate_cards::CardPositionTerms> cardTerms;
    std::unordered_map<Uuid, std::string> personalOverrides;  // by engagement, as stored
    bool anyScheduleTerms = false;
    std::map<std::string, DayScheduleTerms> scheduleTermsByKey;
    std::map<std::tuple<Uuid, RulesLocality, DayKind, std::optional<MealWorkLocation>, std::string>, SandboxConfiguration> shapedSandboxes;
    // Once the review recalculates after edits of time sheets, each row's last inputs and day: a row
    // whose inputs did not change keeps its day rather than being calculated again.
    bool recalculating = false;
    std::vector<Uuid> crewOrder;  // the production's crew in crew order
    std::map<std::pair<Uuid, CalendarDate>, std::optional<std::string>> vacationChanges;  // by engagement and week
    std::unordered_map<Uuid, std::pair<DailyReviewInputs, std::shared_ptr<const DailyPayrollReview>>> lastDays;  // by crew row
    static constexpr std::size_t maximumKeptDays = 4096;

    template <typename Map, typename Load>
    auto& cached(Map& map, const typename Map::key_type& key, Load load) {
        auto found = map.find(key);
        if (found == map.end()) found = map.emplace(key, load()).first;
        return found->second;
    }

    const std::optional<Uuid>& revisionOn(CalendarDate date) {
        return cached(revisionsByDate, date, [&] { return ProductionRulesets::revisionInForce(context, production.id, date); });
    }

    // The rows of a DTS: from its week's facts when the week has been read, else read on their own.
    const std::vector<CrewDailyEntry>& entriesOf(const Workday& workday) {
        const auto read = weeksRead.find(workday.payrollWeekID);
        if (read != weeksRead.end()) return read->second.entriesByWorkday.at(workday.id);
        return cached(entriesByWorkday, workday.id, [&] { return weeks::entries(context, workday.id); });
    }

    std::optional<ResolvedCompensationProvision> provision(const Uuid& engagementID, CompensationProvisionKind kind, CalendarDate date,
                                                           ProvisionDayKind dayKind) {
        const auto& production = cached(provisionsByDate, date, [&] { return CompensationProvisions::productionDrafts(context, this->production.id, date); });
        const auto& terms = cached(provisionTerms, engagementID, [&] { return CompensationProvisions::engagementTerms(context, engagementID); });
        return CompensationProvisions::resolveFrom(production, terms, kind, date, dayKind);
    }

    // Whether the production's provisions and the engagement's terms are the same on every day of the week
    // starting on the date, so that no percentage can change within it.
    bool provisionsSettledFor(const Uuid& engagementID, CalendarDate weekStart) {
        const auto draftsOn = [&](CalendarDate date) -> const auto& {
            return cached(provisionsByDate, date, [&] { return CompensationProvisions::productionDrafts(context, production.id, date); });
        };
        const auto& first = draftsOn(weekStart);
        for (int day = 1; day < 7; ++day) {
            if (!(draftsOn(CalendarDate(sys_days(weekStart) + days(day))) == first)) return false;
        }
        const auto& terms = cached(provisionTerms, engagementID, [&] { return CompensationProvisions::engagementTerms(context, engagementID); });
        return std::none_of(terms.begin(), terms.end(), [&](const auto& term) {
            return sys_days(term.effectiveDate) > sys_days(weekStart) && sys_days(term.effectiveDate) < sys_days(weekStart) + days(7);
        });
    }

    // The engagement's personal daily guarantee in force on the date (the latest term on or before it).
    std::optional<std::int64_t> personalGuarantee(const Uuid& engagementID, CalendarDate date) {
        const auto& terms = cached(guaranteeTerms, engagementID, [&] {
            std::vector<std::pair<CalendarDate, std::int64_t>> loaded;
            auto& statement = context.prepare("SELECT effectiveDate, minimumPaidDurationSeconds FROM EngagementDailyGuaranteeTerm "
                                              "WHERE engagementID = ?1 ORDER BY effectiveDate, rowid");
            columns::bind(statement, 1, engagementID);
            while (statement.executeStep()) loaded.emplace_back(columns::date(statement.getColumn(0)), statement.getColumn(1).getInt64());
            return loaded;
        });
        std::optional<std::int64_t> seconds;
        for (const auto& [effective, minimum] : terms) {
            if (sys_days(effective) <= sys_days(date)) seconds = minimum;
        }
        return seconds;
    }

    Session(ModelContext& c, const Uuid& productionID) : context(c), production(load(c, productionID)) { loadCrewFacts(); }

    // What the reviews read per person, for the whole production in one query each rather than one per
    // engagement: a week of 150 crew would otherwise ask the store a thousand times.
    void loadCrewFacts() {
        for (auto& member : crew_repository::crewMembers(context, production.id)) {
            crewOrder.push_back(member.id);
            crew.emplace(member.id, std::move(member));
        }
        auto rates = crew_repository::payRatesOfProduction(context, production.id);
        auto terms = CompensationProvisions::engagementTermsOfProduction(context, production.id);
        for (auto& engagement : crew_repository::engagements(context, production.id)) {
            const Uuid id = engagement.id;
            engagements.emplace(id, std::move(engagement));
            payRates.emplace(id, std::move(rates[id]));
            provisionTerms.emplace(id, std::move(terms[id]));
            guaranteeTerms.emplace(id, std::vector<std::pair<CalendarDate, std::int64_t>>{});
            turnaroundRests.emplace(id, std::nullopt);
        }
        loadPositionFacts();
        const std::string ofProduction = " s JOIN ProductionEngagement e ON s.engagementID = e.id WHERE e.productionID = ?1";
        forEachRow(context, "SELECT s.engagementID, s.effectiveDate, s.minimumPaidDurationSeconds FROM EngagementDailyGuaranteeTerm" + ofProduction +
                                " ORDER BY s.engagementID, s.effectiveDate, s.rowid",
                   production.id, [&](SQLite::Statement& row) {
                       guaranteeTerms[columns::uuid(row.getColumn(0))].emplace_back(columns::date(row.getColumn(1)), row.getColumn(2).getInt64());
                   });
        forEachRow(context, "SELECT s.engagementID, s.requiredRestSeconds FROM EngagementTurnaroundConfiguration" + ofProduction, production.id,
                   [&](SQLite::Statement& row) { turnaroundRests[columns::uuid(row.getColumn(0))] = row.getColumn(1).getInt64(); });
    }

    // Which position each engagement is paid in, and from when it follows the position's scale; the
    // Rate Cards are read when a day first needs a scale.
    void loadPositionFacts() {
        engagementPositions.clear();
        followsScale.clear();
        rateCards.reset();
        scaleRates.clear();
        rerateTargets.clear();
        productionPositions.reset();
        cardTerms.clear();
        personalOverrides.clear();
        // The shaped rules are kept: they are keyed by the schedule itself, and a kept day's inputs point at them.
        scheduleTermsByKey.clear();
        const std::string ofProductionEngagements = " s JOIN ProductionEngagement e ON s.engagementID = e.id WHERE e.productionID = ?1";
        forEachRow(context, "SELECT s.engagementID, s.sourcePresetID, s.payrollPositionName FROM EngagementPositionConfiguration" + ofProductionEngagements +
                                " AND s.sourcePresetID IS NOT NULL",
                   production.id, [&](SQLite::Statement& row) {
                       engagementPositions.emplace(columns::uuid(row.getColumn(0)), std::pair(columns::uuid(row.getColumn(1)), row.getColumn(2).getString()));
                   });
        forEachRow(context, "SELECT s.engagementID, s.effectiveDate, s.followsPositionScale FROM EngagementPositionRateConfiguration" +
                                ofProductionEngagements + " ORDER BY s.engagementID, s.effectiveDate",
                   production.id, [&](SQLite::Statement& row) {
                       followsScale[columns::uuid(row.getColumn(0))].emplace_back(columns::date(row.getColumn(1)), row.getColumn(2).getInt() != 0);
                   });
        forEachRow(context, "SELECT s.engagementID, s.defaultsData FROM EngagementPositionOverrideConfiguration" + ofProductionEngagements, production.id,
                   [&](SQLite::Statement& row) { personalOverrides.emplace(columns::uuid(row.getColumn(0)), columns::blob(row.getColumn(1))); });
    }

    // The production's positions and their card terms; whether any of them (or any person) shapes a schedule.
    void readPositionTerms() {
        if (productionPositions) return;
        productionPositions.emplace();
        for (auto& position : positions::list(context, PositionScope::production, production.id)) {
            anyScheduleTerms = anyScheduleTerms || position.dailyDefaults.changesSchedule();
            productionPositions->emplace(position.id, std::move(position));
        }
        cardTerms = rate_cards::terms(context, production.id);
        for (const auto& terms : cardTerms) {
            try {
                anyScheduleTerms = anyScheduleTerms || position_defaults::read(terms.dailyDefaultsData).changesSchedule();
            } catch (const MalformedInputError&) {
                // Unreadable terms leave the production's rules in force; the position's readiness says why.
            }
        }
        anyScheduleTerms = anyScheduleTerms || !personalOverrides.empty();
    }

    // The card whose terms govern a position on a date: the one pricing it then, else one in force with
    // terms for it, else none.
    const ProductionRateCard* governingCard(const Uuid& positionID, CalendarDate date) {
        if (const auto scale = scaleOn(positionID, date)) {
            for (const auto& card : *rateCards) {
                if (card.id == scale->rateCardID) return &card;
            }
        }
        for (const auto& card : *rateCards) {
            if (!card.covers(date)) continue;
            for (const auto& terms : cardTerms) {
                if (terms.cardID == card.id && terms.positionID == positionID) return &card;
            }
        }
        return nullptr;
    }

    // Terms that cannot shape the schedule: the production's rules pay the day, and the review says why.
    static DayScheduleTerms unusable(const std::string& positionName, const std::exception& error) {
        return {std::nullopt, "", std::nullopt, positionName + ": " + error.what() + " The production\u2019s rules pay the day."};
    }

    // How the day's position (and, in the position they are engaged in, the person) shapes the ordinary
    // schedule: its own schedule in place of the production's, then its changes and the person's.
    const DayScheduleTerms& scheduleTerms(const Uuid& positionID, const std::optional<Uuid>& personal, CalendarDate date, const Uuid& revisionID,
                                          RulesLocality locality) {
        static const DayScheduleTerms none;
        const auto position = productionPositions->find(positionID);
        if (position == productionPositions->end()) return none;
        scaleOn(positionID, date);  // reads the cards
        const ProductionRateCard* card = governingCard(positionID, date);
        const auto personalData = personal ? personalOverrides.find(*personal) : personalOverrides.end();
        std::string key = positionID.text() + (card ? card->id.text() : "-") + revisionID.text() + std::string(toRawValue(locality));
        if (personalData != personalOverrides.end()) key += personalData->first.text();
        return cached(scheduleTermsByKey, key, [&] {
            DayScheduleTerms shaped;
            const auto terms = rate_cards::resolveTerms(card, cardTerms, position->second);
            const std::string& name = position->second.positionName;
            try {
                // Terms missing, unreadable or in conflict leave the production's rules in force; the
                // position's readiness says why.
                if (terms.kind != PositionTermsResult::Kind::resolved) return shaped;
                const auto defaults = position_defaults::read(terms.defaultsData);
                const auto personChanges = personalData != personalOverrides.end() ? position_defaults::readOverrides(personalData->second)
                                                                                    : PositionScheduleOverrides{};
                const auto changes = position_defaults::merged(defaults.scheduleOverrides.value_or(PositionScheduleOverrides{}), personChanges);
                // Whose terms shaped the day, in words: the card's or the position's own, and the person's.
                std::string whose = terms.provenance == PositionTermsResult::Provenance::explicitTerms
                                        ? name + "’s contract setup on Rate Card " + entry_text::quoted(card->label)
                                        : name + "’s own defaults";
                if (!personChanges.empty()) whose = defaults.changesSchedule() ? whose + " with this person’s changes" : "This person’s changes to " + name;
                if (!defaults.ordinaryDaySchedule && changes.empty()) return shaped;
                const auto& base = defaults.ordinaryDaySchedule ? *defaults.ordinaryDaySchedule
                                                                : configuration(revisionID)->payrollRules.schedule(locality, DayKind::ordinary);
                shaped.schedule = position_defaults::adjusted(base, changes);
                shaped.key = rules_json::toJSON(*shaped.schedule).dump();
                shaped.words = whose + ": " + (defaults.ordinaryDaySchedule ? "its own ordinary-day schedule" : "") +
                               (defaults.ordinaryDaySchedule && !changes.empty() ? "; " : "") +
                               (changes.empty() ? "" : review_text::scheduleChangesLine(changes));
            } catch (const ProductionRulesetValidationError& error) {
                return unusable(name, error);
            } catch (const MalformedInputError& error) {
                return unusable(name, error);
            }
            return shaped;
        });
    }

    static Production load(ModelContext& context, const Uuid& productionID) {
        if (auto production = production_repository::fetch(context, productionID)) return *production;
        throw PayrollReviewError("The Payroll Week is not attached to a Production.");
    }

    const std::optional<ProductionEngagement>& engagement(const std::optional<Uuid>& id) {
        static const std::optional<ProductionEngagement> none;
        if (!id) return none;
        return cached(engagements, *id, [&] { return crew_repository::fetchEngagement(context, *id); });
    }

    const std::optional<CrewMember>& crewMember(const Uuid& id) {
        return cached(crew, id, [&] { return crew_repository::fetchCrewMember(context, id); });
    }

    // The engagement's own dated rate: the latest effective on or before the date.
    std::optional<OverScaleRate> ownRate(const Uuid& engagementID, CalendarDate date) {
        std::optional<OverScaleRate> own;
        for (const auto& rate : cached(payRates, engagementID, [&] { return crew_repository::payRates(context, engagementID); })) {
            if (sys_days(rate.effectiveDate) <= sys_days(date)) own = OverScaleRate{rate.hourlyAmount, rate.currencyCode, rate.effectiveDate};
        }
        return own;
    }

    // The daily scale of a production position on a date, when exactly one Rate Card in force prices it.
    std::optional<ScaleOnDate> scaleOn(const Uuid& positionID, CalendarDate date) {
        if (!rateCards) {
            rateCards = rate_cards::cards(context, production.id);
            scaleRates = rate_cards::scales(context, production.id);
        }
        std::optional<ScaleOnDate> found;
        int count = 0;
        for (const auto& scale : scaleRates) {
            if (scale.positionID != positionID || scale.schedule != EmploymentSchedule::daily) continue;
            const auto card = std::find_if(rateCards->begin(), rateCards->end(), [&](const auto& c) { return c.id == scale.rateCardID; });
            if (card == rateCards->end() || !card->covers(date)) continue;
            ++count;
            found = ScaleOnDate{scale.hourlyAmount, scale.currencyCode, card->id, card->label, card->effectiveStart};
        }
        return count == 1 ? found : std::nullopt;  // overlapping scales conflict: neither is the floor
    }

    PositionOnDate positionOn(const Uuid& positionID, const std::string& name, CalendarDate date) {
        return {positionID, name, scaleOn(positionID, date)};
    }

    // A rerate names a saved position: it is priced by the production's position with its code, else its name.
    std::optional<Uuid> rerateTarget(const Uuid& savedPositionID) {
        return cached(rerateTargets, savedPositionID, [&]() -> std::optional<Uuid> {
            const auto saved = positions::find(context, PositionScope::saved, std::nullopt, savedPositionID);
            if (!saved) return std::nullopt;
            for (const auto& p : positions::list(context, PositionScope::production, production.id)) {
                if (saved->occupationCode ? p.occupationCode == saved->occupationCode : p.positionName == saved->positionName) return p.id;
            }
            return std::nullopt;
        });
    }

    // The position a row is worked in: its Job for Today ("Classification for Today controls payroll"),
    // else its engagement's; a rerate changes the pay, not the classification.
    std::optional<PayrollReviewClassification> classificationOf(const CrewDailyEntry& entry, const WeekFacts& facts) {
        if (const auto job = facts.jobs.find(entry.id); job != facts.jobs.end()) return PayrollReviewClassification{job->second.first, job->second.second};
        if (!entry.engagementID) return std::nullopt;
        const auto position = engagementPositions.find(*entry.engagementID);
        if (position == engagementPositions.end()) return std::nullopt;
        return PayrollReviewClassification{position->second.first, position->second.second};
    }

    // The rate of a day: a crew row's (with its Job for Today or rerate) or an activity's.
    RateResolution rate(const std::optional<Uuid>& engagementID, CalendarDate date, const CrewDailyEntry* entry = nullptr,
                        const WeekFacts* facts = nullptr) {
        RateFacts rateFacts;
        if (engagementID) {
            rateFacts.individual = ownRate(*engagementID, date);
            if (const auto position = engagementPositions.find(*engagementID); position != engagementPositions.end()) {
                rateFacts.engagementPosition = positionOn(position->second.first, position->second.second, date);
                if (const auto dated = followsScale.find(*engagementID); dated != followsScale.end()) {
                    for (const auto& [from, follows] : dated->second) {
                        if (from <= date) rateFacts.followsPositionScale = follows;
                    }
                }
            }
        }
        if (entry && facts) {
            if (const auto job = facts->jobs.find(entry->id); job != facts->jobs.end()) {
                rateFacts.jobForToday = positionOn(job->second.first, job->second.second, date);
            }
            if (const auto rerate = facts->rerates.find(entry->id); rerate != facts->rerates.end()) {
                const auto target = rerateTarget(rerate->second.first);
                rateFacts.rerate = target ? positionOn(*target, rerate->second.second, date) : PositionOnDate{rerate->second.first, rerate->second.second};
            }
        }
        return resolveRate(rateFacts);
    }

    const PayrollRuleConfiguration* configuration(const std::optional<Uuid>& revisionID) {
        if (!revisionID) return nullptr;
        return &cached(configurations, *revisionID, [&] { return ProductionRulesets::readConfiguration(context, production.id, *revisionID); });
    }

    const SandboxConfiguration& sandbox(const Uuid& revisionID, RulesLocality locality, DayKind day, std::optional<MealWorkLocation> location) {
        return cached(sandboxes, std::tuple(revisionID, locality, day, location),
                      [&] { return ProductionRulesets::sandboxFor(*configuration(revisionID), revisionID, locality, day, location); });
    }

    const WeekFacts& week(const Uuid& weekID) {
        auto found = weeksRead.find(weekID);
        if (found == weeksRead.end()) {
            found = weeksRead.emplace(weekID, readWeek(context, weekID)).first;
            indexRows(found->second);
            // The week's DTSes also answer the turnaround's look at the next day.
            for (const auto& workday : found->second.workdays) workdaysByDate.emplace(workday.calendarDate, workday);
        }
        return found->second;
    }

    const std::optional<Workday>& workdayOn(CalendarDate date) {
        return cached(workdaysByDate, date, [&] { return weeks::workdayOn(context, production.id, date); });
    }

    // The crew member's call on the next calendar day, if they work it; turnaround over a gap (a
    // weekend) is not evaluated.
    std::tuple<std::optional<Uuid>, std::optional<CalendarDate>, std::optional<Instant>> nextCall(const Uuid& crewMemberID, CalendarDate date) {
        const CalendarDate next(sys_days(date) + days(1));
        const auto& workday = workdayOn(next);
        if (!workday) return {};
        const auto read = weeksRead.find(workday->payrollWeekID);
        if (read != weeksRead.end()) {
            // The week's index of rows by person answers without looking through the whole DTS.
            const auto rows = read->second.rowsByCrewMember.find(crewMemberID);
            if (rows == read->second.rowsByCrewMember.end()) return {};
            for (const auto& [day, entry] : rows->second) {
                if (day->id == workday->id) return {workday->id, next, DailyTimeSheets::effectiveTimes(*day, *entry).call.value};
            }
            return {};
        }
        for (const auto& entry : entriesOf(*workday)) {
            if (entry.crewMemberID == crewMemberID) {
                return {workday->id, next, DailyTimeSheets::effectiveTimes(*workday, entry).call.value};
            }
        }
        return {};
    }

    std::optional<TurnaroundRule> turnaroundRule(const std::optional<ProductionEngagement>& engagement, const SandboxConfiguration& rules) {
        if (engagement) {
            const auto& rest = cached(turnaroundRests, engagement->id, [&] {
                return satellites::integer(satellites::find(context, satelliteTable("EngagementTurnaroundConfiguration"), engagement->id),
                                    "requiredRestSeconds");
            });
            if (rest && *rest > 0) {
                return TurnaroundRule{RuleID("engagement.turnaround.required-rest"), WorkDuration(*rest), "engagement.turnaround.required-rest"};
            }
        }
        const auto classification = engagement ? engagement->classificationID : std::nullopt;
        return cached(turnaroundSuggestions, std::pair(&rules, classification), [&]() -> std::optional<TurnaroundRule> {
            try {
                const auto suggestion = TurnaroundRules::suggestion(rules.turnaroundRules, rules.rulesLocality, "", classification);
                if (!suggestion) return std::nullopt;
                return TurnaroundRule{RuleID(suggestion->ruleID), WorkDuration(suggestion->requiredRestSeconds), suggestion->origin};
            } catch (const DomainError&) {
                return std::nullopt;
            }
        });
    }

    std::shared_ptr<const DailyPayrollReview> day(const Workday& workday, const CrewDailyEntry& entry, const WeekFacts& facts,
                                                  const std::vector<CalendarDate>& worked) {
        const DTSCalculationInput source = calculationInput(workday, entry, facts);
        const auto& engagement = this->engagement(entry.engagementID);
        const auto& revisionID = revisionOn(workday.calendarDate);
        if (!revisionID) {
            DailyPayrollReview review{.classification = std::nullopt, .id = workday.id, .calendarDate = workday.calendarDate,
                                      .workdaySequence = std::nullopt, .source = source};
            review.status = {DailyPayrollStatus::Case::calculationFailed, std::nullopt, std::string(ruleset_messages::noRevision)};
            review.issues.push_back({PayrollReviewIssue::Kind::calculationFailure, review.status.failure,
                                     PayrollReviewIssue::DestinationKind::workday, workday.id});
            return std::make_shared<const DailyPayrollReview>(std::move(review));
        }
        const auto sequence = CrewWorkdaySequenceResolver::position(worked, workday.calendarDate);
        // The locality: the row's own for the day, else the engagement's, else the ruleset's default.
        const auto& defaults = configuration(revisionID)->payrollRules;
        const RulesLocality locality =
            entry.rulesLocalityOverride.value_or(engagement && engagement->rulesLocalityOverride ? *engagement->rulesLocalityOverride
                                                                                                : defaults.defaultRulesLocality);
        const auto location = facts.locations.find(workday.id);
        const SandboxConfiguration& rules = sandbox(*revisionID, locality, dayKindOf(sequence),
                                                    location == facts.locations.end() ? std::nullopt : std::optional(location->second));

        auto resolution = rate(entry.engagementID, workday.calendarDate, &entry, &facts);
        const auto classification = classificationOf(entry, facts);
        const SandboxConfiguration* dayRules = &rules;
        std::optional<std::string> scheduleWords, scheduleProblem;
        if (classification && rules.scheduleDayKind == DayKind::ordinary) {
            readPositionTerms();
            if (anyScheduleTerms) {
                // A person's own changes go with the position they are engaged in, not a Job for Today.
                const auto engaged = entry.engagementID ? engagementPositions.find(*entry.engagementID) : engagementPositions.end();
                const bool inOwnPosition = engaged != engagementPositions.end() && engaged->second.first == classification->positionID;
                const auto& shaped = scheduleTerms(classification->positionID, inOwnPosition ? entry.engagementID : std::nullopt,
                                                   workday.calendarDate, *revisionID, locality);
                scheduleWords = shaped.words;
                scheduleProblem = shaped.problem;
                if (shaped.schedule) {
                    const auto day = dayKindOf(sequence);
                    const auto where = location == facts.locations.end() ? std::nullopt : std::optional(location->second);
                    dayRules = &cached(shapedSandboxes, std::tuple(*revisionID, locality, day, where, shaped.key), [&] {
                        return ProductionRulesets::sandboxFor(*configuration(revisionID), *revisionID, locality, day, where, &*shaped.schedule);
                    });
                }
            }
        }
        DailyReviewInputs inputs{source, dayRules, std::move(resolution.rate), std::move(resolution.warning)};
        inputs.classification = classification;
        inputs.scheduleTerms = scheduleWords;
        inputs.scheduleTermsProblem = scheduleProblem;
        inputs.sequence = sequence;
        if (engagement) {
            inputs.personalDailyGuaranteeSeconds = personalGuarantee(engagement->id, workday.calendarDate);
            if (facts.boxRentals.contains(entry.id)) {
                const auto box = satellites::findInForce(context, satelliteTable("EngagementBoxRentalTerm"), engagement->id, workday.calendarDate);
                if (const auto amount = Decimal::parse(satellites::text(box, "dailyAmount").value_or(""))) {
                    inputs.boxRental = Money(*amount, CurrencyCode(satellites::text(box, "currencyCode").value_or("USD")));
                }
            }
            for (auto kind : {CompensationProvisionKind::cellPhoneAllowance, CompensationProvisionKind::perDiem}) {
                if (auto resolved = provision(engagement->id, kind, workday.calendarDate, provisionDayKind(source.workMode))) {
                    inputs.dailyProvisions.push_back(*resolved);
                }
            }
            inputs.mileage = provision(engagement->id, CompensationProvisionKind::mileage, workday.calendarDate,
                                       provisionDayKind(source.workMode));
        }
        const auto ownMiles = facts.rowMiles.find(entry.id);
        const auto departmentMiles = facts.departmentMiles.find(workday.id);
        if (ownMiles != facts.rowMiles.end()) {
            inputs.miles = ownMiles->second;
        } else if (departmentMiles != facts.departmentMiles.end()) {
            inputs.miles = departmentMiles->second;
        }
        inputs.turnaroundRule = turnaroundRule(engagement, *dayRules);
        if (entry.crewMemberID) std::tie(inputs.nextWorkdayID, inputs.nextWorkdayDate, inputs.nextCall) = nextCall(*entry.crewMemberID, workday.calendarDate);
        return calculated(entry.id, std::move(inputs));
    }

    std::shared_ptr<const DailyPayrollReview> calculated(const Uuid& entryID, DailyReviewInputs inputs) {
        if (!recalculating) return std::make_shared<const DailyPayrollReview>(DailyReviewCalculator::calculate(inputs));
        const auto last = lastDays.find(entryID);
        if (last != lastDays.end() && last->second.first == inputs) return last->second.second;
        auto day = std::make_shared<const DailyPayrollReview>(DailyReviewCalculator::calculate(inputs));
        // A window shows a week or two at a time; browsing a whole season starts the memory afresh.
        if (lastDays.size() >= maximumKeptDays) lastDays.clear();
        lastDays.insert_or_assign(entryID, std::pair(std::move(inputs), day));
        return day;
    }

    NonDTSPayrollActivityReview activity(const PayrollDayActivity& activity) {
        NonDTSPayrollActivityReview review{activity.id, activity.calendarDate, activity.kindRawValue, activity.travelDurationSeconds};
        const auto kind = activity.kind();
        const auto& engagement = this->engagement(activity.engagementID);
        const auto revisionID = revisionOn(activity.calendarDate);
        const auto rateOnDay = rate(activity.engagementID, activity.calendarDate).rate;
        const std::optional<HourlyPayRate> hourly =
            rateOnDay ? std::optional(HourlyPayRate(rateOnDay->hourlyAmount, CurrencyCode(rateOnDay->currencyCode))) : std::nullopt;
        if (kind == PayrollDayActivityKind::idleAvailable) {
            IdlePayrollContribution idle{activity.id, activity.calendarDate};
            idle.rule = revisionID ? configuration(revisionID)->idleCompensation : std::nullopt;
            if (hourly) idle.applicableRate = hourly->amountPerHour();
            if (!idle.rule) {
                idle.status = IdlePayrollContribution::Status::missingRule;
                review.words = std::string(review_words::idleMissingRule);
            } else if (!hourly) {
                idle.status = IdlePayrollContribution::Status::missingRate;
                review.words = std::string(review_words::idleMissingRate);
            } else {
                idle.status = IdlePayrollContribution::Status::calculated;
                idle.result = SupplementalCompensationCalculator::idle(WorkDuration(idle.rule->compensatedSecondsPerDay), *hourly,
                                                                       RateMultiplier(idle.rule->straightTimeRateMultiplier), RoundingRule::cents());
                review.words = std::string(review_words::idleCalculated);
            }
            review.idleCompensation = idle;
        } else if (kind == PayrollDayActivityKind::holiday) {
            review.holidayCompensation = holiday(activity, engagement, revisionID, hourly);
            review.words = review.holidayCompensation->words;
        } else if (kind == PayrollDayActivityKind::travel) {
            review.words = std::string(review_words::travelNotConfigured);
        } else {
            review.words = std::string(review_words::noCompensationInferred);
        }
        if (engagement && kind) {
            const auto dayKind = *kind == PayrollDayActivityKind::travel        ? ProvisionDayKind::travel
                                 : *kind == PayrollDayActivityKind::idleAvailable ? ProvisionDayKind::idleAvailable
                                 : *kind == PayrollDayActivityKind::holiday       ? ProvisionDayKind::holiday
                                                                                  : ProvisionDayKind::personalUnavailable;
            for (auto provisionKind : {CompensationProvisionKind::cellPhoneAllowance, CompensationProvisionKind::perDiem}) {
                if (auto resolved = provision(engagement->id, provisionKind, activity.calendarDate, dayKind)) {
                    const Money amount(resolved->amount, CurrencyCode(resolved->currencyCode));
                    const auto fixed = SupplementalCompensationCalculator::fixedDaily(amount, true);
                    review.additionalCompensation.push_back({provisionKind, amount,
                                                             resolved->amountOrigin == CompensationProvisionOverrideMode::personalAmount,
                                                             fixed.trace, std::nullopt});
                }
            }
        }
        return review;
    }

    HolidayPayrollContribution holiday(const PayrollDayActivity& activity, const std::optional<ProductionEngagement>& engagement,
                                       const std::optional<Uuid>& revisionID, const std::optional<HourlyPayRate>& hourly) {
        HolidayPayrollContribution holiday{activity.id, activity.calendarDate};
        using Status = HolidayPayrollContribution::Status;
        if (!engagement) {
            holiday.status = Status::missingEngagement;
            holiday.words = std::string(review_words::holidayMissingEngagement);
            return holiday;
        }
        const auto* configuration = this->configuration(revisionID);
        if (!configuration || configuration->holidayCompensation.empty()) {
            holiday.words = std::string(review_words::holidayNotConfigured);
            return holiday;
        }
        const RulesLocality locality = engagement->rulesLocalityOverride.value_or(configuration->payrollRules.defaultRulesLocality);
        const bool weekly = engagement->employmentSchedule == EmploymentSchedule::weekly;
        holiday.context = locality == RulesLocality::distant ? (weekly ? HolidayRuleContext::weeklyDistant : HolidayRuleContext::dailyDistant)
                                                             : (weekly ? HolidayRuleContext::weeklyLocal : HolidayRuleContext::dailyLocal);
        const auto rule = configuration->holidayCompensation.find(*holiday.context);
        if (rule == configuration->holidayCompensation.end()) {
            holiday.words = std::string(review_words::holidayMissingContextPrefix) + " " +
                            std::string(review_words::holidayContextWords(*holiday.context)) + ".";
        } else if (!hourly) {
            holiday.status = Status::missingRate;
            holiday.words = std::string(review_words::holidayMissingRate);
        } else {
            holiday.status = Status::calculated;
            holiday.result = SupplementalCompensationCalculator::unworkedHoliday(rule->second, *hourly, RoundingRule::cents());
            holiday.words = std::string(review_words::holidayCalculated);
        }
        return holiday;
    }

    using Row = std::pair<const Workday*, const CrewDailyEntry*>;

    // The person's rows in the week, one per DTS (a duplicate row counts once).
    static std::vector<Row> rowsOf(const WeekFacts& facts, const Uuid& crewMemberID) {
        const auto found = facts.rowsByCrewMember.find(crewMemberID);
        return found == facts.rowsByCrewMember.end() ? std::vector<Row>{} : found->second;
    }

    static std::vector<CalendarDate> datesOf(const std::vector<Row>& rows) {
        std::vector<CalendarDate> dates;
        for (const auto& [workday, entry] : rows) dates.push_back(workday->calendarDate);
        return dates;
    }

    // Each row of one DTS, calculated as its weekly review calculates it.
    std::vector<DailyPayrollReview> daysOf(const Workday& workday) {
        const WeekFacts& facts = week(workday.payrollWeekID);
        std::vector<DailyPayrollReview> days;
        for (const auto& entry : facts.entriesByWorkday.at(workday.id)) {
            const auto worked = entry.crewMemberID ? datesOf(rowsOf(facts, *entry.crewMemberID)) : std::vector{workday.calendarDate};
            days.push_back(*day(workday, entry, facts, worked));
        }
        return days;
    }

    PayrollWeek weekOfProduction(const Uuid& payrollWeekID) {
        const auto week = weeks::fetchWeek(context, payrollWeekID);
        if (!week || week->productionID != production.id) throw PayrollReviewError("The Payroll Week is not attached to a Production.");
        return *week;
    }

    WeeklyCrewPayrollReview weekly(const PayrollWeek& week, const Uuid& crewMemberID) {
        const WeekFacts& facts = this->week(week.id);
        const auto& member = crewMember(crewMemberID);
        WeeklyCrewPayrollReview review{crewMemberID, member ? member->displayName : "", CalendarDate(floor<days>(week.startDate))};
        const auto revisionID = revisionOn(review.weekStartDate);
        if (const auto* configuration = this->configuration(revisionID)) {
            review.configurationName = configuration->payrollRules.name;
            review.rulesetRevisionID = revisionID;
            review.rulesetEffectiveFrom = configuration->payrollRules.effectiveFrom;
        }

        const auto rows = rowsOf(facts, crewMemberID);
        const auto worked = datesOf(rows);
        review.days.reserve(rows.size());
        for (const auto& [workday, entry] : rows) review.days.push_back(day(*workday, *entry, facts, worked));
        for (const auto& activity : facts.activities) {
            if (activity.crewMemberID == crewMemberID) review.nonDTSActivities.push_back(this->activity(activity));
        }
        total(review);
        return review;
    }

    // The week's totals: categories, allowances, meal penalties, vacation pay and the estimated gross,
    // which is the sum of the categories so that every amount in it has a line.
    void total(WeeklyCrewPayrollReview& review) {
        std::vector<DatedMealPenaltyPeriod> mealPeriods;
        try {
            for (const auto& day : review.days) {
                review.issues.insert(review.issues.end(), day.issues.begin(), day.issues.end());
                addCategories(review.categories, day.categories);
                if (day.status.kind == DailyPayrollStatus::Case::calculated && !day.applicableRate) {
                    review.missingRateDates.push_back(day.calendarDate);
                }
                if (day.boxRentalCompensation) {
                    review.boxRentalCompensation = review.boxRentalCompensation ? *review.boxRentalCompensation + *day.boxRentalCompensation
                                                                                : *day.boxRentalCompensation;
                }
                // Every day's item with its own trace; the week's category of the kind holds the total.
                review.additionalCompensation.insert(review.additionalCompensation.end(), day.additionalCompensation.begin(),
                                                     day.additionalCompensation.end());
                if (day.mealPenaltySchedule) {
                    for (const auto& meal : day.mealPeriods) {
                        mealPeriods.push_back({day.id.text(), day.calendarDate, *day.mealPenaltySchedule, day.mealPenaltyFixedDollarWeeklyLimit, meal});
                    }
                }
            }
            for (const auto& activity : review.nonDTSActivities) {
                if (const auto issue = activityIssue(activity, review.crewMemberID)) review.issues.push_back(*issue);
                if (activity.idleCompensation) review.idleCompensation.push_back(*activity.idleCompensation);
                review.additionalCompensation.insert(review.additionalCompensation.end(), activity.additionalCompensation.begin(),
                                                     activity.additionalCompensation.end());
            }
            review.mealPenalties = WeeklyMealPenaltyCompensator::compensate(mealPeriods);
            vacationPay(review, straightTimeEarnings(review));
            paid_categories::addOtherCategories(review);
            // Starting at cents keeps a week with nothing priced reading "0.00" rather than "0".
            review.estimatedGross = paid_categories::sum(review.categories, Money(Decimal("0.00"), CurrencyCode(production.currencyCode)));
            review.estimatedGrossIsPartial = !review.missingRateDates.empty() || leavesPayUncounted(review);
        } catch (const DomainError& error) {
            weekFailure(review, error.description());
        } catch (const PayrollReviewError& error) {
            weekFailure(review, error.what());
        }
    }

    Money straightTimeEarnings(const WeeklyCrewPayrollReview& review) const {
        Money straightTime = Money::zero(CurrencyCode(production.currencyCode));
        for (const auto& day : review.days) {
            if (day.straightTimeCompensation) straightTime = straightTime + *day.straightTimeCompensation;
        }
        return straightTime;
    }

    // An idle or holiday day whose pay cannot be calculated for want of the person's rate or engagement is
    // an issue to fix on the crew member. A missing rule shows on the activity itself: it is fixed in the
    // rules, not on anyone.
    static std::optional<PayrollReviewIssue> activityIssue(const NonDTSPayrollActivityReview& activity, const Uuid& crewMemberID) {
        const bool missingRate =
            (activity.idleCompensation && activity.idleCompensation->status == IdlePayrollContribution::Status::missingRate) ||
            (activity.holidayCompensation && activity.holidayCompensation->status == HolidayPayrollContribution::Status::missingRate);
        const bool missingEngagement =
            activity.holidayCompensation && activity.holidayCompensation->status == HolidayPayrollContribution::Status::missingEngagement;
        if (!missingRate && !missingEngagement) return std::nullopt;
        return PayrollReviewIssue{missingRate ? PayrollReviewIssue::Kind::missingRate : PayrollReviewIssue::Kind::calculationFailure,
                                  activity.words, PayrollReviewIssue::DestinationKind::crewMember, crewMemberID};
    }

    // A day that could not be calculated, an idle or holiday activity whose pay could not be, or a meal
    // penalty that could not be priced adds nothing to the gross although it is owed: the gross is then
    // only part of the week.
    static bool leavesPayUncounted(const WeeklyCrewPayrollReview& review) {
        const bool dayUncounted = std::any_of(review.days.begin(), review.days.end(),
                                              [](const DailyPayrollReview& d) { return d.status.kind != DailyPayrollStatus::Case::calculated; });
        const bool activityUncounted = std::any_of(review.nonDTSActivities.begin(), review.nonDTSActivities.end(), [](const auto& a) {
            return (a.idleCompensation && !a.idleCompensation->result) || (a.holidayCompensation && !a.holidayCompensation->result);
        });
        // Penalties past the weekly fixed-dollar limit are owed at a rate the contract must confirm.
        const bool penaltiesUnpriced = review.mealPenalties.unresolvedPrevailingRateCount > 0;
        return dayUncounted || activityUncounted || penaltiesUnpriced;
    }

    void weekFailure(WeeklyCrewPayrollReview& review, const std::string& message) {
        review.estimatedGross.reset();
        review.issues.push_back({PayrollReviewIssue::Kind::calculationFailure, message, PayrollReviewIssue::DestinationKind::crewMember,
                                 review.crewMemberID});
    }

    // Vacation pay on the week's straight-time earnings, at the percentage in force for the week.
    void vacationPay(WeeklyCrewPayrollReview& review, const Money& straightTime) {
        std::optional<Uuid> engagementID;
        for (const auto& day : review.days) {
            if (day.source.engagementID) engagementID = day.source.engagementID;
        }
        if (!engagementID) return;
        const auto percentageOn = [&](CalendarDate date) -> std::optional<Decimal> {
            // Vacation pay is a weekly percentage: any day kind that carries it gives the percentage of that date.
            for (const auto dayKind : {ProvisionDayKind::timedWorkDay, ProvisionDayKind::worked, ProvisionDayKind::prep,
                                       ProvisionDayKind::idleAvailable, ProvisionDayKind::travel, ProvisionDayKind::holiday,
                                       ProvisionDayKind::personalUnavailable}) {
                if (const auto resolved = provision(*engagementID, CompensationProvisionKind::vacationPay, date, dayKind)) return resolved->amount;
            }
            return std::nullopt;
        };
        // Checked once per engagement and week (a kept review recalculates the same week again and again),
        // and only when a provision or a term of the engagement takes effect within the week.
        const auto& change = cached(vacationChanges, std::pair(*engagementID, review.weekStartDate), [&]() -> std::optional<std::string> {
            if (provisionsSettledFor(*engagementID, review.weekStartDate)) return std::nullopt;
            return CompensationProvisions::vacationPayChangeWithinWeek(percentageOn, review.weekStartDate);
        });
        if (change) throw PayrollReviewError(*change);
        for (const auto& day : review.days) {
            const auto resolved = provision(*engagementID, CompensationProvisionKind::vacationPay, day.calendarDate,
                                            provisionDayKind(day.source.workMode));
            if (!resolved) continue;
            // A day priced without a rate leaves the basis unknown: no figure rather than one too low.
            if (!review.missingRateDates.empty()) {
                review.issues.push_back({PayrollReviewIssue::Kind::missingRate, std::string(review_words::vacationBasisUnknown),
                                         PayrollReviewIssue::DestinationKind::crewMember, review.crewMemberID});
                return;
            }
            const auto result = SupplementalCompensationCalculator::percentage(CompensationPercentage(resolved->amount), straightTime,
                                                                               RoundingRule::cents());
            AdditionalCompensationReview item{CompensationProvisionKind::vacationPay, result.compensation,
                                              resolved->amountOrigin == CompensationProvisionOverrideMode::personalAmount, result.trace,
                                              resolved->amount.toString() + "% of straight-time earnings"};
            review.additionalCompensation.push_back(std::move(item));
            return;
        }
    }
};

ExpectedPayrollReview::ExpectedPayrollReview(ModelContext& context, const Uuid& productionID)
    : session_(std::make_unique<Session>(context, productionID)) {}

ExpectedPayrollReview::~ExpectedPayrollReview() = default;

void ExpectedPayrollReview::forgetTimeSheet(const Uuid& workdayID) {
    auto& session = *session_;
    session.recalculating = true;
    for (auto week = session.weeksRead.begin(); week != session.weeksRead.end(); ++week) {
        if (!week->second.entriesByWorkday.contains(workdayID)) continue;
        if (!rereadWorkday(session.context, week->second, workdayID)) session.weeksRead.erase(week);
        break;
    }
    session.entriesByWorkday.erase(workdayID);
    // The date's DTS is looked up again when a turnaround needs it.
    std::erase_if(session.workdaysByDate, [&](const auto& item) { return !item.second || item.second->id == workdayID; });
}

void ExpectedPayrollReview::forgetPositions() {
    session_->recalculating = true;
    session_->loadPositionFacts();
}

void ExpectedPayrollReview::forgetTimeSheets() {
    session_->recalculating = true;
    session_->weeksRead.clear();
    session_->workdaysByDate.clear();
    session_->entriesByWorkday.clear();
}

WeeklyCrewPayrollReview ExpectedPayrollReview::weekly(const Uuid& payrollWeekID, const Uuid& crewMemberID) {
    return session_->weekly(session_->weekOfProduction(payrollWeekID), crewMemberID);
}

std::vector<DailyPayrollReview> ExpectedPayrollReview::dailyForWorkday(const Uuid& workdayID) {
    const auto workday = weeks::fetchWorkday(session_->context, workdayID);
    if (!workday) throw PayrollReviewError("The DTS no longer exists.");
    session_->weekOfProduction(workday->payrollWeekID);
    return session_->daysOf(*workday);
}

std::vector<WeeklyCrewPayrollReview> ExpectedPayrollReview::weeklyForAll(const Uuid& payrollWeekID) {
    const PayrollWeek week = session_->weekOfProduction(payrollWeekID);
    const WeekFacts& facts = session_->week(payrollWeekID);
    std::set<Uuid> people;
    for (const auto& [workday, entries] : facts.entriesByWorkday) {
        for (const auto& entry : entries) {
            if (entry.crewMemberID) people.insert(*entry.crewMemberID);
        }
    }
    for (const auto& activity : facts.activities) {
        if (activity.crewMemberID) people.insert(*activity.crewMemberID);
    }
    std::vector<WeeklyCrewPayrollReview> reviews;
    for (const auto& member : session_->crewOrder) {
        if (people.erase(member) > 0) reviews.push_back(session_->weekly(week, member));
    }
    // Anyone hired after the review began still has their week, after the others.
    for (const auto& member : people) reviews.push_back(session_->weekly(week, member));
    return reviews;
}

}  // namespace tessel
