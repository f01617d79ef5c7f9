#pragma once

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "App/actualpay/StubInterpretation.hpp"

// A batch of stubs read on several workers, each with its own OCR engine, answered in file order.
namespace tessel::stub_batch {

struct StubFile {
    std::string name;
    std::string bytes;
};

// A stub's interpretation, or the one sentence that refused it.
using Outcome = std::variant<EPPayStubInterpretation, std::string>;

// Reads every file (text layer as `embedded`, and OCR) on `workers` threads. `progress` is called on
// the calling thread after each file, in file order, with the count done so far and that file's
// outcome, so a window can show results as they arrive without reordering them.
std::vector<Outcome> read(const std::vector<StubFile>& files, PayStubTextSource embedded, int workers,
                          const std::function<void(std::size_t done, const Outcome&)>& progress = {});

}  // namespace tessel::stub_batch
