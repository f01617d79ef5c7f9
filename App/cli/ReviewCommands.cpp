#include "ReviewCommands.hpp"

#include <ctime>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/expected/CategoryLabels.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/expected/GoldenHourAdvisory.hpp"
#include "App/expected/ReviewJSON.hpp"
#include "App/expected/ReviewText.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using payroll_decimal_time::formatTimeOfDay;
namespace weeks = payroll_week_repository;

// How the review text is written: the user's category labels, and whether money is shown at all.
review_text::Style textStyle(const UserSettingsStore& settings, bool explain) {
    return {settings.categoryLabels(), settings.showMonetaryDetails(), explain};
}

int refuseDate(CommandSession& session) {
    session.streams().err << "Enter the date as YYYY-MM-DD, such as 2026-11-02.\n";
    return exitUsage;
}

int refuseMissingWeek(CommandSession& session, const std::string& date) {
    return session.refuse("weekNotFound", "There is no Payroll Week with a DTS or activity on " + date + ".");
}

int reviewWeek(CommandSession& session, const ReviewCommandArguments& a) {
    const auto production = session.production();
    if (!production) return exitRefused;
    const auto date = calendar_text::parseDate(a.date);
    if (!date) return refuseDate(session);
    ModelContext& context = session.store()->context();
    const auto week = weekHolding(context, production->id, *date);
    if (!week) return refuseMissingWeek(session, a.date);
    try {
        ExpectedPayrollReview review(context, production->id);
        std::vector<WeeklyCrewPayrollReview> reviews;
        if (a.crew.empty()) {
            reviews = review.weeklyForAll(week->id);
        } else {
            reviews.push_back(review.weekly(week->id, crewMemberNamed(context, production->id, a.crew).id));
        }
        Json list = Json::array();
        std::string text;
        const auto style = textStyle(session.settings(), a.explain);
        for (const auto& r : reviews) {
            list.push_back(review_json::toJSON(r));
            text += review_text::weekly(r, style) + "\n";
        }
        if (reviews.empty()) text = "Nobody worked or had an activity in this Payroll Week.\n";
        session.answer(Json{{"weeklyReviews", std::move(list)}}, text);
        return exitSuccess;
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    } catch (const PayrollReviewError& error) {
        return session.refuse("reviewFailed", error.what());
    } catch (const RulesPayloadError& error) {
        return session.refuse("invalidRules", error.what());
    }
}

// The wall clock read as the DTS reads its times: local time of day on the calendar.
Instant localNow() {
    const std::time_t now = system_clock::to_time_t(system_clock::now());
    std::tm local{};
    localtime_r(&now, &local);
    return Instant(seconds(now + local.tm_gmtoff));
}

std::string goldenHourLine(const std::string& name, const DailyPayrollReview& day, const std::optional<GoldenHourAdvisoryPresentation>& advisory) {
    std::string line = review_text::padded(name, 24);
    line += day.goldenHourTarget ? std::string(review_words::goldenHourWrap) + " " + formatTimeOfDay(day.goldenHourTarget->targetTime, day.calendarDate)
                                 : std::string(review_words::goldenHourUnavailable);
    if (advisory) line += "  (" + std::to_string((advisory->remainingSeconds + 59) / 60) + " min left)";
    return line + "\n";
}

