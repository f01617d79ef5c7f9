#include <gtest/gtest.h>
#include <leptonica/allheaders.h>
#include <poppler-document.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "../support/CommandRun.hpp"
#include "SignatureImage.hpp"
#include "App/dtsexport/BuiltInFormLayout.hpp"

namespace tessel {
namespace {

namespace layout = builtin_form;
namespace fs = std::filesystem;

struct Word {
    std::string text;
    double x, y, width, height;
    // Inside a rectangle of the form, allowing the half point a glyph's box may overhang a ruled line.
    bool inside(double left, double top, double right, double bottom) const {
        return x >= left - 0.5 && y >= top - 0.5 && x + width <= right + 0.5 && y + height <= bottom + 0.5;
    }
};

std::vector<std::vector<Word>> wordsOf(const fs::path& pdf) {
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(pdf.string()));
    std::vector<std::vector<Word>> pages;
    if (!document) return pages;
    for (int i = 0; i < document->pages(); ++i) {
        const std::unique_ptr<poppler::page> page(document->create_page(i));
        auto& words = pages.emplace_back();
        for (const auto& box : page->text_list()) {
            const auto bytes = box.text().to_utf8();
            words.push_back({std::string(bytes.begin(), bytes.end()), box.bbox().x(), box.bbox().y(), box.bbox().width(), box.bbox().height()});
        }
    }
    return pages;
}

// The words of a page inside a rectangle, joined by spaces in reading order.
std::string textIn(const std::vector<Word>& words, double left, double top, double right, double bottom) {
    std::string text;
    for (const auto& w : words) {
        if (w.inside(left, top, right, bottom)) text += (text.empty() ? "" : " ") + w.text;
    }
    return text;
}

std::string headerText(const std::vector<Word>& words, std::string_view id) {
    for (const auto& box : layout::header) {
        if (box.id == id) return textIn(words, box.x, box.y + layout::labelHeight, box.x + box.width, box.y + box.height);
    }
    return "?";
}

std::string cellText(const std::vector<Word>& words, std::string_view column, int slot) {
    for (const auto& c : layout::columns) {
        if (c.id != column) continue;
        const double top = layout::tableTop + layout::tableHeaderHeight + slot * layout::rowHeight;
        return textIn(words, c.x, top, c.x + c.width, top + layout::rowHeight);
    }
    return "?";
}

class DTSExportCommands : public testing::CommandTest {
protected:
    fs::path output;

    void SetUp() override {
        CommandTest::SetUp();
        output = folder.path() / "Production DTS.pdf";
        ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
        ASSERT_EQ(run({"production", "set", "--company", "Lighthouse Pictures", "--department", "Grip & Electric", "--work-state", "CA",
                       "--department-head", "Morgan Hale"})
                      .status,
                  0);
    }
    void builtInForm() { ASSERT_EQ(run({"production", "set", "--export-form", "builtin", "--builtin-form", "on"}).status, 0); }
    void crew(const std::string& name) { ASSERT_EQ(run({"crew", "add", name, "--from", "2026-11-01", "--rate", "50.00"}).status, 0); }
    void wednesday(std::vector<std::string> times = {"--call", "7", "--lunch-out", "13", "--wrap", "19.5"}) {
        ASSERT_EQ(run({"dts", "create", "2026-11-04"}).status, 0);
        times.insert(times.begin(), {"dts", "set", "2026-11-04"});
        ASSERT_EQ(run(times).status, 0);
    }
    testing::CommandOutcome exportWednesday(std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"dts", "export", "2026-11-04", "--output", output.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run(arguments);
    }
};

TEST_F(DTSExportCommands, AreRefusedWithoutAFormTheProductionMayUse) {
    crew("Dana Rivera");
    wednesday();
    EXPECT_EQ(exportWednesday().err,
              "DTS Export Form Not Configured\nThis Production doesn\u2019t have a DTS export form selected. Choose a DTS export form in Production "
              "Settings.\n");
    ASSERT_EQ(run({"production", "set", "--export-form", "builtin"}).status, 0);
    EXPECT_NE(run({"production", "show", "Harbor Lights"}).out.find("  DTS export form: builtin (built-in form off)\n"), std::string::npos);
    EXPECT_EQ(run({"production", "set", "--export-form", "kestrel"}).err, "Choose the export form none, builtin or template.\n");
    const auto refused = exportWednesday();
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err,
              "DTS Export Form Unavailable\nThis Production is not enabled for the Kestrel built-in DTS. Choose a Production DTS Template in "
              "Production Settings.\n");
    EXPECT_FALSE(fs::exists(output));
}

