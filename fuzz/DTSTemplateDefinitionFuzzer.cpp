// A stored or imported DTS template mapping: read and validated, or refused with one sentence; what
// reads is written back the same.
#include <cstdlib>
#include <string>

#include "App/dtsexport/GenericDTSTemplate.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    try {
        const auto definition = generic_dts_template::decode(bytes);
        const std::string encoded = generic_dts_template::encode(definition);
        if (generic_dts_template::encode(generic_dts_template::decode(encoded)) != encoded) std::abort();
        generic_dts_template::validate(definition);
    } catch (const GenericDTSTemplateError&) {
    }
    return 0;
}
