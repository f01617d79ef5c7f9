#include "RuleID.hpp"

#include <cstdint>
#include <mutex>
#include <unordered_set>

namespace tessel {
namespace {

bool isUnicodeWhitespace(char32_t c) {
    switch (c) {
        case 0x09: case 0x0A: case 0x0B: case 0x0C: case 0x0D: case 0x20:
        case 0x85: case 0xA0: case 0x1680: case 0x2028: case 0x2029:
        case 0x202F: case 0x205F: case 0x3000:
            return true;
        default:
            return c >= 0x2000 && c <= 0x200A;
    }
}

// Decodes UTF-8 leniently: a malformed byte is taken as one code point of its own value, which is
// never whitespace beyond ASCII, so only well-formed whitespace is reported.
bool containsWhitespace(const std::string& text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        char32_t codePoint = length == 1 ? lead : lead & (0xFF >> (length + 1));
        for (std::size_t k = 1; k < length && i + k < text.size(); ++k) {
            codePoint = (codePoint << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        }
        if (isUnicodeWhitespace(codePoint)) return true;
        i += length;
    }
    return false;
}

// The one copy of each identifier's text. Set nodes never move, so the pointers stay valid; the
// calculation core may run on any thread, hence the lock.
const std::string* intern(std::string text) {
    static std::mutex lock;
    static std::unordered_set<std::string> texts;
    const std::lock_guard guard(lock);
    return &*texts.insert(std::move(text)).first;
}

}  // namespace

RuleIDValidationError RuleIDValidationError::containsWhitespace(const std::string& text) {
    return RuleIDValidationError(Case::containsWhitespace, "containsWhitespace",
                                 "The rule identifier " + quoted(text) + " contains whitespace.", {{"text", text}});
}

RuleIDValidationError RuleIDValidationError::emptyValue() {
    return RuleIDValidationError(Case::emptyValue, "emptyValue", "A rule identifier cannot be empty.");
}

RuleID::RuleID(std::string value) {
    if (value.empty()) throw ValidationError::emptyValue();
    if (containsWhitespace(value)) throw ValidationError::containsWhitespace(value);
    value_ = intern(std::move(value));
}

}  // namespace tessel
