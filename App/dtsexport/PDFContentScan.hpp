#pragma once

#include <optional>
#include <string>
#include <vector>

// What QPDF reads of a PDF's pages for the structure inspection: the page boxes and rotation, the form
// widgets, the image resources, and the straight lines and rectangles the content stream strokes or
// fills, in the page's own (native) coordinates: points, origin at the bottom left. Kept apart, and free
// of the rest of the program's headers, because QPDF's headers are compiled in C++17 under Clang.
namespace tessel::pdf_scan {

struct Point {
    double x = 0, y = 0;
};
struct Box {
    double x0 = 0, y0 = 0, x1 = 0, y1 = 0;  // lower left, upper right
};
struct Segment {
    Point start, end;
    double strokeWidth = 1;  // in page units, the transform's scale applied
};
struct Rectangle {
    Box bounds;
    bool stroked = false, filled = false;
};
struct Widget {
    std::string fieldName, annotationType, fieldType;
    std::optional<std::string> value;
    bool readOnly = false;
    Box bounds;
};
struct PageScan {
    Box mediaBox;
    std::optional<Box> cropBox;
    int rotation = 0;
    std::vector<Segment> lines;
    std::vector<Rectangle> rectangles;
    std::vector<Widget> widgets;
    int imageResourceCount = 0;
};

// Throws std::exception when QPDF cannot read the document.
std::vector<PageScan> scan(const std::string& pdf);

}  // namespace tessel::pdf_scan
