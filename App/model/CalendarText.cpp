#include "CalendarText.hpp"

#include <charconv>
#include <cstdio>

namespace tessel::calendar_text {
namespace {

using namespace std::chrono;

// Reads exactly `width` digits at `position`.
std::optional<int> digits(std::string_view text, std::size_t position, std::size_t width) {
    if (position + width > text.size()) return std::nullopt;
    int value = 0;
    for (std::size_t i = position; i < position + width; ++i) {
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
        value = value * 10 + (text[i] - '0');
    }
    return value;
}

bool hasAt(std::string_view text, std::size_t position, char c) { return position < text.size() && text[position] == c; }

// The UTC offset that ends an instant: "Z", "+hh:mm" or "-hh:mm".
std::optional<seconds> offset(std::string_view suffix) {
    if (suffix == "Z" || suffix == "z") return seconds(0);
    if (suffix.size() != 6 || (suffix[0] != '+' && suffix[0] != '-') || suffix[3] != ':') return std::nullopt;
    const auto h = digits(suffix, 1, 2);
    const auto m = digits(suffix, 4, 2);
    if (!h || !m || *h > 23 || *m > 59) return std::nullopt;
    const seconds magnitude = hours(*h) + minutes(*m);
    return suffix[0] == '+' ? magnitude : -magnitude;
}

}  // namespace

std::optional<CalendarDate> parseDate(std::string_view text) {
    if (text.size() != 10 || !hasAt(text, 4, '-') || !hasAt(text, 7, '-')) return std::nullopt;
    const auto y = digits(text, 0, 4);
    const auto m = digits(text, 5, 2);
    const auto d = digits(text, 8, 2);
    if (!y || !m || !d) return std::nullopt;
    const year_month_day date{year(*y), month(static_cast<unsigned>(*m)), day(static_cast<unsigned>(*d))};
    if (!date.ok()) return std::nullopt;
    return date;
}

std::optional<Instant> parseInstant(std::string_view text) {
    if (text.size() < 20 || !(hasAt(text, 10, 'T') || hasAt(text, 10, 't'))) return std::nullopt;
    const auto date = parseDate(text.substr(0, 10));
    const auto h = digits(text, 11, 2);
    const auto m = digits(text, 14, 2);
    const auto s = digits(text, 17, 2);
    if (!date || !h || !m || !s || !hasAt(text, 13, ':') || !hasAt(text, 16, ':') || *h > 23 || *m > 59 || *s > 59) {
        return std::nullopt;
    }
    std::size_t position = 19;
    if (hasAt(text, position, '.')) {
        const std::size_t fractionStart = ++position;
        while (position < text.size() && text[position] >= '0' && text[position] <= '9') ++position;
        if (position == fractionStart) return std::nullopt;
    }
    const auto utcOffset = offset(text.substr(position));
    if (!utcOffset) return std::nullopt;
    return sys_days(*date) + hours(*h) + minutes(*m) + seconds(*s) - *utcOffset;
}

std::string formatDate(CalendarDate date) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "%04d-%02u-%02u", static_cast<int>(date.year()),
                  static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    return buffer;
}

std::string formatInstant(Instant instant) {
    const auto day = floor<days>(instant);
    const hh_mm_ss time{instant - day};
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%sT%02d:%02d:%02dZ", formatDate(year_month_day(day)).c_str(),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return buffer;
}

std::string formatPeriod(CalendarDate from, std::optional<CalendarDate> through) {
    return formatDate(from) + " to " + (through ? formatDate(*through) : std::string("open"));
}

}  // namespace tessel::calendar_text
