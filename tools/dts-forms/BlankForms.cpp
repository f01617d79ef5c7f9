// Invented blank DTS forms for the structure inspector's tests, benchmarks and demo, written to the folder
// given: a typical landscape form with a 14-row crew table, spanning "MEAL 1" / "MEAL 2" headers and
// standalone document labels; the same with its rules drawn as thin filled rectangles; one drawn through
// nested transforms; one with AcroForm text fields; one rotated page; a grid of only four rules; a
// two-page PDF; and a file that is not a PDF.
#include <cairo-pdf.h>
#include <cairo.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include <filesystem>
#include <functional>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr double pageWidth = 792, pageHeight = 612;  // US Letter, landscape

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

struct Style {
    bool rulesAsRectangles = false;  // each rule a thin filled rectangle instead of a stroked line
};

void rule(cairo_t* cr, const Style& style, double x0, double y0, double x1, double y1) {
    if (style.rulesAsRectangles) {
        const double t = 0.6;
        if (y0 == y1) cairo_rectangle(cr, x0, y0 - t / 2, x1 - x0, t);
        else cairo_rectangle(cr, x0 - t / 2, y0, t, y1 - y0);
        cairo_fill(cr);
        return;
    }
    cairo_move_to(cr, x0, y0);
    cairo_line_to(cr, x1, y1);
    cairo_stroke(cr);
}

void text(cairo_t* cr, double x, double y, const std::string& words, double size = 8) {
    cairo_set_font_size(cr, size);
    cairo_move_to(cr, x, y);
    cairo_show_text(cr, words.c_str());
}

void centred(cairo_t* cr, double left, double right, double y, const std::string& words) {
    cairo_set_font_size(cr, 7);
    cairo_text_extents_t e;
    cairo_text_extents(cr, words.c_str(), &e);
    cairo_move_to(cr, (left + right - e.x_advance) / 2, y);
    cairo_show_text(cr, words.c_str());
}

// A labelled blank with its underline.
void blank(cairo_t* cr, const Style& style, double x, double y, const std::string& label, double lineEnd) {
    text(cr, x, y, label, 9);
    cairo_text_extents_t e;
    cairo_text_extents(cr, label.c_str(), &e);
    rule(cr, style, x + e.x_advance + 4, y + 2, lineEnd, y + 2);
}

void typicalPage(cairo_t* cr, const Style& style) {
    cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_source_rgb(cr, 0, 0, 0);
    cairo_set_line_width(cr, 0.6);
    text(cr, 300, 40, "DAILY TIME SHEET", 14);
    blank(cr, style, 40, 70, "PRODUCTION:", 300);
    blank(cr, style, 330, 70, "PRODUCTION COMPANY:", 560);
    blank(cr, style, 590, 70, "DATE:", 750);
    blank(cr, style, 40, 92, "DEPARTMENT:", 300);
    blank(cr, style, 330, 92, "LOCATION:", 560);
    blank(cr, style, 590, 92, "WORK STATE:", 750);

    // The crew table: a two-line header (spanning meal headers above OUT / IN), then 14 rows.
    const std::vector<std::pair<double, std::string>> columns{{40, "NAME"}, {220, "OCC CODE"}, {280, "CALL"}, {330, "OUT"}, {380, "IN"},
                                                              {430, "OUT"}, {480, "IN"},        {530, "WRAP"}, {580, "NDB"}, {630, "BOX RENTAL"},
                                                              {700, "MILEAGE"}};
    const double left = 40, right = 752, top = 115, headerSplit = 130, headerBottom = 145, row = 22;
    const int rows = 14;
    const double bottom = headerBottom + rows * row;
    rule(cr, style, left, top, right, top);
    for (int i = 0; i <= rows; ++i) rule(cr, style, left, headerBottom + i * row, right, headerBottom + i * row);
    // The spanning headers' own rule, under "MEAL 1" and "MEAL 2" only.
    rule(cr, style, 330, headerSplit, 530, headerSplit);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double x = columns[i].first;
        const bool underSpan = x == 380 || x == 480;  // the rules between OUT and IN stop under the spanning header
        rule(cr, style, x, underSpan ? headerSplit : top, x, bottom);
        const double next = i + 1 < columns.size() ? columns[i + 1].first : right;
        centred(cr, x, next, headerBottom - 4, columns[i].second);
    }
    rule(cr, style, right, top, right, bottom);
    centred(cr, 330, 430, headerSplit - 4, "MEAL 1");
    centred(cr, 430, 530, headerSplit - 4, "MEAL 2");

    blank(cr, style, 40, 520, "APPROVED BY DEPARTMENT HEAD:", 400);
    blank(cr, style, 430, 520, "SIGNATURE:", 752);
    text(cr, 40, 550, "NOTES:", 9);
    text(cr, 700, 590, "PAGE", 8);
}

std::string drawn(int pages, const std::function<void(cairo_t*)>& draw) {
    std::string bytes;
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendTo, &bytes, pageWidth, pageHeight);
    cairo_t* cr = cairo_create(surface);
    for (int i = 0; i < pages; ++i) {
        draw(cr);
        cairo_show_page(cr);
    }
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    return bytes;
}

