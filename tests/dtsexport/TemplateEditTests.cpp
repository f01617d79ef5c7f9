#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "App/dtsexport/PDFStructuralInspection.hpp"
#include "App/dtsexport/ProductionDTSTemplates.hpp"

// The user's edits of a template draft: a field placed again shows where it now is, regions drawn on the
// page become regions within a row, and crew rows are set or confirmed with the sentences of their rules.
namespace tessel {
namespace {

namespace templates = production_dts_templates;
using F = DTSSemanticFieldID;

StoredDTSTemplate typicalDraft() {
    std::ifstream in(std::filesystem::path(TESSEL_FORM_FIXTURES) / "typical.pdf", std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    StoredDTSTemplate draft{Uuid::generate(), bytes.str(), {}, {}, {}};
    draft.definition = templates::proposedDefinition(dts_interpretation::interpret(pdf_structure::inspect(draft.sourcePDFData)));
    return draft;
}

const DTSTemplateReviewMapping& mappingOf(const std::vector<DTSTemplateReviewMapping>& mappings, F field) {
    const auto found = std::find_if(mappings.begin(), mappings.end(), [&](const auto& m) { return m.semanticFieldID == field; });
    if (found == mappings.end()) throw std::logic_error("no mapping");
    return *found;
}

TEST(TemplateEdits, AProposedFieldPlacedAgainShowsItsNewRegion) {
    auto draft = typicalDraft();
    const auto proposed = mappingOf(templates::review(draft), F::productionName);
    ASSERT_EQ(proposed.status, DTSTemplateReviewMapping::Status::mapped);
    const DTSNormalizedRegion moved{0.5, 0.1, 0.2, 0.03};
    ASSERT_NE(proposed.region, moved);
    templates::place(draft.definition, F::productionName, moved);
    EXPECT_EQ(mappingOf(templates::review(draft), F::productionName).region, moved);
}

TEST(TemplateEdits, ARegionDrawnInACrewRowIsKeptRelativeToThatRow) {
    ProductionDTSTemplateDefinition d;
    templates::setCrewRows(d, {0.1, 0.2, 0.8, 0.05}, 4);
    ASSERT_EQ(d.crewRowSlots.size(), 4u);
    EXPECT_TRUE(d.crewRowsConfirmed);
    const auto inThird = templates::withinRow(d, {0.3, 0.31, 0.2, 0.03});  // the third row spans 0.30 to 0.35
    EXPECT_NEAR(inThird.x, 0.25, 1e-9);
    EXPECT_NEAR(inThird.y, 0.2, 1e-9);
    EXPECT_NEAR(inThird.width, 0.25, 1e-9);
    EXPECT_NEAR(inThird.height, 0.6, 1e-9);
    try {
        templates::withinRow(d, {0.3, 0.24, 0.2, 0.03});  // across two rows
        FAIL() << "a region across two rows was taken";
    } catch (const DTSTemplateEditError& error) {
        EXPECT_EQ(error.code(), "invalidRegion");
        EXPECT_EQ(std::string(error.what()), std::string(dts_template_words::manualRegion));
    }
}

TEST(TemplateEdits, RefuseRowsOffThePageAndConfirmingNone) {
    ProductionDTSTemplateDefinition d;
    EXPECT_THROW(templates::setCrewRows(d, {0.1, 0.9, 0.8, 0.05}, 3), DTSTemplateEditError);
    EXPECT_THROW(templates::setCrewRows(d, {0.1, 0.1, 0.8, 0.001}, 201), DTSTemplateEditError);
    EXPECT_TRUE(d.crewRowSlots.empty());
    try {
        templates::confirmCrewRows(d);
        FAIL();
    } catch (const DTSTemplateEditError& error) {
        EXPECT_EQ(std::string(error.what()), std::string(dts_template_words::missingCrewRows));
    }
    templates::leaveBlank(d, F::workdayNotes);
    templates::place(d, F::workdayNotes, {0.1, 0.8, 0.5, 0.1});  // placed again after being left blank
    EXPECT_TRUE(d.leftBlank.empty());
}

}  // namespace
}  // namespace tessel
