#include <gtest/gtest.h>
#include <poppler-document.h>
#include <poppler-image.h>
#include <poppler-page-renderer.h>
#include <poppler-page.h>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "../support/CommandRun.hpp"
#include "SignatureImage.hpp"

// A production's own blank form from import to export: the draft proposed from the page, the review
// items settled, approval, and a DTS of more crew than rows drawn on copies of the untouched page.
namespace tessel {
namespace {

namespace fs = std::filesystem;
const std::string typical = (fs::path(TESSEL_FORM_FIXTURES) / "typical.pdf").string();

std::vector<std::string> pageTexts(const fs::path& pdf) {
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(pdf.string()));
    std::vector<std::string> pages;
    if (!document) return pages;
    for (int i = 0; i < document->pages(); ++i) {
        const std::unique_ptr<poppler::page> page(document->create_page(i));
        std::string words;
        for (const auto& box : page->text_list()) {
            const auto bytes = box.text().to_utf8();
            words += std::string(bytes.begin(), bytes.end()) + " ";
        }
        pages.push_back(words);
    }
    return pages;
}

std::string contentsOf(const std::string& pdf, int page) {
    QPDF document;
    document.processMemoryFile("pdf", pdf.data(), pdf.size());
    auto contents = QPDFPageDocumentHelper(document).getAllPages().at(static_cast<std::size_t>(page)).getObjectHandle().getKey("/Contents");
    std::string all;
    const auto streams = contents.isArray() ? contents.getArrayAsVector() : std::vector<QPDFObjectHandle>{contents};
    for (auto stream : streams) {
        const auto data = stream.getStreamData(qpdf_dl_generalized);
        all += "<stream>" + std::string(reinterpret_cast<const char*>(data->getBuffer()), data->getSize());
    }
    return all;
}

std::string bytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

class OwnFormExport : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
        ASSERT_EQ(run({"production", "set", "--company", "Lighthouse Pictures", "--department-head", "Morgan Hale"}).status, 0);
        for (int i = 1; i <= 20; ++i) ASSERT_EQ(run({"crew", "add", "Crew " + std::to_string(i), "--from", "2026-11-01", "--rate", "40"}).status, 0);
        ASSERT_EQ(run({"dts", "create", "2026-11-04"}).status, 0);
        ASSERT_EQ(run({"dts", "set", "2026-11-04", "--call", "7", "--lunch-out", "13", "--wrap", "19.5", "--notes", "Company move."}).status, 0);
        const auto imported = run({"template", "import", typical});
        ASSERT_EQ(imported.status, 0) << imported.err;
    }
    fs::path output() const { return folder.path() / "own.pdf"; }
};

TEST_F(OwnFormExport, DrawsEveryPageOnACopyOfTheUntouchedBlankPage) {
    const auto draft = run({"template", "approve"});
    EXPECT_EQ(draft.status, 1);
    EXPECT_EQ(draft.err, "Resolve each item marked Review, or choose Leave Blank.\n");
    ASSERT_EQ(run({"template", "blank", "workday.notes"}).status, 0);
    ASSERT_EQ(run({"template", "map", "derived.pageXOfY", "--region", "0.8,0.945,0.15,0.025"}).status, 0);
    EXPECT_EQ(run({"template", "approve"}).err, "Confirm or set up the crew rows before using this template.\n");
    ASSERT_EQ(run({"template", "rows", "confirm"}).status, 0);
    ASSERT_EQ(run({"production", "set", "--export-form", "template"}).status, 0);
    const auto notApproved = run({"dts", "export", "2026-11-04", "--output", output().string()});
    EXPECT_EQ(notApproved.status, 1);  // the draft is not in use until it is approved
    EXPECT_FALSE(fs::exists(output()));
    ASSERT_EQ(run({"template", "approve"}).status, 0);

    const auto exported = run({"dts", "export", "2026-11-04", "--output", output().string()});
    ASSERT_EQ(exported.status, 0) << exported.err;
    EXPECT_NE(exported.out.find("(2 pages)"), std::string::npos) << exported.out;  // 20 crew on 14 rows
    const auto pages = pageTexts(output());
    ASSERT_EQ(pages.size(), 2u);
    for (int page = 0; page < 2; ++page) {
        EXPECT_NE(pages[page].find("Harbor Lights"), std::string::npos) << page;
        EXPECT_NE(pages[page].find("Page " + std::to_string(page + 1) + " of 2"), std::string::npos) << pages[page];
    }
    EXPECT_NE(pages[0].find("Crew 14"), std::string::npos);
    EXPECT_EQ(pages[0].find("Crew 15"), std::string::npos);
    EXPECT_NE(pages[1].find("Crew 20"), std::string::npos);
    EXPECT_EQ(pages[1].find("Company move."), std::string::npos);  // left blank

    // Each page keeps the blank form's own drawing byte for byte, with the values drawn after it.
    const std::string blank = contentsOf(bytesOf(typical), 0).substr(std::string("<stream>").size());
    const std::string filled = bytesOf(output());
    for (int page = 0; page < 2; ++page) EXPECT_NE(contentsOf(filled, page).find("<stream>" + blank + "<stream>"), std::string::npos) << page;
    EXPECT_EQ(std::system(("qpdf --check '" + output().string() + "' >/dev/null 2>&1").c_str()), 0);
}

