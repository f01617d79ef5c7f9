#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

namespace fs = std::filesystem;

// Two installations: this test's store and another, each with its own store root.
class SetupFiles : public testing::CommandTest {
protected:
    std::string elsewhere() const { return (folder.path() / "elsewhere").string(); }
    testing::CommandOutcome there(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--store-root", elsewhere()});
        return testing::runCommand(arguments);
    }
    fs::path file(const std::string& name) const { return folder.path() / name; }
    // The file written by `export`, changed, under a new name.
    std::string changed(const fs::path& written, const std::function<void(nlohmann::json&)>& change) {
        std::ifstream in(written);
        auto document = nlohmann::json::parse(in);
        change(document);
        const auto path = file("changed-" + written.filename().string());
        std::ofstream(path) << document.dump(2);
        return path.string();
    }
};

TEST_F(SetupFiles, ACrewLibraryMovesBetweenInstallationsOnce) {
    ASSERT_EQ(run({"library", "crew", "add", "Dana Rivera", "--position", "Gaffer", "--dts-title", "Chief Lighting Tech"}).status, 0);
    ASSERT_EQ(run({"library", "crew", "add", "Lee Park"}).status, 0);
    const auto crewFile = file("Tessel-Crew-Library.tesselcrewlibrary");
    ASSERT_EQ(run({"library", "crew", "export", "--output", crewFile.string()}).status, 0);
    EXPECT_EQ(there({"library", "crew", "import", crewFile.string()}).out,
              "Crew Library Import Complete\nImported 2 people.\nUsed 0 existing matches.\nKept 0 separate people.\nSkipped 0 already-present records.\n");
    EXPECT_EQ(there({"library", "crew", "list"}).out, "Dana Rivera  Gaffer  (DTS: Chief Lighting Tech)\nLee Park\n");
    // The same file again adds nobody.
    EXPECT_EQ(there({"library", "crew", "import", crewFile.string()}).out,
              "Crew Library Import Complete\nImported 0 people.\nUsed 0 existing matches.\nKept 0 separate people.\nSkipped 2 already-present records.\n");
}

TEST_F(SetupFiles, APossibleMatchNeedsAResolutionBeforeAnyoneIsAdded) {
    ASSERT_EQ(run({"library", "crew", "add", "Dana Rivera"}).status, 0);
    ASSERT_EQ(run({"library", "crew", "add", "Lee Park"}).status, 0);
    const auto crewFile = file("crew.tesselcrewlibrary");
    ASSERT_EQ(run({"library", "crew", "export", "--output", crewFile.string()}).status, 0);
    ASSERT_EQ(there({"library", "crew", "add", "dana  RIVERA"}).status, 0);
    const auto refused = there({"library", "crew", "import", crewFile.string()});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.err.find("Choose how to handle every possible Crew Library match."), std::string::npos);
    EXPECT_EQ(there({"library", "crew", "list"}).out, "dana  RIVERA\n");
    EXPECT_EQ(there({"library", "crew", "import", crewFile.string(), "--resolve", "Dana Rivera=importSeparate"}).out,
              "Crew Library Import Complete\nImported 1 person.\nUsed 0 existing matches.\nKept 1 separate person.\nSkipped 0 already-present records.\n");
    EXPECT_EQ(there({"library", "crew", "list"}).out, "dana  RIVERA\nLee Park\nDana Rivera\n");
}

TEST_F(SetupFiles, ACrewLibraryFileIsReadWithTheArchivesSentences) {
    ASSERT_EQ(run({"library", "crew", "add", "Dana Rivera"}).status, 0);
    const auto crewFile = file("crew.tesselcrewlibrary");
    ASSERT_EQ(run({"library", "crew", "export", "--output", crewFile.string()}).status, 0);
    EXPECT_EQ(there({"library", "crew", "import", changed(crewFile, [](auto& d) { d["people"][0]["displayName"] = "  "; })}).err,
              "The Tessel Archive is invalid. A Crew Library name is blank.\n");
    EXPECT_EQ(there({"library", "crew", "import", changed(crewFile, [](auto& d) { d["formatVersion"] = 2; })}).err,
              "Tessel Archive version 2 is not supported by this version of Tessel.\n");
}

