#include "CrewCommands.hpp"

#include "App/actualpay/PayComparison.hpp"

#include <sstream>

#include "App/model/CrewRoster.hpp"
#include "App/model/ProductionProfile.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/CrewLibrary.hpp"
#include "App/rules/RateCards.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/cli/CommandActions.hpp"
#include "App/cli/PositionCommands.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using namespace command_actions;
using payroll_decimal_time::formatDuration;

using command_actions::now;

bool given(const CrewCommandArguments& a, const std::string& option) {
    const auto found = a.given.find(option);
    return found != a.given.end() && found->second->count() > 0;
}

std::optional<CalendarDate> optionalDateArgument(const std::string& text) {
    if (entry_text::isBlank(text)) return std::nullopt;
    return dateArgument(std::string(entry_text::trimmed(text)));
}

template <typename Enum>
std::optional<Enum> choiceArgument(const std::string& text, const char* sentence) {
    if (entry_text::isBlank(text)) return std::nullopt;
    const auto value = fromRawValue<Enum>(entry_text::trimmed(text));
    if (!value) throw Refused{"invalidChoice", sentence};
    return value;
}

// The engagement options given on the command line, applied to an engagement draft.
void applyEngagementOptions(const CrewCommandArguments& a, ProductionEngagement& e, crew_roster::EngagementLabels& labels) {
    if (given(a, "from")) e.effectiveFrom = dateArgument(a.from);
    if (given(a, "through")) e.effectiveThrough = optionalDateArgument(a.through);
    if (a.dayplayer) e.crewParticipation = CrewParticipation::dayplayer;
    if (a.fullTime) e.crewParticipation = CrewParticipation::fullTime;
    if (given(a, "schedule")) {
        const auto schedule = fromRawValue<EmploymentSchedule>(entry_text::trimmed(a.schedule));
        if (!schedule) throw Refused{"invalidChoice", "Choose the schedule daily or weekly."};
        e.employmentSchedule = *schedule;
    }
    if (given(a, "location")) e.employmentLocation = choiceArgument<EmploymentLocation>(a.location, "Choose the employment location local or distant.");
    if (given(a, "locality")) e.rulesLocalityOverride = choiceArgument<RulesLocality>(a.locality, "Choose the locality local or distant.");
    if (given(a, "dtsFrom")) e.dtsEligibilityStartsAt = optionalDateArgument(a.dtsFrom);
    if (given(a, "precall")) e.regularPrecallDurationSeconds = durationArgument(a.precall, "Enter the regular precall in payroll-decimal hours, such as 0.5.");
    if (given(a, "wrapout")) e.regularWrapoutDurationSeconds = durationArgument(a.wrapout, "Enter the regular wrap-out in payroll-decimal hours, such as 0.3.");
    if (given(a, "notes")) e.notes = a.notes;
    if (given(a, "classification")) labels.classification = a.classification;
    if (given(a, "condition")) labels.conditions = a.conditions;
}

// The engagement a dated term from the date belongs to: the one in force then, else the latest before it.
ProductionEngagement engagementFor(ModelContext& context, const CrewMember& member, CalendarDate date) {
    if (const auto engagement = crew_roster::engagementOn(context, member.id, date)) return *engagement;
    throw Refused{"notEngaged", member.displayName + " has no engagement; add one with \u201Ctessel crew engage\u201D."};
}

std::string dateText(const std::optional<CalendarDate>& date) { return date ? calendar_text::formatDate(*date) : ""; }

Json engagementJSON(const EngagementRecord& r) {
    const auto& e = r.engagement;
    Json json{{"id", e.id.text()},
              {"effectiveFrom", calendar_text::formatDate(e.effectiveFrom)},
              {"crewParticipation", toRawValue(e.crewParticipation)},
              {"employmentSchedule", toRawValue(e.employmentSchedule)},
              {"notes", e.notes},
              {"conditions", r.conditions}};
    if (e.effectiveThrough) json["effectiveThrough"] = dateText(e.effectiveThrough);
    if (e.employmentLocation) json["employmentLocation"] = toRawValue(*e.employmentLocation);
    if (e.rulesLocalityOverride) json["rulesLocalityOverride"] = toRawValue(*e.rulesLocalityOverride);
    if (e.dtsEligibilityStartsAt) json["dtsEligibilityStartsAt"] = dateText(e.dtsEligibilityStartsAt);
    if (e.regularPrecallDurationSeconds) json["regularPrecallDurationSeconds"] = *e.regularPrecallDurationSeconds;
    if (e.regularWrapoutDurationSeconds) json["regularWrapoutDurationSeconds"] = *e.regularWrapoutDurationSeconds;
    if (r.classification) json["classification"] = *r.classification;
    const auto dated = [](const std::vector<DatedEngagementTerm>& terms) {
        Json list = Json::array();
        for (const auto& t : terms) {
            Json term{{"effectiveDate", calendar_text::formatDate(t.effectiveDate)}};
            if (t.amount) term["amount"] = Json{{"amount", t.amount->toString()}, {"currency", t.currencyCode}};
            if (t.seconds) term["minimumPaidDurationSeconds"] = *t.seconds;
            list.push_back(std::move(term));
        }
        return list;
    };
    json["payRates"] = dated(r.rates);
    json["dailyGuarantees"] = dated(r.guarantees);
    json["boxRentals"] = dated(r.boxRentals);
    if (r.requiredRestSeconds) json["requiredRestSeconds"] = *r.requiredRestSeconds;
    return json;
}

