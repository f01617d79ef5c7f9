#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <regex>

#include "../support/CommandRun.hpp"

namespace tessel {
namespace {

// Two productions under one agreement: the library carries rules between them as independent copies.
class RulesLibraryCommands : public testing::CommandTest {
protected:
    void SetUp() override {
        CommandTest::SetUp();
        ASSERT_EQ(run({"production", "create", "Night Harbor"}).status, 0);
    }
    Json savedConfiguration(const std::string& name) { return run({"library", "rules", "show", name, "--json"}).json()["configuration"]; }
};

TEST_F(RulesLibraryCommands, ApplyingMakesAnIndependentCopyThatLaterEditsLeaveAlone) {
    Json rules = run({"rules", "show", "--json"}).json();
    rules["payrollRules"]["name"] = "Union Basic Rules";
    ASSERT_EQ(run({"rules", "set", write(rules)}).status, 0);
    ASSERT_EQ(run({"library", "rules", "save", "Union Basic", "--notes", "From the 2026 agreement"}).status, 0);
    const Json saved = savedConfiguration("Union Basic");

    ASSERT_EQ(run({"production", "create", "Second Unit"}).status, 0);
    const auto applied = run({"library", "rules", "apply", "Union Basic", "--yes"});
    ASSERT_EQ(applied.status, 0) << applied.err;
    EXPECT_EQ(run({"rules", "show", "--json"}).json()["payrollRules"]["name"], "Union Basic Rules");
    EXPECT_NE(run({"rules", "show"}).out.find("\nApplied from Saved Ruleset: Union Basic\n"), std::string::npos);

    Json edited = run({"rules", "show", "--json"}).json();
    edited["mealPenaltyRules"]["fixedDollarWeeklyLimit"] = 3;
    ASSERT_EQ(run({"rules", "set", write(edited)}).status, 0);
    EXPECT_EQ(savedConfiguration("Union Basic"), saved);  // the library keeps its own copy
    EXPECT_EQ(run({"rules", "show", "--json", "--production", "Night Harbor"}).json()["payrollRules"]["name"], "Union Basic Rules");

    ASSERT_EQ(run({"library", "rules", "update", "Union Basic", "--yes"}).status, 0);
    EXPECT_EQ(savedConfiguration("Union Basic")["mealPenaltyRules"]["fixedDollarWeeklyLimit"], 3);
}

TEST_F(RulesLibraryCommands, ApplyAndUpdateSayWhatTheyWillDoAndChangeNothingWithoutYes) {
    ASSERT_EQ(run({"library", "rules", "save", "Union Basic"}).status, 0);
    ASSERT_EQ(run({"production", "create", "Second Unit"}).status, 0);
    const auto asked = run({"library", "rules", "apply", "Union Basic"});
    EXPECT_EQ(asked.status, 1);
    EXPECT_NE(asked.err.find("Apply Saved Ruleset?\nReplace Second Unit\u2019s current Ruleset with \u201CUnion Basic\u201D? An "
                             "independent Production-owned copy will be created; other Productions and the Saved Ruleset "
                             "remain unchanged.\n"),
              std::string::npos)
        << asked.err;
    EXPECT_EQ(run({"rules", "show"}).out.find("Applied from Saved Ruleset:"), std::string::npos);
    const auto update = run({"library", "rules", "update", "Union Basic", "--json"});
    EXPECT_EQ(update.status, 1);
    EXPECT_EQ(update.json()["title"], "Update Saved Ruleset?");
}

// The file as another installation writes it: dates in seconds since 2001-01-01, decimals as numbers.
std::string handWritten(const std::string& configurationDocument, const std::string& formatVersion, const std::string& name) {
    std::string configuration = std::regex_replace(
        configurationDocument, std::regex(R"re("(multiplier|repeatingAmount|amount|straightTimeRateMultiplier|rateMultiplier)": "([-0-9.]+)")re"),
        "\"$1\": $2");
    configuration = std::regex_replace(configuration, std::regex(R"re("effectiveFrom": "2025-01-01")re"), "\"effectiveFrom\": 757382400");
    // Every list of early amounts, one after another.
    const std::regex amountList(R"re("earlyOrdinalAmounts": \[[^\]]*"[^\]]*\])re");
    for (std::smatch amounts; std::regex_search(configuration, amounts, amountList);) {
        const std::string numeric = std::regex_replace(amounts.str(), std::regex(R"re("([-0-9.]+)")re"), "$1");
        configuration.replace(static_cast<std::size_t>(amounts.position()), static_cast<std::size_t>(amounts.length()), numeric);
    }
    return R"({"metadata": {"formatVersion": )" + formatVersion +
           R"(, "portableRulesetID": "5D0C3F4E-2B1A-4C8D-9E7F-0A1B2C3D4E5F", "name": ")" + name +
           R"(", "provenanceNotes": "Shared by a colleague", "createdAt": 783993600.25, "exportedAt": 784080000},
             "configuration": )" + configuration + "}";
}

