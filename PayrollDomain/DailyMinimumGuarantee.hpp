#pragma once

#include <optional>
#include <string_view>

#include "RuleID.hpp"
#include "WorkDuration.hpp"

namespace tessel {

enum class DailyMinimumGuaranteeValidationErrorCase { minimumPaidDurationMustBePositive };

class DailyMinimumGuaranteeValidationError : public CaseError<DailyMinimumGuaranteeValidationErrorCase> {
public:
    using Case = DailyMinimumGuaranteeValidationErrorCase;
    DailyMinimumGuaranteeValidationError();
};

// A day is paid at least this much time.
class DailyMinimumGuarantee {
public:
    using ValidationError = DailyMinimumGuaranteeValidationError;

    DailyMinimumGuarantee(RuleID ruleID, WorkDuration minimumPaidDuration);

    const RuleID& ruleID() const noexcept { return ruleID_; }
    WorkDuration minimumPaidDuration() const noexcept { return minimumPaidDuration_; }
    bool operator==(const DailyMinimumGuarantee&) const noexcept = default;

private:
    RuleID ruleID_;
    WorkDuration minimumPaidDuration_;
};

enum class DailyMinimumGuaranteeEligibility {
    actualWorkRequired,  // the minimum applies only to a day with positive actual work
    confirmedWorkedDay,  // the day is confirmed as worked, so the minimum applies even with no recorded work
};

std::string_view toRawValue(DailyMinimumGuaranteeEligibility eligibility) noexcept;
std::optional<DailyMinimumGuaranteeEligibility> dailyMinimumGuaranteeEligibilityFromRawValue(std::string_view raw) noexcept;

}  // namespace tessel
