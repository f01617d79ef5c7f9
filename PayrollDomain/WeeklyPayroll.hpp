#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "GrossCompensation.hpp"

namespace tessel {

struct WeeklyPayrollDay {
    int dayIndex = 0;
    WorkDuration actualWorkedDuration;
    std::vector<PayBandCompensationComponent> components;
    Money compensationAmount;
};

struct WeeklyPayrollCategoryContributor {
    int dayIndex = 0;
    WorkDuration actualDuration;
    WorkDuration dailyMinimumGuaranteedDuration;
    WorkDuration bandSpecificGuaranteedDuration;
    WorkDuration paidDuration;
    Money compensationAmount;
};

struct WeeklyPayrollCategoryTotal {
    RuleID ruleID;
    RateMultiplier multiplier;
    WorkDuration actualDuration;
    WorkDuration dailyMinimumGuaranteedDuration;
    WorkDuration bandSpecificGuaranteedDuration;
    WorkDuration totalGuaranteedDuration;
    WorkDuration paidDuration;
    Money compensationAmount;
    std::vector<WeeklyPayrollCategoryContributor> contributors;
};

struct WeeklyPayrollAggregationTraceEntry {
    RuleID ruleID;
    std::vector<int> contributorDayIndexes;
    WorkDuration paidDuration;
    Money compensationAmount;
};

struct WeeklyPayrollAggregationTrace {
    int inputDayCount = 0;
    std::vector<WeeklyPayrollAggregationTraceEntry> entries;
    Money totalCompensation;
};

struct WeeklyPayrollResult {
    std::vector<WeeklyPayrollDay> days;
    std::vector<WeeklyPayrollCategoryTotal> categoryTotals;  // by band, in order of first appearance
    Money totalCompensation;
    WeeklyPayrollAggregationTrace trace;
};

// A worked date's place among the crew member's distinct worked dates of the workweek.
struct CrewWorkdaySequencePosition {
    enum class Classification { additional, ordinary, sixth, seventh };

    int ordinal = 1;
    Classification classification() const noexcept;
    bool operator==(const CrewWorkdaySequencePosition&) const noexcept = default;
};

std::string_view toRawValue(CrewWorkdaySequencePosition::Classification classification) noexcept;

}  // namespace tessel
