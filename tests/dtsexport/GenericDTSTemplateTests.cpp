#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "App/dtsexport/GenericDTSRenderer.hpp"
#include "App/dtsexport/GenericDTSTemplate.hpp"
#include "App/model/CalendarText.hpp"

// A production's DTS template mapping: written and read back unchanged, refused when its version is
// unknown, and validated with the sentence of the first rule it breaks.
namespace tessel {
namespace {

using F = DTSSemanticFieldID;
using Case = GenericDTSTemplateError::Case;

ProductionDTSTemplateDefinition typical() {
    ProductionDTSTemplateDefinition d;
    DTSTemplatePresentation time;
    time.timePresentation = DTSTimePresentation::clock24Hour;
    time.textFit = DTSTextFit::shrinkToFit;
    time.alignment = DTSTextAlignment::center;
    DTSTemplatePresentation mark;
    mark.renderingKind = DTSTemplateRenderingKind::mark;
    mark.booleanMark = DTSBooleanMark::check;
    DTSTemplatePresentation date;
    date.datePresentation = DTSDatePresentation::long_;
    d.documentPlacements = {{Uuid::generate(), F::productionName, {0.1, 0.05, 0.3, 0.03}, {}},
                            {Uuid::generate(), F::workdayDate, {0.7, 0.05, 0.2, 0.03}, date}};
    d.crewRowPlacements = {{Uuid::generate(), F::crewName, {0, 0, 0.25, 1}, {}},
                           {Uuid::generate(), F::crewCall, {0.3, 0, 0.07, 1}, time},
                           {Uuid::generate(), F::crewNDB, {0.75, 0, 0.07, 1}, mark}};
    for (int i = 0; i < 14; ++i) d.crewRowSlots.push_back({Uuid::generate(), {0.05, 0.24 + i * 0.036, 0.9, 0.036}});
    return d;
}

TEST(GenericDTSTemplateDefinition, ReadsBackWhatItWrote) {
    auto d = typical();
    d.approvalState = ProductionDTSTemplateDefinition::ApprovalState::approved;
    d.approvedAt = calendar_text::parseInstant("2026-11-20T10:00:00Z");
    const std::string encoded = generic_dts_template::encode(d);
    const auto back = generic_dts_template::decode(encoded);
    EXPECT_EQ(generic_dts_template::encode(back), encoded);
    EXPECT_EQ(back.crewRowPlacements[1].presentation.timePresentation, DTSTimePresentation::clock24Hour);
    EXPECT_EQ(back.documentPlacements[1].presentation.datePresentation, DTSDatePresentation::long_);
    EXPECT_NO_THROW(generic_dts_template::validate(back));
}

TEST(GenericDTSTemplateDefinition, RefusesAVersionItDoesNotKnowBeforeReadingFurther) {
    try {
        generic_dts_template::decode(R"({"formatVersion": 2, "anything": "else"})");
        FAIL() << "read";
    } catch (const GenericDTSTemplateError& error) {
        EXPECT_EQ(error.errorCase(), Case::unsupportedDefinitionVersion);
    }
    for (const char* damaged : {"", "{", "[]", R"({"formatVersion": 1})", R"({"formatVersion": "1"})"}) {
        try {
            generic_dts_template::decode(damaged);
            ADD_FAILURE() << damaged;
        } catch (const GenericDTSTemplateError& error) {
            EXPECT_EQ(error.errorCase(), Case::invalidDefinition) << damaged;
        }
    }
}

struct ValidationCase {
    const char* name;
    std::function<void(ProductionDTSTemplateDefinition&)> breakIt;
    Case errorCase;
    const char* message;
};
class DefinitionValidation : public ::testing::TestWithParam<ValidationCase> {};

TEST_P(DefinitionValidation, RefusesWithTheFirstRuleBroken) {
    auto d = typical();
    GetParam().breakIt(d);
    try {
        generic_dts_template::validate(d);
        FAIL() << "valid";
    } catch (const GenericDTSTemplateError& error) {
        EXPECT_EQ(error.errorCase(), GetParam().errorCase);
        EXPECT_STREQ(error.what(), GetParam().message);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Definitions, DefinitionValidation,
    ::testing::Values(
        ValidationCase{"RegionOffThePage", [](auto& d) { d.documentPlacements[0].region.x = 0.9; }, Case::invalidRegion,
                       "The region of \u201Cproduction.name\u201D lies outside its page or row."},
        ValidationCase{"EmptyRegion", [](auto& d) { d.crewRowPlacements[0].region.height = 0; }, Case::invalidRegion,
                       "The region of \u201Ccrew.name\u201D lies outside its page or row."},
        ValidationCase{"RowOffThePage", [](auto& d) { d.crewRowSlots.back().region.y = 0.99; }, Case::invalidRegion,
                       "The region of crew row 14 lies outside its page or row."},
        ValidationCase{"CrewFieldOnThePage", [](auto& d) { d.documentPlacements[0].semanticFieldID = F::crewWrap; }, Case::scopeMismatch,
                       "\u201Ccrew.wrap\u201D is a crew-row field placed on the page."},
        ValidationCase{"DocumentFieldInARow", [](auto& d) { d.crewRowPlacements[0].semanticFieldID = F::workdayNotes; }, Case::scopeMismatch,
                       "\u201Cworkday.notes\u201D is a document field placed in the crew rows."},
        ValidationCase{"OneFieldTwiceInOnePlace", [](auto& d) { d.crewRowPlacements.push_back({Uuid::generate(), F::crewName, {0, 0, 0.25, 1}, {}}); },
                       Case::duplicatePhysicalIdentity, "\u201Ccrew.name\u201D is placed twice in the same place."},
        ValidationCase{"ApprovedWithoutItsInstant",
                       [](auto& d) { d.approvalState = ProductionDTSTemplateDefinition::ApprovalState::approved; }, Case::invalidApprovalState,
                       "An approved DTS template mapping records when it was approved, and a draft does not."}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(GenericDTSRender, RefusesADraftAndATemplateWithCrewFieldsButNoRows) {
    auto d = typical();
    const auto facts = generic_dts_render::testFillFacts(GenericDTSTestFillScenario::typical, d);
    const auto refusal = [&](const ProductionDTSTemplateDefinition& definition) {
        try {
            generic_dts_render::render({"%PDF-1.4", definition}, facts);
        } catch (const GenericDTSRenderError& error) {
            return std::string(error.what());
        }
        return std::string("rendered");
    };
    EXPECT_EQ(refusal(d), "Approve the DTS template before rendering.");
    d.approvalState = ProductionDTSTemplateDefinition::ApprovalState::approved;
    d.approvedAt = Instant{};
    d.crewRowSlots.clear();
    EXPECT_EQ(refusal(d), "The DTS template has crew fields but no usable crew rows.");
    d.crewRowSlots = typical().crewRowSlots;
    EXPECT_EQ(refusal(d), "The source DTS PDF could not be read.");
}

TEST(GenericDTSTemplateSource, IsOneReadablePage) {
    const auto read = [](const char* name) {
        std::ifstream in(std::filesystem::path(TESSEL_FORM_FIXTURES) / name, std::ios::binary);
        std::ostringstream bytes;
        bytes << in.rdbuf();
        return bytes.str();
    };
    EXPECT_NO_THROW(generic_dts_template::validateSource(read("typical.pdf")));
    for (const char* refused : {"two-pages.pdf", "not-a-pdf.pdf", "rotated.pdf"}) {
        try {
            generic_dts_template::validateSource(read(refused));
            ADD_FAILURE() << refused;
        } catch (const GenericDTSTemplateError& error) {
            EXPECT_EQ(error.errorCase(), Case::invalidSourcePDF) << refused;
        }
    }
    try {
        generic_dts_template::validateSource(std::string(generic_dts_template::sourcePDFLimit + 1, '%'));
        ADD_FAILURE() << "too large";
    } catch (const GenericDTSTemplateError& error) {
        EXPECT_EQ(error.errorCase(), Case::sourcePDFTooLarge);
    }
}

}  // namespace
}  // namespace tessel