void writeEngagement(std::ostream& text, const EngagementRecord& r) {
    const auto& e = r.engagement;
    text << "  Engagement from " << calendar_text::formatDate(e.effectiveFrom)
         << (e.effectiveThrough ? " through " + dateText(e.effectiveThrough) : std::string(", open-ended")) << ": "
         << (e.crewParticipation == CrewParticipation::dayplayer ? "dayplayer" : "full time") << ", "
         << toRawValue(e.employmentSchedule);
    if (e.employmentLocation) text << ", " << toRawValue(*e.employmentLocation) << " hire";
    if (e.rulesLocalityOverride) text << ", " << toRawValue(*e.rulesLocalityOverride) << " rules";
    if (r.classification) text << ", classification " << *r.classification;
    for (const auto& condition : r.conditions) text << ", condition " << condition;
    text << "\n";
    if (e.dtsEligibilityStartsAt) text << "    On the DTS from " << dateText(e.dtsEligibilityStartsAt) << "\n";
    if (e.regularPrecallDurationSeconds) text << "    Regular precall " << formatDuration(*e.regularPrecallDurationSeconds) << "\n";
    if (e.regularWrapoutDurationSeconds) text << "    Regular wrap-out " << formatDuration(*e.regularWrapoutDurationSeconds) << "\n";
    for (const auto& t : r.rates) {
        text << "    Rate " << t.amount->toString() << " " << t.currencyCode << "/h from " << calendar_text::formatDate(t.effectiveDate) << "\n";
    }
    for (const auto& t : r.guarantees) {
        text << "    Daily guarantee " << formatDuration(*t.seconds) << " h from " << calendar_text::formatDate(t.effectiveDate) << "\n";
    }
    for (const auto& t : r.boxRentals) {
        text << "    Box / kit rental " << t.amount->toString() << " " << t.currencyCode << "/day from "
             << calendar_text::formatDate(t.effectiveDate) << "\n";
    }
    if (r.requiredRestSeconds) text << "    Required rest " << formatDuration(*r.requiredRestSeconds) << " h\n";
    if (!e.notes.empty()) text << "    Notes: " << e.notes << "\n";
}

void writePosition(std::ostream& text, Json& json, const rate_cards::EngagementPosition& position) {
    Json follows = Json::array();
    text << "    Position " << position.positionName << "\n";
    for (const auto& [from, followsScale] : position.followsScaleFrom) {
        follows.push_back({{"from", calendar_text::formatDate(from)}, {"followsPositionScale", followsScale}});
        text << "      from " << calendar_text::formatDate(from)
             << (followsScale ? ": paid the Position's scale\n" : ": own rate as over-scale, the scale as its floor\n");
    }
    if (!position.personalChanges.empty()) text << "      Own schedule: " << review_text::scheduleChangesLine(position.personalChanges) << "\n";
    json["position"] = {{"positionID", position.positionID.text()},
                        {"positionName", position.positionName},
                        {"rates", std::move(follows)},
                        {"scheduleChanges", review_text::scheduleChanges(position.personalChanges)}};
}

// ---- the production's own facts ----

DTSTimeDisplay timeDisplayArgument(const std::string& text) {
    // Clock time is shown on the 24-hour clock; "clock24Hour" names it too.
    if (text == "payrollDecimal") return DTSTimeDisplay::payrollDecimal;
    if (text == "clockTime" || text == "clock24Hour") return DTSTimeDisplay::clockTime;
    if (text == "clock12Hour") {
        throw Refused{"invalidChoice", "Tessel shows clock time on the 24-hour clock; choose payrollDecimal or clockTime."};
    }
    throw Refused{"invalidChoice", "Choose the time display payrollDecimal or clockTime."};
}

