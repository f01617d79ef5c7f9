#include "StubOcr.hpp"

#include <poppler-document.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>
#include <tesseract/baseapi.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <string>
#include <vector>

#include "App/actualpay/StubPdfDocument.hpp"
#include "App/actualpay/StubText.hpp"

namespace tessel {
namespace {

constexpr double rasterDpi = 300;
// The visible content is found on a coarse draw of the page: any pixel darker than nearly white is ink.
// At 72 dpi a page costs a thirty-sixth of its fine draw, and a hairline or a small grey glyph still
// leaves a mark above this threshold.
constexpr double probeDpi = 72;
constexpr int inkBelow = 250;
// Tesseract reads a line best with white around it: the crop keeps a quarter inch beyond the ink.
constexpr double cropMarginPoints = 18;
// 2000 points (about 28 inches) a side: a 300-dpi grey raster of at most some 70 MB. A stub is a sheet
// of paper; a page beyond this is refused rather than drawn.
constexpr double maximumPagePoints = 2000;

// Tesseract sometimes ends a word that a wide gap follows with a mark that is not on the page ("RIVERA_",
// "OKONKWO.", "FAULKNER’"), and then doubts the whole word. In a word it gives under 50% confidence, such
// marks after two or more letters are left out of the normalised text the interpreter compares, while
// the raw text keeps what Tesseract said.
std::string withoutDoubtfulMark(const std::string& raw, float confidence) {
    if (confidence >= 0.5f) return raw;
    static const std::vector<std::string> marks{".", ",", ":", ";", "_", "'", "`", "\"", "\u2019", "\u2018", "\u201D"};
    std::string word = raw;
    for (bool trimmed = true; trimmed;) {
        trimmed = false;
        for (const auto& mark : marks) {
            if (word.size() > mark.size() && word.ends_with(mark)) {
                word.resize(word.size() - mark.size());
                trimmed = true;
            }
        }
    }
    const bool letters = word.size() >= 2 && std::all_of(word.begin(), word.end(), [](unsigned char c) { return std::isalpha(c); });
    return letters ? word : raw;
}

// The rectangle of the page, in 300-dpi pixels, that holds all its ink plus a margin; empty when the page
// is blank. Recognising only this part of a stub, which payroll prints on the top third of a sheet, saves
// most of the thresholding and outline tracing Tesseract does over white paper.
struct PixelRect {
    int x = 0, y = 0, width = 0, height = 0;
    double pageWidth = 0, pageHeight = 0;  // the whole page drawn upright at 300 dpi
    bool empty() const { return width <= 0 || height <= 0; }
};

PixelRect visibleContent(const poppler::page_renderer& renderer, const poppler::page& page, const poppler::rectf& pageRect) {
    const poppler::image probe = renderer.render_page(&page, probeDpi, probeDpi);
    if (!probe.is_valid() || probe.width() <= 0 || probe.height() <= 0) return {};
    int left = probe.width(), top = probe.height(), right = -1, bottom = -1;
    const auto* bytes = reinterpret_cast<const unsigned char*>(probe.const_data());
    const int width = probe.width(), height = probe.height(), stride = probe.bytes_per_row();
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = bytes + static_cast<std::ptrdiff_t>(y) * stride;
        for (int x = 0; x < width; ++x) {
            if (row[x] >= inkBelow) continue;
            left = std::min(left, x), right = std::max(right, x);
            top = std::min(top, y), bottom = std::max(bottom, y);
        }
    }
    if (right < 0) return {};
    const double scale = rasterDpi / probeDpi, margin = cropMarginPoints * rasterDpi / 72;
    const bool turned = page.orientation() == poppler::page::landscape || page.orientation() == poppler::page::seascape;
    const double pageWidth = (turned ? pageRect.height() : pageRect.width()) * rasterDpi / 72;
    const double pageHeight = (turned ? pageRect.width() : pageRect.height()) * rasterDpi / 72;
    const int fullWidth = static_cast<int>(std::ceil(pageWidth)), fullHeight = static_cast<int>(std::ceil(pageHeight));
    const int x0 = std::max(0, static_cast<int>(std::floor(left * scale - margin)));
    const int y0 = std::max(0, static_cast<int>(std::floor(top * scale - margin)));
    const int x1 = std::min(fullWidth, static_cast<int>(std::ceil((right + 1) * scale + margin)));
    const int y1 = std::min(fullHeight, static_cast<int>(std::ceil((bottom + 1) * scale + margin)));
    return {x0, y0, x1 - x0, y1 - y0, pageWidth, pageHeight};
}

}  // namespace

