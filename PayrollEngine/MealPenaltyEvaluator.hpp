#pragma once

#include "PayrollDomain/MealPeriod.hpp"

namespace tessel {

// Decides for one meal period when its clock started, when the meal was due, whether called grace
// protects it, and how many penalties it has. Every started penalty interval counts. Nothing is
// thrown: missing or inconsistent times become an incomplete or invalid status with no occurrences.
class MealPenaltyEvaluator {
public:
    // A later meal (or any period whose clock is already known); its grace always applies.
    static MealPeriodEvaluationResult evaluatePeriod(const MealPeriodRule& rule, const MealPeriodEvaluationInput& input);

    // The first meal: resolves the clock (employee call, or General Crew Call after an NDB precall)
    // and the grace disposition, then evaluates it as period 1.
    static MealPeriodEvaluationResult evaluateFirstMeal(const MealPeriodRule& rule, const FirstMealEvaluationInput& input);
};

}  // namespace tessel
