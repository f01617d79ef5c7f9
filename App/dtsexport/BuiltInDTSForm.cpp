#include "BuiltInDTSForm.hpp"

#include <cairo-pdf.h>
#include <cairo.h>
#include <leptonica/allheaders.h>
#include <pango/pangocairo.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <sstream>

#include "App/dtsexport/BuiltInFormLayout.hpp"
#include "App/dtsexport/FormPagePlacement.hpp"

namespace tessel::builtin_dts_form {
namespace {

namespace layout = builtin_form;
using Error = DTSPDFRendererError;

template <typename T, void (*Free)(T*)>
struct Releaser {
    void operator()(T* p) const { Free(p); }
};
using Surface = std::unique_ptr<cairo_surface_t, Releaser<cairo_surface_t, cairo_surface_destroy>>;
using Context = std::unique_ptr<cairo_t, Releaser<cairo_t, cairo_destroy>>;
using Font = std::unique_ptr<PangoFontDescription, Releaser<PangoFontDescription, pango_font_description_free>>;
void unrefLayout(PangoLayout* layout) { g_object_unref(layout); }
using Layout = std::unique_ptr<PangoLayout, Releaser<PangoLayout, unrefLayout>>;

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

// Text set in the form's face at a size, measured in points.
class TextSetter {
public:
    explicit TextSetter(cairo_t* cr) : cr_(cr), layout_(pango_cairo_create_layout(cr)) {}

    // Draws `text` on one line inside the box, as large as `size` and no smaller than the form's
    // smallest size; refuses a value that does not fit even then.
    void line(const std::string& text, double left, double top, double width, double height, double size, bool centered) {
        double fitted = size;
        double textWidth = 0, textHeight = 0;
        for (;; fitted -= 0.5) {
            measure(text, fitted, -1, textWidth, textHeight);
            if (textWidth <= width && textHeight <= height + 1) break;
            if (fitted - 0.5 < layout::smallestSize) throw Error::valueDoesNotFit(text);
        }
        const double x = centered ? left + (width - textWidth) / 2 : left;
        draw(x, top + (height - textHeight) / 2);
    }

