#pragma once

#include <string>
#include <vector>

#include <cairo-pdf.h>

// Small PDFs drawn for the extraction tests: words placed at points on a Letter page.
namespace tessel::testing {

struct PlacedWord {
    double x, y;  // the baseline's start, in points from the top left
    std::string text;
};

inline cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// One page per list of words, in a 10-point sans-serif face.
inline std::string drawnPdf(const std::vector<std::vector<PlacedWord>>& pages) {
    std::string bytes;
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendTo, &bytes, 612, 792);
    cairo_t* cr = cairo_create(surface);
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, 10);
    for (const auto& words : pages) {
        for (const auto& word : words) {
            cairo_move_to(cr, word.x, word.y);
            cairo_show_text(cr, word.text.c_str());
        }
        cairo_show_page(cr);
    }
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    return bytes;
}

}  // namespace tessel::testing