TEST_F(DTSExportCommands, PrintEveryValueInsideItsBox) {
    builtInForm();
    crew("Dana Rivera");
    crew("Lee Park");
    ASSERT_EQ(run({"position", "add", "Gaffer"}).status, 0);
    ASSERT_EQ(run({"crew", "position", "Dana Rivera", "Gaffer"}).status, 0);
    wednesday();
    ASSERT_EQ(run({"dts", "set", "2026-11-04", "--notes", "Company move to stage 4 after lunch.", "--mileage", "12"}).status, 0);
    ASSERT_EQ(run({"dts", "row", "2026-11-04", "Lee Park", "--wrap", "20", "--ndb", "--box-rental", "--dts-name", "Best Boy Electric"}).status, 0);
    const auto exported = exportWednesday();
    ASSERT_EQ(exported.status, 0) << exported.err;
    EXPECT_EQ(exported.out, "Exported the DTS for 2026-11-04 to \u201C" + output.string() +
                                "\u201D (1 page).\nVisually review the completed PDF against this Daily Time Sheet before submitting it.\n");

    const auto pages = wordsOf(output);
    ASSERT_EQ(pages.size(), 1u);
    const auto& words = pages[0];
    EXPECT_EQ(headerText(words, "production"), "Harbor Lights");
    EXPECT_EQ(headerText(words, "company"), "Lighthouse Pictures");
    EXPECT_EQ(headerText(words, "department"), "Grip & Electric");
    EXPECT_EQ(headerText(words, "date"), "11/4/2026");
    EXPECT_EQ(headerText(words, "weekday"), "Wed");
    EXPECT_EQ(headerText(words, "workState"), "CA");
    EXPECT_EQ(headerText(words, "call"), "7.0");
    EXPECT_EQ(headerText(words, "lunchOut"), "13.0");
    EXPECT_EQ(headerText(words, "lunchIn"), "13.5");
    EXPECT_EQ(headerText(words, "wrap"), "19.5");
    EXPECT_EQ(headerText(words, "mileage"), "12");
    EXPECT_EQ(headerText(words, "grace"), "No");
    // Rows in crew order: the position printed, the DTS Name for Today in place of the name, the row's own wrap.
    EXPECT_EQ(cellText(words, "name", 0), "Dana Rivera");
    EXPECT_EQ(cellText(words, "position", 0), "Gaffer");
    EXPECT_EQ(cellText(words, "call", 0), "7.0");
    EXPECT_EQ(cellText(words, "meal1Out", 0), "13.0");
    EXPECT_EQ(cellText(words, "meal1In", 0), "13.5");
    EXPECT_EQ(cellText(words, "wrap", 0), "19.5");
    EXPECT_EQ(cellText(words, "ndb", 0), "");
    EXPECT_EQ(cellText(words, "name", 1), "Best Boy Electric");
    EXPECT_EQ(cellText(words, "wrap", 1), "20.0");
    EXPECT_EQ(cellText(words, "ndb", 1), "X");
    EXPECT_EQ(cellText(words, "box", 1), "X");
    EXPECT_EQ(cellText(words, "workMode", 1), "Work");
    EXPECT_EQ(textIn(words, layout::notes.x, layout::notes.valueTop(), layout::notes.x + layout::notes.width, layout::notes.y + layout::notes.height),
              "Company move to stage 4 after lunch.");
    EXPECT_NE(textIn(words, layout::pageNumber.x, layout::pageNumber.y, layout::pageNumber.x + layout::pageNumber.width,
                     layout::pageNumber.y + layout::pageNumber.height),
              "");

    // The file passes qpdf's check and every font is embedded.
    EXPECT_EQ(std::system(("qpdf --check '" + output.string() + "' > /dev/null").c_str()), 0);
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(output.string()));
    const auto fonts = document->fonts();
    ASSERT_FALSE(fonts.empty());
    for (const auto& font : fonts) EXPECT_TRUE(font.is_embedded()) << font.name();
}

