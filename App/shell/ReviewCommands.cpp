#include "ReviewCommands.hpp"

#include <algorithm>
#include <cctype>
#include <array>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>

#include "App/dts/DailyTimeSheets.hpp"
#include "App/dts/PayrollDecimalTime.hpp"
#include "App/expected/CategoryLabels.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/expected/GoldenHourAdvisory.hpp"
#include "App/expected/ReviewJSON.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using payroll_decimal_time::formatDuration;
using payroll_decimal_time::formatTimeOfDay;
namespace weeks = payroll_week_repository;

constexpr std::array<const char*, 7> weekdayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

// How the review text is written: the user's category labels, and whether money is shown at all.
struct ReviewTextStyle {
    PayrollCategoryLabelPreferences labels;
    bool showMoney = true;
    static ReviewTextStyle of(const UserSettingsStore& settings) {
        return {settings.categoryLabels(), settings.showMonetaryDetails()};
    }
};

std::string hours(WorkDuration duration) { return formatDuration(duration.seconds()) + " h"; }
std::string amount(const std::optional<Money>& money) { return money ? money->amount().toString() : "-"; }

std::string padded(std::string text, std::size_t width) {
    // Pad by characters, not bytes, so that names with accents line up.
    std::size_t length = 0;
    for (unsigned char c : text) length += (c & 0xC0) != 0x80;
    if (length < width) text.append(width - length, ' ');
    return text;
}

// "Fri 2026-11-06"
std::string datedHeading(CalendarDate date) {
    return std::string(weekdayNames[static_cast<std::size_t>(ProductionWeekCalendars::weekdayOf(date) - 1)]) + " " + calendar_text::formatDate(date);
}

void writeCategories(std::ostringstream& text, const std::vector<PayrollReviewCategory>& categories, const std::string& indent,
                     const ReviewTextStyle& style) {
    // A week with local and distant days has a straight-time line of each: the locality tells them apart.
    const bool bothLocalities = std::any_of(categories.begin(), categories.end(), [&](const auto& c) {
        return c.rulesLocality != categories.front().rulesLocality;
    });
    // A rate that changed within the week splits a rule's line in two: each names its rate.
    const auto sharesItsRule = [&](const PayrollReviewCategory& c) {
        return std::count_if(categories.begin(), categories.end(), [&](const auto& other) { return other.ruleID == c.ruleID; }) > 1;
    };
    std::vector<std::string> labels;
    for (const auto& c : categories) {
        std::string label = displayLabel(c, style.labels) + (bothLocalities ? " " + std::string(toRawValue(c.rulesLocality)) : "");
        if (sharesItsRule(c) && c.baseHourlyRate && style.showMoney) label += " at " + c.baseHourlyRate->amount().toString();
        labels.push_back(std::move(label));
    }
    // One label column for every line of the list, so that hours, multipliers and amounts line up.
    std::size_t width = bothLocalities ? 16 : 8;
    for (const auto& label : labels) width = std::max(width, label.size() + 2);
    for (std::size_t i = 0; i < categories.size(); ++i) {
        const auto& c = categories[i];
        std::string line = indent + padded(labels[i], width) + padded(hours(c.paidDuration), 9) + "x" + padded(c.multiplier.value().toString(), 5);
        if (style.showMoney) line += padded(amount(c.compensation), 10);
        line.erase(line.find_last_not_of(' ') + 1);  // the padding of the last column
        if (c.guaranteedDuration > WorkDuration()) line += "  (" + hours(c.guaranteedDuration) + " guaranteed)";
        text << line << "\n";
    }
}

// One line per distinct issue, in the order first met; the same issue on several days is counted, not repeated.
void writeIssues(std::ostringstream& text, const std::vector<PayrollReviewIssue>& issues) {
    std::vector<std::pair<std::string, int>> counted;
    for (const auto& issue : issues) {
        const auto same = std::find_if(counted.begin(), counted.end(), [&](const auto& c) { return c.first == issue.message; });
        if (same == counted.end()) counted.emplace_back(issue.message, 1);
        else ++same->second;
    }
    for (const auto& [message, count] : counted) {
        text << "    Issue: " << message << (count > 1 ? " (" + std::to_string(count) + " times)" : "") << "\n";
    }
}

// "sixthDay" reads as "sixth-day".
std::string scheduleWords(const std::string& dayKind) {
    if (dayKind == "sixthDay") return "sixth-day";
    if (dayKind == "seventhDay") return "seventh-day";
    return dayKind;
}

