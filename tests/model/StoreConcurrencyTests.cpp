#include <gtest/gtest.h>

#include <SQLiteCpp/Database.h>
#include <thread>

#include "../support/StoreTest.hpp"
#include "App/model/ProductionRepository.hpp"

namespace tessel {
namespace {

const Instant someInstant = std::chrono::sys_days(std::chrono::November / 2 / 2026) + std::chrono::hours(9);

// The window and the command line may work on one store at once; each user action must either wait for
// the other process or fail whole, never half-way.
class StoreConcurrency : public testing::StoreTest {
protected:
    SQLite::Database otherProcess{store->environment().storeURL.string(), SQLite::OPEN_READWRITE};

    // An action that reads before it writes, as most user actions do.
    void addProductionAfterReading(const std::string& name) {
        store->perform([&](ModelContext& c) {
            (void)production_repository::list(c);
            production_repository::create(c, name, {}, someInstant);
        });
    }
};

TEST_F(StoreConcurrency, AnActionWaitsWhileAnotherProcessIsWriting) {
    otherProcess.exec("BEGIN IMMEDIATE");
    std::thread finisher([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        otherProcess.exec("COMMIT");
    });
    EXPECT_NO_THROW(addProductionAfterReading("Night Harbor"));
    finisher.join();
    EXPECT_EQ(production_repository::list(context).size(), 1u);
}

TEST_F(StoreConcurrency, AnActionAfterAnUnfinishedReadSeesTheOtherProcessesWrites) {
    production_repository::create(context, "First", {}, someInstant);
    auto& unfinished = context.prepare("SELECT id FROM Production");
    ASSERT_TRUE(unfinished.executeStep());  // left inside its result, holding its snapshot
    otherProcess.exec("UPDATE Production SET name = 'Renamed'");
    EXPECT_NO_THROW(addProductionAfterReading("Second"));
    EXPECT_EQ(production_repository::list(context).size(), 2u);
}

TEST_F(StoreConcurrency, AStoreFailureInsideAnActionWritesNothingAndSaysSo) {
    try {
        store->perform([](ModelContext& c) {
            production_repository::create(c, "Half Written", {}, someInstant);
            c.database().exec("INSERT INTO NoSuchTable VALUES (1)");
        });
        FAIL() << "the action did not fail";
    } catch (const StoreActionError& error) {
        EXPECT_STREQ(error.what(), "The Tessel store could not save this change, so nothing was changed.");
    }
    EXPECT_TRUE(production_repository::list(context).empty());
}

// What tells the user an action was done waits for its commit: a commit that fails (here a row whose
// DTS does not exist, checked only at commit) leaves nothing saved and nothing said.
TEST_F(StoreConcurrency, WorkAfterTheCommitIsDroppedWhenTheCommitFails) {
    std::vector<std::string> said;
    EXPECT_THROW(store->perform([&](ModelContext& c) {
        c.database().exec("PRAGMA defer_foreign_keys = ON");
        production_repository::create(c, "Never Saved", {}, someInstant);
        c.database().exec("INSERT INTO CrewDailyEntry (id, workdayID) VALUES ('E', 'NO-SUCH-DTS')");
        store->afterCommit([&] { said.push_back("Created"); });
    }), StoreActionError);
    EXPECT_TRUE(said.empty());
    EXPECT_TRUE(production_repository::list(context).empty());

    store->perform([&](ModelContext& c) {
        production_repository::create(c, "Saved", {}, someInstant);
        store->afterCommit([&] { said.push_back("Created " + production_repository::list(context).at(0).name); });
        EXPECT_TRUE(said.empty());
    });
    EXPECT_EQ(said, std::vector<std::string>{"Created Saved"});
}

}  // namespace
}  // namespace tessel