TEST_F(DTSExportCommands, AFileThatCannotBeWrittenLeavesNothingBehind) {
    builtInForm();
    crew("Dana Rivera");
    wednesday();
    const auto missing = folder.path() / "no such folder" / "Production DTS.pdf";
    EXPECT_EQ(run({"dts", "export", "2026-11-04", "--output", missing.string()}).err,
              "Couldn\u2019t Export Production DTS\nTessel could not create the Production DTS PDF.\n");
    // Exported twice to one name, the second replaces the first whole; no building file stays.
    ASSERT_EQ(exportWednesday().status, 0);
    ASSERT_EQ(exportWednesday().status, 0);
    int named = 0;
    for (const auto& entry : fs::directory_iterator(folder.path())) named += entry.path().filename().string().find("Production DTS.pdf") != std::string::npos;
    EXPECT_EQ(named, 1);
    EXPECT_EQ(fs::status(output).permissions() & fs::perms::others_read, fs::perms::others_read);
}

TEST_F(DTSExportCommands, ALongNameFailsTheExportNamingIt) {
    builtInForm();
    const std::string name = "Maximiliana Alexandrina Konstantinopoulou-Vanderberghe de la Fontaine";
    crew(name);
    wednesday();
    EXPECT_EQ(exportWednesday().err, "Couldn\u2019t Export Production DTS\n\u201C" + name + "\u201D does not fit safely in the Production DTS template.\n");
    EXPECT_FALSE(fs::exists(output));
}

TEST_F(DTSExportCommands, NotesThatDoNotFitFailWithTheirOwnMessage) {
    builtInForm();
    crew("Dana Rivera");
    wednesday();
    std::string notes;
    for (int i = 0; i < 120; ++i) notes += "Company move to stage four after lunch. ";
    ASSERT_EQ(run({"dts", "set", "2026-11-04", "--notes", notes}).status, 0);
    EXPECT_EQ(exportWednesday().err,
              "Couldn\u2019t Export Production DTS\nDTS Notes are too long to fit safely in the Production DTS template. Shorten the Notes and try "
              "again.\n");
    EXPECT_FALSE(fs::exists(output));
}

TEST_F(DTSExportCommands, MoreRowsThanTheFormHoldsContinueOnNumberedPages) {
    builtInForm();
    for (int i = 1; i <= layout::rowsPerPage + 3; ++i) crew("Crew Member " + std::to_string(i));
    wednesday();
    const auto exported = exportWednesday();
    ASSERT_EQ(exported.status, 0) << exported.err;
    const auto pages = wordsOf(output);
    ASSERT_EQ(pages.size(), 2u);
    const auto pageNumber = [&](const std::vector<Word>& words) {
        return textIn(words, layout::pageNumber.x, layout::pageNumber.y, layout::pageNumber.x + layout::pageNumber.width,
                      layout::pageNumber.y + layout::pageNumber.height);
    };
    EXPECT_EQ(pageNumber(pages[0]), "Page 1 of 2");
    EXPECT_EQ(pageNumber(pages[1]), "Page 2 of 2");
    EXPECT_EQ(cellText(pages[1], "number", 0), std::to_string(layout::rowsPerPage + 1));
    EXPECT_EQ(cellText(pages[1], "name", 2), "Crew Member " + std::to_string(layout::rowsPerPage + 3));
    EXPECT_EQ(cellText(pages[1], "name", 3), "");
    // The header repeats on every page.
    EXPECT_EQ(headerText(pages[1], "production"), "Harbor Lights");
}

