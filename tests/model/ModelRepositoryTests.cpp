#include <gtest/gtest.h>

#include "../support/TemporaryFolder.hpp"
#include "../support/StoreTest.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/RecordRepository.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/model/StoreSchema.hpp"
#include "App/model/TesselPersistence.hpp"
#include "App/model/UserSettings.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using testing::TemporaryFolder;
namespace weeks = payroll_week_repository;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;

CalendarDate day(int d) { return 2026y / November / d; }
const Instant created = sys_days(day(1)) + hours(9);

// A store of its own, with one production, for each test.
class Model : public testing::StoreTest {
protected:
    Production production = production_repository::create(context, "Night Harbor", {}, created);

    std::int64_t rows(std::string_view table) {
        return store->database().execAndGet("SELECT COUNT(*) FROM " + std::string(table)).getInt64();
    }

    // A DTS with one crew row, the satellites of both, and an activity, all in the date's week.
    struct Day {
        PayrollWeek week;
        Workday workday;
        CrewDailyEntry entry;
    };
    Day dayWithRow(const Uuid& productionID, CalendarDate date, const CrewMember& member, const ProductionEngagement& engagement) {
        const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, productionID, date);
        Workday workday{Uuid::generate(), week.id, date};
        workday.generalCrewCall = sys_days(date) + hours(7);
        weeks::createWorkday(context, workday);
        CrewDailyEntry entry{Uuid::generate(), workday.id, member.id, engagement.id};
        weeks::createEntry(context, entry);
        weeks::createActivity(context, {Uuid::generate(), week.id, date, "travel", 3600, member.id, engagement.id});
        satellites::write(context, satelliteTable("WorkdayMileageConfiguration"), workday.id, {{"miles", std::string("12.5")}});
        satellites::write(context, satelliteTable("CrewDailyWorkModeConfiguration"), entry.id, {{"modeRawValue", std::string("worked")}});
        satellites::write(context, satelliteTable("CrewDailyDTSTitleConfiguration"), entry.id, {{"displayTitle", std::string("Best Boy")}});
        return {week, workday, entry};
    }
};

TEST_F(Model, ANewProductionAndEngagementHaveTheirDefaults) {
    EXPECT_EQ(production.dtsTimeDisplay, DTSTimeDisplay::payrollDecimal);
    EXPECT_EQ(production.defaultLunchDurationSeconds, 1800);
    EXPECT_EQ(production.currencyCode, "USD");
    EXPECT_EQ(ProductionWeekCalendars::payrollStartWeekday(context, production.id), 2);
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    const auto stored = crew_repository::fetchEngagement(context, engagement.id);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->employmentSchedule, EmploymentSchedule::daily);
    EXPECT_EQ(stored->crewParticipation, CrewParticipation::fullTime);
    EXPECT_TRUE(stored->appliesOn(day(30)));
    EXPECT_FALSE(stored->appliesOn(day(1)));
    EXPECT_THROW(production_repository::create(context, "  ", {}, created), ModelValidationError);
}