// Each crew row's golden hour target on a date, with the advisory due at a moment; or one advisory dismissed.
int reviewGoldenHour(CommandSession& session, const ReviewCommandArguments& a) {
    const auto production = session.production();
    if (!production) return exitRefused;
    const auto date = calendar_text::parseDate(a.date);
    if (!date) return refuseDate(session);
    const auto now = a.at.empty() ? std::optional(localNow()) : payroll_decimal_time::parseTimeOfDay(a.at, *date);
    if (!now) {
        session.streams().err << "Enter the time in payroll tenths, such as 17.5.\n";
        return exitUsage;
    }
    ModelContext& context = session.store()->context();
    const auto workday = DailyTimeSheets::find(context, production->id, *date);
    if (!workday) return session.refuse("dtsNotFound", "There is no DTS for " + a.date + ".");
    try {
        std::optional<Uuid> dismissed;
        if (!a.dismiss.empty()) dismissed = crewMemberNamed(context, production->id, a.dismiss).id;
        Json rows = Json::array();
        std::string text;
        bool dismissedOne = false;
        for (const auto& day : ExpectedPayrollReview(context, production->id).dailyForWorkday(workday->id)) {
            const auto& member = day.source.crewMemberID;
            if (!member) continue;  // a row whose person was removed has no one to advise
            const std::string key = golden_hour_advisory::key(day.id, *member);
            if (dismissed == member) {
                session.settings().dismissGoldenHourAdvisory(key);
                dismissedOne = true;
            }
            const auto advisory = golden_hour_advisory::at(day, *member, *now, session.settings().goldenHourAdvisory());
            const auto person = crew_repository::fetchCrewMember(context, *member);
            const std::string name = person ? person->displayName : "";
            Json row{{"crewMemberID", member->text()}, {"crewName", name}, {"workdayID", day.id.text()}, {"advisoryKey", key}};
            if (day.goldenHourTarget) row["goldenHourTarget"] = review_json::toJSON(*day.goldenHourTarget);
            if (advisory) row["advisory"] = review_json::toJSON(*advisory);
            rows.push_back(std::move(row));
            text += goldenHourLine(name, day, advisory);
        }
        if (dismissed && !dismissedOne) return session.refuse("rowNotFound", a.dismiss + " is not on the DTS for " + a.date + ".");
        if (dismissedOne) text = "Dismissed the Golden Hour advisory for " + a.dismiss + " on " + a.date + ".\n" + text;
        if (rows.empty()) text += "Nobody is on the DTS for " + a.date + ".\n";
        session.answer(Json{{"date", a.date}, {"at", calendar_text::formatInstant(*now)}, {"rows", std::move(rows)}}, text);
        return exitSuccess;
    } catch (const Refused& refused) {
        return session.refuse(refused.errorCase, refused.message);
    } catch (const PayrollReviewError& error) {
        return session.refuse("reviewFailed", error.what());
    } catch (const RulesPayloadError& error) {
        return session.refuse("invalidRules", error.what());
    }
}

std::optional<PayrollRuleConfiguration> productionRules(CommandSession& session, CalendarDate date, Uuid& revisionID) {
    if (!fs::exists(session.environment().storeURL)) return std::nullopt;
    TesselStore* store = session.store();
    if (!store) return std::nullopt;
    const auto recent = session.settings().mostRecentlyUsedProductionID();
    if (!recent && session.options().production.empty()) return std::nullopt;
    const auto production = session.production();
    if (!production) return std::nullopt;
    const auto revision = ProductionRulesets::revisionInForce(store->context(), production->id, date);
    if (!revision) return std::nullopt;
    revisionID = *revision;
    return ProductionRulesets::readConfiguration(store->context(), production->id, *revision);
}

