#include "CrewOnDTS.hpp"

#include <algorithm>
#include <set>

#include <nlohmann/json.hpp>

#include "App/dts/NonDTSActivities.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/RecordRepository.hpp"
#include "App/model/SatelliteRepository.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
namespace satellites = satellite_repository;
using store_schema::satelliteTable;
namespace messages = crew_on_dts_messages;

std::string textOf(const StoreFields& fields, std::string_view name) { return satellites::text(fields, name).value_or(""); }

// The position's stored fields as JSON, kept with the day so later edits of the position never change it.
std::string snapshotOf(const StoreFields& fields) {
    nlohmann::ordered_json snapshot;
    for (const auto& [column, value] : fields) {
        if (const auto* text = std::get_if<std::string>(&value)) snapshot[column] = *text;
        if (const auto* number = std::get_if<std::int64_t>(&value)) snapshot[column] = *number;
    }
    return snapshot.dump();
}

std::optional<ProductionEngagement> engagementOn(ModelContext& context, const Uuid& crewMemberID, CalendarDate date) {
    std::optional<ProductionEngagement> chosen;
    for (const auto& engagement : crew_repository::engagementsOf(context, crewMemberID)) {
        const bool eligible = !engagement.dtsEligibilityStartsAt || sys_days(*engagement.dtsEligibilityStartsAt) <= sys_days(date);
        if (engagement.appliesOn(date) && eligible) chosen = engagement;
    }
    return chosen;
}

}  // namespace

CrewDailyEntry CrewOnDTS::addRow(ModelContext& context, const Uuid& workdayID, const Uuid& crewMemberID) {
    const Workday workday = DailyTimeSheets::fetch(context, workdayID);
    const auto member = crew_repository::fetchCrewMember(context, crewMemberID);
    if (!member) throw DTSWorkflowError("The crew member could not be found.");
    for (const auto& entry : weeks::entries(context, workdayID)) {
        if (entry.crewMemberID == crewMemberID) throw DTSWorkflowError(member->displayName + " is already on this DTS.");
    }
    const auto engagement = engagementOn(context, crewMemberID, workday.calendarDate);
    if (!engagement) {
        throw DTSWorkflowError(member->displayName + " has no engagement in force on " +
                               calendar_text::formatDate(workday.calendarDate) + ".");
    }
    // A person on a non-DTS activity that date is paid by the activity; a row would pay the day twice.
    for (const auto& activity : NonDTSActivities::onDate(context, DailyTimeSheets::productionOf(context, workday), workday.calendarDate)) {
        if (activity.crewMemberID == crewMemberID) throw NonDTSActivityError(NonDTSActivityErrorCase::alreadyHasActivity, member->displayName);
    }
    return DailyTimeSheets::addEntry(context, workday, *member, *engagement);
}

std::vector<CrewMember> CrewOnDTS::availableDayplayers(ModelContext& context, const Uuid& workdayID) {
    const Workday workday = DailyTimeSheets::fetch(context, workdayID);
    std::set<Uuid> onDTS;
    for (const auto& entry : weeks::entries(context, workdayID)) {
        if (entry.crewMemberID) onDTS.insert(*entry.crewMemberID);
    }
    std::vector<CrewMember> available;
    for (const auto& member : crew_repository::crewMembers(context, DailyTimeSheets::productionOf(context, workday))) {
        const auto engagement = engagementOn(context, member.id, workday.calendarDate);
        if (member.isActive() && !onDTS.contains(member.id) && engagement &&
            engagement->crewParticipation == CrewParticipation::dayplayer) {
            available.push_back(member);
        }
    }
    return available;
}

bool CrewOnDTS::isDayplayerRow(ModelContext& context, const CrewDailyEntry& entry) {
    if (!entry.engagementID) return false;
    const auto engagement = crew_repository::fetchEngagement(context, *entry.engagementID);
    return engagement && engagement->crewParticipation == CrewParticipation::dayplayer;
}

void CrewOnDTS::setJobForToday(ModelContext& context, const Uuid& entryID, const Uuid& productionPositionID) {
    DailyTimeSheets::fetchEntry(context, entryID);
    const auto position = record_repository::fetch(context, "ProductionPosition", productionPositionID);
    if (!position) throw DTSWorkflowError(std::string(messages::missingJobPosition));
    const std::string occupation = textOf(*position, "occupationCode");
    satellites::write(context, satelliteTable("CrewDailyJobConfiguration"), entryID,
                      {{"productionPositionID", productionPositionID.text()},
                       {"positionName", textOf(*position, "positionName")},
                       {"occupationCode", occupation.empty() ? StoreValue{} : StoreValue{occupation}},
                       {"snapshotData", [&] {
                            const std::string json = snapshotOf(*position);
                            return StoreValue{std::vector<unsigned char>(json.begin(), json.end())};
                        }()}});
}

void CrewOnDTS::setRerate(ModelContext& context, const Uuid& entryID, const Uuid& positionPresetID,
                          const std::string& displayTitle, const std::string& kindRawValue) {
    DailyTimeSheets::fetchEntry(context, entryID);
    if (entry_text::isBlank(displayTitle)) throw DTSWorkflowError(std::string(messages::emptyRerateWording));
    const auto preset = record_repository::fetch(context, "PositionPreset", positionPresetID);
    if (!preset) throw DTSWorkflowError(std::string(messages::missingReratePosition));
    satellites::write(context, satelliteTable("CrewDailyRerateConfiguration"), entryID,
                      {{"positionPresetID", positionPresetID.text()}, {"positionName", textOf(*preset, "positionName")}});
    satellites::write(context, satelliteTable("CrewDailyRerateDisplayConfiguration"), entryID,
                      {{"displayTitle", displayTitle}, {"kindRawValue", kindRawValue}});
}

