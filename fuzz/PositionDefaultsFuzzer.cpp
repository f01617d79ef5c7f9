// A position's payroll defaults as stored (and as a Rate Card file carries them): read whole or refused
// with one sentence, and, when read, applied to the example schedule or their own.
#include <string>

#include "App/rules/PositionDefaults.hpp"
#include "App/rules/ProductionRulesets.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tessel;
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const auto defaults = position_defaults::read(text);
        const auto changes = defaults.scheduleOverrides.value_or(PositionScheduleOverrides{});
        const auto schedule = defaults.ordinaryDaySchedule.value_or(ProductionRulesets::exampleSchedule(RulesLocality::local));
        const auto adjusted = position_defaults::adjusted(schedule, changes);
        (void)ProductionRulesets::engineSchedule(adjusted);
        (void)position_defaults::withOverrides(text, changes);
    } catch (const MalformedInputError&) {
    } catch (const DomainError&) {
    }
    return 0;
}
