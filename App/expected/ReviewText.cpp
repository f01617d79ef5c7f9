#include "ReviewText.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <set>
#include <sstream>

#include "App/dts/PayrollDecimalTime.hpp"
#include "App/expected/RateResolution.hpp"
#include "App/expected/PaidCategories.hpp"
#include "App/model/CalendarText.hpp"
#include "App/model/ProductionWeekCalendars.hpp"

namespace tessel::review_text {
namespace {

using namespace std::chrono;
using payroll_decimal_time::formatDuration;
using payroll_decimal_time::formatTimeOfDay;

constexpr std::array<const char*, 7> weekdayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

std::string hours(WorkDuration duration) { return formatDuration(duration.seconds()) + " h"; }
// Money in cents at least ("11" as "11.00"); an amount with more places keeps them all.
std::string amount(const Money& money) {
    const Decimal cents = money.amount().withPlacesOf(Decimal("0.01"));
    return (cents.isNaN() ? money.amount() : cents).toString();
}
std::string amount(const std::optional<Money>& money) { return money ? amount(*money) : "-"; }
std::string multiplier(const RateMultiplier& m) { return "x" + m.value().toString(); }
std::string counted(std::size_t count, const char* one, const char* many) { return std::to_string(count) + " " + (count == 1 ? one : many); }


std::string rightAligned(const std::string& text, std::size_t width) {
    const std::size_t length = characters(text);
    return length < width ? std::string(width - length, ' ') + text : text;
}

std::string ruleTag(const Style& style, const std::string& ruleID) { return style.explain ? "  [" + ruleID + "]" : ""; }

// "Fri 2026-11-06"
std::string datedHeading(CalendarDate date) {
    return std::string(weekdayNames[static_cast<std::size_t>(ProductionWeekCalendars::weekdayOf(date) - 1)]) + " " + calendar_text::formatDate(date);
}

// "sixthDay" reads as "sixth-day".
std::string scheduleWords(const std::string& dayKind) {
    if (dayKind == "sixthDay") return "sixth-day";
    if (dayKind == "seventhDay") return "seventh-day";
    return dayKind;
}

std::string capitalised(std::string text) {
    if (!text.empty()) text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    return text;
}

// One line of a category table: the label, what was counted, the amount and a note after it.
struct TableLine {
    std::string label;
    std::string quantity;
    std::string amount;
    std::string note;
};

// A table whose label, quantity and amount columns line up over all its lines; amounts align right.
void writeTable(std::ostringstream& text, const std::vector<TableLine>& lines, const std::string& indent) {
    std::size_t labelWidth = 0, quantityWidth = 0, amountWidth = 0;
    for (const auto& line : lines) {
        if (line.quantity.empty() && line.amount.empty()) continue;  // a heading spans the columns
        labelWidth = std::max(labelWidth, characters(line.label));
        quantityWidth = std::max(quantityWidth, characters(line.quantity));
        amountWidth = std::max(amountWidth, characters(line.amount));
    }
    for (const auto& line : lines) {
        std::string row = indent + padded(line.label, labelWidth + 2) + padded(line.quantity, quantityWidth);
        if (amountWidth > 0) row += "  " + rightAligned(line.amount, amountWidth);
        row.erase(row.find_last_not_of(' ') + 1);
        text << row << line.note << "\n";
    }
}

// Bands, idle and holiday pay count hours at a rate and a multiplier; the other categories count days,
// penalties or a percentage.
bool countsHours(const PayrollReviewCategory& c) {
    if (c.ruleID.value() == paid_categories::provisionRuleID(CompensationProvisionKind::perDiem)) return false;
    if (!c.comparisonConcept) return true;
    switch (*c.comparisonConcept) {
        case PayComparisonConcept::straight:
        case PayComparisonConcept::overtime:
        case PayComparisonConcept::doubleTime:
        case PayComparisonConcept::holiday: return true;
        default: return false;
    }
}

// "6 days x 40.00" when every day paid the same, else "6 days".
std::string daysQuantity(const PayrollReviewCategory& c, const Style& style) {
    std::string quantity = counted(c.contributors.size(), "day", "days");
    const auto& first = c.contributors.front().compensation;
    const bool same = std::all_of(c.contributors.begin(), c.contributors.end(), [&](const auto& k) { return k.compensation == first; });
    if (same && first && style.showMoney && c.contributors.size() > 1) quantity += " x " + amount(*first);
    return quantity;
}

struct HourColumns {
    std::size_t hours = 0;
    std::size_t rate = 0;
};

std::string hoursQuantity(const PayrollReviewCategory& c, const Style& style, const HourColumns& widths) {
    std::string quantity = rightAligned(hours(c.paidDuration), widths.hours);
    if (style.showMoney && widths.rate > 0) quantity += c.baseHourlyRate ? " x " + rightAligned(amount(*c.baseHourlyRate), widths.rate) : std::string(widths.rate + 3, ' ');
    return quantity + " " + multiplier(c.multiplier);
}

std::string categoryLabel(const PayrollReviewCategory& c, const std::vector<PayrollReviewCategory>& all, const Style& style) {
    // A week with local and distant days has a straight-time line of each: the locality tells them apart.
    const bool bandOfBothLocalities = countsHours(c) && c.comparisonConcept &&
                                      std::any_of(all.begin(), all.end(), [&](const auto& other) {
                                          return countsHours(other) && other.comparisonConcept && other.rulesLocality != c.rulesLocality;
                                      });
    std::string label = displayLabel(c, style.labels) + (bandOfBothLocalities ? " " + std::string(toRawValue(c.rulesLocality)) : "");
    // Without money shown, a rule paid at two rates in one week is told apart by its rate in the label.
    const bool sharesItsRule = std::count_if(all.begin(), all.end(), [&](const auto& other) { return other.ruleID == c.ruleID; }) > 1;
    if (sharesItsRule && c.baseHourlyRate && !style.showMoney) label += " at " + amount(*c.baseHourlyRate);
    return label;
}

std::string guaranteeNote(const PayrollReviewCategory& c, const DailyPayrollReview* day) {
    if (c.guaranteedDuration <= WorkDuration()) return "";
    if (!day) return "  (" + hours(c.guaranteedDuration) + " guaranteed)";
    // Guaranteed time in a band comes from the golden hour minimum of that band, the rest from the daily minimum.
    WorkDuration golden;
    for (const auto& g : day->guaranteeTraces) {
        if (g.targetPayBandRuleID == c.ruleID) golden += g.guaranteedAdditionalDuration;
    }
    std::vector<std::string> sources;
    if (c.guaranteedDuration - golden > WorkDuration()) sources.push_back(hours(c.guaranteedDuration - golden) + " guaranteed by the Daily Minimum");
    if (golden > WorkDuration()) sources.push_back(hours(golden) + " guaranteed by the Golden Hour minimum");
    std::string note = "  (";
    for (std::size_t i = 0; i < sources.size(); ++i) note += (i ? ", " : "") + sources[i];
    return note + ")";
}

// The quantity of a category that does not count hours.
std::string otherQuantity(const PayrollReviewCategory& c, const WeeklyCrewPayrollReview* week, const Style& style) {
    if (c.comparisonConcept == PayComparisonConcept::vacation && week) {
        for (const auto& item : week->additionalCompensation) {
            if (item.kind != CompensationProvisionKind::vacationPay) continue;
            const auto& trace = std::get<PercentageCompensationTrace>(item.trace);
            return trace.percentage.percent().toString() + "%";
        }
    }
    if (c.comparisonConcept == PayComparisonConcept::meal && week) {
        const auto priced = std::count_if(week->mealPenalties.occurrences.begin(), week->mealPenalties.occurrences.end(), [&](const auto& o) {
            return o.compensationScheduleRuleID == c.ruleID && o.compensation.amount;
        });
        return counted(static_cast<std::size_t>(priced), "penalty", "penalties");
    }
    if (c.contributors.empty()) return "";
    return daysQuantity(c, style);
}

// Vacation pay is a percentage of the week's straight-time earnings: the note names that basis. Mileage
// is in the gross, as the pay stub prints it among the earnings, but it is a reimbursement, not wages.
std::string basisNote(const PayrollReviewCategory& c, const WeeklyCrewPayrollReview* week) {
    if (c.comparisonConcept == PayComparisonConcept::mileage) return "  (reimbursed, not wages)";
    if (c.comparisonConcept != PayComparisonConcept::vacation || !week) return "";
    for (const auto& item : week->additionalCompensation) {
        if (item.kind == CompensationProvisionKind::vacationPay) {
            return "  (of " + amount(std::get<PercentageCompensationTrace>(item.trace).basisAmount) + " straight-time earnings)";
        }
    }
    return "";
}

std::vector<TableLine> categoryLines(const std::vector<PayrollReviewCategory>& categories, const std::vector<PayrollReviewCategory>& all,
                                     const Style& style, const DailyPayrollReview* day, const WeeklyCrewPayrollReview* week) {
    HourColumns widths;
    for (const auto& c : all) {
        if (!countsHours(c)) continue;
        widths.hours = std::max(widths.hours, hours(c.paidDuration).size());
        if (c.baseHourlyRate) widths.rate = std::max(widths.rate, amount(*c.baseHourlyRate).size());
    }
    std::vector<TableLine> lines;
    for (const auto& c : categories) {
        TableLine line{categoryLabel(c, all, style), countsHours(c) ? hoursQuantity(c, style, widths) : otherQuantity(c, week, style), "", ""};
        if (style.showMoney) line.amount = amount(c.compensation);
        line.note = guaranteeNote(c, day) + basisNote(c, week) + ruleTag(style, c.ruleID.value());
        lines.push_back(std::move(line));
    }
    return lines;
}

void writeCategories(std::ostringstream& text, const std::vector<PayrollReviewCategory>& categories, const std::string& indent, const Style& style,
                     const DailyPayrollReview* day) {
    writeTable(text, categoryLines(categories, categories, style, day, nullptr), indent);
}

// "Over-scale 52.00/hr (the engagement's rate from 2026-11-01)", "Scale, Rate Card 2026 Basic: 52.20/hr",
// "Job for Today Gaffer, Scale, Rate Card 2026 Basic: 60.00/hr", then the warning's words; a day priced
// outside any engagement (the sandbox) shows the rate it was given.
std::string rateWords(const DailyPayrollReview& d, const Style& style) {
    const std::string warning = d.rateWarning ? " — " + rateWarningWords(*d.rateWarning, d.rateResolution.has_value()) : std::string();
    if (!d.rateResolution || !d.applicableRate) return std::string(review_words::noApplicablePayRate) + warning;
    const auto& r = *d.rateResolution;
    const std::string hourly = amount(*d.applicableRate) + "/hr";
    if (!d.source.engagementID) return hourly;
    using S = ResolvedRate::Source;
    const std::string scale = "Scale, Rate Card " + r.rateCardLabel + ": " + hourly;
    const std::string overScale = "Over-scale " + hourly + " (the engagement's rate from " + calendar_text::formatDate(r.effectiveDate) + ")";
    std::string words;
    switch (r.source) {
        case S::overScale: words = overScale; break;
        case S::positionScale: words = scale; break;
        case S::scaleFloor: words = scale + " (the Scale floor)"; break;
        case S::reratedPositionScale: words = "Rerate " + r.positionName + ", " + scale; break;
        case S::rerateOverScale: words = "Rerate " + r.positionName + ", " + overScale; break;
        case S::dailyJobPositionScale: words = "Job for Today " + r.positionName + ", " + scale; break;
        case S::dailyJobOverScale: words = "Job for Today " + r.positionName + ", " + overScale; break;
    }
    return words + warning + (style.explain ? "  [" + std::string(toRawValue(r.source)) + "]" : "");
}

void writeGuarantees(std::ostringstream& text, const DailyPayrollReview& d, const Style& style) {
    if (d.dailyMinimumTrace && d.dailyMinimumTrace->guaranteedAdditionalDuration > WorkDuration()) {
        const auto& t = *d.dailyMinimumTrace;
        text << "      Daily Minimum " << hours(t.minimumPaidDuration) << " (" << description(*d.dailyMinimumSource) << "): " << hours(t.actualDailyDuration)
             << " counted, " << hours(t.guaranteedAdditionalDuration) << " guaranteed";
        if (t.reason == DailyMinimumGuaranteeTraceEntry::Reason::appliedConfirmedWorkedDay) text << " (" << description(t.reason) << ")";
        text << ruleTag(style, t.guaranteeRuleID.value()) << "\n";
    }
    for (const auto& g : d.guaranteeTraces) {
        if (g.reason != MinimumBandGuaranteeTraceEntry::Reason::appliedMinimumNotMet) continue;
        const auto band = std::find_if(d.categories.begin(), d.categories.end(), [&](const auto& c) { return c.ruleID == g.targetPayBandRuleID; });
        text << "      Golden Hour minimum " << hours(g.paidDuration) << " in " << (band != d.categories.end() ? displayLabel(*band, style.labels) : g.targetPayBandRuleID.value())
             << ": " << hours(g.preBandGuaranteePaidDuration) << " worked there, " << hours(g.guaranteedAdditionalDuration) << " guaranteed"
             << ruleTag(style, g.guaranteeRuleID.value()) << "\n";
    }
}

// The amounts the week paid for one day's penalties (past the weekly limit: none), or, for a day on its
// own, the schedule's amounts for each penalty's place in its meal.
std::vector<std::optional<Money>> penaltyPrices(const DailyPayrollReview& d, const MealPeriodEvaluationResult& meal,
                                                const WeeklyCrewPayrollReview* week) {
    std::vector<std::optional<Money>> prices;
    for (const auto& occurrence : meal.occurrences) {
        if (!week) {
            prices.push_back(d.mealPenaltySchedule ? std::optional(d.mealPenaltySchedule->amountFor(occurrence.id.mealPeriodOccurrenceOrdinal))
                                                   : std::nullopt);
            continue;
        }
        const auto priced = std::find_if(week->mealPenalties.occurrences.begin(), week->mealPenalties.occurrences.end(), [&](const auto& o) {
            return o.sourceDayID == d.id.text() && o.mealPeriodOrdinal == occurrence.id.mealPeriodOrdinal &&
                   o.mealPeriodOccurrenceOrdinal == occurrence.id.mealPeriodOccurrenceOrdinal;
        });
        prices.push_back(priced != week->mealPenalties.occurrences.end() ? priced->compensation.amount : std::nullopt);
    }
    return prices;
}

std::string eventWords(const MealTimelineEvent& event, const DailyPayrollReview& d) {
    const CalendarDate date = d.calendarDate;
    // A day without a meal counts the first meal's penalties until wrap, which then stands in for the meal out.
    const bool wrapWithoutMeal = event.kind == MealTimelineEvent::Kind::mealOut && !d.source.lunchOut;
    const char* name = event.kind == MealTimelineEvent::Kind::call     ? "call"
                       : wrapWithoutMeal                                ? "wrap without a meal"
                       : event.kind == MealTimelineEvent::Kind::mealOut ? "lunch out"
                       : event.kind == MealTimelineEvent::Kind::mealIn  ? "lunch in"
                                                                        : "wrap";
    return std::string(name) + " " + formatTimeOfDay(event.timestamp, date);
}

// "Meal 1: clock from call 7.0, due 13.0, lunch out 13.5: 1 penalty (Schedule A: 8.50). Grace was not called."
void writeMeal(std::ostringstream& text, const DailyPayrollReview& d, const MealPeriodEvaluationResult& meal, const WeeklyCrewPayrollReview* week,
               const Style& style) {
    const auto& t = meal.trace;
    text << "      Meal " << meal.mealPeriodOrdinal.value << ":";
    if (t.clockStart) text << " clock from " << eventWords(*t.clockStart, d) << ",";
    if (t.contractualDueTime) text << " due " << formatTimeOfDay(t.contractualDueTime, d.calendarDate);
    if (t.graceProtectedThrough && t.contractualDueTime) {
        // The first meal's grace is the one called for the crew (its sentence follows); a later meal's
        // applies by the rules without being called.
        text << (t.firstMealGraceDisposition ? " (called grace " : " (automatic grace ") << hours(WorkDuration(duration_cast<seconds>(*t.graceProtectedThrough - *t.contractualDueTime).count())) << " to "
             << formatTimeOfDay(t.graceProtectedThrough, d.calendarDate) << ")";
    }
    if (t.satisfactionEvent) text << ", " << eventWords(*t.satisfactionEvent, d);
    if (meal.status.kind != MealPeriodEvaluationStatus::Case::evaluated) {
        text << ": not evaluated (" << toRawValue(meal.status.kind) << ")";
    } else if (meal.occurrences.empty()) {
        text << ": no penalty";
    } else {
        const auto prices = penaltyPrices(d, meal, week);
        text << ": " << meal.occurrences.size() << (meal.occurrences.size() == 1 ? " penalty" : " penalties");
        if (style.showMoney) {
            std::string amounts;
            std::size_t unpriced = 0;
            for (const auto& price : prices) {
                if (price) amounts += (amounts.empty() ? "" : " + ") + amount(*price);
                else ++unpriced;
            }
            if (!amounts.empty()) text << " (" << (d.mealPenaltyScheduleName.empty() ? "" : d.mealPenaltyScheduleName + ": ") << amounts << ")";
            if (unpriced > 0) {
                text << ", " << unpriced << " past the weekly limit of " << d.mealPenaltyFixedDollarWeeklyLimit << ": "
                     << meal_penalty_words::contractVerificationRequired;
            }
        }
    }
    text << ".";
    if (t.firstMealGraceDisposition) {
        text << " " << description(*t.firstMealGraceDisposition, t.firstMealClockResolution.value_or(FirstMealClockResolution::employeeCall));
    }
    if (style.explain) text << "  [" << t.ruleID.value() << (d.mealPenaltySchedule ? "; " + d.mealPenaltySchedule->ruleID().value() : "") << "]";
    text << "\n";
}

void writeTurnaround(std::ostringstream& text, const TurnaroundPayrollReview& turnaround, const Style& style) {
    const auto& status = turnaround.result.status;
    const auto& trace = turnaround.result.trace;
    text << "      Turnaround: ";
    const std::string required = trace.requiredRest ? hours(*trace.requiredRest) + " required" : "";
    if (status.kind == TurnaroundEvaluationStatus::Case::satisfied) {
        text << hours(*status.actualRest) << " rest, " << required;
    } else if (status.kind == TurnaroundEvaluationStatus::Case::shortfall) {
        text << "short by " << hours(*status.shortfallDuration) << ": " << hours(*status.actualRest) << " rest, " << required;
    } else {
        text << *description(status.kind);
        if (status.kind == TurnaroundEvaluationStatus::Case::exactlySatisfied && !required.empty()) text << " (" << required << ")";
    }
    if (turnaround.note) text << ". " << *turnaround.note;
    if (style.explain && trace.ruleID) text << "  [" << trace.ruleID->value() << (trace.valueOrigin.empty() ? "" : "; " + trace.valueOrigin) << "]";
    text << "\n";
}

std::string_view dayKindWords(CrewDailyWorkMode mode) {
    switch (mode) {
        case CrewDailyWorkMode::worked: return "worked day";
        case CrewDailyWorkMode::prep: return "prep day";
        case CrewDailyWorkMode::timed: return "timed work day";
    }
    return {};
}

void writeAllowances(std::ostringstream& text, const std::vector<AdditionalCompensationReview>& items, std::string_view dayKind,
                     const std::string& indent, const Style& style) {
    for (const auto& a : items) {
        text << indent << label(a.kind) << " " << amount(a.compensation) << " (" << (a.presentationDetail ? *a.presentationDetail + ", " : "") << dayKind
             << (a.usedPersonalAmount ? ", personal amount" : "") << ")" << ruleTag(style, paid_categories::provisionRuleID(a.kind)) << "\n";
    }
}

void writeDay(std::ostringstream& text, const DailyPayrollReview& d, const WeeklyCrewPayrollReview* week, const Style& style) {
    const auto& s = d.source;
    text << "  " << datedHeading(d.calendarDate);
    if (s.workMode != CrewDailyWorkMode::timed) text << "  " << toRawValue(s.workMode) << " day";
    if (s.call) text << "  Call " << formatTimeOfDay(s.call, d.calendarDate);
    if (s.lunchOut || s.lunchIn) text << "  Lunch " << formatTimeOfDay(s.lunchOut, d.calendarDate) << "-" << formatTimeOfDay(s.lunchIn, d.calendarDate);
    if (s.wrap) text << "  Wrap " << formatTimeOfDay(s.wrap, d.calendarDate);
    if (s.nonDeductibleBreakfast) text << "  NDB";
    text << "\n      ";
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
    if (d.scheduleTerms) text << "      Schedule: " << *d.scheduleTerms << "\n";
    if (d.status.kind == DailyPayrollStatus::Case::incomplete) {
        text << "      Not calculated: " << description(*d.status.reason) << "\n";
        return;
    }
    if (d.status.kind == DailyPayrollStatus::Case::calculationFailed) {
        text << "      Calculation failed: " << d.status.failure << "\n";
        return;
    }
    if (style.showMoney) text << "      Rate: " << rateWords(d, style) << "\n";
    writeCategories(text, d.categories, "      ", style, &d);
    writeGuarantees(text, d, style);
    for (const auto& meal : d.mealPeriods) writeMeal(text, d, meal, week, style);
    if (d.turnaround) writeTurnaround(text, *d.turnaround, style);
    text << "      "
         << (d.goldenHourTarget ? std::string(review_words::goldenHourWrap) + " " + formatTimeOfDay(d.goldenHourTarget->targetTime, d.calendarDate)
                                : std::string(review_words::goldenHourUnavailable))
         << "\n";
    if (!style.showMoney) return;
    writeAllowances(text, d.additionalCompensation, dayKindWords(s.workMode), "      ", style);
    if (d.boxRentalCompensation) {
        text << "      " << paid_categories::boxRentalTitle << " " << amount(*d.boxRentalCompensation)
             << ruleTag(style, std::string(paid_categories::boxRentalRuleID)) << "\n";
    }
    // The day's own total is its banded pay; allowances above and meal penalties are totalled in the week.
    text << "      Day total (hours in the pay bands): " << (d.compensation ? amount(*d.compensation) : std::string(review_words::noApplicablePayRate))
         << "\n";
}

std::string activityQuantity(const NonDTSPayrollActivityReview& a, const Style& style) {
    const auto priced = [&](const auto& trace, const Decimal& multiplier, WorkDuration duration, const Money& paid) {
        return " " + hours(duration) + (style.showMoney ? " x " + amount(trace.straightTimeHourlyRate) : "") + " x" + multiplier.toString() +
               (style.showMoney ? " = " + amount(paid) : "");
    };
    if (a.idleCompensation && a.idleCompensation->result) {
        const auto& r = *a.idleCompensation->result;
        return priced(r.trace, r.trace.straightTimeRateMultiplier.value(), r.trace.compensatedDuration, r.compensation);
    }
    if (a.holidayCompensation && a.holidayCompensation->result) {
        const auto& r = *a.holidayCompensation->result;
        return priced(r.trace, r.trace.rule.rateMultiplier(), WorkDuration(r.trace.rule.compensatedSeconds()), r.compensation);
    }
    return "";
}

void writeActivity(std::ostringstream& text, const NonDTSPayrollActivityReview& a, const Style& style) {
    text << "  " << datedHeading(a.calendarDate) << "  " << activityKindLabel(a.kindRawValue);
    if (a.travelDurationSeconds) text << " " << formatDuration(*a.travelDurationSeconds) << " h";
    text << ": " << a.words << activityQuantity(a, style);
    if (style.explain && a.idleCompensation) text << "  [" << paid_categories::idleRuleID << "]";
    if (style.explain && a.holidayCompensation && a.holidayCompensation->context) {
        text << "  [" << paid_categories::holidayRuleID(*a.holidayCompensation->context) << "]";
    }
    text << "\n";
    if (style.showMoney) writeAllowances(text, a.additionalCompensation, activityKindLabel(a.kindRawValue) + " day", "      ", style);
}

// The schedule a weekly band was paid under: that of the first day paying its rule. A sixth day paid
// under the ordinary schedule shares its rules, so its hours stay with the ordinary ones.
std::string scheduleOf(const WeeklyCrewPayrollReview& r, const PayrollReviewCategory& category) {
    for (const auto& day : r.days) {
        for (const auto& c : day.categories) {
            if (c.ruleID == category.ruleID) return day.scheduleDayKind;
        }
    }
    return "ordinary";
}

bool isBand(const WeeklyCrewPayrollReview& r, const PayrollReviewCategory& category) {
    return std::any_of(r.days.begin(), r.days.end(), [&](const auto& day) {
        return std::any_of(day.categories.begin(), day.categories.end(), [&](const auto& c) { return c.ruleID == category.ruleID; });
    });
}

// A band's share of the week worked in one classification: its contributors on those days, summed.
PayrollReviewCategory shareOf(const PayrollReviewCategory& category, const std::set<Uuid>& days) {
    PayrollReviewCategory share = category;
    share.contributors.clear();
    share.actualDuration = share.guaranteedDuration = share.paidDuration = WorkDuration();
    share.compensation.reset();
    bool priced = true;
    for (const auto& c : category.contributors) {
        if (!days.contains(c.workdayID)) continue;
        share.contributors.push_back(c);
        share.actualDuration = share.actualDuration + c.actualDuration;
        share.guaranteedDuration = share.guaranteedDuration + c.guaranteedDuration;
        share.paidDuration = share.paidDuration + c.paidDuration;
        if (!c.compensation) priced = false;
        if (priced) share.compensation = share.compensation ? *share.compensation + *c.compensation : *c.compensation;
    }
    if (!priced) share.compensation.reset();
    return share;
}

// The week's days by the classification they were worked in, in the order first worked; days without a
// position are "Unassigned Classification".
std::vector<std::pair<std::string, std::set<Uuid>>> classificationGroups(const WeeklyCrewPayrollReview& r) {
    std::vector<std::pair<std::string, std::set<Uuid>>> groups;
    for (const auto& day : r.days) {
        const std::string name = day.classification ? day.classification->name : std::string(review_words::unassignedClassification);
        auto group = std::find_if(groups.begin(), groups.end(), [&](const auto& g) { return g.first == name; });
        if (group == groups.end()) group = groups.insert(groups.end(), {name, {}});
        group->second.insert(day.id);
    }
    if (groups.empty()) groups.push_back({std::string(review_words::unassignedClassification), {}});
    return groups;
}

// The week's lines: the bands by classification and by the schedule they were paid under, then every
// other paid category. All share one set of columns.
void writeWeekCategories(std::ostringstream& text, const WeeklyCrewPayrollReview& r, const Style& style) {
    if (r.categories.empty()) return;
    std::vector<TableLine> lines;
    const auto add = [&](const std::vector<PayrollReviewCategory>& some) {
        for (auto& line : categoryLines(some, r.categories, style, nullptr, &r)) lines.push_back(std::move(line));
    };
    const auto groups = classificationGroups(r);
    for (const auto& [classification, days] : groups) {
        const bool whole = groups.size() == 1;  // one classification: the week's own lines
        if (!whole) lines.push_back({classification + ":", "", "", ""});
        for (const std::string group : {"ordinary", "sixthDay", "seventhDay"}) {
            std::vector<PayrollReviewCategory> paid;
            for (const auto& c : r.categories) {
                if (!isBand(r, c) || scheduleOf(r, c) != group) continue;
                auto share = whole ? c : shareOf(c, days);
                if (!share.contributors.empty() || whole) paid.push_back(std::move(share));
            }
            // A rule paid at two rates keeps its lines together, in the order the rules were first paid.
            const auto original = paid;
            const auto firstOf = [&](const PayrollReviewCategory& c) {
                return std::find_if(original.begin(), original.end(), [&](const auto& other) { return other.ruleID == c.ruleID; }) - original.begin();
            };
            std::stable_sort(paid.begin(), paid.end(), [&](const auto& a, const auto& b) { return firstOf(a) < firstOf(b); });
            if (paid.empty()) continue;
            if (group != "ordinary") lines.push_back({capitalised(scheduleWords(group)) + " schedule:", "", "", ""});
            add(paid);
        }
    }
    if (groups.size() == 1) text << "    " << groups.front().first << "\n";
    std::vector<PayrollReviewCategory> others;
    std::copy_if(r.categories.begin(), r.categories.end(), std::back_inserter(others), [&](const auto& c) { return !isBand(r, c); });
    if (style.showMoney) add(others);
    writeTable(text, lines, "    ");
}

void writeWeekMeals(std::ostringstream& text, const WeeklyCrewPayrollReview& r) {
    if (r.mealPenalties.unresolvedPrevailingRateCount == 0) return;
    text << "    Meal penalties past the weekly limit: " << r.mealPenalties.unresolvedPrevailingRateCount << "; "
         << meal_penalty_words::contractVerificationRequired << "\n"
         << "      " << meal_penalty_words::prevailingRateExplanation << "\n";
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

}  // namespace

std::size_t characters(const std::string& text) {
    std::size_t length = 0;
    for (unsigned char c : text) length += (c & 0xC0) != 0x80;
    return length;
}

std::string padded(std::string text, std::size_t width) {
    const std::size_t length = characters(text);
    if (length < width) text.append(width - length, ' ');
    return text;
}

std::string weekly(const WeeklyCrewPayrollReview& r, const Style& style) {
    std::ostringstream text;
    text << r.crewName << ", week of " << calendar_text::formatDate(r.weekStartDate) << " (" << r.configurationName << ")\n";
    // Days and activities in date order (each list is already by date).
    auto day = r.days.begin();
    auto activity = r.nonDTSActivities.begin();
    while (day != r.days.end() || activity != r.nonDTSActivities.end()) {
        if (activity == r.nonDTSActivities.end() || (day != r.days.end() && day->calendarDate <= activity->calendarDate)) {
            writeDay(text, *day++, &r, style);
        } else {
            writeActivity(text, *activity++, style);
        }
    }
    if (r.days.empty() && r.nonDTSActivities.empty()) text << "  No DTS row or activity in this Payroll Week.\n";
    text << "  Week:\n";
    writeWeekCategories(text, r, style);
    writeWeekMeals(text, r);
    writeIssues(text, r.issues);
    if (!style.showMoney) return text.str();
    text << "    " << (r.estimatedGrossIsPartial ? review_words::estimatedGrossPartial : review_words::estimatedGross) << ": " << amount(r.estimatedGross)
         << (r.estimatedGross ? " " + r.estimatedGross->currency().code() + " (the sum of the lines above)" : "") << "\n";
    if (!r.missingRateDates.empty()) text << "    " << review_words::partialExplanation << "\n";
    return text.str();
}

std::string rate(const DailyPayrollReview& review, const Style& style) { return rateWords(review, style); }

std::string daily(const DailyPayrollReview& review, const Style& style) {
    std::ostringstream text;
    writeDay(text, review, nullptr, style);
    return text.str();
}

std::vector<std::string> scheduleChanges(const PositionScheduleOverrides& overrides) {
    std::vector<std::string> changes;
    const auto band = [&](const PositionProvision& provision, std::string_view name) {
        if (provision.mode == PositionProvisionMode::none) changes.push_back("no " + std::string(name));
        if (provision.mode != PositionProvisionMode::custom) return;
        std::string line = std::string(name) + " after " + formatDuration(provision.seconds.value_or(0)) + " h";
        if (provision.multiplier) line += " x" + provision.multiplier->toString();
        if (provision.basis) line += " (" + std::string(toRawValue(*provision.basis)) + ")";
        changes.push_back(line);
    };
    if (overrides.minimumCall.mode == PositionProvisionMode::none) changes.emplace_back("no minimum call");
    if (overrides.minimumCall.mode == PositionProvisionMode::custom) {
        changes.push_back("minimum call " + formatDuration(overrides.minimumCall.seconds.value_or(0)) + " h");
    }
    band(overrides.overtime, "overtime");
    band(overrides.doubleTime, "double time");
    return changes;
}

std::string scheduleChangesLine(const PositionScheduleOverrides& overrides) {
    const auto changes = scheduleChanges(overrides);
    if (changes.empty()) return "as the production's rules";
    std::string line;
    for (const auto& change : changes) line += (line.empty() ? "" : "; ") + change;
    return line;
}

}  // namespace tessel::review_text
