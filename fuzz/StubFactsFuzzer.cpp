#include <cstddef>
#include <cstdint>
#include <string_view>

#include "App/actualpay/StubFacts.hpp"
#include "App/actualpay/StubText.hpp"

// A facts file as anyone might write it: it is read into reference facts or refused in one sentence,
// and read facts score against a reading without a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tessel::PayStubReferenceFacts facts;
    try {
        facts = tessel::readReferenceFacts(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const tessel::PayStubReferenceFactsError& error) {
        if (std::string_view(error.what()).empty()) __builtin_trap();
        return 0;
    }
    tessel::PayStubTextEvidence reading{tessel::PayStubTextSource::embeddedPDFText, 1, {}};
    double x = 0.05;
    for (const char* word : {"DESC", "HOURS", "AMOUNT"}) {
        reading.tokens.push_back({word, word, tessel::stub_text::normalized(word), 0, {x, 0.3, 0.05, 0.012}, reading.source, std::nullopt});
        x += 0.3;
    }
    const auto report = tessel::recoverFacts(reading, facts);
    if (report.summary.totalCount != static_cast<int>(report.facts.size())) __builtin_trap();
    return 0;
}
