#pragma once

#include <cstdlib>

#include "App/actualpay/ConfirmedPayStubs.hpp"
#include "App/actualpay/PayComparison.hpp"
#include "App/dts/DailyTimeSheets.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/SatelliteRepository.hpp"
#include "App/model/TesselPersistence.hpp"
#include "App/rules/ProductionRulesets.hpp"
#include "tests/support/TemporaryFolder.hpp"

// A season of time sheets for the benchmarks: 150 crew and a DTS with a row per crew member on each of
// 100 dates, with times and satellites as a department keeps them.
namespace tessel::bench {

using namespace std::chrono;

constexpr int crewCount = 150;
constexpr int dtsDates = 100;

// A store folder of its own, removed with everything in it when the benchmark is done with it.
using BenchFolder = testing::TemporaryFolder;

inline std::unique_ptr<TesselStore> openStore(const fs::path& root) {
    auto result = openTesselStore(TesselStoreEnvironment::make(TesselStoreEnvironmentKind::normal, root));
    return std::move(std::get<std::unique_ptr<TesselStore>>(result));
}

struct Crew {
    Uuid productionID;
    std::vector<std::pair<CrewMember, ProductionEngagement>> members;
};

inline Crew hireCrew(TesselStore& store) {
    return store.perform([](ModelContext& context) {
        const Instant now = sys_days(2026y / January / 5) + hours(9);
        Crew crew{ProductionSetup::createProduction(context, "Season Benchmark", {}, now).id, {}};
        for (int i = 0; i < crewCount; ++i) {
            const auto member = crew_repository::createCrewMember(context, crew.productionID, "Crew " + std::to_string(i));
            auto engagement = crew_repository::createEngagement(context, crew.productionID, member.id, 2026y / January / 5);
            crew_repository::addPayRate(context, engagement.id, 2026y / January / 5, "45.00", "USD");
            crew.members.emplace_back(member, engagement);
        }
        return crew;
    });
}

// The dates: weekdays only (about twenty weeks), or every day (about fifteen).
inline std::vector<CalendarDate> seasonDates(bool weekdaysOnly) {
    std::vector<CalendarDate> dates;
    for (int d = 0; static_cast<int>(dates.size()) < dtsDates; ++d) {
        const CalendarDate date(sys_days(2026y / January / 5) + days(d));
        const auto weekday = std::chrono::weekday(sys_days(date)).c_encoding();
        if (!weekdaysOnly || (weekday != 0 && weekday != 6)) dates.push_back(date);
    }
    return dates;
}

// One transaction: each DTS with its shared times and meal location, a row per crew member with its
// work mode and mileage.
inline void insertSeason(TesselStore& store, const Crew& crew, const std::vector<CalendarDate>& dates) {
    namespace weeks = payroll_week_repository;
    store.perform([&](ModelContext& context) {
        const auto& workMode = store_schema::satelliteTable("CrewDailyWorkModeConfiguration");
        const auto& mileage = store_schema::satelliteTable("CrewDailyMileageEntry");
        const auto& mealLocation = store_schema::satelliteTable("WorkdayMealLocationConfiguration");
        for (const CalendarDate date : dates) {
            const PayrollWeek week = ProductionWeekCalendars::findOrCreateWeek(context, crew.productionID, date);
            Workday workday{Uuid::generate(), week.id, date};
            workday.generalCrewCall = sys_days(date) + hours(7);
            workday.officialLunchOut = sys_days(date) + hours(13);
            workday.officialLunchIn = sys_days(date) + hours(13) + minutes(30);
            workday.wrap = sys_days(date) + hours(19) + minutes(30);
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

// Under EP terms, a confirmed stub for every crew member and week, paying each the same simple week.
inline void confirmEveryWeek(TesselStore& store, const Crew& crew) {
    store.perform([&](ModelContext& context) {
        pay_comparison_settings::setProfile(context, crew.productionID, PayComparisonProfile::ep);
        for (const auto& week : payroll_week_repository::weeks(context, crew.productionID)) {
            const CalendarDate start(floor<days>(week.startDate));
            for (const auto& [member, engagement] : crew.members) {
                const Instant confirmed = sys_days(start) + days(8);
                ConfirmedPayStubActualPay stub{Uuid::generate(), crew.productionID, member.id, week.id, start,
                                               CalendarDate(sys_days(start) + days(6)), member.displayName, std::nullopt, std::nullopt,
                                               "ELECTRICIAN", Decimal("50.0"), Decimal("2565.00"), "", "stub.pdf", confirmed, confirmed, confirmed, {}};
                stub.lines = {{Uuid::generate(), stub.id, "REGULAR", Decimal("40.0"), Decimal("45.00"), Decimal("1800.00"), 0},
                              {Uuid::generate(), stub.id, "OVERTIME", Decimal("10.0"), Decimal("67.50"), Decimal("675.00"), 1},
                              {Uuid::generate(), stub.id, "MILEAGE", std::nullopt, std::nullopt, Decimal("90.00"), 2}};
                confirmed_pay_stubs::confirm(context, stub, false);
            }
        }
    });
}

}  // namespace tessel::bench
