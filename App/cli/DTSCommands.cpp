#include "DTSCommands.hpp"

#include <algorithm>
#include <array>
#include <map>
#include <sstream>

#include "App/dts/CrewOnDTS.hpp"
#include "App/dts/NonDTSActivities.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/expected/ReviewJSON.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/CrewRoster.hpp"
#include "App/model/EntryText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/rules/Positions.hpp"
#include "App/rules/RateCards.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;
using payroll_decimal_time::formatDuration;
using namespace command_actions;

constexpr std::array<const char*, 7> weekdayNames{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

// A typed time; only an empty (or all white space) entry clears the field.
std::optional<Instant> timeArgument(const std::string& text, CalendarDate date, DTSTimeEntryRole role) {
    if (entry_text::isBlank(text)) return std::nullopt;
    // The command line has no committed text, so any non-blank entry is read as typed.
    const PayrollDecimalTimeFieldTransition field{"", date, role, std::nullopt, false};
    const auto outcome = field.end(text);
    using Kind = PayrollDecimalTimeFieldTransition::Outcome::Kind;
    if (outcome.kind == Kind::invalid) throw Refused{"invalidTime", outcome.message};
    return outcome.value;  // absent when cleared
}

// Miles typed by the user; an empty entry clears them.
std::optional<Decimal> mileageArgument(const std::string& text) {
    if (entry_text::isBlank(text)) return std::nullopt;
    const auto miles = entry_text::decimal(text);
    if (!miles || miles->isNegative()) throw Refused{"invalidMileage", std::string(dts_messages::mileageInvalid)};
    return miles;
}

Workday dtsOn(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    if (const auto workday = DailyTimeSheets::find(context, productionID, date)) return *workday;
    throw Refused{"dtsNotFound", "There is no DTS for " + calendar_text::formatDate(date) + "; create it with \u201Ctessel dts create " +
                                     calendar_text::formatDate(date) + "\u201D."};
}

// ---- dts ----

int createDTS(CommandSession& session, const DTSCommandArguments& a) {
    return act(
        session,
        [&](ModelContext& context, const Production& production) {
            const CalendarDate date = dateArgument(a.date);
            const Workday workday = DailyTimeSheets::create(context, production.id, date);
            const auto rows = weeks::entries(context, workday.id).size();
            std::string text = "Created the DTS for " + a.date + " with " + counted(rows, "crew row", "crew rows") + ".\n";
            Json leftOff = Json::array();
            for (const auto& activity : NonDTSActivities::onDate(context, production.id, date)) {
                const auto member = activity.crewMemberID ? crew_repository::fetchCrewMember(context, *activity.crewMemberID) : std::nullopt;
                if (!member) continue;
                leftOff.push_back(member->displayName);
                text += "Not on it: " + member->displayName + " (" + activityKindLabel(activity.kindRawValue) + " that day).\n";
            }
            session.answer(Json{{"id", workday.id.text()}, {"date", a.date}, {"rowCount", rows}, {"leftOffForActivity", leftOff}}, text);
            return int{exitSuccess};
        },
        dts_messages::createFailedTitle, dts_messages::createFailed);
}

int setDTS(CommandSession& session, const DTSCommandArguments& a, const std::map<std::string, bool>& given) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const Workday workday = dtsOn(context, production.id, date);
        // Every entry is read before anything is written, so one bad entry changes nothing.
        std::vector<std::pair<DTSTimeField, std::optional<Instant>>> times;
        if (given.at("call")) times.emplace_back(DTSTimeField::call, timeArgument(a.call, date, DTSTimeEntryRole::call));
        if (given.at("lunchOut")) times.emplace_back(DTSTimeField::lunchOut, timeArgument(a.lunchOut, date, DTSTimeEntryRole::postCallEvent));
        if (given.at("lunchIn")) times.emplace_back(DTSTimeField::lunchIn, timeArgument(a.lunchIn, date, DTSTimeEntryRole::postCallEvent));
        if (given.at("wrap")) times.emplace_back(DTSTimeField::wrap, timeArgument(a.wrap, date, DTSTimeEntryRole::postCallEvent));
        std::optional<std::optional<std::int64_t>> travel;
        if (given.at("travel")) travel = durationArgument(a.travel, time_entry_messages::travelDuration);
        std::optional<std::optional<Decimal>> mileage;
        if (given.at("mileage")) {
            mileage = mileageArgument(a.mileage);
        }
        std::optional<MealWorkLocation> location;
        if (given.at("location")) {
            location = fromRawValue<MealWorkLocation>(a.location);
            if (!location) throw Refused{"invalidLocation", "Choose the work location studio or location."};
        }

        for (const auto& [field, value] : times) DailyTimeSheets::setSharedTime(context, workday.id, field, value);
        if (a.graceCalled || a.graceNotCalled) DailyTimeSheets::setGraceCalled(context, workday.id, a.graceCalled);
        if (travel) DailyTimeSheets::setSharedTravel(context, workday.id, *travel);
        if (mileage) DailyTimeSheets::setDepartmentMileage(context, workday.id, *mileage);
        if (location) {
            DailyTimeSheets::setWorkLocation(context, workday.id, *location, now());
        }
        for (const auto& name : a.revert) {
            if (dtsTimeFieldFromRawValue(name) != DTSTimeField::lunchIn) {
                throw Refused{"invalidField", "Only Official Lunch In reverts to autofill on the DTS; name it lunchIn."};
            }
            DailyTimeSheets::revertSharedToAutofill(context, workday.id, DTSTimeField::lunchIn);
        }
        if (given.at("workState")) DailyTimeSheets::setWorkState(context, workday.id, a.workState);
        if (given.at("notes")) DailyTimeSheets::setNotes(context, workday.id, a.notes);
        session.answer(Json{{"updated", a.date}}, "Updated the DTS for " + a.date + ".\n");
        return int{exitSuccess};
    });
}