void writeDay(std::ostringstream& text, const DailyPayrollReview& d, const ReviewTextStyle& style) {
    const auto& s = d.source;
    text << "  " << datedHeading(d.calendarDate);
    if (s.workMode != CrewDailyWorkMode::timed) text << "  " << toRawValue(s.workMode) << " day";
    if (s.call) text << "  Call " << formatTimeOfDay(s.call, d.calendarDate);
    if (s.lunchOut || s.lunchIn) text << "  Lunch " << formatTimeOfDay(s.lunchOut, d.calendarDate) << "-" << formatTimeOfDay(s.lunchIn, d.calendarDate);
    if (s.wrap) text << "  Wrap " << formatTimeOfDay(s.wrap, d.calendarDate);
    if (s.nonDeductibleBreakfast) text << "  NDB";
    text << "\n";
    text << "      ";
    if (d.workdaySequence) text << "Day " << d.workdaySequence->ordinal << " of the workweek, ";
    if (d.dayKind != d.scheduleDayKind) {
        // A sixth or seventh day with no schedule of its own is paid under the ordinary one.
        std::string day = scheduleWords(d.dayKind);
        day.replace(day.find('-'), 1, " ");
        text << day << ", " << scheduleWords(d.scheduleDayKind) << " schedule, " << toRawValue(d.rulesLocality);
    } else {
        text << scheduleWords(d.dayKind) << " schedule, " << toRawValue(d.rulesLocality);
    }
    if (d.durations) text << "; worked " << hours(d.durations->worked) << " of " << hours(d.durations->elapsed);
    text << "\n";
    if (d.status.kind == DailyPayrollStatus::Case::incomplete) {
        text << "      Not calculated: " << description(*d.status.reason) << "\n";
        return;
    }
    if (d.status.kind == DailyPayrollStatus::Case::calculationFailed) {
        text << "      Calculation failed: " << d.status.failure << "\n";
        return;
    }
    writeCategories(text, d.categories, "      ", style);
    if (d.dailyMinimumTrace && d.dailyMinimumTrace->guaranteedAdditionalDuration > WorkDuration()) {
        text << "      Daily minimum (" << description(*d.dailyMinimumSource) << "): " << description(d.dailyMinimumTrace->reason) << "\n";
    }
    for (const auto& g : d.guaranteeTraces) {
        if (g.reason == MinimumBandGuaranteeTraceEntry::Reason::appliedMinimumNotMet) text << "      Golden Hour: " << description(g.reason) << "\n";
    }
    int penalties = 0;
    for (const auto& meal : d.mealPeriods) penalties += static_cast<int>(meal.occurrences.size());
    if (!d.mealPeriods.empty()) {
        const auto& first = d.mealPeriods.front().trace;
        text << "      Meal penalties: " << penalties;
        if (first.firstMealGraceDisposition) {
            text << "; " << description(*first.firstMealGraceDisposition, first.firstMealClockResolution.value_or(FirstMealClockResolution::employeeCall));
        }
        text << "\n";
    }
    if (d.turnaround) {
        const auto& status = d.turnaround->result.status;
        text << "      Turnaround: ";
        if (const auto words = description(status.kind)) {
            text << *words;
        } else if (status.kind == TurnaroundEvaluationStatus::Case::satisfied) {
            text << hours(*status.actualRest) << " rest";
        } else {
            text << "short by " << hours(*status.shortfallDuration) << " (" << hours(*status.actualRest) << " rest)";
        }
        if (d.turnaround->note) text << ". " << *d.turnaround->note;
        text << "\n";
    }
    text << "      " << (d.goldenHourTarget ? std::string(review_words::goldenHourWrap) + " " + formatTimeOfDay(d.goldenHourTarget->targetTime, d.calendarDate)
                                            : std::string(review_words::goldenHourUnavailable))
         << "\n";
    if (!style.showMoney) return;
    for (const auto& a : d.additionalCompensation) {
        text << "      " << label(a.kind) << " " << a.compensation.amount().toString() << (a.presentationDetail ? " (" + *a.presentationDetail + ")" : "") << "\n";
    }
    if (d.boxRentalCompensation) text << "      Box / kit rental " << d.boxRentalCompensation->amount().toString() << "\n";
    // The day's own total is its banded pay; allowances above and meal penalties are totalled in the week.
    text << "      Day total (hours in the pay bands): "
         << (d.compensation ? d.compensation->amount().toString() : std::string(review_words::noApplicablePayRate)) << "\n";
}

void writeActivity(std::ostringstream& text, const NonDTSPayrollActivityReview& a, const ReviewTextStyle& style) {
    text << "  " << datedHeading(a.calendarDate) << "  " << activityKindLabel(a.kindRawValue);
    if (a.travelDurationSeconds) text << " " << formatDuration(*a.travelDurationSeconds) << " h";
    text << ": " << a.words;
    if (style.showMoney && a.idleCompensation && a.idleCompensation->result) text << " " << a.idleCompensation->result->compensation.amount().toString();
    if (style.showMoney && a.holidayCompensation && a.holidayCompensation->result) text << " " << a.holidayCompensation->result->compensation.amount().toString();
    text << "\n";
}