TEST_F(Model, UpdatesWriteEveryFieldBack) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    engagement.effectiveThrough = day(20);
    engagement.crewParticipation = CrewParticipation::dayplayer;
    engagement.rulesLocalityOverride = RulesLocality::distant;
    engagement.regularPrecallDurationSeconds = 1800;
    crew_repository::updateEngagement(context, engagement);
    const auto storedEngagement = crew_repository::fetchEngagement(context, engagement.id);
    EXPECT_EQ(storedEngagement->effectiveThrough, day(20));
    EXPECT_EQ(storedEngagement->crewParticipation, CrewParticipation::dayplayer);
    EXPECT_EQ(storedEngagement->rulesLocalityOverride, RulesLocality::distant);
    EXPECT_EQ(storedEngagement->regularPrecallDurationSeconds, 1800);

    Day d = dayWithRow(production.id, day(3), member, engagement);
    d.workday.wrap = sys_days(day(4)) + hours(1);  // 25.0 on the DTS
    d.workday.firstMealGraceWasCalled = true;
    d.workday.sharedTravelDurationSeconds = 3600;
    weeks::updateWorkday(context, d.workday);
    const auto storedDay = weeks::fetchWorkday(context, d.workday.id);
    EXPECT_EQ(storedDay->wrap, d.workday.wrap);
    EXPECT_TRUE(storedDay->firstMealGraceWasCalled);
    EXPECT_EQ(storedDay->sharedTravelDurationSeconds, 3600);
    EXPECT_EQ(storedDay->generalCrewCall, sys_days(day(3)) + hours(7));

    d.entry.callOverride = sys_days(day(3)) + hours(6);
    d.entry.callOverrideWasAutofilled = true;
    d.entry.nonDeductibleBreakfast = true;
    d.entry.displayOrder = 4;
    weeks::updateEntry(context, d.entry);
    const auto storedEntry = weeks::entries(context, d.workday.id).at(0);
    EXPECT_EQ(storedEntry.callOverride, d.entry.callOverride);
    EXPECT_TRUE(storedEntry.callOverrideWasAutofilled);
    EXPECT_TRUE(storedEntry.nonDeductibleBreakfast);
    EXPECT_EQ(storedEntry.displayOrder, 4);
}

TEST_F(Model, UnknownRawValuesReadAsTheirFallbacks) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    store->database().exec("UPDATE ProductionEngagement SET employmentScheduleRawValue = 'fortnightly', "
                           "crewParticipationRawValue = 'guest', rulesLocalityOverrideRawValue = 'lunar'");
    store->database().exec("UPDATE Production SET dtsTimeDisplayRawValue = 'sundial'");
    const auto stored = crew_repository::fetchEngagement(context, engagement.id);
    EXPECT_EQ(stored->employmentSchedule, EmploymentSchedule::daily);
    EXPECT_EQ(stored->crewParticipation, CrewParticipation::fullTime);
    EXPECT_FALSE(stored->rulesLocalityOverride.has_value());
    EXPECT_EQ(production_repository::fetch(context, production.id)->dtsTimeDisplay, DTSTimeDisplay::payrollDecimal);
}

TEST_F(Model, PayRatesAreValidatedAndReadInDateOrder) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    crew_repository::addPayRate(context, engagement.id, day(9), "47.50", "USD");
    crew_repository::addPayRate(context, engagement.id, day(2), "45.00", "USD");
    const auto rates = crew_repository::payRates(context, engagement.id);
    ASSERT_EQ(rates.size(), 2u);
    EXPECT_EQ(rates[0].hourlyAmount.toString(), "45.00");
    try {
        crew_repository::addPayRate(context, engagement.id, day(3), "forty", "USD");
        FAIL();
    } catch (const ModelValidationError& error) {
        EXPECT_STREQ(error.what(), "Enter a valid hourly rate.");
    }
    try {
        crew_repository::addPayRate(context, engagement.id, day(3), "-1", "USD");
        FAIL();
    } catch (const ModelValidationError& error) {
        EXPECT_STREQ(error.what(), "Enter a non-negative hourly rate.");
    }
}

TEST_F(Model, DeletingAProductionLeavesNoRowOfItBehind) {
    const auto other = production_repository::create(context, "Other Show", {}, created);
    for (const Production& p : {production, other}) {
        const auto member = crew_repository::createCrewMember(context, p.id, "Rowan Vale");
        const auto engagement = crew_repository::createEngagement(context, p.id, member.id, day(2));
        crew_repository::addPayRate(context, engagement.id, day(2), "45.00", "USD");
        crew_repository::addCondition(context, engagement.id, crew_repository::createCondition(context, p.id, "Distant"));
        crew_repository::createClassification(context, p.id, "Union");
        satellites::add(context, satelliteTable("EngagementDailyGuaranteeTerm"), engagement.id,
                        {{"effectiveDate", std::string("2026-11-02T00:00:00Z")}, {"minimumPaidDurationSeconds", std::int64_t{28800}}});
        satellites::write(context, satelliteTable("ProductionCompanyIdentity"), p.id, {{"company", std::string("Harbor Pictures")}});
        dayWithRow(p.id, day(3), member, engagement);
    }
    const auto rowsOfOther = [&] {
        std::map<std::string, std::int64_t> counts;
        for (auto table : store_schema::entityTables()) counts[std::string(table)] = rows(table);
        return counts;
    };
    ASSERT_TRUE(production_repository::remove(context, production.id));
    // What remains is exactly the other production's data: deleting it too must leave every table empty.
    const auto remaining = rowsOfOther();
    EXPECT_EQ(remaining.at("CrewDailyMileageEntry") + remaining.at("CrewDailyWorkModeConfiguration"), 1);
    ASSERT_TRUE(production_repository::remove(context, other.id));
    for (auto table : store_schema::entityTables()) EXPECT_EQ(rows(table), 0) << table;
    EXPECT_FALSE(production_repository::remove(context, other.id));
}

