#include "PaidCategories.hpp"

#include <algorithm>

namespace tessel::paid_categories {
namespace {

std::optional<PayComparisonConcept> conceptOf(CompensationProvisionKind kind) {
    switch (kind) {
        case CompensationProvisionKind::cellPhoneAllowance: return PayComparisonConcept::cellPhone;
        case CompensationProvisionKind::mileage: return PayComparisonConcept::mileage;
        case CompensationProvisionKind::vacationPay: return PayComparisonConcept::vacation;
        case CompensationProvisionKind::perDiem: return std::nullopt;  // no payroll concept pairs with it
    }
    return std::nullopt;
}

PayrollReviewCategory category(std::optional<PayComparisonConcept> concept_, std::string ruleID, std::string_view title) {
    return {concept_, RuleID(std::move(ruleID)), std::string(title), RateMultiplier::one()};
}

// Adds one dated amount to the category of its rule, creating the category at its first amount; two
// amounts from one source (penalties of one day) make one contributor. Categories are kept one per rule,
// hourly rate and multiplier, like the bands.
void contribute(std::vector<PayrollReviewCategory>& categories, const PayrollReviewCategory& kind, const Uuid& sourceID, CalendarDate date,
                const Money& amount, WorkDuration paid = WorkDuration()) {
    auto found = std::find_if(categories.begin(), categories.end(), [&](const auto& c) {
        return c.ruleID == kind.ruleID && c.baseHourlyRate == kind.baseHourlyRate && c.multiplier == kind.multiplier;
    });
    if (found == categories.end()) {
        categories.push_back(kind);
        found = std::prev(categories.end());
    }
    found->actualDuration += paid;
    found->paidDuration += paid;
    found->compensation = found->compensation ? *found->compensation + amount : amount;
    auto& contributors = found->contributors;
    if (!contributors.empty() && contributors.back().workdayID == sourceID) {
        auto& last = contributors.back();
        last.actualDuration += paid;
        last.paidDuration += paid;
        last.compensation = *last.compensation + amount;
    } else {
        contributors.push_back({sourceID, date, paid, WorkDuration(), paid, amount});
    }
}

// The meal penalties priced at fixed dollars, one contributor per day that had them. Penalties past the
// weekly limit are not priced and add nothing here.
void addMealPenalties(std::vector<PayrollReviewCategory>& categories, const WeeklyMealPenaltyResult& meals) {
    for (const auto& occurrence : meals.occurrences) {
        const auto& price = occurrence.compensation;
        const auto dayID = Uuid::parse(occurrence.sourceDayID);
        if (price.kind != WeeklyMealPenaltyOccurrence::Compensation::Case::fixedDollar || !price.amount || !dayID) continue;
        contribute(categories, category(PayComparisonConcept::meal, occurrence.compensationScheduleRuleID.value(), mealPenaltyTitle), *dayID,
                   occurrence.productionDate, *price.amount);
    }
}

void addAdditional(std::vector<PayrollReviewCategory>& categories, const std::vector<AdditionalCompensationReview>& items, const Uuid& sourceID,
                   CalendarDate date) {
    for (const auto& item : items) {
        if (item.kind == CompensationProvisionKind::vacationPay) continue;  // a weekly percentage, added last
        contribute(categories, category(conceptOf(item.kind), provisionRuleID(item.kind), label(item.kind)), sourceID, date, item.compensation);
    }
}

void addIdle(std::vector<PayrollReviewCategory>& categories, const IdlePayrollContribution& idle) {
    if (!idle.result) return;
    const auto& trace = idle.result->trace;
    auto kind = category(std::nullopt, std::string(idleRuleID), idleTitle);
    kind.multiplier = trace.straightTimeRateMultiplier;
    kind.baseHourlyRate = trace.straightTimeHourlyRate;
    contribute(categories, kind, idle.activityID, idle.calendarDate, idle.result->compensation, trace.compensatedDuration);
}

void addHoliday(std::vector<PayrollReviewCategory>& categories, const HolidayPayrollContribution& holiday) {
    if (!holiday.result || !holiday.context) return;
    const auto& trace = holiday.result->trace;
    auto kind = category(PayComparisonConcept::holiday, holidayRuleID(*holiday.context), holidayTitle);
    kind.multiplier = RateMultiplier(trace.rule.rateMultiplier());
    kind.baseHourlyRate = trace.straightTimeHourlyRate;
    contribute(categories, kind, holiday.activityID, holiday.calendarDate, holiday.result->compensation,
               WorkDuration(trace.rule.compensatedSeconds()));
}

}  // namespace

std::string provisionRuleID(CompensationProvisionKind kind) { return "production.provision." + std::string(toRawValue(kind)); }

std::string holidayRuleID(HolidayRuleContext context) { return "production.holiday." + std::string(toRawValue(context)); }

void addOtherCategories(WeeklyCrewPayrollReview& review) {
    auto& categories = review.categories;
    addMealPenalties(categories, review.mealPenalties);
    for (const auto& day : review.days) {
        if (day.boxRentalCompensation) {
            contribute(categories, category(PayComparisonConcept::boxRental, std::string(boxRentalRuleID), boxRentalTitle), day.id,
                       day.calendarDate, *day.boxRentalCompensation);
        }
    }
    // Allowances of days and of activities, by date.
    auto day = review.days.begin();
    auto activity = review.nonDTSActivities.begin();
    while (day != review.days.end() || activity != review.nonDTSActivities.end()) {
        if (activity == review.nonDTSActivities.end() || (day != review.days.end() && day->calendarDate <= activity->calendarDate)) {
            addAdditional(categories, day->additionalCompensation, day->id, day->calendarDate);
            ++day;
        } else {
            addAdditional(categories, activity->additionalCompensation, activity->id, activity->calendarDate);
            ++activity;
        }
    }
    for (const auto& a : review.nonDTSActivities) {
        if (a.idleCompensation) addIdle(categories, *a.idleCompensation);
    }
    for (const auto& a : review.nonDTSActivities) {
        if (a.holidayCompensation) addHoliday(categories, *a.holidayCompensation);
    }
    for (const auto& item : review.additionalCompensation) {
        if (item.kind != CompensationProvisionKind::vacationPay) continue;
        auto vacation = category(PayComparisonConcept::vacation, provisionRuleID(item.kind), label(item.kind));
        vacation.compensation = item.compensation;
        categories.push_back(std::move(vacation));  // a percentage of the week, from no one day
    }
}

Money sum(const std::vector<PayrollReviewCategory>& categories, const Money& zero) {
    Money total = zero;
    for (const auto& c : categories) {
        if (c.compensation) total = total + *c.compensation;
    }
    return total;
}

}  // namespace tessel::paid_categories
