// Synthetic Entertainment Partners pay stubs with invented people and amounts, drawn with Cairo, each
// beside the facts it prints, for the stub readers' tests and the extraction lab:
//
//   tessel-stub-fixtures OUTPUT_FOLDER
//
// writes NAME.pdf and NAME.facts.json for every fixture, a week of stubs for the demo crew in demo-week/,
// and manifest.json listing the fixtures, with what the
// text layer is ("downloaded" or "ocr-layer"), what reading the file must give ("reads" or the refusal's
// case), and whether OCR alone must recover every fact (the scans, and the clean stub whose 300-dpi
// render OCR reads). Every fact of a stub with a text layer must be recovered exactly from that layer. Fonts, sizes, alignment and column positions
// vary from stub to stub so that the readers are not tuned to one drawing.

#include <cairo-pdf.h>
#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFWriter.hh>

namespace {

using Json = nlohmann::ordered_json;

// ---------------------------------------------------------------------------------------------
// What a stub prints

// A non-negative amount in units of 10^-scale, printed to `places` with optional thousands commas.
std::string printed(std::int64_t units, int scale, int places, bool grouping = false) {
    std::int64_t unit = 1;
    for (int i = 0; i < scale; ++i) unit *= 10;
    const std::int64_t whole = units / unit;
    const std::int64_t fraction = units % unit;
    std::string digits = std::to_string(whole);
    if (grouping) {
        for (int i = static_cast<int>(digits.size()) - 3; i > 0; i -= 3) digits.insert(static_cast<std::size_t>(i), ",");
    }
    if (places == 0) return digits;
    std::string fractionDigits = std::to_string(fraction);
    fractionDigits.insert(0, static_cast<std::size_t>(scale) - fractionDigits.size(), '0');
    if (fractionDigits.find_first_not_of('0', static_cast<std::size_t>(places)) != std::string::npos) {
        throw std::logic_error("A fixture amount has more places than it prints: " + std::to_string(units));
    }
    fractionDigits.resize(static_cast<std::size_t>(places), '0');
    return digits + "." + fractionDigits;
}

struct Row {
    std::string label;
    std::optional<std::string> rate, hours;
    std::string amount;
    std::int64_t cents = 0;
    std::int64_t hoursHundredths = 0;
};

// Rate (in ten-thousandths of a dollar) × hours (in hundredths), the amount rounded half up to the
// cent as a payroll company prints it, plus `centsOff` to make a row that does not reconcile.
Row worked(std::string label, std::int64_t rate, int ratePlaces, std::int64_t hours, int hoursPlaces, std::int64_t centsOff = 0) {
    const std::int64_t cents = (rate * hours + 5000) / 10000 + centsOff;
    return {std::move(label), printed(rate, 4, ratePlaces), printed(hours, 2, hoursPlaces), printed(cents, 2, 2, true), cents, hours};
}

Row flat(std::string label, std::int64_t cents) { return {std::move(label), std::nullopt, std::nullopt, printed(cents, 2, 2, true), cents, 0}; }

struct Tax {
    std::string label, amount;
};

struct Stub {
    bool companyName = true;
    std::string employeeNumber;  // digits printed before the name, or nothing
    std::string employee;
    std::string occupationLabel = "Occupation Title:";
    std::string occupation;
    std::string start, end;  // month/day/year as printed
    std::string startISO, endISO;
    std::vector<Row> rows;
    std::vector<Tax> taxes;
    std::string totalsWord = "TOTALS", grossWord = "GROSS";
    int hoursPlaces = 2;

