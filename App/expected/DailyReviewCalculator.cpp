#include "DailyReviewCalculator.hpp"

#include "PayrollEngine/GrossCompensationCalculator.hpp"
#include "PayrollEngine/MealPenaltyEvaluator.hpp"
#include "PayrollEngine/PayBandTargetEntryCalculator.hpp"
#include "PayrollEngine/SupplementalCompensationCalculator.hpp"
#include "PayrollEngine/TurnaroundEvaluator.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
using Kind = PayBandAllocationTimelineSegment::Kind;

PayrollReviewIssue issue(PayrollReviewIssue::Kind kind, std::string message, PayrollReviewIssue::DestinationKind destinationKind,
                         const Uuid& destination) {
    return {kind, std::move(message), destinationKind, destination};
}

std::vector<MealPeriodEvaluationResult> evaluateMeals(const DTSCalculationInput& s, const SandboxConfiguration& rules) {
    // The work mode chooses only the daily minimum's eligibility: a worked or prep day with times has
    // its meals counted like any other; one without times has no meal to count.
    if (!rules.mealPenaltyTimingRules || (s.workMode != CrewDailyWorkMode::timed && !s.call)) return {};
    // Without a meal, the count runs until wrap.
    const FirstMealEvaluationInput first{s.call, s.generalCrewCall, s.lunchOut ? s.lunchOut : s.wrap, s.nonDeductibleBreakfast,
                                         s.firstMealGraceWasCalled};
    std::vector<MealPeriodEvaluationResult> meals{MealPenaltyEvaluator::evaluateFirstMeal(rules.mealPenaltyTimingRules->firstMeal, first)};
    if (s.lunchIn && s.wrap) {
        meals.push_back(MealPenaltyEvaluator::evaluatePeriod(
            rules.mealPenaltyTimingRules->subsequentMeal,
            {MealPeriodOrdinal{2}, MealTimelineEvent{MealTimelineEvent::Kind::mealIn, *s.lunchIn},
             MealTimelineEvent{MealTimelineEvent::Kind::wrap, *s.wrap}}));
    }
    return meals;
}

std::vector<PayrollReviewCategory> categoriesOf(const GrossCompensationResult& gross, const SandboxConfiguration& rules,
                                                const DTSCalculationInput& source, bool priced, const std::optional<Money>& rate) {
    std::vector<PayrollReviewCategory> categories;
    for (const auto& c : gross.components) {
        const auto label = rules.labelsByRuleID.find(c.ruleID.value());
        const auto comparison = rules.comparisonConceptsByRuleID.find(c.ruleID.value());
        const std::optional<Money> money = priced ? std::optional(c.roundedAmount) : std::nullopt;
        categories.push_back({comparison != rules.comparisonConceptsByRuleID.end() ? std::optional(comparison->second) : std::nullopt,
                              c.ruleID,
                              label != rules.labelsByRuleID.end() ? label->second : c.ruleID.value(),
                              c.multiplier,
                              c.actualAllocatedDuration,
                              c.guaranteedAdditionalDuration,
                              c.paidDuration,
                              money,
                              priced ? rate : std::nullopt,
                              {{source.workdayID, source.calendarDate, c.actualAllocatedDuration, c.guaranteedAdditionalDuration,
                                c.paidDuration, money}},
                              rules.rulesLocality});
    }
    return categories;
}

void addProvisions(DailyPayrollReview& review, const DailyReviewInputs& inputs) {
    for (const auto& provision : inputs.dailyProvisions) {
        const Money amount(provision.amount, CurrencyCode(provision.currencyCode));
        const auto fixed = SupplementalCompensationCalculator::fixedDaily(amount, true);
        review.additionalCompensation.push_back({provision.kind, *fixed.compensation,
                                                 provision.amountOrigin == CompensationProvisionOverrideMode::personalAmount,
                                                 fixed.trace, std::nullopt});
    }
    if (inputs.mileage && inputs.miles && !inputs.miles->isZero()) {
        const Money perMile(inputs.mileage->amount, CurrencyCode(inputs.mileage->currencyCode));
        const Money amount = RoundingRule::cents().apply(perMile * *inputs.miles).after;
        const auto fixed = SupplementalCompensationCalculator::fixedDaily(amount, true);
        review.additionalCompensation.push_back({CompensationProvisionKind::mileage, amount,
                                                 inputs.mileage->amountOrigin == CompensationProvisionOverrideMode::personalAmount,
                                                 fixed.trace, inputs.miles->toString() + " miles x " + perMile.amount().toString()});
    }
}

}  // namespace