class RulesetFiles : public RulesLibraryCommands {
protected:
    std::string file(const std::string& bytes) {
        const auto path = (folder.path() / "shared.tesselrules").string();
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
        return path;
    }
    std::string rulesDocument() { return run({"rules", "show", "--json"}).out; }
};

TEST_F(RulesetFiles, ExportThenImportGivesTheSameRulesDigitForDigit) {
    Json rules = run({"rules", "show", "--json"}).json();
    rules["payrollRules"]["localSchedule"]["bands"][1]["multiplier"] = "1.50";
    ASSERT_EQ(run({"rules", "set", write(rules)}).status, 0);
    ASSERT_EQ(run({"library", "rules", "save", "Union Basic"}).status, 0);
    const auto path = (folder.path() / "Union.tesselrules").string();
    ASSERT_EQ(run({"library", "rules", "export", "Union Basic", "--output", path}).status, 0);
    EXPECT_EQ(run({"library", "rules", "export", "Union Basic", "--output", path}).status, 1);  // never over a file
    const std::string bytes = testing::readFile(path);
    EXPECT_EQ(bytes.find('\n'), std::string::npos);  // not pretty printed
    EXPECT_NE(bytes.find(R"("multiplier":1.50,)"), std::string::npos);
    EXPECT_EQ(bytes.find(R"({"metadata":{"formatVersion":1,"portableRulesetID":)"), 0u);

    ASSERT_EQ(run({"library", "rules", "delete", "Union Basic"}).status, 0);
    ASSERT_EQ(run({"library", "rules", "import", path}).status, 0);
    ASSERT_EQ(run({"library", "rules", "import", path}).status, 0);
    const auto items = run({"library", "rules", "list", "--json"}).json()["savedRulesets"];
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0]["portableRulesetID"], items[1]["portableRulesetID"]);
    EXPECT_NE(items[0]["id"], items[1]["id"]);
    EXPECT_EQ(run({"library", "rules", "rename", "Union Basic", "Union Copy"}).status, 1);  // two share the name
    ASSERT_EQ(run({"library", "rules", "rename", items[1]["id"].get<std::string>(), "Union Copy"}).status, 0);
    EXPECT_EQ(run({"library", "rules", "show", "Union Copy", "--json"}).json()["id"], items[1]["id"]);
}

TEST_F(RulesetFiles, AFileWrittenByHandWithItsOwnConventionsImports) {
    const auto imported = run({"library", "rules", "import", file(handWritten(rulesDocument(), "1", " Shared Rules \\n")), "--json"});
    ASSERT_EQ(imported.status, 0) << imported.err;
    EXPECT_EQ(imported.json()["name"], "Shared Rules");
    EXPECT_EQ(imported.json()["portableRulesetID"], "5D0C3F4E-2B1A-4C8D-9E7F-0A1B2C3D4E5F");
    EXPECT_EQ(imported.json()["createdAt"], "2025-11-05T00:00:00Z");
    EXPECT_EQ(savedConfiguration("Shared Rules"), run({"rules", "show", "--json"}).json());
}

struct BadFile {
    const char* name;
    std::function<std::string(const std::string&)> bytes;
    const char* sentence;
};

class BadRulesetFile : public RulesetFiles, public ::testing::WithParamInterface<BadFile> {};

