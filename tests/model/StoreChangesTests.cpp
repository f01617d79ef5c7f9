#include <gtest/gtest.h>

#include "../support/StoreTest.hpp"
#include "App/model/PayrollWeekRepository.hpp"
#include "App/model/ProductionRepository.hpp"
#include "App/model/ProductionWeekCalendars.hpp"
#include "App/model/StoreChanges.hpp"
#include "App/model/StoreSchema.hpp"

namespace tessel {
namespace {

using namespace std::chrono;
constexpr CalendarDate workDate = 2026y / November / 3;

class StoreChanges : public testing::StoreTest {
protected:
    // Every row of every table, in a fixed order: two equal dumps mean byte-equal data.
    std::string dump() {
        std::string text;
        for (auto table : store_schema::entityTables()) {
            SQLite::Statement query(store->database(), "SELECT * FROM " + std::string(table) + " ORDER BY 1");
            while (query.executeStep()) {
                text += table;
                for (int column = 0; column < query.getColumnCount(); ++column) text += "|" + query.getColumn(column).getString();
                text += "\n";
            }
        }
        return text;
    }

    Production production = store->perform([](ModelContext& c) {
        const auto made = production_repository::create(c, "Night Harbor", {}, sys_days(workDate));
        const auto member = crew_repository::createCrewMember(c, made.id, "Rowan Vale");
        const auto engagement = crew_repository::createEngagement(c, made.id, member.id, workDate);
        crew_repository::addPayRate(c, engagement.id, workDate, "45.00", "USD");
        const auto week = ProductionWeekCalendars::findOrCreateWeek(c, made.id, workDate);
        const Workday workday = payroll_week_repository::createWorkday(c, {Uuid::generate(), week.id, workDate});
        payroll_week_repository::createEntry(c, {Uuid::generate(), workday.id, member.id, engagement.id});
        return made;
    });
};

TEST_F(StoreChanges, UndoingACascadingDeleteRestoresEveryRowAndRedoingDeletesThemAgain) {
    const std::string before = dump();
    const auto changes = store_changes::performRecorded(*store, [&](ModelContext& c) { production_repository::remove(c, production.id); });
    const std::string after = dump();
    ASSERT_NE(before, after);

    store_changes::apply(*store, changes.inverted());
    EXPECT_EQ(dump(), before);
    store_changes::apply(*store, changes);
    EXPECT_EQ(dump(), after);
}

TEST_F(StoreChanges, AnActionThatChangesNothingRecordsNothing) {
    const auto changes = store_changes::performRecorded(*store, [&](ModelContext& c) { production_repository::list(c); });
    EXPECT_TRUE(changes.empty());
}

TEST_F(StoreChanges, AnUndoOverRowsChangedSinceIsRefusedAndChangesNothing) {
    const auto rename = [&](const std::string& name) {
        return store_changes::performRecorded(*store, [&](ModelContext& c) {
            auto renamed = *production_repository::fetch(c, production.id);
            renamed.name = name;
            production_repository::update(c, renamed);
        });
    };
    const auto first = rename("Night Harbor II");
    store->perform([&](ModelContext& c) {  // changed behind the undo stack's back
        auto renamed = *production_repository::fetch(c, production.id);
        renamed.name = "Harbor Lights";
        production_repository::update(c, renamed);
    });
    const std::string before = dump();
    EXPECT_THROW(store_changes::apply(*store, first.inverted()), StoreChangesConflict);
    EXPECT_EQ(dump(), before);
}

}  // namespace
}  // namespace tessel
