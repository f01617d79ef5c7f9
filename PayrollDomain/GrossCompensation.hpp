#pragma once

#include <optional>
#include <vector>

#include "GuaranteeAdjustment.hpp"
#include "HourlyPayRate.hpp"
#include "RoundingRule.hpp"

namespace tessel {

// One band of a priced day.
struct PayBandCompensationComponent {
    RuleID ruleID;
    WorkDuration actualAllocatedDuration;
    WorkDuration dailyMinimumGuaranteedDuration;
    WorkDuration bandSpecificGuaranteedDuration;
    WorkDuration guaranteedAdditionalDuration;
    WorkDuration paidDuration;
    RateMultiplier multiplier;
    Money unroundedAmount;
    Money roundedAmount;
    RoundingRule roundingRule;
    bool operator==(const PayBandCompensationComponent&) const noexcept = default;
};

struct GrossCompensationTraceEntry {
    RuleID ruleID;
    WorkDuration actualAllocatedDuration;
    WorkDuration dailyMinimumGuaranteedDuration;
    WorkDuration bandSpecificGuaranteedDuration;
    WorkDuration guaranteedAdditionalDuration;
    WorkDuration paidDuration;
    Money hourlyPayRate;
    RateMultiplier multiplier;
    Money unroundedAmount;
    Money roundedAmount;
    RoundingRule roundingRule;
};

struct GrossCompensationTrace {
    enum class TotalCalculationOrder { sumIndividuallyRoundedComponents };

    WorkDuration suppliedDuration;
    Money hourlyPayRate;
    PayBandAllocationTrace allocation;
    PayBandAllocationTrace compensationBasisAllocation;
    std::optional<DailyMinimumGuaranteeTraceEntry> dailyMinimumGuaranteeAdjustment;
    std::vector<MinimumBandGuaranteeTraceEntry> guaranteeAdjustments;
    std::vector<GrossCompensationTraceEntry> entries;
    TotalCalculationOrder totalCalculationOrder = TotalCalculationOrder::sumIndividuallyRoundedComponents;
    Money total;
};

std::string_view toRawValue(GrossCompensationTrace::TotalCalculationOrder order) noexcept;

struct GrossCompensationResult {
    std::vector<PayBandCompensationComponent> components;
    Money total;  // always the sum of the rounded lines
    GrossCompensationTrace trace;
};

struct WeeklyGuarantee {
    WorkDuration guaranteedDuration;
    std::optional<Money> guaranteedAmount;
};

struct WeeklyOvertimeRule {
    RuleID ruleID;
    WorkDuration threshold;
    RateMultiplier multiplier;
};

// What an engagement is paid by. Weekly guarantees and weekly overtime are carried for the review;
// the weekly aggregation does not apply them.
struct EmploymentPayrollRules {
    std::optional<HourlyPayRate> hourlyRate;
    PayBandSchedule ordinaryDaySchedule;
    std::optional<DailyMinimumGuarantee> dailyMinimum;
    std::optional<WeeklyGuarantee> weeklyGuarantee;
    std::optional<WeeklyOvertimeRule> weeklyOvertime;
};

}  // namespace tessel
