#pragma once

#include <string>
#include <string_view>

// The one normal form of pay-stub text, so that two readings of a page (the PDF's text layer and OCR of
// its pixels) can be compared word for word.
namespace tessel::stub_text {

// Unicode compatibility composition (NFKC), each no-break space as a space, every run of white space
// as one space, trimmed, upper case. Text that is not valid UTF-8 has each bad byte replaced (U+FFFD).
std::string normalized(std::string_view raw);

// The normalised text keeping only its letters and digits: how markers such as "EARNINGS STATEMENT"
// are searched for, whatever spacing or punctuation a reading put between their letters.
std::string compact(std::string_view raw);

}  // namespace tessel::stub_text
