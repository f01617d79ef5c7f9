#pragma once

#include "App/expected/PayrollReviewRecords.hpp"
#include "App/model/JSONFields.hpp"

// The machine form of the review records, in the convention of every machine document of the program.
namespace tessel::review_json {

Json toJSON(const GoldenHourTarget& target);
Json toJSON(const GoldenHourAdvisoryPresentation& advisory);
Json toJSON(const DailyPayrollReview& review);
// The day's applicable rate, its resolution and warning, as in the day's record.
Json rateJSON(const DailyPayrollReview& review);
Json toJSON(const NonDTSPayrollActivityReview& review);
Json toJSON(const WeeklyCrewPayrollReview& review);

}  // namespace tessel::review_json
