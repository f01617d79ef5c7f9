#include "GenericDTSRenderer.hpp"

#include <algorithm>
#include <cctype>

#include "App/dtsexport/FormDrawing.hpp"
#include "App/dtsexport/FormPagePlacement.hpp"
#include "App/dtsexport/PDFStructuralInspection.hpp"
#include "App/dtsexport/ProductionDTSExport.hpp"

namespace tessel {
namespace {

using Case = GenericDTSRenderError::Case;
using form_drawing::Alignment;
constexpr std::string_view fontFamily = "Nimbus Sans, Liberation Sans, Helvetica";

std::string nameOf(DTSSemanticFieldID field) {
    const auto& f = dts_fields::field(field);
    return std::string(f.displayName.empty() ? f.key : f.displayName);
}

// Where a page-relative region lies on the drawn page, in points from its top left. The drawn page spans
// the blank page's user space from its origin to the upper right of its media box.
struct PageGeometry {
    PDFRect visible;       // native: points, origin bottom left
    double width, height;  // of the drawn page
    PDFRect place(const DTSNormalizedRegion& r) const {
        return {visible.x + r.x * visible.width, height - (visible.bottom() - r.y * visible.height), r.width * visible.width, r.height * visible.height};
    }
};

DTSNormalizedRegion withinRow(const DTSNormalizedRegion& slot, const DTSNormalizedRegion& r) {
    return {slot.x + r.x * slot.width, slot.y + r.y * slot.height, r.width * slot.width, r.height * slot.height};
}

std::string transformed(std::string text, DTSTextTransform transform) {
    if (transform == DTSTextTransform::uppercase) {
        std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    }
    return text;
}

Alignment alignmentOf(DTSTextAlignment alignment) {
    switch (alignment) {
        case DTSTextAlignment::leading: return Alignment::leading;
        case DTSTextAlignment::center: return Alignment::center;
        case DTSTextAlignment::trailing: return Alignment::trailing;
    }
    return Alignment::leading;
}

void draw(cairo_t* cr, form_drawing::TextSetter& text, const DTSTemplatePlacement& placement, const DTSSemanticResolution& resolution,
          const PDFRect& box) {
    if (resolution.kind == DTSSemanticResolution::Kind::unsupported) throw GenericDTSRenderError::unsupportedSemantic(placement.semanticFieldID);
    if (resolution.kind == DTSSemanticResolution::Kind::absent || !resolution.value) return;
    const auto& p = placement.presentation;
    if (const auto* image = std::get_if<DTSImageValue>(&*resolution.value)) {
        if (p.renderingKind != DTSTemplateRenderingKind::image) throw GenericDTSRenderError::unsupportedRendering(p.renderingKind);
        if (!form_drawing::image(cr, image->bytes, box.x, box.y, box.width, box.height)) throw GenericDTSRenderError::of(Case::invalidImage);
        return;
    }
    if (p.renderingKind == DTSTemplateRenderingKind::image || p.renderingKind == DTSTemplateRenderingKind::choiceGroup) {
        throw GenericDTSRenderError::unsupportedRendering(p.renderingKind);
    }
    auto words = std::holds_alternative<bool>(*resolution.value)
                     ? (std::get<bool>(*resolution.value) ? std::optional(dts_presentation::markGlyph(p.booleanMark)) : std::nullopt)
                     : dts_presentation::text(*resolution.value, p);
    if (!words || words->empty()) return;
    const double size = std::min(generic_dts_render::largestSize, std::max(generic_dts_render::minimumReadableSize, box.height * 0.8));
    const double smallest = p.textFit == DTSTextFit::shrinkToFit ? generic_dts_render::minimumReadableSize : size;
    // A little room from the rules that usually bound a region.
    const double inset = std::min(3.0, box.width * 0.05);
    if (!text.line(transformed(*words, p.textTransform), box.x + inset, box.y, box.width - 2 * inset, box.height, size, smallest, alignmentOf(p.alignment))) {
        throw GenericDTSRenderError::cannotFit(placement.semanticFieldID, p.textFit);
    }
}

void drawPage(cairo_t* cr, const ProductionDTSTemplateDefinition& d, const DTSWorkdayFacts& facts, const PageGeometry& geometry, int page,
              int totalPages) {
    form_drawing::TextSetter text(cr, fontFamily);
    cairo_set_source_rgb(cr, 0, 0, 0);
    for (const auto& placement : d.documentPlacements) {
        draw(cr, text, placement, dts_export::resolve(placement.semanticFieldID, facts, page, totalPages, nullptr), geometry.place(placement.region));
    }
    const std::size_t first = static_cast<std::size_t>(page - 1) * d.crewRowSlots.size();
    for (std::size_t slot = 0; slot < d.crewRowSlots.size() && first + slot < facts.rows.size(); ++slot) {
        const auto& row = facts.rows[first + slot];
        for (const auto& placement : d.crewRowPlacements) {
            draw(cr, text, placement, dts_export::resolve(placement.semanticFieldID, facts, page, totalPages, &row),
                 geometry.place(withinRow(d.crewRowSlots[slot].region, placement.region)));
        }
    }
}

PageGeometry geometryOf(const std::string& source) {
    PDFStructuralInspection inspection;
    try {
        inspection = pdf_structure::inspect(source);
    } catch (const PDFStructuralInspectionError&) {
        throw GenericDTSRenderError::of(Case::invalidSource);
    }
    if (inspection.pageCount != 1) throw GenericDTSRenderError::of(Case::sourcePageCount);
    const auto& page = inspection.pages.front();
    return {page.effectiveVisibleBounds, page.mediaBox.right(), page.mediaBox.bottom()};
}

}  // namespace

GenericDTSRenderError::GenericDTSRenderError(Case errorCase, const std::string& message) : std::runtime_error(message), case_(errorCase) {}

GenericDTSRenderError GenericDTSRenderError::unsupportedSemantic(DTSSemanticFieldID field) {
    return {Case::unsupportedSemantic, "The mapped field " + nameOf(field) + " could not be resolved."};
}

GenericDTSRenderError GenericDTSRenderError::unsupportedRendering(DTSTemplateRenderingKind kind) {
    return {Case::unsupportedRendering, "Generic DTS does not support " + std::string(toRawValue(kind)) + " rendering for this field."};
}

GenericDTSRenderError GenericDTSRenderError::cannotFit(DTSSemanticFieldID field, DTSTextFit fit) {
    if (fit == DTSTextFit::fixed) {
        return {Case::cannotFit, "The value for " + nameOf(field) +
                                     " cannot fit legibly in its mapped region. Enlarge its mapped region or enable Shrink to Fit."};
    }
    return {Case::cannotFit, "The value for " + nameOf(field) +
                                 " still cannot fit at the minimum readable size. Enlarge its mapped region or choose a shorter value/format where "
                                 "applicable."};
}

GenericDTSRenderError GenericDTSRenderError::of(Case errorCase) {
    switch (errorCase) {
        case Case::notApproved: return {errorCase, "Approve the DTS template before rendering."};
        case Case::invalidSource: return {errorCase, "The source DTS PDF could not be read."};
        case Case::sourcePageCount: return {errorCase, "Generic DTS requires exactly one source PDF page."};
        case Case::invalidCapacity: return {errorCase, "The DTS template has crew fields but no usable crew rows."};
        case Case::invalidImage: return {errorCase, "The mapped signature image could not be decoded."};
        case Case::outputCreation: return {errorCase, "The filled DTS PDF could not be created."};
        default: return {Case::invalidDefinition, "The DTS template or render plan is invalid."};
    }
}

std::string_view GenericDTSRenderError::caseName() const noexcept {
    switch (case_) {
        case Case::unsupportedSemantic: return "unsupportedSemantic";
        case Case::unsupportedRendering: return "unsupportedRendering";
        case Case::cannotFit: return "cannotFit";
        case Case::notApproved: return "notApproved";
        case Case::invalidSource: return "invalidSource";
        case Case::sourcePageCount: return "sourcePageCount";
        case Case::invalidDefinition: return "invalidDefinition";
        case Case::invalidCapacity: return "invalidCapacity";
        case Case::invalidImage: return "invalidImage";
        case Case::outputCreation: return "outputCreation";
    }
    return {};
}

namespace generic_dts_render {

int pageCount(const ProductionDTSTemplateDefinition& d, const DTSWorkdayFacts& facts) {
    if (d.crewRowSlots.empty() || facts.rows.empty()) return 1;
    return static_cast<int>((facts.rows.size() + d.crewRowSlots.size() - 1) / d.crewRowSlots.size());
}

std::string render(const ApprovedGenericDTSTemplateSnapshot& snapshot, const DTSWorkdayFacts& facts) {
    const auto& d = snapshot.definition;
    if (d.approvalState != ProductionDTSTemplateDefinition::ApprovalState::approved) throw GenericDTSRenderError::of(Case::notApproved);
    try {
        generic_dts_template::validate(d);
    } catch (const GenericDTSTemplateError&) {
        throw GenericDTSRenderError::of(Case::invalidDefinition);
    }
    if (!d.crewRowPlacements.empty() && d.crewRowSlots.empty()) throw GenericDTSRenderError::of(Case::invalidCapacity);
    const PageGeometry geometry = geometryOf(snapshot.sourcePDFData);
    std::string overlay;
    {
        const int totalPages = pageCount(d, facts);
        form_drawing::Surface surface = form_drawing::pdfSurface(overlay, geometry.width, geometry.height);
        {
            form_drawing::Context cr(cairo_create(surface.get()));
            for (int page = 1; page <= totalPages; ++page) {
                drawPage(cr.get(), d, facts, geometry, page, totalPages);
                cairo_show_page(cr.get());
            }
            if (cairo_status(cr.get()) != CAIRO_STATUS_SUCCESS) throw GenericDTSRenderError::of(Case::outputCreation);
        }
        cairo_surface_finish(surface.get());
        if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) throw GenericDTSRenderError::of(Case::outputCreation);
    }
    try {
        return form_pages::placed(snapshot.sourcePDFData, overlay);
    } catch (const std::exception&) {
        throw GenericDTSRenderError::of(Case::outputCreation);
    }
}

std::string_view label(GenericDTSTestFillScenario scenario) noexcept {
    switch (scenario) {
        case GenericDTSTestFillScenario::typical: return "Typical Crew";
        case GenericDTSTestFillScenario::full: return "Full Page";
        case GenericDTSTestFillScenario::overflow: return "Overflow";
    }
    return {};
}

DTSWorkdayFacts testFillFacts(GenericDTSTestFillScenario scenario, const ProductionDTSTemplateDefinition& definition) {
    using namespace std::chrono;
    const CalendarDate date(year(2026) / 11 / 4);
    const auto at = [&](int tenths) { return std::optional<Instant>(sys_days(date) + minutes(6 * tenths)); };
    Production production{Uuid::generate(), "Sample Production", Instant{}};
    Workday workday{Uuid::generate(), Uuid::generate(), date};
    workday.generalCrewCall = at(70);
    workday.officialLunchOut = at(130);
    workday.officialLunchIn = at(135);
    workday.wrap = at(195);
    DTSWorkdayFacts facts{production, {"Grip & Electric", "Sample Pictures", "CA", "Sample Department Head"}, workday, "CA",
                          "Test fill with invented data.", std::nullopt, Decimal("12.5"), std::nullopt, {}};
    static const char* names[] = {"Avery Lindgren", "Blake Okafor", "Casey Moreau", "Devon Achebe", "Emery Kowalski", "Finley Tanaka",
                                  "Gray Castellanos", "Harper Nakamura", "Indigo Petrov", "Jules Abernathy"};
    const std::size_t slots = definition.crewRowSlots.size();
    const std::size_t count = scenario == GenericDTSTestFillScenario::typical ? std::min<std::size_t>(4, std::max<std::size_t>(slots, 1))
                              : scenario == GenericDTSTestFillScenario::full ? std::max<std::size_t>(slots, 1)
                                                                             : std::max<std::size_t>(slots, 1) + 3;
    for (std::size_t i = 0; i < count; ++i) {
        DTSCrewRowFacts row{Uuid::generate(), Uuid::generate(), Uuid::generate(), std::string(names[i % 10]) + (i >= 10 ? " " + std::to_string(i / 10 + 1) : "")};
        row.position = i % 4 == 0 ? "Gaffer" : "Electrician";
        row.occupationCode = i % 4 == 0 ? "7001" : "7004";
        row.times = {{at(70)}, {at(130)}, {at(135)}, {at(195)}};
        row.nonDeductibleBreakfast = i % 3 == 0;
        row.boxRental = i % 4 == 0;
        if (i % 2 == 0) row.mileage = Decimal("12.5");
        facts.rows.push_back(std::move(row));
    }
    return facts;
}

std::string testFill(GenericDTSTestFillScenario scenario, const std::string& sourcePDF, const ProductionDTSTemplateDefinition& definition) {
    ApprovedGenericDTSTemplateSnapshot trial{sourcePDF, definition};
    trial.definition.approvalState = ProductionDTSTemplateDefinition::ApprovalState::approved;
    trial.definition.approvedAt = Instant{};
    return render(trial, testFillFacts(scenario, definition));
}

}  // namespace generic_dts_render
}  // namespace tessel