std::optional<GoldenHourTarget> DailyReviewCalculator::goldenHourTarget(const DTSCalculationInput& s, const SandboxConfiguration& rules) {
    if (rules.bandGuarantees.empty() || !s.call) return std::nullopt;
    // The day as worked so far, then open-ended work: the band is entered where this timeline reaches it.
    std::vector<PayBandAllocationTimelineSegment> segments;
    if (s.lunchOut && s.lunchIn && *s.lunchOut > *s.call && *s.lunchIn > *s.lunchOut) {
        segments.push_back({Kind::compensableWork, WorkDuration((*s.lunchOut - *s.call).count())});
        segments.push_back({Kind::nonCompensableElapsed, WorkDuration((*s.lunchIn - *s.lunchOut).count())});
    }
    segments.push_back({Kind::compensableWork, WorkDuration::hours(24)});
    const auto entry = PayBandTargetEntryCalculator::entry(segments, rules.schedule, rules.bandGuarantees.front());
    if (!entry) return std::nullopt;
    return GoldenHourTarget{*s.call + seconds(entry->firstQualifyingElapsedDurationFromCall.seconds()),
                            *s.call + seconds(entry->elapsedDurationFromCall.seconds()),
                            entry->guaranteeRuleID,
                            entry->payBandRuleID,
                            entry->minimumPaidDuration,
                            entry->multiplier,
                            entry->threshold};
}