int setRow(CommandSession& session, const DTSCommandArguments& a, const std::map<std::string, bool>& given) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const Workday workday = dtsOn(context, production.id, date);
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        std::vector<std::pair<DTSTimeField, std::optional<Instant>>> times;
        if (given.at("call")) times.emplace_back(DTSTimeField::call, timeArgument(a.call, date, DTSTimeEntryRole::call));
        if (given.at("lunchOut")) times.emplace_back(DTSTimeField::lunchOut, timeArgument(a.lunchOut, date, DTSTimeEntryRole::postCallEvent));
        if (given.at("lunchIn")) times.emplace_back(DTSTimeField::lunchIn, timeArgument(a.lunchIn, date, DTSTimeEntryRole::postCallEvent));
        if (given.at("wrap")) times.emplace_back(DTSTimeField::wrap, timeArgument(a.wrap, date, DTSTimeEntryRole::postCallEvent));
        const auto fieldsNamed = [](const std::vector<std::string>& names) {
            std::vector<DTSTimeField> fields;
            for (const auto& name : names) {
                const auto field = dtsTimeFieldFromRawValue(name);
                if (!field) throw Refused{"invalidField", "Name the time call, lunchOut, lunchIn or wrap."};
                fields.push_back(*field);
            }
            return fields;
        };
        const auto cleared = fieldsNamed(a.clear);
        const auto reverted = fieldsNamed(a.revert);
        std::optional<CrewDailyWorkMode> mode;
        if (given.at("mode")) {
            mode = fromRawValue<CrewDailyWorkMode>(a.mode);
            if (!mode) throw Refused{"invalidMode", "Choose the work mode timed, worked or prep."};
        }

        std::optional<std::optional<Decimal>> mileage;
        if (given.at("mileage")) {
            mileage = mileageArgument(a.mileage);
        }
        std::optional<std::optional<RulesLocality>> locality;
        if (given.at("locality")) {
            const auto parsed = fromRawValue<RulesLocality>(a.locality);
            if (!a.locality.empty() && !parsed) throw Refused{"invalidLocality", "Choose the locality local or distant."};
            locality = parsed;
        }

        std::optional<CrewDailyEntry> row;
        for (const auto& entry : weeks::entries(context, workday.id)) {
            if (entry.crewMemberID == member.id) row = entry;
        }
        const bool added = !row;
        if (added) row = CrewOnDTS::addRow(context, workday.id, member.id);
        for (const auto& [field, value] : times) DailyTimeSheets::setRowTime(context, row->id, field, value);
        for (auto field : cleared) DailyTimeSheets::setRowTime(context, row->id, field, std::nullopt);
        for (auto field : reverted) DailyTimeSheets::revertRowToAutofill(context, row->id, field);
        if (a.ndb || a.noNdb) DailyTimeSheets::setNonDeductibleBreakfast(context, row->id, a.ndb);
        if (mode) DailyTimeSheets::setWorkMode(context, row->id, *mode);
        if (given.at("name")) CrewOnDTS::setDTSNameForToday(context, row->id, a.dtsName);
        if (mileage) DailyTimeSheets::setRowMileage(context, row->id, *mileage);
        if (a.boxRental || a.noBoxRental) DailyTimeSheets::setBoxRental(context, row->id, a.boxRental);
        if (locality) DailyTimeSheets::setRowLocality(context, row->id, *locality);
        if (!a.job.empty()) {
            CrewOnDTS::setJobForToday(context, row->id, positions::named(context, PositionScope::production, production.id, a.job).id);
        }
        if (a.noJob) CrewOnDTS::clearJobForToday(context, row->id);
        if (!a.rerate.empty()) {
            const auto saved = positions::named(context, PositionScope::saved, std::nullopt, a.rerate);
            CrewOnDTS::setRerate(context, row->id, saved.id, a.rerateTitle, "rerate");
        }
        if (a.noRerate) CrewOnDTS::clearRerate(context, row->id);
        session.answer(Json{{"entryID", row->id.text()}, {"added", added}},
                       std::string(added ? "Added " : "Updated ") + member.displayName + (added ? " to" : " on") + " the DTS for " +
                           a.date + ".\n" +
                           (a.job.empty() ? "" : "Classification for Today controls payroll. DTS Name for Today is the label shown on today's DTS.\n"));
        return int{exitSuccess};
    });
}