TEST_P(BadRulesetFile, IsRefusedWithOneSentenceAndAddsNothing) {
    const auto refused = run({"library", "rules", "import", file(GetParam().bytes(rulesDocument()))});
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.starts_with(GetParam().sentence)) << refused.err;
    EXPECT_EQ(std::count(refused.err.begin(), refused.err.end(), '\n'), 1);
    EXPECT_EQ(run({"library", "rules", "list", "--json"}).json()["savedRulesets"].size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(
    Import, BadRulesetFile,
    ::testing::Values(
        BadFile{"notJSON", [](const std::string&) { return std::string("{\"metadata\": "); },
                "The Ruleset is invalid. The input is not well-formed JSON"},
        BadFile{"laterVersion", [](const std::string& rules) { return handWritten(rules, "2", "Shared"); },
                "Ruleset file version 2 is not supported."},
        BadFile{"blankName", [](const std::string& rules) { return handWritten(rules, "1", " \\t "); }, "Enter a Ruleset name."},
        BadFile{"invalidConfiguration",
                [](const std::string& rules) {
                    return std::regex_replace(handWritten(rules, "1", "Shared"), std::regex(R"re("name": "Custom Production Rules")re"),
                                              "\"name\": \"\"");
                },
                "The Ruleset is invalid. "},
        BadFile{"unknownRawValue",
                [](const std::string& rules) {
                    return std::regex_replace(handWritten(rules, "1", "Shared"), std::regex(R"re("entryThresholdBasis": "worked")re"),
                                              "\"entryThresholdBasis\": \"sideways\"");
                },
                "The Ruleset is invalid. "},
        BadFile{"decimalAsText",
                [](const std::string& rules) {
                    return std::regex_replace(handWritten(rules, "1", "Shared"), std::regex(R"re("multiplier": 1.5)re"),
                                              "\"multiplier\": \"1.5\"");
                },
                "The Ruleset is invalid. \u201Cconfiguration.payrollRules.localSchedule.bands[1].multiplier\u201D must be a decimal number."}),
    [](const auto& info) { return std::string(info.param.name); });

struct LibraryRefusal {
    const char* name;
    std::vector<std::string> arguments;
    const char* sentence;
};

class RulesLibraryRefusal : public RulesLibraryCommands, public ::testing::WithParamInterface<LibraryRefusal> {};

TEST_P(RulesLibraryRefusal, SaysWhyAndChangesNothing) {
    const auto refused = run(GetParam().arguments);
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.err, std::string(GetParam().sentence) + "\n");
    EXPECT_EQ(run({"library", "rules", "list"}).out, "No Saved Rulesets\nCreate or import a reusable Saved Ruleset.\n");
}

INSTANTIATE_TEST_SUITE_P(
    Library, RulesLibraryRefusal,
    ::testing::Values(LibraryRefusal{"blankName", {"library", "rules", "save", " \n "}, "Enter a Ruleset name."},
                      LibraryRefusal{"updateWithEmptyLibrary", {"library", "rules", "update", "Union Basic", "--yes"},
                                     "Create a Saved Ruleset before updating one from this Production."},
                      LibraryRefusal{"unknownName", {"library", "rules", "apply", "Nobody's Rules", "--yes"},
                                     "There is no Saved Ruleset named \u201CNobody's Rules\u201D."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace tessel

namespace tessel {
namespace {

// A folder given where a file belongs opens as a stream but cannot be read: one sentence, exit 2.
class FolderGivenAsFile : public RulesLibraryCommands, public ::testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(FolderGivenAsFile, IsRefusedInOneSentence) {
    std::vector<std::string> arguments = GetParam();
    for (auto& argument : arguments) {
        if (argument == "FOLDER") argument = folder.path().string();
    }
    const auto refused = run(arguments);
    EXPECT_EQ(refused.status, 2);
    EXPECT_EQ(refused.err, "The file \u201C" + folder.path().string() + "\u201D could not be read.\n");
}

INSTANTIATE_TEST_SUITE_P(Commands, FolderGivenAsFile,
                         ::testing::Values(std::vector<std::string>{"rules", "set", "FOLDER"},
                                           std::vector<std::string>{"library", "rules", "import", "FOLDER"},
                                           std::vector<std::string>{"store", "inspect-diagnostic", "FOLDER"},
                                           std::vector<std::string>{"calc", "day", "--call", "7.0", "--wrap", "19.0", "--rules", "FOLDER"}));

}  // namespace
}  // namespace tessel
