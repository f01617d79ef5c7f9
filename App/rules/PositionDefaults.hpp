#pragma once

#include <optional>
#include <string>
#include <vector>

#include "App/rules/RulesetDrafts.hpp"

// What a position brings to a crew member's day: its own ordinary-day schedule, changes to the minimum
// call, overtime and double time of the production's schedule, and its hourly and weekly defaults.
// Stored as JSON on the position, on a Rate Card's terms for it, and (the schedule changes only) per
// person on an engagement.
namespace tessel {

// How a position treats one provision of the day's schedule: as the production's rules (or, for a
// person, as the position) say; with its own hours, multiplier and basis; or not at all.
enum class PositionProvisionMode { inherit, custom, none };
std::string_view toRawValue(PositionProvisionMode mode) noexcept;
std::optional<PositionProvisionMode> positionProvisionModeFromRawValue(std::string_view raw) noexcept;

struct PositionProvision {
    PositionProvisionMode mode = PositionProvisionMode::inherit;
    std::optional<std::int64_t> seconds{};       // the minimum call, or the threshold the band begins at
    std::optional<Decimal> multiplier{};         // overtime and double time; absent keeps the schedule's
    std::optional<DurationBasis> basis{};        // how the threshold is measured; absent keeps the schedule's
    bool operator==(const PositionProvision&) const = default;
};

struct PositionScheduleOverrides {
    PositionProvision minimumCall{}, overtime{}, doubleTime{};
    bool empty() const noexcept;
    bool operator==(const PositionScheduleOverrides&) const = default;
};

struct PositionPayrollDefaults {
    std::optional<OrdinaryDayScheduleDraft> ordinaryDaySchedule{};
    std::optional<PositionScheduleOverrides> scheduleOverrides{};
    std::optional<bool> availability{};
    std::optional<Decimal> hourlyAmount{};
    std::string currencyCode = "USD";
    // Kept and shown; the day's calculation has no weekly overtime or weekly guarantee.
    std::optional<std::int64_t> weeklyGuaranteeSeconds{};
    std::optional<Decimal> weeklyGuaranteeAmount{};
    std::optional<std::string> weeklyOvertimeRuleID{};
    std::optional<std::int64_t> weeklyOvertimeThresholdSeconds{};
    std::optional<Decimal> weeklyOvertimeMultiplier{};
    // Whether anything here changes how a day is calculated.
    bool changesSchedule() const noexcept;
};

namespace position_defaults {

// Reads stored defaults; empty text reads as no defaults. Refuses a document that is not what the keys
// hold with MalformedInputError naming the key.
PositionPayrollDefaults read(const std::string& data);
// The stored text with the given parts replaced and every key this version does not know kept.
std::string withHourlyAmount(const std::string& data, const std::optional<Decimal>& amount, const std::string& currencyCode);
std::string withOverrides(const std::string& data, const std::optional<PositionScheduleOverrides>& overrides);

PositionScheduleOverrides readOverrides(const std::string& data);
std::string writeOverrides(const PositionScheduleOverrides& overrides);

// A person's changes over the position's: each provision the person sets wins, the rest stay the position's.
PositionScheduleOverrides merged(const PositionScheduleOverrides& position, const PositionScheduleOverrides& personal);

// The ordinary-day schedule with the changes applied: the overtime band begins at its threshold, double
// time at its, a provision set to none drops its band (or the daily minimum). Refused with
// ProductionRulesetValidationError and the schedule editor's sentence when the result is not a schedule
// (double time at or before overtime, a Golden Hour target that is gone).
OrdinaryDayScheduleDraft adjusted(const OrdinaryDayScheduleDraft& schedule, const PositionScheduleOverrides& overrides);

}  // namespace position_defaults
}  // namespace tessel