int setProduction(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& stored) {
        Production production = stored;
        ProductionIdentity identity = production_profile::identity(context, production.id);
        if (given(a, "newName")) production.name = std::string(entry_text::trimmed(a.newName));
        if (given(a, "startDate")) production.startDate = optionalDateArgument(a.startDate);
        if (given(a, "lunchLength")) {
            const auto seconds = durationArgument(a.lunchLength, "Enter the lunch length in payroll-decimal hours, such as 0.5.");
            production_profile::validateLunchLength(seconds.value_or(0));
            production.defaultLunchDurationSeconds = *seconds;
        }
        if (given(a, "timeDisplay")) production.dtsTimeDisplay = timeDisplayArgument(std::string(entry_text::trimmed(a.timeDisplay)));
        if (given(a, "currency")) {
            production.currencyCode = std::string(entry_text::trimmed(a.currency));
            production_profile::checkCurrencyChange(context, production.id, production.currencyCode);
        }
        std::optional<bool> defaultNDB;
        if (given(a, "defaultNDB")) {
            if (a.defaultNDB != "on" && a.defaultNDB != "off") throw Refused{"invalidChoice", "Choose the default NDB on or off."};
            defaultNDB = a.defaultNDB == "on";
        }
        if (given(a, "department")) identity.department = a.department;
        if (given(a, "company")) identity.company = a.company;
        if (given(a, "workState")) identity.defaultWorkState = a.workState;
        if (given(a, "departmentHead")) identity.departmentHeadName = a.departmentHead;
        std::optional<ProductionDTSExportTemplateMode> exportForm;
        if (given(a, "exportForm")) {
            static const std::map<std::string, ProductionDTSExportTemplateMode> forms{{"none", ProductionDTSExportTemplateMode::unconfigured},
                                                                                     {"builtin", ProductionDTSExportTemplateMode::legacyKestrel},
                                                                                     {"template", ProductionDTSExportTemplateMode::productionTemplate}};
            const auto form = forms.find(a.exportForm);
            if (form == forms.end()) throw Refused{"invalidChoice", "Choose the export form none, builtin or template."};
            exportForm = form->second;
        }
        if (given(a, "builtinForm") && a.builtinForm != "on" && a.builtinForm != "off") {
            throw Refused{"invalidChoice", "Choose the built-in form on or off."};
        }
        std::optional<PayComparisonProfile> terminology;
        if (given(a, "terminology")) {
            terminology = payComparisonProfileFromRaw(a.terminology);
            if (!terminology) throw Refused{"invalidChoice", "Choose the payroll terminology ep, grossOnly or unspecified."};
        }
        const auto tolerance = given(a, "tolerance") ? std::optional(pay_comparison_settings::validatedTolerance(a.tolerance)) : std::nullopt;

        production_repository::update(context, production);
        production_profile::setIdentity(context, production.id, identity);
        if (defaultNDB) DailyTimeSheets::setDefaultNonDeductibleBreakfast(context, production.id, *defaultNDB, now());
        if (exportForm) dts_export::setMode(context, production.id, *exportForm);
        if (given(a, "builtinForm")) dts_export::setBuiltInFormEligible(context, production.id, a.builtinForm == "on");
        if (terminology) pay_comparison_settings::setProfile(context, production.id, *terminology);
        if (tolerance) pay_comparison_settings::setTolerance(context, production.id, *tolerance);
        session.answer(Json{{"updated", production.id.text()}}, "Updated production \u201C" + production.name + "\u201D.\n" +
                                                                   (defaultNDB ? std::string(dts_messages::defaultNDBNote) + "\n" : ""));
        return int{exitSuccess};
    });
}

// ---- the crew list ----

int addCrew(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CalendarDate from = dateArgument(a.from);
        const auto precall = durationArgument(a.precall, "Enter the regular precall in payroll-decimal hours, such as 0.5.");
        const auto wrapout = durationArgument(a.wrapout, "Enter the regular wrap-out in payroll-decimal hours, such as 0.3.");
        // From the Crew Library, the person is added by their library name and linked to them.
        const auto libraryPerson = a.fromLibrary ? std::optional(crew_library::named(context, a.name)) : std::nullopt;
        const std::string name = libraryPerson ? libraryPerson->displayName : a.name;
        const crew_roster::NewCrewMember person{name, from, a.dayplayer ? CrewParticipation::dayplayer : CrewParticipation::fullTime,
                                                precall, wrapout, a.rate};
        const auto [member, engagement] = crew_roster::add(context, production.id, person, production.currencyCode);
        std::string preferred;
        if (libraryPerson) {
            crew_library::link(context, production.id, member.id, *libraryPerson, now());
            // Their preferred position, when the production has one of that name.
            for (const auto& position : positions::list(context, PositionScope::production, production.id)) {
                if (!libraryPerson->preferredPositionName || position.positionName != *libraryPerson->preferredPositionName) continue;
                rate_cards::engageInPosition(context, engagement.id, position, from, false, now());
                preferred = " as " + position.positionName;
            }
        }
        session.answer(Json{{"id", member.id.text()}, {"engagementID", engagement.id.text()}},
                       "Added " + member.displayName + (a.dayplayer ? " (dayplayer)" : "") + preferred + " from " + a.from +
                           (libraryPerson ? ", linked to the Crew Library" : "") + ".\n");
        return int{exitSuccess};
    });
}