std::string written(QPDF& pdf) {
    QPDFWriter writer(pdf);
    writer.setOutputMemory();
    writer.setStaticID(true);
    writer.write();
    auto buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

// The typical form turned a quarter.
std::string rotated(const std::string& typical) {
    QPDF pdf;
    pdf.processMemoryFile("typical.pdf", typical.data(), typical.size());
    for (auto& page : QPDFPageDocumentHelper(pdf).getAllPages()) page.getObjectHandle().replaceKey("/Rotate", QPDFObjectHandle::newInteger(90));
    return written(pdf);
}

// A grid drawn in a content stream of its own: the rules of each band inside a saved state that scales
// and moves them, so that only a scanner that keeps the transform stack finds them where they are shown.
std::string nestedTransforms() {
    QPDF pdf;
    pdf.emptyPDF();
    std::string content = "0.8 w\n";
    content += "q 2 0 0 2 0 0 cm\n";  // everything below is drawn at half size, then doubled
    content += "q 1 0 0 1 20 30 cm\n";
    for (int i = 0; i <= 8; ++i) {
        const double y = 200 - i * 10;
        content += "0 " + std::to_string(y) + " m 356 " + std::to_string(y) + " l S\n";
    }
    content += "Q\n";
    content += "q 1 0 0 1 20 30 cm\n";
    for (const double x : {0.0, 90.0, 120.0, 150.0, 200.0, 250.0, 300.0, 356.0}) {
        content += std::to_string(x) + " 120 m " + std::to_string(x) + " 200 l S\n";
    }
    content += "Q\nQ\n";
    content += "BT /F1 9 Tf 60 445 Td (NAME) Tj ET\n";
    content += "BT /F1 9 Tf 250 445 Td (CALL) Tj ET\n";
    content += "BT /F1 9 Tf 310 445 Td (WRAP) Tj ET\n";
    auto font = QPDFObjectHandle::parse("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>");
    auto resources = QPDFObjectHandle::parse("<< /Font << >> >>");
    resources.getKey("/Font").replaceKey("/F1", pdf.makeIndirectObject(font));
    auto page = QPDFObjectHandle::parse("<< /Type /Page /MediaBox [0 0 792 612] >>");
    page.replaceKey("/Resources", resources);
    page.replaceKey("/Contents", QPDFObjectHandle::newStream(&pdf, content));
    QPDFPageDocumentHelper(pdf).addPage(QPDFPageObjectHelper(pdf.makeIndirectObject(page)), false);
    return written(pdf);
}

// The typical form with text fields beside its document labels.
std::string withFields(const std::string& typical) {
    QPDF pdf;
    pdf.processMemoryFile("typical.pdf", typical.data(), typical.size());
    auto page = QPDFPageDocumentHelper(pdf).getAllPages().front().getObjectHandle();
    auto fields = QPDFObjectHandle::newArray();
    auto annotations = QPDFObjectHandle::newArray();
    const std::vector<std::pair<std::string, std::string>> named{{"Production", "[110 538 300 552]"}, {"ShootDate", "[620 538 750 552]"}};
    for (const auto& [name, rect] : named) {
        auto field = pdf.makeIndirectObject(QPDFObjectHandle::parse("<< /Type /Annot /Subtype /Widget /FT /Tx /F 4 /Rect " + rect + " /T (" + name +
                                                                    ") /DA (/Helv 9 Tf 0 g) >>"));
        field.replaceKey("/P", page);
        fields.appendItem(field);
        annotations.appendItem(field);
    }
    page.replaceKey("/Annots", annotations);
    auto form = QPDFObjectHandle::parse("<< /DA (/Helv 9 Tf 0 g) >>");
    form.replaceKey("/Fields", fields);
    pdf.getRoot().replaceKey("/AcroForm", pdf.makeIndirectObject(form));
    return written(pdf);
}

void write(const std::filesystem::path& folder, const std::string& name, const std::string& bytes) {
    std::ofstream out(folder / name, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out) throw std::runtime_error("Could not write " + (folder / name).string() + ".");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tessel-dts-forms FOLDER\n";
        return 2;
    }
    try {
        const std::filesystem::path folder(argv[1]);
        std::filesystem::create_directories(folder);
        const std::string typical = drawn(1, [](cairo_t* cr) { typicalPage(cr, {}); });
        write(folder, "typical.pdf", typical);
        write(folder, "thin-rectangles.pdf", drawn(1, [](cairo_t* cr) { typicalPage(cr, {true}); }));
        write(folder, "nested-transforms.pdf", nestedTransforms());
        write(folder, "acroform.pdf", withFields(typical));
        write(folder, "rotated.pdf", rotated(typical));
        write(folder, "four-rules.pdf", drawn(1, [](cairo_t* cr) {
                  cairo_set_line_width(cr, 0.6);
                  for (int i = 0; i < 4; ++i) rule(cr, {}, 40, 200 + i * 22, 752, 200 + i * 22);
                  cairo_select_font_face(cr, "DejaVu Sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
                  text(cr, 45, 195, "NAME");
              }));
        write(folder, "two-pages.pdf", drawn(2, [](cairo_t* cr) { typicalPage(cr, {}); }));
        write(folder, "not-a-pdf.pdf", "Blank DTS: ask the production office for the PDF.\n");
        std::ofstream(folder / "done") << "8 forms\n";
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
