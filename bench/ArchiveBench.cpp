#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "App/exchange/ProductionArchive.hpp"
#include "tests/support/LargeProduction.hpp"

// A season's production (150 crew, a DTS with a row each on 100 dates, their satellites, positions on a
// rate card, dated terms, activities, a confirmed stub each and payroll issues) exported as an archive and
// imported into an empty store, beside nlohmann::json parsing and dumping the same document.
namespace tessel {
namespace {

struct ArchivedSeason {
    bench::BenchFolder folder;
    std::unique_ptr<TesselStore> store = bench::openStore(folder.path());
    bench::Crew crew = bench::hireCrew(*store);
    std::string archive;
    ArchivedSeason() {
        bench::insertSeason(*store, crew, bench::seasonDates(true));
        testing::addEverythingElse(*store, crew);
        archive = store->perform([&](ModelContext& context) {
            return production_archive::exportProduction(context, crew.productionID, Instant{}, "bench", "bench");
        });
    }
};

ArchivedSeason& archived() {
    static ArchivedSeason shared;
    return shared;
}

void exportTheSeason(benchmark::State& state) {
    auto& s = archived();
    for (auto _ : state) {
        const auto bytes = s.store->perform([&](ModelContext& context) {
            return production_archive::exportProduction(context, s.crew.productionID, Instant{}, "bench", "bench");
        });
        benchmark::DoNotOptimize(bytes);
    }
    state.counters["archiveBytes"] = static_cast<double>(s.archive.size());
}
BENCHMARK(exportTheSeason)->Unit(benchmark::kMillisecond);

// Each import goes into a store of its own, made before the clock runs.
void importTheSeason(benchmark::State& state) {
    auto& s = archived();
    for (auto _ : state) {
        state.PauseTiming();
        bench::BenchFolder folder;
        auto store = bench::openStore(folder.path());
        state.ResumeTiming();
        store->perform([&](ModelContext& context) { return production_archive::importProduction(context, s.archive); });
    }
}
BENCHMARK(importTheSeason)->Unit(benchmark::kMillisecond);

void parseAndDumpTheSameDocumentAlone(benchmark::State& state) {
    auto& s = archived();
    for (auto _ : state) {
        const auto document = nlohmann::json::parse(s.archive);
        benchmark::DoNotOptimize(document.dump(2));
    }
}
BENCHMARK(parseAndDumpTheSameDocumentAlone)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