TEST_F(SetupFiles, ARateCardFileCarriesItsPositionsAndScales) {
    ASSERT_EQ(run({"position", "add", "Gaffer", "--code", "1234", "--saved"}).status, 0);
    ASSERT_EQ(run({"position", "add", "Best Boy", "--code", "5678", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "create", "2026 Basic", "--from", "2026-01-01", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Gaffer", "52.20", "--saved"}).status, 0);
    ASSERT_EQ(run({"ratecard", "scale", "2026 Basic", "Best Boy", "48.10", "--saved"}).status, 0);
    const auto cardFile = file("2026 Basic.tesselratepackage");
    ASSERT_EQ(run({"library", "ratecard", "export", "2026 Basic", "--output", cardFile.string()}).status, 0);
    EXPECT_EQ(there({"library", "ratecard", "import", cardFile.string()}).out, "Added the Rate Card \u201C2026 Basic\u201D with 2 positions to the library.\n");
    EXPECT_EQ(there({"ratecard", "list", "--saved"}).out, run({"ratecard", "list", "--saved"}).out);
    EXPECT_EQ(there({"library", "ratecard", "import", cardFile.string()}).err, "A saved Rate Card named \u201C2026 Basic\u201D is already in the library.\n");

    const auto refusal = [&](const std::function<void(nlohmann::json&)>& change) {
        return there({"library", "ratecard", "import", changed(cardFile, [&](auto& d) {
                          d["id"] = "F0000000-0000-4000-8000-00000000000E";
                          d["displayName"] = "Other";
                          change(d);
                      })}).err;
    };
    EXPECT_EQ(refusal([](auto& d) { d["positions"][1]["occupationCode"] = "1234"; }),
              "The Tessel Archive is invalid. Occupation code 1234 occurs more than once.\n");
    EXPECT_EQ(refusal([](auto& d) { d["displayName"] = " "; }), "The Tessel Archive is invalid. The Rate Card name is blank.\n");
    EXPECT_EQ(refusal([](auto& d) { d["positions"][0]["occupationCode"] = "12A"; }), "The Tessel Archive is invalid. A Rate Card Position is invalid.\n");
    EXPECT_EQ(refusal([](auto& d) { d["positions"][0]["dailyScale"] = "52.205"; }), "The Tessel Archive is invalid. A Rate Card Position is invalid.\n");
}

TEST_F(SetupFiles, ACrewMemberIsAddedFromTheLibraryInTheirPreferredPosition) {
    ASSERT_EQ(run({"library", "crew", "add", "Dana Rivera", "--position", "Gaffer"}).status, 0);
    ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
    ASSERT_EQ(run({"position", "add", "Gaffer"}).status, 0);
    EXPECT_EQ(run({"crew", "add", "dana rivera", "--from", "2026-11-01", "--from-library"}).out,
              "Added Dana Rivera as Gaffer from 2026-11-01, linked to the Crew Library.\n");
    EXPECT_NE(run({"crew", "engagements", "Dana Rivera"}).out.find("    Position Gaffer\n"), std::string::npos);
    EXPECT_EQ(run({"crew", "add", "Nobody Known", "--from", "2026-11-01", "--from-library"}).err,
              "There is no one named \u201CNobody Known\u201D in the Crew Library.\n");
}

TEST_F(SetupFiles, ACrewMemberIsLinkedToALibraryPerson) {
    ASSERT_EQ(run({"library", "crew", "add", "Dana Rivera"}).status, 0);
    ASSERT_EQ(run({"production", "create", "Harbor Lights"}).status, 0);
    ASSERT_EQ(run({"crew", "add", "Dana Rivera", "--from", "2026-11-01"}).status, 0);
    EXPECT_EQ(run({"crew", "link", "Dana Rivera", "dana rivera"}).out, "Dana Rivera is linked to \u201CDana Rivera\u201D in the Crew Library.\n");
    EXPECT_EQ(run({"library", "crew", "remove", "Dana Rivera", "--yes"}).out,
              "Removed \u201CDana Rivera\u201D from the Crew Library. Existing Production crew and payroll history will not be changed.\n");
    EXPECT_EQ(run({"crew", "list"}).status, 0);
}

}  // namespace
}  // namespace tessel
