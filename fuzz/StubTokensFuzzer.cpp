#include <cstddef>
#include <cstdint>
#include <string>

#include "App/actualpay/StubEarnings.hpp"
#include "App/actualpay/StubFacts.hpp"
#include "App/actualpay/StubFields.hpp"
#include "App/actualpay/StubInterpretation.hpp"
#include "App/actualpay/StubText.hpp"

// Two token streams as any readings might give them: each token is five bytes (page, x, y, width,
// height, in 1/255ths of the page) and its text up to the next newline; the page byte's high bit puts
// the token in the OCR reading, else in the text layer's. Header words, numbers and nonsense alike must
// give an analysis, an interpretation or its refusal, and a fact score, never a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using tessel::PayStubTextSource;
    tessel::PayStubTextEvidence embedded{PayStubTextSource::embeddedPDFText, 4, {}};
    tessel::PayStubTextEvidence ocr{PayStubTextSource::tesseractOCR, 4, {}};
    std::size_t at = 0;
    while (at + 5 <= size && embedded.tokens.size() + ocr.tokens.size() < 512) {
        const auto unit = [&](std::size_t offset) { return data[at + offset] / 255.0; };
        const int page = data[at] % 4;
        auto& evidence = data[at] & 0x80 ? ocr : embedded;
        const tessel::PageRectangle bounds{unit(1), unit(2), unit(3), unit(4)};
        at += 5;
        std::string text;
        while (at < size && data[at] != '\n') text += static_cast<char>(data[at++]);
        ++at;
        evidence.tokens.push_back({std::to_string(evidence.tokens.size()), text, tessel::stub_text::normalized(text), page, bounds, evidence.source,
                                   evidence.source == PayStubTextSource::tesseractOCR ? std::optional(0.9f) : std::nullopt});
    }
    const auto lines = tessel::tokenLines(ocr);
    (void)tessel::ep_layout::markers(lines);
    (void)tessel::ep_layout::printedFields(lines, ocr.source);
    const auto analysis = tessel::analyzeEarnings(ocr);
    if (!analysis.found() && analysis.diagnostics.empty()) __builtin_trap();
    static const auto facts = tessel::readReferenceFacts(
        R"({"printedEmployeeName": "DANA M RIVERA", "printedOccupation": "KEY GRIP", "payPeriodStart": "2026-11-01", "totalHours": "8.0",
            "gross": "1,360.00", "earningLines": [["REGULAR", "45.00", "8.0", "360.00"], ["KIT", null, null, "1,000.00"]]})");
    const auto report = tessel::recoverFacts(ocr, facts);
    if (report.summary.totalCount != static_cast<int>(report.facts.size())) __builtin_trap();
    try {
        const auto stub = tessel::interpretEPStub(embedded, ocr);
        if (stub.earningLines.empty()) __builtin_trap();  // a table was found in one reading at least
    } catch (const tessel::EPPayStubInterpretationError&) {
    }
    return 0;
}