int listCrew(CommandSession& session) {
    return act(session, [&](ModelContext& context, const Production& production) {
        Json list = Json::array();
        std::ostringstream text;
        for (const auto& member : crew_repository::crewMembers(context, production.id)) {
            for (const auto& engagement : crew_repository::engagementsOf(context, member.id)) {
                const auto rates = crew_repository::payRates(context, engagement.id);
                Json json{{"id", member.id.text()},
                          {"displayName", member.displayName},
                          {"crewParticipation", toRawValue(engagement.crewParticipation)},
                          {"effectiveFrom", calendar_text::formatDate(engagement.effectiveFrom)},
                          {"retired", member.retiredAt.has_value()}};
                text << member.displayName << (member.retiredAt ? " (retired)" : "") << "  "
                     << (engagement.crewParticipation == CrewParticipation::dayplayer ? "dayplayer" : "full time") << ", from "
                     << calendar_text::formatDate(engagement.effectiveFrom);
                if (engagement.effectiveThrough) text << " through " << dateText(engagement.effectiveThrough);
                if (!rates.empty()) {
                    json["hourlyRate"] = Json{{"amount", rates.back().hourlyAmount.toString()}, {"currency", rates.back().currencyCode}};
                    text << ", " << rates.back().hourlyAmount.toString() << " " << rates.back().currencyCode << "/h";
                }
                if (engagement.regularPrecallDurationSeconds) {
                    json["regularPrecallDurationSeconds"] = *engagement.regularPrecallDurationSeconds;
                    text << ", precall " << formatDuration(*engagement.regularPrecallDurationSeconds);
                }
                if (engagement.regularWrapoutDurationSeconds) {
                    json["regularWrapoutDurationSeconds"] = *engagement.regularWrapoutDurationSeconds;
                    text << ", wrap-out " << formatDuration(*engagement.regularWrapoutDurationSeconds);
                }
                text << "\n";
                list.push_back(std::move(json));
            }
        }
        if (list.empty()) text << "No crew yet. Add someone with \u201Ctessel crew add NAME --from DATE\u201D.\n";
        session.answer(Json{{"crew", std::move(list)}}, text.str());
        return int{exitSuccess};
    });
}

int setCrew(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        if (a.retire && a.unretire) throw Refused{"conflictingOptions", "Choose --retire or --unretire, not both."};
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        if (given(a, "newName")) {
            const std::string name(entry_text::trimmed(a.newName));
            for (const auto& other : crewMembersNamed(context, production.id, name)) {
                if (other.id != member.id) {
                    throw Refused{"duplicateName", "There is already a crew member named \u201C" + name + "\u201D on this production."};
                }
            }
            crew_roster::rename(context, member.id, a.newName);
        }
        if (given(a, "order")) crew_roster::moveTo(context, member.id, a.order);
        if (a.retire) crew_roster::retire(context, member.id, now());
        if (a.unretire) crew_roster::unretire(context, member.id);
        session.answer(Json{{"updated", member.id.text()}}, "Updated " + member.displayName + ".\n");
        return int{exitSuccess};
    });
}

int removeCrew(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        crew_roster::remove(context, member.id);
        session.answer(Json{{"removed", member.id.text()}}, "Removed " + member.displayName + " from the crew list.\n");
        return int{exitSuccess};
    });
}

// ---- engagements ----

int engage(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        ProductionEngagement draft{Uuid::generate(), production.id, member.id, std::nullopt, dateArgument(a.from)};
        crew_roster::EngagementLabels labels;
        applyEngagementOptions(a, draft, labels);
        const auto saved = crew_roster::saveEngagement(context, draft, labels);
        session.answer(Json{{"engagementID", saved.id.text()}},
                       "Engaged " + member.displayName + " from " + calendar_text::formatDate(saved.effectiveFrom) + ".\n");
        return int{exitSuccess};
    });
}

int changeEngagement(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        const CalendarDate on = a.on.empty() ? CalendarDate(floor<days>(system_clock::now())) : dateArgument(a.on);
        ProductionEngagement engagement = engagementFor(context, member, on);
        crew_roster::EngagementLabels labels;
        applyEngagementOptions(a, engagement, labels);
        crew_roster::saveEngagement(context, engagement, labels);
        session.answer(Json{{"engagementID", engagement.id.text()}},
                       "Updated " + member.displayName + "\u2019s engagement from " + calendar_text::formatDate(engagement.effectiveFrom) + ".\n");
        return int{exitSuccess};
    });
}