TEST_F(DTSExportCommands, WarningsNeedToBeAccepted) {
    builtInForm();
    crew("Dana Rivera");
    wednesday({"--call", "7"});
    const auto refused = exportWednesday();
    EXPECT_EQ(refused.err, "Review Before Exporting\n  Dana Rivera: The row has no call or no wrap; the form shows it blank.\nNothing was exported; add "
                           "--force-warnings to export anyway.\n");
    EXPECT_FALSE(fs::exists(output));
    const auto forced = exportWednesday({"--force-warnings"});
    ASSERT_EQ(forced.status, 0) << forced.err;
    EXPECT_NE(forced.out.find("Exported with warnings:\n  Dana Rivera: The row has no call or no wrap; the form shows it blank.\n"), std::string::npos);
    EXPECT_TRUE(fs::exists(output));
}

// The exported first page at 72 dpi (a pixel per point): its dark pixels inside the signature box.
int darkPixelsInSignatureBox(const fs::path& pdf) {
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(pdf.string()));
    const std::unique_ptr<poppler::page> page(document->create_page(0));
    poppler::page_renderer renderer;
    renderer.set_image_format(poppler::image::format_gray8);
    const poppler::image image = renderer.render_page(page.get(), 72, 72);
    const auto& box = layout::signature;
    int dark = 0;
    for (int y = static_cast<int>(box.valueTop()); y < static_cast<int>(box.y + box.height) - 1; ++y) {
        const auto* line = reinterpret_cast<const unsigned char*>(image.const_data()) + y * image.bytes_per_row();
        for (int x = static_cast<int>(box.x) + 2; x < static_cast<int>(box.x + box.width) - 2; ++x) dark += line[x] < 100;
    }
    return dark;
}

TEST_F(DTSExportCommands, TheSignatureIsDrawnInItsBox) {
    const auto darkPixelsInSignatureBox = [&] { return tessel::darkPixelsInSignatureBox(output); };
    builtInForm();
    crew("Dana Rivera");
    wednesday();
    const auto text = folder.path() / "signature.txt";
    std::ofstream(text) << "not an image";
    EXPECT_EQ(run({"production", "signature", text.string()}).err,
              "The signature image could not be imported. Use a PNG, JPEG, or TIFF image smaller than 5 MB.\n");

    const auto png = folder.path() / "signature.png";
    ASSERT_TRUE(testing::writeSignaturePng(png));
    ASSERT_EQ(run({"production", "signature", png.string()}).status, 0);
    ASSERT_EQ(exportWednesday().status, 0);

    EXPECT_GT(darkPixelsInSignatureBox(), 500);
    ASSERT_EQ(run({"production", "signature", "--clear"}).status, 0);
    ASSERT_EQ(exportWednesday().status, 0);
    EXPECT_LT(darkPixelsInSignatureBox(), 50);
}

TEST_F(DTSExportCommands, ABlankPageOfAnotherSizeIsRefused) {
    builtInForm();
    crew("Dana Rivera");
    wednesday();
    const auto resources = folder.path() / "resources";
    fs::create_directories(resources);
    setenv("TESSEL_RESOURCE_DIR", resources.c_str(), 1);
    const auto refusal = [&] { return exportWednesday().err; };
    EXPECT_EQ(refusal(), "Couldn\u2019t Export Production DTS\nThe Production DTS PDF template is unavailable.\n");
    std::ofstream(resources / "builtin-dts-form.pdf") << "not a PDF";
    EXPECT_EQ(refusal(), "Couldn\u2019t Export Production DTS\nThe Production DTS PDF template could not be read.\n");
    // A portrait Letter page in place of the landscape form.
    fs::copy_file(fs::path(TESSEL_STUB_FIXTURES) / "clean-stub.pdf", resources / "builtin-dts-form.pdf", fs::copy_options::overwrite_existing);
    EXPECT_EQ(refusal(), "Couldn\u2019t Export Production DTS\nThe Production DTS PDF template has an unexpected page size.\n");
    unsetenv("TESSEL_RESOURCE_DIR");
    EXPECT_FALSE(fs::exists(output));
}

}  // namespace
}  // namespace tessel
