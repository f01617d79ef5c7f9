#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "App/dtsexport/ProductionDTSExport.hpp"
#include "App/model/ModelContext.hpp"

// Exporting one DTS as the production prints it: the production's own approved form when that is the
// chosen form, else the built-in form; checked first, so that a DTS with blocking issues (or warnings the
// user has not accepted) is not exported.
namespace tessel::dts_export_job {

struct Exported {
    std::string pdf;
    int pages = 0;
    std::vector<DTSExportPreflightIssue> warnings{};
};

// Why nothing was exported: the alert title, and the issues that stopped it (blocking ones, or warnings
// awaiting the user's acceptance).
struct Held {
    bool blocking = false;
    std::string title;
    std::vector<DTSExportPreflightIssue> issues{};
};

// "  Crew Name: message" per issue, one line each.
std::string issueLines(const std::vector<DTSExportPreflightIssue>& issues);

// Renders the DTS; throws ProductionDTSExportError when no usable form is chosen, DTSPDFRendererError or
// GenericDTSRenderError when the form cannot be filled.
std::variant<Exported, Held> render(ModelContext& context, const Uuid& productionID, const Workday& workday, bool acceptWarnings);

}  // namespace tessel::dts_export_job
