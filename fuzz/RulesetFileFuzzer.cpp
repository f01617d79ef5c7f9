// Ruleset files from another installation: read whole or refused with one sentence, and a file that is
// read writes back to a file that reads the same.
#include <cstdlib>
#include <string_view>

#include "App/rules/RulesetFile.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    try {
        const auto contents = ruleset_file::read(std::string_view(reinterpret_cast<const char*>(data), size));
        const PayrollRulesLibraryItem item{Uuid::generate(), contents.metadata.portableRulesetID, contents.name,
                                           contents.metadata.provenanceNotes, contents.metadata.createdAt,
                                           contents.metadata.exportedAt, std::nullopt, contents.configuration};
        const auto again = ruleset_file::read(ruleset_file::write(item, contents.metadata.exportedAt, std::nullopt, std::nullopt));
        if (rules_json::toJSON(again.configuration) != rules_json::toJSON(contents.configuration)) std::abort();
    } catch (const TesselRulesError&) {
    }
    return 0;
}
