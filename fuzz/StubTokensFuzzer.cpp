#include <cstddef>
#include <cstdint>
#include <string>

#include "App/actualpay/StubEarnings.hpp"
#include "App/actualpay/StubFields.hpp"
#include "App/actualpay/StubText.hpp"

// A token stream as any reading might give it: each token is five bytes (page, x, y, width, height, in
// 1/255ths of the page) and its text up to the next newline. Header words, numbers and nonsense alike
// must give an analysis, never a crash.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tessel::PayStubTextEvidence evidence{tessel::PayStubTextSource::tesseractOCR, 4, {}};
    std::size_t at = 0;
    while (at + 5 <= size && evidence.tokens.size() < 512) {
        const auto unit = [&](std::size_t offset) { return data[at + offset] / 255.0; };
        const int page = data[at] % 4;
        const tessel::PageRectangle bounds{unit(1), unit(2), unit(3), unit(4)};
        at += 5;
        std::string text;
        while (at < size && data[at] != '\n') text += static_cast<char>(data[at++]);
        ++at;
        evidence.tokens.push_back({std::to_string(evidence.tokens.size()), text, tessel::stub_text::normalized(text), page, bounds,
                                   tessel::PayStubTextSource::tesseractOCR, 0.9f});
    }
    const auto lines = tessel::tokenLines(evidence);
    (void)tessel::ep_layout::markers(lines);
    (void)tessel::ep_layout::printedFields(lines, evidence.source);
    const auto analysis = tessel::analyzeEarnings(evidence);
    if (!analysis.found() && analysis.diagnostics.empty()) __builtin_trap();
    return 0;
}
