#include <cstddef>
#include <cstdint>
#include <string_view>

#include "App/actualpay/StubNumbers.hpp"
#include "App/actualpay/StubText.hpp"

// Any bytes a stub's text layer or OCR can produce: normalised and read as a number, never a crash, and
// a resolved value only when the reading is single.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    (void)tessel::stub_text::compact(text);
    const auto reading = tessel::interpretStubNumber(text);
    if (reading.resolved() && reading.candidates.size() != 1) __builtin_trap();
    return 0;
}