TEST_F(OwnFormExport, ALongNameFailsInAFixedPlacementAndShrinksWhenAllowed) {
    ASSERT_EQ(run({"crew", "add", "Maximiliana Bartholomew-Vanderhoeven", "--from", "2026-11-01", "--rate", "40"}).status, 0);
    ASSERT_EQ(run({"dts", "row", "2026-11-04", "Maximiliana Bartholomew-Vanderhoeven"}).status, 0);
    ASSERT_EQ(run({"template", "blank", "workday.notes"}).status, 0);
    ASSERT_EQ(run({"template", "blank", "derived.pageXOfY"}).status, 0);
    ASSERT_EQ(run({"template", "map", "crew.name", "--row", "--region", "0,0,0.2,1", "--fit", "fixed"}).status, 0);
    ASSERT_EQ(run({"template", "rows", "confirm"}).status, 0);
    ASSERT_EQ(run({"template", "approve"}).status, 0);
    ASSERT_EQ(run({"production", "set", "--export-form", "template"}).status, 0);
    const auto fixed = run({"dts", "export", "2026-11-04", "--output", output().string()});
    EXPECT_EQ(fixed.status, 1);
    EXPECT_NE(fixed.err.find("The value for Name cannot fit legibly in its mapped region. Enlarge its mapped region or enable Shrink to Fit."),
              std::string::npos)
        << fixed.err;

    ASSERT_EQ(run({"template", "import", typical}).status, 0);
    ASSERT_EQ(run({"template", "blank", "workday.notes"}).status, 0);
    ASSERT_EQ(run({"template", "blank", "derived.pageXOfY"}).status, 0);
    ASSERT_EQ(run({"template", "map", "crew.name", "--row", "--region", "0,0,0.2,1", "--fit", "shrinkToFit"}).status, 0);
    ASSERT_EQ(run({"template", "rows", "set", "--first", "0.051,0.269,0.899,0.036", "--count", "14"}).status, 0);
    ASSERT_EQ(run({"template", "approve"}).status, 0);
    const auto shrunk = run({"dts", "export", "2026-11-04", "--output", output().string()});
    EXPECT_EQ(shrunk.status, 0) << shrunk.err;
}

// Dark pixels of the first page at 72 dpi (a pixel per point) in the typical form's signature blank,
// above its rule.
int darkPixelsOverTheSignatureRule(const fs::path& pdf) {
    const std::unique_ptr<poppler::document> document(poppler::document::load_from_file(pdf.string()));
    const std::unique_ptr<poppler::page> page(document->create_page(0));
    poppler::page_renderer renderer;
    renderer.set_image_format(poppler::image::format_gray8);
    const poppler::image image = renderer.render_page(page.get(), 72, 72);
    int dark = 0;
    for (int y = 502; y < 520; ++y) {
        const auto* line = reinterpret_cast<const unsigned char*>(image.const_data()) + y * image.bytes_per_row();
        for (int x = 495; x < 745; ++x) dark += line[x] < 100;
    }
    return dark;
}

