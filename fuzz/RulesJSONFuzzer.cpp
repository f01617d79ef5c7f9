// The rules document a user applies with `rules set`: read whole or refused with one sentence.
#include <string_view>

#include "App/model/DecimalJSON.hpp"
#include "App/rules/RulesetDrafts.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const auto configuration = rules_json::configuration(decimal_json::parse<Json>(text));
        (void)rules_json::toJSON(configuration);
    } catch (const decimal_json::MalformedJSONError&) {
    } catch (const MalformedInputError&) {
    } catch (const RulesPayloadError&) {
    } catch (const DomainError&) {
    }
    return 0;
}
