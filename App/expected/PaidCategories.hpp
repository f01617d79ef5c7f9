#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "App/expected/PayrollReviewRecords.hpp"

// The week's paid categories beyond the pay bands: meal penalties, box rental, each allowance, idle and
// holiday pay and vacation pay. With the band categories they are every line of the expected pay, so
// pay comparison has a category to pair with each printed line, and together they make the gross.
namespace tessel::paid_categories {

// Rule identifiers of the categories that no pay band names. They are stable, like the band rule ids:
// pay comparison and payroll issues key on them.
inline constexpr std::string_view boxRentalRuleID = "engagement.box-rental";
inline constexpr std::string_view idleRuleID = "production.idle";
std::string provisionRuleID(CompensationProvisionKind kind);  // "production.provision.perDiem"
std::string holidayRuleID(HolidayRuleContext context);         // "production.holiday.dailyLocal"

// The titles the review gives them; those with a comparison concept use the concept's title.
inline constexpr std::string_view mealPenaltyTitle = "Meal Penalty";
inline constexpr std::string_view boxRentalTitle = "Box / Kit Rental";
inline constexpr std::string_view idleTitle = "Idle Pay";
inline constexpr std::string_view holidayTitle = "Holiday Pay";

// Appends the week's other paid categories to its band categories, in the order meal penalties, box
// rental, daily allowances (in the order first paid), idle pay, holiday pay, vacation pay.
void addOtherCategories(WeeklyCrewPayrollReview& review);

// The sum of the categories' money, starting from `zero`: the estimated gross of the week.
Money sum(const std::vector<PayrollReviewCategory>& categories, const Money& zero);

}  // namespace tessel::paid_categories
