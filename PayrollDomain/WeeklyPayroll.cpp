#include "WeeklyPayroll.hpp"

namespace tessel {

std::string_view toRawValue(GrossCompensationTrace::TotalCalculationOrder) noexcept {
    return "sumIndividuallyRoundedComponents";
}

CrewWorkdaySequencePosition::Classification CrewWorkdaySequencePosition::classification() const noexcept {
    if (ordinal <= 5) return Classification::ordinary;
    if (ordinal == 6) return Classification::sixth;
    if (ordinal == 7) return Classification::seventh;
    return Classification::additional;
}

std::string_view toRawValue(CrewWorkdaySequencePosition::Classification classification) noexcept {
    using Classification = CrewWorkdaySequencePosition::Classification;
    switch (classification) {
        case Classification::additional: return "additional";
        case Classification::ordinary: return "ordinary";
        case Classification::sixth: return "sixth";
        case Classification::seventh: return "seventh";
    }
    return {};
}

}  // namespace tessel
