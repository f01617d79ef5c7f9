#include "FormDrawing.hpp"

#include <cairo-pdf.h>
#include <leptonica/allheaders.h>

#include <algorithm>
#include <cstdint>

namespace tessel::form_drawing {
namespace {

using Font = std::unique_ptr<PangoFontDescription, Releaser<PangoFontDescription, pango_font_description_free>>;

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// An image as a Cairo surface, read through Leptonica (its RGBA words to Cairo's ARGB).
Surface signatureSurface(const std::string& bytes) {
    PIX* read = pixReadMem(reinterpret_cast<const l_uint8*>(bytes.data()), bytes.size());
    if (!read) return nullptr;
    const bool hasAlpha = pixGetSpp(read) == 4;
    PIX* rgba = pixConvertTo32(read);
    pixDestroy(&read);
    if (!rgba) return nullptr;
    const int width = static_cast<int>(pixGetWidth(rgba)), height = static_cast<int>(pixGetHeight(rgba));
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    cairo_surface_flush(surface.get());
    unsigned char* target = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    const l_uint32* words = pixGetData(rgba);
    const int wordsPerLine = static_cast<int>(pixGetWpl(rgba));
    for (int y = 0; y < height; ++y) {
        auto* line = reinterpret_cast<std::uint32_t*>(target + y * stride);
        for (int x = 0; x < width; ++x) {
            const l_uint32 word = words[y * wordsPerLine + x];
            const std::uint32_t r = (word >> 24) & 0xFF, g = (word >> 16) & 0xFF, b = (word >> 8) & 0xFF;
            const std::uint32_t a = hasAlpha ? word & 0xFF : 0xFF;
            // Premultiplied, as Cairo keeps it.
            line[x] = (a << 24) | ((r * a / 255) << 16) | ((g * a / 255) << 8) | (b * a / 255);
        }
    }
    pixDestroy(&rgba);
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

}  // namespace

void unrefLayout(PangoLayout* layout) { g_object_unref(layout); }

Surface pdfSurface(std::string& pdf, double width, double height) { return Surface(cairo_pdf_surface_create_for_stream(&appendTo, &pdf, width, height)); }

TextSetter::TextSetter(cairo_t* cr, std::string_view fontFamily) : cr_(cr), fontFamily_(fontFamily), layout_(pango_cairo_create_layout(cr)) {}

bool TextSetter::line(const std::string& text, double left, double top, double width, double height, double size, double smallest, Alignment alignment) {
    double textWidth = 0, textHeight = 0;
    for (double fitted = size; fitted >= smallest; fitted -= 0.5) {
        measure(text, fitted, -1, textWidth, textHeight);
        if (textWidth <= width && textHeight <= height + 1) {
            const double x = alignment == Alignment::center ? left + (width - textWidth) / 2 : alignment == Alignment::trailing ? left + width - textWidth : left;
            draw(x, top + (height - textHeight) / 2);
            return true;
        }
    }
    return false;
}

bool TextSetter::block(const std::string& text, double left, double top, double width, double height, double size, double smallest) {
    double textWidth = 0, textHeight = 0;
    for (double fitted = size; fitted >= smallest; fitted -= 0.5) {
        measure(text, fitted, width, textWidth, textHeight);
        if (textHeight <= height) {
            draw(left, top);
            return true;
        }
    }
    return false;
}

void TextSetter::measure(const std::string& text, double size, double wrapWidth, double& width, double& height) {
    Font font(pango_font_description_from_string(fontFamily_.c_str()));
    pango_font_description_set_absolute_size(font.get(), size * PANGO_SCALE);
    pango_layout_set_font_description(layout_.get(), font.get());
    pango_layout_set_width(layout_.get(), wrapWidth < 0 ? -1 : static_cast<int>(wrapWidth * PANGO_SCALE));
    pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_text(layout_.get(), text.c_str(), static_cast<int>(text.size()));
    PangoRectangle logical;
    pango_layout_get_extents(layout_.get(), nullptr, &logical);
    width = static_cast<double>(logical.width) / PANGO_SCALE;
    height = static_cast<double>(logical.height) / PANGO_SCALE;
}

void TextSetter::draw(double x, double y) {
    cairo_move_to(cr_, x, y);
    pango_cairo_show_layout(cr_, layout_.get());
}

bool image(cairo_t* cr, const std::string& bytes, double left, double top, double width, double height) {
    const Surface picture = signatureSurface(bytes);
    if (!picture) return false;
    const double w = cairo_image_surface_get_width(picture.get()), h = cairo_image_surface_get_height(picture.get());
    const double scale = std::min(width / w, height / h);
    cairo_save(cr);
    cairo_translate(cr, left + (width - w * scale) / 2, top + (height - h * scale) / 2);
    cairo_scale(cr, scale, scale);
    cairo_set_source_surface(cr, picture.get(), 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
    return true;
}

}  // namespace tessel::form_drawing