TEST_F(Model, DeletingAClassificationOrConditionOnlyUnlinksIt) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    engagement.classificationID = crew_repository::createClassification(context, production.id, "Union");
    crew_repository::updateEngagement(context, engagement);
    const Uuid condition = crew_repository::createCondition(context, production.id, "Distant");
    crew_repository::addCondition(context, engagement.id, condition);
    crew_repository::removeClassification(context, *engagement.classificationID);
    crew_repository::removeCondition(context, condition);
    const auto stored = crew_repository::fetchEngagement(context, engagement.id);
    ASSERT_TRUE(stored.has_value());
    EXPECT_FALSE(stored->classificationID.has_value());
    EXPECT_TRUE(crew_repository::conditionsOf(context, engagement.id).empty());
}

TEST_F(Model, SatellitesAreOnePerOwnerAndDatedOnesResolveByDate) {
    const Uuid owner = Uuid::generate();
    const auto& mileage = satelliteTable("WorkdayMileageConfiguration");
    EXPECT_FALSE(satellites::find(context, mileage, owner).has_value());
    satellites::write(context, mileage, owner, {{"miles", std::string("10")}});
    satellites::write(context, mileage, owner, {{"miles", std::string("12.5")}});
    EXPECT_EQ(rows("WorkdayMileageConfiguration"), 1);
    EXPECT_EQ(std::get<std::string>(satellites::find(context, mileage, owner)->at(0).second), "12.5");

    const auto& guarantee = satelliteTable("EngagementDailyGuaranteeTerm");
    satellites::add(context, guarantee, owner, {{"effectiveDate", std::string("2026-11-02T00:00:00Z")}, {"minimumPaidDurationSeconds", std::int64_t{28800}}});
    satellites::add(context, guarantee, owner, {{"effectiveDate", std::string("2026-11-09T00:00:00Z")}, {"minimumPaidDurationSeconds", std::int64_t{36000}}});
    const auto minimumOn = [&](int d) {
        const auto term = satellites::findInForce(context, guarantee, owner, day(d));
        return term ? std::get<std::int64_t>(term->at(1).second) : -1;
    };
    EXPECT_EQ(minimumOn(1), -1);
    EXPECT_EQ(minimumOn(8), 28800);
    EXPECT_EQ(minimumOn(9), 36000);
    satellites::removeAll(context, guarantee, owner);
    EXPECT_EQ(minimumOn(9), -1);
}

