#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What a PDF page holds that a blank DTS form is made of: selectable text with positions, form widgets,
// and the straight lines and rectangles its content stream draws. Each piece of evidence keeps its native
// coordinates (points, origin at the bottom left of the page space) and page-relative ones (0…1 across
// the visible page, origin at the top left). Inspection is local and transient: it stores nothing.
namespace tessel {

struct PDFPoint {
    double x = 0, y = 0;
};
struct PDFRect {
    double x = 0, y = 0, width = 0, height = 0;
    double right() const { return x + width; }
    double bottom() const { return y + height; }  // in page-relative space, y grows downwards
};

struct PDFTextEvidence {
    int id = 0;
    std::string text;
    std::pair<std::size_t, std::size_t> characterRange;  // in the page's text, words joined by spaces
    PDFRect nativeBounds, normalizedBounds;
    std::string_view source = "selectablePDFText";
};

struct PDFWidgetEvidence {
    int id = 0;
    std::string fieldName, annotationType;
    std::optional<std::string> widgetValue;
    std::string widgetFieldType;
    bool isReadOnly = false;
    PDFRect nativeBounds, normalizedBounds;
};

struct PDFLineEvidence {
    int id = 0;
    PDFPoint nativeStart, nativeEnd, normalizedStart, normalizedEnd;
    double strokeWidth = 0;
};

struct PDFRectangleEvidence {
    int id = 0;
    PDFRect nativeBounds, normalizedBounds;
    bool stroked = false, filled = false;
};

struct PDFStructuralPage {
    int pageIndex = 0;
    PDFRect mediaBox, cropBox, effectiveVisibleBounds;
    bool usedMediaBoxFallback = false;  // the crop box was missing or unusable
    int rotation = 0;
    std::pair<double, double> displayedSize;
    std::vector<PDFTextEvidence> text;
    std::vector<PDFWidgetEvidence> widgets;
    std::vector<PDFLineEvidence> lines;
    std::vector<PDFRectangleEvidence> rectangles;
    int imageResourceCount = 0;
};

struct PDFStructuralInspection {
    std::string sha256;  // hex digest of the PDF's bytes: the source fingerprint
    std::size_t byteCount = 0;
    int pageCount = 0;
    std::vector<PDFStructuralPage> pages;
};

class PDFStructuralInspectionError : public std::runtime_error {
public:
    enum class Case { invalidPageBounds, unsupportedRotation, emptyData, invalidPDF, noPages };
    PDFStructuralInspectionError(Case errorCase, int page = 0, int rotation = 0);
    Case errorCase() const noexcept { return case_; }
    std::string_view caseName() const noexcept;

private:
    Case case_;
};

namespace pdf_structure {
inline constexpr std::string_view inspectTitle = "Couldn\u2019t Inspect PDF";
inline constexpr std::string_view transient = "Inspection is local and transient. It does not create or modify a Production template.";
inline constexpr std::string_view onePageOnly =
    "This version of Tessel supports one-page DTS templates. Choose the single blank DTS page production uses for one sheet.";

// Pages rotated by a quarter or half turn are refused: a blank DTS is drawn upright, and the
// interpreter's notion of rows and columns follows the page space.
PDFStructuralInspection inspect(std::string_view pdf);
}  // namespace pdf_structure

}  // namespace tessel
