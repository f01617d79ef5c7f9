#include <gtest/gtest.h>

#include "../support/TemporaryFolder.hpp"
#include "../support/StoreTest.hpp"
#include "App/dts/CrewDailyEntryRepair.hpp"
#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/RecordRepository.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/model/TesselPersistence.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
using Source = EffectiveTimeSource;

const CalendarDate dtsDate = 2026y / November / 3;
Instant at(double payrollHours) { return *payroll_decimal_time::parseTimeOfDay(std::to_string(payrollHours).substr(0, std::to_string(payrollHours).find('.') + 2), dtsDate); }

// A production with three people: Rowan (precall 0.5, wrap-out 0.3), Ada (no regular times) and Jules, a dayplayer.
class DTSWorkflow : public testing::StoreTest {
protected:
    Production production = production_repository::create(context, "Night Harbor", {}, sys_days(2026y / November / 1));
    CrewMember rowan = hire("Rowan Vale", CrewParticipation::fullTime, 1800, 1080);
    CrewMember ada = hire("Ada Quill", CrewParticipation::fullTime, std::nullopt, std::nullopt);
    CrewMember jules = hire("Jules Marr", CrewParticipation::dayplayer, std::nullopt, std::nullopt);

    CrewMember hire(const std::string& name, CrewParticipation participation, std::optional<std::int64_t> precall,
                    std::optional<std::int64_t> wrapout) {
        const auto member = crew_repository::createCrewMember(context, production.id, name);
        auto engagement = crew_repository::createEngagement(context, production.id, member.id, 2026y / November / 1);
        engagement.crewParticipation = participation;
        engagement.regularPrecallDurationSeconds = precall;
        engagement.regularWrapoutDurationSeconds = wrapout;
        crew_repository::updateEngagement(context, engagement);
        return member;
    }

    CrewDailyEntry rowOf(const Workday& workday, const CrewMember& member) {
        for (const auto& entry : weeks::entries(context, workday.id)) {
            if (entry.crewMemberID == member.id) return entry;
        }
        throw std::runtime_error("no row for " + member.displayName);
    }
    EffectiveRowTimes timesOf(const Workday& workday, const CrewMember& member) {
        return DailyTimeSheets::effectiveTimes(DailyTimeSheets::fetch(context, workday.id), rowOf(workday, member));
    }
    std::int64_t rows(std::string_view table) {
        return store->database().execAndGet("SELECT COUNT(*) FROM " + std::string(table)).getInt64();
    }
};

TEST_F(DTSWorkflow, ANewDTSHasRowsForFullTimeCrewInCrewOrder) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    const auto entries = weeks::entries(context, workday.id);
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].crewMemberID, rowan.id);
    EXPECT_EQ(entries[1].crewMemberID, ada.id);
    EXPECT_FALSE(workday.generalCrewCall.has_value());
    EXPECT_THROW(DailyTimeSheets::create(context, production.id, dtsDate), DTSWorkflowError);
    EXPECT_TRUE(DailyTimeSheets::find(context, production.id, dtsDate).has_value());
}

TEST_F(DTSWorkflow, RowsInheritSharedTimesAndAutofillFromRegularPrecallAndWrapOut) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(7.0));
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchOut, at(13.0));
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::wrap, at(19.0));

    const auto rowanTimes = timesOf(workday, rowan);
    EXPECT_EQ(rowanTimes.call.value, at(6.5));
    EXPECT_EQ(rowanTimes.call.source, Source::autofilled);
    EXPECT_EQ(rowanTimes.wrap.value, at(19.3));
    EXPECT_EQ(rowanTimes.lunchIn.value, at(13.5));  // Lunch Out plus the production's 30 minutes
    EXPECT_EQ(rowanTimes.lunchIn.source, Source::inherited);
    EXPECT_TRUE(DailyTimeSheets::fetch(context, workday.id).officialLunchInWasAutofilled);
    EXPECT_EQ(timesOf(workday, ada).call.value, at(7.0));
    EXPECT_EQ(timesOf(workday, ada).call.source, Source::inherited);

    // Autofilled values follow their source; a typed value stays and keeps its cleared flag.
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(8.0));
    EXPECT_EQ(timesOf(workday, rowan).call.value, at(7.5));
    DailyTimeSheets::setRowTime(context, rowOf(workday, rowan).id, DTSTimeField::call, at(6.0));
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(9.0));
    EXPECT_EQ(timesOf(workday, rowan).call.value, at(6.0));
    EXPECT_EQ(timesOf(workday, rowan).call.source, Source::explicitOverride);
    EXPECT_EQ(DailyTimeSheets::revertToAutofillLabel(context, rowOf(workday, rowan).id, DTSTimeField::call),
              "Revert to Autofill (8.5)");
    DailyTimeSheets::revertRowToAutofill(context, rowOf(workday, rowan).id, DTSTimeField::call);
    EXPECT_EQ(timesOf(workday, rowan).call.value, at(8.5));
    EXPECT_EQ(timesOf(workday, rowan).call.source, Source::autofilled);
    EXPECT_FALSE(DailyTimeSheets::revertToAutofillLabel(context, rowOf(workday, ada).id, DTSTimeField::call).has_value());

    // Clearing an override makes the row follow the shared value again.
    DailyTimeSheets::setRowTime(context, rowOf(workday, ada).id, DTSTimeField::lunchOut, at(12.0));
    EXPECT_EQ(timesOf(workday, ada).lunchOut.source, Source::explicitOverride);
    DailyTimeSheets::setRowTime(context, rowOf(workday, ada).id, DTSTimeField::lunchOut, std::nullopt);
    EXPECT_EQ(timesOf(workday, ada).lunchOut.value, at(13.0));
    EXPECT_EQ(timesOf(workday, ada).lunchOut.source, Source::inherited);
}

