#include "PayrollDecimalTime.hpp"

#include <charconv>
#include <cstdio>
#include <limits>

#include "App/model/EntryText.hpp"
#include "PayrollDomain/RoundingRule.hpp"

namespace tessel {
namespace {

using namespace std::chrono;

using entry_text::trimmed;

bool allDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

}  // namespace

namespace payroll_decimal_time {

std::optional<Instant> parseTimeOfDay(std::string_view text, CalendarDate anchor) {
    const std::string_view entry = trimmed(text);
    if (entry.empty() || entry.front() == '-') return std::nullopt;
    const auto point = entry.find('.');
    const std::string_view hoursText = entry.substr(0, point);
    const std::string_view tenthText = point == std::string_view::npos ? std::string_view("0") : entry.substr(point + 1);
    if (!allDigits(hoursText)) return std::nullopt;
    if (tenthText.size() != 1 || !allDigits(tenthText)) return std::nullopt;
    int hour = 0;
    const auto [end, error] = std::from_chars(hoursText.data(), hoursText.data() + hoursText.size(), hour);
    if (error != std::errc() || hour > 47) return std::nullopt;
    const int tenth = tenthText.front() - '0';
    sys_days day = sys_days(anchor);
    if (hour >= 24) {
        day += days(1);
        hour -= 24;
    }
    return Instant(day) + minutes(tenth * 6 + hour * 60);
}

std::string formatTimeOfDay(const std::optional<Instant>& instant, CalendarDate anchor) {
    if (!instant) return "";
    const sys_days day = floor<days>(*instant);
    std::int64_t seconds = (*instant - day).count();
    if (day == sys_days(anchor) + days(1)) seconds += 86400;
    const std::int64_t tenths = (seconds + 359) / 360;
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string formatClockTime(const std::optional<Instant>& instant, CalendarDate anchor) {
    if (!instant) return "";
    const sys_days day = floor<days>(*instant);
    const hh_mm_ss time{*instant - day};
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d", static_cast<int>(time.hours().count()),
                  static_cast<int>(time.minutes().count()));
    const auto offset = (day - sys_days(anchor)).count();
    return offset == 0 ? text : std::string(text) + (offset > 0 ? " +" : " ") + std::to_string(offset) + " day";
}

std::string formatForDisplay(DTSTimeDisplay display, const std::optional<Instant>& instant, CalendarDate anchor) {
    return display == DTSTimeDisplay::clockTime ? formatClockTime(instant, anchor) : formatTimeOfDay(instant, anchor);
}

std::string formatDuration(std::int64_t seconds) {
    const Decimal hours = Decimal(seconds) / Decimal(3600);
    std::string text = RoundingRule(Decimal("0.001"), RoundingMethod::nearestTiesToEven).round(hours).toString();
    // Keep between one and three decimals: trailing zeros go, down to one.
    if (text.find('.') == std::string::npos) text += ".0";
    while (text.back() == '0' && text[text.size() - 2] != '.') text.pop_back();
    return text;
}

}  // namespace payroll_decimal_time

PayrollDecimalDurationParseError::PayrollDecimalDurationParseError(Case errorCase)
    : CaseError(errorCase,
                errorCase == Case::invalidText                      ? "invalidText"
                : errorCase == Case::negativeDuration               ? "negativeDuration"
                : errorCase == Case::notRepresentableAsWholeSeconds ? "notRepresentableAsWholeSeconds"
                                                                    : "durationOutOfRange",
                errorCase == Case::invalidText      ? "Enter the duration in payroll-decimal hours, such as 0.5."
                : errorCase == Case::negativeDuration ? "A duration cannot be negative."
                : errorCase == Case::notRepresentableAsWholeSeconds
                    ? "The duration is finer than whole seconds."
                    : "The duration is too long.") {}

std::int64_t PayrollDecimalDurationParser::parse(std::string_view text) {
    using Case = ParseError::Case;
    std::string_view entry = trimmed(text);
    std::string_view unsigned_ = entry.starts_with('-') ? entry.substr(1) : entry;
    const auto point = unsigned_.find('.');
    const bool valid = point == std::string_view::npos
                           ? allDigits(unsigned_)
                           : allDigits(unsigned_.substr(0, point)) && allDigits(unsigned_.substr(point + 1));
    if (!valid) throw ParseError(Case::invalidText);
    const auto value = Decimal::parse(entry);
    if (!value) throw ParseError(Case::invalidText);
    if (value->isNegative()) throw ParseError(Case::negativeDuration);
    const Decimal seconds = *value * Decimal(3600);
    const Decimal whole = seconds.roundedToWholeNumber(RoundingMethod::towardZero);
    if (!(whole == seconds)) throw ParseError(Case::notRepresentableAsWholeSeconds);
    const auto result = whole.toInt64();
    if (!result || *result < 0) throw ParseError(Case::durationOutOfRange);
    return *result;
}

PayrollDecimalTenthHourConversionError::PayrollDecimalTenthHourConversionError(Case errorCase)
    : CaseError(errorCase, errorCase == Case::negativeDuration ? "negativeDuration" : "durationOutOfRange",
                errorCase == Case::negativeDuration ? "A duration cannot be negative." : "The duration is too long.") {}

std::int64_t PayrollDecimalTenthHourConverter::seconds(const Decimal& hours) {
    using Case = ConversionError::Case;
    if (hours.isNaN()) throw ConversionError(Case::durationOutOfRange);
    if (hours.isNegative()) throw ConversionError(Case::negativeDuration);
    const Decimal tenths = RoundingRule(Decimal("0.1"), RoundingMethod::nearestAwayFromZero).round(hours);
    const auto seconds = (tenths * Decimal(3600)).toInt64();
    if (!seconds) throw ConversionError(Case::durationOutOfRange);
    return *seconds;
}

PayrollDecimalTimeEditingBuffer::CommitResult PayrollDecimalTimeEditingBuffer::commit(CalendarDate workdayDate) const {
    if (trimmed(text).empty()) return {CommitResult::Kind::cleared, std::nullopt};
    if (const auto value = payroll_decimal_time::parseTimeOfDay(text, workdayDate)) {
        return {CommitResult::Kind::value, value};
    }
    return {CommitResult::Kind::invalid, std::nullopt};
}

std::string_view invalidTimeMessage(DTSTimeEntryRole role) noexcept {
    return role == DTSTimeEntryRole::call ? time_entry_messages::call : time_entry_messages::postCallEvent;
}

PayrollDecimalTimeFieldTransition::Outcome PayrollDecimalTimeFieldTransition::end(const std::string& editedText) const {
    using Kind = Outcome::Kind;
    if (editedText == committedText) return {Kind::unchanged, std::nullopt, "", ""};
    const auto result = PayrollDecimalTimeEditingBuffer{editedText}.commit(workdayDate);
    const auto refuse = [&] { return Outcome{Kind::invalid, std::nullopt, std::string(invalidTimeMessage(role)), committedText}; };
    switch (result.kind) {
        case PayrollDecimalTimeEditingBuffer::CommitResult::Kind::cleared:
            return {Kind::cleared, std::nullopt, "", ""};
        case PayrollDecimalTimeEditingBuffer::CommitResult::Kind::invalid:
            return refuse();
        case PayrollDecimalTimeEditingBuffer::CommitResult::Kind::value:
            // A call lies on the DTS date itself.
            if (role == DTSTimeEntryRole::call && floor<days>(*result.value) != sys_days(workdayDate)) return refuse();
            if (suggestion && *result.value == *suggestion && !userTypedOverSuggestion) {
                return {Kind::acceptedSuggestion, result.value, "", ""};
            }
            return {Kind::explicitValue, result.value, "", ""};
    }
    return refuse();
}

}  // namespace tessel