TEST_F(Model, DeletingARowOrAWeekTakesItsSatellitesAndNothingElse) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    const Day first = dayWithRow(production.id, day(3), member, engagement);
    const Day second = dayWithRow(production.id, day(10), member, engagement);

    weeks::removeEntry(context, first.entry.id);
    EXPECT_EQ(rows("CrewDailyWorkModeConfiguration"), 1);
    EXPECT_EQ(rows("CrewDailyDTSTitleConfiguration"), 1);
    EXPECT_EQ(rows("WorkdayMileageConfiguration"), 2);

    ProductionWeekCalendars::deleteWeek(context, second.week.id);
    EXPECT_EQ(rows("PayrollWeek"), 1);
    EXPECT_EQ(rows("Workday"), 1);
    EXPECT_EQ(rows("CrewDailyEntry"), 0);
    EXPECT_EQ(rows("PayrollDayActivity"), 1);
    EXPECT_EQ(rows("WorkdayMileageConfiguration"), 1);
    EXPECT_EQ(rows("CrewDailyWorkModeConfiguration"), 0);
    EXPECT_EQ(rows("CrewMember"), 1);
    EXPECT_EQ(rows("ProductionEngagement"), 1);
    EXPECT_THROW(ProductionWeekCalendars::deleteWeek(context, second.week.id), PayrollWeekError);

    EXPECT_EQ(ProductionWeekCalendars::deleteAllWeeks(context, production.id), 1);
    EXPECT_EQ(rows("Workday") + rows("PayrollDayActivity") + rows("WorkdayMileageConfiguration"), 0);
    EXPECT_EQ(rows("CrewMember"), 1);
}

struct WeekStartCase {
    int startWeekday;
    CalendarDate date;
    CalendarDate expectedStart;
};

class PayrollWeekStart : public ::testing::TestWithParam<WeekStartCase> {};

TEST_P(PayrollWeekStart, IsTheLatestStartWeekdayOnOrBeforeTheDate) {
    EXPECT_EQ(ProductionWeekCalendars::payrollWeekStart(GetParam().date, GetParam().startWeekday), GetParam().expectedStart);
}

// 2026-11-01 is a Sunday, 2026-11-02 a Monday.
INSTANTIATE_TEST_SUITE_P(Weekdays, PayrollWeekStart,
                         ::testing::Values(WeekStartCase{2, day(8), day(2)}, WeekStartCase{2, day(2), day(2)},
                                           WeekStartCase{1, day(1), day(1)}, WeekStartCase{7, day(1), 2026y / October / 31},
                                           WeekStartCase{4, day(4), day(4)}, WeekStartCase{4, day(3), 2026y / October / 28}));

TEST_F(Model, FindsOrCreatesTheWeekWithTheWorkWeekSnapshot) {
    const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, production.id, day(8));
    EXPECT_EQ(week.startDate, sys_days(day(2)));
    EXPECT_EQ(week.workweekStartWeekday, 2);
    EXPECT_EQ(ProductionWeekCalendars::findOrCreateWeek(context, production.id, day(5)).id, week.id);
    // A new start weekday applies to new weeks only.
    ProductionWeekCalendars::setPayrollStartWeekday(context, production.id, 1);
    EXPECT_EQ(weeks::fetchWeek(context, week.id)->startDate, sys_days(day(2)));
    EXPECT_EQ(ProductionWeekCalendars::findOrCreateWeek(context, production.id, day(15)).startDate, sys_days(day(15)));
}

TEST_F(Model, RebuildRegroupsDatesByTheCurrentStartWeekday) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    dayWithRow(production.id, day(2), member, engagement);  // Monday
    dayWithRow(production.id, day(8), member, engagement);  // Sunday, same Monday week
    ProductionWeekCalendars::setPayrollStartWeekday(context, production.id, 1);
    const auto summary = ProductionWeekCalendars::rebuild(context, production.id);
    EXPECT_EQ(summary.movedRecords, 4);  // both DTS and both activities
    const auto all = weeks::weeks(context, production.id);
    ASSERT_EQ(all.size(), 2u);
    EXPECT_EQ(all[0].startDate, sys_days(day(1)));
    EXPECT_EQ(all[1].startDate, sys_days(day(8)));
    EXPECT_EQ(rows("CrewDailyEntry"), 2);
    EXPECT_EQ(ProductionWeekCalendars::rebuild(context, production.id).movedRecords, 0);
}

struct RebuildRefusalCase {
    const char* name;
    PayrollWeekRebuildError::Case expected;
};

class RebuildRefusal : public Model, public ::testing::WithParamInterface<RebuildRefusalCase> {};

