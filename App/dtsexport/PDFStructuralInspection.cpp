#include "PDFStructuralInspection.hpp"

#include <glib.h>
#include <poppler-document.h>
#include <poppler-global.h>
#include <poppler-page.h>

#include <climits>
#include <cmath>
#include <mutex>
#include <memory>

#include "App/dtsexport/PDFContentScan.hpp"

namespace tessel {
namespace {

using Case = PDFStructuralInspectionError::Case;

std::string messageOf(Case errorCase, int page, int rotation) {
    const std::string pageWords = "Page " + std::to_string(page + 1) + " of the selected PDF";
    switch (errorCase) {
        case Case::invalidPageBounds: return pageWords + " has no usable page size.";
        case Case::unsupportedRotation:
            return pageWords + " is rotated by " + std::to_string(rotation) + "\u00B0; Tessel reads blank DTS pages drawn upright.";
        case Case::emptyData: return "The selected PDF is empty.";
        case Case::invalidPDF: return "The selected file is not a readable PDF.";
        case Case::noPages: return "The selected PDF contains no pages.";
    }
    return {};
}

std::string sha256(std::string_view bytes) {
    gchar* digest = g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(bytes.data()), bytes.size());
    std::string hex(digest);
    g_free(digest);
    return hex;
}

PDFRect rectOf(const pdf_scan::Box& box) { return {box.x0, box.y0, box.x1 - box.x0, box.y1 - box.y0}; }

bool usable(const PDFRect& r) { return std::isfinite(r.x) && std::isfinite(r.y) && std::isfinite(r.width) && std::isfinite(r.height) && r.width > 0 && r.height > 0; }

// Native points to the visible page's 0…1 space, origin at its top left.
struct PageSpace {
    PDFRect visible;
    PDFPoint normalized(double x, double y) const { return {(x - visible.x) / visible.width, (visible.bottom() - y) / visible.height}; }
    PDFRect normalized(const PDFRect& r) const {
        const auto topLeft = normalized(r.x, r.bottom());
        return {topLeft.x, topLeft.y, r.width / visible.width, r.height / visible.height};
    }
};

std::string utf8(const poppler::ustring& text) {
    const auto bytes = text.to_utf8();
    return std::string(bytes.begin(), bytes.end());
}

// The selectable words with their boxes. Poppler gives them from the top left of the media box.
std::vector<PDFTextEvidence> textOf(poppler::page& page, const PDFRect& media, const PageSpace& space) {
    std::vector<PDFTextEvidence> words;
    std::size_t offset = 0;
    for (const auto& box : page.text_list()) {
        const std::string text = utf8(box.text());
        if (text.empty()) continue;
        const poppler::rectf b = box.bbox();
        const PDFRect native{media.x + b.x(), media.bottom() - b.y() - b.height(), b.width(), b.height()};
        words.push_back({static_cast<int>(words.size()), text, {offset, offset + text.size()}, native, space.normalized(native)});
        offset += text.size() + 1;
    }
    return words;
}

PDFStructuralPage pageOf(int index, const pdf_scan::PageScan& scanned, poppler::page& page) {
    PDFStructuralPage result;
    result.pageIndex = index;
    result.mediaBox = rectOf(scanned.mediaBox);
    result.rotation = scanned.rotation;
    if (!usable(result.mediaBox)) throw PDFStructuralInspectionError(Case::invalidPageBounds, index);
    if (result.rotation != 0) throw PDFStructuralInspectionError(Case::unsupportedRotation, index, result.rotation);
    result.cropBox = scanned.cropBox ? rectOf(*scanned.cropBox) : result.mediaBox;
    result.usedMediaBoxFallback = !scanned.cropBox || !usable(result.cropBox);
    result.effectiveVisibleBounds = result.usedMediaBoxFallback ? result.mediaBox : result.cropBox;
    result.displayedSize = {result.effectiveVisibleBounds.width, result.effectiveVisibleBounds.height};
    const PageSpace space{result.effectiveVisibleBounds};
    result.text = textOf(page, result.mediaBox, space);
    for (const auto& w : scanned.widgets) {
        const PDFRect native = rectOf(w.bounds);
        result.widgets.push_back({static_cast<int>(result.widgets.size()), w.fieldName, w.annotationType, w.value, w.fieldType, w.readOnly, native,
                                  space.normalized(native)});
    }
    for (const auto& l : scanned.lines) {
        result.lines.push_back({static_cast<int>(result.lines.size()), {l.start.x, l.start.y}, {l.end.x, l.end.y}, space.normalized(l.start.x, l.start.y),
                                space.normalized(l.end.x, l.end.y), l.strokeWidth});
    }
    for (const auto& r : scanned.rectangles) {
        const PDFRect native = rectOf(r.bounds);
        result.rectangles.push_back({static_cast<int>(result.rectangles.size()), native, space.normalized(native), r.stroked, r.filled});
    }
    result.imageResourceCount = scanned.imageResourceCount;
    return result;
}

}  // namespace

PDFStructuralInspectionError::PDFStructuralInspectionError(Case errorCase, int page, int rotation)
    : std::runtime_error(messageOf(errorCase, page, rotation)), case_(errorCase) {}

std::string_view PDFStructuralInspectionError::caseName() const noexcept {
    switch (case_) {
        case Case::invalidPageBounds: return "invalidPageBounds";
        case Case::unsupportedRotation: return "unsupportedRotation";
        case Case::emptyData: return "emptyData";
        case Case::invalidPDF: return "invalidPDF";
        case Case::noPages: return "noPages";
    }
    return {};
}

namespace pdf_structure {

PDFStructuralInspection inspect(std::string_view pdf) {
    if (pdf.empty()) throw PDFStructuralInspectionError(Case::emptyData);
    std::vector<pdf_scan::PageScan> scanned;
    try {
        scanned = pdf_scan::scan(std::string(pdf));
    } catch (const std::exception&) {
        throw PDFStructuralInspectionError(Case::invalidPDF);
    }
    if (pdf.size() > static_cast<std::size_t>(INT_MAX)) throw PDFStructuralInspectionError(Case::invalidPDF);
    // Poppler's complaints about a damaged file are not the user's to read: the refusal says it.
    static std::once_flag silenced;
    std::call_once(silenced, [] { poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr); });
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_raw_data(pdf.data(), static_cast<int>(pdf.size())));
    if (!document || document->is_locked()) throw PDFStructuralInspectionError(Case::invalidPDF);
    if (document->pages() <= 0 || scanned.empty()) throw PDFStructuralInspectionError(Case::noPages);
    if (static_cast<std::size_t>(document->pages()) != scanned.size()) throw PDFStructuralInspectionError(Case::invalidPDF);
    PDFStructuralInspection inspection{sha256(pdf), pdf.size(), document->pages(), {}};
    for (int index = 0; index < inspection.pageCount; ++index) {
        const std::unique_ptr<poppler::page> page(document->create_page(index));
        if (!page) throw PDFStructuralInspectionError(Case::invalidPDF);
        inspection.pages.push_back(pageOf(index, scanned[static_cast<std::size_t>(index)], *page));
    }
    return inspection;
}

}  // namespace pdf_structure
}  // namespace tessel