// A dayplayer for the day, in a Position: the person (created when new), a dayplayer engagement in force
// on the date (reused, else made from that date), engaged in the Position, and the row, whose DTS Name
// for Today follows the Position unless one is given.
int addDayplayer(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const Workday workday = dtsOn(context, production.id, date);
        const auto position = positions::named(context, PositionScope::production, production.id, a.position);
        const std::string name(entry_text::trimmed(a.name));
        if (name.empty()) throw Refused{"invalidName", "Enter a crew member name."};
        const auto named = crewMembersNamed(context, production.id, name);
        const CrewMember member = named.empty() ? crew_repository::createCrewMember(context, production.id, name) : crewMemberNamed(context, production.id, name);
        auto engagement = crew_roster::engagementOn(context, member.id, date);
        const bool inForce = engagement && engagement->effectiveFrom <= date && (!engagement->effectiveThrough || *engagement->effectiveThrough >= date);
        if (inForce && engagement->crewParticipation != CrewParticipation::dayplayer) {
            throw Refused{"notDayplayer", member.displayName + " is engaged full time on " + a.date + "; add the row with \u201Ctessel dts row\u201D."};
        }
        if (!inForce) {
            engagement = crew_repository::createEngagement(context, production.id, member.id, date);
            engagement->crewParticipation = CrewParticipation::dayplayer;
            crew_repository::updateEngagement(context, *engagement);
        }
        rate_cards::engageInPosition(context, engagement->id, position, date, false, now());
        std::optional<CrewDailyEntry> row;
        for (const auto& entry : weeks::entries(context, workday.id)) {
            if (entry.crewMemberID == member.id) row = entry;
        }
        if (!row) row = CrewOnDTS::addRow(context, workday.id, member.id);
        const std::string dtsName = a.dtsName.empty() ? position.positionName : a.dtsName;
        CrewOnDTS::setDTSNameForToday(context, row->id, dtsName);
        session.answer(Json{{"entryID", row->id.text()}, {"engagementID", engagement->id.text()}, {"dtsNameForToday", dtsName}},
                       "Added " + member.displayName + " (" + std::string(crew_on_dts_messages::dayplayerLabel) + ") as " + dtsName + " to the DTS for " +
                           a.date + ".\n");
        return int{exitSuccess};
    });
}

std::string shown(const Production& production, const std::optional<Instant>& time, CalendarDate date) {
    if (!time) return "-";
    return production.dtsTimeDisplay == DTSTimeDisplay::clockTime ? payroll_decimal_time::formatClockTime(time, date)
                                                                  : payroll_decimal_time::formatTimeOfDay(time, date);
}

// Each row's day as the review calculates it (for its Golden Hour Wrap and its rate), in row order; a
// DTS whose rules cannot be read shows none rather than failing the whole display.
std::vector<std::optional<DailyPayrollReview>> rowReviews(ModelContext& context, const Uuid& productionID, const Workday& workday,
                                                          std::size_t rowCount) {
    std::vector<std::optional<DailyPayrollReview>> reviews(rowCount);
    try {
        auto days = ExpectedPayrollReview(context, productionID).dailyForWorkday(workday.id);
        for (std::size_t i = 0; i < std::min(days.size(), rowCount); ++i) reviews[i] = std::move(days[i]);
    } catch (const PayrollReviewError&) {
    } catch (const RulesPayloadError&) {
    }
    return reviews;
}

// "Job for Today: Operator", "Rerate: Key Grip (as DTS wording)".
std::vector<std::string> positionNotes(ModelContext& context, const Uuid& entryID, Json& row) {
    std::vector<std::string> notes;
    const auto job = satellite_repository::find(context, store_schema::satelliteTable("CrewDailyJobConfiguration"), entryID);
    if (const auto name = satellite_repository::text(job, "positionName")) {
        row["jobForToday"] = *name;
        notes.push_back("Job for Today: " + *name);
    }
    const auto rerate = satellite_repository::find(context, store_schema::satelliteTable("CrewDailyRerateConfiguration"), entryID);
    if (const auto name = satellite_repository::text(rerate, "positionName")) {
        const auto wording = satellite_repository::text(
            satellite_repository::find(context, store_schema::satelliteTable("CrewDailyRerateDisplayConfiguration"), entryID), "displayTitle");
        row["rerate"] = Json{{"positionName", *name}, {"displayTitle", wording.value_or("")}};
        notes.push_back("Rerate: " + *name + (wording ? " (\u201C" + *wording + "\u201D on the DTS)" : ""));
    }
    return notes;
}

