#include <benchmark/benchmark.h>

#include "App/actualpay/PayrollIssues.hpp"
#include "App/expected/ExpectedPayrollReview.hpp"
#include "App/model/ProductionRepository.hpp"
#include "Season.hpp"

// A season of fifteen payroll weeks, 150 crew, a DTS row each every day and a confirmed stub for every
// crew member and week: every week compared and its payroll issues synchronised, beside the expected
// review of the same weeks alone.
namespace tessel {
namespace {

using namespace tessel::bench;
using namespace std::chrono;

struct ConfirmedSeason {
    BenchFolder folder;
    std::unique_ptr<TesselStore> store = openStore(folder.path());
    Crew crew = hireCrew(*store);
    Production production;
    ConfirmedSeason() : production(store->perform([&](ModelContext& c) { return *production_repository::fetch(c, crew.productionID); })) {
        insertSeason(*store, crew, seasonDates(false));
        confirmEveryWeek(*store, crew);
    }
};

ConfirmedSeason& confirmedSeason() {
    static ConfirmedSeason shared;
    return shared;
}

// The first synchronisation records every issue; each later one finds them unchanged. Each is timed in a
// transaction of its own that is rolled back, so that every iteration starts from the same store.
void compareAndSynchroniseEveryConfirmedWeek(benchmark::State& state) {
    auto& s = confirmedSeason();
    payroll_issues::SyncReport report;
    for (auto _ : state) {
        try {
            s.store->perform([&](ModelContext& context) {
                report = payroll_issues::synchronize(context, s.production, Instant{});
                throw std::runtime_error("roll back");
            });
        } catch (const std::runtime_error&) {
        }
    }
    state.counters["weeks"] = report.weeks;
    state.counters["issuesCreated"] = report.created;
}
BENCHMARK(compareAndSynchroniseEveryConfirmedWeek)->Unit(benchmark::kMillisecond);

// What follows every edit once the issues are recorded: each week compared again, the issues found unchanged.
void resynchroniseEveryConfirmedWeek(benchmark::State& state) {
    auto& s = confirmedSeason();
    s.store->perform([&](ModelContext& context) { payroll_issues::synchronize(context, s.production, Instant{}); });
    payroll_issues::SyncReport report;
    for (auto _ : state) {
        report = s.store->perform([&](ModelContext& context) { return payroll_issues::synchronize(context, s.production, Instant{}); });
    }
    if (report.anythingChanged()) state.SkipWithError("a second synchronisation changed issues");
}
BENCHMARK(resynchroniseEveryConfirmedWeek)->Unit(benchmark::kMillisecond);

void reviewTheSameWeeksAlone(benchmark::State& state) {
    auto& s = confirmedSeason();
    ModelContext& context = s.store->context();
    const auto allWeeks = payroll_week_repository::weeks(context, s.crew.productionID);
    for (auto _ : state) {
        ExpectedPayrollReview review(context, s.crew.productionID);
        for (const auto& week : allWeeks) benchmark::DoNotOptimize(review.weeklyForAll(week.id));
    }
}
BENCHMARK(reviewTheSameWeeksAlone)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
