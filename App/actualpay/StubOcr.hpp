#pragma once

#include <memory>
#include <string_view>

#include "App/actualpay/StubEvidence.hpp"
#include "App/actualpay/StubExtraction.hpp"

// The second, independent reading of a pay stub: Tesseract OCR of each page's pixels. The recogniser is
// given only a 300-dpi raster of the page's visible content as poppler draws it (the inked part of the
// crop box, with a quarter-inch margin), never the PDF's text layer, so the two readings fail in
// different ways and can be compared.
namespace tessel {

class StubOcrEngine {
public:
    StubOcrEngine();  // one engine per worker, reused for every page it reads
    ~StubOcrEngine();
    StubOcrEngine(const StubOcrEngine&) = delete;
    StubOcrEngine& operator=(const StubOcrEngine&) = delete;

    // Each recognised word with its confidence (0 to 1) and its box relative to the visible page.
    // Refuses as the text-layer reading does; a page that cannot be drawn is renderingFailed.
    PayStubTextEvidence read(std::string_view pdf);

private:
    struct Engine;
    std::unique_ptr<Engine> engine_;
};

}  // namespace tessel