TEST_F(DTSWorkflow, ATypedLunchInIsNotReplacedWhenLunchOutMoves) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchOut, at(13.0));
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchIn, at(14.0));
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::lunchOut, at(12.5));
    EXPECT_EQ(DailyTimeSheets::fetch(context, workday.id).officialLunchIn, at(14.0));
    DailyTimeSheets::revertSharedToAutofill(context, workday.id, DTSTimeField::lunchIn);
    EXPECT_EQ(DailyTimeSheets::fetch(context, workday.id).officialLunchIn, at(13.0));
}

TEST_F(DTSWorkflow, AnAcceptedSuggestionIsStoredAsAutofilled) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    DailyTimeSheets::acceptSharedSuggestion(context, workday.id, DTSTimeField::call, at(7.0));
    EXPECT_TRUE(DailyTimeSheets::fetch(context, workday.id).generalCrewCallWasAutofilled);
    DailyTimeSheets::acceptRowSuggestion(context, rowOf(workday, ada).id, DTSTimeField::wrap, at(19.5));
    EXPECT_EQ(timesOf(workday, ada).wrap.source, Source::autofilled);
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(7.5));
    EXPECT_FALSE(DailyTimeSheets::fetch(context, workday.id).generalCrewCallWasAutofilled);
}

TEST_F(DTSWorkflow, UnusualMealLengthsGetAnAdvisory) {
    EXPECT_FALSE(DailyTimeSheets::unusualMealAdvisory(at(12.0), at(12.5)).has_value());
    EXPECT_FALSE(DailyTimeSheets::unusualMealAdvisory(at(12.0), at(13.0)).has_value());
    EXPECT_EQ(DailyTimeSheets::unusualMealAdvisory(at(12.0), at(12.8)),
              "Unusual meal length: 0.8 hours. Most meal periods are 0.5 or 1.0 hours. Check Lunch Out and Lunch In.");
    EXPECT_FALSE(DailyTimeSheets::unusualMealAdvisory(at(13.0), at(12.0)).has_value());
    EXPECT_FALSE(DailyTimeSheets::unusualMealAdvisory(at(12.0), std::nullopt).has_value());
}

TEST_F(DTSWorkflow, TheDefaultNDBAppliesToNewRowsOnly) {
    const Workday first = DailyTimeSheets::create(context, production.id, dtsDate);
    DailyTimeSheets::setDefaultNonDeductibleBreakfast(context, production.id, true, sys_days(dtsDate));
    EXPECT_FALSE(rowOf(first, rowan).nonDeductibleBreakfast);
    const Workday second = DailyTimeSheets::create(context, production.id, 2026y / November / 4);
    EXPECT_TRUE(rowOf(second, rowan).nonDeductibleBreakfast);
}

TEST_F(DTSWorkflow, DayplayersJoinWithTheSameSharedTimes) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    DailyTimeSheets::setSharedTime(context, workday.id, DTSTimeField::call, at(7.0));
    ASSERT_EQ(CrewOnDTS::availableDayplayers(context, workday.id).size(), 1u);
    const auto row = CrewOnDTS::addRow(context, workday.id, jules.id);
    EXPECT_TRUE(CrewOnDTS::isDayplayerRow(context, row));
    EXPECT_EQ(timesOf(workday, jules).call.value, timesOf(workday, ada).call.value);
    EXPECT_TRUE(CrewOnDTS::availableDayplayers(context, workday.id).empty());
    EXPECT_THROW(CrewOnDTS::addRow(context, workday.id, jules.id), DTSWorkflowError);
}

