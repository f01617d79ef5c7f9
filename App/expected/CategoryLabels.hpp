#pragma once

#include <string>

#include "App/expected/PayrollReviewRecords.hpp"
#include "App/model/UserSettings.hpp"

namespace tessel {

// The label a category is shown by. Straight time, overtime and double time follow the user's
// preference: the payroll abbreviation ("ST", "OT", "DT") or the category's multiplier ("1.5x"); any
// other category keeps the label its ruleset gives it.
std::string displayLabel(const PayrollReviewCategory& category, const PayrollCategoryLabelPreferences& preferences);

}  // namespace tessel
