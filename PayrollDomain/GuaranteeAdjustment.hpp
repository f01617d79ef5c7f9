#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "DailyMinimumGuarantee.hpp"
#include "MinimumBandGuarantee.hpp"
#include "PayBandAllocation.hpp"

namespace tessel {

// One band's paid time and where it came from.
// paidDuration = actualAllocatedDuration + dailyMinimumGuaranteedDuration + bandSpecificGuaranteedDuration.
struct PayBandCompensationBasisComponent {
    RuleID payBandRuleID;
    RateMultiplier multiplier;
    WorkDuration actualAllocatedDuration;
    WorkDuration dailyMinimumGuaranteedDuration;
    WorkDuration bandSpecificGuaranteedDuration;
    WorkDuration guaranteedAdditionalDuration;  // the two guaranteed parts together
    WorkDuration paidDuration;
    std::optional<RuleID> appliedGuaranteeRuleID;
    bool operator==(const PayBandCompensationBasisComponent&) const noexcept = default;
};

struct DailyMinimumGuaranteeTraceEntry {
    enum class Reason {
        appliedMinimumNotMet,
        appliedConfirmedWorkedDay,
        notAppliedNoActualWork,
        notAppliedMinimumMetOrExceeded,
    };

    RuleID guaranteeRuleID;
    WorkDuration actualDailyDuration;
    WorkDuration minimumPaidDuration;
    WorkDuration guaranteedAdditionalDuration;
    WorkDuration compensationBasisDuration;
    Reason reason;
    bool operator==(const DailyMinimumGuaranteeTraceEntry&) const noexcept = default;
};

std::string_view toRawValue(DailyMinimumGuaranteeTraceEntry::Reason reason) noexcept;
// The review's words for a daily minimum reason.
std::string_view description(DailyMinimumGuaranteeTraceEntry::Reason reason) noexcept;
// The review's words when no daily minimum was given.
inline constexpr std::string_view noDailyMinimumAdjustmentDescription = "No guarantee adjustment was produced.";

// Which guarantee a daily minimum came from, in the review's words.
enum class DailyMinimumGuaranteeSource { rulesetDailyGuarantee, personalDailyGuarantee };
std::string_view description(DailyMinimumGuaranteeSource source) noexcept;

struct DailyMinimumGuaranteeAdjustmentResult {
    PayBandAllocationResult actualAllocation;
    PayBandAllocationResult compensationBasisAllocation;
    std::vector<PayBandCompensationBasisComponent> components;
    std::optional<DailyMinimumGuaranteeTraceEntry> traceEntry;  // absent when no guarantee was given
};

struct MinimumBandGuaranteeTraceEntry {
    enum class Reason {
        appliedMinimumNotMet,
        notAppliedNoCompensationBasisAllocation,
        notAppliedMinimumMetOrExceeded,
        notAppliedMinimumSatisfiedByExistingPaidDuration,
    };

    RuleID guaranteeRuleID;
    RuleID targetPayBandRuleID;
    WorkDuration actualDuration;
    WorkDuration dailyMinimumGuaranteedDuration;
    WorkDuration preBandGuaranteePaidDuration;
    WorkDuration guaranteedAdditionalDuration;
    WorkDuration paidDuration;
    Reason reason;
    bool operator==(const MinimumBandGuaranteeTraceEntry&) const noexcept = default;
};

std::string_view toRawValue(MinimumBandGuaranteeTraceEntry::Reason reason) noexcept;
// The review's words for a band minimum reason.
std::string_view description(MinimumBandGuaranteeTraceEntry::Reason reason) noexcept;

struct MinimumBandGuaranteeAdjustmentResult {
    PayBandAllocationResult originalAllocation;
    std::vector<PayBandCompensationBasisComponent> components;
    std::vector<MinimumBandGuaranteeTraceEntry> traceEntries;  // one per guarantee
};

}  // namespace tessel
