#include "PayComparisonConcept.hpp"

#include <array>
#include <utility>

namespace tessel {
namespace {

struct Names {
    PayComparisonConcept concept_;
    std::string_view raw;
    std::string_view title;
};

constexpr std::array<Names, 9> names{{{PayComparisonConcept::straight, "straight", "Straight Time"},
                                      {PayComparisonConcept::overtime, "overtime", "Overtime"},
                                      {PayComparisonConcept::doubleTime, "double", "Double Time"},
                                      {PayComparisonConcept::meal, "meal", "Meal Penalty"},
                                      {PayComparisonConcept::mileage, "mileage", "Mileage"},
                                      {PayComparisonConcept::cellPhone, "cellPhone", "Cell Phone Allowance"},
                                      {PayComparisonConcept::vacation, "vacation", "Vacation Pay"},
                                      {PayComparisonConcept::boxRental, "boxRental", "Box / Kit Rental"},
                                      {PayComparisonConcept::holiday, "holiday", "Holiday Pay"}}};

const Names& namesOf(PayComparisonConcept concept_) noexcept { return names[static_cast<std::size_t>(concept_)]; }

}  // namespace

std::string_view toRawValue(PayComparisonConcept concept_) noexcept { return namesOf(concept_).raw; }

std::string_view title(PayComparisonConcept concept_) noexcept { return namesOf(concept_).title; }

std::optional<PayComparisonConcept> payComparisonConceptFromRawValue(std::string_view raw) noexcept {
    for (const auto& n : names) {
        if (n.raw == raw) return n.concept_;
    }
    return std::nullopt;
}

}  // namespace tessel
