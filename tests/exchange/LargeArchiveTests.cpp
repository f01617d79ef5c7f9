#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "App/exchange/ProductionArchive.hpp"
#include "tests/support/LargeProduction.hpp"

// A season-sized production with every kind of record goes through an archive unchanged: into an empty
// store it comes back as the same document; into its own store it comes back as a copy equal in every
// field but its identities and its name, sharing no record with the original.
namespace tessel {
namespace {

using Json = nlohmann::json;

struct Season {
    bench::BenchFolder folder;
    std::unique_ptr<TesselStore> store = bench::openStore(folder.path());
    bench::Crew crew = bench::hireCrew(*store);
    Season() {
        bench::insertSeason(*store, crew, bench::seasonDates(true));
        testing::addEverythingElse(*store, crew);
    }
    std::string archiveOf(const Uuid& productionID) {
        return store->perform([&](ModelContext& context) { return production_archive::exportProduction(context, productionID, Instant{}, "test", "test"); });
    }
};

const std::regex& uuidPattern() {
    static const std::regex pattern("[0-9A-Fa-f]{8}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{4}-[0-9A-Fa-f]{12}");
    return pattern;
}

// Every identity in the value replaced by one mark, so that records compare by what they say.
void withoutIdentities(Json& value) {
    if (value.is_string()) value = std::regex_replace(value.get<std::string>(), uuidPattern(), "<id>");
    if (value.is_structured()) {
        for (auto& element : value) withoutIdentities(element);
    }
}

// Each collection's records without their identities, in one order.
std::map<std::string, std::multiset<std::string>> contentOf(Json document) {
    document.erase("metadata");
    document["production"].erase("name");
    withoutIdentities(document);
    std::map<std::string, std::multiset<std::string>> content;
    for (auto& [key, value] : document.items()) {
        if (!value.is_array()) {
            content[key].insert(value.dump());
            continue;
        }
        for (const auto& record : value) content[key].insert(record.dump());
    }
    return content;
}

std::set<std::string> identitiesIn(const std::string& text) {
    std::set<std::string> found;
    for (auto match = std::sregex_iterator(text.begin(), text.end(), uuidPattern()); match != std::sregex_iterator(); ++match) found.insert(match->str());
    return found;
}

TEST(LargeArchive, ComesBackUnchangedIntoAnEmptyStoreAndAsASeparateCopyIntoItsOwn) {
    Season season;
    const std::string archive = season.archiveOf(season.crew.productionID);
    const Json original = Json::parse(archive);
    for (const char* key : {"productionPositions", "rateCards", "positionScaleRates", "positionTerms", "boxRentalTerms", "dailyGuaranteeTerms",
                            "activities", "actualPayStubs", "payrollIssues", "crewDailyEntries"}) {
        EXPECT_FALSE(original[key].empty()) << key << " is missing from the generated production";
    }

    bench::BenchFolder elsewhere;
    auto empty = bench::openStore(elsewhere.path());
    const auto moved = empty->perform([&](ModelContext& context) { return production_archive::importProduction(context, archive); });
    EXPECT_FALSE(moved.copy);
    const std::string again =
        empty->perform([&](ModelContext& context) { return production_archive::exportProduction(context, moved.productionID, Instant{}, "test", "test"); });
    EXPECT_EQ(again, archive);

    const auto copied = season.store->perform([&](ModelContext& context) { return production_archive::importProduction(context, archive); });
    ASSERT_TRUE(copied.copy);
    EXPECT_EQ(copied.name, "Season Benchmark (Imported Copy)");
    const std::string copy = season.archiveOf(copied.productionID);
    const auto originalContent = contentOf(original), copyContent = contentOf(Json::parse(copy));
    for (const auto& [key, records] : originalContent) EXPECT_EQ(copyContent.at(key), records) << key;
    const auto originalIDs = identitiesIn(archive);
    for (const auto& id : identitiesIn(copy)) ASSERT_FALSE(originalIDs.contains(id)) << id << " is shared with the original";
}

}  // namespace
}  // namespace tessel
