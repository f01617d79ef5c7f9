#include "StubText.hpp"

#include <memory>
#include <mutex>

#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace tessel::stub_text {
namespace {

icu::UnicodeString nfkc(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKCInstance(status);
    if (U_FAILURE(status)) return text;
    icu::UnicodeString result = normalizer->normalize(text, status);
    return U_FAILURE(status) ? text : result;
}

// "[\s\n\r\t]+" as one space. A compiled pattern is kept and each use gets a matcher of its own.
icu::UnicodeString collapsedWhiteSpace(const icu::UnicodeString& text) {
    static std::once_flag compiled;
    static std::unique_ptr<icu::RegexPattern> pattern;
    std::call_once(compiled, [] {
        UErrorCode status = U_ZERO_ERROR;
        pattern.reset(icu::RegexPattern::compile(icu::UnicodeString(u"[\\s\\n\\r\\t]+"), 0, status));
        if (U_FAILURE(status)) pattern.reset();
    });
    if (!pattern) return text;
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(text, status));
    if (U_FAILURE(status)) return text;
    icu::UnicodeString result = matcher->replaceAll(icu::UnicodeString(u" "), status);
    return U_FAILURE(status) ? text : result;
}

icu::UnicodeString normalizedText(std::string_view raw) {
    icu::UnicodeString text = nfkc(icu::UnicodeString::fromUTF8(icu::StringPiece(raw.data(), static_cast<int32_t>(raw.size()))));
    text.findAndReplace(icu::UnicodeString(static_cast<UChar>(0x00A0)), icu::UnicodeString(u" "));
    text = collapsedWhiteSpace(text);
    text.trim();
    return text.toUpper(icu::Locale::getRoot());
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

}  // namespace

std::string normalized(std::string_view raw) { return utf8(normalizedText(raw)); }

std::string compact(std::string_view raw) {
    const icu::UnicodeString text = normalizedText(raw);
    icu::UnicodeString kept;
    for (int32_t i = 0; i < text.length();) {
        const UChar32 c = text.char32At(i);
        if (u_isalpha(c) || u_isdigit(c)) kept.append(c);
        i += U16_LENGTH(c);
    }
    return utf8(kept);
}

}  // namespace tessel::stub_text
