#include <gtest/gtest.h>

#include <SQLiteCpp/Database.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

#include "../support/CommandRun.hpp"

namespace fs = std::filesystem;

namespace tessel {
namespace {

using Outcome = testing::CommandOutcome;

// Each test has its own store root and settings folder.
class StoreCommands : public testing::CommandTest {
protected:

};

TEST_F(StoreCommands, StoreInfoDescribesAFreshStore) {
    const auto info = run({"store", "info", "--json"});
    ASSERT_EQ(info.status, 0) << info.err;
    EXPECT_EQ(info.json()["schemaVersion"], "40.2.0");
    EXPECT_EQ(info.json()["modelIdentifier"], "app.tessel.model");
    EXPECT_EQ(info.json()["environment"], "normal");
    EXPECT_EQ(info.json()["entityCounts"]["Production"], 0);
    EXPECT_EQ(run({"--test-store", "store", "info", "--json"}).json()["environment"], "test");
}

TEST_F(StoreCommands, ProductionsAreCreatedListedShownAndDeleted) {
    ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    const auto created = run({"production", "create", "Second Unit", "--json"});
    ASSERT_EQ(created.status, 0);
    const std::string id = created.json()["id"];

    const auto list = run({"production", "list"});
    EXPECT_NE(list.out.find("* " + id + "  Second Unit"), std::string::npos) << list.out;  // the most recent one
    EXPECT_EQ(run({"production", "show", "Night Harbor", "--json"}).json()["payrollWeekStartWeekday"], 2);
    EXPECT_EQ(run({"week", "list", "--json"}).json()["production"], id);

    ASSERT_EQ(run({"production", "delete", id}).status, 0);
    EXPECT_EQ(run({"production", "list", "--json"}).json()["productions"].size(), 1u);
    const auto noCurrent = run({"week", "list"});
    EXPECT_EQ(noCurrent.status, 1);
    EXPECT_EQ(noCurrent.err, "Choose a production with --production; there is no recently used production.\n");
    EXPECT_EQ(run({"week", "list", "--production", "Night Harbor"}).status, 0);
}

TEST_F(StoreCommands, RefusalsExitOneWithTheSentence) {
    const auto unnamed = run({"production", "create", ""});
    EXPECT_EQ(unnamed.status, 1);
    EXPECT_EQ(unnamed.err, "Enter a Production name.\n");
    const auto missing = run({"production", "show", "Nobody's Show", "--json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.json()["error"], "productionNotFound");
    EXPECT_EQ(run({"settings", "set", "userSettings.newProductionWorkweekWeekday", "8"}).status, 1);
    EXPECT_EQ(run({"week", "delete"}).status, 2);
}

TEST_F(StoreCommands, SettingsAreReadAndWrittenWithTheirRules) {
    EXPECT_EQ(run({"settings", "get", "userSettings.newProductionLunchDurationSeconds"}).out, "1800\n");
    ASSERT_EQ(run({"settings", "set", "userSettings.newProductionCurrencyCode", "CAD"}).status, 0);
    ASSERT_EQ(run({"production", "create", "Border Town", "--json"}).json()["currencyCode"], "CAD");
    const auto all = run({"settings", "get", "--json"}).json();
    EXPECT_EQ(all["userSettings.newProductionWorkweekWeekday"], 2);
    EXPECT_EQ(all["userSettings.newProductionCurrencyCode"], "CAD");
}

TEST_F(StoreCommands, ASettingsFileThatCannotBeReadIsNeverWrittenOver) {
    const auto file = folder.path() / "config" / "Tessel" / "settings.json";
    testing::writeFile(file, "{\"userSettings.newProductionCurrencyCode\": \"CAD\",");  // cut short
    const std::string sentence = "The settings file \u201C" + file.string() +
                                 "\u201D could not be read, so Tessel left it as it is and uses the default settings for now.\n";
    const auto listed = run({"production", "list"});
    EXPECT_EQ(listed.status, 0);
    EXPECT_EQ(listed.err, sentence);
    const auto created = run({"production", "create", "Night Harbor", "--json"});
    EXPECT_EQ(created.status, 0);
    EXPECT_EQ(created.json()["currencyCode"], "USD");
    const auto set = run({"settings", "set", "userSettings.defaultDepartment", "Grip"});
    EXPECT_EQ(set.status, 1);
    EXPECT_EQ(set.err, sentence + sentence);
    EXPECT_EQ(testing::readFile(file), "{\"userSettings.newProductionCurrencyCode\": \"CAD\",");
}

// The production is saved before the most-recently-used marker; a marker that cannot be written is
// reported beside the production, which stays created.
TEST_F(StoreCommands, CreatingAProductionSaysSoEvenWhenTheSettingsCannotBeSaved) {
    testing::writeFile(folder.path() / "config" / "Tessel", "a file where the settings folder belongs");
    const auto created = run({"production", "create", "Night Harbor"});
    EXPECT_EQ(created.status, 0);
    EXPECT_TRUE(created.out.starts_with("Created production \u201CNight Harbor\u201D")) << created.out;
    EXPECT_NE(created.err.find("could not be remembered as the most recently used production"), std::string::npos) << created.err;
    EXPECT_EQ(run({"production", "list", "--json"}).json()["productions"].size(), 1u);
}

struct SettingEntry {
    const char* key;
    const char* typed;
    bool accepted;
    const char* stored;  // what the key then reads as
};

class SettingValidation : public testing::CommandTest, public ::testing::WithParamInterface<SettingEntry> {};

TEST_P(SettingValidation, RefusesWhatANewProductionCouldNotUse) {
    const auto& entry = GetParam();
    const auto set = run({"settings", "set", entry.key, entry.typed});
    EXPECT_EQ(set.status, entry.accepted ? 0 : 1) << set.err;
    if (!entry.accepted) {
        EXPECT_TRUE(set.err.starts_with(std::string("The setting \u201C") + entry.key + "\u201D takes ")) << set.err;
    }
    EXPECT_EQ(run({"settings", "get", entry.key}).out, std::string(entry.stored) + "\n");
}

INSTANTIATE_TEST_SUITE_P(
    Settings, SettingValidation,
    ::testing::Values(SettingEntry{"userSettings.newProductionCurrencyCode", "", false, "USD"},
                      SettingEntry{"userSettings.newProductionCurrencyCode", "dollars", false, "USD"},
                      SettingEntry{"userSettings.newProductionCurrencyCode", "cad", true, "CAD"},
                      SettingEntry{"userSettings.newProductionRoundingTolerance", "-5", false, "0.01"},
                      SettingEntry{"userSettings.newProductionRoundingTolerance", "ten", false, "0.01"},
                      SettingEntry{"userSettings.newProductionRoundingTolerance", "0", true, "0"},
                      SettingEntry{"userSettings.newProductionLunchDurationSeconds", "0", false, "1800"},
                      SettingEntry{"userSettings.newProductionLunchDurationSeconds", "2700", true, "2700"}));

TEST_F(StoreCommands, StoredSettingsAProductionCouldNotUseReadAsTheirDefaults) {
    testing::writeFile(folder.path() / "config" / "Tessel" / "settings.json",
                       R"({"userSettings.newProductionCurrencyCode": "", "userSettings.newProductionRoundingTolerance": "-5",
                           "userSettings.newProductionLunchDurationSeconds": -60, "userSettings.newProductionWorkweekWeekday": 8,
                           "userSettings.migratedLegacyBundleDefaults": true})");
    const auto all = run({"settings", "get", "--json"}).json();
    EXPECT_EQ(all["userSettings.newProductionCurrencyCode"], "USD");
    EXPECT_EQ(all["userSettings.newProductionRoundingTolerance"], "0.01");
    EXPECT_EQ(all["userSettings.newProductionLunchDurationSeconds"], 1800);
    EXPECT_EQ(all["userSettings.newProductionWorkweekWeekday"], 2);
    testing::writeFile(folder.path() / "config" / "Tessel" / "settings.json", R"({"userSettings.newProductionLunchDurationSeconds": 90000})");
    EXPECT_EQ(run({"settings", "get", "userSettings.newProductionLunchDurationSeconds"}).out, "90000\n");
    testing::writeFile(folder.path() / "config" / "Tessel" / "settings.json", R"({"userSettings.newProductionCurrencyCode": ""})");
    EXPECT_EQ(run({"production", "create", "Night Harbor", "--json"}).json()["currencyCode"], "USD");
}

TEST_F(StoreCommands, AnUnavailableStoreShowsTitleMessageAndDetails) {
    testing::writeFile(folder.path() / "data" / "canonical-store" / "Tessel.store", "not a database");
    const auto human = run({"store", "info"});
    EXPECT_EQ(human.status, 1);
    EXPECT_TRUE(human.err.starts_with("Tessel Data Store Unavailable\nTessel could not safely open or migrate its data "
                                      "store. Your existing store was preserved and no automatic reset was attempted.\n"));
    EXPECT_NE(human.err.find("\nBackups: " + (folder.path() / "data" / "Tessel Store Backups").string() + "\n"), std::string::npos)
        << human.err;
    EXPECT_NE(human.err.find("\u201Ctessel store diagnostic\u201D"), std::string::npos);
    const auto json = run({"store", "info", "--json"});
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.json()["error"], "storeOpenFailed");
    EXPECT_EQ(json.json()["title"], "Tessel Data Store Unavailable");
    EXPECT_TRUE(json.json()["details"].get<std::string>().starts_with("Expected Tessel schema: 40.2.0"));
    EXPECT_EQ(json.json()["diagnosticCommand"], "tessel store diagnostic");
}

TEST_F(StoreCommands, WeekStartDayAppliesToNewWeeks) {
    ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    const auto changed = run({"week", "start-weekday", "1"});
    EXPECT_EQ(changed.status, 0);
    EXPECT_NE(changed.out.find("Applies to new Payroll Weeks. Existing periods and confirmed pay stubs stay unchanged."),
              std::string::npos);
    EXPECT_EQ(run({"week", "rebuild", "--json"}).json()["movedRecords"], 0);
    EXPECT_EQ(run({"week", "start-weekday", "0"}).status, 1);
}

TEST_F(StoreCommands, RebuildingRegroupsASundayIntoTheWeekItNowStarts) {
    ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    ASSERT_EQ(run({"dts", "create", "2026-11-08"}).status, 0);  // the last day of a week starting Monday
    ASSERT_EQ(run({"week", "start-weekday", "1"}).status, 0);
    EXPECT_EQ(run({"week", "rebuild"}).out, "Rebuilt Payroll Weeks: 1 DTS or activity regrouped, 1 week created, 1 emptied week removed.\n");
    EXPECT_EQ(run({"week", "list", "--json"}).json()["payrollWeeks"][0]["startDate"], "2026-11-08");
}

TEST_F(StoreCommands, TheDiagnosticPackageIsWrittenForAStoreThatCannotOpenAndReadBack) {
    testing::writeFile(folder.path() / "data" / "canonical-store" / "Tessel.store", "not a database");
    const auto file = folder.path() / "support.tesseldiagnostic";
    const auto written = run({"store", "diagnostic", "--output", file.string()});
    EXPECT_EQ(written.status, 0) << written.err;
    EXPECT_TRUE(written.err.starts_with("This package can contain your Tessel productions, crew, pay rates, time entries, "
                                        "payroll rules, and other payroll data. Share it only with someone you trust for Tessel support.\n"));
    EXPECT_EQ(run({"store", "diagnostic", "--output", file.string()}).status, 1);  // never over an existing file

    const auto inspected = run({"store", "inspect-diagnostic", file.string(), "--json"});
    ASSERT_EQ(inspected.status, 0) << inspected.err;
    EXPECT_EQ(inspected.json()["entries"], (Json{"manifest.json", "canonical-store/Tessel.store"}));
    fs::remove_all(inspected.json()["folder"].get<std::string>());

    testing::writeFile(folder.path() / "forged.tesseldiagnostic", "PK not really");
    const auto refused = run({"store", "inspect-diagnostic", (folder.path() / "forged.tesseldiagnostic").string()});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.starts_with("The diagnostic package is invalid. ")) << refused.err;
}

TEST_F(StoreCommands, WeekListLabelsWeeksThatShareAStartDate) {
    ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    ASSERT_EQ(run({"dts", "create", "2026-11-03"}).status, 0);
    {
        SQLite::Database db((folder.path() / "data" / "canonical-store" / "Tessel.store").string(), SQLite::OPEN_READWRITE);
        db.exec("INSERT INTO PayrollWeek SELECT 'F0000000-0000-4000-8000-000000000001', productionID, startDate, "
                "workweekSourceDefinitionID, workweekStartWeekday, workweekStartHour, workweekStartMinute FROM PayrollWeek");
    }
    const auto listed = run({"week", "list"});
    EXPECT_EQ(std::count(listed.out.begin(), listed.out.end(), '\n'), 2);
    const std::string label = "  Duplicate start date\n";
    EXPECT_NE(listed.out.find(label), std::string::npos) << listed.out;
    EXPECT_NE(listed.out.find(label), listed.out.rfind(label)) << "both weeks are labelled";
    EXPECT_EQ(run({"week", "list", "--json"}).json()["payrollWeeks"][0]["duplicateStartDate"], true);
    EXPECT_EQ(run({"week", "rebuild"}).err, "Resolve duplicate Payroll Week start dates before rebuilding. No data was changed.\n");
}

// Sixteen separate processes changing one store at once each wait their turn; none finds the store
// unavailable while another one backs it up, opens it or closes it.
TEST_F(StoreCommands, SixteenProcessesAddingCrewAtOnceAllSucceed) {
    ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    int gate[2];
    ASSERT_EQ(pipe(gate), 0);
    std::vector<pid_t> children;
    for (int i = 0; i < 16; ++i) {
        const pid_t child = fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            close(gate[1]);
            char ignored;
            (void)!read(gate[0], &ignored, 1);  // every process starts when the gate closes
            const auto outcome = run({"crew", "add", "Person " + std::to_string(i), "--from", "2026-11-02"});
            testing::writeFile(folder.path() / ("child-" + std::to_string(i) + ".err"), outcome.err);
            _exit(outcome.status);
        }
        children.push_back(child);
    }
    close(gate[0]);
    close(gate[1]);
    for (std::size_t i = 0; i < children.size(); ++i) {
        int status = 0;
        waitpid(children[i], &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0)
            << testing::readFile(folder.path() / ("child-" + std::to_string(i) + ".err"));
    }
    EXPECT_EQ(run({"crew", "list", "--json"}).json()["crew"].size(), 16u);
}

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

TEST_F(StoreCommands, ResettingTheTestStoreLeavesNormalDataAlone) {
    ASSERT_EQ(run({"production", "create", "Real Show"}).status, 0);
    ASSERT_EQ(run({"--test-store", "production", "create", "Trial Show"}).status, 0);
    ASSERT_EQ(run({"--test-store", "settings", "set", "userSettings.defaultDepartment", "Grip"}).status, 0);
    const auto requested = run({"store", "reset-test"});
    EXPECT_NE(requested.out.find("Normal Tessel data is never changed."), std::string::npos);
    // The reset happens at the next test store launch, not before.
    EXPECT_EQ(run({"production", "list", "--json"}).json()["productions"].size(), 1u);
    EXPECT_EQ(run({"--test-store", "production", "list", "--json"}).json()["productions"].size(), 0u);
    EXPECT_EQ(run({"--test-store", "settings", "get", "userSettings.defaultDepartment"}).out, "\n");
    EXPECT_EQ(run({"production", "list", "--json"}).json()["productions"][0]["name"], "Real Show");
}

}  // namespace
}  // namespace tessel
