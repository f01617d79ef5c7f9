#pragma once

#include <memory>
#include <string_view>

#include <poppler-document.h>

// The one way both readings of a stub open its PDF, with the same refusals. Internal to the readings.
namespace tessel::stub_pdf {

// The opened document with at least one page; refuses empty, unreadable, locked and page-less files
// with PayStubExtractionError.
std::unique_ptr<poppler::document> open(std::string_view pdf);

}  // namespace tessel::stub_pdf
