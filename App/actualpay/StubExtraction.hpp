#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "App/actualpay/StubEvidence.hpp"

// Reading a pay-stub PDF's own text layer into positioned words. Nothing is stored.
namespace tessel {

class PayStubExtractionError : public std::runtime_error {
public:
    enum class Case { emptyData, invalidPDF, noPages, invalidEmbeddedTextSource, renderingFailed };
    PayStubExtractionError(Case errorCase, std::optional<int> page = std::nullopt);
    Case errorCase() const noexcept { return case_; }
    std::string_view caseName() const noexcept;
    std::optional<int> page() const noexcept { return page_; }  // renderingFailed: the 0-based page

private:
    Case case_;
    std::optional<int> page_;
};

// The words of every page's text layer, each with its raw and normalised text and its box relative to
// the page's visible (crop) box. `source` says what the caller knows the layer to be, the payroll
// company's text or an earlier OCR's; nothing here guesses it. A locked (encrypted) PDF is not readable.
PayStubTextEvidence extractTextLayer(std::string_view pdf, PayStubTextSource source);

}  // namespace tessel
