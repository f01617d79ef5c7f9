#include "RulesCommands.hpp"

#include <fstream>
#include <iterator>
#include <sstream>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/model/CalculationJSON.hpp"
#include "App/model/CalendarText.hpp"
#include "App/rules/CompensationProvisions.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "App/rules/RulesLibrary.hpp"
#include "App/cli/CommandActions.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using payroll_decimal_time::formatDuration;
namespace cj = calculation_json;

CalendarDate today() { return CalendarDate(floor<days>(system_clock::now())); }
using command_actions::now;

std::string hours(std::int64_t seconds) { return formatDuration(seconds) + " h"; }

void describeSchedule(std::ostringstream& text, const std::string& title, const OrdinaryDayScheduleDraft& schedule) {
    text << title << "\n";
    const auto enabled = schedule.enabledBands();
    for (const auto& band : enabled) {
        text << "  " << band.ruleID << "  from " << hours(band.lowerBoundSeconds) << " " << toRawValue(band.entryThresholdBasis)
             << (band.upperBoundSeconds ? " to " + hours(*band.upperBoundSeconds) : ", open") << "  x" << band.multiplier.toString() << "\n";
    }
    text << "  Daily minimum: " << (schedule.dailyMinimumEnabled ? hours(schedule.dailyMinimumSeconds) : std::string("off")) << "\n";
    text << "  Golden Hour minimum: "
         << (schedule.finalBandMinimumEnabled
                 ? hours(schedule.finalBandMinimumSeconds) + " on " + schedule.bandMinimumTargetRuleID.value_or(enabled.back().ruleID)
                 : std::string("off"))
         << "\n";
}

}  // namespace

// A production without a revision (made before rulesets existed) gets the example defaults when its
// rules are first set.
std::optional<Uuid> currentRulesetRevision(ModelContext& context, const Production& production) {
    return ProductionRulesets::currentRevision(context, production.id, today());
}

std::string describeRules(const PayrollRuleConfiguration& c, const std::string& statusLine) {
    const auto& rules = c.payrollRules;
    std::ostringstream text;
    text << rules.name << " (effective from " << calendar_text::formatDate(rules.effectiveFrom) << ")\n";
    if (!rules.sourceNotes.empty()) text << rules.sourceNotes << "\n";
    text << statusLine << "\nDefault locality: " << toRawValue(rules.defaultRulesLocality) << "\n\n";
    describeSchedule(text, "Local ordinary day:", rules.localSchedule);
    describeSchedule(text, "Distant ordinary day:", rules.distantSchedule);
    const std::array<std::pair<const char*, const std::optional<OrdinaryDayScheduleDraft>*>, 4> alternates{
        {{"Local sixth day:", &rules.localSixthDaySchedule},
         {"Local seventh day:", &rules.localSeventhDaySchedule},
         {"Distant sixth day:", &rules.distantSixthDaySchedule},
         {"Distant seventh day:", &rules.distantSeventhDaySchedule}}};
    for (const auto& [title, schedule] : alternates) {
        if (*schedule) {
            describeSchedule(text, title, **schedule);
        } else {
            text << title << " the ordinary day's schedule\n";
        }
    }
    const auto& meal = c.mealPenaltyRules;
    text << "\nMeal penalties (" << meal.currencyCode << ", Fixed-dollar weekly limit " << meal.fixedDollarWeeklyLimit << "):\n";
    for (const auto& schedule : meal.schedules) {
        text << "  " << schedule.name << " (" << schedule.ruleID << "):";
        for (const auto& amount : schedule.earlyOrdinalAmounts) text << " " << amount.toString();
        text << ", then " << schedule.repeatingAmount.toString() << " each\n";
    }
    if (meal.scheduleApplicability == MealPenaltyScheduleApplicability::studioAndLocation) {
        text << "  Studio days: " << meal.studioSelectedScheduleRuleID.value_or("-") << ", Location days: "
             << meal.locationSelectedScheduleRuleID.value_or("-") << "\n";
    } else {
        text << "  Local days: " << meal.localSelectedScheduleRuleID << ", distant days: " << meal.distantSelectedScheduleRuleID << "\n";
    }
    const auto timing = meal.timingRules.value_or(MealPenaltyRules::defaultTimingRules());
    text << "  First meal due after " << hours(timing.firstMealDueSeconds) << ", later meals after " << hours(timing.subsequentMealDueSeconds)
         << ", every " << hours(timing.penaltyIntervalSeconds) << " or part is a penalty\n";
    const auto turnaround = rules.turnaroundRules.value_or(TurnaroundRulesDraft{});
    text << "\nTurnaround: local " << hours(turnaround.localAllOthersRestSeconds) << " (DP/operator "
         << hours(turnaround.localDPOrOperatorRestSeconds) << "), distant " << hours(turnaround.distantAllOthersRestSeconds)
         << " (DP/operator " << hours(turnaround.distantDPOrOperatorRestSeconds) << "); 0 means not configured\n";
    text << "\nAdditional compensation:";
    if (c.additionalCompensation.empty()) text << " none";
    text << "\n";
    for (const auto& p : c.additionalCompensation) {
        const auto kind = fromRawValue<CompensationProvisionKind>(p.kind);
        text << "  " << (kind ? label(*kind) : std::string_view(p.kind)) << (p.isEnabled ? "" : " (off)") << ": " << p.amount.toString()
             << (p.kind == "vacationPay" ? "%" : " " + p.currencyCode + " a day") << "\n";
    }
    text << "Idle: "
         << (c.idleCompensation ? hours(c.idleCompensation->compensatedSecondsPerDay) + " x " +
                                      c.idleCompensation->straightTimeRateMultiplier.toString() + " straight time"
                                : std::string("not defined"))
         << "\nHoliday:";
    if (c.holidayCompensation.empty()) text << " not configured";
    for (const auto& [context, rule] : c.holidayCompensation) {
        text << " " << toRawValue(context) << " " << hours(rule.compensatedSeconds()) << " x " << rule.rateMultiplier().toString() << ";";
    }
    text << "\n";
    return text.str();
}