struct StubOcrEngine::Engine {
    tesseract::TessBaseAPI api;
    bool ready = false;
};

StubOcrEngine::StubOcrEngine() : engine_(std::make_unique<Engine>()) {
    // English, the LSTM engine, and no dictionary correction of numbers: words are read as printed.
    engine_->ready = engine_->api.Init(nullptr, "eng", tesseract::OEM_LSTM_ONLY) == 0;
    if (engine_->ready) {
        // The page as one block of text: sparse-text segmentation misread bold digits ("5" as "9") on
        // the generated stubs, where reading the page as one block recovered every fact.
        engine_->api.SetPageSegMode(tesseract::PSM_SINGLE_BLOCK);
        engine_->api.SetVariable("debug_file", "/dev/null");
        // A stub prints dark text on white: the second look at each line as inverted (white on dark) text
        // costs a tenth of the page's time and finds nothing.
        engine_->api.SetVariable("tessedit_do_invert", "0");
        // Every stub is printed in proportional type as far as the recogniser is concerned: the search
        // for fixed-pitch rows costs a twentieth of a page's time, and the LSTM recogniser, which reads
        // whole words, has no use for the character cells it would find.
        engine_->api.SetVariable("textord_all_prop", "1");
    }
}

StubOcrEngine::~StubOcrEngine() {
    if (engine_ && engine_->ready) engine_->api.End();
}

PayStubTextEvidence StubOcrEngine::read(std::string_view pdf) {
    using Case = PayStubExtractionError::Case;
    const auto document = stub_pdf::open(pdf);
    PayStubTextEvidence evidence{PayStubTextSource::tesseractOCR, document->pages(), {}};
    if (!engine_->ready) throw PayStubExtractionError(Case::renderingFailed, 0);
    poppler::page_renderer renderer;
    renderer.set_image_format(poppler::image::format_gray8);
    renderer.set_render_hint(poppler::page_renderer::antialiasing, true);
    renderer.set_render_hint(poppler::page_renderer::text_antialiasing, true);
    for (int index = 0; index < evidence.pageCount; ++index) {
        const std::unique_ptr<poppler::page> page(document->create_page(index));
        if (!page) throw PayStubExtractionError(Case::renderingFailed, index);
        const poppler::rectf visible = page->page_rect(poppler::crop_box);
        if (!(visible.width() > 0) || !(visible.height() > 0) || visible.width() > maximumPagePoints || visible.height() > maximumPagePoints) {
            throw PayStubExtractionError(Case::renderingFailed, index);
        }
        const PixelRect crop = visibleContent(renderer, *page, visible);
        if (crop.empty()) continue;  // a blank page has nothing to read
        const poppler::image raster = renderer.render_page(page.get(), rasterDpi, rasterDpi, crop.x, crop.y, crop.width, crop.height);
        if (!raster.is_valid() || raster.width() <= 0 || raster.height() <= 0) throw PayStubExtractionError(Case::renderingFailed, index);
        auto& api = engine_->api;
        api.SetImage(reinterpret_cast<const unsigned char*>(raster.const_data()), raster.width(), raster.height(), 1, raster.bytes_per_row());
        api.SetSourceResolution(static_cast<int>(rasterDpi));
        if (api.Recognize(nullptr) != 0) throw PayStubExtractionError(Case::renderingFailed, index);
        const std::unique_ptr<tesseract::ResultIterator> words(api.GetIterator());
        int word = 0;
        if (words) {
            do {
                const std::unique_ptr<char[]> text(words->GetUTF8Text(tesseract::RIL_WORD));
                int left = 0, top = 0, right = 0, bottom = 0;
                if (!text || !*text.get() || !words->BoundingBox(tesseract::RIL_WORD, &left, &top, &right, &bottom)) continue;
                const std::string raw(text.get());
                const auto confidence = static_cast<float>(words->Confidence(tesseract::RIL_WORD) / 100.0);
                evidence.tokens.push_back({"tesseractOCR-p" + std::to_string(index) + "-" + std::to_string(word++),
                                           raw,
                                           stub_text::normalized(withoutDoubtfulMark(raw, confidence)),
                                           index,
                                           {(crop.x + left) / crop.pageWidth, (crop.y + top) / crop.pageHeight, (right - left) / crop.pageWidth, (bottom - top) / crop.pageHeight},
                                           PayStubTextSource::tesseractOCR,
                                           confidence});
            } while (words->Next(tesseract::RIL_WORD));
        }
        api.Clear();
    }
    return evidence;
}

}  // namespace tessel
