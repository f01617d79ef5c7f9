#include "StubOcr.hpp"

#include <poppler-document.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>
#include <tesseract/baseapi.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

#include "App/actualpay/StubPdfDocument.hpp"
#include "App/actualpay/StubText.hpp"

namespace tessel {
namespace {

constexpr double rasterDpi = 300;
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
        const poppler::image raster = renderer.render_page(page.get(), rasterDpi, rasterDpi);
        if (!raster.is_valid() || raster.width() <= 0 || raster.height() <= 0) throw PayStubExtractionError(Case::renderingFailed, index);
        auto& api = engine_->api;
        api.SetImage(reinterpret_cast<const unsigned char*>(raster.const_data()), raster.width(), raster.height(), 1, raster.bytes_per_row());
        api.SetSourceResolution(static_cast<int>(rasterDpi));
        if (api.Recognize(nullptr) != 0) throw PayStubExtractionError(Case::renderingFailed, index);
        const std::unique_ptr<tesseract::ResultIterator> words(api.GetIterator());
        int word = 0;
        const double width = raster.width(), height = raster.height();
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
                                           {left / width, top / height, (right - left) / width, (bottom - top) / height},
                                           PayStubTextSource::tesseractOCR,
                                           confidence});
            } while (words->Next(tesseract::RIL_WORD));
        }
        api.Clear();
    }
    return evidence;
}

}  // namespace tessel