void CrewOnDTS::clearJobForToday(ModelContext& context, const Uuid& entryID) {
    DailyTimeSheets::fetchEntry(context, entryID);
    satellites::removeAll(context, satelliteTable("CrewDailyJobConfiguration"), entryID);
}

void CrewOnDTS::clearRerate(ModelContext& context, const Uuid& entryID) {
    DailyTimeSheets::fetchEntry(context, entryID);
    satellites::removeAll(context, satelliteTable("CrewDailyRerateConfiguration"), entryID);
    satellites::removeAll(context, satelliteTable("CrewDailyRerateDisplayConfiguration"), entryID);
}

void CrewOnDTS::setDTSNameForToday(ModelContext& context, const Uuid& entryID, const std::string& name) {
    DailyTimeSheets::fetchEntry(context, entryID);
    if (entry_text::isBlank(name)) throw DTSWorkflowError(std::string(messages::emptyDTSName));
    satellites::write(context, satelliteTable("CrewDailyDTSTitleConfiguration"), entryID, {{"displayTitle", name}});
}

std::optional<std::string> CrewOnDTS::dtsNameForToday(ModelContext& context, const Uuid& entryID) {
    const auto title = satellites::find(context, satelliteTable("CrewDailyDTSTitleConfiguration"), entryID);
    if (!title) return std::nullopt;
    return textOf(*title, "displayTitle");
}

void CrewOnDTS::removeRow(ModelContext& context, const Uuid& entryID) {
    DailyTimeSheets::fetchEntry(context, entryID);
    weeks::removeEntry(context, entryID);
}

std::vector<CrewOnDTS::IntegrityFinding> CrewOnDTS::integrityFindings(ModelContext& context, const Uuid& workdayID) {
    std::vector<IntegrityFinding> findings;
    for (const auto& entry : weeks::entries(context, workdayID)) {
        const auto member = entry.crewMemberID ? crew_repository::fetchCrewMember(context, *entry.crewMemberID) : std::nullopt;
        const std::string name = member ? member->displayName : "";
        const auto add = [&](std::string_view text) { findings.push_back({name, std::string(text)}); };
        if (!entry.engagementID || !crew_repository::fetchEngagement(context, *entry.engagementID)) add(messages::rowWithoutEngagement);
        if (const auto title = dtsNameForToday(context, entry.id); title && entry_text::isBlank(*title)) add(messages::emptyTitle);
        if (const auto job = satellites::find(context, satelliteTable("CrewDailyJobConfiguration"), entry.id)) {
            const auto positionID = Uuid::parse(textOf(*job, "productionPositionID"));
            if (!positionID || !record_repository::fetch(context, "ProductionPosition", *positionID)) add(messages::missingJobPosition);
            const auto snapshot = std::find_if(job->begin(), job->end(), [](const auto& field) { return field.first == "snapshotData"; });
            const auto* bytes = snapshot == job->end() ? nullptr : std::get_if<std::vector<unsigned char>>(&snapshot->second);
            if (!bytes || !nlohmann::json::accept(bytes->begin(), bytes->end())) add(messages::invalidJobSnapshot);
        }
    }
    return findings;
}

std::vector<std::string> CrewOnDTS::orphanedRowSettings(ModelContext& context) {
    std::vector<std::string> findings;
    const auto orphans = [&](const std::string& table, std::string_view text) {
        auto& statement = context.prepare("SELECT COUNT(*) FROM " + table +
                                          " WHERE crewDailyEntryID NOT IN (SELECT id FROM CrewDailyEntry)");
        statement.executeStep();
        const auto count = statement.getColumn(0).getInt64();
        statement.reset();
        for (std::int64_t i = 0; i < count; ++i) findings.emplace_back(text);
    };
    orphans("CrewDailyJobConfiguration", messages::jobForMissingRow);
    orphans("CrewDailyDTSTitleConfiguration", messages::titleForMissingRow);
    return findings;
}

std::optional<std::string> CrewOnDTS::positionKeptReason(ModelContext& context, const Uuid& positionID) {
    const auto usedBy = [&](const std::string& table, const std::string& column) {
        auto& statement = context.prepare("SELECT EXISTS (SELECT 1 FROM " + table + " WHERE " + column + " = ?1)");
        columns::bind(statement, 1, positionID);
        statement.executeStep();
        const bool used = statement.getColumn(0).getInt() != 0;
        statement.reset();
        return used;
    };
    if (usedBy("CrewDailyJobConfiguration", "productionPositionID")) return std::string(messages::keptForJobHistory);
    if (usedBy("CrewDailyRerateConfiguration", "positionPresetID")) return std::string(messages::keptForRerateHistory);
    return std::nullopt;
}

void CrewOnDTS::reorderRows(ModelContext& context, const Uuid& workdayID, const std::vector<Uuid>& orderedEntryIDs) {
    auto entries = weeks::entries(context, workdayID);
    std::set<Uuid> given(orderedEntryIDs.begin(), orderedEntryIDs.end());
    std::set<Uuid> existing;
    for (const auto& entry : entries) existing.insert(entry.id);
    if (given != existing || given.size() != orderedEntryIDs.size()) throw DTSWorkflowError(std::string(messages::orderNotSaved));
    for (auto& entry : entries) {
        entry.displayOrder = std::find(orderedEntryIDs.begin(), orderedEntryIDs.end(), entry.id) - orderedEntryIDs.begin();
        weeks::updateEntry(context, entry);
    }
}

}  // namespace tessel