int showCrew(CommandSession& session, const CrewCommandArguments& a, bool engagementsOnly) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        Json engagements = Json::array();
        std::ostringstream text;
        text << member.displayName << (member.retiredAt ? " (retired " + calendar_text::formatInstant(*member.retiredAt) + ")" : "")
             << ", crew order " << member.displayOrder + 1 << "\n";
        const auto records = crew_roster::records(context, member.id);
        for (const auto& record : records) {
            Json engagement = engagementJSON(record);
            writeEngagement(text, record);
            if (const auto position = rate_cards::engagementPosition(context, record.engagement.id)) {
                writePosition(text, engagement, *position);
            }
            engagements.push_back(std::move(engagement));
        }
        Json json{{"id", member.id.text()}, {"displayName", member.displayName}, {"displayOrder", member.displayOrder},
                  {"engagements", std::move(engagements)}};
        if (member.retiredAt) json["retiredAt"] = calendar_text::formatInstant(*member.retiredAt);
        if (!engagementsOnly) {
            Json provisions = Json::array();
            for (const auto& record : records) {
                for (const auto& term : CompensationProvisions::engagementTerms(context, record.engagement.id)) {
                    Json p{{"engagementID", record.engagement.id.text()}, {"kind", term.kind},
                           {"effectiveDate", calendar_text::formatDate(term.effectiveDate)},
                           {"overrideMode", term.mode ? std::string(toRawValue(*term.mode)) : "unknown"}};
                    const auto kind = fromRawValue<CompensationProvisionKind>(term.kind);
                    text << "    " << (kind ? std::string(label(*kind)) : term.kind) << " from " << calendar_text::formatDate(term.effectiveDate) << ": "
                         << (term.mode ? std::string(toRawValue(*term.mode)) : "unknown");
                    if (term.personalDailyAmount) {
                        p["personalDailyAmount"] = Json{{"amount", term.personalDailyAmount->toString()}, {"currency", term.currencyCode}};
                        text << " " << term.personalDailyAmount->toString() << " " << term.currencyCode << "/day";
                    }
                    text << "\n";
                    provisions.push_back(std::move(p));
                }
            }
            json["provisionTerms"] = std::move(provisions);
        }
        if (records.empty()) text << "  No engagement yet.\n";
        session.answer(json, text.str());
        return int{exitSuccess};
    });
}

// ---- dated terms ----

int datedTerm(CommandSession& session, const CrewCommandArguments& a, crew_roster::DatedTermKind kind) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        if (given(a, "clear")) {
            const CalendarDate date = dateArgument(a.clearDate);
            crew_roster::clearTerm(context, engagementFor(context, member, date).id, kind, date);
            session.answer(Json{{"cleared", a.clearDate}}, "Cleared " + member.displayName + "\u2019s term from " + a.clearDate + ".\n");
            return int{exitSuccess};
        }
        if (a.from.empty() || a.value.empty()) throw Refused{"missingValue", "Give the value and --from DATE, or --clear DATE."};
        const CalendarDate from = dateArgument(a.from);
        const Uuid engagementID = engagementFor(context, member, from).id;
        using Kind = crew_roster::DatedTermKind;
        if (kind == Kind::rate) crew_roster::setRate(context, engagementID, from, a.value, production.currencyCode);
        if (kind == Kind::boxRental) crew_roster::setBoxRental(context, engagementID, from, a.value, production.currencyCode);
        if (kind == Kind::guarantee) {
            const auto seconds = durationArgument(a.value, "Enter the daily guarantee in payroll-decimal hours, such as 10.0.");
            crew_roster::setGuarantee(context, engagementID, from, seconds.value_or(0));
        }
        session.answer(Json{{"engagementID", engagementID.text()}, {"effectiveDate", a.from}},
                       "Recorded " + member.displayName + "\u2019s " +
                           (kind == Kind::rate ? "rate" : kind == Kind::guarantee ? "daily guarantee" : "box / kit rental") + " from " +
                           a.from + ".\n");
        return int{exitSuccess};
    });
}

int provisionTerm(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        const auto kind = fromRawValue<CompensationProvisionKind>(a.kind);
        if (!kind) throw Refused{"invalidKind", "Choose the provision cellPhoneAllowance, perDiem, mileage or vacationPay."};
        if (given(a, "clear")) {
            const CalendarDate date = dateArgument(a.clearDate);
            if (!CompensationProvisions::removeEngagementTerm(context, engagementFor(context, member, date).id, *kind, date)) {
                throw Refused{"termNotFound", "There is no " + std::string(label(*kind)) + " term from " + a.clearDate + " to clear."};
            }
            session.answer(Json{{"cleared", a.clearDate}}, "Cleared " + member.displayName + "\u2019s " + std::string(label(*kind)) +
                                                               " term from " + a.clearDate + ".\n");
            return int{exitSuccess};
        }
        if (a.from.empty()) throw Refused{"missingValue", "Give --from DATE and --mode, or --clear DATE."};
        const CalendarDate from = dateArgument(a.from);
        // The word for inheriting the ruleset's amount is accepted beside the stored one.
        const auto mode = a.mode == "rulesetDefault" ? std::optional(CompensationProvisionOverrideMode::productionDefault)
                                                     : overrideModeFromRawValue(a.mode);
        if (!mode) throw Refused{"invalidMode", "Choose the mode personalAmount, notEligible or productionDefault."};
        std::optional<Decimal> amount;
        if (*mode == CompensationProvisionOverrideMode::personalAmount) {
            amount = entry_text::decimal(a.amount);
            if (!amount || amount->isNegative()) throw Refused{"invalidAmount", "Enter the personal daily amount, such as 5.00."};
        } else if (!entry_text::isBlank(a.amount)) {
            throw Refused{"invalidAmount", "Only a personal amount takes --amount."};
        }
        const Uuid engagementID = engagementFor(context, member, from).id;
        CompensationProvisions::removeEngagementTerm(context, engagementID, *kind, from);
        CompensationProvisions::setEngagementTerm(context, engagementID, *kind, from, *mode, amount, production.currencyCode);
        session.answer(Json{{"engagementID", engagementID.text()}, {"effectiveDate", a.from}},
                       "Recorded " + member.displayName + "\u2019s " + std::string(label(*kind)) + " from " + a.from + ".\n");
        return int{exitSuccess};
    });
}

