#include <cstddef>
#include <cstdint>
#include <string_view>

#include "App/actualpay/StubExtraction.hpp"

// Any bytes offered as a pay-stub PDF: words read, or one sentence of refusal, never a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const auto evidence = tessel::extractTextLayer(std::string_view(reinterpret_cast<const char*>(data), size),
                                                       tessel::PayStubTextSource::embeddedPDFText);
        (void)tessel::tokenLines(evidence);
    } catch (const tessel::PayStubExtractionError&) {
    }
    return 0;
}
