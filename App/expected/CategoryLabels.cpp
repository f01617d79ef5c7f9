#include "CategoryLabels.hpp"

namespace tessel {

std::string displayLabel(const PayrollReviewCategory& category, const PayrollCategoryLabelPreferences& preferences) {
    if (!category.comparisonConcept) return category.label;
    const auto shown = [&](PayrollCategoryLabelPreference preference, const char* abbreviation) {
        return preference == PayrollCategoryLabelPreference::multiplier ? category.multiplier.value().toString() + "x"
                                                                        : std::string(abbreviation);
    };
    switch (*category.comparisonConcept) {
        case PayComparisonConcept::straight: return shown(preferences.straightTime, "ST");
        case PayComparisonConcept::overtime: return shown(preferences.overtime, "OT");
        case PayComparisonConcept::doubleTime: return shown(preferences.doubleTime, "DT");
        default: return category.label;
    }
}

}  // namespace tessel