    // Wrapped text filling the box from its top; refuses text that overflows at the smallest size.
    bool block(const std::string& text, double left, double top, double width, double height, double size) {
        double textWidth = 0, textHeight = 0;
        for (double fitted = size; fitted >= layout::smallestSize; fitted -= 0.5) {
            measure(text, fitted, width, textWidth, textHeight);
            if (textHeight <= height) {
                draw(left, top);
                return true;
            }
        }
        return false;
    }

private:
    void measure(const std::string& text, double size, double wrapWidth, double& width, double& height) {
        Font font(pango_font_description_from_string(std::string(layout::fontFamily).c_str()));
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
    void draw(double x, double y) {
        cairo_move_to(cr_, x, y);
        pango_cairo_show_layout(cr_, layout_.get());
    }

    cairo_t* cr_;
    Layout layout_;
};

const char* workModeLabel(CrewDailyWorkMode mode) {
    switch (mode) {
        case CrewDailyWorkMode::timed: return "Work";
        case CrewDailyWorkMode::worked: return "Worked Day";
        case CrewDailyWorkMode::prep: return "Prep";
    }
    return "";
}

std::string formDate(CalendarDate date) {
    const std::chrono::year_month_day ymd(date);
    return std::to_string(static_cast<unsigned>(ymd.month())) + "/" + std::to_string(static_cast<unsigned>(ymd.day())) + "/" +
           std::to_string(static_cast<int>(ymd.year()));
}

const layout::Box& headerBox(std::string_view id) {
    for (const auto& box : layout::header) {
        if (box.id == id) return box;
    }
    return layout::header.front();
}

void headerValue(TextSetter& text, std::string_view id, const std::optional<std::string>& value) {
    if (!value || value->empty()) return;
    const auto& box = headerBox(id);
    text.line(*value, box.valueLeft(), box.valueTop(), box.valueWidth(), box.valueHeight(), layout::valueSize, false);
}

void cell(TextSetter& text, std::size_t column, int slot, const std::optional<std::string>& value) {
    if (!value || value->empty()) return;
    const auto& c = layout::columns[column];
    const double top = layout::tableTop + layout::tableHeaderHeight + slot * layout::rowHeight;
    text.line(*value, c.x + layout::padding, top, c.width - 2 * layout::padding, layout::rowHeight, layout::rowValueSize, c.centered);
}

// The signature image as a Cairo surface, read through Leptonica (its RGBA words to Cairo's ARGB).
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

void drawSignature(cairo_t* cr, const std::string& bytes) {
    const Surface image = signatureSurface(bytes);
    if (!image) return;
    const auto& box = layout::signature;
    const double width = cairo_image_surface_get_width(image.get()), height = cairo_image_surface_get_height(image.get());
    const double scale = std::min(box.valueWidth() / width, box.valueHeight() / height);
    const double left = box.valueLeft() + (box.valueWidth() - width * scale) / 2;
    const double top = box.valueTop() + (box.valueHeight() - height * scale) / 2;
    cairo_save(cr);
    cairo_translate(cr, left, top);
    cairo_scale(cr, scale, scale);
    cairo_set_source_surface(cr, image.get(), 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
}

void drawPage(cairo_t* cr, const DTSExportModel& m, int page, int totalPages) {
    TextSetter text(cr);
    cairo_set_source_rgb(cr, 0, 0, 0);
    headerValue(text, "production", m.productionName);
    headerValue(text, "company", m.company);
    headerValue(text, "department", m.department);
    headerValue(text, "date", formDate(m.date));
    static constexpr std::array<std::string_view, 7> days{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    headerValue(text, "weekday", std::string(days[static_cast<std::size_t>(m.weekday - 1)]));
    headerValue(text, "workState", m.workState);
    headerValue(text, "call", m.generalCrewCall);
    headerValue(text, "lunchOut", m.lunchOut);
    headerValue(text, "lunchIn", m.lunchIn);
    headerValue(text, "wrap", m.wrap);
    headerValue(text, "travel", m.travel);
    headerValue(text, "mileage", m.departmentMileage);
    headerValue(text, "grace", m.graceCalled ? std::optional<std::string>("Yes") : std::optional<std::string>("No"));
    headerValue(text, "location", m.workLocation);

    const auto& box = layout::pageNumber;
    text.line(dts_presentation::pageXOfY(page, totalPages), box.x, box.y, box.width, box.height, layout::valueSize, false);

    const std::size_t first = static_cast<std::size_t>(page - 1) * layout::rowsPerPage;
    for (int slot = 0; slot < layout::rowsPerPage && first + static_cast<std::size_t>(slot) < m.crewRows.size(); ++slot) {
        const auto& r = m.crewRows[first + static_cast<std::size_t>(slot)];
        const std::optional<std::string> values[] = {std::to_string(first + static_cast<std::size_t>(slot) + 1),
                                                     r.employeeName, r.position, r.box, r.call, r.meal1Out, r.meal1In, r.meal2Out, r.meal2In, r.wrap,
                                                     r.ndb, std::string(workModeLabel(r.workMode))};
        for (std::size_t column = 0; column < layout::columns.size(); ++column) cell(text, column, slot, values[column]);
    }

    if (!m.notes.empty()) {
        const auto& notes = layout::notes;
        if (!text.block(m.notes, notes.valueLeft(), notes.valueTop(), notes.valueWidth(), notes.valueHeight(), layout::notesSize)) {
            throw Error(Error::Case::notesDoNotFit);
        }
    }
    if (m.departmentHeadName) {
        const auto& head = layout::departmentHead;
        text.line(*m.departmentHeadName, head.valueLeft(), head.valueTop(), head.valueWidth(), head.valueHeight(), layout::valueSize, false);
    }
    if (m.departmentHeadSignatureData) drawSignature(cr, *m.departmentHeadSignatureData);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw Error(Error::Case::templateUnavailable);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

// The blank page must be the one page of the size the layout was made for.
void checkBlank(const std::string& blank) {
    switch (form_pages::check(blank, layout::pageWidth, layout::pageHeight)) {
        case form_pages::BlankPageCheck::fits: return;
        case form_pages::BlankPageCheck::otherSize: throw Error(Error::Case::unexpectedPageSize);
        case form_pages::BlankPageCheck::unreadable:
        case form_pages::BlankPageCheck::notOnePage: throw Error(Error::Case::invalidTemplate);
    }
}

}  // namespace

int pageCount(const DTSExportModel& m) {
    return std::max(1, static_cast<int>((m.crewRows.size() + layout::rowsPerPage - 1) / layout::rowsPerPage));
}

std::filesystem::path blankPagePath() {
    if (const char* directory = std::getenv("TESSEL_RESOURCE_DIR"); directory && *directory) {
        return std::filesystem::path(directory) / "builtin-dts-form.pdf";
    }
    return std::filesystem::path(TESSEL_RESOURCE_DIR) / "builtin-dts-form.pdf";
}

std::string drawValues(const DTSExportModel& model) {
    std::string pdf;
    const int totalPages = pageCount(model);
    Surface surface(cairo_pdf_surface_create_for_stream(&appendTo, &pdf, layout::pageWidth, layout::pageHeight));
    {
        Context cr(cairo_create(surface.get()));
        for (int page = 1; page <= totalPages; ++page) {
            drawPage(cr.get(), model, page, totalPages);
            cairo_show_page(cr.get());
        }
        if (cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS) throw Error(Error::Case::outputCreationFailed);
    }
    cairo_surface_finish(surface.get());
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) throw Error(Error::Case::outputCreationFailed);
    return pdf;
}

std::string render(const DTSExportModel& model, const std::filesystem::path& blankPage) {
    const std::string blank = readFile(blankPage);
    checkBlank(blank);
    const std::string overlay = drawValues(model);
    try {
        return form_pages::placed(blank, overlay);
    } catch (const std::exception&) {
        throw Error(Error::Case::outputCreationFailed);
    }
}

}  // namespace tessel::builtin_dts_form