TEST_F(DTSWorkflow, NamesRerateAndJobForTodayRefuseWhatIsMissing) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    const Uuid entry = rowOf(workday, ada).id;
    CrewOnDTS::setDTSNameForToday(context, entry, "Key Grip");
    try {
        CrewOnDTS::setDTSNameForToday(context, entry, " ");
        FAIL();
    } catch (const DTSWorkflowError& error) {
        EXPECT_STREQ(error.what(), "Enter a DTS Name.");
    }
    EXPECT_EQ(CrewOnDTS::dtsNameForToday(context, entry), "Key Grip");
    EXPECT_THROW(CrewOnDTS::setJobForToday(context, entry, Uuid::generate()), DTSWorkflowError);
    EXPECT_THROW(CrewOnDTS::setRerate(context, entry, Uuid::generate(), "", "rerate"), DTSWorkflowError);

    const Uuid position = record_repository::create(context, "ProductionPosition",
                                                    {{"productionID", production.id.text()}, {"positionName", std::string("Best Boy Grip")},
                                                     {"occupationCode", std::string("3316")}, {"modifiedAt", std::string("2026-11-01T00:00:00Z")}});
    CrewOnDTS::setJobForToday(context, entry, position);
    EXPECT_EQ(rows("CrewDailyJobConfiguration"), 1);
}

TEST_F(DTSWorkflow, RemovingARowOrTheDTSTakesTheirSatellites) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    const Workday other = DailyTimeSheets::create(context, production.id, 2026y / November / 4);
    for (const auto& w : {workday, other}) {
        for (const auto& entry : weeks::entries(context, w.id)) {
            DailyTimeSheets::setWorkMode(context, entry.id, CrewDailyWorkMode::worked);
            CrewOnDTS::setDTSNameForToday(context, entry.id, "Grip");
        }
        DailyTimeSheets::setDepartmentMileage(context, w.id, Decimal("12.5"));
    }
    CrewOnDTS::removeRow(context, rowOf(workday, ada).id);
    EXPECT_EQ(rows("CrewDailyWorkModeConfiguration"), 3);
    EXPECT_EQ(rows("CrewMember"), 3);
    EXPECT_TRUE(DailyTimeSheets::hasEnteredData(context, workday));
    DailyTimeSheets::remove(context, workday.id);
    EXPECT_EQ(rows("CrewDailyWorkModeConfiguration"), 2);
    EXPECT_EQ(rows("CrewDailyDTSTitleConfiguration"), 2);
    EXPECT_EQ(rows("WorkdayMileageConfiguration"), 1);
    EXPECT_EQ(weeks::entries(context, other.id).size(), 2u);
}

TEST_F(DTSWorkflow, ReorderingNeedsEveryRowOnce) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    const Uuid first = rowOf(workday, rowan).id, second = rowOf(workday, ada).id;
    CrewOnDTS::reorderRows(context, workday.id, {second, first});
    EXPECT_EQ(weeks::entries(context, workday.id).front().id, second);
    EXPECT_THROW(CrewOnDTS::reorderRows(context, workday.id, {second}), DTSWorkflowError);
}

ProductionEngagement engagementOf(ModelContext& context, const CrewMember& member) {
    return crew_repository::engagementsOf(context, member.id).front();
}

TEST_F(DTSWorkflow, AnUnreadableIndividualTravelTimeSavesNobody) {
    NonDTSActivityDraft draft{2026y / November / 5, PayrollDayActivityKind::travel, false, "", {}, {}, std::nullopt};
    for (const auto* member : {&rowan, &ada, &jules}) draft.selectedEngagementIDs.push_back(engagementOf(context, *member).id);
    draft.individualTravelTexts = {{draft.selectedEngagementIDs[0], "5.0"}, {draft.selectedEngagementIDs[1], "2.5"},
                                   {draft.selectedEngagementIDs[2], "two"}};
    try {
        NonDTSActivities::save(context, production.id, draft);
        FAIL();
    } catch (const NonDTSActivities::Error& error) {
        EXPECT_EQ(error.description(), "Enter Travel Duration in payroll-decimal hours, such as 5.0.");
    }
    EXPECT_EQ(rows("PayrollDayActivity"), 0);
    draft.individualTravelTexts[draft.selectedEngagementIDs[2]] = "1.0";
    const auto saved = NonDTSActivities::save(context, production.id, draft);
    ASSERT_EQ(saved.size(), 3u);
    EXPECT_EQ(saved[1].travelDurationSeconds, 9000);
}