// The department head's signature is drawn in the blank the form gives it; a draft replacing the
// approved mapping leaves the approved one in use until it is approved itself.
TEST_F(OwnFormExport, DrawsTheSignatureAndKeepsTheApprovedMappingWhileADraftWaits) {
    const auto png = folder.path() / "signature.png";
    ASSERT_TRUE(testing::writeSignaturePng(png));
    ASSERT_EQ(run({"production", "signature", png.string()}).status, 0);
    for (const char* field : {"workday.notes", "derived.pageXOfY"}) ASSERT_EQ(run({"template", "blank", field}).status, 0);
    ASSERT_EQ(run({"template", "rows", "confirm"}).status, 0);
    ASSERT_EQ(run({"template", "approve"}).status, 0);
    ASSERT_EQ(run({"production", "set", "--export-form", "template"}).status, 0);
    ASSERT_EQ(run({"dts", "export", "2026-11-04", "--output", output().string()}).status, 0);
    EXPECT_GT(darkPixelsOverTheSignatureRule(output()), 100);

    const auto replacing = run({"template", "import", typical});
    EXPECT_NE(replacing.out.find("The existing approved mapping remains in use until this replacement is approved."), std::string::npos);
    ASSERT_EQ(run({"template", "blank", "approval.signature"}).status, 0);
    ASSERT_EQ(run({"dts", "export", "2026-11-04", "--output", output().string()}).status, 0);
    EXPECT_GT(darkPixelsOverTheSignatureRule(output()), 100);  // still the approved mapping
    ASSERT_EQ(run({"production", "signature", "--clear"}).status, 0);
    ASSERT_EQ(run({"dts", "export", "2026-11-04", "--output", output().string()}).status, 0);
    EXPECT_LT(darkPixelsOverTheSignatureRule(output()), 20);
}

// The trials of a draft: a few rows, a full page, and three rows more on a second page.
TEST_F(OwnFormExport, TestFillsTheDraftWithInventedData) {
    for (const auto& [scenario, pages] : {std::pair("typical", 1u), std::pair("full", 1u), std::pair("overflow", 2u)}) {
        const auto output = folder.path() / (std::string(scenario) + ".pdf");
        const auto filled = run({"template", "test-fill", scenario, "--output", output.string()});
        ASSERT_EQ(filled.status, 0) << filled.err;
        const auto texts = pageTexts(output);
        ASSERT_EQ(texts.size(), pages) << scenario;
        EXPECT_NE(texts.front().find("Sample Production"), std::string::npos) << scenario;
        EXPECT_NE(texts.front().find("Avery Lindgren"), std::string::npos) << scenario;
    }
    EXPECT_NE(pageTexts(folder.path() / "full.pdf").front().find("Devon Achebe 2"), std::string::npos);  // the fourteenth row
    EXPECT_EQ(run({"template", "test-fill", "huge", "--output", "x.pdf"}).err, "Choose the test fill typical, full, overflow.\n");
}

TEST_F(OwnFormExport, RefusesACrewFieldOutsideTheRowsAndAnUnknownField) {
    EXPECT_EQ(run({"template", "map", "crew.name", "--region", "0.1,0.1,0.2,0.05"}).err,
              "Choose an area entirely inside one approved crew row. For document fields, keep the area inside the page.\n");
    EXPECT_EQ(run({"template", "map", "crew.name", "--row", "--region", "0.9,0,0.2,1"}).err,
              "Choose an area entirely inside one approved crew row. For document fields, keep the area inside the page.\n");
    EXPECT_EQ(run({"template", "rows", "set", "--first", "0,0,1,0.000000001", "--count", "1000000000"}).err, "A DTS page holds at most 200 crew rows.\n");
    EXPECT_EQ(run({"template", "map", "crew.shoeSize", "--row", "--region", "0,0,0.2,1"}).err,
              "There is no DTS field \u201Ccrew.shoeSize\u201D; fields are named as \u201Ccrew.name\u201D or \u201Cworkday.date\u201D.\n");
}

}  // namespace
}  // namespace tessel
