#pragma once

#include "PayrollDomain/Turnaround.hpp"

namespace tessel {

// Compares the rest between one day's wrap and the next call with the required rest. Does not throw.
class TurnaroundEvaluator {
public:
    static TurnaroundEvaluationResult evaluate(const std::optional<TurnaroundRule>& rule,
                                               const TurnaroundEvaluationInput& input);
};

}  // namespace tessel