int calcDay(CommandSession& session, const ReviewCommandArguments& a) {
    const CalendarDate date = a.date.empty() ? CalendarDate(floor<days>(system_clock::now())) : calendar_text::parseDate(a.date).value_or(CalendarDate{});
    if (!date.ok()) {
        session.streams().err << "Enter the date as YYYY-MM-DD, such as 2026-11-02.\n";
        return exitUsage;
    }
    const auto day = dayKindFromRawValue(a.day);
    std::optional<RulesLocality> locality;
    if (!a.locality.empty()) locality = fromRawValue<RulesLocality>(a.locality);
    if (!day || (!a.locality.empty() && !locality)) {
        session.streams().err << "Give --day ordinary, sixthDay or seventhDay and --locality local or distant.\n";
        return exitUsage;
    }
    const auto time = [&](const std::string& text, DTSTimeEntryRole role) -> std::optional<Instant> {
        if (text.empty()) return std::nullopt;
        const auto parsed = payroll_decimal_time::parseTimeOfDay(text, date);
        if (!parsed || (role == DTSTimeEntryRole::call && floor<days>(*parsed) != sys_days(date))) throw std::invalid_argument(std::string(invalidTimeMessage(role)));
        return parsed;
    };
    try {
        Uuid revisionID = Uuid::generate();
        std::optional<PayrollRuleConfiguration> configuration;
        if (!a.rulesFile.empty()) {
            const auto text = session.readInputFile(a.rulesFile);
            if (!text) return exitUsage;
            configuration = rules_json::configuration(decimal_json::parse<Json>(*text));
            ProductionRulesets::validate(*configuration);
        } else {
            configuration = productionRules(session, date, revisionID);
        }
        if (!configuration) configuration = ProductionRulesets::exampleConfiguration(date);
        const SandboxConfiguration rules = ProductionRulesets::sandboxFor(*configuration, revisionID, locality, *day, std::nullopt);

        DTSCalculationInput source{Uuid::generate(), date};
        source.call = time(a.call, DTSTimeEntryRole::call);
        source.lunchOut = time(a.lunchOut, DTSTimeEntryRole::postCallEvent);
        source.lunchIn = time(a.lunchIn, DTSTimeEntryRole::postCallEvent);
        source.wrap = time(a.wrap, DTSTimeEntryRole::postCallEvent);
        source.generalCrewCall = a.generalCall.empty() ? source.call : time(a.generalCall, DTSTimeEntryRole::call);
        source.nonDeductibleBreakfast = a.ndb;
        source.firstMealGraceWasCalled = a.graceCalled;
        DailyReviewInputs inputs{source, &rules};
        if (!a.rate.empty()) {
            const auto rate = Decimal::parse(a.rate);
            if (!rate || rate->isNegative()) return session.refuse("invalidRate", "Enter a valid hourly rate.");
            inputs.rate = ResolvedRate{*rate, configuration->mealPenaltyRules.currencyCode, ResolvedRate::Source::overScale, date};
        }
        const DailyPayrollReview review = DailyReviewCalculator::calculate(inputs);
        session.answer(review_json::toJSON(review), rules.name + "\n" + review_text::daily(review, textStyle(session.settings(), a.explain)));
        return exitSuccess;
    } catch (const std::invalid_argument& error) {
        return session.refuse("invalidTime", error.what());
    } catch (const decimal_json::MalformedJSONError& error) {
        session.streams().err << error.what() << "\n";
        return exitUsage;
    } catch (const MalformedInputError& error) {
        session.streams().err << error.what() << "\n";
        return exitUsage;
    } catch (const DomainError& error) {
        return session.refuse(error.caseName(), error.description());
    }
}

}  // namespace

void addReviewCommands(CLI::App& app, CommandSession& session, ReviewCommandArguments& a, int& exitStatus) {
    auto* review = app.add_subcommand("review", "Expected payroll")->require_subcommand(1);
    auto* week = review->add_subcommand("week", "Each crew member's weekly review for the Payroll Week holding DATE");
    week->add_option("DATE", a.date, "A date in the week, YYYY-MM-DD")->required();
    week->add_option("--crew", a.crew, "Only this crew member");
    week->add_flag("--explain", a.explain, "Add the rule identifier behind each line");
    week->callback([&] { exitStatus = reviewWeek(session, a); });
    auto* golden = review->add_subcommand("golden-hour", "Each crew row's Golden Hour Wrap on DATE, with the advisory due now");
    golden->add_option("DATE", a.date, "The DTS date, YYYY-MM-DD")->required();
    golden->add_option("--at", a.at, "The moment to advise for, in payroll tenths on DATE (default: now)");
    golden->add_option("--dismiss", a.dismiss, "Dismiss Golden Hour advisory for this crew member on DATE");
    golden->callback([&] { exitStatus = reviewGoldenHour(session, a); });

    auto* calc = app.get_subcommand("calc");
    auto* day = calc->add_subcommand("day", "One day priced under the production's rules, the example defaults or a rules file");
    day->add_option("--call", a.call, "Call in payroll tenths, such as 7.0")->required();
    day->add_option("--wrap", a.wrap, "Wrap")->required();
    day->add_option("--lunch-out", a.lunchOut, "Lunch Out");
    day->add_option("--lunch-in", a.lunchIn, "Lunch In");
    day->add_option("--rate", a.rate, "Hourly rate, such as 45.00");
    day->add_option("--general-call", a.generalCall, "General Crew Call (default: the call)");
    day->add_flag("--ndb", a.ndb, "Non-Deductible Breakfast given");
    day->add_flag("--grace-called", a.graceCalled, "Grace was called for the first meal");
    day->add_option("--locality", a.locality, "local or distant");
    day->add_option("--day", a.day, "ordinary, sixthDay or seventhDay");
    day->add_option("--date", a.date, "The day, YYYY-MM-DD (default: today)");
    day->add_option("--rules", a.rulesFile, "A rules document as rules show --json writes it");
    day->add_flag("--explain", a.explain, "Add the rule identifier behind each line");
    day->callback([&] { exitStatus = calcDay(session, a); });
}

}  // namespace tessel
