// Decimal text and JSON numbers: what is read prints as text that reads back to the same value.
#include <cstdlib>
#include <string_view>

#include "App/model/DecimalJSON.hpp"
#include "App/model/JSONFields.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const auto& parsed : {Decimal::parse(text), Decimal::parseJSONNumber(text)}) {
        if (!parsed) continue;
        const auto again = Decimal::parse(parsed->toString());
        if (!again || (!parsed->isNaN() && !(*again == *parsed))) std::abort();
    }
    try {
        const Json document = decimal_json::parse<Json>(text);
        (void)decimal_json::dump(document, 2);
        if (document.is_object()) {
            for (const auto& [key, value] : document.items()) (void)decimal_json::read(value);
        }
    } catch (const decimal_json::MalformedJSONError&) {
    }
    return 0;
}
