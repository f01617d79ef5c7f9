#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <thread>

#include "../support/CommandRun.hpp"

extern char** environ;

namespace tessel {
namespace {

namespace fs = std::filesystem;

// A real `tessel production import` killed at several moments (before, during and after its write): the
// store then holds either nothing of the production or all of it, and opens as before.
class ArchiveImportKilled : public testing::CommandTest, public ::testing::WithParamInterface<int> {};

TEST_P(ArchiveImportKilled, LeavesAllOrNothing) {
    ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
    ASSERT_EQ(run({"crew", "add", "Dana Rivera", "--from", "2026-11-01", "--rate", "45.00"}).status, 0);
    const auto small = folder.path() / "small.tesselarchive";
    ASSERT_EQ(run({"production", "export", "--output", small.string()}).status, 0);
    std::ifstream in(small);
    auto archive = nlohmann::json::parse(in);
    // Enough crew that writing them takes a while: each with an engagement and a rate.
    constexpr int crewCount = 4000;
    const auto member = archive["crewMembers"][0], engagement = archive["engagements"][0], rate = archive["payRates"][0];
    for (int i = 1; i < crewCount; ++i) {
        char suffix[13];
        std::snprintf(suffix, sizeof suffix, "%012d", i);
        auto m = member, e = engagement, r = rate;
        m["id"] = "A0000000-0000-4000-8000-" + std::string(suffix);
        m["displayName"] = "Crew " + std::to_string(i);
        e["id"] = "B0000000-0000-4000-8000-" + std::string(suffix);
        e["crewMemberID"] = m["id"];
        r["id"] = "C0000000-0000-4000-8000-" + std::string(suffix);
        r["engagementID"] = e["id"];
        archive["crewMembers"].push_back(m);
        archive["engagements"].push_back(e);
        archive["payRates"].push_back(r);
    }
    archive["production"]["id"] = archive["metadata"]["productionID"] = "D0000000-0000-4000-8000-000000000001";
    archive["production"]["name"] = archive["metadata"]["productionName"] = "Big Show";
    const auto big = folder.path() / "big.tesselarchive";
    std::ofstream(big) << archive.dump();

    // Into another installation's store, where none of its records exist yet.
    const std::string root = (folder.path() / "fresh").string();
    ASSERT_EQ(testing::runCommand({"--store-root", root, "production", "list"}).status, 0);
    const std::string file = big.string();
    const char* arguments[] = {TESSEL_BINARY, "--store-root", root.c_str(), "production", "import", file.c_str(), nullptr};
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, TESSEL_BINARY, nullptr, nullptr, const_cast<char* const*>(arguments), environ), 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(GetParam()));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);

    const auto shown = testing::runCommand({"--store-root", root, "--json", "production", "show", "Big Show"});
    if (shown.status != 0) {
        EXPECT_EQ(shown.json()["message"], "There is no production named \u201CBig Show\u201D.") << "the store did not open as before";
        return;
    }
    EXPECT_EQ(shown.json()["crewCount"], crewCount);
}

INSTANTIATE_TEST_SUITE_P(Moments, ArchiveImportKilled, ::testing::Values(20, 150, 200, 250, 900));

}  // namespace
}  // namespace tessel
