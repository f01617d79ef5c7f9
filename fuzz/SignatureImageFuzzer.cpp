// A signature image the user chooses: accepted as a PNG, JPEG or TIFF that reads, or refused with one
// sentence; an accepted one is drawn onto the form.
#include <string>

#include "App/dtsexport/BuiltInDTSForm.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        dts_export::checkSignatureImage(bytes);
    } catch (const ModelValidationError&) {
        return 0;
    }
    DTSExportModel model;
    model.productionName = "Harbor Lights";
    model.date = CalendarDate(std::chrono::year(2026) / 11 / 4);
    model.departmentHeadSignatureData = bytes;
    (void)builtin_dts_form::drawValues(model);
    return 0;
}