int showDTS(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const Workday w = dtsOn(context, production.id, date);
        const auto week = weeks::fetchWeek(context, w.payrollWeekID);
        const CalendarDate weekStart(floor<days>(week->startDate));
        const auto location = DailyTimeSheets::workLocation(context, w.id);
        const auto mileage = DailyTimeSheets::departmentMileage(context, w.id);
        const auto sharedTime = [&](const std::optional<Instant>& value, bool autofilled) {
            Json json{{"text", payroll_decimal_time::formatTimeOfDay(value, date)}};
            if (value) json["instant"] = calendar_text::formatInstant(*value);
            json["autofilled"] = autofilled;
            return json;
        };
        Json shared{{"generalCrewCall", sharedTime(w.generalCrewCall, w.generalCrewCallWasAutofilled)},
                    {"officialLunchOut", sharedTime(w.officialLunchOut, w.officialLunchOutWasAutofilled)},
                    {"officialLunchIn", sharedTime(w.officialLunchIn, w.officialLunchInWasAutofilled)},
                    {"wrap", sharedTime(w.wrap, false)},
                    {"firstMealGraceWasCalled", w.firstMealGraceWasCalled}};
        const auto lunchInRevert = DailyTimeSheets::sharedRevertToAutofillLabel(context, w, DTSTimeField::lunchIn);
        if (lunchInRevert) shared["officialLunchIn"]["revertToAutofillLabel"] = *lunchInRevert;
        const std::string workState = DailyTimeSheets::workState(context, w.id);
        const std::string notes = DailyTimeSheets::notes(context, w.id);
        if (!workState.empty()) shared["workState"] = workState;
        if (!notes.empty()) shared["notes"] = notes;
        if (w.sharedTravelDurationSeconds) shared["sharedTravelDurationSeconds"] = *w.sharedTravelDurationSeconds;
        if (mileage) shared["departmentMileage"] = mileage->toString();
        if (location) shared["workLocation"] = toRawValue(*location);

        std::ostringstream text;
        const int weekday = ProductionWeekCalendars::weekdayOf(date);
        text << "DTS " << a.date << " (" << weekdayNames[static_cast<std::size_t>(weekday - 1)] << "), Payroll Week from "
             << calendar_text::formatDate(weekStart) << "\n"
             << "General Crew Call " << shown(production, w.generalCrewCall, date)
             << (w.generalCrewCall && w.generalCrewCallWasAutofilled ? "*" : "")
             << "   Lunch Out " << shown(production, w.officialLunchOut, date) << "   Lunch In "
             << shown(production, w.officialLunchIn, date) << (w.officialLunchIn && w.officialLunchInWasAutofilled ? "*" : "")
             << (lunchInRevert ? " [" + *lunchInRevert + "]" : "") << "   Wrap "
             << shown(production, w.wrap, date) << "\n"
             << "Grace called: " << (w.firstMealGraceWasCalled ? "yes" : "no") << "   Travel: "
             << (w.sharedTravelDurationSeconds ? formatDuration(*w.sharedTravelDurationSeconds) : "-") << "   Department mileage: "
             << (mileage ? mileage->toString() : "-") << "   Work location: "
             << (location ? (*location == MealWorkLocation::studio ? "Studio" : "Location") : "-") << "\n";
        if (!workState.empty() || !notes.empty()) {
            text << "Work state: " << (workState.empty() ? "-" : workState) << "   Notes: " << (notes.empty() ? "-" : notes) << "\n";
        }
        Json advisories = Json::array();
        for (const auto& finding : CrewOnDTS::integrityFindings(context, w.id)) {
            const std::string line = (finding.crewMember.empty() ? "" : finding.crewMember + ": ") + finding.text;
            advisories.push_back(line);
            text << "DTS Data Integrity Warning: " << line << "\n";
        }
        if (const auto advisory = DailyTimeSheets::unusualMealAdvisory(w.officialLunchOut, w.officialLunchIn)) {
            advisories.push_back(*advisory);
            text << "Advisory: " << *advisory << "\n";
        }

        Json rows = Json::array();
        const auto entries = weeks::entries(context, w.id);
        const auto reviews = rowReviews(context, production.id, w, entries.size());
        std::size_t rowIndex = 0;
        text << (entries.empty() ? std::string(dts_messages::noCrew) + "\n" : "Crew (* autofilled, ! this row's own time):\n");
        for (const auto& entry : entries) {
            const auto member = entry.crewMemberID ? crew_repository::fetchCrewMember(context, *entry.crewMemberID) : std::nullopt;
            const std::string name = member ? member->displayName : "(removed crew member)";
            const auto times = DailyTimeSheets::effectiveTimes(w, entry);
            const auto mark = [](const EffectiveTime& t) {
                return t.source == EffectiveTimeSource::autofilled ? "*" : t.source == EffectiveTimeSource::explicitOverride ? "!" : "";
            };
            const bool dayplayer = CrewOnDTS::isDayplayerRow(context, entry);
            const auto mode = DailyTimeSheets::workMode(context, entry.id);
            const auto title = CrewOnDTS::dtsNameForToday(context, entry.id);
            Json row{{"entryID", entry.id.text()}, {"crewMember", name}, {"dayplayer", dayplayer}};
            std::vector<std::string> reverts;
            for (auto field : {DTSTimeField::call, DTSTimeField::lunchOut, DTSTimeField::lunchIn, DTSTimeField::wrap}) {
                const EffectiveTime& t = times[field];
                Json time{{"text", payroll_decimal_time::formatTimeOfDay(t.value, date)}, {"source", toRawValue(t.source)}};
                if (t.value) time["instant"] = calendar_text::formatInstant(*t.value);
                if (const auto revert = DailyTimeSheets::revertToAutofillLabel(context, entry.id, field)) {
                    time["revertToAutofillLabel"] = *revert;
                    reverts.push_back(std::string(field == DTSTimeField::call ? "Call" : "Wrap") + " offers " + *revert);
                }
                row[std::string(toRawValue(field))] = std::move(time);
            }
            row["nonDeductibleBreakfast"] = entry.nonDeductibleBreakfast;
            row["workMode"] = toRawValue(mode);
            const auto ownMiles = DailyTimeSheets::rowMileage(context, entry.id);
            if (ownMiles) row["mileage"] = ownMiles->toString();
            const bool box = DailyTimeSheets::boxRental(context, entry.id);
            row["boxRental"] = box;
            if (entry.rulesLocalityOverride) row["rulesLocalityOverride"] = toRawValue(*entry.rulesLocalityOverride);
            if (title) row["dtsNameForToday"] = *title;
            Json rowAdvisories = Json::array();
            if (const auto advisory = DailyTimeSheets::unusualMealAdvisory(times.lunchOut.value, times.lunchIn.value)) {
                if (entry.lunchOutOverride || entry.lunchInOverride) rowAdvisories.push_back(*advisory);
            }
            row["advisories"] = rowAdvisories;
            const auto& review = reviews[rowIndex++];
            const std::optional<Instant> goldenHourWrap = review && review->goldenHourTarget ? std::optional(review->goldenHourTarget->targetTime) : std::nullopt;
            const auto notes = positionNotes(context, entry.id, row);
            if (review) {
                const Json rate = review_json::rateJSON(*review);  // kept alive for the loop over its items
                for (const auto& [key, value] : rate.items()) row[key] = value;
            }
            if (goldenHourWrap) {
                row["goldenHourWrap"] = Json{{"text", payroll_decimal_time::formatTimeOfDay(goldenHourWrap, date)},
                                             {"instant", calendar_text::formatInstant(*goldenHourWrap)}};
            }
            text << "  " << name << (dayplayer ? " (" + std::string(crew_on_dts_messages::dayplayerLabel) + ")" : "")
                 << (title ? " as " + *title : "") << "\n    Call " << shown(production, times.call.value, date) << mark(times.call)
                 << "  Lunch " << shown(production, times.lunchOut.value, date) << mark(times.lunchOut) << " to "
                 << shown(production, times.lunchIn.value, date) << mark(times.lunchIn) << "  Wrap "
                 << shown(production, times.wrap.value, date) << mark(times.wrap) << (entry.nonDeductibleBreakfast ? "  NDB" : "")
                 << "  " << toRawValue(mode) << (ownMiles ? "  " + ownMiles->toString() + " mi" : "") << (box ? "  box rental" : "")
                 << (entry.rulesLocalityOverride ? std::string("  ") + std::string(toRawValue(*entry.rulesLocalityOverride)) : "")
                 << "\n";
            text << "    " << (goldenHourWrap ? std::string(review_words::goldenHourWrap) + " " + shown(production, goldenHourWrap, date)
                                              : std::string(review_words::goldenHourUnavailable))
                 << "\n";
            for (const auto& note : notes) text << "    " << note << "\n";
            if (review && session.settings().showMonetaryDetails()) text << "    Rate: " << review_text::rate(*review, {}) << "\n";
            for (const auto& revert : reverts) text << "    " << revert << "\n";
            for (const auto& advisory : rowAdvisories) text << "    Advisory: " << advisory.get<std::string>() << "\n";
            rows.push_back(std::move(row));
        }
        session.answer(Json{{"date", a.date}, {"payrollWeekStart", calendar_text::formatDate(weekStart)}, {"shared", std::move(shared)},
                            {"advisories", std::move(advisories)}, {"rows", std::move(rows)}},
                       text.str());
        return int{exitSuccess};
    });
}

