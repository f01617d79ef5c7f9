#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "App/dtsexport/DTSSemanticField.hpp"
#include "App/model/Uuid.hpp"
#include "PayrollDomain/Instant.hpp"

// The mapping of a production's own blank DTS page: where each document field is drawn on the page, where
// each crew-row field is drawn within one row, and where the rows are. Stored as a keyed JSON document
// whose "formatVersion" is read first, so that a later format is refused rather than misread.
namespace tessel {

// A region of the page (or, for a crew-row placement, of one row): 0…1 on both axes, origin top left.
struct DTSNormalizedRegion {
    double x = 0, y = 0, width = 0, height = 0;
    bool operator==(const DTSNormalizedRegion&) const = default;
};

struct DTSTemplatePlacement {
    Uuid id;
    DTSSemanticFieldID semanticFieldID;
    DTSNormalizedRegion region;
    DTSTemplatePresentation presentation{};
};

struct DTSCrewRowSlot {
    Uuid id;
    DTSNormalizedRegion region;
};

struct ProductionDTSTemplateDefinition {
    enum class ApprovalState { draft, approved };
    static constexpr int currentFormatVersion = 1;
    int formatVersion = currentFormatVersion;
    Uuid id = Uuid::generate();
    ApprovalState approvalState = ApprovalState::draft;
    std::optional<Instant> approvedAt{};
    std::vector<DTSTemplatePlacement> documentPlacements{};
    std::vector<DTSTemplatePlacement> crewRowPlacements{};  // the crew-row schema: regions within one row
    std::vector<DTSCrewRowSlot> crewRowSlots{};
    // Proposed fields the user chose to leave blank (kept beside the format's keys, as "leftBlankFields").
    std::vector<DTSSemanticFieldID> leftBlank{};
    // Whether the user confirmed (or set) the crew rows (beside the format's keys, as "crewRowsConfirmed").
    bool crewRowsConfirmed = false;
};

class GenericDTSTemplateError : public std::runtime_error {
public:
    enum class Case {
        invalidRegion,
        duplicatePhysicalIdentity,
        scopeMismatch,
        invalidApprovalState,
        invalidSourcePDF,
        sourcePDFTooLarge,
        invalidDefinition,
        unsupportedDefinitionVersion
    };
    GenericDTSTemplateError(Case errorCase, const std::string& message);
    Case errorCase() const noexcept { return case_; }
    std::string_view caseName() const noexcept;

private:
    Case case_;
};

namespace generic_dts_template {

// A blank page larger than this is refused: a one-page form is tens of kilobytes, a scan a few megabytes.
inline constexpr std::size_t sourcePDFLimit = 10 * 1024 * 1024;

std::string encode(const ProductionDTSTemplateDefinition& definition);
// Reads the version first; throws GenericDTSTemplateError (unsupportedDefinitionVersion, invalidDefinition).
ProductionDTSTemplateDefinition decode(std::string_view data);
// Regions inside their space, one placement per field and place, each field where its scope belongs, an
// approval instant exactly when approved. Throws GenericDTSTemplateError.
void validate(const ProductionDTSTemplateDefinition& definition);
// The blank page: a readable PDF of one page within the size limit. Throws GenericDTSTemplateError.
void validateSource(std::string_view pdf);

}  // namespace generic_dts_template
}  // namespace tessel
