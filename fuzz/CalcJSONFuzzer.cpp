// The calc documents: the first byte picks the calculation, the rest is its document. Every document is
// answered or refused as not well-formed or by the engine; any other failure is a crash.
#include <string_view>

#include "App/model/CalculationDocuments.hpp"
#include "App/model/CalculationJSON.hpp"
#include "App/model/DecimalJSON.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    if (size == 0) return 0;
    const auto& calculations = calculation_documents::all();
    const auto& calculation = calculations[data[0] % calculations.size()];
    try {
        const Json input = decimal_json::parse<Json>(std::string_view(reinterpret_cast<const char*>(data + 1), size - 1));
        (void)decimal_json::dump(calculation.run(json_fields::object(input, "")), 2);
    } catch (const decimal_json::MalformedJSONError&) {
    } catch (const MalformedInputError&) {
    } catch (const DomainError& error) {
        (void)calculation_json::errorJSON(error);
    }
    return 0;
}
