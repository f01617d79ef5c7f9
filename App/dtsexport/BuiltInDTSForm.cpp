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
#include "App/dtsexport/FormDrawing.hpp"
#include "App/dtsexport/FormPagePlacement.hpp"

namespace tessel::builtin_dts_form {
namespace {

namespace layout = builtin_form;
using Error = DTSPDFRendererError;

using form_drawing::Context;
using form_drawing::Surface;

// The form's text: its face, and its smallest size as the floor of every fitted value.
class TextSetter {
public:
    explicit TextSetter(cairo_t* cr) : setter_(cr, layout::fontFamily) {}
    void line(const std::string& text, double left, double top, double width, double height, double size, bool centered) {
        using form_drawing::Alignment;
        if (!setter_.line(text, left, top, width, height, size, layout::smallestSize, centered ? Alignment::center : Alignment::leading)) {
            throw Error::valueDoesNotFit(text);
        }
    }
    bool block(const std::string& text, double left, double top, double width, double height, double size) {
        return setter_.block(text, left, top, width, height, size, layout::smallestSize);
    }

private:
    form_drawing::TextSetter setter_;
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

void drawSignature(cairo_t* cr, const std::string& bytes) {
    const auto& box = layout::signature;
    form_drawing::image(cr, bytes, box.valueLeft(), box.valueTop(), box.valueWidth(), box.valueHeight());
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
    Surface surface = form_drawing::pdfSurface(pdf, layout::pageWidth, layout::pageHeight);
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