int turnaround(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const CrewMember member = crewMemberNamed(context, production.id, a.name);
        const CalendarDate today(floor<days>(system_clock::now()));
        const Uuid engagementID = engagementFor(context, member, today).id;
        if (!a.clear && entry_text::isBlank(a.value)) throw Refused{"missingValue", "Give the required rest in hours, or --clear."};
        const auto seconds = a.clear ? std::nullopt : durationArgument(a.value, "Enter the required rest in payroll-decimal hours, such as 10.0.");
        crew_roster::setRequiredRest(context, engagementID, seconds, now());
        session.answer(Json{{"engagementID", engagementID.text()}},
                       seconds ? "Recorded " + member.displayName + "\u2019s required rest of " + formatDuration(*seconds) + " hours.\n"
                               : "Cleared " + member.displayName + "\u2019s required rest.\n");
        return int{exitSuccess};
    });
}

// The engagement options of one command; its callback makes them the ones `given` looks at.
std::map<std::string, CLI::Option*> addEngagementOptions(CLI::App* command, CrewCommandArguments& a) {
    std::map<std::string, CLI::Option*> g;
    g["through"] = command->add_option("--through", a.through, "Last day of the engagement; \"\" makes it open-ended");
    command->add_flag("--dayplayer", a.dayplayer, "A dayplayer, added to a DTS by hand");
    command->add_flag("--full-time", a.fullTime, "Full-time crew, on every new DTS");
    g["schedule"] = command->add_option("--schedule", a.schedule, "Employment schedule: daily or weekly");
    g["location"] = command->add_option("--location", a.location, "Employment location: local or distant");
    g["locality"] = command->add_option("--locality", a.locality, "Rules locality: local or distant; \"\" uses the ruleset's default");
    g["classification"] = command->add_option("--classification", a.classification, "Employment classification; \"\" removes it");
    g["condition"] = command->add_option("--condition", a.conditions, "Employment conditions (replacing the ones it has)");
    g["dtsFrom"] = command->add_option("--dts-from", a.dtsFrom, "First date the person may appear on a DTS");
    g["precall"] = command->add_option("--precall", a.precall, "Regular precall before General Crew Call, in payroll hours");
    g["wrapout"] = command->add_option("--wrapout", a.wrapout, "Regular wrap-out after Wrap, in payroll hours");
    g["notes"] = command->add_option("--notes", a.notes, "Notes on the engagement");
    return g;
}

void addDatedTerm(CLI::App* crew, CommandSession& session, CrewCommandArguments& a, int& exitStatus, const char* name,
                  const char* description, const char* valueName, crew_roster::DatedTermKind kind) {
    auto* command = crew->add_subcommand(name, description);
    command->add_option("NAME", a.name, "The crew member")->required();
    command->add_option(valueName, a.value, "The value from --from on");
    command->add_option("--from", a.from, "First day of the term, YYYY-MM-DD");
    a.given[std::string(name) + "Clear"] = command->add_option("--clear", a.clearDate, "Remove the term that starts on this date");
    command->callback([&, kind, key = std::string(name) + "Clear"] {
        a.given["clear"] = a.given[key];
        exitStatus = datedTerm(session, a, kind);
    });
}


// The engagement in force on the date (else the person's latest one) is paid in the position from then on.
int engagePosition(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto member = crewMemberNamed(context, production.id, a.name);
        const auto position = positions::named(context, PositionScope::production, production.id, a.position);
        const auto on = a.from.empty() ? CalendarDate(floor<days>(system_clock::now())) : dateArgument(a.from);
        const auto engagement = crew_roster::engagementOn(context, member.id, on);
        if (!engagement) throw Refused{"noEngagement", member.displayName + " has no engagement on " + calendar_text::formatDate(on) + "."};
        const auto from = a.from.empty() ? engagement->effectiveFrom : on;
        rate_cards::engageInPosition(context, engagement->id, position, from, a.followsScale, now());
        session.answer(Json{{"engagementID", engagement->id.text()}, {"position", position.positionName}, {"followsScale", a.followsScale}},
                       member.displayName + " is engaged as " + position.positionName + " from " + calendar_text::formatDate(from) +
                           (a.followsScale ? ", paid the Position's scale.\n" : ", with their own rate as over-scale and the scale as its floor.\n"));
        return exitSuccess;
    });
}