TEST_F(DTSWorkflow, ActivitiesAreRefusedForPeopleOnTheDTSOrAlreadyBusy) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    NonDTSActivityDraft draft{dtsDate, PayrollDayActivityKind::holiday, true, "", {}, {engagementOf(context, ada).id}, std::nullopt};
    try {
        NonDTSActivities::save(context, production.id, draft);
        FAIL();
    } catch (const NonDTSActivities::Error& error) {
        EXPECT_EQ(error.description(),
                  "Ada Quill is already on the DTS for this date. Remove that DTS row before assigning a non-DTS activity.");
    }
    CrewOnDTS::removeRow(context, rowOf(workday, ada).id);
    NonDTSActivities::save(context, production.id, draft);
    try {
        NonDTSActivities::save(context, production.id, draft);
        FAIL();
    } catch (const NonDTSActivities::Error& error) {
        EXPECT_EQ(error.description(), "Ada Quill already has a non-DTS activity on this date. Edit or remove it first.");
    }
    EXPECT_EQ(NonDTSActivities::removeAllOnDate(context, production.id, dtsDate), 1);
    EXPECT_EQ(weeks::entries(context, workday.id).size(), 1u);
}

TEST_F(DTSWorkflow, IdleNeedsTheRulesetOfTheDateToDefineIdlePay) {
    NonDTSActivityDraft draft{dtsDate, PayrollDayActivityKind::idleAvailable, true, "", {}, {engagementOf(context, ada).id}, std::nullopt};
    EXPECT_THROW(NonDTSActivities::save(context, production.id, draft), NonDTSActivities::Error);
    const Uuid revision = record_repository::create(
        context, "ProductionRulesetRevision",
        {{"productionID", production.id.text()}, {"name", std::string("Example")}, {"effectiveFrom", std::string("2026-11-01T00:00:00Z")},
         {"createdAt", std::string("2026-11-01T00:00:00Z")}, {"modifiedAt", std::string("2026-11-01T00:00:00Z")},
         {"straightTimeRuleID", std::string("a")}, {"timeAndAHalfRuleID", std::string("b")}, {"doubleTimeRuleID", std::string("c")},
         {"dailyMinimumRuleID", std::string("d")}, {"finalBandMinimumRuleID", std::string("e")}, {"straightTimeUpperSeconds", std::int64_t{28800}},
         {"timeAndAHalfUpperSeconds", std::int64_t{43200}}, {"straightTimeMultiplier", std::string("1")}, {"timeAndAHalfMultiplier", std::string("1.5")},
         {"doubleTimeMultiplier", std::string("2")}, {"dailyMinimumEnabled", std::int64_t{0}}, {"dailyMinimumSeconds", std::int64_t{0}},
         {"finalBandMinimumEnabled", std::int64_t{0}}, {"finalBandMinimumSeconds", std::int64_t{0}}});
    satellite_repository::write(context, store_schema::satelliteTable("ProductionIdleCompensationConfiguration"), revision,
                                {{"compensatedSecondsPerDay", std::int64_t{28800}}, {"straightTimeRateMultiplier", std::string("1")}});
    EXPECT_EQ(NonDTSActivities::save(context, production.id, draft).size(), 1u);
}

TEST_F(DTSWorkflow, RepairRemovesIdenticalDuplicatesAndReportsConflicts) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    const Workday nextDay = DailyTimeSheets::create(context, production.id, 2026y / November / 4);
    const CrewDailyEntry rowanRow = rowOf(workday, rowan);
    CrewDailyEntry copy = rowanRow;
    copy.id = Uuid::generate();
    weeks::createEntry(context, copy);  // identical duplicate
    CrewDailyEntry adaRow = rowOf(workday, ada);
    CrewDailyEntry typed = adaRow;
    typed.id = Uuid::generate();
    typed.callOverride = at(6.0);  // same person, different entered call
    weeks::createEntry(context, typed);

    const auto report = CrewDailyEntryRepair::run(context);
    // Of identical rows, the first by display order and then identifier stays.
    EXPECT_EQ(report.removedEntryIDs, std::vector{std::max(copy.id, rowanRow.id)});
    ASSERT_EQ(report.conflicts.size(), 1u);
    EXPECT_EQ(report.conflicts[0].entryIDs.size(), 2u);
    EXPECT_EQ(weeks::entries(context, workday.id).size(), 3u);
    EXPECT_EQ(weeks::entries(context, nextDay.id).size(), 2u);  // the same people on another DTS are never compared
    EXPECT_EQ(CrewDailyEntryRepair::alertText(report),
              "Tessel found DTS data that needs review. 1 DTS crew-row conflict(s) with different entered facts. Nothing in "
              "those groups was removed. Contact support before editing those rows.");
}

