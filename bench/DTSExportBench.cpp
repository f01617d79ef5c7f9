#include <benchmark/benchmark.h>
#include <cairo-pdf.h>
#include <pango/pangocairo.h>

#include "App/dtsexport/BuiltInDTSForm.hpp"
#include "App/dtsexport/BuiltInFormLayout.hpp"

// Exporting a DTS of thirty crew rows on the built-in form, beside Cairo and Pango drawing the same
// strings at the same positions and nothing else (no fitting, no placing over the blank page).
namespace tessel {
namespace {

namespace layout = builtin_form;

DTSExportModel thirtyRows() {
    DTSExportModel m;
    m.productionName = "Harbor Lights";
    m.date = CalendarDate(std::chrono::year(2026) / 11 / 4);
    m.weekday = 4;
    m.company = "Lighthouse Pictures";
    m.department = "Grip & Electric";
    m.workState = "CA";
    m.departmentHeadName = "Morgan Hale";
    m.generalCrewCall = "7.0";
    m.lunchOut = "13.0";
    m.lunchIn = "13.5";
    m.wrap = "19.5";
    m.notes = "Company move to stage 4 after lunch.";
    for (int i = 0; i < 30; ++i) {
        DTSExportModel::CrewRow row{Uuid::generate()};
        row.employeeName = "Crew Member " + std::to_string(i + 1);
        row.position = "Rigging Grip";
        row.call = "7.0";
        row.meal1Out = "13.0";
        row.meal1In = "13.5";
        row.wrap = "19.5";
        if (i % 3 == 0) row.ndb = "X";
        m.crewRows.push_back(row);
    }
    return m;
}

cairo_status_t discard(void*, const unsigned char*, unsigned int) { return CAIRO_STATUS_SUCCESS; }

void show(cairo_t* cr, PangoLayout* pango, const std::string& text, double x, double y) {
    pango_layout_set_text(pango, text.c_str(), static_cast<int>(text.size()));
    cairo_move_to(cr, x, y);
    pango_cairo_show_layout(cr, pango);
}

// The strings of the export, each drawn once at its box's corner on two PDF pages.
void drawTheStringsAlone(const DTSExportModel& m) {
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(&discard, nullptr, layout::pageWidth, layout::pageHeight);
    cairo_t* cr = cairo_create(surface);
    PangoLayout* pango = pango_cairo_create_layout(cr);
    PangoFontDescription* font = pango_font_description_from_string(std::string(layout::fontFamily).c_str());
    pango_font_description_set_absolute_size(font, layout::rowValueSize * PANGO_SCALE);
    pango_layout_set_font_description(pango, font);
    for (int page = 0; page < 2; ++page) {
        for (const auto& box : layout::header) show(cr, pango, m.productionName, box.valueLeft(), box.valueTop());
        for (int slot = 0; slot < layout::rowsPerPage && page * layout::rowsPerPage + slot < 30; ++slot) {
            const auto& row = m.crewRows[static_cast<std::size_t>(page * layout::rowsPerPage + slot)];
            const double y = layout::tableTop + layout::tableHeaderHeight + slot * layout::rowHeight;
            const std::optional<std::string> values[] = {row.employeeName, row.position, row.call, row.meal1Out, row.meal1In, row.wrap,
                                                         std::string("X"), std::string("Work"), std::to_string(slot + 1)};
            std::size_t column = 0;
            for (const auto& value : values) show(cr, pango, *value, layout::columns[column++ % layout::columns.size()].x, y);
        }
        show(cr, pango, m.notes, layout::notes.valueLeft(), layout::notes.valueTop());
        cairo_show_page(cr);
    }
    pango_font_description_free(font);
    g_object_unref(pango);
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
}

void exportThirtyRows(benchmark::State& state) {
    const auto model = thirtyRows();
    const auto blank = builtin_dts_form::blankPagePath();
    std::size_t bytes = 0;
    for (auto _ : state) bytes = builtin_dts_form::render(model, blank).size();
    state.counters["pdfBytes"] = static_cast<double>(bytes);
}
BENCHMARK(exportThirtyRows)->Unit(benchmark::kMillisecond);

void drawTheSameStringsAlone(benchmark::State& state) {
    const auto model = thirtyRows();
    for (auto _ : state) drawTheStringsAlone(model);
}
BENCHMARK(drawTheSameStringsAlone)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