// The person's own changes of their position's schedule: shown, changed option by option, or cleared.
int positionTerms(CommandSession& session, const CrewCommandArguments& a) {
    return act(session, [&](ModelContext& context, const Production& production) {
        const auto member = crewMemberNamed(context, production.id, a.name);
        const auto on = a.on.empty() ? CalendarDate(floor<days>(system_clock::now())) : dateArgument(a.on);
        const auto engagement = crew_roster::engagementOn(context, member.id, on);
        if (!engagement) throw Refused{"noEngagement", member.displayName + " has no engagement on " + calendar_text::formatDate(on) + "."};
        auto changes = a.clear ? PositionScheduleOverrides{} : rate_cards::personalScheduleChanges(context, engagement->id);
        const bool changing = a.clear || !a.minimumCall.empty() || !a.overtime.empty() || !a.doubleTime.empty();
        if (changing) {
            changes = withScheduleArguments(changes, a.minimumCall, a.overtime, a.doubleTime);
            rate_cards::setPersonalScheduleChanges(context, engagement->id, changes, now());
        }
        session.answer(Json{{"engagementID", engagement->id.text()}, {"scheduleChanges", review_text::scheduleChanges(changes)}},
                       member.displayName + "’s own schedule: " +
                           (changes.empty() ? std::string("as the Position's terms") : review_text::scheduleChangesLine(changes)) + ".\n");
        return exitSuccess;
    });
}

}  // namespace

