#include "StubNumbers.hpp"

#include <algorithm>

#include "StubText.hpp"

namespace tessel {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool allDigits(std::string_view text) { return !text.empty() && std::all_of(text.begin(), text.end(), isDigit); }

// "-12.50", "3", "0.125": the POSIX form as printed.
bool isPlainDecimal(std::string_view text) {
    if (!text.empty() && text.front() == '-') text.remove_prefix(1);
    const auto point = text.find('.');
    if (point == std::string_view::npos) return allDigits(text);
    return allDigits(text.substr(0, point)) && allDigits(text.substr(point + 1));
}

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }
bool endsWith(std::string_view text, std::string_view suffix) {
    return text.size() >= suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
}

void trimSpaces(std::string_view& text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
}

// Drops currency marks and reads the sign notation; false when the text has two signs.
bool strippedOfSignAndCurrency(std::string_view& text, bool& negative, bool& money) {
    int signs = 0;
    const auto strip = [&] {
        for (bool changed = true; changed;) {
            changed = false;
            trimSpaces(text);
            for (std::string_view mark : {"US$", "USD", "$"}) {
                if (startsWith(text, mark)) text.remove_prefix(mark.size()), changed = money = true;
                if (endsWith(text, mark)) text.remove_suffix(mark.size()), changed = money = true;
            }
        }
    };
    strip();
    if (startsWith(text, "(") && endsWith(text, ")") && text.size() >= 2) {
        text = text.substr(1, text.size() - 2), ++signs;
        strip();
    }
    if (startsWith(text, "-")) text.remove_prefix(1), ++signs;
    if (endsWith(text, "-")) text.remove_suffix(1), ++signs;
    strip();
    negative = signs == 1;
    return signs <= 1;
}

// OCR's letters for digits, in a token that is otherwise digits and separators.
std::string withDigitsForLetters(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c == 'O') c = '0';
        if (c == 'L' || c == 'I' || c == '|') c = '1';
    }
    return result;
}

// Digits grouped by one separator: a first group of one to three digits, then groups of three.
bool isGrouped(std::string_view text, char separator) {
    std::size_t start = 0;
    for (bool first = true;; first = false) {
        const auto end = text.find(separator, start);
        const auto group = text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        if (!allDigits(group) || (first ? group.size() > 3 : group.size() != 3)) return false;
        if (end == std::string_view::npos) return !first;
        start = end + 1;
    }
}

std::string without(std::string_view text, char separator) {
    std::string result;
    for (char c : text) {
        if (c != separator) result += c;
    }
    return result;
}

// The POSIX texts the digits and separators can mean. An amount marked as money has its cents after a
// ".", so a lone "," in it only groups thousands.
std::vector<std::string> readings(std::string_view body, bool money) {
    const std::string text = without(body, ' ');
    if (body.find(' ') != std::string_view::npos && !isGrouped(std::string(body.substr(0, body.find_first_of(".,"))), ' ')) return {};
    const auto commas = std::count(text.begin(), text.end(), ',');
    const auto points = std::count(text.begin(), text.end(), '.');
    if (commas == 0 && points == 0) return allDigits(text) ? std::vector{text} : std::vector<std::string>{};
    if (commas > 0 && points > 0) {
        const auto mark = text.find_last_of(".,");
        const char decimal = text[mark];
        const char grouping = decimal == '.' ? ',' : '.';
        const std::string_view whole = std::string_view(text).substr(0, mark);
        const std::string_view fraction = std::string_view(text).substr(mark + 1);
        if (whole.find(decimal) != std::string_view::npos || !allDigits(fraction) || !isGrouped(whole, grouping)) return {};
        return {without(whole, grouping) + "." + std::string(fraction)};
    }
    const char separator = commas > 0 ? ',' : '.';
    if ((separator == ',' ? commas : points) > 1) return isGrouped(text, separator) ? std::vector{without(text, separator)} : std::vector<std::string>{};
    const auto mark = text.find(separator);
    const std::string whole = text.substr(0, mark);
    const std::string fraction = text.substr(mark + 1);
    if (!allDigits(whole) || !allDigits(fraction)) return {};
    if (separator == ',' && isGrouped(text, ',')) {
        if (money) return {whole + fraction};
        return {whole + fraction, whole + "." + fraction};
    }
    return {whole + "." + fraction};
}

}  // namespace

std::string_view toRawValue(PayStubNumericClassification classification) noexcept {
    switch (classification) {
        case PayStubNumericClassification::exact: return "exact";
        case PayStubNumericClassification::normalized: return "normalized";
        case PayStubNumericClassification::ambiguous: return "ambiguous";
        case PayStubNumericClassification::invalid: return "invalid";
    }
    return {};
}

std::optional<Decimal> PayStubNumericInterpretation::resolved() const {
    const bool single = classification == PayStubNumericClassification::exact || classification == PayStubNumericClassification::normalized;
    return single ? std::optional(candidates.front()) : std::nullopt;
}

PayStubNumericInterpretation interpretStubNumber(std::string_view raw) {
    PayStubNumericInterpretation result{std::string(raw), stub_text::normalized(raw), {}, PayStubNumericClassification::invalid};
    if (isPlainDecimal(raw)) {
        if (const auto value = Decimal::parse(raw)) {
            result.candidates.push_back(*value);
            result.classification = PayStubNumericClassification::exact;
        }
        return result;
    }
    std::string_view body = result.normalizedText;
    bool negative = false, money = false;
    if (!strippedOfSignAndCurrency(body, negative, money)) return result;
    for (const auto& reading : readings(withDigitsForLetters(body), money)) {
        const auto value = Decimal::parse((negative ? "-" : "") + reading);
        if (value && std::find(result.candidates.begin(), result.candidates.end(), *value) == result.candidates.end()) {
            result.candidates.push_back(*value);
        }
    }
    result.classification = result.candidates.empty()     ? PayStubNumericClassification::invalid
                            : result.candidates.size() == 1 ? PayStubNumericClassification::normalized
                                                            : PayStubNumericClassification::ambiguous;
    return result;
}

}  // namespace tessel
