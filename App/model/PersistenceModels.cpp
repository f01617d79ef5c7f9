#include "PersistenceModels.hpp"

#include <array>
#include <utility>

namespace tessel {
namespace {

template <typename Enum, std::size_t N>
using Names = std::array<std::pair<Enum, std::string_view>, N>;

constexpr Names<DTSTimeDisplay, 2> dtsTimeDisplayNames{{{DTSTimeDisplay::payrollDecimal, "payrollDecimal"},
                                                        {DTSTimeDisplay::clockTime, "clockTime"}}};
constexpr Names<EmploymentSchedule, 2> scheduleNames{{{EmploymentSchedule::daily, "daily"}, {EmploymentSchedule::weekly, "weekly"}}};
constexpr Names<EmploymentLocation, 2> locationNames{{{EmploymentLocation::local, "local"}, {EmploymentLocation::distant, "distant"}}};
constexpr Names<CrewParticipation, 2> participationNames{{{CrewParticipation::fullTime, "fullTime"},
                                                          {CrewParticipation::dayplayer, "dayplayer"}}};
constexpr Names<RulesLocality, 2> localityNames{{{RulesLocality::local, "local"}, {RulesLocality::distant, "distant"}}};
constexpr Names<PayrollDayActivityKind, 4> activityNames{{{PayrollDayActivityKind::travel, "travel"},
                                                          {PayrollDayActivityKind::idleAvailable, "idleAvailable"},
                                                          {PayrollDayActivityKind::personalUnavailable, "personalUnavailable"},
                                                          {PayrollDayActivityKind::holiday, "holiday"}}};
constexpr Names<CrewDailyWorkMode, 3> workModeNames{{{CrewDailyWorkMode::timed, "timed"},
                                                     {CrewDailyWorkMode::worked, "worked"},
                                                     {CrewDailyWorkMode::prep, "prep"}}};
constexpr Names<MealWorkLocation, 2> mealLocationNames{{{MealWorkLocation::studio, "studio"},
                                                        {MealWorkLocation::location, "location"}}};
constexpr Names<CompensationProvisionKind, 4> provisionNames{{{CompensationProvisionKind::cellPhoneAllowance, "cellPhoneAllowance"},
                                                              {CompensationProvisionKind::perDiem, "perDiem"},
                                                              {CompensationProvisionKind::mileage, "mileage"},
                                                              {CompensationProvisionKind::vacationPay, "vacationPay"}}};

template <typename Enum, std::size_t N>
std::string_view nameOf(const Names<Enum, N>& names, Enum value) noexcept {
    for (const auto& [candidate, name] : names) {
        if (candidate == value) return name;
    }
    return {};
}

template <typename Enum, std::size_t N>
std::optional<Enum> valueOf(const Names<Enum, N>& names, std::string_view raw) noexcept {
    for (const auto& [value, name] : names) {
        if (name == raw) return value;
    }
    return std::nullopt;
}

}  // namespace

std::string_view toRawValue(DTSTimeDisplay value) noexcept { return nameOf(dtsTimeDisplayNames, value); }
std::string_view toRawValue(EmploymentSchedule value) noexcept { return nameOf(scheduleNames, value); }
std::string_view toRawValue(EmploymentLocation value) noexcept { return nameOf(locationNames, value); }
std::string_view toRawValue(CrewParticipation value) noexcept { return nameOf(participationNames, value); }
std::string_view toRawValue(RulesLocality value) noexcept { return nameOf(localityNames, value); }
std::string_view toRawValue(PayrollDayActivityKind value) noexcept { return nameOf(activityNames, value); }
std::string_view toRawValue(CrewDailyWorkMode value) noexcept { return nameOf(workModeNames, value); }
std::string_view toRawValue(MealWorkLocation value) noexcept { return nameOf(mealLocationNames, value); }
std::string_view toRawValue(CompensationProvisionKind value) noexcept { return nameOf(provisionNames, value); }

std::string_view label(PayrollDayActivityKind value) noexcept {
    switch (value) {
        case PayrollDayActivityKind::travel: return "Travel";
        case PayrollDayActivityKind::idleAvailable: return "Idle";
        case PayrollDayActivityKind::personalUnavailable: return "Personal / Unavailable";
        case PayrollDayActivityKind::holiday: return "Holiday";
    }
    return "Activity";
}

std::string activityKindLabel(std::string_view rawValue) {
    const auto kind = fromRawValue<PayrollDayActivityKind>(rawValue);
    return std::string(kind ? label(*kind) : rawValue);
}

std::string_view label(CompensationProvisionKind value) noexcept {
    switch (value) {
        case CompensationProvisionKind::cellPhoneAllowance: return "Cell Phone Allowance";
        case CompensationProvisionKind::perDiem: return "Per Diem";
        case CompensationProvisionKind::mileage: return "Mileage";
        case CompensationProvisionKind::vacationPay: return "Vacation Pay";
    }
    return "Compensation";
}

template <>
std::optional<DTSTimeDisplay> fromRawValue(std::string_view raw) noexcept { return valueOf(dtsTimeDisplayNames, raw); }
template <>
std::optional<EmploymentSchedule> fromRawValue(std::string_view raw) noexcept { return valueOf(scheduleNames, raw); }
template <>
std::optional<EmploymentLocation> fromRawValue(std::string_view raw) noexcept { return valueOf(locationNames, raw); }
template <>
std::optional<CrewParticipation> fromRawValue(std::string_view raw) noexcept { return valueOf(participationNames, raw); }
template <>
std::optional<RulesLocality> fromRawValue(std::string_view raw) noexcept { return valueOf(localityNames, raw); }
template <>
std::optional<PayrollDayActivityKind> fromRawValue(std::string_view raw) noexcept { return valueOf(activityNames, raw); }
template <>
std::optional<CrewDailyWorkMode> fromRawValue(std::string_view raw) noexcept { return valueOf(workModeNames, raw); }
template <>
std::optional<MealWorkLocation> fromRawValue(std::string_view raw) noexcept { return valueOf(mealLocationNames, raw); }
template <>
std::optional<CompensationProvisionKind> fromRawValue(std::string_view raw) noexcept { return valueOf(provisionNames, raw); }

bool ProductionEngagement::appliesOn(CalendarDate date) const noexcept {
    const auto day = std::chrono::sys_days(date);
    if (std::chrono::sys_days(effectiveFrom) > day) return false;
    return !effectiveThrough || std::chrono::sys_days(*effectiveThrough) >= day;
}

}  // namespace tessel