TEST_P(RebuildRefusal, ChangesNothing) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    const Day monday = dayWithRow(production.id, day(2), member, engagement);
    const Day laterMonday = dayWithRow(production.id, day(9), member, engagement);
    switch (GetParam().expected) {
        case PayrollWeekRebuildError::Case::duplicatePeriods:
            weeks::createWeek(context, {Uuid::generate(), production.id, monday.week.startDate, monday.week.workweekSourceDefinitionID, 2, 0, 0});
            break;
        case PayrollWeekRebuildError::Case::historicalWorkWeek:
            store->database().exec("UPDATE PayrollWeek SET workweekStartWeekday = 4 WHERE id = '" + laterMonday.week.id.text() + "'");
            break;
        case PayrollWeekRebuildError::Case::confirmedAuthority:
            store->database().exec("INSERT INTO ConfirmedPayStubActualPay (id, productionID, crewMemberID, payrollWeekID, "
                                   "payrollWeekStart, payrollWeekEnd, printedEmployeeName, gross, importedAt, confirmedAt, modifiedAt) "
                                   "VALUES ('" + Uuid::generate().text() + "', '" + production.id.text() + "', '" + member.id.text() +
                                   "', '" + monday.week.id.text() + "', '2026-11-02T00:00:00Z', '2026-11-08T00:00:00Z', 'R VALE', "
                                   "'100.00', '2026-11-10T00:00:00Z', '2026-11-10T00:00:00Z', '2026-11-10T00:00:00Z')");
            break;
    }
    ProductionWeekCalendars::setPayrollStartWeekday(context, production.id, 4);
    const auto before = testing::snapshotFiles(folder.path() / "canonical-store");
    try {
        store->perform([&](ModelContext& c) { ProductionWeekCalendars::rebuild(c, production.id); });
        FAIL() << "rebuild accepted";
    } catch (const PayrollWeekRebuildError& error) {
        EXPECT_EQ(error.errorCase(), GetParam().expected);
    }
    EXPECT_EQ(weeks::workdays(context, monday.week.id).size(), 1u);
    EXPECT_EQ(weeks::workdays(context, laterMonday.week.id).size(), 1u);
}

INSTANTIATE_TEST_SUITE_P(Refusals, RebuildRefusal,
                         ::testing::Values(RebuildRefusalCase{"duplicate", PayrollWeekRebuildError::Case::duplicatePeriods},
                                           RebuildRefusalCase{"snapshots", PayrollWeekRebuildError::Case::historicalWorkWeek},
                                           RebuildRefusalCase{"confirmedPay", PayrollWeekRebuildError::Case::confirmedAuthority}),
                         [](const auto& info) { return std::string(info.param.name); });

// Records moved into a week that already exists take that week's work-week snapshot, so its snapshot
// counts among those that must agree.
TEST_F(Model, ARebuildIntoAnExistingWeekWithAnotherWorkWeekIsRefused) {
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const auto engagement = crew_repository::createEngagement(context, production.id, member.id, day(2));
    const Day sunday = dayWithRow(production.id, day(8), member, engagement);
    weeks::createWeek(context, {Uuid::generate(), production.id, Instant(sys_days(day(8))),
                                sunday.week.workweekSourceDefinitionID, 4, 0, 0});
    ProductionWeekCalendars::setPayrollStartWeekday(context, production.id, 1);
    try {
        store->perform([&](ModelContext& c) { ProductionWeekCalendars::rebuild(c, production.id); });
        FAIL() << "rebuild accepted";
    } catch (const PayrollWeekRebuildError& error) {
        EXPECT_EQ(error.errorCase(), PayrollWeekRebuildError::Case::historicalWorkWeek);
    }
    EXPECT_EQ(weeks::workdays(context, sunday.week.id).size(), 1u);
}

TEST_F(Model, ADuplicateRefusalSaysSo) {
    const PayrollWeekRebuildError error(PayrollWeekRebuildError::Case::duplicatePeriods);
    EXPECT_EQ(error.description(), "Resolve duplicate Payroll Week start dates before rebuilding. No data was changed.");
}