int deleteDTS(CommandSession& session, const DTSCommandArguments& a) {
    return act(
        session,
        [&](ModelContext& context, const Production& production) {
            const CalendarDate date = dateArgument(a.date);
            const Workday workday = dtsOn(context, production.id, date);
            if (DailyTimeSheets::hasEnteredData(context, workday) && !a.yes) {
                throw Refused{"confirmationNeeded", std::string(dts_messages::deleteConfirmation) + " Run again with --yes to delete it."};
            }
            DailyTimeSheets::remove(context, workday.id);
            session.answer(Json{{"deleted", a.date}}, "Deleted the DTS for " + a.date + " with its crew rows.\n");
            return int{exitSuccess};
        },
        dts_messages::deleteFailedTitle, dts_messages::deleteFailed);
}

int removeRow(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const Workday workday = dtsOn(context, production.id, dateArgument(a.date));
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        for (const auto& entry : weeks::entries(context, workday.id)) {
            if (entry.crewMemberID != member.id) continue;
            CrewOnDTS::removeRow(context, entry.id);
            session.answer(Json{{"removed", entry.id.text()}}, std::string(crew_on_dts_messages::removeRowAction) + ": " +
                                                                   member.displayName + ". " +
                                                                   std::string(crew_on_dts_messages::removeRowExplanation) + "\n");
            return int{exitSuccess};
        }
        throw Refused{"rowNotFound", member.displayName + " is not on the DTS for " + a.date + "."};
    });
}

