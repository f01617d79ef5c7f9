#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "App/dtsexport/DTSTemplateInterpretation.hpp"
#include "App/dtsexport/GenericDTSRenderer.hpp"
#include "App/model/ModelContext.hpp"

// A production's own DTS template as it is kept: at most one approved mapping, in use for exports, and at
// most one draft beside it, being reviewed. Approving the draft replaces the approved mapping, which
// stays in use until then.
namespace tessel {

namespace dts_template_words {
inline constexpr std::string_view replacementNotice = "The existing approved mapping remains in use until this replacement is approved.";
inline constexpr std::string_view unresolvedReview = "Resolve each item marked Review, or choose Leave Blank.";
inline constexpr std::string_view missingCrewRows = "No crew rows were identified.";
inline constexpr std::string_view confirmRows = "Confirm or set up the crew rows before using this template.";
inline constexpr std::string_view missingSource = "Choose a blank Daily Time Sheet PDF first.";
inline constexpr std::string_view manualRegion =
    "Choose an area entirely inside one approved crew row. For document fields, keep the area inside the page.";
inline constexpr std::string_view usesApprovedPDF = "Production DTS Template uses this Production\u2019s approved PDF. Select it explicitly to use it for export.";
}  // namespace dts_template_words

struct StoredDTSTemplate {
    Uuid id;
    std::string sourcePDFData;
    ProductionDTSTemplateDefinition definition;
    Instant createdAt, modifiedAt;
};

// One mapping of the review: a proposal of the interpreter, or a field the user placed, with its status.
struct DTSTemplateReviewMapping {
    enum class Status { mapped, review, notMapped };
    std::string label;
    std::optional<DTSSemanticFieldID> semanticFieldID;
    DTSSemanticScope scope = DTSSemanticScope::document;
    std::optional<DTSNormalizedRegion> region;
    Status status = Status::notMapped;
    bool explicitlyResolved = false;  // left blank by the user
    std::vector<std::string> evidence;
};
std::string_view toRawValue(DTSTemplateReviewMapping::Status status) noexcept;

// An edit of a draft that cannot be made: `code` names the kind ("invalidRegion", "scopeMismatch",
// "missingCrewRows"), what() is the sentence to show.
class DTSTemplateEditError : public std::runtime_error {
public:
    DTSTemplateEditError(std::string code, const std::string& message) : std::runtime_error(message), code_(std::move(code)) {}
    const std::string& code() const noexcept { return code_; }

private:
    std::string code_;
};

namespace production_dts_templates {

std::optional<StoredDTSTemplate> approved(ModelContext& context, const Uuid& productionID);
std::optional<StoredDTSTemplate> draft(ModelContext& context, const Uuid& productionID);

// The draft built from the interpreter's proposals: every field it found placed with the presentation its
// kind prints best in, the crew rows of its crew table. Refuses a page that is not one readable page.
ProductionDTSTemplateDefinition proposedDefinition(const DTSTemplateInterpretation& interpretation);
// Starts (or restarts) the draft from a blank page.
StoredDTSTemplate importDraft(ModelContext& context, const Uuid& productionID, const std::string& pdf, Instant now);
void saveDraft(ModelContext& context, const StoredDTSTemplate& draft, Instant now);

// Every proposal of the draft's page and every field the user placed, with its status.
std::vector<DTSTemplateReviewMapping> review(const StoredDTSTemplate& draft);
// What keeps the draft from approval, in sentences; none when it can be approved.
std::vector<std::string> blockers(const StoredDTSTemplate& draft);
// The user's edits of a draft definition, each checked as it is made (DTSTemplateEditError). Regions are
// 0…1 of the page, or of one row for a crew-row field, and must lie wholly inside.
void checkRegion(const DTSNormalizedRegion& region);
// Places the field at the region, keeping the presentation of a placement it had; a field left blank is
// placed again. Returns the placement, to adjust its presentation.
DTSTemplatePlacement& place(ProductionDTSTemplateDefinition& definition, DTSSemanticFieldID field, const DTSNormalizedRegion& region);
void leaveBlank(ProductionDTSTemplateDefinition& definition, DTSSemanticFieldID field);
// The crew rows set by the user: the first row and how many follow it, each as tall; they count as confirmed.
void setCrewRows(ProductionDTSTemplateDefinition& definition, const DTSNormalizedRegion& firstRow, int count);
// The rows the interpreter found, confirmed as they are; refused when it found none.
void confirmCrewRows(ProductionDTSTemplateDefinition& definition);
// A region drawn on the page, as a region within the crew row that holds it; refused when no row holds it whole.
DTSNormalizedRegion withinRow(const ProductionDTSTemplateDefinition& definition, const DTSNormalizedRegion& onPage);

// Approves the draft (refused with the first blocker), replacing the approved mapping.
StoredDTSTemplate approve(ModelContext& context, const Uuid& productionID, Instant now);

}  // namespace production_dts_templates
}  // namespace tessel