TEST_F(Model, RecordsTakeTheirTableDefaultsAndConstraints) {
    namespace records = record_repository;
    const auto member = crew_repository::createCrewMember(context, production.id, "Rowan Vale");
    const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, production.id, day(3));
    const StoreFields issue{{"identityKey", std::string("P|C|W|line.st|")}, {"productionID", production.id.text()},
                            {"crewID", member.id.text()}, {"weekID", week.id.text()}, {"categoryKey", std::string("line.st")},
                            {"title", std::string("Straight time")}, {"nature", std::string("Underpaid")},
                            {"currency", std::string("USD")}, {"fingerprint", std::string("f")},
                            {"stateRaw", std::string("needsAttention")}, {"createdAt", std::string("2026-11-10T09:00:00Z")},
                            {"updatedAt", std::string("2026-11-10T09:00:00Z")}};
    const Uuid id = records::create(context, "PayrollIssue", issue);
    const auto stored = records::fetch(context, "PayrollIssue", id);
    ASSERT_TRUE(stored.has_value());
    const auto note = std::find_if(stored->begin(), stored->end(), [](const auto& f) { return f.first == "note"; });
    EXPECT_EQ(std::get<std::string>(note->second), "");  // the table's default
    // One issue per identity key and production.
    EXPECT_THROW(records::create(context, "PayrollIssue", issue), SQLite::Exception);

    records::update(context, "PayrollIssue", id, {{"stateRaw", std::string("reported")}});
    EXPECT_EQ(records::listWhere(context, "PayrollIssue", "stateRaw", std::string("reported")).size(), 1u);
    EXPECT_THROW(records::fetch(context, "Production; DROP TABLE Production", id), std::invalid_argument);
}

TEST_F(Model, DeletingARecordFollowsTheDeleteRules) {
    namespace records = record_repository;
    const Uuid stub = records::create(context, "ConfirmedPayStubActualPay",
                                      {{"productionID", production.id.text()}, {"crewMemberID", Uuid::generate().text()},
                                       {"payrollWeekID", Uuid::generate().text()}, {"payrollWeekStart", std::string("2026-11-02T00:00:00Z")},
                                       {"payrollWeekEnd", std::string("2026-11-08T00:00:00Z")}, {"printedEmployeeName", std::string("VALE ROWAN")},
                                       {"gross", std::string("742.50")}, {"importedAt", std::string("2026-11-12T09:00:00Z")},
                                       {"confirmedAt", std::string("2026-11-12T09:00:00Z")}, {"modifiedAt", std::string("2026-11-12T09:00:00Z")}});
    records::create(context, "ConfirmedPayStubEarningLine",
                    {{"payStubID", stub.text()}, {"printedLabel", std::string("REGULAR")}, {"amount", std::string("360.00")}});
    EXPECT_TRUE(records::remove(context, "ConfirmedPayStubActualPay", stub));
    EXPECT_EQ(rows("ConfirmedPayStubEarningLine"), 0);

    const Uuid revision = records::create(
        context, "ProductionRulesetRevision",
        {{"productionID", production.id.text()}, {"name", std::string("Example")}, {"effectiveFrom", std::string("2026-11-01T00:00:00Z")},
         {"createdAt", std::string("2026-11-01T00:00:00Z")}, {"modifiedAt", std::string("2026-11-01T00:00:00Z")},
         {"straightTimeRuleID", std::string("production.band.straight-time")}, {"timeAndAHalfRuleID", std::string("production.band.time-and-a-half")},
         {"doubleTimeRuleID", std::string("production.band.double-time")}, {"dailyMinimumRuleID", std::string("production.guarantee.daily-minimum")},
         {"finalBandMinimumRuleID", std::string("production.guarantee.final-band-minimum")}, {"straightTimeUpperSeconds", std::int64_t{28800}},
         {"timeAndAHalfUpperSeconds", std::int64_t{43200}}, {"straightTimeMultiplier", std::string("1")},
         {"timeAndAHalfMultiplier", std::string("1.5")}, {"doubleTimeMultiplier", std::string("2")}, {"dailyMinimumEnabled", std::int64_t{1}},
         {"dailyMinimumSeconds", std::int64_t{28800}}, {"finalBandMinimumEnabled", std::int64_t{0}}, {"finalBandMinimumSeconds", std::int64_t{0}}});
    satellites::write(context, satelliteTable("ProductionIdleCompensationConfiguration"), revision,
                      {{"compensatedSecondsPerDay", std::int64_t{28800}}, {"straightTimeRateMultiplier", std::string("1")}});
    EXPECT_TRUE(records::remove(context, "ProductionRulesetRevision", revision));
    EXPECT_EQ(rows("ProductionIdleCompensationConfiguration"), 0);
}

