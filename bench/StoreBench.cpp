#include <benchmark/benchmark.h>

#include <cstdlib>

#include <SQLiteCpp/Database.h>

#include "App/exchange/DiagnosticPackage.hpp"
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

// The common command: the store has not changed since its newest backup, which stands.
void openTheUnchangedSeasonStore(benchmark::State& state) {
    const fs::path& root = seasonStore();
    openStore(root).reset();  // its backup exists
    for (auto _ : state) {
        benchmark::DoNotOptimize(openStore(root));
    }
}
BENCHMARK(openTheUnchangedSeasonStore)->Unit(benchmark::kMillisecond);

// The same store opened with no backup logic at all: the connection, its settings, the schema check.
void openTheSeasonStoreWithoutBackupLogic(benchmark::State& state) {
    const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, seasonStore());
    for (auto _ : state) {
        SQLite::Database db(environment.storeURL.string(), SQLite::OPEN_READWRITE);
        db.exec("PRAGMA foreign_keys = ON");
        db.setBusyTimeout(15000);
        benchmark::DoNotOptimize(db.execAndGet("SELECT value FROM TesselStoreMetadata WHERE key = 'schemaVersion'").getString());
    }
}
BENCHMARK(openTheSeasonStoreWithoutBackupLogic)->Unit(benchmark::kMillisecond);

// After a change, the open takes a consistent snapshot of the store first.
void openTheChangedSeasonStoreWithItsSnapshot(benchmark::State& state) {
    const fs::path& root = seasonStore();
    int change = 0;
    for (auto _ : state) {
        state.PauseTiming();
        openStore(root)->database().exec("INSERT INTO TesselStoreMetadata (key, value) VALUES ('benchChange', '" +
                                         std::to_string(++change) + "') ON CONFLICT(key) DO UPDATE SET value = excluded.value");
        state.ResumeTiming();
        benchmark::DoNotOptimize(openStore(root));
    }
}
BENCHMARK(openTheChangedSeasonStoreWithItsSnapshot)->Unit(benchmark::kMillisecond)->Iterations(10);

void writeTheSeasonStoresDiagnosticPackage(benchmark::State& state) {
    const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, seasonStore());
    const BenchFolder target;
    const fs::path file = target.path() / "support.tesseldiagnostic";
    for (auto _ : state) {
        fs::remove(file);
        diagnostic_package::write(environment, {"bench", "bench"}, file, std::chrono::system_clock::now());
    }
    state.counters["packageBytes"] = static_cast<double>(fs::file_size(file));
}
BENCHMARK(writeTheSeasonStoresDiagnosticPackage)->Unit(benchmark::kMillisecond);

void copyTheSeasonStoreFiles(benchmark::State& state) {
    const auto environment = TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, seasonStore());
    const BenchFolder target;
    state.counters["storeBytes"] = static_cast<double>(fs::file_size(environment.storeURL));
    for (auto _ : state) {
        // What the package holds: the store files and the newest backup's.
        fs::copy_file(environment.storeURL, target.path() / "Tessel.store", fs::copy_options::overwrite_existing);
        if (const auto backup = newestStoreBackup(environment)) {
            fs::copy_file(backup->directoryURL / "Tessel.store", target.path() / "Backup.store", fs::copy_options::overwrite_existing);
        }
    }
}
BENCHMARK(copyTheSeasonStoreFiles)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tessel
