#include <benchmark/benchmark.h>

#include <cstdlib>

#include "Season.hpp"

namespace tessel {
namespace {

using namespace tessel::bench;

void insertASeasonInOneTransaction(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const fs::path root = freshRoot();
        {
            auto store = openStore(root);
            const Crew crew = hireCrew(*store);
            state.ResumeTiming();
            insertSeason(*store, crew, seasonDates(true));
            state.PauseTiming();
        }
        fs::remove_all(root);
        state.ResumeTiming();
    }
}
BENCHMARK(insertASeasonInOneTransaction)->Unit(benchmark::kMillisecond)->Iterations(3);

// One season store shared by the open and copy benchmarks.
const fs::path& seasonStore() {
    static const fs::path root = [] {
        const fs::path created = freshRoot();
        auto store = openStore(created);
        insertSeason(*store, hireCrew(*store), seasonDates(true));
        return created;
    }();
    return root;
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
    const fs::path target = freshRoot();
    state.counters["storeBytes"] = static_cast<double>(fs::file_size(environment.storeURL));
    for (auto _ : state) {
        fs::copy_file(environment.storeURL, target / "Tessel.store", fs::copy_options::overwrite_existing);
    }
    fs::remove_all(target);
}
BENCHMARK(copyTheSeasonStoreFiles)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
