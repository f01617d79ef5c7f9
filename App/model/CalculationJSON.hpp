#pragma once

#include "App/model/JSONFields.hpp"
#include "PayrollDomain/DomainError.hpp"
#include "PayrollDomain/GrossCompensation.hpp"
#include "PayrollDomain/MealPeriod.hpp"
#include "PayrollDomain/PayBandTargetEntry.hpp"
#include "PayrollDomain/SupplementalCompensation.hpp"
#include "PayrollDomain/Turnaround.hpp"
#include "PayrollDomain/WeeklyMealPenalty.hpp"
#include "PayrollDomain/WeeklyPayroll.hpp"

// The machine form of the calculation records: field names as the records name them, durations as
// integer seconds under the name with "Seconds" appended, decimals as text, enumerations by case name,
// absent optionals omitted. Decoding throws MalformedInputError for a document of the wrong shape and
// the value type's own error for a value the type refuses. An enumeration case with associated values
// is written as an object: {"case": name, values…}.
namespace tessel::calculation_json {

// Shared pieces.
Money money(const Json& value, const std::string& path);
RoundingRule roundingRule(const Json& value, const std::string& path);
Instant instant(const Json& value, const std::string& path);
CalendarDate date(const Json& value, const std::string& path);
Json toJSON(const Money& money);
Json toJSON(const RoundingRule& rule);
Json instantJSON(Instant instant);
Json dateJSON(CalendarDate date);

PayBandSchedule payBandSchedule(const Json& bands, const std::string& path);
PayBandAllocationInput allocationInput(const Json& segments, const std::string& path);
MinimumBandGuarantee minimumBandGuarantee(const Json& guarantee, const std::string& path);

Json toJSON(const PayBandEntryThreshold& threshold);
Json toJSON(const PayBandAllocationComponent& component);
Json toJSON(const PayBandAllocationTraceEntry& entry);
Json toJSON(const PayBandAllocationTrace& trace);
// The components and the trace; the schedule and input are the caller's own.
Json toJSON(const PayBandAllocationResult& result);
Json toJSON(const PayBandTargetEntry& entry);

// Gross pay of a day and of a week.
std::optional<DailyMinimumGuarantee> optionalDailyMinimum(const Json& parent, const std::string& path);
std::vector<MinimumBandGuarantee> bandGuarantees(const Json& parent, const std::string& path);
PayBandCompensationComponent compensationComponent(const Json& value, const std::string& path);
std::vector<WeeklyPayrollDay> weeklyPayrollDays(const Json& days, const std::string& path);
Json toJSON(const DailyMinimumGuaranteeTraceEntry& entry);
Json toJSON(const MinimumBandGuaranteeTraceEntry& entry);
Json toJSON(const PayBandCompensationComponent& component);
Json toJSON(const GrossCompensationTraceEntry& entry);
Json toJSON(const GrossCompensationResult& result);
Json toJSON(const WeeklyPayrollDay& day);
Json toJSON(const WeeklyPayrollCategoryContributor& contributor);
Json toJSON(const WeeklyPayrollCategoryTotal& total);
Json toJSON(const WeeklyPayrollAggregationTraceEntry& entry);
Json toJSON(const WeeklyPayrollResult& result);

// Meals, meal penalties of a week, turnaround.
MealPeriodRule mealPeriodRule(const Json& value, const std::string& path);
FirstMealEvaluationInput firstMealInput(const Json& value, const std::string& path);
MealPeriodEvaluationInput mealPeriodInput(const Json& value, const std::string& path);
MealPeriodEvaluationResult mealPeriodResult(const Json& value, const std::string& path);
std::vector<DatedMealPenaltyPeriod> datedMealPenaltyPeriods(const Json& periods, const std::string& path);
std::optional<TurnaroundRule> optionalTurnaroundRule(const Json& parent, const std::string& path);
Json toJSON(const MealTimelineEvent& event);
Json toJSON(const MealPenaltyOccurrence& occurrence);
Json toJSON(const MealPeriodEvaluationTrace& trace);
Json toJSON(const MealPeriodEvaluationResult& result);
Json toJSON(const WeeklyMealPenaltyOccurrence& occurrence);
Json toJSON(const WeeklyMealPenaltyResult& result);
Json toJSON(const TurnaroundEvaluationResult& result);

// The supplemental calculators.
UnworkedHolidayRule unworkedHolidayRule(const Json& value, const std::string& path);
Json toJSON(const FixedDailyCompensationResult& result);
Json toJSON(const IdleCompensationResult& result);
Json toJSON(const UnworkedHolidayResult& result);
Json toJSON(const PercentageCompensationResult& result);

// {"error": case name, payload fields…, "message": the sentence}
Json errorJSON(const DomainError& error);

template <typename Item>
Json listJSON(const std::vector<Item>& items) {
    Json list = Json::array();
    for (const auto& item : items) list.push_back(toJSON(item));
    return list;
}

}  // namespace tessel::calculation_json