// Rows whose engagement was removed keep their person: two people's rows are never merged.
TEST_F(DTSWorkflow, RepairNeverTakesTwoPeoplesRowsWithoutEngagementForDuplicates) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    const auto engagementless = [&](const CrewDailyEntry& row) {
        store->database().exec("UPDATE CrewDailyEntry SET engagementID = NULL, callOverride = NULL, wrapOverride = NULL, "
                               "callOverrideWasAutofilled = 0, wrapOverrideWasAutofilled = 0 WHERE id = '" + row.id.text() + "'");
    };
    const CrewDailyEntry rowanRow = rowOf(workday, rowan);
    engagementless(rowanRow);
    engagementless(rowOf(workday, ada));
    EXPECT_FALSE(CrewDailyEntryRepair::hasDuplicateRows(context));
    const auto report = CrewDailyEntryRepair::run(context);
    EXPECT_TRUE(report.removedEntryIDs.empty());
    EXPECT_TRUE(report.conflicts.empty());
    EXPECT_EQ(weeks::entries(context, workday.id).size(), 2u);

    CrewDailyEntry copy = weeks::entries(context, workday.id).at(0);
    copy.id = Uuid::generate();
    weeks::createEntry(context, copy);  // the same person twice, still without an engagement
    EXPECT_TRUE(CrewDailyEntryRepair::hasDuplicateRows(context));
    EXPECT_EQ(CrewDailyEntryRepair::run(context).removedEntryIDs.size(), 1u);
    EXPECT_EQ(weeks::entries(context, workday.id).size(), 2u);
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

TEST_F(DTSWorkflow, AddingADayplayerRowKeepsTheAutofilledGeneralCrewCall) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    DailyTimeSheets::acceptSharedSuggestion(context, workday.id, DTSTimeField::call, at(7.0));
    CrewOnDTS::addRow(context, workday.id, jules.id);
    EXPECT_TRUE(DailyTimeSheets::fetch(context, workday.id).generalCrewCallWasAutofilled);
    EXPECT_EQ(timesOf(workday, rowan).call.value, at(6.5));
}

TEST_F(DTSWorkflow, IntegrityFindingsNameTheRowAndTheProblem) {
    const Workday workday = DailyTimeSheets::create(context, production.id, dtsDate);
    satellite_repository::write(context, store_schema::satelliteTable("CrewDailyDTSTitleConfiguration"), rowOf(workday, ada).id,
                                {{"displayTitle", std::string(" ")}});
    const Uuid missingPosition = Uuid::generate();
    satellite_repository::write(context, store_schema::satelliteTable("CrewDailyJobConfiguration"), rowOf(workday, rowan).id,
                                {{"productionPositionID", missingPosition.text()}, {"positionName", std::string("Best Boy")}});
    const auto findings = CrewOnDTS::integrityFindings(context, workday.id);
    ASSERT_EQ(findings.size(), 3u);
    EXPECT_EQ(findings[0].crewMember, "Rowan Vale");
    EXPECT_EQ(findings[0].text, "A Job for Today references a missing Production Position.");
    EXPECT_EQ(findings[1].text, "A Job for Today Position snapshot is invalid.");
    EXPECT_EQ(findings[2].text, "A DTS Name for Today is empty.");
    CrewOnDTS::removeRow(context, rowOf(workday, rowan).id);
    EXPECT_TRUE(CrewOnDTS::orphanedRowSettings(context).empty());  // a removed row takes its settings with it
    satellite_repository::write(context, store_schema::satelliteTable("CrewDailyDTSTitleConfiguration"), Uuid::generate(),
                                {{"displayTitle", std::string("Grip")}});
    EXPECT_EQ(CrewOnDTS::orphanedRowSettings(context), std::vector<std::string>{"A DTS Name for Today references a missing DTS crew row."});
    EXPECT_EQ(CrewOnDTS::positionKeptReason(context, missingPosition), std::nullopt);
}

}  // namespace
}  // namespace tessel
