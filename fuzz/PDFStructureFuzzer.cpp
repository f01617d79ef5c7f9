// A blank DTS page the user chooses: inspected (text, form widgets, the content stream's lines and
// rectangles) and interpreted, or refused with one sentence.
#include <string>

#include "App/dtsexport/DTSTemplateInterpretation.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        const auto inspection = pdf_structure::inspect(bytes);
        for (int page = 0; page < inspection.pageCount; ++page) (void)dts_interpretation::interpret(inspection, page);
    } catch (const PDFStructuralInspectionError&) {
    }
    return 0;
}
