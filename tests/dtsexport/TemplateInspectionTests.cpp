#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "../support/CommandRun.hpp"
#include "App/dtsexport/DTSTemplateInterpretation.hpp"

// The blank forms tools/dts-forms draws, inspected and interpreted: the crew table and its columns, the
// document fields, the rules drawn as rectangles or through nested transforms, and the refusals.
namespace tessel {
namespace {

namespace fs = std::filesystem;
using Classification = DTSInterpretationClassification;
using F = DTSSemanticFieldID;

std::string form(const std::string& name) {
    std::ifstream in(fs::path(TESSEL_FORM_FIXTURES) / name, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

DTSTemplateInterpretation interpreted(const std::string& name) { return dts_interpretation::interpret(pdf_structure::inspect(form(name))); }

std::vector<std::optional<F>> columnFields(const DTSTemplateInterpretation& i) {
    std::vector<std::optional<F>> fields;
    for (const auto& s : i.crewTableSuggestion->semanticSuggestions) fields.push_back(s.semanticFieldID);
    return fields;
}

class TypicalForms : public ::testing::TestWithParam<const char*> {};

// The same form whether its rules are stroked lines or thin filled rectangles, with or without fields.
TEST_P(TypicalForms, FindTheCrewTableItsColumnsAndTheDocumentFields) {
    const auto i = interpreted(GetParam());
    ASSERT_FALSE(i.tableCandidates.empty());
    ASSERT_TRUE(i.crewTableSuggestion);
    EXPECT_EQ(i.crewTableSuggestion->classification, Classification::found);
    EXPECT_EQ(i.crewTableSuggestion->rowSlots.size(), 14u);
    EXPECT_EQ(columnFields(i), (std::vector<std::optional<F>>{F::crewName, F::crewOccupationCode, F::crewCall, F::crewLunchOut, F::crewLunchIn,
                                                              std::nullopt, std::nullopt, F::crewWrap, F::crewNDB, F::crewBoxRentalApplies,
                                                              F::crewMileage}));
    const auto& lunchOut = i.crewTableSuggestion->semanticSuggestions[3];
    EXPECT_EQ(lunchOut.evidence, (std::vector<std::string>{"direct header tokens: \u201COUT\u201D", "spanning parent tokens: \u201CMEAL 1\u201D",
                                                           "structural header path: \u201CMEAL 1 / OUT\u201D", "recognized label/synonym"}));
    EXPECT_EQ(i.crewTableSuggestion->semanticSuggestions[5].evidence.back(), "no recognized crew label in \u201CMEAL 2 OUT\u201D");
    EXPECT_EQ(i.unresolvedRegions.size(), 2u);

    std::map<F, Classification> document;
    for (const auto& s : i.documentFieldSuggestions) document.emplace(*s.semanticFieldID, s.classification);
    EXPECT_EQ(document, (std::map<F, Classification>{{F::productionName, Classification::found},
                                                     {F::productionCompany, Classification::found},
                                                     {F::productionDepartment, Classification::found},
                                                     {F::workdayDate, Classification::found},
                                                     {F::workdayWorkState, Classification::found},
                                                     {F::workdayWorkLocation, Classification::found},
                                                     {F::workdayNotes, Classification::pleaseReview},
                                                     {F::approvalDepartmentHeadName, Classification::found},
                                                     {F::approvalSignature, Classification::found},
                                                     {F::derivedPageXOfY, Classification::pleaseReview}}));
}

INSTANTIATE_TEST_SUITE_P(Forms, TypicalForms, ::testing::Values("typical.pdf", "thin-rectangles.pdf", "acroform.pdf"));

TEST(TemplateInspection, ReadsTheFormFieldsAndPlacesTheLabelsValueInIt) {
    const auto inspection = pdf_structure::inspect(form("acroform.pdf"));
    ASSERT_EQ(inspection.pages.front().widgets.size(), 2u);
    EXPECT_EQ(inspection.pages.front().widgets.front().fieldName, "Production");
    EXPECT_EQ(inspection.pages.front().widgets.front().widgetFieldType, "/Tx");
    const auto i = dts_interpretation::interpret(inspection);
    const auto production = std::find_if(i.documentFieldSuggestions.begin(), i.documentFieldSuggestions.end(),
                                         [](const DTSSemanticSuggestion& s) { return s.semanticFieldID == F::productionName; });
    ASSERT_NE(production, i.documentFieldSuggestions.end());
    EXPECT_NEAR(production->region.x, 110.0 / 792, 0.001);  // the field's own rectangle
    EXPECT_NEAR(production->region.width, 190.0 / 792, 0.001);
}

TEST(TemplateInspection, FollowsTheTransformStack) {
    const auto i = interpreted("nested-transforms.pdf");
    ASSERT_FALSE(i.tableCandidates.empty());
    const auto& table = i.tableCandidates.front();
    // Drawn at half size inside a doubled, moved state: the rules are where the page shows them.
    EXPECT_NEAR(table.bounds.x, 40.0 / 792, 0.001);
    EXPECT_NEAR(table.bounds.right(), 752.0 / 792, 0.001);
    EXPECT_NEAR(table.bounds.y, (612.0 - 460) / 612, 0.001);
    EXPECT_EQ(table.rowSlots.size(), 7u);  // the first band holds the header words
    EXPECT_EQ(table.columns.size(), 7u);
    EXPECT_EQ(columnFields(i).front(), F::crewName);
}

TEST(TemplateInspection, FindsNoTableInAGridOfFourRules) {
    const auto i = interpreted("four-rules.pdf");
    EXPECT_TRUE(i.tableCandidates.empty());
    EXPECT_FALSE(i.crewTableSuggestion);
    EXPECT_NE(std::find(i.diagnostics.begin(), i.diagnostics.end(), "No confident crew-table suggestion"), i.diagnostics.end());
}

// Two rules on one line, a little apart: within the merge gap they are one line, beyond it two.
struct MergeCase {
    double gap;
    std::size_t lines;
};
class RuleMerging : public ::testing::TestWithParam<MergeCase> {};

TEST_P(RuleMerging, JoinsCollinearRulesWithinTheGap) {
    PDFStructuralPage page;
    page.lines.push_back({0, {}, {}, {0.1, 0.5}, {0.4, 0.5}, 1});
    page.lines.push_back({1, {}, {}, {0.4 + GetParam().gap, 0.5005}, {0.7, 0.5005}, 1});
    EXPECT_EQ(dts_interpretation::normalizedLines(page).size(), GetParam().lines);
}
INSTANTIATE_TEST_SUITE_P(Gaps, RuleMerging, ::testing::Values(MergeCase{0.002, 1}, MergeCase{0.004, 2}));

struct RefusalCase {
    const char* file;
    const char* message;
};
class TemplateInspectRefusals : public testing::CommandTest, public ::testing::WithParamInterface<RefusalCase> {};

TEST_P(TemplateInspectRefusals, SayWhyUnderTheirTitle) {
    const auto refused = run({"template", "inspect", (fs::path(TESSEL_FORM_FIXTURES) / GetParam().file).string()});
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, std::string("Couldn\u2019t Inspect PDF\n") + GetParam().message + "\n");
}
INSTANTIATE_TEST_SUITE_P(
    Forms, TemplateInspectRefusals,
    ::testing::Values(RefusalCase{"rotated.pdf", "Page 1 of the selected PDF is rotated by 90\u00B0; Tessel reads blank DTS pages drawn upright."},
                      RefusalCase{"two-pages.pdf", "This version of Tessel supports one-page DTS templates. Choose the single blank DTS page production uses "
                                                   "for one sheet."},
                      RefusalCase{"not-a-pdf.pdf", "The selected file is not a readable PDF."}));

}  // namespace
}  // namespace tessel