// ---- user settings ----

class Settings : public ::testing::Test {
protected:
    TemporaryFolder folder;
    std::filesystem::path configRoot = folder.path() / "config" / "Tessel";

    UserSettingsStore load() { return UserSettingsStore::load(TesselStoreEnvironmentKind::normal, configRoot); }
};

TEST_F(Settings, OutOfRangeStoredValuesReadAsTheDefault) {
    for (const char* stored : {R"({"userSettings.newProductionWorkweekWeekday": 0, "userSettings.newProductionLunchDurationSeconds": 0})",
                               R"({"userSettings.newProductionWorkweekWeekday": 8, "userSettings.newProductionLunchDurationSeconds": -60})",
                               R"({"userSettings.newProductionWorkweekWeekday": "Monday"})", "not json"}) {
        testing::writeFile(configRoot / "settings.json", stored);
        const auto settings = load();
        EXPECT_EQ(settings.newProductionWorkweekWeekday(), 2) << stored;
        EXPECT_EQ(settings.newProductionLunchDurationSeconds(), 1800) << stored;
        EXPECT_EQ(settings.newProductionDefaults().lunchDurationSeconds, 1800);
    }
}

TEST_F(Settings, SetRefusesWhatAKeyDoesNotTakeAndKeepsTheFile) {
    auto settings = load();
    settings.set("userSettings.newProductionCurrencyCode", "CAD");
    const auto before = testing::readFile(settings.path());
    EXPECT_THROW(settings.set("userSettings.newProductionWorkweekWeekday", "9"), UserSettingsError);
    EXPECT_THROW(settings.set("userSettings.dateDisplayStyle", "roman"), UserSettingsError);
    EXPECT_THROW(settings.set("userSettings.noSuchKey", "1"), UserSettingsError);
    EXPECT_EQ(testing::readFile(settings.path()), before);
    EXPECT_EQ(load().newProductionCurrencyCode(), "CAD");
}

TEST_F(Settings, CopiesTheEarlierPreferencesOnce) {
    testing::writeFile(UserSettingsStore::legacyPreferencesPath(configRoot),
                       R"({"userSettings.defaultDepartment": "Grip", "userSettings.hasSeenWelcome": true})");
    EXPECT_EQ(load().defaultDepartment(), "Grip");
    auto settings = load();
    settings.set("userSettings.defaultDepartment", "Electric");
    testing::writeFile(UserSettingsStore::legacyPreferencesPath(configRoot), R"({"userSettings.defaultDepartment": "Camera"})");
    EXPECT_EQ(load().defaultDepartment(), "Electric");
    EXPECT_EQ(load().value("userSettings.migratedLegacyBundleDefaults"), true);
    // The test store keeps its own preferences and never takes the earlier ones.
    EXPECT_EQ(UserSettingsStore::load(TesselStoreEnvironmentKind::test, configRoot).defaultDepartment(), "");
}

TEST_F(Model, ChangingNewProductionSettingsLeavesExistingProductionsAlone) {
    NewProductionDefaults defaults;
    defaults.currencyCode = "CAD";
    defaults.lunchDurationSeconds = 2700;
    const auto later = production_repository::create(context, "Later Show", defaults, created);
    EXPECT_EQ(production_repository::fetch(context, production.id)->currencyCode, "USD");
    EXPECT_EQ(production_repository::fetch(context, later.id)->currencyCode, "CAD");
    EXPECT_EQ(production_repository::fetch(context, later.id)->defaultLunchDurationSeconds, 2700);
}

}  // namespace
}  // namespace tessel
