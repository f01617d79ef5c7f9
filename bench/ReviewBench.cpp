#include <benchmark/benchmark.h>

#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/rules/RateCards.hpp"
#include "Season.hpp"

namespace tessel {
namespace {

using namespace tessel::bench;
namespace weeks = payroll_week_repository;

struct ReviewSeason {
    BenchFolder folder;  // first, so that the store closes before its folder goes
    std::unique_ptr<TesselStore> store = openStore(folder.path());
    Crew crew = hireCrew(*store);
    ReviewSeason() { insertSeason(*store, crew, seasonDates(false)); }
};

ReviewSeason& season() {
    static ReviewSeason shared;
    return shared;
}

// The same season with every crew member engaged in one of ten positions, each with a scale on a Rate
// Card, so that every day's rate is weighed against a scale.
// With `shaped`, each position also moves overtime to 10 hours, so every day is calculated under a
// position's schedule.
struct PositionedSeason : ReviewSeason {
    explicit PositionedSeason(bool shaped = false) {
        store->perform([&](ModelContext& context) {
            const Instant now{};
            std::vector<PositionRecord> positions;
            for (int i = 0; i < 10; ++i) {
                PositionEdit edit{"Position " + std::to_string(i), std::optional(std::optional(std::to_string(1000 + i))), std::nullopt};
                if (shaped) edit.overtime = PositionProvision{PositionProvisionMode::custom, 10 * 3600};
                positions.push_back(positions::add(context, PositionScope::production, crew.productionID, edit, now));
                rate_cards::addScale(context, crew.productionID, "Season Card", positions.back(), "4" + std::to_string(i) + ".50",
                                     CalendarDate(std::chrono::year(2026) / 1 / 1), EmploymentSchedule::daily);
            }
            std::size_t i = 0;
            for (const auto& [member, engagement] : crew.members) {
                rate_cards::engageInPosition(context, engagement.id, positions[i++ % positions.size()], engagement.effectiveFrom, false, now);
            }
        });
    }
};

PositionedSeason& positionedSeason() {
    static PositionedSeason shared;
    return shared;
}

PositionedSeason& shapedSeason() {
    static PositionedSeason shared(true);
    return shared;
}

// Every crew member's weekly review of every payroll week of the season, from the store.
void reviewEveryWeek(benchmark::State& state, ReviewSeason& s) {
    ModelContext& context = s.store->context();
    const auto allWeeks = weeks::weeks(context, s.crew.productionID);
    std::size_t reviews = 0;
    for (auto _ : state) {
        ExpectedPayrollReview review(context, s.crew.productionID);
        reviews = 0;
        for (const auto& week : allWeeks) {
            const auto weekly = review.weeklyForAll(week.id);
            reviews += weekly.size();
            benchmark::DoNotOptimize(weekly);
        }
    }
    state.counters["weeks"] = static_cast<double>(allWeeks.size());
    state.counters["weeklyReviews"] = static_cast<double>(reviews);
}
void reviewEveryWeekOfASeason(benchmark::State& state) { reviewEveryWeek(state, season()); }
BENCHMARK(reviewEveryWeekOfASeason)->Unit(benchmark::kMillisecond);
void reviewEveryWeekOfASeasonWithPositions(benchmark::State& state) { reviewEveryWeek(state, positionedSeason()); }
BENCHMARK(reviewEveryWeekOfASeasonWithPositions)->Unit(benchmark::kMillisecond);
void reviewEveryWeekOfASeasonWithPositionSchedules(benchmark::State& state) { reviewEveryWeek(state, shapedSeason()); }
BENCHMARK(reviewEveryWeekOfASeasonWithPositionSchedules)->Unit(benchmark::kMillisecond);

// The window recalculates the week after every edit: one Wrap typed into a DTS of the week (not timed),
// then every crew member's review of that week, its time sheets read afresh from the store. The window
// keeps its review (rules, crew facts and the other DTSes' rows) between edits of time sheets and tells it
// which DTS changed; `fresh` starts a new review each time.
void reviewOneWeekAfterAnEdit(benchmark::State& state, bool fresh) {
    ReviewSeason& s = season();
    ModelContext& context = s.store->context();
    const auto week = weeks::weeks(context, s.crew.productionID).at(2);
    const auto workday = weeks::workdays(context, week.id).at(2);
    auto kept = std::make_unique<ExpectedPayrollReview>(context, s.crew.productionID);
    int tenth = 0;
    std::size_t reviews = 0;
    for (auto _ : state) {
        state.PauseTiming();
        s.store->perform([&](ModelContext& c) {
            DailyTimeSheets::setSharedTime(c, workday.id, DTSTimeField::wrap, sys_days(workday.calendarDate) + hours(19) + minutes(6 * (tenth++ % 10)));
        });
        state.ResumeTiming();
        if (fresh) {
            kept = std::make_unique<ExpectedPayrollReview>(context, s.crew.productionID);
        } else {
            kept->forgetTimeSheet(workday.id);
        }
        const auto weekly = kept->weeklyForAll(week.id);
        reviews = weekly.size();
        benchmark::DoNotOptimize(weekly);
    }
    state.counters["weeklyReviews"] = static_cast<double>(reviews);
}
BENCHMARK_CAPTURE(reviewOneWeekAfterAnEdit, keptReview, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(reviewOneWeekAfterAnEdit, freshReview, true)->Unit(benchmark::kMillisecond);

// The same rows read from the store alone: each week's DTSes, rows and satellites, the crew, their
// engagements and rates.
void readTheSameRowsAlone(benchmark::State& state) {
    ReviewSeason& s = season();
    ModelContext& context = s.store->context();
    const auto allWeeks = weeks::weeks(context, s.crew.productionID);
    for (auto _ : state) {
        for (const auto& member : crew_repository::crewMembers(context, s.crew.productionID)) {
            for (const auto& engagement : crew_repository::engagementsOf(context, member.id)) {
                benchmark::DoNotOptimize(crew_repository::payRates(context, engagement.id));
            }
        }
        for (const auto& week : allWeeks) {
            for (const auto& workday : weeks::workdays(context, week.id)) {
                for (const auto& entry : weeks::entries(context, workday.id)) {
                    benchmark::DoNotOptimize(satellite_repository::find(context, store_schema::satelliteTable("CrewDailyWorkModeConfiguration"), entry.id));
                    benchmark::DoNotOptimize(satellite_repository::find(context, store_schema::satelliteTable("CrewDailyMileageEntry"), entry.id));
                }
                benchmark::DoNotOptimize(satellite_repository::find(context, store_schema::satelliteTable("WorkdayMealLocationConfiguration"), workday.id));
            }
            benchmark::DoNotOptimize(weeks::activities(context, week.id));
        }
    }
}
BENCHMARK(readTheSameRowsAlone)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
