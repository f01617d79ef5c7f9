#include "DTSExportJob.hpp"

#include "App/dtsexport/BuiltInDTSForm.hpp"
#include "App/dtsexport/DTSWorkdayFacts.hpp"
#include "App/dtsexport/GenericDTSRenderer.hpp"
#include "App/dtsexport/ProductionDTSTemplates.hpp"

namespace tessel::dts_export_job {

std::string issueLines(const std::vector<DTSExportPreflightIssue>& issues) {
    std::string text;
    for (const auto& issue : issues) text += "  " + issue.crewName + ": " + issue.message + "\n";
    return text;
}

std::variant<Exported, Held> render(ModelContext& context, const Uuid& productionID, const Workday& workday, bool acceptWarnings) {
    const auto choice = dts_export::choice(context, productionID);
    std::optional<StoredDTSTemplate> ownForm;
    if (!choice.unsupportedRawValue && choice.mode == ProductionDTSExportTemplateMode::productionTemplate) {
        ownForm = production_dts_templates::approved(context, productionID);
    }
    if (!ownForm) dts_export::checkBuiltInFormChosen(choice);
    const auto facts = DTSWorkdayFacts::read(context, workday);
    const auto checked = dts_export::preflight(facts);
    if (!checked.blocking.empty()) return Held{true, std::string(dts_export_words::notReadyTitle), checked.blocking};
    if (!checked.warnings.empty() && !acceptWarnings) return Held{false, std::string(dts_export_words::reviewTitle), checked.warnings};
    if (ownForm) {
        return Exported{generic_dts_render::render({ownForm->sourcePDFData, ownForm->definition}, facts),
                        generic_dts_render::pageCount(ownForm->definition, facts), checked.warnings};
    }
    const auto model = dts_export::model(facts);
    return Exported{builtin_dts_form::render(model, builtin_dts_form::blankPagePath()), builtin_dts_form::pageCount(model), checked.warnings};
}

}  // namespace tessel::dts_export_job
