#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "App/model/PersistenceModels.hpp"
#include "PayrollDomain/Decimal.hpp"
#include "PayrollDomain/DomainError.hpp"
#include "PayrollDomain/Instant.hpp"

namespace tessel {

// DTS times and durations in payroll decimal hours: one digit of tenths, a tenth being exactly six
// minutes (7.5 is 07:30, 13.2 is 13:12). A time of day is anchored to the DTS date; 24.0 to 47.9 are the
// next calendar day.
namespace payroll_decimal_time {

// Text to instant: "7", "7.0", " 7.0 " and "25.3" are times; "7.25", "7.", ".5", "-1.0", "7:30" are not.
// Empty or blank text is not a time either (the editing buffer treats it as clearing the field).
std::optional<Instant> parseTimeOfDay(std::string_view text, CalendarDate anchor);

// Instant to text: "7.0", "13.2", "25.5". A time that is not on a six-minute boundary shows as the next
// tenth up (13:01 shows 13.1); only the day after the anchor counts from 24.0.
std::string formatTimeOfDay(const std::optional<Instant>& instant, CalendarDate anchor);

// The conventional 24-hour clock display ("13:12", "01:18 +1 day") used when a production shows clock time.
std::string formatClockTime(const std::optional<Instant>& instant, CalendarDate anchor);

// A time in the production's notation: payroll decimal, or the 24-hour clock when it shows clock time.
std::string formatForDisplay(DTSTimeDisplay display, const std::optional<Instant>& instant, CalendarDate anchor);

// Seconds to text with one to three decimals: 1800 is "0.5", 4500 "1.25", 7200 "2.0", 1200 "0.333".
std::string formatDuration(std::int64_t seconds);

}  // namespace payroll_decimal_time

enum class PayrollDecimalDurationParseErrorCase {
    invalidText,
    negativeDuration,
    notRepresentableAsWholeSeconds,
    durationOutOfRange,
};

class PayrollDecimalDurationParseError : public CaseError<PayrollDecimalDurationParseErrorCase> {
public:
    using Case = PayrollDecimalDurationParseErrorCase;
    explicit PayrollDecimalDurationParseError(Case errorCase);
};

// A duration typed in decimal hours, with any number of decimals (1.25 is 4500 seconds).
class PayrollDecimalDurationParser {
public:
    using ParseError = PayrollDecimalDurationParseError;
    // Whole seconds; throws ParseError.
    static std::int64_t parse(std::string_view text);
};

enum class PayrollDecimalTenthHourConversionErrorCase { negativeDuration, durationOutOfRange };

class PayrollDecimalTenthHourConversionError : public CaseError<PayrollDecimalTenthHourConversionErrorCase> {
public:
    using Case = PayrollDecimalTenthHourConversionErrorCase;
    explicit PayrollDecimalTenthHourConversionError(Case errorCase);
};

// Decimal hours rounded half up to one tenth, in whole seconds.
class PayrollDecimalTenthHourConverter {
public:
    using ConversionError = PayrollDecimalTenthHourConversionError;
    static std::int64_t seconds(const Decimal& hours);
};

// The text being typed into a time field.
struct PayrollDecimalTimeEditingBuffer {
    struct CommitResult {
        enum class Kind { value, cleared, invalid };
        Kind kind = Kind::invalid;
        std::optional<Instant> value;
    };

    std::string text;
    CommitResult commit(CalendarDate workdayDate) const;
};

// Which time a field holds: a call time (on the DTS date only) or a later event (lunch out, lunch in,
// wrap; up to 47.9).
enum class DTSTimeEntryRole { call, postCallEvent };

namespace time_entry_messages {
inline constexpr std::string_view call = "Call must be between 0.0 and 23.9.";
inline constexpr std::string_view postCallEvent = "Enter time in payroll tenths.";
inline constexpr std::string_view travelDuration = "Enter Travel Duration in payroll-decimal hours, such as 5.0.";
inline constexpr std::string_view payReviewTimePrefix = "Enter a valid payroll time for ";
}  // namespace time_entry_messages

std::string_view invalidTimeMessage(DTSTimeEntryRole role) noexcept;

// What a time field does when editing ends (focus leaves or Return).
struct PayrollDecimalTimeFieldTransition {
    struct Outcome {
        enum class Kind { acceptedSuggestion, explicitValue, invalid, unchanged, cleared };
        Kind kind = Kind::unchanged;
        std::optional<Instant> value;  // acceptedSuggestion and explicitValue
        std::string message;           // invalid
        std::string restoredText;      // invalid: the last committed text, shown again
    };

    // The field: its last committed text, the DTS date, its role, and the suggestion it offers.
    std::string committedText;
    CalendarDate workdayDate;
    DTSTimeEntryRole role = DTSTimeEntryRole::postCallEvent;
    std::optional<Instant> suggestion;
    bool userTypedOverSuggestion = false;

    Outcome end(const std::string& editedText) const;
};

}  // namespace tessel