int reorderRows(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const Workday workday = dtsOn(context, production.id, dateArgument(a.date));
        const auto entries = weeks::entries(context, workday.id);
        std::vector<Uuid> order;
        for (const auto& name : a.names) {
            const CrewMember member = crewMemberNamed(context, production.id, name);
            const auto row = std::find_if(entries.begin(), entries.end(), [&](const auto& e) { return e.crewMemberID == member.id; });
            if (row == entries.end()) throw Refused{"rowNotFound", member.displayName + " is not on the DTS for " + a.date + "."};
            if (std::find(order.begin(), order.end(), row->id) != order.end()) {
                throw Refused{"repeatedName", member.displayName + " is named twice; name each person on the DTS once."};
            }
            order.push_back(row->id);
        }
        for (const auto& entry : entries) {
            if (std::find(order.begin(), order.end(), entry.id) != order.end()) continue;
            const auto member = entry.crewMemberID ? crew_repository::fetchCrewMember(context, *entry.crewMemberID) : std::nullopt;
            throw Refused{"missingName", (member ? member->displayName : std::string("A crew row")) +
                                             " is on the DTS but not in the new order; name every person on it."};
        }
        CrewOnDTS::reorderRows(context, workday.id, order);
        session.answer(Json{{"reordered", order.size()}}, "Reordered the DTS crew rows.\n");
        return int{exitSuccess};
    });
}

// ---- activity ----

std::optional<PayrollDayActivityKind> activityKind(const std::string& text) {
    if (text == "idle") return PayrollDayActivityKind::idleAvailable;
    if (text == "personal") return PayrollDayActivityKind::personalUnavailable;
    return fromRawValue<PayrollDayActivityKind>(text);
}

std::vector<std::string> splitCommas(const std::string& text) {
    std::vector<std::string> parts;
    std::stringstream stream(text);
    for (std::string part; std::getline(stream, part, ',');) parts.push_back(part);
    return parts;
}

int addActivity(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const auto kind = activityKind(a.kind);
        if (!kind) throw Refused{"invalidKind", "Choose the activity travel, idle, personal or holiday."};
        NonDTSActivityDraft draft{date, *kind, a.travelEach.empty(), a.travel, {}, {}, std::nullopt};
        const auto individual = splitCommas(a.travelEach);
        if (!a.travelEach.empty() && individual.size() != a.names.size()) {
            throw Refused{"invalidTravelDuration", "Give one travel time for each person, in the order of their names."};
        }
        for (std::size_t i = 0; i < a.names.size(); ++i) {
            const CrewMember member = crewMemberNamed(context, production.id, a.names[i]);
            std::optional<Uuid> engagementID;
            for (const auto& engagement : crew_repository::engagementsOf(context, member.id)) {
                if (engagement.appliesOn(date)) engagementID = engagement.id;
            }
            if (!engagementID) throw Refused{"notEngaged", member.displayName + " has no engagement in force on " + a.date + "."};
            draft.selectedEngagementIDs.push_back(*engagementID);
            if (!individual.empty()) draft.individualTravelTexts[*engagementID] = individual[i];
        }
        const auto saved = NonDTSActivities::save(context, production.id, draft);
        session.answer(Json{{"saved", saved.size()}},
                       "Recorded " + std::string(label(*kind)) + " on " + a.date + " for " +
                           counted(static_cast<std::int64_t>(saved.size()), "person", "people") + ".\n");
        return int{exitSuccess};
    });
}

int listActivities(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const bool oneDate = !a.date.empty();
        const CalendarDate only = oneDate ? dateArgument(a.date) : CalendarDate{};
        Json list = Json::array();
        std::ostringstream text;
        for (const auto& week : weeks::weeks(context, production.id)) {
            for (const auto& activity : weeks::activities(context, week.id)) {
                if (oneDate && activity.calendarDate != only) continue;
                const auto member = activity.crewMemberID ? crew_repository::fetchCrewMember(context, *activity.crewMemberID) : std::nullopt;
                const std::string name = member ? member->displayName : "(removed crew member)";
                Json json{{"id", activity.id.text()},
                          {"date", calendar_text::formatDate(activity.calendarDate)},
                          {"kindRawValue", activity.kindRawValue},
                          {"crewMember", name}};
                text << calendar_text::formatDate(activity.calendarDate) << "  " << name << "  " << activityKindLabel(activity.kindRawValue);
                if (activity.travelDurationSeconds) {
                    json["travelDurationSeconds"] = *activity.travelDurationSeconds;
                    text << " " << formatDuration(*activity.travelDurationSeconds);
                }
                text << "\n";
                list.push_back(std::move(json));
            }
        }
        if (list.empty()) text << "No Non-DTS Activity.\n";
        session.answer(Json{{"activities", std::move(list)}}, text.str());
        return int{exitSuccess};
    });
}

int editActivity(CommandSession& session, const DTSCommandArguments& a, bool kindGiven, bool travelGiven) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        const auto activities = NonDTSActivities::onDate(context, production.id, date);
        const auto activity = std::find_if(activities.begin(), activities.end(), [&](const auto& x) { return x.crewMemberID == member.id; });
        if (activity == activities.end() || !activity->engagementID) {
            throw Refused{"activityNotFound", member.displayName + " has no Non-DTS Activity on " + a.date + "."};
        }
        const auto kind = kindGiven ? activityKind(a.kind) : activity->kind();
        if (!kind) throw Refused{"invalidKind", "Choose the activity travel, idle, personal or holiday."};
        std::string travel = a.travel;
        if (!travelGiven && activity->travelDurationSeconds) travel = formatDuration(*activity->travelDurationSeconds);
        NonDTSActivityDraft draft{date, *kind, true, travel, {}, {*activity->engagementID}, activity->id};
        NonDTSActivities::save(context, production.id, draft);
        session.answer(Json{{"updated", activity->id.text()}},
                       "Changed " + member.displayName + "\u2019s activity on " + a.date + " to " + std::string(label(*kind)) + ".\n");
        return int{exitSuccess};
    });
}

