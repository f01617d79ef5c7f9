#include "PayComparisonConcept.hpp"

namespace tessel {

std::string_view toRawValue(PayComparisonConcept concept_) noexcept {
    switch (concept_) {
        case PayComparisonConcept::straight: return "straight";
        case PayComparisonConcept::overtime: return "overtime";
        case PayComparisonConcept::doubleTime: return "double";
        case PayComparisonConcept::meal: return "meal";
        case PayComparisonConcept::mileage: return "mileage";
        case PayComparisonConcept::cellPhone: return "cellPhone";
        case PayComparisonConcept::vacation: return "vacation";
        case PayComparisonConcept::boxRental: return "boxRental";
        case PayComparisonConcept::holiday: return "holiday";
    }
    return {};
}

}  // namespace tessel