// The schedule a weekly category was paid under: that of the first day paying its rule. A sixth day paid
// under the ordinary schedule shares its rules, so its hours stay with the ordinary ones.
std::string scheduleOf(const WeeklyCrewPayrollReview& r, const PayrollReviewCategory& category) {
    for (const auto& day : r.days) {
        for (const auto& c : day.categories) {
            if (c.ruleID == category.ruleID) return day.scheduleDayKind;
        }
    }
    return "ordinary";
}

// The week's categories by classification (positions are not yet known, so all are unassigned), then by
// the schedule they were paid under.
void writeWeekCategories(std::ostringstream& text, const WeeklyCrewPayrollReview& r, const ReviewTextStyle& style) {
    if (r.categories.empty()) return;
    text << "    " << review_words::unassignedClassification << "\n";
    for (const std::string group : {"ordinary", "sixthDay", "seventhDay"}) {
        std::vector<PayrollReviewCategory> paid;
        std::copy_if(r.categories.begin(), r.categories.end(), std::back_inserter(paid), [&](const auto& c) { return scheduleOf(r, c) == group; });
        if (paid.empty()) continue;
        if (group != "ordinary") {
            std::string heading = scheduleWords(group);
            heading.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(heading.front())));
            text << "    " << heading << " schedule:\n";
        }
        writeCategories(text, paid, "    ", style);
    }
}

std::string weeklyText(const WeeklyCrewPayrollReview& r, const ReviewTextStyle& style) {
    std::ostringstream text;
    text << r.crewName << ", week of " << calendar_text::formatDate(r.weekStartDate) << " (" << r.configurationName << ")\n";
    // Days and activities in date order (each list is already by date).
    auto day = r.days.begin();
    auto activity = r.nonDTSActivities.begin();
    while (day != r.days.end() || activity != r.nonDTSActivities.end()) {
        if (activity == r.nonDTSActivities.end() || (day != r.days.end() && day->calendarDate <= activity->calendarDate)) {
            writeDay(text, *day++, style);
        } else {
            writeActivity(text, *activity++, style);
        }
    }
    if (r.days.empty() && r.nonDTSActivities.empty()) text << "  No DTS row or activity in this Payroll Week.\n";
    text << "  Week:\n";
    writeWeekCategories(text, r, style);
    if (!r.mealPenalties.occurrences.empty()) {
        text << "    Meal penalties: " << r.mealPenalties.occurrences.size();
        if (style.showMoney) text << ", " << meal_penalty_words::fixedDollarSubtotal << " " << amount(r.mealPenalties.fixedDollarSubtotal);
        if (r.mealPenalties.unresolvedPrevailingRateCount > 0) {
            text << "; " << meal_penalty_words::contractVerificationRequired << " (" << r.mealPenalties.unresolvedPrevailingRateCount << ")\n"
                 << "      " << meal_penalty_words::prevailingRateExplanation;
        }
        text << "\n";
    }
    if (style.showMoney) {
        for (const auto& a : r.additionalCompensation) text << "    " << label(a.kind) << " " << a.compensation.amount().toString() << "\n";
        if (r.boxRentalCompensation) text << "    Box / kit rental " << r.boxRentalCompensation->amount().toString() << "\n";
    }
    writeIssues(text, r.issues);
    if (!style.showMoney) return text.str();
    text << "    " << (r.estimatedGrossIsPartial ? review_words::estimatedGrossPartial : review_words::estimatedGross) << ": "
         << amount(r.estimatedGross) << (r.estimatedGross ? " " + r.estimatedGross->currency().code() : "") << "\n";
    if (!r.missingRateDates.empty()) text << "    " << review_words::partialExplanation << "\n";
    return text.str();
}

// The Payroll Week holding a date, looked up by the production's start weekday and, failing that, among
// weeks made under an earlier start weekday.
std::optional<PayrollWeek> weekHolding(ModelContext& context, const Uuid& productionID, CalendarDate date) {
    const int startWeekday = ProductionWeekCalendars::payrollStartWeekday(context, productionID);
    const auto start = ProductionWeekCalendars::payrollWeekStart(date, startWeekday);
    const auto found = weeks::weeksStartingAt(context, productionID, Instant(sys_days(start)));
    if (!found.empty()) return found.front();
    for (const auto& week : weeks::weeks(context, productionID)) {
        const auto first = floor<days>(week.startDate);
        if (sys_days(date) >= first && sys_days(date) < first + days(7)) return week;
    }
    return std::nullopt;
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
        const auto style = ReviewTextStyle::of(session.settings());
        for (const auto& r : reviews) {
            list.push_back(review_json::toJSON(r));
            text += weeklyText(r, style) + "\n";
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
    std::string line = padded(name, 24);
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
        std::ostringstream text;
        text << rules.name << "\n";
        writeDay(text, review, ReviewTextStyle::of(session.settings()));
        session.answer(review_json::toJSON(review), text.str());
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
    day->callback([&] { exitStatus = calcDay(session, a); });
}

}  // namespace tessel
