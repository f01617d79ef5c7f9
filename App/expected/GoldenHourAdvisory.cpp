#include "App/expected/GoldenHourAdvisory.hpp"

namespace tessel::golden_hour_advisory {

std::string key(const Uuid& workdayID, const Uuid& crewMemberID) {
    return "goldenHour:" + workdayID.text() + ":" + crewMemberID.text();
}

std::optional<GoldenHourAdvisoryPresentation> at(const DailyPayrollReview& day, const Uuid& crewMemberID, Instant now,
                                                 const GoldenHourAdvisorySettings& settings) {
    if (!settings.enabled || !day.goldenHourTarget || day.source.wrap) return std::nullopt;
    if (settings.dismissals.contains(key(day.id, crewMemberID))) return std::nullopt;
    const std::int64_t remaining = (day.goldenHourTarget->targetTime - now).count();
    if (remaining < 0 || remaining > settings.thresholdSeconds) return std::nullopt;
    return GoldenHourAdvisoryPresentation{*day.goldenHourTarget, remaining};
}

}  // namespace tessel::golden_hour_advisory