int activityOptions(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        const auto activities = NonDTSActivities::onDate(context, production.id, date);
        Json list = Json::array();
        std::ostringstream text;
        for (const auto& option : NonDTSActivities::options(context, production.id, date)) {
            Json json{{"crewMember", option.crewMember.displayName}, {"engagementID", option.engagement.id.text()}};
            std::string reason = option.unavailableReason.value_or("");
            const auto own = std::find_if(activities.begin(), activities.end(),
                                          [&](const auto& x) { return x.crewMemberID == option.crewMember.id; });
            if (reason.empty() && own != activities.end()) reason = "Has " + activityKindLabel(own->kindRawValue) + " on this date; edit it";
            if (!reason.empty()) json["unavailableReason"] = reason;
            text << "  " << option.crewMember.displayName << (reason.empty() ? "" : "  (" + reason + ")") << "\n";
            list.push_back(std::move(json));
        }
        if (list.empty()) text << "Nobody is engaged on " << a.date << ".\n";
        session.answer(Json{{"date", a.date}, {"options", std::move(list)}}, text.str());
        return int{exitSuccess};
    });
}

int removeActivity(CommandSession& session, const DTSCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate date = dateArgument(a.date);
        if (a.name.empty()) {
            const int removed = NonDTSActivities::removeAllOnDate(context, production.id, date);
            session.answer(Json{{"removed", removed}}, std::string(activity_messages::removeDayExplanation) + " Removed " +
                                                           counted(removed, "activity", "activities") + ".\n");
            return int{exitSuccess};
        }
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        for (const auto& activity : NonDTSActivities::onDate(context, production.id, date)) {
            if (activity.crewMemberID == member.id) {
                NonDTSActivities::remove(context, activity.id);
                session.answer(Json{{"removed", 1}}, std::string(activity_messages::removeOneExplanation) + "\n");
                return int{exitSuccess};
            }
        }
        throw Refused{"activityNotFound", member.displayName + " has no Non-DTS Activity on " + a.date + "."};
    });
}

}  // namespace

