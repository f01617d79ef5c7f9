// Draws the blank page of the built-in DTS form from its layout table: the title, each header box with
// its caption, the crew table with its column captions and ruled rows, and the foot. Usage:
//   tessel-dts-form OUTPUT.pdf
#include <cairo-pdf.h>
#include <cairo.h>
#include <pango/pangocairo.h>

#include <cstdio>
#include <string>

#include "App/dtsexport/BuiltInFormLayout.hpp"

namespace {

namespace layout = tessel::builtin_form;

void caption(cairo_t* cr, std::string_view text, double x, double y, double size, bool bold, double width = -1) {
    PangoLayout* pango = pango_cairo_create_layout(cr);
    PangoFontDescription* font = pango_font_description_from_string((std::string(layout::fontFamily) + (bold ? " Bold" : "")).c_str());
    pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
    pango_layout_set_font_description(pango, font);
    pango_layout_set_text(pango, std::string(text).c_str(), -1);
    if (width > 0) {
        pango_layout_set_width(pango, static_cast<int>(width * PANGO_SCALE));
        pango_layout_set_alignment(pango, PANGO_ALIGN_CENTER);
    }
    cairo_move_to(cr, x, y);
    pango_cairo_show_layout(cr, pango);
    pango_font_description_free(font);
    g_object_unref(pango);
}

void box(cairo_t* cr, const layout::Box& b) {
    cairo_rectangle(cr, b.x, b.y, b.width, b.height);
    cairo_stroke(cr);
    if (!b.label.empty()) caption(cr, b.label, b.x + layout::padding, b.y + 1.5, layout::labelSize, false);
}

void table(cairo_t* cr) {
    const double left = layout::columns.front().x;
    const double right = layout::columns.back().x + layout::columns.back().width;
    // The caption band, shaded, with each column's caption centred.
    cairo_set_source_rgb(cr, 0.88, 0.88, 0.88);
    cairo_rectangle(cr, left, layout::tableTop, right - left, layout::tableHeaderHeight);
    cairo_fill(cr);
    cairo_set_source_rgb(cr, 0, 0, 0);
    for (const auto& column : layout::columns) {
        caption(cr, column.label, column.x + 1, layout::tableTop + 6, layout::labelSize, true, column.width - 2);
    }
    // Alternate rows lightly tinted so a row can be followed across the page.
    for (int row = 0; row < layout::rowsPerPage; row += 2) {
        cairo_set_source_rgb(cr, 0.96, 0.96, 0.96);
        cairo_rectangle(cr, left, layout::tableTop + layout::tableHeaderHeight + (row + 1) * layout::rowHeight, right - left, layout::rowHeight);
        cairo_fill(cr);
    }
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_set_line_width(cr, 0.5);
    for (int line = 0; line <= layout::rowsPerPage; ++line) {
        const double y = layout::tableTop + layout::tableHeaderHeight + line * layout::rowHeight;
        cairo_move_to(cr, left, y);
        cairo_line_to(cr, right, y);
    }
    for (const auto& column : layout::columns) {
        cairo_move_to(cr, column.x, layout::tableTop);
        cairo_line_to(cr, column.x, layout::tableBottom);
    }
    cairo_move_to(cr, right, layout::tableTop);
    cairo_line_to(cr, right, layout::tableBottom);
    cairo_stroke(cr);
    cairo_set_line_width(cr, 1);
    cairo_rectangle(cr, left, layout::tableTop, right - left, layout::tableBottom - layout::tableTop);
    cairo_stroke(cr);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: tessel-dts-form OUTPUT.pdf\n");
        return 2;
    }
    cairo_surface_t* surface = cairo_pdf_surface_create(argv[1], layout::pageWidth, layout::pageHeight);
    cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_TITLE, "Daily Time Sheet");
    cairo_pdf_surface_set_metadata(surface, CAIRO_PDF_METADATA_CREATOR, "Tessel");
    cairo_t* cr = cairo_create(surface);
    cairo_set_source_rgb(cr, 0, 0, 0);
    caption(cr, layout::title, layout::margin, 28, 18, true);
    cairo_set_line_width(cr, 0.75);
    for (const auto& b : layout::header) box(cr, b);
    table(cr);
    cairo_set_line_width(cr, 0.75);
    for (const auto* b : {&layout::notes, &layout::departmentHead, &layout::signature}) box(cr, *b);
    caption(cr, "Hours in payroll decimal (7.5 = 7:30). NDB: non-deductible breakfast. BOX: box / kit rental applies.", layout::margin,
            layout::notes.y + layout::notes.height + 6, 6.5, false);
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    const bool ok = cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS;
    cairo_surface_destroy(surface);
    if (!ok) std::fprintf(stderr, "tessel-dts-form: the form could not be written to %s\n", argv[1]);
    return ok ? 0 : 1;
}
