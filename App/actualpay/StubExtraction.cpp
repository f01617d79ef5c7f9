#include "StubExtraction.hpp"

#include <algorithm>
#include <climits>
#include <memory>
#include <mutex>

#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>

#include "App/actualpay/StubPdfDocument.hpp"
#include "App/actualpay/StubText.hpp"

namespace tessel {
namespace {

std::string message(PayStubExtractionError::Case errorCase, std::optional<int> page) {
    using Case = PayStubExtractionError::Case;
    switch (errorCase) {
        case Case::emptyData: return "The selected pay stub is empty.";
        case Case::invalidPDF: return "The selected pay stub is not a readable PDF.";
        case Case::noPages: return "The selected pay stub contains no pages.";
        case Case::invalidEmbeddedTextSource: return "Choose an embedded PDF-text source for poppler extraction.";
        case Case::renderingFailed: return "Page " + std::to_string(page.value_or(0) + 1) + " of the selected pay stub could not be rendered.";
    }
    return {};
}

// Poppler reports a damaged file's details on standard error; the caller gets one sentence instead.
void quiet(const std::string&, void*) {}

std::string utf8(const poppler::ustring& text) {
    const poppler::byte_array bytes = text.to_utf8();
    return std::string(bytes.begin(), bytes.end());
}

}  // namespace

PayStubExtractionError::PayStubExtractionError(Case errorCase, std::optional<int> page)
    : std::runtime_error(message(errorCase, page)), case_(errorCase), page_(page) {}

std::string_view PayStubExtractionError::caseName() const noexcept {
    switch (case_) {
        case Case::emptyData: return "emptyData";
        case Case::invalidPDF: return "invalidPDF";
        case Case::noPages: return "noPages";
        case Case::invalidEmbeddedTextSource: return "invalidEmbeddedTextSource";
        case Case::renderingFailed: return "renderingFailed";
    }
    return {};
}

std::unique_ptr<poppler::document> stub_pdf::open(std::string_view pdf) {
    using Case = PayStubExtractionError::Case;
    if (pdf.empty()) throw PayStubExtractionError(Case::emptyData);
    if (pdf.size() > static_cast<std::size_t>(INT_MAX)) throw PayStubExtractionError(Case::invalidPDF);
    static std::once_flag silenced;
    std::call_once(silenced, [] { poppler::set_debug_error_function(quiet, nullptr); });
    std::unique_ptr<poppler::document> document(poppler::document::load_from_raw_data(pdf.data(), static_cast<int>(pdf.size())));
    if (!document || document->is_locked()) throw PayStubExtractionError(Case::invalidPDF);
    if (document->pages() <= 0) throw PayStubExtractionError(Case::noPages);
    return document;
}

PayStubTextEvidence extractTextLayer(std::string_view pdf, PayStubTextSource source) {
    if (source == PayStubTextSource::tesseractOCR) throw PayStubExtractionError(PayStubExtractionError::Case::invalidEmbeddedTextSource);
    const auto document = stub_pdf::open(pdf);
    PayStubTextEvidence evidence{source, document->pages(), {}};
    for (int index = 0; index < evidence.pageCount; ++index) {
        const std::unique_ptr<poppler::page> page(document->create_page(index));
        if (!page) continue;
        // Word boxes are in points from the top left of the media box; the visible box may be smaller.
        const poppler::rectf media = page->page_rect(poppler::media_box);
        const poppler::rectf visible = page->page_rect(poppler::crop_box);
        const double width = visible.width() > 0 ? visible.width() : media.width();
        const double height = visible.height() > 0 ? visible.height() : media.height();
        if (!(width > 0) || !(height > 0)) continue;
        const double left = visible.x() - media.x();
        const double top = (media.y() + media.height()) - (visible.y() + visible.height());
        int word = 0;
        for (const auto& box : page->text_list()) {
            const std::string raw = utf8(box.text());
            if (raw.empty()) continue;
            const poppler::rectf bounds = box.bbox();
            evidence.tokens.push_back({std::string(toRawValue(source)) + "-p" + std::to_string(index) + "-" + std::to_string(word++),
                                       raw,
                                       stub_text::normalized(raw),
                                       index,
                                       {(bounds.x() - left) / width, (bounds.y() - top) / height, bounds.width() / width, bounds.height() / height},
                                       source,
                                       std::nullopt});
        }
    }
    return evidence;
}

}  // namespace tessel