void addDTSCommands(CLI::App& app, CommandSession& session, DTSCommandArguments& a, int& exitStatus) {
    auto* dts = app.add_subcommand("dts", "Daily Time Sheets")->require_subcommand(1);
    dts->add_subcommand("create", "Create the DTS of a date")->callback([&] { exitStatus = createDTS(session, a); })
        ->add_option("DATE", a.date, "YYYY-MM-DD")->required();

    // Options whose presence matters even when given an empty value (which clears the field).
    static const std::array<std::pair<const char*, const char*>, 4> timeOptions{
        {{"--call", "call"}, {"--lunch-out", "lunchOut"}, {"--lunch-in", "lunchIn"}, {"--wrap", "wrap"}}};
    const auto addTimes = [&](CLI::App* command, std::map<std::string, CLI::Option*>& options) {
        std::array<std::string*, 4> targets{&a.call, &a.lunchOut, &a.lunchIn, &a.wrap};
        for (std::size_t i = 0; i < timeOptions.size(); ++i) {
            options[timeOptions[i].second] =
                command->add_option(timeOptions[i].first, *targets[i], "Time in payroll tenths, such as 7.0; \"\" clears it");
        }
    };
    auto& setOptions = a.setOptions;
    auto& rowOptions = a.rowOptions;
    const auto presence = [](const std::map<std::string, CLI::Option*>& options) {
        std::map<std::string, bool> given;
        for (const auto& [name, option] : options) given[name] = option->count() > 0;
        return given;
    };

    auto* set = dts->add_subcommand("set", "Set the shared facts of a DTS");
    set->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    addTimes(set, setOptions);
    set->add_option("--revert", a.revert, "Revert to Autofill: lunchIn (Lunch Out plus the production's lunch length)");
    set->add_flag("--grace-called", a.graceCalled, "Grace was called for the official first meal");
    set->add_flag("--grace-not-called", a.graceNotCalled, "Grace was not called");
    setOptions["travel"] = set->add_option("--travel", a.travel, "Shared travel time in payroll hours");
    setOptions["mileage"] = set->add_option("--mileage", a.mileage, "Department mileage");
    setOptions["location"] = set->add_option("--location", a.location, "Work location: studio or location");
    setOptions["workState"] = set->add_option("--work-state", a.workState, "Work State on the exported form");
    setOptions["notes"] = set->add_option("--notes", a.notes, "Notes printed on the form");
    set->callback([&] { exitStatus = setDTS(session, a, presence(setOptions)); });

    auto* row = dts->add_subcommand("row", "Set one crew member's facts on a DTS (adding the row when needed)");
    row->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    row->add_option("NAME", a.name, "The crew member")->required();
    addTimes(row, rowOptions);
    row->add_flag("--ndb", a.ndb, "Non-Deductible Breakfast given");
    row->add_flag("--no-ndb", a.noNdb, "No Non-Deductible Breakfast");
    rowOptions["mode"] = row->add_option("--mode", a.mode, "Work mode: timed, worked or prep");
    rowOptions["name"] = row->add_option("--dts-name", a.dtsName, "DTS Name for Today");
    row->add_option("--clear", a.clear, "Follow the shared time again: call, lunchOut, lunchIn or wrap");
    row->add_option("--revert", a.revert, "Revert to Autofill: call or wrap");
    rowOptions["mileage"] = row->add_option("--mileage", a.mileage, "The person's own miles; \"\" uses the department mileage");
    row->add_flag("--box-rental", a.boxRental, "Pay Box / Kit Rental for this DTS");
    row->add_flag("--no-box-rental", a.noBoxRental, "No box / kit rental for this DTS");
    rowOptions["locality"] = row->add_option("--locality", a.locality, "Rules locality for this day: local or distant");
    row->add_option("--job", a.job, "Job for Today: the production Position worked today, paid at its scale")->excludes(row->add_flag("--no-job", a.noJob, "No Job for Today"));
    auto* rerate = row->add_option("--rerate", a.rerate, "Rerate the day to a Saved Position, paid at its production scale");
    rerate->excludes(row->add_flag("--no-rerate", a.noRerate, "No rerate"));
    row->add_option("--rerate-title", a.rerateTitle, "The rerate's wording on the DTS")->needs(rerate);
    row->callback([&] { exitStatus = setRow(session, a, presence(rowOptions)); });

    auto* dayplayer = dts->add_subcommand("dayplayer", "Add a dayplayer to a DTS in a Position (creating the person and engagement when new)");
    dayplayer->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    dayplayer->add_option("NAME", a.name, "The dayplayer")->required();
    dayplayer->add_option("--position", a.position, "The production Position worked")->required();
    dayplayer->add_option("--dts-name", a.dtsName, "DTS Name for Today (the Position's name unless given)");
    dayplayer->callback([&] { exitStatus = addDayplayer(session, a); });

    auto* removeRowCommand = dts->add_subcommand("remove-row", "Remove one crew member's row from a DTS");
    removeRowCommand->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    removeRowCommand->add_option("NAME", a.name, "The crew member")->required();
    removeRowCommand->callback([&] { exitStatus = removeRow(session, a); });
    auto* reorder = dts->add_subcommand("reorder", "Put the DTS rows in this order");
    reorder->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    reorder->add_option("NAME", a.names, "Every crew member on the DTS, in the new order")->required();
    reorder->callback([&] { exitStatus = reorderRows(session, a); });

    dts->add_subcommand("show", "Show a DTS")->callback([&] { exitStatus = showDTS(session, a); })
        ->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    auto* remove = dts->add_subcommand("delete", "Delete a DTS with its crew rows");
    remove->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    remove->add_flag("--yes", a.yes, "Delete even though it holds entered data");
    remove->callback([&] { exitStatus = deleteDTS(session, a); });

    auto* activity = app.add_subcommand("activity", "Non-DTS Activity: travel, idle, personal, holiday")->require_subcommand(1);
    auto* activityAdd = activity->add_subcommand("add", "Record an activity for one or more people");
    activityAdd->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    activityAdd->add_option("KIND", a.kind, "travel, idle, personal or holiday")->required();
    activityAdd->add_option("NAME", a.names, "The crew members")->required();
    auto* sharedTravel = activityAdd->add_option("--travel", a.travel, "Shared Travel Time in payroll hours, such as 5.0");
    activityAdd->add_option("--travel-each", a.travelEach, "Individual Travel Times, in the order of the names: 5.0,2.5")
        ->excludes(sharedTravel);
    activityAdd->callback([&] { exitStatus = addActivity(session, a); });
    activity->add_subcommand("list", "List Non-DTS Activity")->callback([&] { exitStatus = listActivities(session, a); })
        ->add_option("DATE", a.date, "Only this date");
    auto* activityEdit = activity->add_subcommand("edit", "Change one person's activity on a date in place");
    activityEdit->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    activityEdit->add_option("NAME", a.name, "The crew member")->required();
    auto* editKind = activityEdit->add_option("--kind", a.kind, "travel, idle, personal or holiday");
    auto* editTravel = activityEdit->add_option("--travel", a.travel, "Travel Time in payroll hours, such as 5.0");
    activityEdit->callback([&, editKind, editTravel] { exitStatus = editActivity(session, a, editKind->count() > 0, editTravel->count() > 0); });
    activity->add_subcommand("options", "Who can be given an activity on a date, and why others cannot")
        ->callback([&] { exitStatus = activityOptions(session, a); })
        ->add_option("DATE", a.date, "YYYY-MM-DD")
        ->required();
    auto* activityRemove = activity->add_subcommand("remove", "Remove one person's activity on a date, or all of the date's");
    activityRemove->add_option("DATE", a.date, "YYYY-MM-DD")->required();
    activityRemove->add_option("NAME", a.name, "The crew member; without it, every activity of the date");
    activityRemove->callback([&] { exitStatus = removeActivity(session, a); });
}

}  // namespace tessel