void addCrewCommands(CLI::App& app, CommandSession& session, CrewCommandArguments& a, int& exitStatus) {
    auto* productionSet = app.get_subcommand("production")->add_subcommand("set", "Change the current production's facts");
    std::map<std::string, CLI::Option*> productionOptions{
        {"newName", productionSet->add_option("--name", a.newName, "The production's name")},
        {"startDate", productionSet->add_option("--start-date", a.startDate, "First day of the production; \"\" clears it")},
        {"department", productionSet->add_option("--department", a.department, "The department printed on the DTS")},
        {"company", productionSet->add_option("--company", a.company, "The production company printed on the DTS")},
        {"workState", productionSet->add_option("--work-state", a.workState, "Default Work State on the exported form")},
        {"departmentHead", productionSet->add_option("--department-head", a.departmentHead, "Department head's name on the DTS")},
        {"defaultNDB", productionSet->add_option("--default-ndb", a.defaultNDB, "Default NDB for new daily entries: on or off")},
        {"lunchLength", productionSet->add_option("--lunch-length", a.lunchLength, "Lunch length that fills Official Lunch In, in hours")},
        {"timeDisplay", productionSet->add_option("--time-display", a.timeDisplay, "DTS times: payrollDecimal or clockTime")},
        {"currency", productionSet->add_option("--currency", a.currency, "ISO 4217 currency code, such as USD")},
        {"exportForm", productionSet->add_option("--export-form", a.exportForm, "The form a DTS is exported on: none, builtin or template")},
        {"builtinForm", productionSet->add_option("--builtin-form", a.builtinForm, "Whether this production may use the built-in form: on or off")},
        {"terminology", productionSet->add_option("--terminology", a.terminology, "Payroll terminology for pay comparison: ep, grossOnly or unspecified")},
        {"tolerance", productionSet->add_option("--tolerance", a.tolerance, "Rounding tolerance of pay comparison, such as 0.01")}};
    productionSet->callback([&, productionOptions] {
        a.given = productionOptions;
        exitStatus = setProduction(session, a);
    });

    auto* crew = app.add_subcommand("crew", "The production's crew, engagements and dated terms")->require_subcommand(1);
    auto* add = crew->add_subcommand("add", "Add a crew member with an engagement (and a rate)");
    add->add_option("NAME", a.name, "The name shown on the DTS")->required();
    add->add_option("--from", a.from, "First day of the engagement, YYYY-MM-DD")->required();
    add->add_option("--rate", a.rate, "Hourly rate, such as 45.00");
    add->add_flag("--dayplayer", a.dayplayer, "Engage as a dayplayer");
    add->add_flag("--from-library", a.fromLibrary, "NAME is a person of the Crew Library: add them linked, in their preferred position when the production has it");
    add->add_option("--precall", a.precall, "Regular precall before General Crew Call, in payroll hours");
    add->add_option("--wrapout", a.wrapout, "Regular wrap-out after Wrap, in payroll hours");
    add->callback([&] { exitStatus = addCrew(session, a); });
    crew->add_subcommand("list", "List the crew")->callback([&] { exitStatus = listCrew(session); });

    auto* set = crew->add_subcommand("set", "Rename, reorder, retire or bring back a crew member");
    set->add_option("NAME", a.name, "The crew member")->required();
    a.given["newName"] = set->add_option("--name", a.newName, "The new display name");
    a.given["order"] = set->add_option("--order", a.order, "Place in the crew order, 1 = first");
    set->add_flag("--retire", a.retire, "Retire from the crew list; history is kept");
    set->add_flag("--unretire", a.unretire, "Bring back onto the crew list");
    set->callback([&] { exitStatus = setCrew(session, a); });
    auto* remove = crew->add_subcommand("remove", "Remove a crew member without history (retire people with history)");
    remove->add_option("NAME", a.name, "The crew member")->required();
    remove->callback([&] { exitStatus = removeCrew(session, a); });

    auto* engageCommand = crew->add_subcommand("engage", "Add an engagement to a crew member");
    engageCommand->add_option("NAME", a.name, "The crew member")->required();
    auto engageOptions = addEngagementOptions(engageCommand, a);
    engageOptions["from"] = engageCommand->add_option("--from", a.from, "First day of the engagement")->required();
    engageCommand->callback([&, engageOptions] {
        a.given = engageOptions;
        exitStatus = engage(session, a);
    });
    auto* engagement = crew->add_subcommand("engagement", "Change the engagement in force on a date");
    engagement->add_option("NAME", a.name, "The crew member")->required();
    engagement->add_option("--on", a.on, "A date the engagement is in force (default: today, else the latest)");
    auto engagementOptions = addEngagementOptions(engagement, a);
    engagementOptions["from"] = engagement->add_option("--from", a.from, "New first day of the engagement");
    engagement->callback([&, engagementOptions] {
        a.given = engagementOptions;
        exitStatus = changeEngagement(session, a);
    });
    crew->add_subcommand("engagements", "List a crew member's engagements with their terms")
        ->callback([&] { exitStatus = showCrew(session, a, true); })
        ->add_option("NAME", a.name, "The crew member")
        ->required();
    crew->add_subcommand("show", "Show a crew member: every engagement and dated term")
        ->callback([&] { exitStatus = showCrew(session, a, false); })
        ->add_option("NAME", a.name, "The crew member")
        ->required();

    using Kind = crew_roster::DatedTermKind;
    addDatedTerm(crew, session, a, exitStatus, "rate", "An hourly rate from a date on (a raise)", "AMOUNT", Kind::rate);
    addDatedTerm(crew, session, a, exitStatus, "guarantee", "A personal daily guarantee from a date on", "HOURS", Kind::guarantee);
    addDatedTerm(crew, session, a, exitStatus, "box-rental", "A daily box / kit rental from a date on", "AMOUNT", Kind::boxRental);

    auto* provision = crew->add_subcommand("provision", "A personal allowance term from a date on");
    provision->add_option("NAME", a.name, "The crew member")->required();
    provision->add_option("KIND", a.kind, "cellPhoneAllowance, perDiem, mileage or vacationPay")->required();
    provision->add_option("--from", a.from, "First day of the term");
    provision->add_option("--mode", a.mode, "personalAmount, notEligible or productionDefault (also rulesetDefault)");
    provision->add_option("--amount", a.amount, "The personal daily amount");
    auto* provisionClear = provision->add_option("--clear", a.clearDate, "Remove the term that starts on this date");
    provision->callback([&, provisionClear] {
        a.given["clear"] = provisionClear;
        exitStatus = provisionTerm(session, a);
    });

    auto* position = crew->add_subcommand("position", "Engage a crew member in a production Position from a date");
    position->add_option("NAME", a.name, "The crew member")->required();
    position->add_option("POSITION", a.position, "The production Position")->required();
    position->add_option("--from", a.from, "The first date, YYYY-MM-DD (default: the engagement's first day)");
    position->add_flag("--follows-scale", a.followsScale, "Pay the Position's scale rather than the person's own rate");
    position->callback([&] { exitStatus = engagePosition(session, a); });

    auto* terms = crew->add_subcommand("position-terms", "The person's own changes of their Position's schedule (shown without options)");
    terms->add_option("NAME", a.name, "The crew member")->required();
    terms->add_option("--on", a.on, "The engagement in force on this date, YYYY-MM-DD (default: today's, else the latest)");
    terms->add_option("--minimum-call", a.minimumCall, "Their minimum call in payroll hours, none, or rules (the Position's)");
    terms->add_option("--overtime", a.overtime, "Overtime after HOURS[,MULTIPLIER[,worked|elapsed]], none, or rules");
    terms->add_option("--double-time", a.doubleTime, "Double time after HOURS[,MULTIPLIER[,worked|elapsed]], none, or rules");
    terms->add_flag("--clear", a.clear, "Remove every change: the Position's terms apply");
    terms->callback([&] { exitStatus = positionTerms(session, a); });

    auto* rest = crew->add_subcommand("turnaround", "The person's own required rest between wrap and the next call");
    rest->add_option("NAME", a.name, "The crew member")->required();
    rest->add_option("HOURS", a.value, "Required rest in payroll hours, such as 10.0");
    rest->add_flag("--clear", a.clear, "Remove the person's own required rest");
    rest->callback([&] { exitStatus = turnaround(session, a); });
}

}  // namespace tessel
