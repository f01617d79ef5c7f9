#include "StubEvidence.hpp"

#include <algorithm>
#include <cmath>

namespace tessel {

std::string_view toRawValue(PayStubTextSource source) noexcept {
    switch (source) {
        case PayStubTextSource::embeddedPDFText: return "embeddedPDFText";
        case PayStubTextSource::embeddedOCRText: return "embeddedOCRText";
        case PayStubTextSource::tesseractOCR: return "tesseractOCR";
    }
    return {};
}

std::string_view label(PayStubTextSource source) noexcept {
    switch (source) {
        case PayStubTextSource::embeddedPDFText: return "Downloaded PDF text";
        case PayStubTextSource::embeddedOCRText: return "Embedded OCR text";
        case PayStubTextSource::tesseractOCR: return "Tesseract OCR";
    }
    return {};
}

std::optional<PayStubTextSource> payStubTextSourceFromRawValue(std::string_view raw) noexcept {
    for (auto source : {PayStubTextSource::embeddedPDFText, PayStubTextSource::embeddedOCRText, PayStubTextSource::tesseractOCR}) {
        if (toRawValue(source) == raw) return source;
    }
    return std::nullopt;
}

namespace {

std::string joined(const std::vector<PayStubTextToken>& tokens, std::string PayStubTextToken::*text) {
    std::string result;
    for (const auto& token : tokens) {
        if (!result.empty()) result += ' ';
        result += token.*text;
    }
    return result;
}

struct OpenLine {
    double middle = 0;
    double height = 0;
    PayStubTokenLine line;
};

}  // namespace

std::string PayStubTokenLine::rawText() const { return joined(tokens, &PayStubTextToken::rawText); }
std::string PayStubTokenLine::normalizedText() const { return joined(tokens, &PayStubTextToken::normalizedText); }

std::optional<PageArea> areaOf(const std::vector<const PayStubTextToken*>& tokens) {
    if (tokens.empty()) return std::nullopt;
    double left = 1, top = 1, right = 0, bottom = 0;
    for (const auto* t : tokens) {
        left = std::min(left, t->normalizedBounds.x);
        top = std::min(top, t->normalizedBounds.y);
        right = std::max(right, t->normalizedBounds.right());
        bottom = std::max(bottom, t->normalizedBounds.y + t->normalizedBounds.height);
    }
    return PageArea{tokens.front()->pageIndex, {left, top, std::max(right - left, 0.0), std::max(bottom - top, 0.0)}};
}

PageArea PayStubTokenLine::area() const {
    std::vector<const PayStubTextToken*> all;
    for (const auto& token : tokens) all.push_back(&token);
    return areaOf(all).value_or(PageArea{pageIndex, {}});
}

std::vector<PayStubTokenLine> tokenLines(const PayStubTextEvidence& evidence) {
    std::vector<const PayStubTextToken*> ordered;
    for (const auto& token : evidence.tokens) {
        if (std::isfinite(token.normalizedBounds.midY()) && std::isfinite(token.normalizedBounds.x)) ordered.push_back(&token);
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto* a, const auto* b) {
        if (a->pageIndex != b->pageIndex) return a->pageIndex < b->pageIndex;
        return a->normalizedBounds.midY() < b->normalizedBounds.midY();
    });
    std::vector<PayStubTokenLine> lines;
    std::optional<OpenLine> open;
    const auto close = [&] {
        if (!open) return;
        auto& tokens = open->line.tokens;
        std::stable_sort(tokens.begin(), tokens.end(), [](const auto& a, const auto& b) { return a.normalizedBounds.x < b.normalizedBounds.x; });
        lines.push_back(std::move(open->line));
        open.reset();
    };
    for (const auto* token : ordered) {
        const double middle = token->normalizedBounds.midY();
        const double height = std::max(token->normalizedBounds.height, 0.0);
        const bool joins = open && open->line.pageIndex == token->pageIndex &&
                           std::abs(middle - open->middle) <= std::max(open->height, height) / 2;
        if (!joins) {
            close();
            open = OpenLine{middle, height, PayStubTokenLine{token->pageIndex, {}}};
        }
        open->line.tokens.push_back(*token);
        open->height = std::max(open->height, height);
    }
    close();
    return lines;
}

}  // namespace tessel