namespace {

Json mealRuleJSON(const MealPeriodRule& rule) {
    Json json{{"ruleID", rule.ruleID().value()},
              {"dueAfterClockStartSeconds", rule.dueAfterClockStart().seconds()},
              {"penaltyIntervalSeconds", rule.penaltyInterval().seconds()}};
    if (rule.grace()) {
        json["grace"] = Json{{"protectedExtensionSeconds", rule.grace()->duration.seconds()},
                             {"retroactiveIfExceeded", rule.grace()->retroactiveIfExceeded}};
    }
    return json;
}

Json sandboxJSON(const SandboxConfiguration& s) {
    Json bands = Json::array();
    for (const auto& band : s.schedule.bands()) {
        Json json{{"ruleID", band.ruleID().value()},
                  {"entryThresholdSeconds", band.entryThreshold().duration.seconds()},
                  {"entryThresholdBasis", toRawValue(band.entryThreshold().basis)}};
        if (band.upperBound()) json["upperBoundSeconds"] = band.upperBound()->seconds();
        json["multiplier"] = band.multiplier().value().toString();
        bands.push_back(std::move(json));
    }
    Json json{{"revisionID", s.revisionID.text()},
              {"name", s.name},
              {"sourceNotes", s.sourceNotes},
              {"effectiveFrom", calendar_text::formatDate(s.effectiveFrom)},
              {"rulesLocality", toRawValue(s.rulesLocality)},
              {"dayKind", toRawValue(s.dayKind)},
              {"bands", std::move(bands)}};
    if (s.configuredDailyMinimumGuarantee) {
        json["configuredDailyMinimumGuarantee"] = Json{{"ruleID", s.configuredDailyMinimumGuarantee->ruleID().value()},
                                                       {"minimumPaidDurationSeconds", s.configuredDailyMinimumGuarantee->minimumPaidDuration().seconds()}};
    }
    Json guarantees = Json::array();
    for (const auto& g : s.bandGuarantees) {
        guarantees.push_back(Json{{"ruleID", g.ruleID().value()},
                                  {"targetPayBandRuleID", g.targetPayBandRuleID().value()},
                                  {"minimumPaidDurationSeconds", g.minimumPaidDuration().seconds()}});
    }
    json["bandGuarantees"] = std::move(guarantees);
    json["moneyRoundingRule"] = cj::toJSON(s.moneyRoundingRule);
    json["labelsByRuleID"] = s.labelsByRuleID;
    Json concepts = Json::object();
    for (const auto& [ruleID, concept_] : s.comparisonConceptsByRuleID) concepts[ruleID] = toRawValue(concept_);
    json["comparisonConceptsByRuleID"] = std::move(concepts);
    if (s.mealPenaltySchedule) {
        Json early = Json::array();
        for (const auto& amount : s.mealPenaltySchedule->earlyOrdinalAmounts()) early.push_back(cj::toJSON(amount));
        json["mealPenaltySchedule"] = Json{{"ruleID", s.mealPenaltySchedule->ruleID().value()},
                                           {"earlyOrdinalAmounts", std::move(early)},
                                           {"repeatingAmount", cj::toJSON(s.mealPenaltySchedule->repeatingAmount())}};
    }
    if (s.mealPenaltyProblem) json["mealPenaltyProblem"] = *s.mealPenaltyProblem;
    json["mealPenaltyFixedDollarWeeklyLimit"] = s.mealPenaltyFixedDollarWeeklyLimit;
    if (s.mealPenaltyTimingRules) {
        json["mealPenaltyTimingRules"] = Json{{"firstMeal", mealRuleJSON(s.mealPenaltyTimingRules->firstMeal)},
                                              {"subsequentMeal", mealRuleJSON(s.mealPenaltyTimingRules->subsequentMeal)}};
    }
    json["turnaroundRules"] = rules_json::toJSON(s.turnaroundRules);
    return json;
}

std::string sandboxText(const SandboxConfiguration& s) {
    std::ostringstream text;
    text << s.name << ", " << toRawValue(s.rulesLocality) << " " << toRawValue(s.dayKind) << " day:\n";
    for (const auto& band : s.schedule.bands()) {
        text << "  " << s.labelsByRuleID.at(band.ruleID().value()) << " (" << band.ruleID().value() << ") from "
             << hours(band.entryThreshold().duration.seconds()) << " " << toRawValue(band.entryThreshold().basis)
             << (band.upperBound() ? " to " + hours(band.upperBound()->seconds()) : ", open") << "  x"
             << band.multiplier().value().toString() << "\n";
    }
    if (s.configuredDailyMinimumGuarantee) {
        text << "  Daily minimum " << hours(s.configuredDailyMinimumGuarantee->minimumPaidDuration().seconds()) << "\n";
    }
    for (const auto& g : s.bandGuarantees) {
        text << "  Golden Hour minimum " << hours(g.minimumPaidDuration().seconds()) << " on " << g.targetPayBandRuleID().value() << "\n";
    }
    if (s.mealPenaltySchedule) {
        text << "  Meal penalties by " << s.mealPenaltySchedule->ruleID().value() << ", Fixed-dollar weekly limit "
             << s.mealPenaltyFixedDollarWeeklyLimit << "\n";
    }
    if (s.mealPenaltyProblem) text << "  Meal penalties: " << *s.mealPenaltyProblem << "\n";
    text << "  Money rounded to " << s.moneyRoundingRule.increment().toString() << " (" << toRawValue(s.moneyRoundingRule.method()) << ")\n";
    return text.str();
}

std::optional<Uuid> currentRevision(ModelContext& context, const Production& production) {
    return currentRulesetRevision(context, production);
}

int show(CommandSession& session) {
    const auto production = session.production();
    if (!production) return exitRefused;
    ModelContext& context = session.store()->context();
    try {
        const auto revision = currentRevision(context, *production);
        if (!revision) return session.refuse("noRevision", std::string(ruleset_messages::noRevision));
        const auto configuration = ProductionRulesets::readConfiguration(context, production->id, *revision);
        const auto state = ProductionRulesets::setupState(context, *revision);
        std::string status = ProductionRulesets::setupStatusLine(state);
        if (state.origin == ProductionRulesetOrigin::savedRulesetCopy && state.sourceSavedRulesetName) {
            status += "\n" + std::string(rules_library::appliedFromLabel) + " " + *state.sourceSavedRulesetName;
        }
        session.answer(rules_json::toJSON(configuration), describeRules(configuration, status));
        return exitSuccess;
    } catch (const RulesPayloadError& error) {
        return session.refuse("invalidRules", error.what());
    }
}

int set(CommandSession& session, const std::string& file) {
    const auto read = session.readInputFile(file);
    if (!read) return exitUsage;
    const std::string& text = *read;
    const auto production = session.production();
    if (!production) return exitRefused;
    try {
        const PayrollRuleConfiguration configuration = rules_json::configuration(decimal_json::parse<Json>(text));
        session.store()->perform([&](ModelContext& context) {
            auto revision = currentRevision(context, *production);
            if (!revision) {
                revision = ProductionRulesets::createDefaultRevision(context, production->id, configuration.payrollRules.effectiveFrom, now());
            }
            ProductionRulesets::apply(context, production->id, *revision, configuration, now());
            command_actions::keepPayrollIssuesCurrent(context, production->id);
        });
        session.answer(Json{{"applied", true}}, "Applied \u201C" + configuration.payrollRules.name + "\u201D to " + production->name + ".\n");
        return exitSuccess;
    } catch (const decimal_json::MalformedJSONError& error) {
        session.streams().err << error.what() << '\n';
        return exitUsage;
    } catch (const MalformedInputError& error) {
        session.streams().err << error.what() << '\n';
        return exitUsage;
    } catch (const DomainError& error) {
        return session.refuse(error.caseName(), error.description());
    } catch (const MealPenaltyRulesError& error) {
        return session.refuse("invalidMealPenaltyRules", error.what());
    } catch (const CompensationRuleInputError& error) {
        return session.refuse("invalidCompensationRule", error.what());
    }
}

int sandbox(CommandSession& session, const RulesCommandArguments& a) {
    const auto production = session.production();
    if (!production) return exitRefused;
    const auto date = a.date.empty() ? std::optional(today()) : calendar_text::parseDate(a.date);
    const auto day = dayKindFromRawValue(a.day);
    std::optional<RulesLocality> locality;
    if (!a.locality.empty()) locality = fromRawValue<RulesLocality>(a.locality);
    std::optional<MealWorkLocation> location;
    if (!a.location.empty()) location = fromRawValue<MealWorkLocation>(a.location);
    if (!date || !day || (!a.locality.empty() && !locality) || (!a.location.empty() && !location)) {
        session.streams().err << "Give --date as YYYY-MM-DD, --day ordinary, sixthDay or seventhDay, --locality local or distant, "
                                 "and --location studio or location.\n";
        return exitUsage;
    }
    try {
        const auto configuration =
            ProductionRulesets::sandbox(session.store()->context(), production->id, *date, locality, *day, location);
        session.answer(sandboxJSON(configuration), sandboxText(configuration));
        return exitSuccess;
    } catch (const ModelValidationError& error) {
        return session.refuse("noRevision", error.what());
    } catch (const RulesPayloadError& error) {
        return session.refuse("invalidRules", error.what());
    } catch (const DomainError& error) {
        return session.refuse(error.caseName(), error.description());
    }
}

}  // namespace

void addRulesCommands(CLI::App& app, CommandSession& session, RulesCommandArguments& a, int& exitStatus) {
    auto* rules = app.add_subcommand("rules", "The production's payroll rules")->require_subcommand(1);
    rules->add_subcommand("show", "Show the current rules (with --json, the document rules set takes)")
        ->callback([&] { exitStatus = show(session); });
    rules->add_subcommand("set", "Validate a rules document and apply it")
        ->callback([&] { exitStatus = set(session, a.file); })
        ->add_option("FILE", a.file, "A JSON document as rules show --json writes it")
        ->required();
    auto* sandboxCommand = rules->add_subcommand("sandbox", "The engine configuration a day would use");
    sandboxCommand->add_option("--locality", a.locality, "local or distant (default: the ruleset's)");
    sandboxCommand->add_option("--day", a.day, "ordinary, sixthDay or seventhDay");
    sandboxCommand->add_option("--date", a.date, "The day, YYYY-MM-DD (default: today)");
    sandboxCommand->add_option("--location", a.location, "studio or location, for the meal penalty schedule");
    sandboxCommand->callback([&] { exitStatus = sandbox(session, a); });
}

}  // namespace tessel
