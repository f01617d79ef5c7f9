#pragma once

#include <optional>
#include <string>

#include "App/expected/PayrollReviewRecords.hpp"
#include "App/model/UserSettings.hpp"

namespace tessel::golden_hour_advisory {

// An advisory is dismissed for one crew member on one DTS: a later change of call moves the target but
// does not bring back an advisory the user already set aside for that day.
std::string key(const Uuid& workdayID, const Uuid& crewMemberID);

// The advisory shown at `now` for a crew member's day, if any. It shows while the day is still open (no
// wrap recorded), the target has not yet passed, and the time left is within the user's threshold, unless
// the user turned advisories off or dismissed this one.
std::optional<GoldenHourAdvisoryPresentation> at(const DailyPayrollReview& day, const Uuid& crewMemberID, Instant now,
                                                 const GoldenHourAdvisorySettings& settings);

}  // namespace tessel::golden_hour_advisory
