#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/model/Uuid.hpp"
#include "PayrollDomain/Decimal.hpp"
#include "PayrollDomain/Instant.hpp"

// The core entities of a production as they are stored. Relationships are held as the related entity's
// identifier; enumerations as their raw value, read back through the fallbacks below.
namespace tessel {

enum class DTSTimeDisplay { payrollDecimal, clockTime };
enum class EmploymentSchedule { daily, weekly };
enum class EmploymentLocation { local, distant };
enum class CrewParticipation { fullTime, dayplayer };
enum class RulesLocality { local, distant };
enum class PayrollDayActivityKind { travel, idleAvailable, personalUnavailable, holiday };
enum class CrewDailyWorkMode { timed, worked, prep };
enum class MealWorkLocation { studio, location };
enum class CompensationProvisionKind { cellPhoneAllowance, perDiem, mileage, vacationPay };

std::string_view toRawValue(DTSTimeDisplay value) noexcept;
std::string_view toRawValue(EmploymentSchedule value) noexcept;
std::string_view toRawValue(EmploymentLocation value) noexcept;
std::string_view toRawValue(CrewParticipation value) noexcept;
std::string_view toRawValue(RulesLocality value) noexcept;
std::string_view toRawValue(PayrollDayActivityKind value) noexcept;
std::string_view toRawValue(CrewDailyWorkMode value) noexcept;
std::string_view toRawValue(MealWorkLocation value) noexcept;
std::string_view toRawValue(CompensationProvisionKind value) noexcept;

// The name an activity kind is shown by ("Travel", "Idle", "Personal / Unavailable", "Holiday").
std::string_view label(PayrollDayActivityKind value) noexcept;
// The label of a stored activity kind; an unknown stored kind as it was stored.
std::string activityKindLabel(std::string_view rawValue);
// The name a provision kind is shown by ("Cell Phone Allowance", "Per Diem", "Mileage", "Vacation Pay").
std::string_view label(CompensationProvisionKind value) noexcept;

// Reading raw values: nothing for an unknown text, so that each reader chooses its fallback.
template <typename Enum>
std::optional<Enum> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<DTSTimeDisplay> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<EmploymentSchedule> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<EmploymentLocation> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<CrewParticipation> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<RulesLocality> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<PayrollDayActivityKind> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<CrewDailyWorkMode> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<MealWorkLocation> fromRawValue(std::string_view raw) noexcept;
template <>
std::optional<CompensationProvisionKind> fromRawValue(std::string_view raw) noexcept;

struct Production {
    Uuid id;
    std::string name;
    Instant createdAt;
    std::optional<CalendarDate> startDate{};
    DTSTimeDisplay dtsTimeDisplay = DTSTimeDisplay::payrollDecimal;  // unknown stored values read as payroll decimal
    std::int64_t defaultLunchDurationSeconds = 1800;
    std::string currencyCode = "USD";
};

struct CrewMember {
    Uuid id;
    Uuid productionID;
    std::string displayName;
    std::optional<Instant> retiredAt{};
    std::int64_t displayOrder = 0;
    bool isActive() const noexcept { return !retiredAt; }
};

struct ProductionEngagement {
    Uuid id;
    Uuid productionID;
    std::optional<Uuid> crewMemberID{};
    std::optional<Uuid> classificationID{};
    CalendarDate effectiveFrom;
    std::optional<CalendarDate> effectiveThrough{};
    std::string notes{};
    EmploymentSchedule employmentSchedule = EmploymentSchedule::daily;       // fallback: daily
    std::optional<EmploymentLocation> employmentLocation{};                     // unknown reads as absent
    CrewParticipation crewParticipation = CrewParticipation::fullTime;        // fallback: full time
    std::optional<RulesLocality> rulesLocalityOverride{};                       // unknown: the ruleset's default
    std::optional<CalendarDate> dtsEligibilityStartsAt{};
    std::optional<std::int64_t> regularPrecallDurationSeconds{};
    std::optional<std::int64_t> regularWrapoutDurationSeconds{};

    // In force on the date: from effectiveFrom through effectiveThrough, when there is one.
    bool appliesOn(CalendarDate date) const noexcept;
};

struct EngagementPayRate {
    Uuid id;
    Uuid engagementID;
    CalendarDate effectiveDate;
    Decimal hourlyAmount;
    std::string currencyCode;
};

struct ProductionWorkweekDefinition {
    Uuid id;
    Uuid productionID;
    CalendarDate effectiveFrom;
    int startWeekday = 2;  // 1 = Sunday … 7 = Saturday
    int startHour = 0;
    int startMinute = 0;
    bool isCurrent = false;
};

struct PayrollWeek {
    Uuid id;
    Uuid productionID;
    Instant startDate;
    Uuid workweekSourceDefinitionID;
    int workweekStartWeekday = 2;
    int workweekStartHour = 0;
    int workweekStartMinute = 0;
};

struct Workday {
    Uuid id;
    Uuid payrollWeekID;
    CalendarDate calendarDate;
    std::optional<Instant> generalCrewCall{};
    bool generalCrewCallWasAutofilled = false;
    std::optional<Instant> officialLunchOut{};
    bool officialLunchOutWasAutofilled = false;
    bool firstMealGraceWasCalled = false;
    std::optional<Instant> officialLunchIn{};
    bool officialLunchInWasAutofilled = false;
    std::optional<Instant> wrap{};
    std::optional<std::int64_t> sharedTravelDurationSeconds{};
};

struct CrewDailyEntry {
    Uuid id;
    Uuid workdayID;
    std::optional<Uuid> crewMemberID{};
    std::optional<Uuid> engagementID{};
    std::optional<Instant> callOverride{};
    std::optional<Instant> lunchOutOverride{};
    std::optional<Instant> lunchInOverride{};
    std::optional<Instant> wrapOverride{};
    std::optional<RulesLocality> rulesLocalityOverride{};
    bool nonDeductibleBreakfast = false;
    std::int64_t displayOrder = 0;
    bool callOverrideWasAutofilled = false;
    bool wrapOverrideWasAutofilled = false;
};

struct PayrollDayActivity {
    Uuid id;
    Uuid payrollWeekID;
    CalendarDate calendarDate;
    std::string kindRawValue;  // kept as stored: an unknown kind is shown, not guessed
    std::optional<std::int64_t> travelDurationSeconds{};
    std::optional<Uuid> crewMemberID{};
    std::optional<Uuid> engagementID{};

    std::optional<PayrollDayActivityKind> kind() const noexcept { return fromRawValue<PayrollDayActivityKind>(kindRawValue); }
};

}  // namespace tessel
