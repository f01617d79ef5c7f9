#include "StoreSchema.hpp"

#include <SQLiteCpp/Database.h>

#include <charconv>
#include <stdexcept>
#include <string>

namespace tessel::store_schema {
namespace {

// Conventions of every table: identifiers are upper-case UUID text; instants and dates are ISO 8601
// UTC text ("2026-11-02T07:00:00Z"; a date is its UTC midnight), which sorts in time order; decimals are
// their exact text; booleans are 0 or 1; enumerations are their raw value text; encoded data is a blob.
// Relationships of the core graph are foreign keys with their delete rules; satellites hold their
// owner's identifier as a plain column.
constexpr std::string_view generation_40_1_0 = R"SQL(
CREATE TABLE Production (
  id TEXT PRIMARY KEY NOT NULL,
  name TEXT NOT NULL,
  createdAt TEXT NOT NULL,
  startDate TEXT,
  dtsTimeDisplayRawValue TEXT NOT NULL DEFAULT 'payrollDecimal',
  defaultLunchDurationSeconds INTEGER NOT NULL DEFAULT 1800
);
CREATE TABLE ProductionWorkweekDefinition (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  effectiveFrom TEXT NOT NULL,
  startWeekday INTEGER NOT NULL,
  startHour INTEGER NOT NULL DEFAULT 0,
  startMinute INTEGER NOT NULL DEFAULT 0,
  isCurrent INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE CrewMember (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  displayName TEXT NOT NULL,
  retiredAt TEXT,
  displayOrder INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE EmploymentClassification (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  name TEXT NOT NULL
);
CREATE TABLE EmploymentCondition (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  name TEXT NOT NULL
);
CREATE TABLE ProductionEngagement (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  crewMemberID TEXT REFERENCES CrewMember(id) ON DELETE CASCADE,
  classificationID TEXT REFERENCES EmploymentClassification(id) ON DELETE SET NULL,
  effectiveFrom TEXT NOT NULL,
  effectiveThrough TEXT,
  notes TEXT NOT NULL DEFAULT '',
  employmentScheduleRawValue TEXT NOT NULL DEFAULT 'daily',
  employmentLocationRawValue TEXT,
  crewParticipationRawValue TEXT NOT NULL DEFAULT 'fullTime',
  rulesLocalityOverrideRawValue TEXT,
  dtsEligibilityStartsAt TEXT,
  regularPrecallDurationSeconds INTEGER,
  regularWrapoutDurationSeconds INTEGER
);
CREATE TABLE EngagementEmploymentCondition (
  engagementID TEXT NOT NULL REFERENCES ProductionEngagement(id) ON DELETE CASCADE,
  conditionID TEXT NOT NULL REFERENCES EmploymentCondition(id) ON DELETE CASCADE,
  PRIMARY KEY (engagementID, conditionID)
);
CREATE TABLE EngagementPayRate (
  id TEXT PRIMARY KEY NOT NULL,
  engagementID TEXT REFERENCES ProductionEngagement(id) ON DELETE CASCADE,
  effectiveDate TEXT NOT NULL,
  hourlyAmount TEXT NOT NULL,
  currencyCode TEXT NOT NULL
);
CREATE TABLE PayrollWeek (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  startDate TEXT NOT NULL,
  workweekSourceDefinitionID TEXT NOT NULL,
  workweekStartWeekday INTEGER NOT NULL,
  workweekStartHour INTEGER NOT NULL,
  workweekStartMinute INTEGER NOT NULL
);
CREATE TABLE Workday (
  id TEXT PRIMARY KEY NOT NULL,
  payrollWeekID TEXT REFERENCES PayrollWeek(id) ON DELETE CASCADE,
  calendarDate TEXT NOT NULL,
  generalCrewCall TEXT,
  generalCrewCallWasAutofilled INTEGER NOT NULL DEFAULT 0,
  officialLunchOut TEXT,
  officialLunchOutWasAutofilled INTEGER NOT NULL DEFAULT 0,
  firstMealGraceWasCalled INTEGER NOT NULL DEFAULT 0,
  officialLunchIn TEXT,
  officialLunchInWasAutofilled INTEGER NOT NULL DEFAULT 0,
  wrap TEXT,
  sharedTravelDurationSeconds INTEGER
);
CREATE TABLE CrewDailyEntry (
  id TEXT PRIMARY KEY NOT NULL,
  workdayID TEXT REFERENCES Workday(id) ON DELETE CASCADE,
  crewMemberID TEXT REFERENCES CrewMember(id) ON DELETE SET NULL,
  engagementID TEXT REFERENCES ProductionEngagement(id) ON DELETE SET NULL,
  callOverride TEXT,
  lunchOutOverride TEXT,
  lunchInOverride TEXT,
  wrapOverride TEXT,
  rulesLocalityOverrideRawValue TEXT,
  nonDeductibleBreakfast INTEGER NOT NULL DEFAULT 0,
  displayOrder INTEGER NOT NULL DEFAULT 0,
  callOverrideWasAutofilled INTEGER NOT NULL DEFAULT 0,
  wrapOverrideWasAutofilled INTEGER NOT NULL DEFAULT 0
);
CREATE TABLE PayrollDayActivity (
  id TEXT PRIMARY KEY NOT NULL,
  payrollWeekID TEXT REFERENCES PayrollWeek(id) ON DELETE CASCADE,
  calendarDate TEXT NOT NULL,
  kindRawValue TEXT NOT NULL,
  travelDurationSeconds INTEGER,
  crewMemberID TEXT REFERENCES CrewMember(id) ON DELETE SET NULL,
  engagementID TEXT REFERENCES ProductionEngagement(id) ON DELETE SET NULL
);
CREATE TABLE ProductionRulesetRevision (
  id TEXT PRIMARY KEY NOT NULL,
  productionID TEXT REFERENCES Production(id) ON DELETE CASCADE,
  name TEXT NOT NULL,
  sourceNotes TEXT NOT NULL DEFAULT '',
  effectiveFrom TEXT NOT NULL,
  createdAt TEXT NOT NULL,
  modifiedAt TEXT NOT NULL,
  straightTimeRuleID TEXT NOT NULL,
  timeAndAHalfRuleID TEXT NOT NULL,
  doubleTimeRuleID TEXT NOT NULL,
  dailyMinimumRuleID TEXT NOT NULL,
  finalBandMinimumRuleID TEXT NOT NULL,
  bandMinimumTargetRuleID TEXT,
  straightTimeUpperSeconds INTEGER NOT NULL,
  timeAndAHalfUpperSeconds INTEGER NOT NULL,
  straightTimeMultiplier TEXT NOT NULL,
  timeAndAHalfMultiplier TEXT NOT NULL,
  doubleTimeMultiplier TEXT NOT NULL,
  dailyMinimumEnabled INTEGER NOT NULL,
  dailyMinimumSeconds INTEGER NOT NULL,
  finalBandMinimumEnabled INTEGER NOT NULL,
  finalBandMinimumSeconds INTEGER NOT NULL,
  defaultRulesLocalityRawValue TEXT,
  distantStraightTimeRuleID TEXT,
  distantTimeAndAHalfRuleID TEXT,
  distantDoubleTimeRuleID TEXT,
  distantDailyMinimumRuleID TEXT,
  distantFinalBandMinimumRuleID TEXT,
  distantBandMinimumTargetRuleID TEXT,
  distantStraightTimeUpperSeconds INTEGER,
  distantTimeAndAHalfUpperSeconds INTEGER,
  distantStraightTimeMultiplier TEXT,
  distantTimeAndAHalfMultiplier TEXT,
  distantDoubleTimeMultiplier TEXT,
  distantDailyMinimumEnabled INTEGER,
  distantDailyMinimumSeconds INTEGER,
  distantFinalBandMinimumEnabled INTEGER,
  distantFinalBandMinimumSeconds INTEGER,
  straightTimeThresholdBasisRawValue TEXT,
  overtimeThresholdBasisRawValue TEXT,
  doubleTimeThresholdBasisRawValue TEXT,
  distantStraightTimeThresholdBasisRawValue TEXT,
  distantOvertimeThresholdBasisRawValue TEXT,
  distantDoubleTimeThresholdBasisRawValue TEXT,
  localSixthDayScheduleData BLOB,
  localSeventhDayScheduleData BLOB,
  distantSixthDayScheduleData BLOB,
  distantSeventhDayScheduleData BLOB
);

-- Satellites of a production.
CREATE TABLE ProductionIdentityConfiguration (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL UNIQUE, department TEXT NOT NULL DEFAULT '');
CREATE TABLE ProductionCompanyIdentity (productionID TEXT PRIMARY KEY NOT NULL, company TEXT NOT NULL DEFAULT '');
CREATE TABLE ProductionDTSExportConfiguration (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL UNIQUE, defaultWorkState TEXT NOT NULL DEFAULT '', departmentHeadName TEXT NOT NULL DEFAULT '', signatureImageData BLOB);
CREATE TABLE PendingImportedProductionDTSIdentity (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL UNIQUE, departmentHeadName TEXT NOT NULL DEFAULT '', signatureImageData BLOB);
CREATE TABLE ProductionDTSWorkflowConfiguration (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL UNIQUE, defaultNonDeductibleBreakfast INTEGER NOT NULL DEFAULT 0, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);
CREATE TABLE ProductionCompensationProvisionConfiguration (
  id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL, provisionKindRawValue TEXT NOT NULL, effectiveDate TEXT NOT NULL,
  isEnabled INTEGER NOT NULL DEFAULT 0, dailyAmount TEXT NOT NULL DEFAULT '0', currencyCode TEXT NOT NULL DEFAULT 'USD',
  timedWorkDayEligible INTEGER NOT NULL DEFAULT 0, workedEligible INTEGER NOT NULL DEFAULT 0, prepEligible INTEGER NOT NULL DEFAULT 0,
  idleAvailableEligible INTEGER NOT NULL DEFAULT 0, travelEligible INTEGER NOT NULL DEFAULT 0, holidayEligible INTEGER NOT NULL DEFAULT 0,
  personalUnavailableEligible INTEGER NOT NULL DEFAULT 0);
CREATE INDEX ProductionCompensationProvisionConfigurationOwner ON ProductionCompensationProvisionConfiguration(productionID, effectiveDate);
CREATE TABLE ProductionPayrollCalendar (productionID TEXT PRIMARY KEY NOT NULL, startWeekday INTEGER NOT NULL);

-- Satellites of a ruleset revision.
CREATE TABLE ProductionRulesetSetupMetadata (revisionID TEXT PRIMARY KEY NOT NULL, originRawValue TEXT NOT NULL, sourceSavedRulesetPortableID TEXT, sourceSavedRulesetName TEXT, manuallyReviewedAt TEXT);
CREATE TABLE ProductionIdleCompensationConfiguration (revisionID TEXT PRIMARY KEY NOT NULL, compensatedSecondsPerDay INTEGER NOT NULL, straightTimeRateMultiplier TEXT NOT NULL);
CREATE TABLE ProductionHolidayCompensationConfiguration (revisionID TEXT PRIMARY KEY NOT NULL, configurationData BLOB);
CREATE TABLE ProductionMealPenaltyRulesConfiguration (id TEXT PRIMARY KEY NOT NULL, rulesetRevisionID TEXT NOT NULL UNIQUE, configurationData BLOB, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);
CREATE TABLE ProductionTurnaroundRulesConfiguration (id TEXT PRIMARY KEY NOT NULL, rulesetRevisionID TEXT NOT NULL UNIQUE, configurationData BLOB, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);

-- Satellites of an engagement.
CREATE TABLE EngagementDailyGuaranteeTerm (id TEXT PRIMARY KEY NOT NULL, engagementID TEXT NOT NULL, effectiveDate TEXT NOT NULL, minimumPaidDurationSeconds INTEGER NOT NULL);
CREATE INDEX EngagementDailyGuaranteeTermOwner ON EngagementDailyGuaranteeTerm(engagementID, effectiveDate);
CREATE TABLE EngagementBoxRentalTerm (id TEXT PRIMARY KEY NOT NULL, engagementID TEXT NOT NULL, effectiveDate TEXT NOT NULL, dailyAmount TEXT NOT NULL, currencyCode TEXT NOT NULL);
CREATE INDEX EngagementBoxRentalTermOwner ON EngagementBoxRentalTerm(engagementID, effectiveDate);
CREATE TABLE EngagementCompensationProvisionTerm (id TEXT PRIMARY KEY NOT NULL, engagementID TEXT NOT NULL, provisionKindRawValue TEXT NOT NULL, effectiveDate TEXT NOT NULL, overrideModeRawValue TEXT NOT NULL, personalDailyAmount TEXT, currencyCode TEXT NOT NULL);
CREATE INDEX EngagementCompensationProvisionTermOwner ON EngagementCompensationProvisionTerm(engagementID, effectiveDate);
CREATE TABLE EngagementTurnaroundConfiguration (id TEXT PRIMARY KEY NOT NULL, engagementID TEXT NOT NULL UNIQUE, requiredRestSeconds INTEGER NOT NULL, wasAutofilled INTEGER NOT NULL DEFAULT 0, suggestionOrigin TEXT, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);
CREATE TABLE EngagementPositionConfiguration (engagementID TEXT PRIMARY KEY NOT NULL, sourcePresetID TEXT, payrollPositionName TEXT NOT NULL, snapshotData BLOB, appliedAt TEXT NOT NULL);
CREATE TABLE EngagementPositionOverrideConfiguration (engagementID TEXT PRIMARY KEY NOT NULL, defaultsData BLOB, modifiedAt TEXT NOT NULL);
CREATE TABLE EngagementPositionRateConfiguration (engagementID TEXT NOT NULL, effectiveDate TEXT NOT NULL, appliedScaleAmount TEXT NOT NULL, currencyCode TEXT NOT NULL, followsPositionScale INTEGER NOT NULL DEFAULT 0, PRIMARY KEY (engagementID, effectiveDate));

-- Satellites of a workday.
CREATE TABLE WorkdayMileageConfiguration (id TEXT PRIMARY KEY NOT NULL, workdayID TEXT NOT NULL UNIQUE, miles TEXT NOT NULL);
CREATE TABLE WorkdayDTSExportConfiguration (id TEXT PRIMARY KEY NOT NULL, workdayID TEXT NOT NULL UNIQUE, workStateOverride TEXT NOT NULL DEFAULT '');
CREATE TABLE WorkdayDTSNotes (id TEXT PRIMARY KEY NOT NULL, workdayID TEXT NOT NULL UNIQUE, text TEXT NOT NULL DEFAULT '');
CREATE TABLE WorkdayMealLocationConfiguration (id TEXT PRIMARY KEY NOT NULL, workdayID TEXT NOT NULL UNIQUE, workLocationRawValue TEXT NOT NULL, modifiedAt TEXT NOT NULL);

-- Satellites of a crew row.
CREATE TABLE CrewDailyMileageEntry (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, miles TEXT NOT NULL);
CREATE TABLE CrewDailyBoxRentalSelection (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, applies INTEGER NOT NULL);
CREATE TABLE CrewDailyWorkModeConfiguration (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, modeRawValue TEXT NOT NULL);
CREATE TABLE CrewDailyRerateConfiguration (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, positionPresetID TEXT NOT NULL, positionName TEXT NOT NULL);
CREATE TABLE CrewDailyRerateDisplayConfiguration (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, displayTitle TEXT NOT NULL, kindRawValue TEXT NOT NULL);
CREATE TABLE CrewDailyJobConfiguration (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, productionPositionID TEXT NOT NULL, positionName TEXT NOT NULL, occupationCode TEXT, snapshotData BLOB);
CREATE TABLE CrewDailyDTSTitleConfiguration (id TEXT PRIMARY KEY NOT NULL, crewDailyEntryID TEXT NOT NULL UNIQUE, displayTitle TEXT NOT NULL);

-- Reusable setup owned by the installation.
CREATE TABLE PayrollRulesLibraryItem (id TEXT PRIMARY KEY NOT NULL, portableRulesetID TEXT NOT NULL, name TEXT NOT NULL, provenanceNotes TEXT NOT NULL DEFAULT '', createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL, importedAt TEXT, configurationData BLOB NOT NULL);
CREATE TABLE PositionPreset (id TEXT PRIMARY KEY NOT NULL, positionName TEXT NOT NULL, occupationCode TEXT, sourceDescription TEXT, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL, dailyDefaultsData BLOB, weeklyDefaultsData BLOB, displayOrder INTEGER NOT NULL DEFAULT 0);
CREATE TABLE RatePackage (id TEXT PRIMARY KEY NOT NULL, displayName TEXT NOT NULL, sourceDescription TEXT NOT NULL DEFAULT '', sourceNotes TEXT, effectiveStart TEXT NOT NULL, effectiveEnd TEXT, displayOrder INTEGER NOT NULL DEFAULT 0, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);
CREATE TABLE RatePackagePosition (id TEXT PRIMARY KEY NOT NULL, ratePackageID TEXT NOT NULL REFERENCES RatePackage(id) ON DELETE CASCADE, occupationCode TEXT, positionName TEXT NOT NULL, sourceNotes TEXT, dailyDefaultsData BLOB, weeklyDefaultsData BLOB, dailyScale TEXT, weeklyScale TEXT, currencyCode TEXT NOT NULL, alternateTitlesData BLOB, displayOrder INTEGER NOT NULL DEFAULT 0, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);
CREATE TABLE CrewLibraryPerson (id TEXT PRIMARY KEY NOT NULL, displayName TEXT NOT NULL, preferredRatePackagePositionID TEXT, preferredPositionName TEXT, preferredDTSTitle TEXT, displayOrder INTEGER NOT NULL DEFAULT 0, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);

-- Setup copied into a production.
CREATE TABLE ProductionPosition (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL REFERENCES Production(id) ON DELETE CASCADE, sourceRatePackageID TEXT, sourcePackagePositionID TEXT, occupationCode TEXT, positionName TEXT NOT NULL, sourceNotes TEXT NOT NULL DEFAULT '', dailyDefaultsData BLOB, weeklyDefaultsData BLOB, alternateTitlesData BLOB, displayOrder INTEGER NOT NULL DEFAULT 0, isActive INTEGER NOT NULL DEFAULT 1, modifiedAt TEXT NOT NULL, reviewedFingerprint TEXT, legacyDefaultsAllowed INTEGER NOT NULL DEFAULT 0);
CREATE TABLE ProductionRateCard (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL REFERENCES Production(id) ON DELETE CASCADE, label TEXT NOT NULL, effectiveStart TEXT NOT NULL, effectiveEnd TEXT, sourceNotes TEXT, requiresExplicitPositionTerms INTEGER NOT NULL DEFAULT 0);
CREATE TABLE PositionScaleRate (id TEXT PRIMARY KEY NOT NULL, rateCardID TEXT NOT NULL REFERENCES ProductionRateCard(id) ON DELETE CASCADE, positionPresetID TEXT NOT NULL, employmentScheduleRawValue TEXT NOT NULL, hourlyAmount TEXT NOT NULL, currencyCode TEXT NOT NULL);
CREATE TABLE ProductionRateCardPositionTerms (id TEXT PRIMARY KEY NOT NULL, productionRateCardID TEXT NOT NULL REFERENCES ProductionRateCard(id) ON DELETE CASCADE, productionPositionID TEXT NOT NULL, dailyDefaultsData BLOB, weeklyDefaultsData BLOB, payloadFormatVersion INTEGER NOT NULL DEFAULT 1, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL, UNIQUE (productionRateCardID, productionPositionID));
CREATE TABLE ProductionCrewLibraryLink (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL REFERENCES Production(id) ON DELETE CASCADE, crewMemberID TEXT NOT NULL UNIQUE REFERENCES CrewMember(id) ON DELETE CASCADE, crewLibraryPersonID TEXT NOT NULL REFERENCES CrewLibraryPerson(id) ON DELETE CASCADE, createdAt TEXT NOT NULL);

-- Actual pay and the DTS export of a production.
CREATE TABLE ConfirmedPayStubActualPay (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL REFERENCES Production(id) ON DELETE CASCADE, crewMemberID TEXT NOT NULL, payrollWeekID TEXT NOT NULL, payrollWeekStart TEXT NOT NULL, payrollWeekEnd TEXT NOT NULL, printedEmployeeName TEXT NOT NULL, printedPayPeriodStart TEXT, printedPayPeriodEnd TEXT, printedOccupation TEXT NOT NULL DEFAULT '', totalHours TEXT, gross TEXT NOT NULL, sourcePDFData BLOB, sourceFilename TEXT NOT NULL DEFAULT '', importedAt TEXT NOT NULL, confirmedAt TEXT NOT NULL, modifiedAt TEXT NOT NULL, UNIQUE (crewMemberID, payrollWeekID));
CREATE TABLE ConfirmedPayStubEarningLine (id TEXT PRIMARY KEY NOT NULL, payStubID TEXT NOT NULL REFERENCES ConfirmedPayStubActualPay(id) ON DELETE CASCADE, printedLabel TEXT NOT NULL, hours TEXT, rate TEXT, amount TEXT NOT NULL, displayOrder INTEGER NOT NULL DEFAULT 0);
CREATE TABLE ProductionPayrollTerminology (productionID TEXT PRIMARY KEY NOT NULL REFERENCES Production(id) ON DELETE CASCADE, profileCode TEXT NOT NULL);
CREATE TABLE ProductionDTSExportSelection (productionID TEXT PRIMARY KEY NOT NULL REFERENCES Production(id) ON DELETE CASCADE, modeRawValue TEXT NOT NULL);
CREATE TABLE ProductionGenericDTSTemplate (id TEXT PRIMARY KEY NOT NULL, productionID TEXT NOT NULL REFERENCES Production(id) ON DELETE CASCADE, sourcePDFData BLOB NOT NULL, definitionData BLOB NOT NULL, createdAt TEXT NOT NULL, modifiedAt TEXT NOT NULL);

-- Lookups every screen makes.
CREATE INDEX CrewMemberProduction ON CrewMember(productionID);
CREATE INDEX ProductionEngagementCrewMember ON ProductionEngagement(crewMemberID);
CREATE INDEX ProductionEngagementProduction ON ProductionEngagement(productionID);
CREATE INDEX EngagementPayRateEngagement ON EngagementPayRate(engagementID, effectiveDate);
CREATE INDEX PayrollWeekProduction ON PayrollWeek(productionID, startDate);
CREATE INDEX WorkdayWeek ON Workday(payrollWeekID, calendarDate);
CREATE INDEX CrewDailyEntryWorkday ON CrewDailyEntry(workdayID);
CREATE INDEX CrewDailyEntryCrewMember ON CrewDailyEntry(crewMemberID);
CREATE INDEX CrewDailyEntryEngagement ON CrewDailyEntry(engagementID);
CREATE INDEX PayrollDayActivityWeek ON PayrollDayActivity(payrollWeekID);
CREATE INDEX PayrollDayActivityCrewMember ON PayrollDayActivity(crewMemberID);
CREATE INDEX PayrollDayActivityEngagement ON PayrollDayActivity(engagementID);
CREATE INDEX ProductionRulesetRevisionProduction ON ProductionRulesetRevision(productionID, effectiveFrom);
CREATE INDEX ProductionWorkweekDefinitionProduction ON ProductionWorkweekDefinition(productionID);
CREATE INDEX EmploymentClassificationProduction ON EmploymentClassification(productionID);
CREATE INDEX EmploymentConditionProduction ON EmploymentCondition(productionID);
CREATE INDEX EngagementEmploymentConditionCondition ON EngagementEmploymentCondition(conditionID);
)SQL";

// 40.2.0: productions carry their own currency, payroll issues arrive with the pay-comparison tolerance
// they are judged by, and a revision remembers whether each ordinary schedule uses its third band.
void migrate_40_1_0_to_40_2_0(SQLite::Database& db) {
    db.exec(R"SQL(
ALTER TABLE Production ADD COLUMN currencyCode TEXT NOT NULL DEFAULT 'USD';
ALTER TABLE ProductionRulesetRevision ADD COLUMN thirdBandEnabled INTEGER;
ALTER TABLE ProductionRulesetRevision ADD COLUMN distantThirdBandEnabled INTEGER;
CREATE TABLE ProductionPayComparisonSettings (productionID TEXT PRIMARY KEY NOT NULL REFERENCES Production(id) ON DELETE CASCADE, roundingTolerance TEXT NOT NULL);
CREATE TABLE PayrollIssue (
  id TEXT PRIMARY KEY NOT NULL, identityKey TEXT NOT NULL, productionID TEXT NOT NULL REFERENCES Production(id) ON DELETE CASCADE,
  crewID TEXT NOT NULL, weekID TEXT NOT NULL, categoryKey TEXT NOT NULL, actualLineID TEXT, title TEXT NOT NULL, nature TEXT NOT NULL,
  expectedAmount TEXT, actualAmount TEXT, differenceAmount TEXT, currency TEXT NOT NULL, fingerprint TEXT NOT NULL,
  stateRaw TEXT NOT NULL, note TEXT NOT NULL DEFAULT '', createdAt TEXT NOT NULL, updatedAt TEXT NOT NULL,
  reportedAt TEXT, resolvedAt TEXT, resolutionReason TEXT, UNIQUE (productionID, identityKey));
)SQL");
}

}  // namespace

std::string_view earliestGenerationSchema() { return generation_40_1_0; }

const std::vector<MigrationStep>& migrationPlan() {
    static const std::vector<MigrationStep> plan{{"40.1.0", "40.2.0", &migrate_40_1_0_to_40_2_0}};
    return plan;
}

const std::vector<LookupIndex>& lookupIndexes() {
    static const std::vector<LookupIndex> indexes{
        {"ConfirmedPayStubWeek", "CREATE INDEX IF NOT EXISTS ConfirmedPayStubWeek ON ConfirmedPayStubActualPay(payrollWeekID)"},
        {"ConfirmedPayStubEarningLineStub",
         "CREATE INDEX IF NOT EXISTS ConfirmedPayStubEarningLineStub ON ConfirmedPayStubEarningLine(payStubID, displayOrder)"}};
    return indexes;
}

int compareVersions(std::string_view a, std::string_view b) {
    const auto next = [](std::string_view& text) {
        const auto dot = text.find('.');
        const std::string_view part = text.substr(0, dot);
        text = dot == std::string_view::npos ? std::string_view() : text.substr(dot + 1);
        long value = 0;
        std::from_chars(part.data(), part.data() + part.size(), value);
        return value;
    };
    while (!a.empty() || !b.empty()) {
        const long left = next(a);
        const long right = next(b);
        if (left != right) return left < right ? -1 : 1;
    }
    return 0;
}

const std::vector<SatelliteTable>& satelliteTables() {
    using O = SatelliteOwner;
    static const std::vector<SatelliteTable> tables{
        {"ProductionIdentityConfiguration", "productionID", O::production, ""},
        {"ProductionCompanyIdentity", "productionID", O::production, "", false},
        {"ProductionDTSExportConfiguration", "productionID", O::production, ""},
        {"PendingImportedProductionDTSIdentity", "productionID", O::production, ""},
        {"ProductionDTSWorkflowConfiguration", "productionID", O::production, ""},
        {"ProductionCompensationProvisionConfiguration", "productionID", O::production, "effectiveDate"},
        {"ProductionPayrollCalendar", "productionID", O::production, "", false},
        {"ProductionPayrollTerminology", "productionID", O::production, "", false},
        {"ProductionPayComparisonSettings", "productionID", O::production, "", false},
        {"ProductionDTSExportSelection", "productionID", O::production, "", false},
        {"ProductionRulesetSetupMetadata", "revisionID", O::rulesetRevision, "", false},
        {"ProductionIdleCompensationConfiguration", "revisionID", O::rulesetRevision, "", false},
        {"ProductionHolidayCompensationConfiguration", "revisionID", O::rulesetRevision, "", false},
        {"ProductionMealPenaltyRulesConfiguration", "rulesetRevisionID", O::rulesetRevision, ""},
        {"ProductionTurnaroundRulesConfiguration", "rulesetRevisionID", O::rulesetRevision, ""},
        {"EngagementDailyGuaranteeTerm", "engagementID", O::engagement, "effectiveDate"},
        {"EngagementBoxRentalTerm", "engagementID", O::engagement, "effectiveDate"},
        {"EngagementCompensationProvisionTerm", "engagementID", O::engagement, "effectiveDate"},
        {"EngagementTurnaroundConfiguration", "engagementID", O::engagement, ""},
        {"EngagementPositionConfiguration", "engagementID", O::engagement, "", false},
        {"EngagementPositionOverrideConfiguration", "engagementID", O::engagement, "", false},
        {"EngagementPositionRateConfiguration", "engagementID", O::engagement, "effectiveDate", false},
        {"WorkdayMileageConfiguration", "workdayID", O::workday, ""},
        {"WorkdayDTSExportConfiguration", "workdayID", O::workday, ""},
        {"WorkdayDTSNotes", "workdayID", O::workday, ""},
        {"WorkdayMealLocationConfiguration", "workdayID", O::workday, ""},
        {"CrewDailyMileageEntry", "crewDailyEntryID", O::crewDailyEntry, ""},
        {"CrewDailyBoxRentalSelection", "crewDailyEntryID", O::crewDailyEntry, ""},
        {"CrewDailyWorkModeConfiguration", "crewDailyEntryID", O::crewDailyEntry, ""},
        {"CrewDailyRerateConfiguration", "crewDailyEntryID", O::crewDailyEntry, ""},
        {"CrewDailyRerateDisplayConfiguration", "crewDailyEntryID", O::crewDailyEntry, ""},
        {"CrewDailyJobConfiguration", "crewDailyEntryID", O::crewDailyEntry, ""},
        {"CrewDailyDTSTitleConfiguration", "crewDailyEntryID", O::crewDailyEntry, ""},
    };
    return tables;
}

const SatelliteTable& satelliteTable(std::string_view table) {
    for (const auto& satellite : satelliteTables()) {
        if (satellite.table == table) return satellite;
    }
    throw std::out_of_range("no satellite table " + std::string(table));
}

const std::vector<std::string_view>& entityTables() {
    static const std::vector<std::string_view> tables = [] {
        std::vector<std::string_view> names{"Production", "ProductionWorkweekDefinition", "CrewMember",
                                            "EmploymentClassification", "EmploymentCondition", "ProductionEngagement",
                                            "EngagementEmploymentCondition", "EngagementPayRate", "PayrollWeek",
                                            "Workday", "CrewDailyEntry", "PayrollDayActivity", "ProductionRulesetRevision"};
        for (const auto& satellite : satelliteTables()) {
            if (satellite.table != "ProductionWorkweekDefinition") names.push_back(satellite.table);
        }
        for (std::string_view other :
             {"PayrollRulesLibraryItem", "PositionPreset", "RatePackage", "RatePackagePosition", "CrewLibraryPerson",
              "ProductionPosition", "ProductionRateCard", "PositionScaleRate", "ProductionRateCardPositionTerms",
              "ProductionCrewLibraryLink", "ConfirmedPayStubActualPay", "ConfirmedPayStubEarningLine",
              "ProductionGenericDTSTemplate", "PayrollIssue"}) {
            names.push_back(other);
        }
        return names;
    }();
    return tables;
}

}  // namespace tessel::store_schema
