#pragma once

#include <string_view>

namespace tessel {

// What an expected pay category is, so that pay comparison can pair it with the printed lines of a pay
// stub. `doubleTime` is written "double" (a C++ keyword cannot name the case).
enum class PayComparisonConcept { straight, overtime, doubleTime, meal, mileage, cellPhone, vacation, boxRental, holiday };

std::string_view toRawValue(PayComparisonConcept concept_) noexcept;

}  // namespace tessel
