#pragma once

#include <string>

#include "App/expected/CategoryLabels.hpp"
#include "App/expected/PayrollReviewRecords.hpp"
#include "App/rules/PositionDefaults.hpp"

// The reviews as text a payroll accountant can check by hand: every figure with the input and the rule
// it came from (the rate and its source, hours x rate x multiplier, the guarantee that paid guaranteed
// time, each meal's due time, grace and penalties, the required and actual rest, the vacation basis).
namespace tessel::review_text {

struct Style {
    PayrollCategoryLabelPreferences labels{};
    bool showMoney = true;
    bool explain = false;  // adds the rule identifier behind each line, in brackets
};

// One crew member's week: each day and activity in date order, then the week's lines and gross.
std::string weekly(const WeeklyCrewPayrollReview& review, const Style& style);
// The text followed by spaces to `width` characters (not bytes), so that names with accents line up.
std::string padded(std::string text, std::size_t width);
// The characters (not bytes) of UTF-8 text: the width padding counts.
std::size_t characters(const std::string& text);

// One day on its own (no week around it, so its meal penalties are counted but not priced).
std::string daily(const DailyPayrollReview& review, const Style& style);

// The day's rate with its source and warning, as the review words it ("Scale, Rate Card 2026 Basic:
// 52.20/hr", "No applicable pay rate").
std::string rate(const DailyPayrollReview& review, const Style& style);

// A position's (or a person's) changes of the day's schedule, one per provision that is not inherited:
// "minimum call 10.0 h", "overtime after 8.0 h x1.5 (elapsed)", "no double time".
std::vector<std::string> scheduleChanges(const PositionScheduleOverrides& overrides);
// The same joined with "; ", or "as the production's rules" when nothing changes.
std::string scheduleChangesLine(const PositionScheduleOverrides& overrides);

}  // namespace tessel::review_text
