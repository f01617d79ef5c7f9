#pragma once

#include <vector>

#include "PayrollDomain/WeeklyMealPenalty.hpp"

namespace tessel {

enum class WeeklyMealPenaltyCompensationErrorCase { inconsistentCurrency, inconsistentWeeklyLimit };

class WeeklyMealPenaltyCompensationError : public CaseError<WeeklyMealPenaltyCompensationErrorCase> {
public:
    using Case = WeeklyMealPenaltyCompensationErrorCase;
    explicit WeeklyMealPenaltyCompensationError(Case errorCase);
};

// Prices one crew member's meal penalties of one workweek: numbered across the week in time order,
// fixed amounts up to the weekly limit, and marked for contract verification past it.
class WeeklyMealPenaltyCompensator {
public:
    using Error = WeeklyMealPenaltyCompensationError;

    static WeeklyMealPenaltyResult compensate(const std::vector<DatedMealPenaltyPeriod>& periods);
};

}  // namespace tessel
