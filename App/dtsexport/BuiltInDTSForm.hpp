#pragma once

#include <filesystem>
#include <string>

#include "App/dtsexport/ProductionDTSExport.hpp"

// The DTS form built into Tessel: its blank page ships as a resource drawn at build time from the
// layout table; exporting draws the values into the table's boxes and places them over exact copies of
// that page, one page per twenty crew rows, each numbered "Page X of Y".
namespace tessel::builtin_dts_form {

// Where the blank page is: $TESSEL_RESOURCE_DIR when set, else the resources of this build.
std::filesystem::path blankPagePath();

// The filled form as PDF bytes. Throws DTSPDFRendererError: the blank page missing, unreadable or of
// another size; a value that does not fit its box even at the smallest size (named in curly quotes);
// notes that do not fit; a drawing that fails.
std::string render(const DTSExportModel& model, const std::filesystem::path& blankPage);

// The pages the form takes for the model's rows (one at least).
int pageCount(const DTSExportModel& model);

// Only the drawing of the values (the overlay pages), for measuring the renderer against it.
std::string drawValues(const DTSExportModel& model);

}  // namespace tessel::builtin_dts_form
