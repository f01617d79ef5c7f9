#pragma once

#include <cairo.h>
#include <pango/pangocairo.h>

#include <memory>
#include <string>
#include <string_view>

// Drawing values onto a DTS page with Cairo and Pango, shared by the built-in form and a production's
// own form: text set on one line inside a box, shrunk in half points down to a smallest size; wrapped
// text; an image fitted into a box; and the PDF surface the pages are drawn on.
namespace tessel::form_drawing {

template <typename T, void (*Free)(T*)>
struct Releaser {
    void operator()(T* p) const { Free(p); }
};
using Surface = std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_t, cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, Releaser<cairo_t, cairo_destroy>>;
void unrefLayout(PangoLayout* layout);
using Layout = std::unique_ptr<PangoLayout, Releaser<PangoLayout, unrefLayout>>;

// A PDF surface that appends its bytes to `pdf`.
Surface pdfSurface(std::string& pdf, double width, double height);

enum class Alignment { leading, center, trailing };

// Text set in a face at a size, measured in points.
class TextSetter {
public:
    TextSetter(cairo_t* cr, std::string_view fontFamily);

    // Draws `text` on one line inside the box, as large as `size` and no smaller than `smallest`, centred
    // vertically; false, drawing nothing, when it does not fit even then.
    bool line(const std::string& text, double left, double top, double width, double height, double size, double smallest, Alignment alignment);
    // Wrapped text filling the box from its top; false when it overflows at the smallest size.
    bool block(const std::string& text, double left, double top, double width, double height, double size, double smallest);

private:
    void measure(const std::string& text, double size, double wrapWidth, double& width, double& height);
    void draw(double x, double y);

    cairo_t* cr_;
    std::string fontFamily_;
    Layout layout_;
};

// The image (PNG, JPEG or TIFF, read through Leptonica) fitted and centred in the box; false when it does
// not decode.
bool image(cairo_t* cr, const std::string& bytes, double left, double top, double width, double height);

}  // namespace tessel::form_drawing
