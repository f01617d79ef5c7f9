#include "StubFields.hpp"

#include <memory>

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include "App/actualpay/StubText.hpp"

namespace tessel::ep_layout {
namespace {


// The layout's patterns as written; each compiled once.
constexpr const char16_t* namePattern = u"(?i)^\\s*[^A-Z]*([A-Z][A-Z .'-]+?)\\s+SSN\\s*:?";
constexpr const char16_t* occupationPattern = u"(?i)Occupation\\s+Title\\s*:\\s*(.+)$";
constexpr const char16_t* periodPattern = u"(?i)Start\\s*:?\\s*(\\d{1,2}/\\d{1,2}/\\d{2,4}).*End\\s*:?\\s*(\\d{1,2}/\\d{1,2}/\\d{2,4})";

class Pattern {
public:
    explicit Pattern(const char16_t* text) {
        UErrorCode status = U_ZERO_ERROR;
        pattern_.reset(icu::RegexPattern::compile(icu::UnicodeString(text), 0, status));
        if (U_FAILURE(status)) pattern_.reset();
    }
    // The capture groups of the first match in the text, or nothing.
    std::optional<std::vector<std::string>> groups(const std::string& text, int count) const {
        if (!pattern_) return std::nullopt;
        UErrorCode status = U_ZERO_ERROR;
        const icu::UnicodeString subject = icu::UnicodeString::fromUTF8(text);
        std::unique_ptr<icu::RegexMatcher> matcher(pattern_->matcher(subject, status));
        if (U_FAILURE(status) || !matcher->find(status) || U_FAILURE(status)) return std::nullopt;
        std::vector<std::string> found;
        for (int group = 1; group <= count; ++group) {
            std::string value;
            matcher->group(group, status).toUTF8String(value);
            if (U_FAILURE(status)) return std::nullopt;
            found.push_back(std::move(value));
        }
        return found;
    }

private:
    std::unique_ptr<icu::RegexPattern> pattern_;
};

const Pattern& compiled(const char16_t* text) {
    static const Pattern name(namePattern), occupation(occupationPattern), period(periodPattern);
    return text == namePattern ? name : text == occupationPattern ? occupation : period;
}

std::string trimmed(std::string text) {
    const auto first = text.find_first_not_of(' ');
    const auto last = text.find_last_not_of(' ');
    return first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
}

std::optional<CalendarDate> monthDayYear(const std::string& text) {
    const auto first = text.find('/');
    const auto second = text.find('/', first + 1);
    if (first == std::string::npos || second == std::string::npos) return std::nullopt;
    try {
        const int month = std::stoi(text.substr(0, first));
        const int day = std::stoi(text.substr(first + 1, second - first - 1));
        int year = std::stoi(text.substr(second + 1));
        if (text.size() - second - 1 == 2) year += 2000;
        const CalendarDate date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)), std::chrono::day(static_cast<unsigned>(day))};
        if (date.ok()) return date;
    } catch (const std::exception&) {
    }
    return std::nullopt;
}

}  // namespace

Markers markers(const std::vector<PayStubTokenLine>& lines) {
    std::string all;
    for (const auto& line : lines) all += stub_text::compact(line.rawText()) + " ";
    const auto has = [&](std::string_view word) { return all.find(word) != std::string::npos; };
    return {has("ENTERTAINMENTPARTNERS"), has("PAYPERIOD"), has("OCCUPATIONTITLE"), has("TOTALS") && has("GROSS")};
}

PrintedFields printedFields(const std::vector<PayStubTokenLine>& lines, PayStubTextSource source) {
    PrintedFields fields;
    for (const auto& line : lines) {
        const std::string normalized = line.normalizedText();
        const PayStubEvidenceExcerpt excerpt{source, line.rawText(), normalized, line.area()};
        // The value comes from the normal form; the same pattern over the raw line keeps what was printed.
        const auto printed = [&](const char16_t* pattern, int count, const std::string& fallback) {
            const auto raw = compiled(pattern).groups(excerpt.rawText, count);
            if (!raw) return fallback;
            std::string joined;
            for (const auto& group : *raw) joined += (joined.empty() ? "" : " ") + trimmed(group);
            return joined;
        };
        if (!fields.employeeName) {
            if (const auto found = compiled(namePattern).groups(normalized, 1)) {
                const auto value = trimmed((*found)[0]);
                fields.employeeName = {{value, excerpt, printed(namePattern, 1, value)}};
            }
        }
        if (!fields.occupation) {
            if (const auto found = compiled(occupationPattern).groups(normalized, 1); found && !trimmed((*found)[0]).empty()) {
                const auto value = trimmed((*found)[0]);
                fields.occupation = {{value, excerpt, printed(occupationPattern, 1, value)}};
            }
        }
        if (!fields.payPeriod) {
            if (const auto found = compiled(periodPattern).groups(normalized, 2)) {
                const auto start = monthDayYear((*found)[0]);
                const auto end = monthDayYear((*found)[1]);
                if (start && end) fields.payPeriod = {{{*start, *end}, excerpt, printed(periodPattern, 2, (*found)[0] + " " + (*found)[1])}};
            }
        }
    }
    return fields;
}

}  // namespace tessel::ep_layout
