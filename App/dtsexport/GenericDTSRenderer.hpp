#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "App/dtsexport/DTSWorkdayFacts.hpp"
#include "App/dtsexport/GenericDTSTemplate.hpp"

// A DTS drawn on a production's own approved blank page: the crew rows split into pages of as many rows as
// the template has row slots, the document fields on every page, each value drawn by its presentation
// onto an exact copy of the blank page.
namespace tessel {

struct ApprovedGenericDTSTemplateSnapshot {
    std::string sourcePDFData;
    ProductionDTSTemplateDefinition definition;
};

class GenericDTSRenderError : public std::runtime_error {
public:
    enum class Case {
        unsupportedSemantic,
        unsupportedRendering,
        cannotFit,
        notApproved,
        invalidSource,
        sourcePageCount,
        invalidDefinition,
        invalidCapacity,
        invalidImage,
        outputCreation
    };
    GenericDTSRenderError(Case errorCase, const std::string& message);
    Case errorCase() const noexcept { return case_; }
    std::string_view caseName() const noexcept;

    static GenericDTSRenderError unsupportedSemantic(DTSSemanticFieldID field);
    static GenericDTSRenderError unsupportedRendering(DTSTemplateRenderingKind kind);
    static GenericDTSRenderError cannotFit(DTSSemanticFieldID field, DTSTextFit fit);
    static GenericDTSRenderError of(Case errorCase);  // the cases whose sentence names nothing

private:
    Case case_;
};

// The trials of a mapping: "Typical Crew" (a few rows), "Full Page" (as many rows as the page has) or
// "Overflow" (three rows more, a second page).
enum class GenericDTSTestFillScenario { typical, full, overflow };

namespace generic_dts_render {

// A value of a shrink-to-fit placement is set no smaller than this: 6 points is the smallest size that
// still reads on a printed and photocopied timesheet. A value starts at 10 points, or smaller when its
// region is lower than that.
inline constexpr double minimumReadableSize = 6.0;
inline constexpr double largestSize = 10.0;

// The pages the DTS takes on the template: one per group of as many rows as there are row slots.
int pageCount(const ProductionDTSTemplateDefinition& definition, const DTSWorkdayFacts& facts);

// The filled DTS as PDF bytes. Throws GenericDTSRenderError.
std::string render(const ApprovedGenericDTSTemplateSnapshot& snapshot, const DTSWorkdayFacts& facts);

// A trial of the mapping with invented data, through the same drawing as an export.
std::string_view label(GenericDTSTestFillScenario scenario) noexcept;
DTSWorkdayFacts testFillFacts(GenericDTSTestFillScenario scenario, const ProductionDTSTemplateDefinition& definition);
// The filled PDF; the refusal of the drawing (a value that does not fit, above all) is thrown as for an
// export, with the draft treated as approved for the trial.
std::string testFill(GenericDTSTestFillScenario scenario, const std::string& sourcePDF, const ProductionDTSTemplateDefinition& definition);

}  // namespace generic_dts_render
}  // namespace tessel
