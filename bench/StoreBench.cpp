#include <benchmark/benchmark.h>

#include <cstdlib>

#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/model/TesselPersistence.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
namespace weeks = payroll_week_repository;

constexpr int crewCount = 150;
constexpr int dtsDates = 100;

fs::path freshRoot() {
    std::string pattern = (fs::temp_directory_path() / "tessel-bench-XXXXXX").string();
    return mkdtemp(pattern.data());
}

std::unique_ptr<TesselStore> openStore(const fs::path& root) {
    auto result = openTesselStore(TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, root));
    return std::move(std::get<std::unique_ptr<TesselStore>>(result));
}

struct Crew {
    Uuid productionID;
    std::vector<std::pair<CrewMember, ProductionEngagement>> members;
};

Crew hireCrew(TesselStore& store) {
    return store.perform([](ModelContext& context) {
        const Instant now = sys_days(2026y / January / 5) + hours(9);
        Crew crew{production_repository::create(context, "Season Benchmark", {}, now).id, {}};
        for (int i = 0; i < crewCount; ++i) {
            const auto member = crew_repository::createCrewMember(context, crew.productionID, "Crew " + std::to_string(i));
            auto engagement = crew_repository::createEngagement(context, crew.productionID, member.id, 2026y / January / 5);
            crew_repository::addPayRate(context, engagement.id, 2026y / January / 5, "45.00", "USD");
            crew.members.emplace_back(member, engagement);
        }
        return crew;
    });
}

// 100 DTS dates (five a week, about twenty weeks), a row per crew member with its work mode and mileage,
// and each DTS with its meal location: one transaction.
void insertSeason(TesselStore& store, const Crew& crew) {
    store.perform([&](ModelContext& context) {
        const auto& workMode = store_schema::satelliteTable("CrewDailyWorkModeConfiguration");
        const auto& mileage = store_schema::satelliteTable("CrewDailyMileageEntry");
        const auto& mealLocation = store_schema::satelliteTable("WorkdayMealLocationConfiguration");
        for (int d = 0, dated = 0; dated < dtsDates; ++d) {
            const CalendarDate date(sys_days(2026y / January / 5) + days(d));
            if (weekday(sys_days(date)).c_encoding() == 0 || weekday(sys_days(date)).c_encoding() == 6) continue;
            ++dated;
            const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, crew.productionID, date);
            Workday workday{Uuid::generate(), week.id, date};
            workday.generalCrewCall = sys_days(date) + hours(7);
            workday.officialLunchOut = sys_days(date) + hours(13);
            workday.officialLunchIn = sys_days(date) + hours(13) + minutes(30);
            workday.wrap = sys_days(date) + hours(19);
            weeks::createWorkday(context, workday);
            satellite_repository::write(context, mealLocation, workday.id,
                                        {{"workLocationRawValue", std::string("studio")}, {"modifiedAt", std::string("2026-01-05T09:00:00Z")}});
            std::int64_t order = 0;
            for (const auto& [member, engagement] : crew.members) {
                const CrewDailyEntry entry{Uuid::generate(), workday.id, member.id, engagement.id, {}, {}, {}, {}, {}, false, order++};
                weeks::createEntry(context, entry);
                satellite_repository::write(context, workMode, entry.id, {{"modeRawValue", std::string("timed")}});
                satellite_repository::write(context, mileage, entry.id, {{"miles", std::string("12.5")}});
            }
        }
    });
}

void insertASeasonInOneTransaction(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        const fs::path root = freshRoot();
        {
            auto store = openStore(root);
            const Crew crew = hireCrew(*store);
            state.ResumeTiming();
            insertSeason(*store, crew);
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
        insertSeason(*store, hireCrew(*store));
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
