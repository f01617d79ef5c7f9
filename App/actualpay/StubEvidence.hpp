#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What one reading of a pay stub saw: positioned words in page-relative units, so that a PDF's text
// layer and OCR of its pixels can be laid over each other.
namespace tessel {

enum class PayStubTextSource { embeddedPDFText, embeddedOCRText, tesseractOCR };

std::string_view toRawValue(PayStubTextSource source) noexcept;
// "Downloaded PDF text", "Embedded OCR text", "Tesseract OCR".
std::string_view label(PayStubTextSource source) noexcept;
std::optional<PayStubTextSource> payStubTextSourceFromRawValue(std::string_view raw) noexcept;

// A rectangle in page-relative units: 0 to 1 across and down the visible page, from its top left.
struct PageRectangle {
    double x = 0, y = 0, width = 0, height = 0;
    double midY() const noexcept { return y + height / 2; }
    double right() const noexcept { return x + width; }
};

// Where a value was read: a rectangle on one page, to show beside the value under review.
struct PageArea {
    int pageIndex = 0;
    PageRectangle bounds;
};

struct PayStubTextToken {
    std::string id;
    std::string rawText;
    std::string normalizedText;
    int pageIndex = 0;
    PageRectangle normalizedBounds;
    PayStubTextSource source = PayStubTextSource::embeddedPDFText;
    std::optional<float> confidence{};  // OCR only
};

struct PayStubTextEvidence {
    PayStubTextSource source = PayStubTextSource::embeddedPDFText;
    int pageCount = 0;
    std::vector<PayStubTextToken> tokens;
};

struct PayStubTokenLine {
    int pageIndex = 0;
    std::vector<PayStubTextToken> tokens;  // left to right
    std::string rawText() const;           // the tokens' raw texts joined by spaces
    std::string normalizedText() const;    // the same of their normalised texts
    PageArea area() const;                 // the smallest rectangle holding every token
};

// The smallest rectangle holding the tokens, on the first one's page; nothing for no tokens.
std::optional<PageArea> areaOf(const std::vector<const PayStubTextToken*>& tokens);

// The evidence's tokens as visual lines: pages in order, lines top to bottom, tokens left to right. A
// token joins a line when its vertical middle lies within half the line's tallest token height of the
// line's middle, so that a baseline wobble of OCR boxes keeps one line together while the next printed
// line, a full line height away, starts a new one.
std::vector<PayStubTokenLine> tokenLines(const PayStubTextEvidence& evidence);

}  // namespace tessel