DailyPayrollReview DailyReviewCalculator::calculate(const DailyReviewInputs& inputs) {
    const DTSCalculationInput& s = inputs.source;
    const SandboxConfiguration& rules = *inputs.rules;
    DailyPayrollReview review{.classification = std::nullopt, .id = s.workdayID, .calendarDate = s.calendarDate,
                              .workdaySequence = inputs.sequence, .source = s};
    review.rulesLocality = rules.rulesLocality;
    review.dayKind = std::string(toRawValue(rules.dayKind));
    review.scheduleDayKind = std::string(toRawValue(rules.scheduleDayKind));
    review.mealPenaltySchedule = rules.mealPenaltySchedule;
    review.mealPenaltyScheduleName = rules.mealPenaltyScheduleName;
    review.mealPenaltyFixedDollarWeeklyLimit = static_cast<int>(rules.mealPenaltyFixedDollarWeeklyLimit);
    review.rateResolution = inputs.rate;
    review.rateWarning = inputs.rateWarning;
    review.classification = inputs.classification;
    if (inputs.rate) review.applicableRate = Money(inputs.rate->hourlyAmount, CurrencyCode(inputs.rate->currencyCode));
    review.goldenHourTarget = goldenHourTarget(s, rules);
    review.boxRentalCompensation = inputs.boxRental;
    addProvisions(review, inputs);
    review.turnaround = TurnaroundPayrollReview{inputs.nextWorkdayID, inputs.nextWorkdayDate,
                                                TurnaroundEvaluator::evaluate(inputs.turnaroundRule, {s.wrap, inputs.nextCall})};
    if (review.turnaround->result.status.kind == TurnaroundEvaluationStatus::Case::noNextCall && !inputs.nextWorkdayID) {
        // Only the following calendar day's call is compared; the note says which gap that leaves out.
        const weekday following{sys_days(s.calendarDate) + days(1)};
        const bool weekend = following == Saturday || following == Sunday;
        review.turnaround->note = std::string(weekend ? turnaround_words::weekendNotCalculated : turnaround_words::noCallNextDay);
    }
    review.scheduleTerms = inputs.scheduleTerms;
    if (inputs.scheduleTermsProblem) {
        review.issues.push_back(issue(PayrollReviewIssue::Kind::positionTerms, *inputs.scheduleTermsProblem,
                                      PayrollReviewIssue::DestinationKind::workday, s.workdayID));
    }
    if (rules.mealPenaltyProblem) {
        review.issues.push_back(issue(PayrollReviewIssue::Kind::calculationFailure, *rules.mealPenaltyProblem,
                                      PayrollReviewIssue::DestinationKind::workday, s.workdayID));
    }

    auto derived = WorkdayDurationDeriver::derive(s);
    if (auto* reason = std::get_if<WorkdayIncompleteReason>(&derived)) {
        review.status = {DailyPayrollStatus::Case::incomplete, *reason, ""};
        review.issues.push_back(issue(PayrollReviewIssue::Kind::dtsSource, description(*reason),
                                      PayrollReviewIssue::DestinationKind::workday, s.workdayID));
        return review;
    }
    review.durations = std::get<DerivedWorkdayDurations>(std::move(derived));
    review.mealPeriods = evaluateMeals(s, rules);

    DayGuarantees guarantees{rules.configuredDailyMinimumGuarantee, WorkdayDurationDeriver::eligibility(s.workMode), rules.bandGuarantees};
    review.dailyMinimumSource = DailyMinimumGuaranteeSource::rulesetDailyGuarantee;
    if (inputs.personalDailyGuaranteeSeconds && *inputs.personalDailyGuaranteeSeconds > 0) {
        guarantees.dailyMinimum = DailyMinimumGuarantee(RuleID(std::string(ruleset_ids::personalDailyGuarantee)),
                                                        WorkDuration(*inputs.personalDailyGuaranteeSeconds));
        review.dailyMinimumSource = DailyMinimumGuaranteeSource::personalDailyGuarantee;
    }
    // Without a rate the day's time is still allocated and guaranteed; only its money stays unknown.
    const HourlyPayRate rate = inputs.rate ? HourlyPayRate(inputs.rate->hourlyAmount, CurrencyCode(inputs.rate->currencyCode))
                                           : HourlyPayRate(Decimal(), CurrencyCode::usd());
    try {
        GrossCompensationResult gross =
            GrossCompensationCalculator::calculate(review.durations->allocationInput, rules.schedule, guarantees, rate, rules.moneyRoundingRule);
        review.categories = categoriesOf(gross, rules, s, inputs.rate.has_value(), review.applicableRate);
        review.dailyMinimumTrace = gross.trace.dailyMinimumGuaranteeAdjustment;
        review.guaranteeTraces = gross.trace.guaranteeAdjustments;
        if (inputs.rate) {
            review.compensation = gross.total;
            Money straight = Money::zero(gross.total.currency());
            for (const auto& category : review.categories) {
                if (category.comparisonConcept == PayComparisonConcept::straight && category.compensation) straight = straight + *category.compensation;
            }
            review.straightTimeCompensation = straight;
        }
        review.engineGrossResult = std::make_shared<const GrossCompensationResult>(std::move(gross));
    } catch (const DomainError& error) {
        review.status = {DailyPayrollStatus::Case::calculationFailed, std::nullopt, error.description()};
        review.issues.push_back(issue(PayrollReviewIssue::Kind::calculationFailure, error.description(),
                                      PayrollReviewIssue::DestinationKind::workday, s.workdayID));
        return review;
    }
    if (!inputs.rate && s.crewMemberID) {
        review.issues.push_back(issue(PayrollReviewIssue::Kind::missingRate, std::string(review_words::noApplicablePayRate),
                                      PayrollReviewIssue::DestinationKind::crewMember, *s.crewMemberID));
    }
    return review;
}

std::string_view toRawValue(PayrollReviewIssue::Kind kind) noexcept {
    switch (kind) {
        case PayrollReviewIssue::Kind::dtsSource: return "dtsSource";
        case PayrollReviewIssue::Kind::calculationFailure: return "calculationFailure";
        case PayrollReviewIssue::Kind::missingRate: return "missingRate";
        case PayrollReviewIssue::Kind::positionTerms: return "positionTerms";
    }
    return {};
}

std::string_view toRawValue(DailyPayrollStatus::Case kind) noexcept {
    switch (kind) {
        case DailyPayrollStatus::Case::incomplete: return "incomplete";
        case DailyPayrollStatus::Case::calculationFailed: return "calculationFailed";
        case DailyPayrollStatus::Case::calculated: return "calculated";
    }
    return {};
}

}  // namespace tessel
