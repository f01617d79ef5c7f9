#include <benchmark/benchmark.h>

#include <cstdlib>

#include "Season.hpp"

namespace tessel {
namespace {

using namespace tessel::bench;

void insertASeasonInOneTransaction(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        {
            const BenchFolder folder;
            auto store = openStore(folder.path());
            const Crew crew = hireCrew(*store);
            state.ResumeTiming();
            insertSeason(*store, crew, seasonDates(true));
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
}
BENCHMARK(insertASeasonInOneTransaction)->Unit(benchmark::kMillisecond)->Iterations(3);

// One season store shared by the open and copy benchmarks.
const fs::path& seasonStore() {
    static const BenchFolder folder;
    static const bool filled = [] {
        auto store = openStore(folder.path());
        insertSeason(*store, hireCrew(*store), seasonDates(true));
        return true;
    }();
    (void)filled;
    return folder.path();
}

void openTheSeasonStoreWithItsBackup(benchmark::State& state) {
    const fs::path& root = seasonStore();
    for (auto _ : state) {
        benchmark::DoNotOptimize(openStore(root));
    }
}
BENCHMARK(openTheSeasonStoreWithItsBackup)->Unit(benchmark::kMillisecond);

void copyTheSeasonStoreFiles(benchmark::State& state) {
    const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, seasonStore());
    const BenchFolder target;
    state.counters["storeBytes"] = static_cast<double>(fs::file_size(environment.storeURL));
    for (auto _ : state) {
        fs::copy_file(environment.storeURL, target.path() / "Tessel.store", fs::copy_options::overwrite_existing);
    }
}
BENCHMARK(copyTheSeasonStoreFiles)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
