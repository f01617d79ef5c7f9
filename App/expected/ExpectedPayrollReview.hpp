#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "App/expected/DailyReviewCalculator.hpp"
#include "App/model/ModelContext.hpp"

namespace tessel {

// A week that cannot be reviewed at all.
class PayrollReviewError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The expected payroll of a production, read from the stored facts. A review keeps what it has read
// (rules, engagements, rates) for its whole life, so a season of weeks reads each once; create one per
// question asked, since it does not see later edits, except the time sheets' own (see forgetTimeSheets).
class ExpectedPayrollReview {
public:
    ExpectedPayrollReview(ModelContext& context, const Uuid& productionID);
    ~ExpectedPayrollReview();

    // One crew member's payroll week.
    WeeklyCrewPayrollReview weekly(const Uuid& payrollWeekID, const Uuid& crewMemberID);
    // Every crew member with a DTS row or a Non-DTS Activity in the week, in crew order.
    std::vector<WeeklyCrewPayrollReview> weeklyForAll(const Uuid& payrollWeekID);
    // Each crew row of one DTS, in row order, as the weekly reviews calculate it (the DTS shows each
    // row's Golden Hour Wrap from it).
    std::vector<DailyPayrollReview> dailyForWorkday(const Uuid& workdayID);

    // Forgets the time sheets read so far (DTSes, their rows and row settings, Non-DTS Activities) and
    // keeps the rules and the crew's engagements, rates and terms. After an edit of a DTS or an activity
    // the next review reads the time sheets afresh; an edit of anything else needs a new review.
    void forgetTimeSheets();
    // The same for one DTS after an edit of its times or rows: only that DTS is read again.
    void forgetTimeSheet(const Uuid& workdayID);
    // Forgets the Positions, Rate Cards and the crew's engagement positions read so far, after an edit of
    // any of them: the next review prices each day from them afresh.
    void forgetPositions();

private:
    struct Session;
    std::unique_ptr<Session> session_;
};

}  // namespace tessel
