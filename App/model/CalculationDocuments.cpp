#include "CalculationDocuments.hpp"

#include <algorithm>
#include <initializer_list>

#include "App/model/CalculationJSON.hpp"
#include "PayrollEngine/GrossCompensationCalculator.hpp"
#include "PayrollEngine/MealPenaltyEvaluator.hpp"
#include "PayrollEngine/PayBandAllocator.hpp"
#include "PayrollEngine/PayBandTargetEntryCalculator.hpp"
#include "PayrollEngine/SupplementalCompensationCalculator.hpp"
#include "PayrollEngine/TurnaroundEvaluator.hpp"
#include "PayrollEngine/WeeklyMealPenaltyCompensator.hpp"
#include "PayrollEngine/WeeklyPayrollAggregator.hpp"

namespace tessel::calculation_documents {
namespace {

using namespace json_fields;
namespace cj = calculation_json;

Json allocate(const Json& input) {
    const PayBandSchedule schedule = cj::payBandSchedule(member(input, "bands", ""), "bands");
    const PayBandAllocationInput segments = cj::allocationInput(member(input, "segments", ""), "segments");
    return cj::toJSON(PayBandAllocator::allocate(segments, schedule));
}

Json targetEntry(const Json& input) {
    const PayBandSchedule schedule = cj::payBandSchedule(member(input, "bands", ""), "bands");
    const PayBandAllocationInput segments = cj::allocationInput(member(input, "segments", ""), "segments");
    const MinimumBandGuarantee guarantee = cj::minimumBandGuarantee(member(input, "guarantee", ""), "guarantee");
    const auto entry = PayBandTargetEntryCalculator::entry(segments.segments, schedule, guarantee);
    return Json{{"entry", entry ? cj::toJSON(*entry) : Json(nullptr)}};
}

Json gross(const Json& input) {
    const PayBandSchedule schedule = cj::payBandSchedule(member(input, "bands", ""), "bands");
    const PayBandAllocationInput segments = cj::allocationInput(member(input, "segments", ""), "segments");
    DayGuarantees guarantees{cj::optionalDailyMinimum(input, ""), DailyMinimumGuaranteeEligibility::actualWorkRequired,
                             cj::bandGuarantees(input, "")};
    if (const Json* eligibility = optionalMember(input, "eligibility")) {
        guarantees.eligibility =
            enumeration(*eligibility, "eligibility", &dailyMinimumGuaranteeEligibilityFromRawValue);
    }
    const HourlyPayRate rate(cj::money(member(input, "hourlyRate", ""), "hourlyRate"));
    const RoundingRule rounding = cj::roundingRule(member(input, "rounding", ""), "rounding");
    return cj::toJSON(GrossCompensationCalculator::calculate(segments, schedule, guarantees, rate, rounding));
}

// A meal period belongs to one workday. Its times are refused when they lie more than a week apart,
// where the penalties counted between them would run into the hundreds of thousands.
void requireOneWeek(std::initializer_list<std::optional<Instant>> times) {
    std::optional<Instant> earliest;
    std::optional<Instant> latest;
    for (const auto& time : times) {
        if (!time) continue;
        earliest = earliest ? std::min(*earliest, *time) : *time;
        latest = latest ? std::max(*latest, *time) : *time;
    }
    if (earliest && *latest - *earliest > std::chrono::days(7)) {
        throw MalformedInputError("The times of one meal period must lie within seven days of each other.");
    }
}

std::optional<Instant> timeOf(const std::optional<MealTimelineEvent>& event) {
    return event ? std::optional<Instant>(event->timestamp) : std::nullopt;
}

Json meal(const Json& input) {
    const MealPeriodRule rule = cj::mealPeriodRule(member(input, "rule", ""), "rule");
    const Json* firstMeal = optionalMember(input, "firstMeal");
    const Json* period = optionalMember(input, "period");
    if ((firstMeal == nullptr) == (period == nullptr)) {
        throw MalformedInputError("Give either \u201CfirstMeal\u201D or \u201Cperiod\u201D, not both or neither.");
    }
    if (firstMeal) {
        const FirstMealEvaluationInput times = cj::firstMealInput(*firstMeal, "firstMeal");
        requireOneWeek({times.employeeCall, times.generalCrewCall, times.mealOut});
        return cj::toJSON(MealPenaltyEvaluator::evaluateFirstMeal(rule, times));
    }
    const MealPeriodEvaluationInput times = cj::mealPeriodInput(*period, "period");
    requireOneWeek({timeOf(times.clockStart), timeOf(times.satisfactionEvent)});
    return cj::toJSON(MealPenaltyEvaluator::evaluatePeriod(rule, times));
}

Json turnaround(const Json& input) {
    const Json* priorWrap = optionalMember(input, "priorWrap");
    const Json* nextCall = optionalMember(input, "nextCall");
    TurnaroundEvaluationInput times;
    if (priorWrap) times.priorWrap = cj::instant(*priorWrap, "priorWrap");
    if (nextCall) times.nextCall = cj::instant(*nextCall, "nextCall");
    return cj::toJSON(TurnaroundEvaluator::evaluate(cj::optionalTurnaroundRule(input, ""), times));
}

Json week(const Json& input) {
    std::optional<CurrencyCode> currency;
    if (const Json* code = optionalMember(input, "currency")) currency = CurrencyCode(string(*code, "currency"));
    auto days = cj::weeklyPayrollDays(member(input, "days", ""), "days");
    std::vector<DatedMealPenaltyPeriod> periods;
    if (const Json* list = optionalMember(input, "mealPenaltyPeriods")) {
        periods = cj::datedMealPenaltyPeriods(*list, "mealPenaltyPeriods");
    }
    const WeeklyPayrollResult payroll = WeeklyPayrollAggregator::aggregate(std::move(days), currency);
    return Json{{"payroll", cj::toJSON(payroll)},
                {"mealPenalties", cj::toJSON(WeeklyMealPenaltyCompensator::compensate(periods))}};
}

Json sequence(const Json& input) {
    const Json& dates = array(member(input, "dates", ""), "dates");
    std::vector<CalendarDate> worked;
    for (std::size_t i = 0; i < dates.size(); ++i) worked.push_back(cj::date(dates[i], elementPath("dates", i)));
    const auto position = CrewWorkdaySequenceResolver::position(worked, cj::date(member(input, "date", ""), "date"));
    return Json{{"position", Json{{"ordinal", position.ordinal}}},
                {"classification", toRawValue(position.classification())}};
}

Json percentage(const Json& input) {
    const CompensationPercentage percent(decimal(member(input, "percentage", ""), "percentage"));
    return cj::toJSON(SupplementalCompensationCalculator::percentage(
        percent, cj::money(member(input, "basisAmount", ""), "basisAmount"),
        cj::roundingRule(member(input, "rounding", ""), "rounding")));
}

Json idle(const Json& input) {
    const WorkDuration compensated(integer(member(input, "compensatedSeconds", ""), "compensatedSeconds"));
    const HourlyPayRate rate(cj::money(member(input, "straightTimeHourlyRate", ""), "straightTimeHourlyRate"));
    const RateMultiplier multiplier(decimal(member(input, "straightTimeRateMultiplier", ""), "straightTimeRateMultiplier"));
    return cj::toJSON(SupplementalCompensationCalculator::idle(compensated, rate, multiplier,
                                                               cj::roundingRule(member(input, "rounding", ""), "rounding")));
}

Json holiday(const Json& input) {
    const UnworkedHolidayRule rule = cj::unworkedHolidayRule(member(input, "rule", ""), "rule");
    const HourlyPayRate rate(cj::money(member(input, "straightTimeHourlyRate", ""), "straightTimeHourlyRate"));
    return cj::toJSON(SupplementalCompensationCalculator::unworkedHoliday(
        rule, rate, cj::roundingRule(member(input, "rounding", ""), "rounding")));
}

Json fixedDaily(const Json& input) {
    std::optional<Money> configured;
    if (const Json* amount = optionalMember(input, "configuredAmount")) configured = cj::money(*amount, "configuredAmount");
    return cj::toJSON(SupplementalCompensationCalculator::fixedDaily(configured, boolean(member(input, "applies", ""), "applies")));
}

}  // namespace

const std::vector<Calculation>& all() {
    static const std::vector<Calculation> calculations{
        {"allocate", "Allocate a day's timeline segments into pay bands", allocate},
        {"target-entry", "Find when a guaranteed pay band is first entered, counted from call", targetEntry},
        {"gross", "Price a day: bands, daily and band minimums, each line rounded once", gross},
        {"meal", "Evaluate one meal period for meal penalties", meal},
        {"turnaround", "Compare the rest between wrap and the next call with the required rest", turnaround},
        {"week", "Total a week of priced days and price its meal penalties", week},
        {"sequence", "Tell which day of the crew member's workweek a date is", sequence},
        {"percentage", "A percentage of straight-time earnings, such as vacation pay", percentage},
        {"idle", "Idle pay: straight time for a compensated duration", idle},
        {"holiday", "Unworked holiday pay", holiday},
        {"fixed-daily", "A fixed daily allowance on a qualifying day", fixedDaily},
    };
    return calculations;
}

}  // namespace tessel::calculation_documents