    std::string totalHours() const {
        std::int64_t sum = 0;
        for (const auto& row : rows) sum += row.hoursHundredths;
        return printed(sum, 2, hoursPlaces);
    }
    std::string gross() const {
        std::int64_t sum = 0;
        for (const auto& row : rows) sum += row.cents;
        return printed(sum, 2, 2, true);
    }
};

Json factsOf(const Stub& stub) {
    Json lines = Json::array();
    for (const auto& row : stub.rows) {
        lines.push_back({row.label, row.rate ? Json(*row.rate) : Json(), row.hours ? Json(*row.hours) : Json(), row.amount});
    }
    return {{"printedEmployeeName", stub.employee}, {"printedOccupation", stub.occupation}, {"payPeriodStart", stub.startISO},
            {"payPeriodEnd", stub.endISO},          {"totalHours", stub.totalHours()},     {"gross", stub.gross()},
            {"earningLines", lines}};
}

// ---------------------------------------------------------------------------------------------
// How it is drawn

struct Drawing {
    const char* font = "DejaVu Sans";
    double size = 10;
    double desc = 54, rate = 250, hours = 330, amount = 420;  // header words' left edges, in points
    double taxes = 480, taxAmount = 545;
    double top = 60;   // first baseline
    double step = 16;  // baseline to baseline
    bool rightAligned = true;  // numbers end under their header word's right edge
    bool tableOnSecondPage = false;
    int pages() const { return tableOnSecondPage ? 2 : 1; }
};

double widthOf(cairo_t* cr, const std::string& text) {
    cairo_text_extents_t extents;
    cairo_text_extents(cr, text.c_str(), &extents);
    return extents.x_advance;
}

void show(cairo_t* cr, double x, double y, const std::string& text) {
    cairo_move_to(cr, x, y);
    cairo_show_text(cr, text.c_str());
}

class PageWriter {
public:
    PageWriter(cairo_t* cr, const Drawing& d) : cr_(cr), d_(d) { face(false, d.size); }
    void face(bool bold, double size) {
        bold_ = bold;
        size_ = size;
        cairo_select_font_face(cr_, d_.font, CAIRO_FONT_SLANT_NORMAL, bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
        cairo_set_font_size(cr_, size);
    }
    // A number under the (bold) header word printed at `column`.
    void number(double column, const std::string& header, double y, const std::string& text) {
        const bool bold = bold_;
        face(true, d_.size);
        const double headerWidth = widthOf(cr_, header);
        face(bold, size_);
        const double x = d_.rightAligned ? column + headerWidth - widthOf(cr_, text) : column;
        show(cr_, x, y, text);
    }

private:
    cairo_t* cr_;
    const Drawing& d_;
    bool bold_ = false;
    double size_ = 10;
};

void drawHeading(cairo_t* cr, const Stub& s, const Drawing& d, PageWriter& w, double& y) {
    w.face(true, d.size + 4);
    show(cr, d.desc, y, s.companyName ? "ENTERTAINMENT PARTNERS" : "PAYROLL SERVICES");
    w.face(true, d.size);
    show(cr, 400, y, "EARNINGS STATEMENT");
    w.face(false, d.size);
    y += 2 * d.step;
    show(cr, d.desc, y, (s.employeeNumber.empty() ? "" : s.employeeNumber + " ") + s.employee + "   SSN: XXX-XX-4821");
    y += d.step;
    show(cr, d.desc, y, s.occupationLabel + " " + s.occupation);
    y += d.step;
    show(cr, d.desc, y, "Pay Period Start: " + s.start + " End: " + s.end);
    y += d.step;
    show(cr, d.desc, y, "Check Number 0048213");
}

void drawTable(cairo_t* cr, const Stub& s, const Drawing& d, PageWriter& w, double y) {
    w.face(true, d.size);
    show(cr, d.desc, y, "DESC");
    show(cr, d.rate, y, "RATE");
    show(cr, d.hours, y, "HOURS");
    show(cr, d.amount, y, "AMOUNT");
    if (!s.taxes.empty()) {
        show(cr, d.taxes, y, "TAXES");
        show(cr, d.taxAmount, y, "AMOUNT");
    }
    w.face(false, d.size);
    const std::size_t lines = std::max(s.rows.size(), s.taxes.size());
    for (std::size_t i = 0; i < lines; ++i) {
        y += d.step;
        if (i < s.rows.size()) {
            const auto& row = s.rows[i];
            show(cr, d.desc, y, row.label);
            if (row.rate) w.number(d.rate, "RATE", y, *row.rate);
            if (row.hours) w.number(d.hours, "HOURS", y, *row.hours);
            w.number(d.amount, "AMOUNT", y, row.amount);
        }
        if (i < s.taxes.size()) {
            show(cr, d.taxes, y, s.taxes[i].label);
            w.number(d.taxAmount, "AMOUNT", y, s.taxes[i].amount);
        }
    }
    y += 1.5 * d.step;
    w.face(true, d.size);
    show(cr, d.desc, y, s.totalsWord);
    w.number(d.hours, "HOURS", y, s.totalHours());
    w.number(d.amount, "AMOUNT", y, s.gross());
    y += 2 * d.step;
    show(cr, d.desc, y, s.grossWord);
    w.number(d.amount, "AMOUNT", y, s.gross());
    w.face(false, d.size);
    y += d.step;
    show(cr, d.desc, y, "Direct deposit advice. This is not a check.");
}

// One page of the stub in points on a Letter page, on whatever surface `cr` draws to.
void drawPage(cairo_t* cr, const Stub& s, const Drawing& d, int page) {
    cairo_set_source_rgb(cr, 0, 0, 0);
    PageWriter w(cr, d);
    double y = d.top;
    if (page == 0) drawHeading(cr, s, d, w, y);
    if (d.tableOnSecondPage && page == 0) {
        show(cr, d.desc, y + 2 * d.step, "Earnings continue on the next page.");
        return;
    }
    drawTable(cr, s, d, w, page == 0 ? y + 2.5 * d.step : d.top);
}

// ---------------------------------------------------------------------------------------------
// PDFs

cairo_status_t appendTo(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

constexpr double pageWidth = 612, pageHeight = 792;

// Every page drawn by `draw(cr, page)` into one PDF.
template <typename Draw>
std::string pdfOf(int pages, Draw draw) {
    std::string bytes;
    cairo_surface_t* surface = cairo_pdf_surface_create_for_stream(appendTo, &bytes, pageWidth, pageHeight);
    cairo_t* cr = cairo_create(surface);
    for (int page = 0; page < pages; ++page) {
        draw(cr, page);
        cairo_show_page(cr);
    }
    cairo_destroy(cr);
    cairo_surface_finish(surface);
    cairo_surface_destroy(surface);
    return bytes;
}

std::string textPdf(const Stub& s, const Drawing& d) {
    return pdfOf(d.pages(), [&](cairo_t* cr, int page) { drawPage(cr, s, d, page); });
}

struct Scan {
    double dpi = 200;
    double degrees = 0;  // the page as it lay crooked on the scanner
    double specks = 0;   // share of pixels turned to dark noise
};

// A page as a scanner gives it: pixels only, a little crooked, with dust.
cairo_surface_t* scanned(const Stub& s, const Drawing& d, int page, const Scan& scan) {
    const int width = static_cast<int>(std::lround(pageWidth / 72 * scan.dpi));
    const int height = static_cast<int>(std::lround(pageHeight / 72 * scan.dpi));
    cairo_surface_t* image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height);
    cairo_t* cr = cairo_create(image);
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    cairo_translate(cr, width / 2.0, height / 2.0);
    cairo_rotate(cr, scan.degrees * M_PI / 180);
    cairo_translate(cr, -width / 2.0, -height / 2.0);
    cairo_scale(cr, scan.dpi / 72, scan.dpi / 72);
    drawPage(cr, s, d, page);
    cairo_destroy(cr);
    cairo_surface_flush(image);
    std::uint32_t state = 20261122u + static_cast<std::uint32_t>(page);  // the same dust on every run
    const auto next = [&] { return state = state * 1664525u + 1013904223u; };
    unsigned char* data = cairo_image_surface_get_data(image);
    const int stride = cairo_image_surface_get_stride(image);
    const auto threshold = static_cast<std::uint32_t>(scan.specks * 4294967295.0);
    for (int y = 0; y < height; ++y) {
        auto* row = reinterpret_cast<std::uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < width; ++x) {
            if (next() < threshold) {
                const std::uint32_t gray = next() % 160;
                row[x] = (gray << 16) | (gray << 8) | gray;
            }
        }
    }
    cairo_surface_mark_dirty(image);
    return image;
}

void paintImage(cairo_t* cr, cairo_surface_t* image, double dpi) {
    cairo_save(cr);
    cairo_scale(cr, 72 / dpi, 72 / dpi);
    cairo_set_source_surface(cr, image, 0, 0);
    cairo_paint(cr);
    cairo_restore(cr);
}

std::string scanPdf(const Stub& s, const Drawing& d, const Scan& scan) {
    return pdfOf(d.pages(), [&](cairo_t* cr, int page) {
        cairo_surface_t* image = scanned(s, d, page, scan);
        paintImage(cr, image, scan.dpi);
        cairo_surface_destroy(image);
    });
}

// A text layer under a page image that shows something else, as an earlier OCR step could leave it.
std::string imageOverTextPdf(const Stub& text, const Stub& image, const Drawing& d) {
    const Scan clean{300, 0, 0};
    return pdfOf(d.pages(), [&](cairo_t* cr, int page) {
        drawPage(cr, text, d, page);
        cairo_surface_t* picture = scanned(image, d, page, clean);
        paintImage(cr, picture, clean.dpi);
        cairo_surface_destroy(picture);
    });
}

std::string qpdfOutput(QPDF& pdf, bool encrypt) {
    QPDFWriter writer(pdf);
    writer.setOutputMemory();
    writer.setStaticID(true);  // the same bytes on every run
    if (encrypt) writer.setR6EncryptionParameters("payroll", "payroll-owner", true, true, true, true, true, true, qpdf_r3p_full, true);
    writer.write();
    const auto buffer = writer.getBufferSharedPointer();
    return std::string(reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize());
}

std::string encrypted(const std::string& plain) {
    QPDF pdf;
    pdf.processMemoryFile("stub.pdf", plain.data(), plain.size());
    return qpdfOutput(pdf, true);
}

std::string zeroPages() {
    QPDF pdf;
    pdf.emptyPDF();
    return qpdfOutput(pdf, false);
}

// ---------------------------------------------------------------------------------------------
// The fixtures

Stub cleanStub() {
    Stub s;
    s.employee = "DANA M RIVERA";
    s.occupation = "KEY GRIP";
    s.start = "11/01/2026";
    s.end = "11/07/2026";
    s.startISO = "2026-11-01";
    s.endISO = "2026-11-07";
    s.rows = {worked("REGULAR", 450000, 2, 4000, 2), worked("OVERTIME 1.5X", 675000, 2, 1050, 2), worked("DOUBLE TIME", 900000, 2, 200, 2),
              flat("MEAL PENALTY", 2750), flat("BOX RENTAL", 15000)};
    return s;
}

struct Fixture {
    std::string name;
    std::string pdf;
    std::optional<Json> facts;
    std::string embedded = "downloaded";
    std::string outcome = "reads";
    bool ocrExact = false;
};

std::vector<Fixture> fixtures() {
    std::vector<Fixture> all;
    const Stub clean = cleanStub();
    const Drawing sans;
    all.push_back({"clean-stub", textPdf(clean, sans), factsOf(clean), "downloaded", "reads", true});
    all.push_back({"scanned-stub", scanPdf(clean, sans, {200, 0.35, 0.0015}), factsOf(clean), "downloaded", "reads", true});

    Stub taxes;
    taxes.employeeNumber = "000417";
    taxes.employee = "PRIYA K OKONKWO";
    taxes.occupation = "Best Boy Electric";
    taxes.start = "10/25/2026";
    taxes.end = "10/31/2026";
    taxes.startISO = "2026-10-25";
    taxes.endISO = "2026-10-31";
    taxes.hoursPlaces = 1;
    taxes.rows = {worked("STRAIGHT TIME", 512000, 4, 4000, 1), worked("OT 1.5X", 768000, 4, 850, 1), flat("CELL PHONE", 2500)};
    taxes.taxes = {{"FED W/H", "402.18"}, {"FICA", "168.41"}, {"MEDICARE", "39.39"}, {"STATE", "141.07"}};
    Drawing serif;
    serif.font = "DejaVu Serif";
    serif.size = 9;
    serif.desc = 40;
    serif.rate = 190;
    serif.hours = 262;
    serif.amount = 330;
    serif.taxes = 420;
    serif.taxAmount = 520;
    serif.step = 15;
    all.push_back({"taxes-column", textPdf(taxes, serif), factsOf(taxes), "downloaded", "reads", false});
    Drawing crooked = serif;
    crooked.size = 10;
    all.push_back({"scanned-taxes-column", scanPdf(taxes, crooked, {200, -0.25, 0.001}), factsOf(taxes), "downloaded", "reads", true});

    Stub allowances;
    allowances.employee = "LEVI J HARTMANN";
    allowances.occupation = "DOLLY GRIP";
    allowances.start = "9/6/26";
    allowances.end = "9/12/26";
    allowances.startISO = "2026-09-06";
    allowances.endISO = "2026-09-12";
    allowances.hoursPlaces = 1;
    allowances.rows = {worked("REGULAR", 398000, 2, 5000, 1), flat("KIT RENTAL", 17500), flat("MILEAGE", 4620), flat("PER DIEM", 35000)};
    Drawing mono;
    mono.font = "DejaVu Sans Mono";
    mono.desc = 60;
    mono.rate = 230;
    mono.hours = 320;
    mono.amount = 430;
    mono.rightAligned = false;
    mono.top = 80;
    mono.step = 18;
    all.push_back({"flat-allowances", textPdf(allowances, mono), factsOf(allowances), "downloaded", "reads", false});

    Stub arithmetic = clean;
    arithmetic.employee = "MAREN A SOLBERG";
    arithmetic.occupation = "RIGGING GRIP";
    arithmetic.rows = {worked("REGULAR", 450000, 2, 4000, 2, 1), worked("OVERTIME", 675000, 2, 1050, 2, 2700), flat("MEAL PENALTY", 2750)};
    Drawing condensed;
    condensed.font = "DejaVu Sans Condensed";
    condensed.size = 11;
    condensed.rate = 270;
    condensed.hours = 350;
    condensed.amount = 450;
    all.push_back({"rows-off", textPdf(arithmetic, condensed), factsOf(arithmetic), "downloaded", "reads", false});

    Stub noCompany = clean;
    noCompany.companyName = false;
    noCompany.employee = "OSCAR T NAKAMURA";
    all.push_back({"no-company-name", textPdf(noCompany, serif), factsOf(noCompany), "downloaded", "reads", false});

    Stub twoMarkers = noCompany;
    twoMarkers.totalsWord = "TOTAL";
    twoMarkers.grossWord = "EARNINGS";
    all.push_back({"two-markers", textPdf(twoMarkers, sans), factsOf(twoMarkers), "downloaded", "unsupportedDocument", false});

    Stub nbsp = clean;
    nbsp.employee = "WREN E CALLOWAY";
    nbsp.occupationLabel = "Occupation\u00A0Title:";
    nbsp.occupation = "Set Lighting Technician";
    all.push_back({"nbsp-occupation-title", textPdf(nbsp, condensed), factsOf(nbsp), "downloaded", "reads", false});

    Stub secondPage = taxes;
    secondPage.taxes.clear();
    secondPage.employee = "IDRIS B FAULKNER";
    Drawing twoPages = sans;
    twoPages.tableOnSecondPage = true;
    twoPages.rate = 260;
    twoPages.hours = 350;
    twoPages.amount = 460;
    all.push_back({"table-on-page-2", textPdf(secondPage, twoPages), factsOf(secondPage), "downloaded", "reads", false});

    // The text layer says 708.75 for the overtime; the page shows 708.15.
    Stub shown = clean;
    shown.employee = "JUNE P ABERNATHY";
    Stub layer = shown;
    shown.rows[1].amount = "708.15";
    all.push_back({"text-and-image-disagree", imageOverTextPdf(layer, shown, sans), factsOf(layer), "ocr-layer", "reads", false});

    all.push_back({"empty", "", std::nullopt, "downloaded", "emptyData", false});
    all.push_back({"not-a-pdf", "Dear payroll, please find my timecard attached.\n", std::nullopt, "downloaded", "invalidPDF", false});
    all.push_back({"encrypted", encrypted(textPdf(clean, sans)), std::nullopt, "downloaded", "invalidPDF", false});
    all.push_back({"zero-pages", zeroPages(), std::nullopt, "downloaded", "noPages", false});
    return all;
}

// A week of stubs for the demo production's crew (Payroll Week 2026-11-02 to 2026-11-08), as payroll
// would send them: most ready to confirm, one a cent off, one a day off the week, one scanned, one for
// somebody not on the production, the same PDF twice under two names, and a file that is not a PDF.
// Jules Marr's pays exactly the day the demo's DTS expects (a match), and Priya Lindqvist's carries a
// retroactive adjustment no expected line stands for (an unmapped line).
std::vector<std::pair<std::string, std::string>> demoWeek() {
    const auto stub = [](std::string employee, std::string occupation, std::int64_t rate, std::int64_t overtimeHours) {
        Stub s;
        s.employee = std::move(employee);
        s.occupation = std::move(occupation);
        s.start = "11/02/2026";
        s.end = "11/08/2026";
        s.rows = {worked("REGULAR", rate, 2, 4000, 2), worked("OVERTIME", rate * 3 / 2, 2, overtimeHours, 2), flat("MEAL PENALTY", 2500)};
        return s;
    };
    Drawing serif;
    serif.font = "DejaVu Serif";
    serif.rate = 240;
    serif.hours = 320;
    serif.amount = 410;
    std::vector<std::pair<std::string, std::string>> files;
    const Stub quint = stub("MARISOL A QUINT", "GAFFER", 520000, 1150);
    files.emplace_back("01-quint.pdf", textPdf(quint, Drawing{}));
    files.emplace_back("02-vance.pdf", textPdf(stub("TEODOR VANCE", "BEST BOY ELECTRIC", 450000, 1150), serif));
    Stub lindqvist = stub("PRIYA LINDQVIST", "ELECTRICIAN", 450000, 1150);
    lindqvist.rows.push_back(flat("RETRO ADJUSTMENT", 6000));
    files.emplace_back("03-lindqvist.pdf", textPdf(lindqvist, Drawing{}));
    files.emplace_back("04-bellamy.pdf", textPdf(stub("OSKAR J BELLAMY", "ELECTRICIAN", 415000, 850), serif));
    Stub achterberg = stub("NELL ACHTERBERG", "ELECTRICIAN", 415000, 1150);
    achterberg.rows[0] = worked("REGULAR", 415000, 2, 4000, 2, 1);
    files.emplace_back("05-achterberg.pdf", textPdf(achterberg, Drawing{}));
    Stub osei = stub("FENWICK OSEI", "ELECTRICIAN", 380000, 800);
    osei.start = "11/01/2026";
    osei.end = "11/07/2026";
    files.emplace_back("06-osei.pdf", textPdf(osei, serif));
    files.emplace_back("07-whitcombe-scan.pdf", scanPdf(stub("DARA WHITCOMBE", "ELECTRICIAN", 380000, 1000), Drawing{}, {200, 0.3, 0.001}));
    Stub marr = stub("JULES MARR", "ELECTRICIAN", 400000, 350);
    marr.rows[0] = worked("REGULAR", 400000, 2, 800, 2);
    marr.rows[2] = flat("VACATION", 1280);
    files.emplace_back("08-marr.pdf", textPdf(marr, serif));
    files.emplace_back("09-blackwood.pdf", textPdf(stub("CORA BLACKWOOD", "GRIP", 450000, 500), Drawing{}));
    files.emplace_back("10-quint-again.pdf", textPdf(quint, Drawing{}));
    files.back().second = files.front().second;  // the very same bytes
    files.emplace_back("11-notes.pdf", "Timecard notes for payroll: none this week.\n");
    return files;
}

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out) throw std::runtime_error("Could not write " + path.string() + ".");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: tessel-stub-fixtures OUTPUT_FOLDER\n";
        return 2;
    }
    try {
        const std::filesystem::path folder(argv[1]);
        std::filesystem::create_directories(folder);
        Json manifest = Json::array();
        for (const auto& fixture : fixtures()) {
            writeFile(folder / (fixture.name + ".pdf"), fixture.pdf);
            Json entry{{"name", fixture.name}, {"pdf", fixture.name + ".pdf"}, {"facts", nullptr}, {"embedded", fixture.embedded},
                       {"outcome", fixture.outcome}, {"ocrExact", fixture.ocrExact}};
            if (fixture.facts) {
                writeFile(folder / (fixture.name + ".facts.json"), fixture.facts->dump(2) + "\n");
                entry["facts"] = fixture.name + ".facts.json";
            }
            manifest.push_back(std::move(entry));
        }
        writeFile(folder / "manifest.json", manifest.dump(2) + "\n");
        std::filesystem::create_directories(folder / "demo-week");
        for (const auto& [name, bytes] : demoWeek()) writeFile(folder / "demo-week" / name, bytes);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
    return 0;
}
