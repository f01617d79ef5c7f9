#include "NonDTSActivities.hpp"

#include <algorithm>
#include <set>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
using Case = NonDTSActivityErrorCase;

std::string caseNameOf(Case errorCase) {
    switch (errorCase) {
        case Case::noCrewSelected: return "noCrewSelected";
        case Case::invalidTravelDuration: return "invalidTravelDuration";
        case Case::idleCompensationUnavailable: return "idleCompensationUnavailable";
        case Case::alreadyOnDTS: return "alreadyOnDTS";
        case Case::alreadyHasActivity: return "alreadyHasActivity";
    }
    return {};
}

std::string sentence(Case errorCase, const std::string& name) {
    switch (errorCase) {
        case Case::noCrewSelected: return "Select at least one crew member.";
        case Case::invalidTravelDuration: return std::string(time_entry_messages::travelDuration);
        case Case::idleCompensationUnavailable: return "The Ruleset for this date does not define Idle Compensation.";
        case Case::alreadyOnDTS:
            return name + " is already on the DTS for this date. Remove that DTS row before assigning a non-DTS activity.";
        case Case::alreadyHasActivity: return name + " already has a non-DTS activity on this date. Edit or remove it first.";
    }
    return {};
}

// Whether the ruleset revision in force on the date (the latest effective on or before it) defines idle pay.
bool idleCompensationDefined(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    auto& statement = context.prepare(
        "SELECT EXISTS (SELECT 1 FROM ProductionIdleCompensationConfiguration WHERE revisionID = "
        "(SELECT id FROM ProductionRulesetRevision WHERE productionID = ?1 AND effectiveFrom <= ?2 "
        "ORDER BY effectiveFrom DESC, modifiedAt DESC LIMIT 1))");
    columns::bindAll(statement, productionID, date);
    statement.executeStep();
    return statement.getColumn(0).getInt() != 0;
}

std::optional<std::int64_t> travelSeconds(const NonDTSActivityDraft& draft, const Uuid& engagementID) {
    if (draft.kind != PayrollDayActivityKind::travel) return std::nullopt;
    const auto individual = draft.individualTravelTexts.find(engagementID);
    const std::string& text = draft.sharedTravelTime || individual == draft.individualTravelTexts.end()
                                  ? draft.sharedTravelText
                                  : individual->second;
    try {
        return PayrollDecimalDurationParser::parse(text);
    } catch (const PayrollDecimalDurationParser::ParseError&) {
        throw NonDTSActivityError(Case::invalidTravelDuration);
    }
}

}  // namespace

NonDTSActivityError::NonDTSActivityError(Case errorCase, const std::string& personName)
    : CaseError(errorCase, caseNameOf(errorCase), sentence(errorCase, personName)) {}

std::vector<PayrollDayActivity> NonDTSActivities::onDate(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    std::vector<PayrollDayActivity> found;
    for (const auto& week : weeks::weeks(context, productionID)) {
        for (const auto& activity : weeks::activities(context, week.id)) {
            if (activity.calendarDate == date) found.push_back(activity);
        }
    }
    return found;
}

std::vector<NonDTSActivityOption> NonDTSActivities::options(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    std::set<Uuid> onDTS;
    if (const auto workday = DailyTimeSheets::find(context, productionID, date)) {
        for (const auto& entry : weeks::entries(context, workday->id)) {
            if (entry.crewMemberID) onDTS.insert(*entry.crewMemberID);
        }
    }
    std::vector<NonDTSActivityOption> options;
    for (const auto& member : crew_repository::crewMembers(context, productionID)) {
        for (const auto& engagement : crew_repository::engagementsOf(context, member.id)) {
            if (!engagement.appliesOn(date)) continue;
            std::optional<std::string> reason;
            if (onDTS.contains(member.id)) reason = std::string(activity_messages::alreadyOnDTSOption);
            options.push_back({engagement, member, reason});
        }
    }
    return options;
}

std::vector<PayrollDayActivity> NonDTSActivities::save(ModelContext& context, const Uuid& productionID,
                                                       const NonDTSActivityDraft& draft) {
    if (draft.selectedEngagementIDs.empty()) throw Error(Case::noCrewSelected);
    if (draft.kind == PayrollDayActivityKind::idleAvailable && !idleCompensationDefined(context, productionID, draft.date)) {
        throw Error(Case::idleCompensationUnavailable);
    }
    const auto options = NonDTSActivities::options(context, productionID, draft.date);
    const auto existing = onDate(context, productionID, draft.date);

    // Everything is checked before anything is written: one refused person saves nobody.
    std::vector<PayrollDayActivity> planned;
    std::set<Uuid> plannedPeople;  // one activity per person, counting the rest of this save too
    for (const Uuid& engagementID : draft.selectedEngagementIDs) {
        const auto option = std::find_if(options.begin(), options.end(),
                                         [&](const auto& o) { return o.engagement.id == engagementID; });
        if (option == options.end()) throw DTSWorkflowError("The engagement is not in force on this date.");
        if (option->unavailableReason) throw Error(Case::alreadyOnDTS, option->crewMember.displayName);
        for (const auto& activity : existing) {
            if (activity.crewMemberID == option->crewMember.id && activity.id != draft.existingActivityID) {
                throw Error(Case::alreadyHasActivity, option->crewMember.displayName);
            }
        }
        if (!plannedPeople.insert(option->crewMember.id).second) throw Error(Case::alreadyHasActivity, option->crewMember.displayName);
        // An edited activity keeps its identifier; further people selected while editing get their own.
        const Uuid id = draft.existingActivityID && planned.empty() ? *draft.existingActivityID : Uuid::generate();
        planned.push_back({id, Uuid::generate(), draft.date,
                           std::string(toRawValue(draft.kind)), travelSeconds(draft, engagementID), option->crewMember.id,
                           engagementID});
    }
    const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, productionID, draft.date);
    if (draft.existingActivityID) weeks::removeActivity(context, *draft.existingActivityID);
    for (auto& activity : planned) {
        activity.payrollWeekID = week.id;
        weeks::createActivity(context, activity);
    }
    return planned;
}

void NonDTSActivities::remove(ModelContext& context, const Uuid& activityID) { weeks::removeActivity(context, activityID); }

int NonDTSActivities::removeAllOnDate(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    const auto activities = onDate(context, productionID, date);
    for (const auto& activity : activities) weeks::removeActivity(context, activity.id);
    return static_cast<int>(activities.size());
}

}  // namespace tessel
