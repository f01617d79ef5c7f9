#include <gtest/gtest.h>

#include <fstream>

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
    std::string write(const Json& document) {
        const auto path = (folder.path() / "rules.json").string();
        std::ofstream(path) << document.dump(2);
        return path;
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
